#pragma once

#include <UT/UT_Vector4.h>

#include <cstddef>
#include <cstdint>
#include <vector>

/// A growing array of vectors.
class UT_Vector4Array
{
public:
    int64_t entries() const { return static_cast<int64_t>(items_.size()); }
    void append(const UT_Vector4& item) { items_.push_back(item); }
    void setSize(int64_t count) { items_.resize(static_cast<size_t>(count)); }
    void clear() { items_.clear(); }

    const UT_Vector4& operator()(int64_t index) const { return items_[static_cast<size_t>(index)]; }
    UT_Vector4& operator()(int64_t index) { return items_[static_cast<size_t>(index)]; }

    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

private:
    std::vector<UT_Vector4> items_;
};
