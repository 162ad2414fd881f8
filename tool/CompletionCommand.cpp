#include "Commands.h"

#include <host/command/OptionText.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <cstdio>
#include <memory>

namespace tool {

namespace {

using host::Option;

const std::vector<std::string> shells = {"bash", "zsh"};

std::string within(const char* begin, const std::string& text, const char* end)
{
    return std::string(begin).append(text).append(end);
}

/// A word of a shell, whatever is in it.
std::string quoted(const std::string& text)
{
    return within("'", host::joined(host::splitText(text, '\''), "'\\''"), "'");
}

std::vector<Option> optionsOf(const Command& command)
{
    std::vector<Option> options = command.options;
    options.push_back(host::helpOption());
    return options;
}

// bash

/// The names of options with how many words follow each: " -o:1 --output:1 --stats:0"
std::string countedNames(const std::vector<Option>& options)
{
    std::vector<std::string> names;
    for (const Option& option : options)
        for (const std::string& name : host::namesOf(option))
            if (!isByPlace(option))
                names.push_back(" " + name + ":" + std::to_string(wordCount(option)));
    return host::joined(names, "");
}

/// What has choices: `at` names the option, or counts the places, from 1 on.
void printChoices(const Command& command)
{
    size_t place = 0;
    for (const Option& option : command.options) {
        place += isByPlace(option);
        std::vector<std::string> patterns = host::namesOf(option);
        if (isByPlace(option))
            patterns = {std::to_string(place)};
        if (!option.rules.choices.empty())
            std::printf("        %s) words=%s ;;\n", host::joined(patterns, " | ").c_str(),
                        quoted(host::joined(option.rules.choices, " ")).c_str());
    }
}

constexpr const char* bashBegin =
    R"(# Completion of kreiluge for bash: source it, or put it where bash-completion looks.
# Where nothing is known, readline goes on with the names of files.
_kreiluge()
{
    local word=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]} options='' words='' at=1 left=0 place=1 i
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        command=''
    fi
    case $command in
)";

constexpr const char* bashMiddle = R"(    *) return ;;
    esac
    for ((i = 2; i < COMP_CWORD; i++)); do
        if [[ ${COMP_WORDS[i]} == = ]]; then
            continue
        elif ((left > 0)); then
            left=$((left - 1))
        elif [[ $options == *" ${COMP_WORDS[i]}:"* ]]; then
            at=${COMP_WORDS[i]}
            left=${options##*" $at:"}
            left=${left%% *}
        else
            place=$((place + 1))
        fi
    done
    if ((left == 0)); then
        at=$place
    fi
    if [[ $word == = ]]; then
        word=''
    fi
    if ((left == 0)) && [[ $word == -* ]]; then
        for i in $options; do
            words+=" ${i%:*}"
        done
    else
        case $command in
)";

constexpr const char* bashEnd = R"(        esac
    fi
    read -ra COMPREPLY -d '' < <(compgen -W "$words" -- "$word")
}
complete -o default -F _kreiluge kreiluge
)";

void printBash(const host::Program& program)
{
    std::vector<std::string> names;
    std::fputs(bashBegin, stdout);
    for (const Command& command : program.commands) {
        names.emplace_back(command.name);
        std::printf("    %s) options=%s ;;\n", command.name,
                    quoted(countedNames(optionsOf(command))).c_str());
    }
    std::printf("    '') options=%s ;;\n",
                quoted(countedNames({host::helpOption(), host::versionOption()})).c_str());
    std::fputs(bashMiddle, stdout);
    for (const Command& command : program.commands) {
        std::printf("        %s) case $at in\n", command.name);
        printChoices(command);
        std::printf("        esac ;;\n");
    }
    std::printf("        '') words=%s ;;\n", quoted(host::joined(names, " ")).c_str());
    std::fputs(bashEnd, stdout);
}

// zsh

/// A text inside of a specification, where brackets and colons mean something.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        if (std::string_view("[]:\\").find(c) != std::string_view::npos)
            result += '\\';
        result += c;
    }
    return result;
}

/// ":N:_files" for each word, or the choices.
std::string actions(const Option& option)
{
    std::string action = "_files";
    if (!option.rules.choices.empty())
        action = within("(", host::joined(option.rules.choices, " "), ")");
    std::string text;
    for (const std::string& word : host::wordsOf(wordsOf(option)))
        text.append(":").append(escaped(word)).append(":").append(action);
    return text;
}

std::string specification(const Option& option)
{
    if (isByPlace(option)) {
        const bool isList = std::holds_alternative<std::vector<std::string>*>(option.target);
        return quoted(within(isList ? "*" : option.rules.required ? "" : ":", actions(option), ""));
    }
    std::vector<std::string> names = host::namesOf(option);
    const std::string once = quoted(within("(", host::joined(names, " "), ")"));
    for (std::string& name : names) // the word may stand in the same one, as in --gain=2
        if (wordCount(option) == 1)
            name += name.starts_with("--") ? "=" : "+";
    const std::string rest = quoted(within("[", escaped(option.help), "]") + actions(option));
    const std::string all = host::joined(names, ",");
    return once + (names.size() == 1 ? quoted(all) : within("{", all, "}")) + rest;
}

void printArguments(const std::vector<Option>& options)
{
    std::printf("_arguments -S");
    for (const Option& option : options)
        std::printf(" \\\n            %s", specification(option).c_str());
    std::printf(" ;;\n");
}

void printZsh(const host::Program& program)
{
    std::printf("#compdef kreiluge\n"
                "# Completion of kreiluge for zsh: put it in a directory of fpath, as _kreiluge.\n"
                "_kreiluge()\n{\n    local -a commands=(\n");
    for (const Command& command : program.commands)
        std::printf("        %s\n",
                    quoted(std::string(command.name).append(":").append(escaped(command.summary))).c_str());
    std::printf("    )\n"
                "    if ((CURRENT == 2)) && [[ $words[2] != -* ]]; then\n"
                "        _describe command commands\n"
                "        return\n"
                "    fi\n"
                "    local command=$words[2]\n"
                "    ((CURRENT > 2)) && shift words && ((CURRENT--)) || command=''\n"
                "    case $command in\n");
    for (const Command& command : program.commands) {
        std::printf("        %s) ", command.name);
        printArguments(optionsOf(command));
    }
    std::printf("        '') ");
    printArguments({host::helpOption(), host::versionOption()});
    std::printf("    esac\n}\n_kreiluge \"$@\"\n");
}

int print(const std::string& shell)
{
    if (shell == shells[0])
        printBash(program());
    else if (shell == shells[1])
        printZsh(program());
    else
        host::refuseName("unknown shell", shell, shells);
    return exitDone;
}

} // namespace

Command completionCommand()
{
    Command command{"completion", "Print what completes commands, options and their words in a shell",
                    "Examples:\n"
                    "  source <(kreiluge completion bash)\n"
                    "  kreiluge completion zsh > ~/.zfunc/_kreiluge"};
    auto shell = std::make_shared<std::string>();
    command.add({{"SHELL", shell.get(), "a shell", {.required = true, .choices = shells}}});
    command.run = [shell] { return print(*shell); };
    return command;
}

} // namespace tool
