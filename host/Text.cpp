#include <host/Text.h>

#include <charconv>
#include <cmath>

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
    return error == std::errc() && end == text.data() + text.size() && std::isfinite(number);
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

bool isBlank(std::string_view text)
{
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

} // namespace host
