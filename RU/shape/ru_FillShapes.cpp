#include <RU/shape/ru_FillShapes.h>

#include <RU/shape/ru_PolyConvex.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace {

/// A closed polygon whose vertices all have points.
bool isShape(const GEO_Primitive& primitive)
{
    if (primitive.primitiveType() != GEO_PRIMITIVE_POLYGON || !primitive.isClosed())
        return false;
    for (int64_t i = 0; i < primitive.vertexCount(); ++i)
        if (primitive.vertexPoint(i) < 0)
            return false;
    return true;
}

ru_FillPoint pointOf(const GEO_Detail& detail, const GEO_Primitive& primitive, int64_t vertex)
{
    const UT_Vector4& p = detail.position(primitive.vertexPoint(vertex));
    return {p.x, p.y};
}

/// The first and the last pixel between two places, which may lie outside; the image's end belongs to its last pixel.
std::pair<int64_t, int64_t> pixelsBetween(float low, float high, int64_t pixels, int64_t before,
                                          int64_t after)
{
    const auto pixel = [pixels](float place) {
        const double at = std::floor(double{place} * static_cast<double>(pixels));
        const double inside = place == 1.0f ? static_cast<double>(pixels - 1) : at;
        return static_cast<int64_t>(std::clamp(inside, -4e15, 4e15));
    };
    return {pixel(low) - before, pixel(high) + after};
}

} // namespace

void ru_FillShapes::clear()
{
    triangles_.clear();
    feathers_.clear();
    quads_.clear();
}

void ru_FillShapes::append(const GEO_Detail& detail)
{
    for (int64_t i = detail.primitiveCount() - 1; i >= 0; --i) {
        const GEO_Primitive& polygon = *detail.primitive(i);
        if (!isShape(polygon) || polygon.vertexCount() < 3)
            continue;
        if (polygon.vertexCount() == 3)
            add({{pointOf(detail, polygon, 0), pointOf(detail, polygon, 1), pointOf(detail, polygon, 2)}});
        else
            ru_PolyConvex(detail, polygon, triangles_).convex(3);
    }
}

void ru_FillShapes::appendFeather(const GEO_Detail& detail)
{
    feathers_.clear();
    quads_.assign(static_cast<size_t>(detail.primitiveCount()), {});
    const int64_t count = std::min<int64_t>(detail.primitiveCount(), std::numeric_limits<int>::max());
    for (int64_t i = 0; i < count; ++i) {
        const GEO_Primitive& polygon = *detail.primitive(i);
        if (!isShape(polygon) || polygon.vertexCount() != 4)
            continue;
        std::array<ru_FillPoint, 4> p;
        for (size_t v = 0; v < p.size(); ++v)
            p[v] = pointOf(detail, polygon, static_cast<int64_t>(v));
        quads_[static_cast<size_t>(i)].setVertices(p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y, p[3].x,
                                                   p[3].y);
        const int quad = static_cast<int>(i);
        if (p[1] == p[2])
            addFeather({{p[0], p[1], p[3]}, quad});
        else
            ru_FeatherQuadConvex(detail, polygon, quad, feathers_).convex(3);
    }
}

void ru_FillShapes::setSampling(int nx, int ny)
{
    nx_ = std::max(nx, 1);
    ny_ = std::max(ny, 1);
    if (int64_t{nx_} * ny_ > ru_mostSamples)
        nx_ = ny_ = 8;
    sort();
}

void ru_FillShapes::setResolution(int width, int height, int tileWidth, int tileHeight)
{
    width_ = std::max(width, 0);
    height_ = std::max(height, 0);
    buckets_ = {std::min<int64_t>(std::max(tileWidth, 1), width_),
                std::min<int64_t>(std::max(tileHeight, 1), height_)};
    if (width_ > 0 && height_ > 0) {
        buckets_.across = (width_ + buckets_.width - 1) / buckets_.width;
        buckets_.down = (height_ + buckets_.height - 1) / buckets_.height;
    }
    sort();
}

