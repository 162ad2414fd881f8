#include "Commands.h"

#include <host/command/OptionText.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace tool {

namespace {

using host::Option;

/// A text that means nothing to roff but itself.
std::string plain(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        if (c == '\\')
            result += "\\e";
        else if (c == '-')
            result += "\\-";
        else if ((c == '.' || c == '\'') && (result.empty() || result.back() == '\n'))
            result.append("\\&").push_back(c);
        else
            result += c;
    }
    return result;
}

void printLine(const std::string& text)
{
    std::printf("%s\n", plain(text).c_str());
}

void printTerm(const std::string& term, const std::string& meaning)
{
    std::printf(".TP\n\\fB%s\\fR\n", plain(term).c_str());
    printLine(meaning);
}

void printOptions(const std::vector<Option>& options)
{
    for (const Option& option : options)
        printTerm(isByPlace(option) ? wordsOf(option) : writtenOf(option), documentOf(option));
}

void printCommand(const host::Program& program, const Command& command)
{
    const std::string usage = usageOf(command.options);
    std::printf(".SS \"%s %s\"\n", program.name, command.name);
    printLine(command.summary + std::string("."));
    std::printf(".PP\n\\fB%s %s\\fR %s\n", program.name, command.name,
                plain(usage.empty() ? "[OPTIONS]" : usage + " [OPTIONS]").c_str());
    printOptions(command.options);
    if (command.footer == nullptr)
        return;
    std::printf(".PP\n.nf\n");
    printLine(command.footer);
    std::printf(".fi\n");
}

int print()
{
    const host::Program all = program();
    std::string title = all.name;
    for (char& c : title)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    std::string summary = all.summary;
    summary.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(summary.front())));
    std::printf(".TH %s 1 \"\" \"%s %s\"\n.SH NAME\n%s \\- %s\n", title.c_str(), all.name, all.version,
                all.name, plain(summary).c_str());
    std::printf(".SH SYNOPSIS\n\\fB%s\\fR COMMAND [ARGUMENTS] [OPTIONS]\n", all.name);
    std::printf(".SH OPTIONS\nEvery command takes the first of these.\n");
    printOptions({host::helpOption(), host::versionOption()});
    std::printf(".SH COMMANDS\n");
    for (const Command& command : all.commands)
        printCommand(all, command);
    std::printf(".SH \"EXIT STATUS\"\n");
    for (const host::ExitCode& exit : all.exitCodes)
        printTerm(exit.code, exit.meaning);
    return exitDone;
}

} // namespace

Command manCommand()
{
    Command command{"man", "Print the manual page", "Example:\n  kreiluge man | man -l -"};
    command.run = print;
    return command;
}

} // namespace tool
