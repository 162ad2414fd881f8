#include <host/operation/BlendNode.h>
#include <host/operation/CompositeNames.h>
#include <host/operation/CompositeNode.h>
#include <host/operation/OperationRows.h>

#include <host/text/Error.h>

#include <cstdio>

namespace host {

namespace {

std::unique_ptr<Node> comp(const Call& call)
{
    const CompositeNode::Settings settings{compositeOfName(call.text("mode")), call.isOn("premult"),
                                           call.isOn("unpremult")};
    return std::make_unique<CompositeNode>(settings, call.planeSettings());
}

std::unique_ptr<Node> blend(const Call& call)
{
    if (!call.has("mix") && !call.has("mask") && !call.has("weights"))
        refuse("blend: there is nothing to mix by; write --mix 0.3, --mask FILE or --weights 0.5 0.7");
    BlendNode::Settings settings;
    if (call.has("mix"))
        settings.mix = call.value("mix");
    if (call.has("weights"))
        settings.weights = {call.value("weights").four()[0], call.value("weights").four()[1]};
    settings.swap = call.isOn("swap");
    settings.hasSecond = call.has("b");
    settings.hasMatte = call.has("mask");
    settings.matteComponent = componentOf(call, "mask-channel");
    return std::make_unique<BlendNode>(settings, call.planeSettings());
}

std::unique_ptr<Node> chroma(const Call& call)
{
    const float* backing = call.value("backing").four();
    return std::make_unique<ChromaNode>(std::array{backing[0], backing[1], backing[2]},
                                        componentOf(call, "matte-channel"), call.planeSettings());
}

std::vector<std::string> compositeLines()
{
    std::vector<std::string> lines;
    for (const CompositeName& known : compositeNames()) {
        char line[160];
        std::snprintf(line, sizeof(line), "%2d  %-18s %s", static_cast<int>(known.type), known.name,
                      known.formula);
        lines.emplace_back(line);
    }
    return lines;
}

Parameter operation()
{
    Parameter parameter = text("OPERATION", "an operation by its name, or by its number from 0 on");
    parameter.required = true;
    parameter.id = "mode";
    for (const CompositeName& known : compositeNames()) {
        parameter.argument.choices.emplace_back(known.name);
        parameter.argument.meanings.emplace_back(known.formula);
    }
    return parameter;
}

Operation compRow()
{
    Parameter unpremult = onOff("--unpremult", "divide the colours of the result by its alpha in any case");
    unpremult.settlesAlpha = true;
    return {
        "comp",
        "Put an image in front of another one, by an operation",
        "Examples:\n"
        "  kreiluge comp over fg.exr bg.exr -o out.exr\n"
        "  kreiluge comp over fg.png bg.png -o out.png\n"
        "  kreiluge comp screen glow.####.exr still.exr -o out.####.exr --frames 1-24\n"
        "Colours that a file format keeps apart from alpha are multiplied by it for the operation.\n"
        "`kreiluge operations comp` tells the formulas.",
        withPlanes({operation(), image("FG", "image in front, the source"),
                    image("BG", "image behind, the destination"),
                    onOff("--premult", "multiply the colours of both images by their alpha first, whatever "
                                       "their files say"),
                    unpremult},
                   false),
        comp,
        compositeLines};
}

Operation blendRow()
{
    Parameter mix = number("--mix", "share of B, 0 to 1 (default: 1, with a mask)", "");
    Parameter mask = image("--mask", "image that the share is multiplied by", false);
    Parameter channel = component("--mask-channel", "the component of the mask for all");
    channel.needs = {"--mask"};
    Parameter swap = onOff("--swap", "exchange the two images; with one image, invert the mask");
    swap.needs = {"--mask"};
    Parameter weights = number("--weights", "multiply A and B by these instead, and add them", "");
    weights.argument.type = Argument::Type::Pair;
    weights.words = "WA WB";
    weights.needs = {"B"};
    weights.excludes = {"--mix", "--mask"};
    return {"blend", "Mix two images, or fade one, perhaps through a mask",
            "Examples:\n"
            "  kreiluge blend a.exr b.exr -o out.exr --mix 0.3\n"
            "  kreiluge blend a.exr b.exr -o out.exr --mask mask.exr --mask-channel a\n"
            "  kreiluge blend a.exr b.exr -o out.exr --weights 1 -0.5\n"
            "  kreiluge blend shot.####.exr -o out.####.exr --mask vignette.exr --swap --frames 1-24",
            withPlanes({image("A", "image"), image("B", "image to mix in (default: black)", false), mix, mask,
                        channel, swap, weights},
                       true),
            blend};
}

Operation chromaRow()
{
    Parameter backing{"--backing", "the colour of the backing, three numbers"};
    backing.argument.type = Argument::Type::Colour;
    backing.words = "R G B";
    backing.required = true;
    return {"chroma", "Take the colour of a backing out of an image, by a matte",
            "Examples:\n"
            "  kreiluge chroma shot.exr -o keyed.exr --matte matte.exr --backing 0.05 0.6 0.1\n"
            "Where the matte is 1 a pixel stays, where it is 0 its colour becomes black; between them\n"
            "(1 - matte) times the backing is subtracted. Alpha stays as it is.",
            withPlanes(
                {image("IMAGE", "image"), image("--matte", "image that is 1 where the backing is hidden"),
                 component("--matte-channel", "the component of the matte (default: alpha, else the first)"),
                 backing},
                true),
            chroma};
}

} // namespace

std::vector<Operation> combineOperations()
{
    return {compRow(), blendRow(), chromaRow()};
}

} // namespace host