void ru_FillShapes::sort()
{
    sorted_.clear();
    sortedFeathers_.clear();
    outlines_.clear();
    inBucket_.clear();
    feathersInBucket_.clear();
    if (!isSampled() || buckets_.count() == 0)
        return;
    samples_ = ru_FillGrid::samples(width_, height_, nx_, ny_);
    const ru_FillMesh mesh(triangles_, height_, ny_);
    for (const int32_t index : mesh.alone) {
        sorted_.push_back(triangles_[static_cast<size_t>(index)]);
        sortInto(inBucket_, ru_TriangleEdges(sorted_.back()), static_cast<int32_t>(sorted_.size()) - 1,
                 margin_, margin_);
    }
    inBucket_.layOut(buckets_.count());
    outlines_.sort(mesh.outline, *samples_, buckets_);
    if (!feathered_)
        return;
    corners_ = ru_FillGrid::corners(width_, height_);
    for (const ru_FillTriangle& feather : feathers_) {
        const ru_TriangleEdges triangle(feather);
        if (!triangle.valid || feather.quad < 0 || static_cast<size_t>(feather.quad) >= quads_.size())
            continue;
        sortedFeathers_.push_back(feather);
        // A corner belongs to the pixels to its left and above it too.
        sortInto(feathersInBucket_, triangle, static_cast<int32_t>(sortedFeathers_.size()) - 1, margin_,
                 margin_ + 1);
    }
    feathersInBucket_.layOut(buckets_.count());
}

void ru_FillShapes::sortInto(Buckets& into, const ru_TriangleEdges& triangle, int32_t index, int64_t around,
                             int64_t before) const
{
    const auto& v = triangle.corners;
    const auto [left, right] = pixelsBetween(std::min({v[0].x, v[1].x, v[2].x}),
                                             std::max({v[0].x, v[1].x, v[2].x}), width_, before, around);
    const auto [top, bottom] = pixelsBetween(v[0].y, v[2].y, height_, before, around);
    if (right < 0 || bottom < 0 || left >= width_ || top >= height_)
        return;
    const int64_t lastColumn = std::min(right, width_ - 1) / buckets_.width;
    const int64_t lastRow = std::min(bottom, height_ - 1) / buckets_.height;
    for (int64_t row = std::max<int64_t>(top, 0) / buckets_.height; row <= lastRow; ++row)
        for (int64_t column = std::max<int64_t>(left, 0) / buckets_.width; column <= lastColumn; ++column)
            into.add(row * buckets_.across + column, index);
}

void ru_FillShapes::ramps(const ru_FillBlock& block, int64_t bucket, ru_TriangleSpans& spans,
                          std::vector<float>& corners) const
{
    const ru_FillBlock at(*corners_, block.x, block.y, block.width, block.height);
    corners.assign(static_cast<size_t>(at.columns * at.rows), 0.0f);
    for (const int32_t index : feathersInBucket_[bucket]) {
        const ru_FillTriangle& triangle = sortedFeathers_[static_cast<size_t>(index)];
        if (static_cast<size_t>(triangle.quad) >= quads_.size() ||
            !spans.find(*corners_, at, ru_TriangleEdges(triangle)))
            continue;
        const UT_BilinearSampleQuad2D& quad = quads_[static_cast<size_t>(triangle.quad)];
        for (int64_t k = 0; k < spans.pixelRows(); ++k) {
            const int64_t row = spans.firstRow() + k;
            float* const ramp = corners.data() + row * at.columns;
            for (int64_t column = spans.begin()[k]; column < spans.end()[k]; ++column) {
                float u = 0.0f, v = 0.0f;
                if (quad.sample(static_cast<float>(at.xs[column]), static_cast<float>(at.ys[row]), u, v) != 0)
                    ramp[column] = std::max(ramp[column], std::clamp(u, 0.0f, 1.0f));
            }
        }
    }
}
