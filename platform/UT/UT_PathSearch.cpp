#include <UT/UT_PathSearch.h>

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>

namespace fs = std::filesystem;

namespace {

/// Where this library's own files lie, once per process: relative paths must not follow the working
/// directory.
const fs::path& shareDirectory()
{
    static const fs::path directory = [] {
        static const char inThisLibrary = 0;
        Dl_info info;
        std::error_code error;
        if (dladdr(&inThisLibrary, &info) == 0)
            return fs::path();
        const fs::path library = fs::canonical(info.dli_fname, error);
        return error ? fs::path() : (library.parent_path() / KREILUGE_LIBRARY_TO_SHARE).lexically_normal();
    }();
    return directory;
}

std::optional<UT_String> fileIn(const fs::path& directory, std::string_view name)
{
    std::error_code error;
    if (directory.empty())
        return std::nullopt;
    const fs::path path = fs::absolute(directory / name, error);
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status) || fs::is_directory(status))
        return std::nullopt;
    return UT_String(path.native());
}

} // namespace

const UT_PathSearch* UT_PathSearch::getInstance(UT_KnownPath)
{
    static const UT_PathSearch resources;
    return &resources;
}

UT_String UT_PathSearch::findFile(std::string_view name) const
{
    const char* listed = std::getenv("KREILUGE_PATH");
    std::string_view rest(listed != nullptr ? listed : "");
    while (!rest.empty()) {
        const std::string_view directory = rest.substr(0, rest.find(':'));
        if (const auto file = fileIn(directory, name))
            return *file;
        rest.remove_prefix(std::min(directory.size() + 1, rest.size()));
    }
    return fileIn(shareDirectory(), name).value_or(UT_String());
}
