#include <host/text/Text.h>

#include <host/text/Error.h>

#include <cctype>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace host {

std::string numberText(float number)
{
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof(text), number).ptr);
}

bool readNumber(std::string_view text, float& number)
{
    if (text.starts_with('+'))
        text.remove_prefix(1);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end != text.data() + text.size())
        return false;
    if (error == std::errc::result_out_of_range) { // too small, or too large
        number = 0.0f;
        return std::abs(std::strtod(std::string(text).c_str(), nullptr)) < 1.0;
    }
    return error == std::errc() && std::isfinite(number);
}

bool isNotFinite(std::string_view text)
{
    double number = 0.0;
    if (text.starts_with('+'))
        text.remove_prefix(1);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && !std::isfinite(number);
}

std::vector<std::string> splitText(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    size_t begin = 0;
    for (size_t end; (end = text.find(separator, begin)) != std::string::npos; begin = end + 1)
        parts.push_back(text.substr(begin, end - begin));
    parts.push_back(text.substr(begin));
    return parts;
}

std::vector<std::string> wordsOf(const std::string& text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

bool isBlank(std::string_view text)
{
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

std::string extensionOf(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension().string();
    for (char& c : extension)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension;
}

std::string readTextFile(const std::string& path, const std::string& what)
{
    errno = 0;
    try {
        std::ifstream file;
        file.exceptions(std::ios::failbit | std::ios::badbit);
        file.open(path);
        return {std::istreambuf_iterator<char>(file), {}};
    } catch (const std::ios::failure&) { // a directory too
        const std::string reason = errno != 0 ? std::string(": ") + std::strerror(errno) : "";
        refuse("cannot read the " + what + " '" + path + "'" + reason);
    }
}

} // namespace host
