#include <host/shape/ShapeFill.h>

#include <host/graph/LibraryCall.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>

namespace host {

namespace {

/// Whether there is a soft edge anywhere.
bool isSoft(const Shape& shape, const ShapePoints& points)
{
    return shape.feather != 0.0 || std::any_of(points.begin(), points.end(),
                                               [](const ShapePoint& point) { return point.feather != 0.0; });
}

/// The outline in pixels of the window.
RU_RotoSpline splineOf(const Shape& shape, const ShapePoints& points, const Canvas& canvas)
{
    RU_RotoSpline spline(shape.kind, shape.fill, static_cast<float>(shape.detail),
                         static_cast<float>(shape.width * canvas.scale()));
    const auto pixel = [&canvas](const Place& place, size_t axis, int begin) {
        return static_cast<float>(place[axis] * canvas.unit[axis] + (canvas.origin[axis] - begin));
    };
    const auto x = [&](const Place& place) { return pixel(place, 0, canvas.window.x); };
    const auto y = [&](const Place& place) { return pixel(place, 1, canvas.window.y); };
    for (size_t i = 0; i < points.size(); ++i) {
        const ShapePoint& p = points[i];
        spline.addPoint(new RU_RotoPoint(static_cast<float>(i), x(p.at), y(p.at), static_cast<float>(p.alpha),
                                         x(p.in), y(p.in), x(p.out), y(p.out),
                                         static_cast<float>(p.feather * canvas.scale())));
    }
    return spline;
}

UT_Vector4 colourOf(const Shape& shape, const ShapePoints& points, const Canvas& canvas)
{
    const double sum =
        std::accumulate(points.begin(), points.end(), 0.0,
                        [](double total, const ShapePoint& point) { return total + point.alpha; });
    const auto alpha = static_cast<float>(shape.colour[3] * sum / static_cast<double>(points.size()));
    if (canvas.matte)
        return {alpha, alpha, alpha, alpha};
    return {shape.colour[0] * alpha, shape.colour[1] * alpha, shape.colour[2] * alpha, alpha};
}

} // namespace

int Canvas::side() const
{
    constexpr int64_t most = 1 << 16;
    int side = 100;
    while (window.pixels() / side / side > most)
        side *= 2;
    return side;
}

double Canvas::scale() const
{
    return std::sqrt(unit[0] * unit[1]);
}

ShapeFill::ShapeFill(const Shape& shape, const ShapePoints& points, const Canvas& canvas)
    : fill_(isSoft(shape, points) ? RU_POLYFILL_FEATHER : RU_POLYFILL_NORMAL, libraryThreads),
      colour_(colourOf(shape, points, canvas)),
      side_(canvas.side()), least_{HUGE_VAL, HUGE_VAL}, most_{-HUGE_VAL, -HUGE_VAL}
{
    const RU_RotoSpline spline = splineOf(shape, points, canvas);
    const auto reach = static_cast<float>(shape.feather * canvas.scale());
    const bool soft = isSoft(shape, points);
    const std::unique_ptr<GU_Detail> solid(soft ? spline.buildCore(reach) : spline.build());
    bring(*solid, canvas);
    fill_.initialize(solid.get());
    if (soft) {
        const std::unique_ptr<GU_Detail> edge(spline.buildFeather(reach));
        bring(*edge, canvas);
        fill_.initializeFeather(edge.get());
    }
    fill_.setSampling(shape.samples[0], shape.samples[1]);
    fill_.setDropoff(shape.dropoff);
    fill_.setResolution(canvas.window.width, canvas.window.height, side_, side_);
}

/// Brings pixels to the image that is 1 wide and high: equal places stay equal.
void ShapeFill::bring(GEO_Detail& detail, const Canvas& canvas)
{
    const auto width = static_cast<float>(canvas.window.width),
               height = static_cast<float>(canvas.window.height);
    for (int64_t i = 0; i < detail.pointCount(); ++i) {
        const UT_Vector4 pixel = detail.position(i);
        const Place place{pixel.x, pixel.y};
        for (size_t axis = 0; axis < 2; ++axis) {
            least_[axis] = std::min(least_[axis], place[axis]);
            most_[axis] = std::max(most_[axis], place[axis]);
        }
        detail.setPosition(i, {pixel.x / width, pixel.y / height, 0.0f, 1.0f});
    }
}

bool ShapeFill::touches(int bx, int by) const
{
    constexpr double beside = 2.0; // a soft edge is read at the corners of pixels
    const Place begin{static_cast<double>(bx) * side_, static_cast<double>(by) * side_};
    for (size_t axis = 0; axis < 2; ++axis)
        if (least_[axis] - beside > begin[axis] + side_ || most_[axis] + beside < begin[axis])
            return false;
    return true;
}

} // namespace host
