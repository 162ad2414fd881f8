#include <host/CurvePicture.h>

#include <host/Bands.h>
#include <host/Curves.h>
#include <host/Error.h>
#include <host/Format.h>
#include <host/Writer.h>

#include <algorithm>
#include <cmath>

namespace host {

namespace {

struct Point
{
    float x, y;
};

struct Colour
{
    float r, g, b;
};

float distance(const Point& a, const Point& b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

float distanceToLine(const Point& p, const Point& a, const Point& b)
{
    const float length = (b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y);
    const float along = ((p.x - a.x) * (b.x - a.x) + (p.y - a.y) * (b.y - a.y)) / std::max(length, 1e-12f);
    const float t = std::clamp(along, 0.0f, 1.0f);
    return distance(p, {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t});
}

/// What values a side of the picture shows.
struct Range
{
    float low = 0.0f, high = 1.0f;

    void include(float value)
    {
        low = std::min(low, value);
        high = std::max(high, value);
    }

    void widen()
    {
        const float margin = 0.06f * (high - low);
        low -= margin;
        high += margin;
    }

    float width() const { return high - low; }

    /// A quarter, or as many doublings of it as leave few enough lines.
    float gridStep() const
    {
        return 0.25f * std::exp2(std::ceil(std::max(0.0f, std::log2(width() / 0.25f / 12.0f))));
    }
};

class Canvas
{
public:
    Canvas(int side, const Range& xRange, const Range& yRange)
        : side_(side), x_(xRange), y_(yRange), pixels_(index(0, side), {0.08f, 0.08f, 0.09f})
    {
    }

    float scale() const { return static_cast<float>(side_) / 512.0f; }
    int side() const { return side_; }
    const float* row(int y) const { return &pixels_[index(0, y)].r; }

    Point place(float x, float y) const
    {
        const float all = static_cast<float>(side_);
        const float down = (y_.high - y) / y_.width() * all;
        return {(x - x_.low) / x_.width() * all, std::clamp(down, -all, 2.0f * all)};
    }

    /// A line through points; lines that cross add their light.
    void line(const std::vector<Point>& points, float width, const Colour& colour)
    {
        std::vector<float> coverage(pixels_.size());
        for (size_t i = 0; i + 1 < points.size(); ++i) {
            const Point &a = points[i], &b = points[i + 1];
            cover(coverage, std::min(a.x, b.x), std::max(a.x, b.x), std::min(a.y, b.y), std::max(a.y, b.y),
                  0.5f * width, [&](const Point& p) { return distanceToLine(p, a, b); });
        }
        light(coverage, colour);
    }

    void dot(const Point& at, float radius, const Colour& colour)
    {
        std::vector<float> coverage(pixels_.size());
        cover(coverage, at.x, at.x, at.y, at.y, radius, [&](const Point& p) { return distance(p, at); });
        light(coverage, colour);
    }

private:
    size_t index(int x, int y) const
    {
        return static_cast<size_t>(y) * static_cast<size_t>(side_) + static_cast<size_t>(x);
    }

    /// Pixels within `reach` of a shape, which lies in a box.
    template <class Distance>
    void cover(std::vector<float>& coverage, float left, float right, float top, float bottom, float reach,
               Distance distanceTo) const
    {
        const auto clamped = [this](float v) { // NaN too
            const auto most = static_cast<float>(side_);
            return static_cast<int>(v > 0.0f ? std::min(v, most) : 0.0f);
        };
        for (int y = clamped(top - reach - 1.0f); y < clamped(bottom + reach + 2.0f); ++y)
            for (int x = clamped(left - reach - 1.0f); x < clamped(right + reach + 2.0f); ++x) {
                float& value = coverage[index(x, y)];
                const Point centre{static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f};
                value = std::max(value, std::clamp(reach + 0.5f - distanceTo(centre), 0.0f, 1.0f));
            }
    }

    void light(const std::vector<float>& coverage, const Colour& colour)
    {
        for (size_t i = 0; i < pixels_.size(); ++i) {
            Colour& pixel = pixels_[i];
            pixel.r = std::max(pixel.r, colour.r * coverage[i]);
            pixel.g = std::max(pixel.g, colour.g * coverage[i]);
            pixel.b = std::max(pixel.b, colour.b * coverage[i]);
        }
    }

    int side_;
    Range x_, y_;
    std::vector<Colour> pixels_;
};

void drawGrid(Canvas& canvas, const Range& xRange, const Range& yRange)
{
    const auto lineAt = [&](bool upright, float at, const Colour& colour) {
        const Point from = upright ? canvas.place(at, yRange.low) : canvas.place(xRange.low, at);
        const Point to = upright ? canvas.place(at, yRange.high) : canvas.place(xRange.high, at);
        canvas.line({from, to}, canvas.scale(), colour);
    };
    for (const bool upright : {true, false}) {
        const Range& range = upright ? xRange : yRange;
        const float step = range.gridStep();
        for (float i = std::ceil(range.low / step); i * step <= range.high; ++i)
            lineAt(upright, i * step, {0.18f, 0.18f, 0.20f});
        for (const float end : {0.0f, 1.0f})
            lineAt(upright, end, {0.36f, 0.36f, 0.40f});
    }
    canvas.line({canvas.place(0, 0), canvas.place(1, 1)}, canvas.scale(), {0.28f, 0.28f, 0.31f});
}

void writePicture(const std::string& path, const Canvas& canvas)
{
    const int side = canvas.side();
    const Image image = newImage(side, side, 3, PXL_FORMAT_uint8, "colour curves");
    Band band;
    band.reset(image, 0, side);
    for (int y = 0; y < side; ++y)
        convertFormat(PXL_FORMAT_float32, canvas.row(y), PXL_FORMAT_uint8, band.row(y), int64_t{3} * side);
    Writer writer(path, image);
    writer.write(band, 0, side, [] {});
    writer.commit();
}

} // namespace

void drawCurves(const std::string& path, const std::vector<CurveKeys>& curves,
                const CurvePictureSettings& settings)
{
    if (settings.size < 64 || settings.size > 4096)
        refuse("size " + std::to_string(settings.size) + " is not from 64 to 4096");
    static constexpr Colour white[] = {{0.95f, 0.95f, 0.95f}};
    static constexpr Colour several[] = {
        {1.0f, 0.25f, 0.2f}, {0.25f, 0.85f, 0.3f}, {0.3f, 0.5f, 1.0f}, {0.6f, 0.6f, 0.6f}};
    const Colour* colours = curves.size() == 1 ? white : several;
    const std::vector<RU_ColorCurve> made = makeCurves(curves, settings.extend);

    Range xRange, yRange;
    for (const CurveKeys& keys : curves)
        for (const CurveKey& key : keys) {
            xRange.include(key.x);
            yRange.include(key.y);
        }
    xRange.widen();
    const auto isLeft = [](const CurveKey& a, const CurveKey& b) { return a.x < b.x; };
    const int samples = 4 * settings.size;
    const auto xOf = [&](const Range& range, int i) {
        return range.low + range.width() * static_cast<float>(i) / static_cast<float>(samples);
    };
    for (size_t c = 0; c < made.size(); ++c) { // curves swing beyond their keys
        const auto [first, last] = std::minmax_element(curves[c].begin(), curves[c].end(), isLeft);
        for (int i = 0; i <= samples; ++i)
            yRange.include(made[c].evaluate(xOf({first->x, last->x}, i)));
    }
    yRange.widen();

    Canvas canvas(settings.size, xRange, yRange);
    drawGrid(canvas, xRange, yRange);
    for (size_t c = 0; c < made.size(); ++c) {
        std::vector<Point> points;
        for (int i = 0; i <= samples; ++i)
            points.push_back(canvas.place(xOf(xRange, i), made[c].evaluate(xOf(xRange, i))));
        canvas.line(points, 2.0f * canvas.scale(), colours[c]);
        for (const CurveKey& key : curves[c])
            canvas.dot(canvas.place(key.x, key.y), 5.0f * canvas.scale(), colours[c]);
    }
    writePicture(path, canvas);
}

} // namespace host
