#pragma once

#include <GEO/GEO_Detail.h>

#include <cstdint>
#include <vector>

/// Some points of a detail, in an order. It owns neither.
class GEO_PointArray
{
public:
    explicit GEO_PointArray(GEO_Detail& detail) : detail_(&detail) {}

    GEO_Detail& detail() const { return *detail_; }
    int64_t entries() const { return static_cast<int64_t>(points_.size()); }
    int64_t operator()(int64_t index) const { return points_[static_cast<size_t>(index)]; }
    void append(int64_t point) { points_.push_back(point); }

private:
    GEO_Detail* detail_;
    std::vector<int64_t> points_;
};
