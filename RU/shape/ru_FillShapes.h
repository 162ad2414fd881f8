#pragma once

#include <GEO/GEO_Detail.h>
#include <RU/shape/ru_FillEdges.h>
#include <RU/shape/ru_FillOutlines.h>
#include <UT/UT_BilinearSampleQuad2D.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

/// What a fill draws, and in which buckets it lies.
class ru_FillShapes
{
public:
    explicit ru_FillShapes(bool feathered) : feathered_(feathered) {}

    // Geometry. It is drawn as it was when it was last sorted.
    void clear();
    void append(const GEO_Detail& detail);
    void appendFeather(const GEO_Detail& detail);
    void add(const ru_FillTriangle& triangle) { triangles_.push_back(triangle); }
    void addFeather(const ru_FillTriangle& triangle) { feathers_.push_back(triangle); }

    // The image. Each of these sorts again, as soon as resolution and sampling are known.
    void setSampling(int nx, int ny);
    void setResolution(int width, int height, int tileWidth, int tileHeight);
    void sort();
    void setMargin(int pixels) { margin_ = pixels; } ///< around triangles, from the next sorting on

    bool isSampled() const { return nx_ > 0; }
    bool areFeathered() const { return feathered_; }
    int64_t width() const { return width_; }
    int64_t height() const { return height_; }
    const ru_FillBuckets& buckets() const { return buckets_; }
    const ru_FillGrid& samples() const { return *samples_; }

    std::span<const int32_t> trianglesIn(int64_t bucket) const { return inBucket_[bucket]; }
    const ru_FillTriangle& triangle(int32_t index) const { return sorted_[static_cast<size_t>(index)]; }
    const ru_FillOutlines& outlines() const { return outlines_; }
    std::span<const int32_t> feathersIn(int64_t bucket) const { return feathersInBucket_[bucket]; }
    /// The largest ramp at each corner of the block's pixels.
    void ramps(const ru_FillBlock& block, int64_t bucket, ru_TriangleSpans& spans,
               std::vector<float>& corners) const;

private:
    using Buckets = ru_BucketLists<int32_t>;
    void sortInto(Buckets& into, const ru_TriangleEdges& triangle, int32_t index, int64_t around,
                  int64_t before) const;

    bool feathered_;
    std::vector<ru_FillTriangle> triangles_, feathers_;
    std::vector<UT_BilinearSampleQuad2D> quads_; ///< by primitive of the feather's detail
    int nx_ = 0, ny_ = 0;
    int64_t width_ = 0, height_ = 0, margin_ = 0;
    ru_FillBuckets buckets_;
    std::shared_ptr<const ru_FillGrid> samples_, corners_;
    std::vector<ru_FillTriangle> sorted_, sortedFeathers_;
    Buckets inBucket_, feathersInBucket_;
    ru_FillOutlines outlines_;
};
