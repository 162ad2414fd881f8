#pragma once

#include <string>
#include <vector>

namespace host {

/// What to add to "unknown x 'name'": "; did you mean 'y'?", or all known names when none is near.
std::string suggestion(const std::string& name, const std::vector<std::string>& known);

/// "a, b, c"
std::string joined(const std::vector<std::string>& names);

/// Error texts of other libraries go on with details.
std::string firstLine(const std::string& text);

} // namespace host
