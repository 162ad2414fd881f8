#include <host/file/Frames.h>

#include <host/text/Error.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <unordered_set>

namespace host {

namespace {

constexpr int64_t maxFrames = 1000000;

[[noreturn]] void refuse(const std::string& text, const std::string& reason)
{
    host::refuse("frames '" + text + "': " + reason +
                 "; expected something like 1001-1100, 1001-1100x2 or 1,5,9");
}

/// The place for the number in a path, and its width; the last one where there are several.
struct Place
{
    size_t begin = std::string::npos, length = 0, digits = 0;
};

Place findPlace(const std::string& path)
{
    static const std::regex pattern("#+|%(0?([0-9]{1,2}))?d");
    Place place;
    const size_t name = path.rfind('/') == std::string::npos ? 0 : path.rfind('/') + 1;
    for (auto match =
             std::sregex_iterator(path.begin() + static_cast<std::ptrdiff_t>(name), path.end(), pattern);
         match != std::sregex_iterator(); ++match) {
        const auto length = static_cast<size_t>(match->length());
        place = {name + static_cast<size_t>(match->position()), length, length};
        if (match->str().starts_with('%'))
            place.digits = (*match)[2].matched ? std::stoul((*match)[2].str()) : 1;
    }
    return place;
}

} // namespace

std::vector<int64_t> parseFrames(const std::string& text)
{
    static const std::regex range("(-?[0-9]{1,9})(-(-?[0-9]{1,9})(x([0-9]{1,9}))?)?");
    std::vector<int64_t> frames;
    std::unordered_set<int64_t> seen;
    for (size_t begin = 0; begin <= text.size();) {
        const size_t end = std::min(text.find(',', begin), text.size());
        const std::string part = text.substr(begin, end - begin);
        begin = end + 1;
        std::smatch match;
        if (!std::regex_match(part, match, range))
            refuse(text, "'" + part + "' is no frame or range");
        const int64_t first = std::stoll(match[1]);
        const int64_t last = match[3].matched ? std::stoll(match[3]) : first;
        const int64_t step = match[5].matched ? std::stoll(match[5]) : 1;
        if (last < first || step < 1)
            refuse(text, "'" + part + "' holds no frame");
        if ((last - first) / step >= maxFrames - static_cast<int64_t>(frames.size()))
            refuse(text, "more than a million frames");
        for (int64_t frame = first; frame <= last; frame += step)
            if (seen.insert(frame).second)
                frames.push_back(frame);
    }
    return frames;
}

std::vector<int64_t> existingFrames(const std::string& pattern)
{
    namespace fs = std::filesystem;
    const fs::path directory = fs::path(pattern).parent_path();
    const std::string name = fs::path(pattern).filename().string();
    const size_t place = findPlace(name).begin;
    std::vector<int64_t> frames;
    std::error_code error;
    for (fs::directory_iterator entry(directory.empty() ? "." : directory, error), end;
         !error && place != std::string::npos && entry != end; entry.increment(error)) {
        const std::string found = entry->path().filename().string();
        int64_t frame = 0;
        if (found.size() > place)
            std::from_chars(found.data() + place, found.data() + found.size(), frame);
        if (framePath(name, frame) == found)
            frames.push_back(frame);
    }
    std::sort(frames.begin(), frames.end());
    return frames;
}

bool hasFramePlace(const std::string& path)
{
    return findPlace(path).begin != std::string::npos;
}

std::string framePath(const std::string& path, int64_t frame)
{
    const Place place = findPlace(path);
    std::string digits = std::to_string(std::abs(frame));
    const size_t width = frame < 0 && place.digits > 0 ? place.digits - 1 : place.digits;
    digits.insert(0, width > digits.size() ? width - digits.size() : 0, '0');
    return std::string(path).replace(place.begin, place.length, (frame < 0 ? "-" : "") + digits);
}

} // namespace host
