#include "Commands.h"

#include <host/chain/Functions.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <algorithm>
#include <cstdio>

namespace tool {

namespace {

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
        "functions", "List the functions that chains are made of",
        "Arguments in brackets may be left out. They are given by position or as name=value.\n"
        "Those of add, mult, madd and gamma, and the later ones of levels, may be one value per\n"
        "component, as in 1:0.9:0.8 or 1:0.9:0.8:1. Colours are 1:0.5:0, a matrix is 1:0:0;0:1:0;0:0:1\n"
        "or has 4 rows of 3 or 4. Keys are 0 0, 0.5 0.6, 1 1 or, in one word, 0:0;0.5:0.6;1:1; in\n"
        "name=value the first form stands in quotes. A | begins the curve of the next component."};
    command.add({{"--markdown", printMarkdown, "as a table for documents"}});
    command.run = printList;
    return command;
}

} // namespace tool
