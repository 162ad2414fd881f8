#include "Commands.h"
#include "CookCommand.h"

#include <host/text/Error.h>

#include <memory>
#include <optional>

namespace tool {

namespace {

struct GradeOptions : CookOptions
{
    std::optional<std::string> chain, chainFile;
};

host::Chain chainOf(const GradeOptions& o)
{
    if (o.chain && o.chainFile)
        host::refuse("--chain: there is a chain in the arguments already, '" + *o.chain + "'");
    if (o.chain)
        return host::Chain::fromText(*o.chain);
    if (!o.chainFile)
        host::refuse("no chain; write one such as \"gamma 2.2, add 0.1\", or name a file with --chain");
    return host::Chain::fromJsonFile(*o.chainFile);
}

} // namespace

Command gradeCommand()
{
    Command command{
        "grade", "Apply a chain of functions to an image or a sequence",
        "Examples:\n"
        "  kreiluge grade in.exr -o out.exr \"gamma 2.2, add 0.1\"\n"
        "  kreiluge grade in.png -o out.png \"mult 1.1:1:0.9, limit 0 1 @rgb\"\n"
        "  kreiluge grade shot.####.exr -o graded.####.exr --frames 1001-1100 --chain look.json\n"
        "A scope after @ says which of r, g, b and a a function applies to: all without it, alpha too.\n"
        "`kreiluge functions` lists the functions."};
    auto o = std::make_shared<GradeOptions>();
    command.add({{"INPUT", &o->inputs.first, inputHelp("image file"), required}});
    addCookOptions(command, *o);
    addPoints(command, *o);
    command.add({{"CHAIN", &o->chain, "functions with their arguments, separated by commas; \"\" copies"},
                 {"--chain", &o->chainFile, "read the chain from a JSON file instead"}});
    command.run = [o] { return cookAll(*o, host::Operation::grade(chainOf(*o))); };
    return command;
}

} // namespace tool
