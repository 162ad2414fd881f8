#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// A growing array of floats.
class UT_FloatArray
{
public:
    int64_t entries() const { return static_cast<int64_t>(items_.size()); }
    void append(float item) { items_.push_back(item); }
    /// Puts `item` before the entry at `index`; behind the last one for index entries().
    void insert(float item, int64_t index) { items_.insert(items_.begin() + index, item); }
    void clear() { items_.clear(); }

    float operator()(int64_t index) const { return items_[static_cast<size_t>(index)]; }
    float& operator()(int64_t index) { return items_[static_cast<size_t>(index)]; }

    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

private:
    std::vector<float> items_;
};
