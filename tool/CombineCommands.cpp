#include "Commands.h"
#include "CookCommand.h"

#include <host/text/Error.h>

#include <cstdio>
#include <memory>
#include <optional>

// The commands that make one image of several.

namespace tool {

namespace {

struct CompositeOptions : CookOptions
{
    std::string operation;
    host::Combination::CompositeSettings composite;
};

struct BlendOptions : CookOptions
{
    host::Combination::BlendSettings blend;
    std::optional<float> mix;
    std::optional<std::string> channel;
};

struct ChromaOptions : CookOptions
{
    host::Combination::ChromaSettings chroma;
    std::optional<std::string> channel;
};

int combineAll(const CookOptions& o, const host::Combination& combination)
{
    return cookAll(o, [&](const CookFiles& files, const host::CookSettings& settings) {
        return host::combine(files.inputs, files.output, combination, settings);
    });
}

void printOperations()
{
    for (const host::CompositeName& operation : host::compositeNames())
        std::printf("%2d  %-18s %s\n", static_cast<int>(operation.type), operation.name, operation.formula);
}

std::optional<int> componentOf(const char* option, const std::optional<std::string>& letter)
{
    if (!letter)
        return {};
    const std::string_view letters = host::componentLetters;
    if (letter->size() != 1 || letters.find(*letter) == letters.npos)
        host::refuse(std::string(option) + ": unknown component '" + *letter +
                     "'; the components are r, g, b and a");
    return static_cast<int>(letters.find(*letter));
}

int composite(CompositeOptions o)
{
    o.composite.type = host::compositeOfName(o.operation);
    return combineAll(o, {o.composite});
}

int blend(BlendOptions o)
{
    if (!o.mix && !o.inputs.matte && !o.blend.weights)
        host::refuse("blend: there is nothing to mix by; write --mix 0.3, --mask FILE or --weights 0.5 0.7");
    o.blend.mix = o.mix.value_or(1.0f);
    o.inputs.matteComponent = componentOf("--mask-channel", o.channel);
    return combineAll(o, {o.blend});
}

int chroma(ChromaOptions o)
{
    o.inputs.matteComponent = componentOf("--matte-channel", o.channel);
    return combineAll(o, {o.chroma});
}

} // namespace

Command compositeCommand()
{
    Command command{"comp", "Put an image in front of another one, by an operation",
                    "Examples:\n"
                    "  kreiluge comp over fg.exr bg.exr -o out.exr\n"
                    "  kreiluge comp over fg.png bg.png -o out.png --premult --unpremult\n"
                    "  kreiluge comp screen glow.####.exr still.exr -o out.####.exr --frames 1-24\n"
                    "Alpha is taken as it stands in the files: colours count as multiplied by it already."};
    auto o = std::make_shared<CompositeOptions>();
    command.add(
        {{"OPERATION", &o->operation, "name or number of an operation", required},
         {"FG", &o->inputs.second, inputHelp("image in front, the source"), required},
         {"BG", &o->inputs.first, inputHelp("image behind, the destination"), required},
         {"--premult", &o->composite.premultiply, "multiply the colours of both images by their alpha first"},
         {"--unpremult", &o->composite.unpremultiply, "divide the colours of the result by its alpha"},
         {"--list", printOperations, "list the operations with their formulas, and do no more"}});
    addCookOptions(command, *o);
    command.run = [o] { return composite(*o); };
    return command;
}

Command blendCommand()
{
    Command command{
        "blend", "Mix two images, or fade one, perhaps through a mask",
        "Examples:\n"
        "  kreiluge blend a.exr b.exr -o out.exr --mix 0.3\n"
        "  kreiluge blend a.exr b.exr -o out.exr --mask mask.exr --mask-channel a\n"
        "  kreiluge blend a.exr b.exr -o out.exr --weights 1 -0.5\n"
        "  kreiluge blend shot.####.exr -o out.####.exr --mask vignette.exr --swap --frames 1-24"};
    auto o = std::make_shared<BlendOptions>();
    command.add(
        {{"A", &o->inputs.first, inputHelp("image file"), required},
         {"B", &o->inputs.second, "image to mix in (default: black)"},
         {"--mix", &o->mix, "share of B, 0 to 1 (default: 1, with a mask)"},
         {"--mask", &o->inputs.matte, "image that the share is multiplied by"},
         {"--mask-channel", &o->channel, "the component of the mask for all: r, g, b or a", needs("--mask")},
         {"--swap", &o->blend.swap, "exchange the two images; with one image, invert the mask",
          needs("--mask")},
         {"--weights",
          &o->blend.weights,
          "multiply A and B by these instead, and add them",
          {.values = "WA WB", .needs = {"B"}, .excludes = {"--mix", "--mask"}}}});
    addCookOptions(command, *o);
    addPoints(command, *o);
    command.run = [o] { return blend(*o); };
    return command;
}

Command chromaCommand()
{
    Command command{
        "chroma", "Take the colour of a backing out of an image, by a matte",
        "Examples:\n"
        "  kreiluge chroma shot.exr -o keyed.exr --matte matte.exr --backing 0.05 0.6 0.1\n"
        "Where the matte is 1 a pixel stays, where it is 0 its colour becomes black; between them\n"
        "(1 - matte) times the backing is subtracted. Alpha stays as it is."};
    auto o = std::make_shared<ChromaOptions>();
    command.add({{"IMAGE", &o->inputs.first, inputHelp("image file"), required},
                 {"--matte", &o->inputs.matte, "image that is 1 where the backing is hidden", required},
                 {"--matte-channel", &o->channel,
                  "the component of the matte: r, g, b or a (default: alpha, else the first)"},
                 {"--backing",
                  &o->chroma.backing,
                  "the colour of the backing, three numbers",
                  {.required = true, .values = "R G B"}}});
    addCookOptions(command, *o);
    addPoints(command, *o);
    command.run = [o] { return chroma(*o); };
    return command;
}

} // namespace tool
