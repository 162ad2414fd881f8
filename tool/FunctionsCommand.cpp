#include "Commands.h"

#include <host/chain/Functions.h>
#include <host/chain/Values.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>

namespace tool {

namespace {

using host::Json;

struct FunctionsOptions
{
    std::optional<std::string> name;
    bool json = false;
};

int printList()
{
    constexpr size_t most = 48; // a longer usage has a line of its own
    size_t width = 0;
    for (const host::Function& function : host::functions())
        if (function.usage().size() <= most)
            width = std::max(width, function.usage().size());
    for (const host::Function& function : host::functions()) {
        const std::string usage = function.usage();
        const bool fits = usage.size() <= width;
        std::printf("%s%s%*s%s\n", usage.c_str(), fits ? "" : "\n",
                    static_cast<int>(fits ? width - usage.size() + 2 : width + 2), "",
                    function.summary.c_str());
    }
    return exitDone;
}

Json argumentJson(const host::Argument& argument)
{
    const auto limit = [](const std::optional<float>& number) {
        return number ? Json(host::doubleOf(*number)) : Json();
    };
    Json json = {{"name", argument.name},
                 {"type", host::typeName(argument)},
                 {"expected", host::expectation(argument)},
                 {"required", argument.required}};
    if (!argument.required)
        json["preset"] = host::valueJson(argument, host::presetOf(argument));
    if (!argument.choices.empty())
        json["choices"] = argument.choices;
    if (argument.least || argument.most)
        json.update({{"least", limit(argument.least)}, {"most", limit(argument.most)}});
    return json;
}

Json functionJson(const host::Function& function)
{
    Json arguments = Json::array();
    for (const host::Argument& argument : function.arguments)
        arguments.push_back(argumentJson(argument));
    return {{"name", function.name},
            {"summary", function.summary},
            {"usage", function.usage()},
            {"leavesAlpha", function.leavesAlpha},
            {"colourSpace", function.colourSpace ? Json(*function.colourSpace) : Json()},
            {"arguments", arguments}};
}

void printHelp(const host::Function& function)
{
    std::printf("%s\n  %s\n", function.usage().c_str(), function.summary.c_str());
    size_t width = 0;
    for (const host::Argument& argument : function.arguments)
        width = std::max(width, argument.name.size());
    for (const host::Argument& argument : function.arguments)
        std::printf("  %-*s  %s%s\n", static_cast<int>(width), argument.name.c_str(),
                    host::expectation(argument).c_str(),
                    argument.required
                        ? ""
                        : (" (" + host::valueText(argument, host::presetOf(argument)) + ")").c_str());
    std::printf("%s", function.leavesAlpha ? "It leaves alpha alone.\n" : "");
    if (function.colourSpace)
        std::printf("The picture is %s then.\n", function.colourSpace->empty()
                                                     ? "in no known colour space"
                                                     : function.colourSpace->c_str());
}

int print(const FunctionsOptions& o)
{
    if (!o.name && !o.json)
        return printList();
    if (o.name && !o.json) {
        printHelp(host::functionOfName(*o.name));
        return exitDone;
    }
    Json all = Json::array();
    for (const host::Function& function : host::functions())
        all.push_back(functionJson(function));
    const Json json = o.name ? functionJson(host::functionOfName(*o.name)) : all;
    std::printf("%s\n", json.dump(2).c_str());
    return exitDone;
}

void printMarkdown()
{
    std::printf("| function | result for a value v |\n|---|---|\n");
    for (const host::Function& function : host::functions())
        std::printf("| `%s` | %s |\n", // a bar would end the column
                    host::joined(host::splitText(function.usage(), '|'), "\\|").c_str(),
                    function.summary.c_str());
}

} // namespace

Command functionsCommand()
{
    Command command{
        "functions", "List the functions that chains are made of, or tell more of one",
        "Arguments in brackets may be left out. They are given by position or as name=value.\n"
        "Those of add, mult, madd and gamma, and the later ones of levels, may be one value per\n"
        "component, as in 1:0.9:0.8 or 1:0.9:0.8:1. Colours are 1:0.5:0, a matrix is 1:0:0;0:1:0;0:0:1\n"
        "or has 4 rows of 3 or 4. Keys are 0 0, 0.5 0.6, 1 1 or, in one word, 0:0;0.5:0.6;1:1; in\n"
        "name=value the first form stands in quotes. A | begins the curve of the next component."};
    auto o = std::make_shared<FunctionsOptions>();
    command.add({{"NAME", &o->name, "a function to tell more of"},
                 {"--json", &o->json, "as JSON: an object, without a name a list of all"},
                 {"--markdown", printMarkdown, "as a table for documents"}});
    command.run = [o] { return print(*o); };
    return command;
}

} // namespace tool
