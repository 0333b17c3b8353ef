// A tool's one registration line, at the end of its source file:
//
//   ZV_TOOL(KEffectInvert, ZV_Invert);
//
// The class name is the key: the names a user sees (display name, short name,
// menu category, help) stand once, in the catalogue, and are found by it.
// Whether the tool makes its image from nothing is the effect's own answer
// (kFeatureSource). The framework knows no host; the bridge turns the line
// into the host's registration when the plug-in loads.
#pragma once
#include <memory>
#include "framework/effect.h"

using KEffectFactory = std::unique_ptr<KEffect> (*)();

// Registers the tool; a class missing from the catalogue, or an effect that
// declares a value no host entry carries, stops the load with one message.
bool KRegisterEffect(const char* className, KEffectFactory make);

#define ZV_TOOL(Effect, ClassName)                                                              \
    [[maybe_unused]] static const bool ClassName##Registered = KRegisterEffect(                \
        #ClassName, []() -> std::unique_ptr<KEffect> { return std::make_unique<Effect>(); })
