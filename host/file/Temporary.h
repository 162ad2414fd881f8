#pragma once

#include <string>

namespace host {

/// The file that a path means, also where it is a link to one that does not exist yet.
std::string resolveLinks(const std::string& path);

/// Makes an empty file of a new name beside `target`, with its extension and, when it exists, its permissions;
/// empty, with errno, when that is not possible. The name says which process of which host it belongs to.
std::string makeTemporary(const std::string& target);

/// Removes what this user's processes on this host left in a directory and that are gone; looks into each
/// directory once.
void clearTemporaries(const std::string& directory);

} // namespace host
