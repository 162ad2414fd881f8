#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// A growing array of pointers, which it does not own.
template <class T>
class UT_PtrArray
{
public:
    int64_t entries() const { return static_cast<int64_t>(items_.size()); }
    void append(T item) { items_.push_back(item); }
    void clear() { items_.clear(); }

    T operator()(int64_t index) const { return items_[static_cast<size_t>(index)]; }

    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

private:
    std::vector<T> items_;
};
