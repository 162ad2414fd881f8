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

namespace {

/// How many bytes of `text` make the character at its begin; 0 where that is no UTF-8, or a control character.
size_t characterBytes(std::string_view text)
{
    const auto byte = [&](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
    const unsigned int first = byte(0);
    if (first < 0x80)
        return first >= 0x20 && first != 0x7F ? 1 : 0;
    const size_t bytes = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (first < 0xC2 || first > 0xF4)
        return 0;
    for (size_t i = 1; i < bytes; ++i)
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    const unsigned int code = (first & (0x7Fu >> bytes)) << 6 | (byte(1) & 0x3F); // its first bits
    const bool tooLong = (bytes == 3 && code < 0x20) || (bytes == 4 && code < 0x10);
    const bool surrogate = bytes == 3 && code >= 0x360 && code < 0x380;
    const bool control = bytes == 2 && code < 0xA0;
    return tooLong || surrogate || control || (bytes == 4 && code >= 0x110) ? 0 : bytes;
}

} // namespace

std::string printable(const std::string& text)
{
    std::string shown;
    for (size_t i = 0; i < text.size();) {
        const size_t bytes = characterBytes(std::string_view(text).substr(i));
        if (bytes > 0) {
            shown.append(text, i, bytes);
            i += bytes;
            continue;
        }
        constexpr const char* digits = "0123456789abcdef";
        const auto byte = static_cast<unsigned char>(text[i++]);
        if (byte == '\n' || byte == '\t')
            shown.append(byte == '\n' ? "\\n" : "\\t");
        else
            shown.append("\\x").append(1, digits[byte >> 4]).append(1, digits[byte & 15]);
    }
    return shown;
}

std::string numberText(float number)
{
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof(text), number).ptr);
}

double doubleOf(float number)
{
    const std::string text = numberText(number);
    double result = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), result);
    return result;
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
