#include "Commands.h"
#include "Listing.h"

#include <host/chain/Values.h>
#include <host/command/OperationWords.h>
#include <host/command/OptionText.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>

namespace tool {

namespace {

using host::Json;
using host::Operation;
using host::Parameter;

struct OperationsOptions
{
    std::optional<std::string> name;
    bool json = false, markdown = false;
};

std::vector<std::string> names()
{
    std::vector<std::string> names;
    for (const Operation& operation : host::operations())
        names.push_back(operation.name);
    return names;
}

std::string usage(const Operation& operation)
{
    const std::string rest = usageOf(host::OperationWords(operation).options());
    return rest.empty() ? operation.name : operation.name + " " + rest;
}

Rows rowsOf(const std::vector<host::Option>& options, const std::function<bool(const host::Option&)>& isTold)
{
    Rows rows;
    for (const host::Option& option : options)
        if (isTold(option))
            rows.emplace_back(writtenOf(option), documentOf(option));
    return rows;
}

const Parameter* parameterOf(const Operation& operation, const host::Option& option)
{
    const auto found =
        std::find_if(operation.parameters.begin(), operation.parameters.end(),
                     [&](const Parameter& parameter) { return parameter.name == option.name; });
    return found != operation.parameters.end() ? &*found : nullptr;
}

/// What an operation alone has, but for its images by place, which the usage names.
Rows ownRows(const Operation& operation)
{
    return rowsOf(host::OperationWords(operation).options(), [&](const host::Option& option) {
        return !isByPlace(option) && !parameterOf(operation, option)->shared;
    });
}

/// What operations on images share, and what all do: that of the first operation, which has everything.
Rows sharedRows()
{
    const Operation& first = host::operations().front();
    return rowsOf(operationCommand(first).options, [&](const host::Option& option) {
        const Parameter* const parameter = parameterOf(first, option);
        return parameter == nullptr || parameter->shared;
    });
}

Json presetOf(const Parameter& parameter)
{
    if (parameter.isSwitch())
        return false;
    if (parameter.preset.empty())
        return nullptr;
    return valueJson(parameter.argument, readValue(parameter.argument, parameter.preset));
}

Json keysOf(const Operation& operation, const std::vector<const char*>& names)
{
    Json keys = Json::array();
    for (const Parameter& parameter : operation.parameters)
        if (std::find(names.begin(), names.end(), parameter.name) != names.end())
            keys.push_back(parameter.key());
    return keys;
}

Json parameterJson(const Operation& operation, const Parameter& parameter)
{
    host::Argument argument = parameter.argument;
    argument.name = parameter.key();
    argument.required = parameter.required;
    Json json = parameter.isImage ? Json{{"name", argument.name}, {"required", argument.required}}
                                  : argumentJson(argument, presetOf(parameter));
    json["option"] = parameter.isOption() ? Json(parameter.name) : Json();
    json["help"] = parameter.help;
    if (!parameter.needs.empty())
        json["needs"] = keysOf(operation, parameter.needs);
    if (!parameter.excludes.empty())
        json["excludes"] = keysOf(operation, parameter.excludes);
    return json;
}

Json operationJson(const Operation& operation)
{
    Json inputs = Json::array(), arguments = Json::array();
    for (const Parameter& parameter : operation.parameters)
        (parameter.isImage ? inputs : arguments).push_back(parameterJson(operation, parameter));
    return {{"name", operation.name},    {"summary", operation.summary},
            {"usage", usage(operation)}, {"examples", operation.examples},
            {"inputs", inputs},          {"arguments", arguments}};
}

void printHelp(const Operation& operation)
{
    std::printf("%s\n  %s\n\n", usage(operation).c_str(), operation.summary.c_str());
    printRows(rowsOf(host::OperationWords(operation).options(), [](const host::Option&) { return true; }));
    for (const Parameter& parameter : operation.parameters) {
        Rows meanings;
        for (size_t i = 0; i < parameter.argument.meanings.size(); ++i)
            meanings.emplace_back("  " + parameter.argument.choices[i], parameter.argument.meanings[i]);
        if (!meanings.empty())
            std::printf("\n%s\n", parameter.name.c_str());
        printRows(meanings);
    }
    std::printf("\n%s\n", operation.examples.c_str());
}

void printList()
{
    for (const Operation& operation : host::operations()) {
        std::printf("%s\n  %s\n", usage(operation).c_str(), operation.summary.c_str());
        for (const auto& [option, meaning] : ownRows(operation))
            std::printf("  %s\n", option.c_str());
    }
}

int print(const OperationsOptions& o)
{
    const Operation* const one = o.name ? &host::operationOfName(*o.name) : nullptr;
    if (o.json && one != nullptr)
        printJson(operationJson(*one));
    else if (o.json)
        printJson(listJson(host::operations(), operationJson));
    else if (o.markdown)
        printMarkdown("option", "", one != nullptr ? ownRows(*one) : sharedRows());
    else if (one != nullptr)
        printHelp(*one);
    else
        printList();
    return exitDone;
}

} // namespace

Command operationsCommand()
{
    Command command{
        "operations", "List the operations that make pictures, or tell all of one",
        "The list has what an operation alone takes. `kreiluge operations NAME` tells what each is "
        "for."};
    auto o = std::make_shared<OperationsOptions>();
    command.add({{"NAME", &o->name, "an operation", {.choices = names()}},
                 {"--json", &o->json, "as JSON: an object, without a name a list of all"},
                 {"--markdown",
                  &o->markdown,
                  "its options as a table for documents, without a name those that operations share",
                  {.excludes = {"--json"}}}});
    command.run = [o] { return print(*o); };
    return command;
}

} // namespace tool
