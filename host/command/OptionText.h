#pragma once

#include <host/command/Arguments.h>

#include <string>
#include <vector>

// What help, documents, completion and the man page say of an option.

namespace host {

/// "-o", "--output"; one of an argument by position.
std::vector<std::string> namesOf(const Option& option);

/// By its place, not by a name.
bool isByPlace(const Option& option);

/// How many words follow the name: none for a switch.
int wordCount(const Option& option);

/// What stands for its words: "N", "WA WB"; its name where nobody said anything better; empty for a switch.
std::string wordsOf(const Option& option);

/// "-o, --output FILE"
std::string writtenOf(const Option& option);

/// The help, and the choices.
std::string helpOf(const Option& option);

/// The same, the preset, and what goes with it or not.
std::string documentOf(const Option& option);

/// "INPUT [CHAIN] -o FILE", without options that may be left out.
std::string usageOf(const std::vector<Option>& options);

} // namespace host
