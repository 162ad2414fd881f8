#include "Commands.h"

#include <host/chain/ChainShader.h>
#include <host/file/Format.h>
#include <host/text/Error.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <memory>
#include <optional>

namespace tool {

namespace {

struct ShaderOptions
{
    std::optional<std::string> chain, file, compute;
    std::string name = "grade", channels = "4";
};

void checkName(const std::string& name)
{
    const auto isPart = [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; };
    static constexpr std::string_view words[] = {"main", "float", "int", "bool",
                                                 "uint", "void",  "mix", "sample"};
    const bool isReserved = name.starts_with("gl_") || name.starts_with("RE_") ||
                            std::find(std::begin(words), std::end(words), name) != std::end(words) ||
                            (name.size() == 4 && name.find("vec") < 2);
    if (name.empty() || isReserved || std::isdigit(static_cast<unsigned char>(name[0])) != 0 ||
        !std::all_of(name.begin(), name.end(), isPart))
        host::refuse("--name: '" + name +
                     "' is no name for a function; expected letters, digits and _, no word "
                     "of GLSL's");
}

int print(const ShaderOptions& o)
{
    checkName(o.name);
    const host::Chain chain = host::Chain::fromTextOrFile(o.chain, o.file);
    const auto channels = static_cast<int>(host::readWhole("--channels", o.channels, 1, 4));
    const std::string text = o.compute ? host::shaderProgram(chain, host::formatOfName(*o.compute), channels)
                                       : host::shaderFunction(chain, o.name, channels);
    std::fputs(text.c_str(), stdout);
    return exitDone;
}

} // namespace

Command shaderCommand()
{
    Command command{"shader", "Print a chain as GLSL, to paste into an application",
                    "Examples:\n"
                    "  kreiluge shader \"gamma 2.2, add 0.1\" > grade.glsl\n"
                    "  kreiluge shader --chain look.json --name look --channels 3\n"
                    "  kreiluge shader \"hsv 30\" --compute half > grade.comp\n"
                    "A function is for any shader of GLSL 4.00 or later, and takes the values of pixels. Its "
                    "uniforms\n"
                    "begin with what the chain's arguments come to, and may be set to others."};
    auto o = std::make_shared<ShaderOptions>();
    const auto& formats = host::operationOfName("grade").find("depth")->argument.choices;
    command.add({{"CHAIN", &o->chain, "functions with their arguments, separated by commas"},
                 {"--chain", &o->file, "read the chain from a JSON file instead", {.words = "FILE"}},
                 {"--name",
                  &o->name,
                  "what the function is called; names of all else begin with it",
                  {.words = "NAME", .preset = "grade"}},
                 {"--channels", &o->channels, "channels of the pictures", {.words = "N", .preset = "4"}},
                 {"--compute",
                  &o->compute,
                  "the whole compute shader that runs for pictures of a storage format instead",
                  {.words = "FORMAT", .excludes = {"--name"}, .choices = formats}}});
    command.run = [o] { return print(*o); };
    return command;
}

} // namespace tool
