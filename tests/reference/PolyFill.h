#pragma once

#include <RU/framework/RU_ConvertRow.h>
#include <RU/shape/RU_FeatherDropoff.h>
#include <UT/UT_BilinearSampleQuad2D.h>
#include <UT/UT_Vector2.h>
#include <reference/Formats.h>

#include <array>
#include <tuple>

/// Polygon fills by brute force: every sub-sample against every triangle.
namespace reference {

using FillTriangle = std::array<UT_Vector2, 3>;
using FillTriangles = std::vector<FillTriangle>;
using FillQuad = std::array<UT_Vector2, 4>;

/// The three edges of a triangle, each from its lower to its higher end, then from left to right.
class FillEdges
{
public:
    explicit FillEdges(const FillTriangle& t)
    {
        const double x0 = t[0].x, y0 = t[0].y;
        const double cross = (t[1].x - x0) * (t[2].y - y0) - (t[2].x - x0) * (t[1].y - y0);
        isEmpty_ = !std::isfinite(cross) || cross == 0.0;
        for (size_t i = 0; i < 3; ++i) {
            UT_Vector2 from = t[i], to = t[(i + 1) % 3];
            const bool turned = std::tie(to.y, to.x) < std::tie(from.y, from.x);
            if (turned)
                std::swap(from, to);
            const double a = double(to.y) - from.y, b = double(from.x) - to.x;
            edges_[i] = {a, b, -(a * from.x + b * from.y), (cross < 0.0) != turned ? -1.0 : 1.0};
        }
    }

    bool isEmpty() const { return isEmpty_; }
    bool contains(double x, double y) const
    {
        return !isEmpty_ && std::all_of(edges_.begin(), edges_.end(), [=](const Edge& edge) {
            return edge.sign * ((edge.a * x + edge.b * y) + edge.c) <= 0.0;
        });
    }

private:
    struct Edge
    {
        double a, b, c, sign;
    };
    std::array<Edge, 3> edges_;
    bool isEmpty_;
};

/// Pixels and their parts along an axis: floats that are added in double.
struct FillAxis
{
    FillAxis(int pixels, int partsOfEach) : count(pixels), parts(partsOfEach)
    {
        const float size = 1.0f / static_cast<float>(pixels);
        for (int i = 0; i <= pixels; ++i) {
            positions.push_back(static_cast<float>(i) * size);
            for (int k = 0; k < parts && i < pixels; ++k) {
                const float offset = (static_cast<float>(k) + 0.5f) * (size / static_cast<float>(parts));
                samples.push_back(double(positions.back()) + double(offset));
            }
        }
    }
    double sample(int pixel, int part) const { return samples[static_cast<size_t>(pixel * parts + part)]; }
    /// The pixels from the first to the last that vertices lie in: far off, rounding may put others into a triangle.
    std::pair<int, int> range(const std::array<float, 3>& places) const
    {
        const auto [low, high] = std::minmax_element(places.begin(), places.end());
        const double all = count, first = std::floor(*low * all), last = std::floor(*high * all);
        return {static_cast<int>(std::clamp(first, 0.0, all)),
                static_cast<int>(std::clamp(last + 1.0, 0.0, all))};
    }

    int count, parts;
    std::vector<float> positions;
    std::vector<double> samples;
};

/// What triangles and feather quads cover of an image, with nx x ny sub-samples in a pixel.
class Fill
{
public:
    Fill(int width, int height, int nx, int ny)
        : across(width, nx), down(height, ny), masks_(static_cast<size_t>(width * height)),
          corners_(static_cast<size_t>((width + 1) * (height + 1)))
    {
    }

    void add(const FillTriangles& triangles)
    {
        for (const FillTriangle& t : triangles) {
            const FillEdges edges(t);
            if (edges.isEmpty())
                continue;
            const auto [left, right] = across.range({t[0].x, t[1].x, t[2].x});
            const auto [top, bottom] = down.range({t[0].y, t[1].y, t[2].y});
            for (int y = top; y < bottom; ++y)
                for (int x = left; x < right; ++x) {
                    uint64_t& mask = masks_[static_cast<size_t>(y * across.count + x)];
                    for (int k = 0; k < count() && mask != full(); ++k)
                        if (edges.contains(across.sample(x, k % across.parts),
                                           down.sample(y, k / across.parts)))
                            mask |= uint64_t{1} << k;
                }
        }
    }

    /// A convex quad, or one whose vertices 1 and 2 are one.
    void addFeather(const FillQuad& q)
    {
        UT_BilinearSampleQuad2D ramp;
        ramp.setVertices(q[0].x, q[0].y, q[1].x, q[1].y, q[2].x, q[2].y, q[3].x, q[3].y);
        const FillEdges halves[] = {FillEdges({q[0], q[1], q[2]}), FillEdges({q[0], q[2], q[3]})};
        auto corner = corners_.begin();
        for (const float y : down.positions)
            for (const float x : across.positions) {
                float u = 0.0f, v = 0.0f;
                if ((halves[0].contains(x, y) || halves[1].contains(x, y)) && ramp.sample(x, y, u, v) != 0)
                    *corner = std::max(*corner, std::clamp(u, 0.0f, 1.0f));
                ++corner;
            }
    }

    /// Whether a pixel is drawn at all.
    bool covers(int64_t pixel) const { return masks_[static_cast<size_t>(pixel)] != 0 || ramp(pixel) > 0.0f; }
    float value(int64_t pixel, float colour) const
    {
        return masks_[static_cast<size_t>(pixel)] == full() ? colour : coverage(pixel) * colour;
    }
    float feathered(int64_t pixel, RU_FeatherDropoff dropoff) const
    {
        const float c = coverage(pixel);
        return RUfeatherDropoff(dropoff, std::clamp((1.0f - c) * ramp(pixel) + c, 0.0f, 1.0f));
    }

    FillAxis across, down;

private:
    int count() const { return across.parts * down.parts; }
    uint64_t full() const { return ~uint64_t{0} >> (64 - count()); }
    float coverage(int64_t pixel) const
    {
        const int samples = std::popcount(masks_[static_cast<size_t>(pixel)]);
        return static_cast<float>(samples) * (1.0f / static_cast<float>(count()));
    }
    /// The mean over the corners of a pixel.
    float ramp(int64_t pixel) const
    {
        const float* const above =
            corners_.data() + pixel + pixel / across.count; // a row has one corner more
        const float* const below = above + across.count + 1;
        return (above[0] + above[1] + below[0] + below[1]) * 0.25f;
    }

    std::vector<uint64_t> masks_;
    std::vector<float> corners_;
};

/// Stores a value where it exceeds what is there, as rows are converted.
inline void raise(const Format& format, const TIL_Plane& plane, void* data, int64_t index, float value)
{
    static constexpr float steps[] = {0.003921569f, 1.5259021893143654e-05f, 0x1p-32f};
    static const TIL_Plane floats(PXL_FORMAT_float32, 1);
    const double stored = format.codeAt(data, index), black = plane.blackPoint;
    const double span = plane.whitePoint - plane.blackPoint, scale = span == 0.0 ? 1.0 : 1.0 / span;
    double present = stored;
    if (format.isInteger() && format.full)
        present = static_cast<float>(stored) * steps[format.code];
    else if (format.code == PXL_FORMAT_uint32)
        present = (stored - black) * scale;
    else if (format.isInteger())
        present = static_cast<float>(stored - black) * static_cast<float>(scale);
    if (value > present)
        RUconvertRow(floats, &value, plane, static_cast<unsigned char*>(data) + index * format.size(), 1);
}

} // namespace reference
