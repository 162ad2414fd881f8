#include "Listing.h"

#include <host/chain/Values.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <algorithm>
#include <cstdio>

namespace tool {

using host::Json;

void printRows(const Rows& rows)
{
    constexpr size_t most = 48;
    size_t width = 0;
    for (const auto& [written, meaning] : rows)
        if (written.size() <= most)
            width = std::max(width, written.size());
    for (const auto& [written, meaning] : rows) {
        const bool fits = written.size() <= width;
        std::printf("%s%s%*s%s\n", written.c_str(), fits ? "" : "\n",
                    static_cast<int>(fits ? width - written.size() + 2 : width + 2), "", meaning.c_str());
    }
}

void printMarkdown(const std::string& written, const std::string& meaning, const Rows& rows)
{
    std::printf("| %s | %s |\n|---|---|\n", written.c_str(), meaning.c_str());
    for (const auto& [left, right] : rows)
        std::printf("| `%s` | %s |\n", // a bar would end the column
                    host::joined(host::splitText(left, '|'), "\\|").c_str(), right.c_str());
}

Json argumentJson(const host::Argument& argument, const Json& preset)
{
    const auto limit = [](const std::optional<float>& number) {
        return number ? Json(host::doubleOf(*number)) : Json();
    };
    Json json = {{"name", argument.name},
                 {"type", host::typeName(argument)},
                 {"expected", host::expectation(argument)},
                 {"required", argument.required}};
    if (!argument.required)
        json["preset"] = preset;
    if (!argument.choices.empty())
        json["choices"] = argument.choices;
    if (!argument.meanings.empty())
        json["meanings"] = argument.meanings;
    if (argument.least || argument.most)
        json.update({{"least", limit(argument.least)}, {"most", limit(argument.most)}});
    return json;
}

void printJson(const Json& json)
{
    std::printf("%s\n", json.dump(2).c_str());
}

} // namespace tool
