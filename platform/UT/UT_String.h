#pragma once

#include <string>
#include <string_view>

/// A growing string.
class UT_String
{
public:
    UT_String() = default;
    UT_String(std::string_view text) : text_(text) {}
    UT_String(const char* text) : text_(text) {}

    UT_String& append(std::string_view text)
    {
        text_.append(text);
        return *this;
    }
    void clear() { text_.clear(); }

    const char* buffer() const { return text_.c_str(); }
    size_t length() const { return text_.size(); }
    bool isEmpty() const { return text_.empty(); }
    std::string_view view() const { return text_; }

    friend bool operator==(const UT_String&, const UT_String&) = default;

private:
    std::string text_;
};
