// Turning outside text into tools and values: every failure is a BadInput
// naming the tool, the input and what was expected.
#pragma once
#include <cstdint>
#include <string>
#include "host/operator.h"
#include "host/registry.h"

namespace app {

// A tool by display name, class name or short name.
const host::Registration& ResolveTool(const std::string& name);

// The input `id` of the operator `what` names ("tool grade"), or BadInput
// saying where the tool's inputs are listed.
host::Input* ResolveInput(host::Operator& op, const std::string& what, const std::string& id);

// A value for `input` from command-line text: a number, "x,y", a text, or an
// image file name (read at once); held to the input's declaration. BadInput
// begins with `where` ("input Hue of Hue/Saturation").
host::Value ParseValue(const host::Input& input, const std::string& where, const std::string& text,
                       int depth);

// A whole number written in decimal, with an optional sign; false for
// anything else, or beyond what 64 bits hold.
bool ParseWhole(const std::string& text, int64_t& out);

std::string DescribeType(const host::Input& input);

// depth: 0 keep, 1 16-bit integer, 2 float.
host::Image* ConvertDepth(host::Image* image, int depth);

}  // namespace app
