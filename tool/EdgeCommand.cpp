#include "Commands.h"
#include "CookCommand.h"

#include <memory>

namespace tool {

namespace {

struct EdgeOptions : CookOptions
{
    host::Operation::EdgeSettings edge;
    std::string scope = "rgb";
};

} // namespace

Command edgeCommand()
{
    Command command{"edge", "Turn an image or a sequence into its edges",
                    "Examples:\n"
                    "  kreiluge edge in.exr -o edges.exr\n"
                    "  kreiluge edge in.png -o edges.png --prewitt --gain 2"};
    auto o = std::make_shared<EdgeOptions>();
    command.add({{"INPUT", &o->inputs.first, inputHelp("image file"), required}});
    addCookOptions(command, *o);
    addPoints(command, *o);
    command.add({{"--prewitt", &o->edge.prewitt, "weigh the nine pixels alike (default: Sobel weights)"},
                 {"--gain", &o->edge.gain, "gain of the differences"},
                 {"--corner", &o->edge.corner, "share of the corner pixels"},
                 {"--scope", &o->scope, "components to work on; the others are copied"}});
    command.run = [o] {
        return cookAll(*o, host::Operation::edge(o->edge, host::componentsOfLetters(o->scope)));
    };
    return command;
}

} // namespace tool
