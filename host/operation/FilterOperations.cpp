#include <host/operation/AlgorithmNode.h>
#include <host/operation/MorphologyFilter.h>
#include <host/operation/OperationRows.h>
#include <host/operation/ShiftNode.h>

#include <host/text/Error.h>

#include <RU/filter/RU_Degrain.h>
#include <RU/filter/RU_EdgeDetect.h>
#include <RU/filter/RU_Feather.h>

namespace host {

namespace {

constexpr unsigned int mostReach = 1000; ///< pixels

using Pass = MorphologyFilter::Pass;

/// A filter on the components of a scope.
std::unique_ptr<Node> filter(std::unique_ptr<RU_Algorithm> algorithm, const Call& call,
                             std::optional<std::string> colourSpace = {})
{
    AlgorithmNode::Work work;
    work.algorithm = std::move(algorithm);
    work.written = componentsOfLetters(call.text("scope"));
    work.isFilter = true;
    work.colourSpace = std::move(colourSpace);
    return std::make_unique<AlgorithmNode>(std::move(work), call.planeSettings());
}

std::unique_ptr<Node> edge(const Call& call)
{
    auto edge = std::make_unique<RU_EdgeDetect>();
    edge->sobelWeights = call.isOn("prewitt") ? 0 : 1;
    edge->edgeGain = call.value("gain");
    edge->cornerWeight = call.value("corner");
    return filter(std::move(edge), call, ""); // differences are no colours
}

std::unique_ptr<Node> degrain(const Call& call)
{
    auto degrain = std::make_unique<RU_Degrain>();
    degrain->grainSize = static_cast<int>(readWhole("--size", call.text("size"), 0, mostReach));
    return filter(std::move(degrain), call);
}

std::unique_ptr<Node> feather(const Call& call)
{
    auto feather = std::make_unique<RU_Feather>();
    const auto [x, y] = readPair("--radius", call.text("radius"));
    if (!(x >= 0.0 && y >= 0.0 && x <= mostReach && y <= mostReach))
        refuse("--radius: '" + call.text("radius") + "' is not from 0 to " + std::to_string(mostReach));
    feather->radiusX = static_cast<float>(x);
    feather->radiusY = static_cast<float>(y);
    feather->dropoff = static_cast<RU_FeatherDropoff>(choiceOf(call, "drop-off"));
    return filter(std::move(feather), call);
}

template <Pass... Passes>
std::unique_ptr<Node> morphology(const Call& call)
{
    const std::string size = call.text("size");
    const auto [width, height] =
        readSize("--size", size.find('x') == size.npos ? size + "x" + size : size, mostReach);
    return filter(std::make_unique<MorphologyFilter>(std::vector<Pass>{Passes...}, width, height), call);
}

std::unique_ptr<Node> shift(const Call& call)
{
    double x = 0.0, y = 0.0;
    readNumbers("DX", call.text("dx"), {&x, 1});
    readNumbers("DY", call.text("dy"), {&y, 1});
    return std::make_unique<ShiftNode>(x, y, call.planeSettings());
}

Parameter scope(const char* preset)
{
    return text("--scope", "components to work on; the others are copied", "COMPONENTS", preset);
}

Operation edgeRow()
{
    return {"edge", "Turn an image or a sequence into its edges",
            "Examples:\n"
            "  kreiluge edge in.exr -o edges.exr\n"
            "  kreiluge edge in.png -o edges.png --prewitt --gain 2",
            withPlanes({image("INPUT", "image"),
                        onOff("--prewitt", "weigh the nine pixels alike (default: Sobel weights)"),
                        number("--gain", "gain of the differences", "1"),
                        number("--corner", "share of the corner pixels", "1"), scope("rgb")},
                       true),
            edge};
}

Operation degrainRow()
{
    return {"degrain", "Take film grain and specks out of an image",
            "Examples:\n"
            "  kreiluge degrain scan.####.dpx -o clean.####.dpx --frames 1-48\n"
            "  kreiluge degrain in.exr -o out.exr --size 2\n"
            "Dark, then bright specks go up to the size both across and down. Lines along\n"
            "a row or a column stay.",
            withPlanes({image("INPUT", "image"), text("--size", "specks up to so many pixels go", "N", "5"),
                        scope("rgb")},
                       false),
            degrain};
}

Operation featherRow()
{
    return {"feather", "Let the bright areas of an image or a matte grow a soft edge",
            "Examples:\n"
            "  kreiluge feather matte.exr -o soft.exr --radius 12 --drop-off smooth\n"
            "  kreiluge feather key.png -o key.png --radius 20,4 --scope a\n"
            "Nothing becomes darker. To soften inwards, feather the inverted matte.",
            withPlanes({image("INPUT", "image"),
                        text("--radius", "pixels, or one number for each axis", "N|X,Y", "5"),
                        dropOff("how the edge falls off", "linear"), scope("rgba")},
                       true),
            feather};
}

Operation morphologyRow(const char* name, const char* summary, const char* more,
                        std::unique_ptr<Node> (*make)(const Call&))
{
    const std::string command = std::string("  kreiluge ") + name;
    return {name, summary,
            "Examples:\n" + command + " matte.exr -o out.exr --size 5\n" + command +
                " matte.####.png -o out.####.png --size 1x9 --scope a --frames 1-48\n" + more,
            withPlanes({image("INPUT", "image"),
                        text("--size",
                             "width and height of the rectangle around each pixel; even ones count as the "
                             "next larger",
                             "N|WxH", "3"),
                        scope("rgba")},
                       false),
            make};
}

Operation shiftRow()
{
    Parameter x = text("DX", "pixels to the right"), y = text("DY", "pixels down");
    x.required = y.required = true;
    return {"shift", "Move an image by whole pixels and fractions of them",
            "Examples:\n"
            "  kreiluge shift in.exr 12 -3 -o out.exr\n"
            "  kreiluge shift in.png 0.25 0.5 -o out.png\n"
            "Whole pixels move the data window and keep every bit; a fraction mixes 2 x 2 pixels and\n"
            "needs one more row or column. The frame stays: what leaves it is cut by file formats without a\n"
            "data window.",
            forAllPlanes({image("INPUT", "image"), x, y}), shift};
}

} // namespace

std::vector<Operation> filterOperations()
{
    return {edgeRow(),
            degrainRow(),
            featherRow(),
            morphologyRow("dilate", "Grow the bright areas of an image or a matte",
                          "The largest value of the rectangle.", morphology<Pass::Dilate>),
            morphologyRow("erode", "Shrink the bright areas of an image or a matte",
                          "The smallest value of the rectangle.", morphology<Pass::Erode>),
            morphologyRow("open", "Take bright specks and thin lines out of an image or a matte",
                          "Erodes, then dilates.", morphology<Pass::Erode, Pass::Dilate>),
            morphologyRow("close", "Take dark specks and gaps out of an image or a matte",
                          "Dilates, then erodes.", morphology<Pass::Dilate, Pass::Erode>),
            shiftRow()};
}

} // namespace host
