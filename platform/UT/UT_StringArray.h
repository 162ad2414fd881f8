#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

/// A set of strings kept in byte order.
class UT_StringArray
{
public:
    /// Puts `text` at its place; false when it stood there already.
    bool sortedInsert(std::string_view text)
    {
        const auto place = std::lower_bound(items_.begin(), items_.end(), text);
        if (place != items_.end() && *place == text)
            return false;
        items_.emplace(place, text);
        return true;
    }

    void clear() { items_.clear(); }
    size_t entries() const { return items_.size(); }
    const std::string& operator()(size_t index) const { return items_[index]; }

private:
    std::vector<std::string> items_;
};
