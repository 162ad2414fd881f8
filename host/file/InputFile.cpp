#include <host/file/InputFile.h>

#include <host/text/Error.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <regex>
#include <sys/stat.h>
#include <unistd.h>

namespace host {

InputFile::InputFile(const std::string& path) : file(path)
{
    static const std::regex indexed("(.+)\\[([0-9]{1,6})\\]");
    struct stat status = {};
    std::smatch match;
    if (::stat(path.c_str(), &status) != 0 && std::regex_match(path, match, indexed)) {
        file = match[1];
        index = std::stoi(match[2]);
    }
}

void checkReadable(const std::string& file, const std::string& path)
{
    struct stat status = {};
    if (::stat(file.c_str(), &status) != 0) {
        const int error = errno;
        if (error == ENOENT)
            throw Error(Error::Kind::NoInput, "no such file: '" + path + "'");
        const bool isName = error == ENOTDIR || error == ELOOP || error == ENAMETOOLONG;
        throw Error(isName ? Error::Kind::NoInput : Error::Kind::Read,
                    "cannot read '" + path + "': " + std::strerror(error));
    }
    if (!S_ISREG(status.st_mode))
        throw Error(Error::Kind::Read, "cannot read '" + path + "': it is " +
                                           (S_ISDIR(status.st_mode) ? "a directory" : "no ordinary file"));
    const int opened = ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (opened < 0)
        throw Error(Error::Kind::Read, "cannot read '" + path + "': " + std::strerror(errno));
    ::close(opened);
}

bool isCutJpeg(const std::string& file)
{
    constexpr int startOfScan = 0xda, end = 0xd9;
    std::ifstream in(file, std::ios::binary);
    in.seekg(2);
    bool inScan = false; // where pixels may look like a marker's start, but never with a number after it
    for (;;) {
        int marker = in.get();
        while (inScan && marker != 0xff && in)
            marker = in.get();
        while (marker == 0xff)
            marker = in.get();
        if (!in)
            return true;
        if (marker == end)
            return false;
        const bool isData = marker == 0 || (marker >= 0xd0 && marker <= 0xd7);
        if (inScan && isData)
            continue;
        const int high = in.get(), low = in.get();
        in.seekg(std::max(0, high * 256 + low - 2), std::ios::cur);
        inScan = inScan || marker == startOfScan;
    }
}

bool isCmykPsd(const std::string& file)
{
    constexpr int modePlace = 25, cmyk = 4;
    std::ifstream in(file, std::ios::binary);
    in.seekg(modePlace);
    return in.get() == cmyk;
}

} // namespace host
