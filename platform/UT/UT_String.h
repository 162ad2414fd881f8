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
    /// Takes a copy of `text`.
    void harden(std::string_view text) { text_ = text; }

    /// Puts `replacement` for every occurrence of `marker`; what was put in is not searched again.
    void substitute(std::string_view marker, std::string_view replacement)
    {
        for (size_t at = text_.find(marker); !marker.empty() && at != std::string::npos;
             at = text_.find(marker, at + replacement.size()))
            text_.replace(at, marker.size(), replacement);
    }

    const char* buffer() const { return text_.c_str(); }
    size_t length() const { return text_.size(); }
    bool isEmpty() const { return text_.empty(); }
    std::string_view view() const { return text_; }

    friend bool operator==(const UT_String&, const UT_String&) = default;

private:
    std::string text_;
};
