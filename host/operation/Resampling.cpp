#include <host/operation/Resampling.h>

#include <host/file/Format.h>

#include <algorithm>
#include <cmath>

namespace host {

namespace {

constexpr double exactPlaces = 1 << 23; ///< that a float tells apart, and the places half way between them
constexpr double mostReach = 500.0;     ///< of a filter, half of the pixels that the library weighs in a row
constexpr int64_t mostPixels = 1 << 21;
constexpr int boundless = 1 << 20; ///< a plane that no place leaves

UT_FilterType typeOf(Resampling::Filter filter)
{
    constexpr UT_FilterType types[] = {UT_FILTER_BOX,
                                       UT_FILTER_BOX,
                                       UT_FILTER_TRIANGLE_SAMPLED,
                                       UT_FILTER_GAUSSIAN_SAMPLED,
                                       UT_FILTER_CATMULLROM_SAMPLED,
                                       UT_FILTER_MITCHELL_SAMPLED,
                                       UT_FILTER_LANCZOS3_SAMPLED,
                                       UT_FILTER_HANN_SAMPLED};
    return types[static_cast<size_t>(filter)];
}

/// The pixels that footprints are read from.
struct Bounds
{
    double low = INFINITY, high = -INFINITY;
    int first = 0;

    int64_t pixels() const { return low <= high ? static_cast<int64_t>(high - low) + 2 : 0; }
};

/// Where footprints begin and end, counted from a pixel.
struct Corners
{
    std::vector<float> begin, end;
};

void setCorners(Corners& corners, const std::vector<double>& centre, const std::vector<double>& size,
                int first)
{
    corners.begin.clear();
    corners.end.clear();
    for (size_t k = 0; k < centre.size(); ++k) {
        corners.begin.push_back(static_cast<float>(centre[k] - 0.5 * size[k] - first));
        corners.end.push_back(static_cast<float>(centre[k] + 0.5 * size[k] - first));
    }
}

void divide(std::vector<UT_Vector4>& samples)
{
    for (UT_Vector4& sample : samples)
        for (float* value : {&sample.x, &sample.y, &sample.z})
            divideByAlpha(value, &sample.w, 1);
}

void store(const std::vector<UT_Vector4>& samples, const Window& rect, Block& out)
{
    for (size_t c = 0; c < 4; ++c) {
        const UT_Vector4* sample = samples.data();
        for (int y = rect.y; out.has(c) && y < rect.y + rect.height; ++y) {
            float* row = out.values<float>(c) + out.offset(rect.x, y) / static_cast<int64_t>(sizeof(float));
            for (int x = 0; x < rect.width; ++x, ++sample)
                row[x] = (&sample->x)[c];
        }
    }
}

/// The number of whole periods before a place.
int periodsBefore(int place, int period)
{
    return place >= 0 ? place / period : -((period - 1 - place) / period);
}

/// Copies what two rectangles share.
void copyShared(const Block& from, Block& to)
{
    const Window shared = intersection(from.rect, to.rect);
    for (size_t c = 0; c < 4; ++c)
        for (int y = shared.y; to.has(c) && y < shared.y + shared.height; ++y) {
            const auto* row = reinterpret_cast<const float*>(from.pixel(c, shared.x, y));
            std::copy_n(
                row, shared.width,
                reinterpret_cast<float*>(static_cast<char*>(to.data[c].data()) + to.offset(shared.x, y)));
        }
}

} // namespace

const std::vector<std::string>& resamplingFilters()
{
    static const std::vector<std::string> names = {"nearest",    "box",      "triangle", "gaussian",
                                                   "catmullrom", "mitchell", "lanczos3", "hann"};
    return names;
}

const std::vector<std::string>& resamplingWraps()
{
    static const std::vector<std::string> names = {"repeat", "clamp", "border"};
    return names;
}

struct ResamplingNode::Workspace
{
    RU_FilterArea area;
    Footprints prints;
    Corners u, v;
    std::vector<UT_Vector4> samples;
};

ResamplingNode::ResamplingNode(const Resampling& resampling)
    : resampling_(resampling), type_(typeOf(resampling.filter)),
      support_(UT_Filter::getFilter(type_)->getSupport())
{
}

Picture ResamplingNode::planFloats(const Planes& in, size_t input, const PlaneSettings& settings)
{
    Picture output = planPlanes(in, input, settings);
    for (size_t p = 0; p < in.size(); ++p)
        if (works_[p].format == PXL_FORMAT_uint32)
            notes_.push_back("'" + in.picture.path + "': plane " + in[p].name +
                             " is filtered in float, which keeps 24 of the 32 bits");
    return output;
}

void ResamplingNode::setSpan(double pixels)
{
    while (placesPerPixel_ < 65536.0 && (pixels + 10.0) * 2.0 * placesPerPixel_ < exactPlaces)
        placesPerPixel_ *= 2.0;
}

double ResamplingNode::reachOf(double size) const
{
    return std::min(std::max(size, 1.0) * 0.5 * support_, mostReach);
}

Window ResamplingNode::readOf(const Window& window, double lowU, double lowV, double highU,
                              double highV) const
{
    const auto range = [&](double low, double high, int size) {
        // Beyond the edge nothing is nearer than the pixels there.
        const auto clip = [&](double place) {
            return std::clamp(place, -2.0 * mostReach, size + 2.0 * mostReach);
        };
        int first = static_cast<int>(std::floor(clip(low))) - 2,
            last = static_cast<int>(std::floor(clip(high))) + 2;
        if (resampling_.wrap == RU_FILTER_CLAMP) {
            first = std::min(first, size - 1);
            last = std::max(last, 0);
        } else if (resampling_.wrap == RU_FILTER_REPEAT && (first < 0 || last >= size)) {
            first = 0;
            last = size - 1;
        }
        return std::pair(first, last - first + 1);
    };
    if (!(lowU <= highU) || !(lowV <= highV))
        return window;
    const auto [x, width] = range(lowU, highU, window.width);
    const auto [y, height] = range(lowV, highV, window.height);
    return {window.x + x, window.y + y, width, height};
}

/// Rounds places, and moves those beyond the edges so near that they are read no further than they reach.
void ResamplingNode::keepInReach(const Window& window, Footprints& prints) const
{
    const double most = 2.0 * mostReach / support_;
    const auto rounded = [this](double place) {
        return std::floor(place * placesPerPixel_ + 0.5) / placesPerPixel_;
    };
    const auto keep = [&](double& place, double& size, int pixels) {
        if (resampling_.filter == Resampling::Filter::Nearest) {
            place = std::floor(place) + 0.5;
            size = 1.0;
        }
        if (!std::isfinite(place) || std::isnan(size)) {
            place = NAN;
            return;
        }
        size = rounded(std::min(size, most));
        const double reach = reachOf(size);
        if (resampling_.wrap == RU_FILTER_REPEAT)
            place -= std::floor(place / pixels) * pixels;
        else if (resampling_.wrap == RU_FILTER_CLAMP)
            place = std::clamp(place, 0.5 - reach, pixels - 0.5 + reach);
        else
            place = std::clamp(place, -1.0 - reach, pixels + 1.0 + reach);
        place = rounded(place - 0.5 * size) + 0.5 * size;
    };
    for (size_t k = 0; k < prints.u.size(); ++k) {
        keep(prints.u[k], prints.width[k], window.width);
        keep(prints.v[k], prints.height[k], window.height);
    }
}

Block ResamplingNode::resample(size_t plane, const Window& rect, const Places& places, Feed& feed) const
{
    const PlaneWork& work = works_[plane];
    Block out = feed.blank(rect, PXL_FORMAT_float32, work.present);
    Workspace workspace;
    workspace.area.setFilter(type_, 1.0f, type_, 1.0f);
    for (int y = rect.y; y < rect.y + rect.height; y += pieceSide)
        for (int x = rect.x; x < rect.x + rect.width; x += pieceSide) {
            samplePiece(plane, intersection(rect, {x, y, pieceSide, pieceSide}), places, feed, workspace,
                        out);
            feed.check();
        }
    return out;
}

void ResamplingNode::samplePiece(size_t plane, const Window& rect, const Places& places, Feed& feed,
                                 Workspace& workspace, Block& out) const
{
    const PlaneWork& work = works_[plane];
    Footprints& prints = workspace.prints;
    for (std::vector<double>* values : {&prints.u, &prints.v, &prints.width, &prints.height})
        values->clear();
    places(rect, prints);
    keepInReach(work.window, prints);
    const auto boundsOf = [this](const std::vector<double>& place, const std::vector<double>& size) {
        Bounds bounds;
        for (size_t k = 0; k < place.size(); ++k)
            if (!std::isnan(place[k])) {
                bounds.low = std::min(bounds.low, place[k] - reachOf(size[k]));
                bounds.high = std::max(bounds.high, place[k] + reachOf(size[k]));
            }
        bounds.first = bounds.pixels() > 0 ? static_cast<int>(std::floor(bounds.low)) - 1 : 0;
        return bounds;
    };
    const Bounds x = boundsOf(prints.u, prints.width), y = boundsOf(prints.v, prints.height);
    const auto mostColumns = static_cast<int64_t>(exactPlaces / placesPerPixel_) - 8;
    if (rect.pixels() > 1 &&
        (x.pixels() > mostColumns || y.pixels() > mostColumns || x.pixels() * y.pixels() > mostPixels)) {
        const bool beside = rect.width >= rect.height;
        Window first = rect, second = rect;
        (beside ? first.width : first.height) /= 2;
        (beside ? second.x : second.y) += beside ? first.width : first.height;
        (beside ? second.width : second.height) -= beside ? first.width : first.height;
        samplePiece(plane, first, places, feed, workspace, out);
        samplePiece(plane, second, places, feed, workspace, out);
        return;
    }
    RU_FilterArea& area = workspace.area;
    Corners &u = workspace.u, &v = workspace.v;
    std::vector<UT_Vector4>& samples = workspace.samples;
    setCorners(u, prints.u, prints.width, x.first);
    setCorners(v, prints.v, prints.height, y.first);
    area.setFourCornerCoords(u.begin.data(), v.begin.data(), u.end.data(), v.end.data(), rect.height,
                             rect.width, boundless, boundless, nullptr);
    int x0 = 0, x1 = 0, y0 = 0, y1 = 0;
    area.getInputRegion(x0, x1, y0, y1);
    Block in;
    if (x0 <= x1 && y0 <= y1)
        in = loadMultiplied(
            plane, {work.window.x + x.first + x0, work.window.y + y.first + y0, x1 - x0 + 1, y1 - y0 + 1},
            outside(), [&](const Feed::Wish& wish) { return loadWrapped(wish, work.window, feed); });
    samples.assign(static_cast<size_t>(rect.pixels()), {});
    area.sample4(samples.data(), in.values<float>(0), in.values<float>(1), in.values<float>(2),
                 in.values<float>(3));
    feed.give(std::move(in));
    if (work.multiplies)
        divide(samples);
    store(samples, rect, out);
}

Outside ResamplingNode::outside() const
{
    return resampling_.wrap == RU_FILTER_BORDER ? Outside::Zero : Outside::Edge;
}

/// A rectangle that may lie across the edges of a window, which is repeated there.
Block ResamplingNode::loadWrapped(const Feed::Wish& wish, const Window& window, Feed& feed) const
{
    const Window& rect = wish.rect;
    if (resampling_.wrap != RU_FILTER_REPEAT || intersection(rect, window) == rect)
        return feed.load(wish);
    Block all;
    const int right = rect.x + rect.width, bottom = rect.y + rect.height;
    for (int top = rect.y; top < bottom;) {
        const int above = window.y + periodsBefore(top - window.y, window.height) * window.height;
        const int height = std::min(bottom, above + window.height) - top;
        for (int left = rect.x; left < right;) {
            const int before = window.x + periodsBefore(left - window.x, window.width) * window.width;
            const int width = std::min(right, before + window.width) - left;
            Feed::Wish part = wish;
            part.rect = {left - before + window.x, top - above + window.y, width, height};
            Block piece = feed.load(part);
            if (all.count() == 0)
                all = feed.blank(rect, wish.format, {piece.has(0), piece.has(1), piece.has(2), piece.has(3)});
            piece.rect = {left, top, width, height};
            copyShared(piece, all);
            feed.give(std::move(piece));
            left += width;
        }
        top += height;
    }
    return all;
}

} // namespace host
