#include <host/chain/FunctionRows.h>

#include <host/text/Names.h>
#include <host/text/Text.h>

#include <algorithm>
#include <cctype>

namespace host {

namespace {

std::string presetText(const Argument& argument)
{
    if (argument.mayBeNone())
        return "none";
    if (argument.type == Argument::Type::Switch)
        return argument.preset != 0.0f ? "on" : "off";
    return numberText(argument.preset);
}

} // namespace

const std::vector<Function>& functions()
{
    static const std::vector<Function> rows = [] {
        std::vector<Function> all;
        for (auto* topic : {numericFunctions, colourFunctions})
            for (Function& function : topic())
                all.push_back(std::move(function));
        return all;
    }();
    return rows;
}

const Function& functionOfName(const std::string& name)
{
    std::vector<std::string> known;
    for (const Function& function : functions()) {
        if (function.name == name)
            return function;
        known.push_back(function.name);
    }
    refuseName("unknown function", name, known);
}

std::string Function::usage() const
{
    std::string text = name;
    for (const Argument& argument : arguments) {
        std::string upper = argument.name;
        std::transform(upper.begin(), upper.end(), upper.begin(),
                       [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        if (!argument.choices.empty())
            upper = joined(argument.choices, "|");
        text += argument.required ? " " + upper : " [" + upper + "=" + presetText(argument) + "]";
    }
    return text;
}

const Argument* Function::find(const std::string& argument) const
{
    const auto found = std::find_if(arguments.begin(), arguments.end(),
                                    [&](const Argument& candidate) { return candidate.name == argument; });
    return found != arguments.end() ? &*found : nullptr;
}

bool Function::takesKeys() const
{
    return !arguments.empty() && arguments.front().type == Argument::Type::Curves;
}

} // namespace host
