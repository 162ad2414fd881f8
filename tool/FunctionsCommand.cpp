#include "Commands.h"

#include <host/Functions.h>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace tool {

namespace {

void printList()
{
    size_t width = 0;
    for (const host::Function& function : host::functions())
        width = std::max(width, function.usage().size());
    for (const host::Function& function : host::functions())
        std::printf("%-*s  %s\n", static_cast<int>(width), function.usage().c_str(),
                    function.summary.c_str());
}

void printMarkdown()
{
    std::printf("| function | result for a value v |\n|---|---|\n");
    for (const host::Function& function : host::functions())
        std::printf("| `%s` | %s |\n", function.usage().c_str(), function.summary.c_str());
}

} // namespace

void addFunctions(CLI::App& app)
{
    CLI::App* command = app.add_subcommand("functions", "List the functions that chains are made of");
    auto markdown = std::make_shared<bool>(false);
    command->add_flag("--markdown", *markdown, "as a table for documents");
    command->footer(
        "Arguments in brackets may be left out. They are given by position or as name=value. Those of add,\n"
        "mult, madd and gamma may be one value per component, as in 1:0.9:0.8 or 1:0.9:0.8:1.");
    command->callback([markdown] { *markdown ? printMarkdown() : printList(); });
}

} // namespace tool
