#include <host/command/Arguments.h>

#include <host/text/Error.h>
#include <host/text/Names.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>

namespace host {

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
        return "unknown option '" + name + "'" + suggestion(name, optionNames(command));
    }
    std::vector<std::string> commands;
    for (const CLI::App* known : app.get_subcommands([](const CLI::App*) { return true; }))
        commands.push_back(known->get_name());
    if (&command == &app)
        return "unknown command '" + word + "'" + suggestion(word, commands);
    return "'" + word + "' is one argument too many";
}

int wordCount(const char* words)
{
    const std::string text = words;
    return 1 + static_cast<int>(std::count(text.begin(), text.end(), ' '));
}

void addOption(CLI::App& command, const Option& option)
{
    const auto add = [&](const auto& target) {
        using T = std::decay_t<decltype(target)>;
        if constexpr (std::is_same_v<T, std::function<void()>>)
            return command.add_flag_callback(
                option.name,
                [target] {
                    target();
                    throw CLI::Success();
                },
                option.help);
        else if constexpr (std::is_same_v<T, bool*>)
            return command.add_flag(option.name, *target, option.help);
        else
            return command.add_option(option.name, *target, option.help);
    };
    CLI::Option* added = std::visit(add, option.target)->required(option.rules.required);
    if (std::holds_alternative<float*>(option.target) || std::holds_alternative<std::string*>(option.target))
        added->capture_default_str();
    if (option.rules.preset != nullptr)
        added->default_str(option.rules.preset);
    if (option.rules.words != nullptr)
        added->type_name(option.rules.words)->expected(wordCount(option.rules.words));
    else if (option.name[0] == '-' && std::holds_alternative<std::vector<std::string>*>(option.target))
        added->delimiter(',')->allow_extra_args(false);
    for (const char* other : option.rules.needs)
        added->needs(command.get_option(other));
    for (const char* other : option.rules.excludes)
        added->excludes(command.get_option(other));
}

void addOptions(CLI::App& app, const Command& command)
{
    for (const Option& option : command.options)
        addOption(app, option);
}

} // namespace

int runCommand(const std::vector<Command>& commands, int usageCode, int argc, char** argv)
{
    CLI::App app("Grades images, combines them and finds their edges, from the shell.", "kreiluge");
    app.set_version_flag("--version", "kreiluge " KREILUGE_VERSION);
    app.require_subcommand(0, 1);
    app.footer("Exit codes: 0 done; 1 some frames failed, or diff found a difference; 2 bad arguments or no "
               "such input;\n"
               "3 cannot read; 4 cannot write; 129 and above stopped by a signal.\n"
               "`kreiluge COMMAND --help` tells more of a command.");
    int exitCode = usageCode;
    for (const Command& command : commands) {
        CLI::App* added = app.add_subcommand(command.name, command.summary);
        if (command.footer != nullptr)
            added->footer(command.footer);
        addOptions(*added, command);
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

void readWords(const Command& command, const std::vector<std::string>& words, std::optional<size_t>& at)
{
    CLI::App app;
    app.set_help_flag();
    addOptions(*app.add_subcommand(command.name), command);
    std::vector<std::string> reversed(words.rbegin(), words.rend()); // as the parser wants them
    reversed.emplace_back(command.name);
    try {
        app.parse(reversed);
    } catch (const CLI::ParseError& error) {
        const std::vector<std::string> extra = app.remaining(true);
        const auto found = extra.empty() ? words.end() : std::find(words.begin(), words.end(), extra.front());
        if (found != words.end())
            at = static_cast<size_t>(found - words.begin());
        refuse(describe(error, app));
    }
}

} // namespace host
