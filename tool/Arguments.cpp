#include "Arguments.h"

#include "Commands.h"

#include <host/text/Names.h>

#include <CLI/CLI.hpp>

#include <cstdio>

namespace tool {

namespace {

/// The command that the arguments name, or the application itself.
const CLI::App& chosenCommand(const CLI::App& app)
{
    const auto chosen = app.get_subcommands();
    return chosen.empty() ? app : *chosen.front();
}

std::vector<std::string> optionNames(const CLI::App& command)
{
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    return names;
}

/// What is wrong with the arguments, in our words where they are better.
std::string describe(const CLI::ParseError& error, const CLI::App& app)
{
    const CLI::App& command = chosenCommand(app);
    const std::vector<std::string> extra = app.remaining(true);
    const bool isValue = dynamic_cast<const CLI::ConversionError*>(&error) != nullptr;
    if (extra.empty() || isValue) // an option that took too many arguments leaves too few
        return error.what();
    const std::string& word = extra.front();
    if (word.starts_with("-") && word.size() > 1) {
        const std::string name = word.substr(0, word.find('='));
        return "unknown option '" + name + "'" + host::suggestion(name, optionNames(command));
    }
    std::vector<std::string> commands;
    for (const CLI::App* known : app.get_subcommands([](const CLI::App*) { return true; }))
        commands.push_back(known->get_name());
    if (&command == &app)
        return "unknown command '" + word + "'" + host::suggestion(word, commands);
    return "'" + word + "' is one argument too many";
}

void addOption(CLI::App& command, const Option& option)
{
    const auto add = [&]<class T>(T* target) {
        if constexpr (std::is_same_v<T, void()>)
            return command.add_flag_callback(
                option.name,
                [target] {
                    target();
                    throw CLI::Success();
                },
                option.help);
        else if constexpr (std::is_same_v<T, bool>)
            return command.add_flag(option.name, *target, option.help);
        else
            return command.add_option(option.name, *target, option.help);
    };
    CLI::Option* added = std::visit(add, option.target)->required(option.rules.required);
    if (std::holds_alternative<float*>(option.target) || std::holds_alternative<std::string*>(option.target))
        added->capture_default_str();
    if (std::holds_alternative<std::vector<std::string>*>(option.target))
        added->delimiter(',')->allow_extra_args(false);
    if (option.rules.values != nullptr)
        added->type_name(option.rules.values);
    for (const char* other : option.rules.needs)
        added->needs(command.get_option(other));
    for (const char* other : option.rules.excludes)
        added->excludes(command.get_option(other));
}

} // namespace

int runCommand(const std::vector<Command>& commands, int argc, char** argv)
{
    CLI::App app("Grades images, combines them and finds their edges, from the shell.", "kreiluge");
    app.set_version_flag("--version", "kreiluge " KREILUGE_VERSION);
    app.require_subcommand(0, 1);
    app.footer("Exit codes: 0 done; 1 some frames failed, or diff found a difference; 2 bad arguments or no "
               "such input;\n"
               "3 cannot read; 4 cannot write; 129 and above stopped by a signal.\n"
               "`kreiluge COMMAND --help` tells more of a command.");
    int exitCode = exitUsage;
    for (const Command& command : commands) {
        CLI::App* added = app.add_subcommand(command.name, command.summary);
        if (command.footer != nullptr)
            added->footer(command.footer);
        for (const Option& option : command.options)
            addOption(*added, option);
        added->callback([&] { exitCode = command.run(); });
    }
    try {
        app.parse(argc, argv);
        if (app.get_subcommands().empty())
            std::fputs(app.help().c_str(), stderr);
    } catch (const CLI::Success& success) { // --help and --version
        return app.exit(success);
    } catch (const CLI::ParseError& error) {
        const CLI::App& command = chosenCommand(app);
        std::fprintf(stderr, "kreiluge: %s\n`kreiluge%s --help` tells more.\n", describe(error, app).c_str(),
                     &command == &app ? "" : (" " + command.get_name()).c_str());
    }
    return exitCode;
}

} // namespace tool
