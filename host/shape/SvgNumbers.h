#pragma once

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

namespace host {

/// Numbers as SVG has them: with blanks, a comma or nothing in between.
class SvgNumbers
{
public:
    explicit SvgNumbers(std::string_view text) : text_(text) { skipBlanks(); }

    bool atEnd() const { return at_ == text_.size(); }
    char next() const { return atEnd() ? '\0' : text_[at_]; }
    size_t place() const { return at_; }

    /// The next number and the comma behind it; none where there is no finite one of a size that makes sense.
    std::optional<double> number()
    {
        const size_t begin = at_ + (next() == '+' ? 1 : 0);
        const size_t digits = begin + (text_.substr(begin).starts_with('-') && begin == at_ ? 1 : 0);
        const std::string_view body = text_.substr(digits);
        if (body.empty() || ((body[0] < '0' || body[0] > '9') && body[0] != '.')) // no nan, no inf
            return {};
        double value = 0.0;
        const auto [end, error] = std::from_chars(text_.data() + begin, text_.data() + text_.size(), value);
        if (error != std::errc() || std::abs(value) > 1e9)
            return {};
        at_ = static_cast<size_t>(end - text_.data());
        skipSeparator();
        return value;
    }

    /// The next 0 or 1, which may stand without anything behind it; none for anything else.
    std::optional<bool> flag()
    {
        if (next() != '0' && next() != '1')
            return {};
        const bool on = text_[at_++] == '1';
        skipSeparator();
        return on;
    }

    /// The next letter.
    char take()
    {
        const char c = text_[at_++];
        skipBlanks();
        return c;
    }

    /// All numbers up to the end; none where anything else is among them.
    std::optional<std::vector<double>> all()
    {
        std::vector<double> numbers;
        while (!atEnd()) {
            const std::optional<double> value = number();
            if (!value)
                return {};
            numbers.push_back(*value);
        }
        return numbers;
    }

private:
    void skipBlanks() { at_ = std::min(text_.find_first_not_of(" \t\r\n\f", at_), text_.size()); }

    void skipSeparator()
    {
        skipBlanks();
        if (next() == ',') {
            ++at_;
            skipBlanks();
        }
    }

    std::string_view text_;
    size_t at_ = 0;
};

} // namespace host
