#include <host/file/Temporary.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <mutex>
#include <random>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace host {

namespace fs = std::filesystem;

namespace {

/// How the names of this host's temporary files begin. Process numbers mean something only within one
/// namespace of one host; others may share the directory.
const std::string& ownPrefix()
{
    static const std::string prefix = [] {
        char host[256] = {};
        ::gethostname(host, sizeof(host) - 1);
        std::error_code ignored;
        const std::string text = host + fs::read_symlink("/proc/self/ns/pid", ignored).string();
        return ".kreiluge-" + std::to_string(std::hash<std::string>()(text) & 0xffffffffu) + "-";
    }();
    return prefix;
}

bool isAbandoned(const fs::path& path)
{
    const std::string name = path.filename().string();
    if (!name.starts_with(ownPrefix()))
        return false;
    pid_t process = 0;
    const char* number = name.c_str() + ownPrefix().size();
    const auto [end, error] = std::from_chars(number, name.c_str() + name.size(), process);
    if (error != std::errc() || *end != '-' || process <= 0)
        return false;
    struct stat status = {};
    return ::kill(process, 0) != 0 && errno == ESRCH && ::lstat(path.c_str(), &status) == 0 &&
           S_ISREG(status.st_mode) && status.st_uid == ::geteuid();
}

} // namespace

std::string resolveLinks(const std::string& path)
{
    std::error_code error;
    fs::path resolved = fs::absolute(path, error);
    for (int links = 0; links < 40 && fs::is_symlink(resolved, error); ++links)
        resolved = resolved.parent_path() / fs::read_symlink(resolved, error);
    resolved = fs::weakly_canonical(resolved, error);
    return error ? path : resolved.string();
}

std::string makeTemporary(const std::string& target)
{
    const fs::path place(target);
    std::random_device random;
    for (int tries = 0; tries < 100; ++tries) {
        std::string path = (place.parent_path() / ownPrefix()).string();
        path.append(std::to_string(::getpid())).append("-").append(std::to_string(random()));
        path.append(place.extension().string());
        const int file = ::open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
        if (file >= 0) {
            if (struct stat old = {}; ::stat(target.c_str(), &old) == 0)
                ::fchmod(file, old.st_mode & 0777);
            ::close(file);
            return path;
        }
        if (errno != EEXIST)
            return {};
    }
    return {};
}

void clearTemporaries(const std::string& directory)
{
    static std::mutex mutex;
    static std::set<std::string> seen;
    const std::lock_guard lock(mutex);
    if (!seen.insert(directory).second)
        return;
    std::error_code ignored;
    for (fs::directory_iterator entry(directory, ignored), end; entry != end; entry.increment(ignored)) {
        if (isAbandoned(entry->path()))
            ::unlink(entry->path().c_str());
        if (ignored)
            return;
    }
}

} // namespace host
