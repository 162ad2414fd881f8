#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// Some primitives of a detail, by their numbers, under a name and in an order of their own.
class GB_PrimitiveGroup
{
public:
    explicit GB_PrimitiveGroup(std::string name) : name_(std::move(name)) {}

    const std::string& name() const { return name_; }
    int64_t entries() const { return static_cast<int64_t>(primitives_.size()); }
    int64_t operator()(int64_t index) const { return primitives_[static_cast<size_t>(index)]; }
    bool contains(int64_t primitive) const
    {
        return std::find(primitives_.begin(), primitives_.end(), primitive) != primitives_.end();
    }

    /// Puts a primitive behind the others. Each is wanted once.
    void append(int64_t primitive) { primitives_.push_back(primitive); }
    void clear() { primitives_.clear(); }

    auto begin() const { return primitives_.begin(); }
    auto end() const { return primitives_.end(); }

private:
    std::string name_;
    std::vector<int64_t> primitives_;
};
