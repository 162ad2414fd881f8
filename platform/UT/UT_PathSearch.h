#pragma once

#include <SYS/SYS_API.h>
#include <UT/UT_String.h>

#include <string_view>

/// The search paths that there are.
enum UT_KnownPath {
    UT_PATH_RESOURCES ///< files that come with the libraries, such as shader sources
};

/// Finds a file by a relative name: in the directories that the environment variable KREILUGE_PATH lists,
/// separated by colons, then in share/kreiluge of the tree that this library lies in, wherever that was
/// moved.
///
/// Threads: any. Each search reads the environment and the directories anew.
class PLATFORM_API UT_PathSearch
{
public:
    static const UT_PathSearch* getInstance(UT_KnownPath path);

    /// The absolute path of the first file of that name; empty when there is none. Directories do not count.
    UT_String findFile(std::string_view name) const;
};
