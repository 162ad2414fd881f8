#include <host/picture/CurvePicture.h>

#include <host/chain/Curves.h>
#include <host/file/Band.h>
#include <host/file/Format.h>
#include <host/file/Writer.h>
#include <host/text/Error.h>

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
    const Colour* row(int y) const { return &pixels_[index(0, y)]; }

    Point place(float x, float y) const
    {
        const float all = static_cast<float>(side_);
        const float down = (y_.high - y) / y_.width() * all;
        return {(x - x_.low) / x_.width() * all, std::clamp(down, -all, 2.0f * all)};
    }

    /// A line through points; lines that cross add their light.
    void line(const std::vector<Point>& points, float width, const Colour& colour)
    {
        const float reach = 0.5f * width;
        Shape shape(boxOf(points, reach));
        for (size_t i = 0; i + 1 < points.size(); ++i) {
            const Point &a = points[i], &b = points[i + 1];
            cover(shape, boxOf({a, b}, reach), reach,
                  [&](const Point& p) { return distanceToLine(p, a, b); });
        }
        paint(
            shape, [](float under, float own, float coverage) { return std::max(under, own * coverage); },
            colour);
    }

    /// A dot, over what is there.
    void dot(const Point& at, float radius, const Colour& colour)
    {
        Shape shape(boxOf({at}, radius));
        cover(shape, shape.box, radius, [&](const Point& p) { return distance(p, at); });
        paint(
            shape, [](float under, float own, float coverage) { return under + (own - under) * coverage; },
            colour);
    }

private:
    /// Pixels from `left` and `top` up to but not including `right` and `bottom`.
    struct Box
    {
        int left, right, top, bottom;
    };

    /// How much of each pixel of a box is covered.
    struct Shape
    {
        explicit Shape(const Box& around)
            : box(around),
              coverage(static_cast<size_t>(box.right - box.left) * static_cast<size_t>(box.bottom - box.top))
        {
        }
        float& at(int x, int y)
        {
            return coverage[static_cast<size_t>(y - box.top) * static_cast<size_t>(box.right - box.left) +
                            static_cast<size_t>(x - box.left)];
        }

        Box box;
        std::vector<float> coverage;
    };

    size_t index(int x, int y) const
    {
        return static_cast<size_t>(y) * static_cast<size_t>(side_) + static_cast<size_t>(x);
    }

    /// The pixels within `reach` of points.
    Box boxOf(const std::vector<Point>& points, float reach) const
    {
        const auto clamped = [this](float v) { // NaN too
            const auto most = static_cast<float>(side_);
            return static_cast<int>(v > 0.0f ? std::min(v, most) : 0.0f);
        };
        Box box{side_, 0, side_, 0};
        for (const Point& p : points) {
            box.left = std::min(box.left, clamped(p.x - reach - 1.0f));
            box.right = std::max(box.right, clamped(p.x + reach + 2.0f));
            box.top = std::min(box.top, clamped(p.y - reach - 1.0f));
            box.bottom = std::max(box.bottom, clamped(p.y + reach + 2.0f));
        }
        return box;
    }

    /// Adds the pixels of a box that are within `reach` to a shape.
    template <class Distance>
    void cover(Shape& shape, const Box& box, float reach, Distance distanceTo) const
    {
        for (int y = box.top; y < box.bottom; ++y)
            for (int x = box.left; x < box.right; ++x) {
                float& value = shape.at(x, y);
                const Point centre{static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f};
                value = std::max(value, std::clamp(reach + 0.5f - distanceTo(centre), 0.0f, 1.0f));
            }
    }

    /// `mix` of what is there, the colour and how much of it.
    template <class Mix>
    void paint(Shape& shape, Mix mix, const Colour& colour)
    {
        for (int y = shape.box.top; y < shape.box.bottom; ++y)
            for (int x = shape.box.left; x < shape.box.right; ++x) {
                Colour& pixel = pixels_[index(x, y)];
                const float coverage = shape.at(x, y);
                pixel.r = mix(pixel.r, colour.r, coverage);
                pixel.g = mix(pixel.g, colour.g, coverage);
                pixel.b = mix(pixel.b, colour.b, coverage);
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

/// The colours are those of a screen; files of floats hold linear light.
float linearOf(float v)
{
    return v <= 0.04045f ? v / 12.92f : std::pow((v + 0.055f) / 1.055f, 2.4f);
}

void writePicture(const std::string& path, const Canvas& canvas)
{
    const int side = canvas.side();
    const unsigned char usual = usualFormat(path);
    const bool isLinear = isFloat(usual);
    const unsigned char format = isLinear ? usual : static_cast<unsigned char>(PXL_FORMAT_uint8);
    const Image image = newImage(side, side, 3, format, "colour curves");
    Band band;
    band.reset(image, 0, side);
    for (int y = 0; y < side; ++y) {
        std::vector<Colour> row(canvas.row(y), canvas.row(y) + side);
        for (Colour& pixel : row)
            if (isLinear)
                pixel = {linearOf(pixel.r), linearOf(pixel.g), linearOf(pixel.b)};
        convertFormat(PXL_FORMAT_float32, row.data(), format, band.row(y), int64_t{3} * side);
    }
    const std::unique_ptr<Writer> writer = createWriter(path, {path, {image}});
    writer->write(band, 0, side, [] {});
    writer->commit();
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
    }
    for (size_t c = 0; c < made.size(); ++c)
        for (const CurveKey& key : curves[c])
            canvas.dot(canvas.place(key.x, key.y), 5.0f * canvas.scale(), colours[c]);
    writePicture(path, canvas);
}

} // namespace host
