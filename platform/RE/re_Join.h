#pragma once

#include <string>
#include <string_view>

/// Pieces of text one after the other.
template <class... Pieces>
std::string re_join(const Pieces&... pieces)
{
    std::string text;
    (text.append(std::string_view(pieces)), ...);
    return text;
}
