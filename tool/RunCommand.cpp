#include "Commands.h"
#include "OperationCommand.h"

#include <host/file/Frames.h>
#include <host/graph/Explain.h>
#include <host/script/ScriptText.h>
#include <host/text/Error.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <memory>

namespace tool {

namespace {

struct ScriptOptions : RunOptions
{
    std::optional<std::string> file, line;
    std::string output;
    std::vector<std::string> values;
    bool explains = false, dot = false, json = false;
};

host::Script scriptOf(const ScriptOptions& o)
{
    host::ScriptValues values;
    for (const std::string& text : o.values) {
        const size_t equals = text.find('=');
        const bool isName = equals != 0 && equals != std::string::npos &&
                            std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(equals),
                                        [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; });
        if (!isName)
            host::refuse("--set: '" + text + "' is no value; expected something like GAIN=0.5");
        values[text.substr(0, equals)] = text.substr(equals + 1);
    }
    if (o.file.has_value() == o.line.has_value())
        host::refuse("run: name a script, or write one behind -e");
    return o.file ? host::readScriptFile(*o.file, values, o.output)
                  : host::readScript(*o.line, "-e", values, o.output);
}

void printSchema()
{
    std::printf("%s\n", host::scriptSchema().c_str());
}

int run(const ScriptOptions& o)
{
    const host::Script script = scriptOf(o);
    if (o.json)
        std::printf("%s\n", host::scriptJson(script).c_str());
    if (!o.explains && !o.dot)
        return o.json ? exitDone : runAll(script, o);
    std::optional<int64_t> frame;
    if (const std::vector<std::optional<int64_t>> frames = framesOf(script, o.frames); !frames.empty())
        frame = frames.front();
    const host::ScriptGraph graph(script, frame, true);
    std::fputs((o.dot ? host::graphviz(graph.graph()) : host::explain(graph.graph())).c_str(), stdout);
    return exitDone;
}

} // namespace

Command runCommand()
{
    Command command{
        "run", "Run a script of operations",
        "Each line is a command without its output, with a name in front that later lines use for a file:\n"
        "  clean = grade fg.####.exr \"levels inblack=0.02 @rgb\"\n"
        "  lines = edge clean --gain $GAIN\n"
        "  final = comp over lines bg.exr\n"
        "  write final final.####.exr --depth half\n"
        "Without a write line the last picture goes to -o. In one line, with | between operations:\n"
        "  kreiluge run -e 'grade a.exr \"gamma 2.2\" | edge | write b.exr'\n"
        "write takes --depth, --window and --alpha. A # at the start of a word begins a comment, \\ at the "
        "end\n"
        "of a line goes on. --schema prints what the same as JSON has to be."};
    auto o = std::make_shared<ScriptOptions>();
    command.add(
        {{"FILE", &o->file, "script, as text or JSON"},
         {"-e", &o->line, "the script itself"},
         {"-o,--output", &o->output, "where the last picture goes, without a write line", {.words = "FILE"}},
         {"--set",
          &o->values,
          "value for $NAME in the script; may be given several times",
          {.words = "NAME=VALUE", .repeats = true}},
         {"--explain", &o->explains, "tell windows, planes, formats and needs, and do no more"},
         {"--dot", &o->dot, "print the graph for graphviz, and do no more"},
         {"--json", &o->json, "print the script as JSON, and do no more"},
         {"--schema", printSchema, "print the schema of such JSON"}});
    addRunOptions(command, *o);
    command.run = [o] { return run(*o); };
    return command;
}

} // namespace tool
