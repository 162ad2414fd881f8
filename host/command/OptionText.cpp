#include <host/command/OptionText.h>

#include <host/text/Names.h>
#include <host/text/Text.h>

#include <algorithm>
#include <cctype>

namespace host {

namespace {

bool isSwitch(const Option& option)
{
    return std::holds_alternative<bool*>(option.target) ||
           std::holds_alternative<std::function<void()>>(option.target);
}

/// "r, g, b or a"
std::string alternatives(std::vector<std::string> names)
{
    const std::string last = names.back();
    names.pop_back();
    return names.empty() ? last : joined(names) + " or " + last;
}

} // namespace

std::vector<std::string> namesOf(const Option& option)
{
    return splitText(option.name, ',');
}

bool isByPlace(const Option& option)
{
    return option.name[0] != '-';
}

int wordCount(const Option& option)
{
    return isSwitch(option) ? 0 : static_cast<int>(wordsOf(wordsOf(option)).size());
}

std::string wordsOf(const Option& option)
{
    if (isSwitch(option))
        return {};
    if (option.rules.words != nullptr)
        return option.rules.words;
    std::string words = namesOf(option).back();
    words.erase(0, words.find_first_not_of('-'));
    for (char& c : words)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return words;
}

std::string writtenOf(const Option& option)
{
    const std::string words = isByPlace(option) ? "" : wordsOf(option);
    return joined(namesOf(option)) + (words.empty() ? "" : " ") + words;
}

std::string helpOf(const Option& option)
{
    const std::vector<std::string>& choices = option.rules.choices;
    constexpr size_t most = 20; // more are told by a command of their own
    return choices.empty() || choices.size() > most ? option.help
                                                    : option.help + "; " + alternatives(choices);
}

std::string documentOf(const Option& option)
{
    std::string text = helpOf(option);
    if (option.rules.preset != nullptr)
        text.append(" (").append(option.rules.preset).append(")");
    if (!option.rules.needs.empty())
        text += "; needs " + alternatives({option.rules.needs.begin(), option.rules.needs.end()});
    if (!option.rules.excludes.empty())
        text += "; not with " + alternatives({option.rules.excludes.begin(), option.rules.excludes.end()});
    return text;
}

std::string usageOf(const std::vector<Option>& options)
{
    std::vector<std::string> parts;
    for (const Option& option : options) {
        const std::string words = wordsOf(option);
        const bool isList = std::holds_alternative<std::vector<std::string>*>(option.target);
        if (isByPlace(option) && option.rules.required)
            parts.push_back(isList ? words + "..." : words);
        else if (isByPlace(option))
            parts.push_back(std::string("[").append(words).append("]"));
        else if (option.rules.required)
            parts.push_back(namesOf(option).front() + " " + words);
    }
    return joined(parts, " ");
}

} // namespace host
