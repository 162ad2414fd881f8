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

void addEdge(CLI::App& app, int& exitCode)
{
    CLI::App* command = app.add_subcommand("edge", "Turn an image or a sequence into its edges");
    auto o = std::make_shared<EdgeOptions>();
    command->add_option("INPUT", o->inputs.first, inputHelp("image file"))->required();
    addCookOptions(*command, *o);
    addPoints(*command, *o);
    command->add_flag("--prewitt", o->edge.prewitt, "weigh the nine pixels alike (default: Sobel weights)");
    command->add_option("--gain", o->edge.gain, "gain of the differences")->capture_default_str();
    command->add_option("--corner", o->edge.corner, "share of the corner pixels")->capture_default_str();
    command->add_option("--scope", o->scope, "components to work on; the others are copied")
        ->capture_default_str();
    command->footer("Examples:\n"
                    "  kreiluge edge in.exr -o edges.exr\n"
                    "  kreiluge edge in.png -o edges.png --prewitt --gain 2");
    command->callback([o, &exitCode] {
        exitCode = cookAll(*o, host::Operation::edge(o->edge, host::componentsOfLetters(o->scope)));
    });
}

} // namespace tool
