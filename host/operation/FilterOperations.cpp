#include <host/operation/AlgorithmNode.h>
#include <host/operation/OperationRows.h>

#include <host/text/Error.h>

#include <RU/filter/RU_EdgeDetect.h>

namespace host {

namespace {

/// A filter on the components of a scope.
std::unique_ptr<Node> filter(std::unique_ptr<RU_Algorithm> algorithm, const Call& call)
{
    AlgorithmNode::Work work;
    work.algorithm = std::move(algorithm);
    work.written = componentsOfLetters(call.text("scope"));
    work.isFilter = true;
    work.colourSpace = ""; // differences and the like are no colours
    return std::make_unique<AlgorithmNode>(std::move(work), call.planeSettings());
}

std::unique_ptr<Node> edge(const Call& call)
{
    auto edge = std::make_unique<RU_EdgeDetect>();
    edge->sobelWeights = call.isOn("prewitt") ? 0 : 1;
    edge->edgeGain = call.value("gain");
    edge->cornerWeight = call.value("corner");
    return filter(std::move(edge), call);
}

Parameter scope()
{
    return text("--scope", "components to work on; the others are copied", "COMPONENTS", "rgb");
}

} // namespace

std::vector<Operation> filterOperations()
{
    return {{"edge", "Turn an image or a sequence into its edges",
             "Examples:\n"
             "  kreiluge edge in.exr -o edges.exr\n"
             "  kreiluge edge in.png -o edges.png --prewitt --gain 2",
             withPlanes({image("INPUT", "image"),
                         onOff("--prewitt", "weigh the nine pixels alike (default: Sobel weights)"),
                         number("--gain", "gain of the differences", "1"),
                         number("--corner", "share of the corner pixels", "1"), scope()},
                        true),
             edge}};
}

} // namespace host
