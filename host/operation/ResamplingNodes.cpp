#include <host/operation/ResamplingNodes.h>

#include <host/text/Error.h>

#include <algorithm>
#include <cmath>

namespace host {

namespace {

/// The bounds of places over a rectangle, and of the sizes of their footprints.
struct Extent
{
    double lowU = INFINITY, lowV = INFINITY, highU = -INFINITY, highV = -INFINITY;
    double width = 0.0, height = 0.0;
    bool isBounded = true;
};

/// How places change from pixel to pixel: the numerators over w^2, linear in y and in x.
struct Steps
{
    double ux, uy, vx, vy;
};

Steps stepsAt(const Projection& p, double x, double y)
{
    const auto& m = p.m;
    return {m[0] * (m[7] * y + m[8]) - m[6] * (m[1] * y + m[2]),
            m[1] * (m[6] * x + m[8]) - m[7] * (m[0] * x + m[2]),
            m[3] * (m[7] * y + m[8]) - m[6] * (m[4] * y + m[5]),
            m[4] * (m[6] * x + m[8]) - m[7] * (m[3] * x + m[5])};
}

double length(double a, double b)
{
    return std::sqrt(a * a + b * b);
}

Extent extentOf(const Projection& projection, const Window& rect)
{
    Extent extent;
    double w = INFINITY;
    Steps most{};
    for (const double x : {rect.x + 0.0, rect.x + 1.0 * rect.width})
        for (const double y : {rect.y + 0.0, rect.y + 1.0 * rect.height}) {
            const auto [u, v, divisor] = projection.at(x, y);
            const Steps steps = stepsAt(projection, x, y);
            extent.isBounded = extent.isBounded && divisor > 0.0;
            extent.lowU = std::min(extent.lowU, u);
            extent.highU = std::max(extent.highU, u);
            extent.lowV = std::min(extent.lowV, v);
            extent.highV = std::max(extent.highV, v);
            w = std::min(w, divisor);
            most = {std::max(most.ux, std::abs(steps.ux)), std::max(most.uy, std::abs(steps.uy)),
                    std::max(most.vx, std::abs(steps.vx)), std::max(most.vy, std::abs(steps.vy))};
        }
    extent.width = length(most.ux, most.uy) / (w * w);
    extent.height = length(most.vx, most.vy) / (w * w);
    return extent;
}

void place(const Projection& projection, const Window& rect, Footprints& out)
{
    for (int y = rect.y; y < rect.y + rect.height; ++y)
        for (int x = rect.x; x < rect.x + rect.width; ++x) {
            const auto [u, v, w] = projection.at(x + 0.5, y + 0.5);
            const Steps steps = stepsAt(projection, x + 0.5, y + 0.5);
            out.u.push_back(w > 0.0 ? u : NAN); // behind the eye there is nothing
            out.v.push_back(w > 0.0 ? v : NAN);
            out.width.push_back(length(steps.ux, steps.uy) / (w * w));
            out.height.push_back(length(steps.vx, steps.vy) / (w * w));
        }
}

} // namespace

Picture ProjectionNode::plan(const std::vector<const Picture*>& inputs)
{
    const Planes in(*inputs.front());
    Picture output = planFloats(in, 0, settings_);
    for (size_t p = 0; p < in.size(); ++p) {
        const Plan plan = planner_(in.image(p));
        Image& part = output.parts[in.part(p)];
        part.data = plan.data;
        part.display = plan.display;
        const Window& window = in.window(p);
        Projection projection = Projection::shift(-window.x, -window.y) * plan.fromOutput;
        const double x = part.data.x + 0.5 * part.data.width, y = part.data.y + 0.5 * part.data.height;
        if (projection.at(x, y)[2] < 0.0) // w is above 0 where the picture is
            for (double& value : projection.m)
                value = -value;
        const Source source{projection, window};
        const auto known = std::find(sources_.begin(), sources_.end(), source);
        sourceOf_.push_back(static_cast<size_t>(known - sources_.begin()));
        if (known == sources_.end())
            sources_.push_back(source);
    }
    double span = 0.0;
    for (const Source& source : sources_) {
        const Extent extent = extentOf(source.projection, {0, 0, 1, 1});
        const bool varies = source.projection.m[6] != 0.0 || source.projection.m[7] != 0.0;
        const double side =
            pieceSide * 1.5 * std::max(extent.width, extent.height); // 1.5: across a slanted one
        span =
            std::max(span, varies ? INFINITY : side + 2.0 * reachOf(std::max(extent.width, extent.height)));
    }
    setSpan(span);
    return output;
}

Window ProjectionNode::needs(size_t, const Window& window) const
{
    Window all;
    for (const Source& source : sources_) {
        const Extent extent = extentOf(source.projection, window);
        const double x = reachOf(extent.width), y = reachOf(extent.height);
        all = enclosing(all, extent.isBounded ? readOf(source.window, extent.lowU - x, extent.lowV - y,
                                                       extent.highU + x, extent.highV + y)
                                              : source.window);
    }
    return all;
}

Block ProjectionNode::pixels(size_t plane, const Window& rect, Feed& feed) const
{
    const Projection& projection = sources_[sourceOf_[plane]].projection;
    return resample(
        plane, rect, [&](const Window& part, Footprints& out) { place(projection, part, out); }, feed);
}

Picture WarpNode::plan(const std::vector<const Picture*>& inputs)
{
    const Planes in(*inputs[image]), places(*inputs[map]);
    while (mapPlane_ < places.size() && !(places[mapPlane_].present()[0] && places[mapPlane_].present()[1]))
        ++mapPlane_;
    if (mapPlane_ == places.size())
        refuse("'" + places.picture.path + "' is no map of places: it has no plane of red and green");
    Picture output = planFloats(in, image, settings_);
    for (size_t p = 0; p < in.size(); ++p) {
        works_[p].recipe.uses.push_back({map, mapPlane_});
        const Image& from = in.image(p);
        displays_.push_back(from.display.isEmpty() ? from.data : from.display);
        Image& part = output.parts[in.part(p)];
        part.data = places.window(mapPlane_);
        part.display = places.image(mapPlane_).display;
    }
    return output;
}

/// All of the image, and the map with a pixel around, for the differences.
Window WarpNode::needs(size_t input, const Window& window) const
{
    if (input == map)
        return {window.x - 1, window.y - 1, window.width + 2, window.height + 2};
    Window all;
    for (const PlaneWork& work : works_)
        all = enclosing(all, work.window);
    return all;
}

Block WarpNode::pixels(size_t plane, const Window& rect, Feed& feed) const
{
    const Window& display = displays_[plane];
    const Window& window = works_[plane].window;
    Block places = feed.load({map,
                              mapPlane_,
                              {rect.x - 1, rect.y - 1, rect.width + 2, rect.height + 2},
                              PXL_FORMAT_float32,
                              {0, 1, -1, -1},
                              Outside::Edge});
    const auto placeOf = [&](const Window& part, Footprints& out) {
        const int64_t stride = places.rect.width;
        for (int y = part.y; y < part.y + part.height; ++y)
            for (int x = part.x; x < part.x + part.width; ++x) {
                const int64_t k = places.offset(x, y) / static_cast<int64_t>(sizeof(float));
                const float *s = places.values<float>(0) + k, *t = places.values<float>(1) + k;
                const auto difference = [](const float* value, int64_t step) {
                    return 0.5 * (static_cast<double>(value[step]) - static_cast<double>(value[-step]));
                };
                out.u.push_back(display.x - window.x + double{*s} * display.width);
                out.v.push_back(display.y - window.y + (1.0 - double{*t}) * display.height);
                out.width.push_back(length(difference(s, 1), difference(s, stride)) * display.width);
                out.height.push_back(length(difference(t, 1), difference(t, stride)) * display.height);
            }
    };
    Block out = resample(plane, rect, placeOf, feed);
    feed.give(std::move(places));
    return out;
}

} // namespace host
