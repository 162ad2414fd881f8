#pragma once

#include <string>
#include <vector>

namespace host {

/// What to add to "unknown x 'name'": "; did you mean 'y'?", or all known names when none is near.
std::string suggestion(const std::string& name, const std::vector<std::string>& known);

/// Throws a usage error: what, "unknown depth" or the like, with the name and the suggestion.
[[noreturn]] void refuseName(const std::string& what, const std::string& name,
                             const std::vector<std::string>& known);

/// "a, b, c"
std::string joined(const std::vector<std::string>& names, const char* separator = ", ");

/// Error texts of other libraries go on with details.
std::string firstLine(const std::string& text);

} // namespace host
