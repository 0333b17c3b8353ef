// Bad input from outside (files, flows, command lines, values): one line that
// names what was wrong. The front ends report it and exit with status 2.
#pragma once
#include <stdexcept>
#include <string>

namespace host {

class BadInput : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace host
