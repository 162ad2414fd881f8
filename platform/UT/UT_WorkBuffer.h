#pragma once

#include <string>
#include <string_view>

/// A text that is written piece by piece.
class UT_WorkBuffer
{
public:
    template <class... Pieces>
    void append(const Pieces&... pieces)
    {
        (text_.append(std::string_view(pieces)), ...);
    }
    const char* buffer() const { return text_.c_str(); }

private:
    std::string text_;
};
