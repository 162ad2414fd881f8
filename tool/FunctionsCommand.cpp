#include "Commands.h"
#include "Listing.h"

#include <host/chain/Functions.h>
#include <host/chain/Values.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

namespace tool {

namespace {

using host::Json;

struct FunctionsOptions
{
    std::optional<std::string> name;
    bool json = false;
};

std::vector<std::string> names()
{
    std::vector<std::string> names;
    for (const host::Function& function : host::functions())
        names.push_back(function.name);
    return names;
}

Rows rows()
{
    Rows rows;
    for (const host::Function& function : host::functions())
        rows.emplace_back(function.usage(), function.summary);
    return rows;
}

Json functionJson(const host::Function& function)
{
    Json arguments = Json::array();
    for (const host::Argument& argument : function.arguments)
        arguments.push_back(argumentJson(
            argument, argument.required ? Json() : host::valueJson(argument, host::presetOf(argument))));
    return {{"name", function.name},
            {"summary", function.summary},
            {"usage", function.usage()},
            {"leavesAlpha", function.leavesAlpha},
            {"colourSpace", function.colourSpace ? Json(*function.colourSpace) : Json()},
            {"onGPU", function.onGPU != nullptr ? Json(function.onGPU) : Json()},
            {"arguments", arguments}};
}

void printHelp(const host::Function& function)
{
    std::printf("%s\n  %s\n", function.usage().c_str(), function.summary.c_str());
    Rows arguments;
    for (const host::Argument& argument : function.arguments) {
        const std::string preset =
            argument.required ? "" : " (" + host::valueText(argument, host::presetOf(argument)) + ")";
        arguments.emplace_back("  " + argument.name, host::expectation(argument) + preset);
    }
    printRows(arguments);
    std::printf("%s", function.leavesAlpha ? "It leaves alpha alone.\n" : "");
    if (function.onGPU != nullptr)
        std::printf("On a GPU it differs: %s.\n", function.onGPU);
    if (function.colourSpace)
        std::printf("The picture is %s then.\n", function.colourSpace->empty()
                                                     ? "in no known colour space"
                                                     : function.colourSpace->c_str());
}

int print(const FunctionsOptions& o)
{
    const host::Function* const one = o.name ? &host::functionOfName(*o.name) : nullptr;
    if (o.json && one != nullptr)
        printJson(functionJson(*one));
    else if (o.json)
        printJson(listJson(host::functions(), functionJson));
    else if (one != nullptr)
        printHelp(*one);
    else
        printRows(rows());
    return exitDone;
}

void printTable()
{
    printMarkdown("function", "result for a value v", rows());
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
    command.add({{"NAME", &o->name, "a function to tell more of", {.choices = names()}},
                 {"--json", &o->json, "as JSON: an object, without a name a list of all"},
                 {"--markdown", printTable, "as a table for documents"}});
    command.run = [o] { return print(*o); };
    return command;
}

} // namespace tool
