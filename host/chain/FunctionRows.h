#pragma once

#include <host/chain/Functions.h>

// The rows of functions(), by topic, and what their sources share.

namespace host {

std::vector<Function> numericFunctions();
std::vector<Function> colourFunctions();

// Function::colourSpace
inline constexpr std::nullopt_t keepsSpace = std::nullopt;
inline constexpr const char* losesSpace = "";

template <class F>
Made plain(const Values&)
{
    return std::make_unique<F>();
}

inline Argument required(const char* name, Argument::Type type = Argument::Type::Number)
{
    return {name, type, true};
}

inline Argument number(const char* name, float preset)
{
    return {name, Argument::Type::Number, false, preset};
}

inline Argument perComponent(const char* name, float neutral)
{
    return {name, Argument::Type::PerComponent, true, neutral};
}

inline Argument optional(const char* name)
{
    return {name, Argument::Type::OptionalNumber};
}

inline Argument onOff(const char* name, bool preset)
{
    return {name, Argument::Type::Switch, false, preset ? 1.0f : 0.0f};
}

} // namespace host
