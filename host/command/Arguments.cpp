#include <host/command/Arguments.h>

#include <host/command/OptionText.h>
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
    const CLI::Option* const planes = command.get_option_no_throw("--planes");
    const bool meansPlanes = planes != nullptr && planes->count() > 0;
    return "'" + word + "' is one argument too many" +
           (meansPlanes ? "; --planes takes names with commas between them" : "");
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
                helpOf(option));
        else if constexpr (std::is_same_v<T, bool*>)
            return command.add_flag(option.name, *target, helpOf(option));
        else
            return command.add_option(option.name, *target, helpOf(option))
                ->type_name(isByPlace(option) ? "" : wordsOf(option));
    };
    CLI::Option* added = std::visit(add, option.target)->required(option.rules.required);
    if (std::holds_alternative<float*>(option.target) || std::holds_alternative<std::string*>(option.target))
        added->capture_default_str();
    if (option.rules.preset != nullptr)
        added->default_str(option.rules.preset);
    if (wordCount(option) > 1)
        added->expected(wordCount(option));
    else if (!isByPlace(option) && std::holds_alternative<std::vector<std::string>*>(option.target))
        (option.rules.repeats ? added : added->delimiter(','))->allow_extra_args(false);
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

Option helpOption()
{
    return {"-h,--help", static_cast<bool*>(nullptr), "tell what there is, and nothing else"};
}

Option versionOption()
{
    return {"--version", static_cast<bool*>(nullptr), "tell the version, and nothing else"};
}

int runCommand(const Program& program, int usageCode, int argc, char** argv)
{
    const std::string name = program.name;
    CLI::App app(std::string(program.summary) + ".", name);
    app.set_help_flag(helpOption().name, helpOption().help);
    app.set_version_flag(versionOption().name, name + " " + program.version, versionOption().help);
    app.require_subcommand(0, 1);
    std::string footer = "Exit codes:\n";
    for (const ExitCode& exit : program.exitCodes)
        footer += "  " + exit.code + "  " + exit.meaning + "\n";
    app.footer(footer + "`" + name + " COMMAND --help` tells more of a command.");
    int exitCode = usageCode;
    for (const Command& command : program.commands) {
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
        std::fprintf(stderr, "%s: %s\n`%s%s --help` tells more.\n", program.name,
                     describe(error, app).c_str(), program.name,
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
