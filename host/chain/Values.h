#pragma once

#include <host/chain/Functions.h>
#include <host/chain/StrictJson.h>

#include <string>

// The forms in which the arguments of functions are written.

namespace host {

/// "number", "choice" and the like.
const char* typeName(const Argument& argument);

/// What an argument is written as: "a number or none".
std::string expectation(const Argument& argument);

/// Reads the text of an argument: 0.5, 1:0.9:0.8, none, on, a path, keys as in 0:0;0.5:0.6:1;1:1 or "0 0, 0.5
/// 0.6 1, 1 1" with | between curves. Throws a usage error that says what was expected.
Value readValue(const Argument& argument, const std::string& text);

/// The text that reads back as the same value; a path may hold anything and is not quoted.
std::string valueText(const Argument& argument, const Value& value);

/// What an argument is that was left out.
inline Value presetOf(const Argument& argument)
{
    return argument.mayBeNone() ? Value() : Value(argument.preset);
}

Json valueJson(const Argument& argument, const Value& value);

/// The text form of a JSON value, so that both forms share one reader: lists join with : in the innermost
/// ones, ; around them and | outside.
std::string textOfJson(const Json& value);

} // namespace host
