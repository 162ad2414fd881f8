#include <host/operation/OperationRows.h>
#include <host/operation/ResamplingNodes.h>

#include <host/text/Error.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <tuple>

namespace host {

namespace {

using Plan = ProjectionNode::Plan;
using Point = std::array<double, 2>;

Resampling resamplingOf(const Call& call)
{
    Resampling resampling;
    resampling.filter = static_cast<Resampling::Filter>(choiceOf(call, "filter"));
    resampling.wrap = static_cast<RU_FILTER_WRAP>(choiceOf(call, "wrap"));
    return resampling;
}

Window displayOf(const Image& image)
{
    return image.display.isEmpty() ? image.data : image.display;
}

std::unique_ptr<Node> projection(ProjectionNode::Planner planner, const Call& call)
{
    return std::make_unique<ProjectionNode>(std::move(planner), resamplingOf(call), call.planeSettings());
}

// --- resize

enum class Fit { None, Width, Height, Inside, Fill };

const std::vector<std::string>& fits()
{
    static const std::vector<std::string> names = {"none", "width", "height", "inside", "fill"};
    return names;
}

struct NewSize
{
    int width = 0, height = 0;
    double percent = 0.0; ///< 0: width and height count
    Fit fit = Fit::None;
};

int wholePixels(double size)
{
    return static_cast<int>(std::clamp(std::floor(size + 0.5), 1.0, 1e6));
}

/// The display window becomes as large as asked for; with "fill" what is too much of it is cut on both sides.
Plan resized(const Image& image, const NewSize& size)
{
    const Window from = displayOf(image);
    double x = size.percent / 100.0, y = x;
    if (size.percent == 0.0) {
        x = static_cast<double>(size.width) / from.width;
        y = static_cast<double>(size.height) / from.height;
    }
    if (size.fit == Fit::Width)
        y = x;
    if (size.fit == Fit::Height)
        x = y;
    if (size.fit == Fit::Inside)
        x = y = std::min(x, y);
    if (size.fit == Fit::Fill)
        x = y = std::max(x, y);
    Window to = {from.x, from.y, wholePixels(x * from.width), wholePixels(y * from.height)};
    double left = 0.0, top = 0.0; // cut, in new pixels
    if (size.fit == Fit::Fill) {
        left = 0.5 * (x * from.width - size.width);
        top = 0.5 * (y * from.height - size.height);
        to.width = size.width;
        to.height = size.height;
    } else { // the whole picture exactly in whole pixels
        x = static_cast<double>(to.width) / from.width;
        y = static_cast<double>(to.height) / from.height;
    }
    Plan plan;
    plan.display = to;
    const auto placed = [&](int place, double scale, int origin, double cut) {
        return (place - origin) * scale - cut + origin;
    };
    const double x0 = placed(image.data.x, x, from.x, left), y0 = placed(image.data.y, y, from.y, top);
    const double x1 = placed(image.data.x + image.data.width, x, from.x, left);
    const double y1 = placed(image.data.y + image.data.height, y, from.y, top);
    constexpr double rounding = 1e-6; // of products, which makes no pixel of its own
    const int dataX = static_cast<int>(std::floor(x0 + rounding)),
              dataY = static_cast<int>(std::floor(y0 + rounding));
    plan.data = {dataX, dataY, std::max(static_cast<int>(std::ceil(x1 - rounding)) - dataX, 1),
                 std::max(static_cast<int>(std::ceil(y1 - rounding)) - dataY, 1)};
    if (size.fit == Fit::Fill && intersection(image.data, from) == image.data)
        plan.data = intersection(plan.data, to);
    plan.fromOutput = Projection::shift(from.x, from.y) * Projection::scaling(1.0 / x, 1.0 / y) *
                      Projection::shift(left - from.x, top - from.y);
    if (plan.data.isEmpty()) { // all of it was cut: a pixel of nothing
        plan.data = {to.x, to.y, 1, 1};
        plan.fromOutput = {{}};
    }
    return plan;
}

std::unique_ptr<Node> resize(const Call& call)
{
    NewSize size;
    const std::string text = call.text("size");
    if (text.ends_with('%')) {
        readNumbers("SIZE", text.substr(0, text.size() - 1), {&size.percent, 1});
        if (!(size.percent >= 0.01 && size.percent <= 10000.0))
            refuse("SIZE: '" + text + "' is not from 0.01% to 10000%");
    } else {
        std::tie(size.width, size.height) = readSize("SIZE", text);
    }
    size.fit = static_cast<Fit>(choiceOf(call, "fit"));
    if (size.percent != 0.0 && size.fit != Fit::None)
        refuse("--fit is for a size in pixels; '" + text + "' keeps the shape of a picture anyway");
    return projection([size](const Image& image) { return resized(image, size); }, call);
}

// --- transform and corners

/// The output has the display window of the input. What lies beyond the input's data is in it only where
/// pixels are repeated there; else its data window is what the picture covers.
Plan placedIn(const Image& image, const Projection& toOutput, RU_FILTER_WRAP wrap)
{
    Plan plan;
    plan.display = displayOf(image);
    plan.data = enclosing(plan.display, image.data);
    plan.fromOutput = toOutput.inverse();
    if (wrap != RU_FILTER_BORDER)
        return plan;
    double x0 = INFINITY, y0 = INFINITY, x1 = -INFINITY, y1 = -INFINITY;
    const Window& data = image.data;
    for (const double x : {data.x - 1.0, data.x + data.width + 1.0})
        for (const double y : {data.y - 1.0, data.y + data.height + 1.0}) {
            const auto [u, v, w] = toOutput.at(x, y);
            if (!(w > 0.0))
                return plan;
            x0 = std::min(x0, u);
            y0 = std::min(y0, v);
            x1 = std::max(x1, u);
            y1 = std::max(y1, v);
        }
    const auto whole = [](double place) { return static_cast<int>(std::clamp(place, -1e8, 1e8)); };
    const int left = whole(std::floor(x0)) - 3, top = whole(std::floor(y0)) - 3; // room for filters
    const Window covered =
        intersection(plan.data, {left, top, whole(std::ceil(x1)) + 3 - left, whole(std::ceil(y1)) + 3 - top});
    if (!covered.isEmpty())
        plan.data = covered;
    return plan;
}

struct Motion
{
    Point translate{}, scale{1.0, 1.0};
    double rotate = 0.0; ///< degrees, counter-clockwise as seen
    std::optional<Point> pivot;
};

Projection projectionOf(const Motion& motion, const Window& display)
{
    const Point pivot =
        motion.pivot.value_or(Point{display.x + 0.5 * display.width, display.y + 0.5 * display.height});
    const double angle = motion.rotate * std::numbers::pi / 180.0;
    // Quarter turns are exact.
    const double quarters = motion.rotate / 90.0;
    double c = std::cos(angle), s = std::sin(angle);
    if (quarters == std::floor(quarters)) {
        constexpr double cosines[] = {1, 0, -1, 0};
        const auto quarter = static_cast<size_t>(quarters - 4.0 * std::floor(quarters / 4.0));
        c = cosines[quarter];
        s = cosines[(quarter + 3) % 4];
    }
    const Projection turn{{c, s, 0, -s, c, 0, 0, 0, 1}}; // y runs down
    return Projection::shift(pivot[0] + motion.translate[0], pivot[1] + motion.translate[1]) * turn *
           Projection::scaling(motion.scale[0], motion.scale[1]) * Projection::shift(-pivot[0], -pivot[1]);
}

std::unique_ptr<Node> transform(const Call& call)
{
    Motion motion;
    readNumbers("--translate", call.text("translate"), motion.translate);
    const std::string scale = call.text("scale");
    motion.scale = readPair("--scale", scale);
    if (std::min(std::abs(motion.scale[0]), std::abs(motion.scale[1])) < 1e-4)
        refuse("--scale: '" + scale + "' leaves nothing of the picture");
    motion.rotate = call.value("rotate");
    if (call.has("pivot"))
        readNumbers("--pivot", call.text("pivot"), motion.pivot.emplace());
    const RU_FILTER_WRAP wrap = resamplingOf(call).wrap;
    return projection(
        [=](const Image& image) { return placedIn(image, projectionOf(motion, displayOf(image)), wrap); },
        call);
}

/// Whether a shape of four points turns the same way at each.
bool isConvex(const std::array<Point, 4>& points)
{
    int turns = 0;
    for (size_t k = 0; k < 4; ++k) {
        const auto &a = points[k], &b = points[(k + 1) % 4], &c = points[(k + 2) % 4];
        const double turn = (b[0] - a[0]) * (c[1] - b[1]) - (b[1] - a[1]) * (c[0] - b[0]);
        turns += turn > 0.0 ? 1 : turn < 0.0 ? -1 : 0;
    }
    return std::abs(turns) == 4;
}

constexpr const char* cornerNames[] = {"TOP-LEFT", "TOP-RIGHT", "BOTTOM-RIGHT", "BOTTOM-LEFT"};
constexpr const char* cornerKeys[] = {"topLeft", "topRight", "bottomRight", "bottomLeft"};

std::unique_ptr<Node> corners(const Call& call)
{
    std::array<Point, 4> points{};
    for (size_t k = 0; k < 4; ++k)
        readNumbers(cornerNames[k], call.text(cornerKeys[k]), points[k]);
    if (!isConvex(points))
        refuse("the four corners enclose no convex shape; expected them in the order top left, top right, "
               "bottom "
               "right, bottom left");
    const RU_FILTER_WRAP wrap = resamplingOf(call).wrap;
    return projection(
        [=](const Image& image) {
            const Window display = displayOf(image);
            const Projection toSquare = Projection::scaling(1.0 / display.width, 1.0 / display.height) *
                                        Projection::shift(-display.x, -display.y);
            return placedIn(image, Projection::squareTo(points) * toSquare, wrap);
        },
        call);
}

std::unique_ptr<Node> warp(const Call& call)
{
    return std::make_unique<WarpNode>(resamplingOf(call), call.planeSettings());
}

// --- Rows

/// With what all of these take: filter, wrap, depth and alpha. They work on all planes.
std::vector<Parameter> withFilter(std::vector<Parameter> parameters, const char* filter, const char* wrap)
{
    Parameter filters = text("--filter", "how pixels are weighed", "NAME", filter);
    filters.argument.choices = resamplingFilters();
    filters.argument.meanings = {"the nearest pixel, nothing in between",
                                 "the mean of the area under a pixel; straight lines when enlarging",
                                 "straight lines between pixels; a tent when reducing",
                                 "soft, without ringing",
                                 "sharp cubic through the pixels",
                                 "cubic between blur and ringing",
                                 "sharp, rings a little at hard edges",
                                 "a raised cosine, soft; shows pixels when enlarging"};
    Parameter wraps = text("--wrap", "what lies beyond the image", "RULE", wrap);
    wraps.argument.choices = resamplingWraps();
    wraps.argument.meanings = {"the image again", "its nearest pixel", "black and transparent"};
    parameters.push_back(std::move(filters));
    parameters.push_back(std::move(wraps));
    return forAllPlanes(std::move(parameters));
}

Operation resizeRow()
{
    Parameter size = text("SIZE", "width and height in pixels, or a percentage of both", "WxH|N%");
    size.required = true;
    Parameter fit = text("--fit", "what happens to another shape", "HOW", "none");
    fit.argument.choices = fits();
    fit.argument.meanings = {"it is stretched", "the width is as asked for, the height follows",
                             "the height is as asked for, the width follows",
                             "the picture fits inside of the size",
                             "the picture fills the size, and what is too much is cut"};
    return {"resize", "Make an image or a sequence larger or smaller",
            "Examples:\n"
            "  kreiluge resize in.exr 2048x1080 -o small.exr\n"
            "  kreiluge resize in.####.exr 50% -o half.####.exr --frames 1-100\n"
            "  kreiluge resize photo.jpg 400x400 -o thumb.png --fit fill\n"
            "The sharp filters undershoot beside bright edges: float and half keep values below 0 and above\n"
            "1, integers clamp them. `--filter mitchell` rings less, those of one sign (`box`, `triangle`, "
            "`gaussian`, `hann`) not at all.",
            withFilter({image("INPUT", "image"), std::move(size), std::move(fit)}, "lanczos3", "clamp"),
            resize};
}

Operation transformRow()
{
    return {"transform", "Move, turn and scale an image inside its frame",
            "Examples:\n"
            "  kreiluge transform in.exr -o out.exr --rotate 12 --scale 0.8\n"
            "  kreiluge transform in.png -o out.png --translate 10.5,-3 --filter catmullrom\n"
            "It is scaled first, then turned, both about the pivot, then moved.",
            withFilter(
                {image("INPUT", "image"), text("--translate", "pixels to the right and down", "X,Y", "0,0"),
                 number("--rotate", "degrees, counter-clockwise", "0"),
                 text("--scale", "factor, or one for each axis", "N|X,Y", "1"),
                 text("--pivot", "place that stays (default: the middle of the display window)", "X,Y")},
                "catmullrom", "border"),
            transform};
}

Operation cornersRow()
{
    std::vector<Parameter> parameters = {image("INPUT", "image")};
    const char* const help[] = {"place of the picture's top left corner, in pixels",
                                "of its top right corner", "of its bottom right corner",
                                "of its bottom left corner"};
    for (size_t k = 0; k < 4; ++k) {
        Parameter corner = text(cornerNames[k], help[k], "X,Y");
        corner.required = true;
        corner.id = cornerKeys[k];
        parameters.push_back(std::move(corner));
    }
    return {"corners", "Pin the corners of an image to four places",
            "Examples:\n"
            "  kreiluge corners poster.png 120,80 900,40 930,700 100,650 -o pinned.exr\n"
            "The frame stays that of the image; y runs down from its top.",
            withFilter(std::move(parameters), "catmullrom", "border"), corners};
}

Operation warpRow()
{
    return {
        "warp", "Take every pixel of an image from the place that a map names",
        "Examples:\n"
        "  kreiluge warp in.exr --map st.exr -o out.exr\n"
        "Red is the place from 0 at the left to 1 at the right edge of the image's frame, green from 0 at\n"
        "its bottom to 1 at its top. The result has the windows of the map. Maps want float: a half holds\n"
        "2048 places across. All of the image is kept in memory.",
        withFilter({image("INPUT", "image"), image("--map", "image of places")}, "catmullrom", "clamp"),
        warp};
}

} // namespace

std::vector<Operation> resampleOperations()
{
    return {resizeRow(), transformRow(), cornersRow(), warpRow()};
}

} // namespace host
