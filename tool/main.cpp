#include "Commands.h"
#include "Signals.h"

#include <host/Error.h>
#include <host/Names.h>

#include <cstdio>
#include <exception>

namespace {

int exitCodeOf(const host::Error& error)
{
    switch (error.kind()) {
    case host::Error::Kind::Read:
        return tool::exitCannotRead;
    case host::Error::Kind::Write:
    case host::Error::Kind::Output:
        return tool::exitCannotWrite;
    case host::Error::Kind::Cancelled:
        return 128 + tool::caughtSignal();
    default:
        return tool::exitUsage;
    }
}

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

std::vector<std::string> commandNames(const CLI::App& app)
{
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
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
    if (&command == &app)
        return "unknown command '" + word + "'" + host::suggestion(word, commandNames(app));
    return "'" + word + "' is one argument too many";
}

int run(int argc, char** argv)
{
    CLI::App app("Grades images, combines them and finds their edges, from the shell.", "kreiluge");
    app.set_version_flag("--version", "kreiluge " KREILUGE_VERSION);
    app.require_subcommand(0, 1);
    app.footer("Exit codes: 0 done; 1 some frames failed, or diff found a difference; 2 bad arguments or no "
               "such input;\n"
               "3 cannot read; 4 cannot write; 129 and above stopped by a signal.\n"
               "`kreiluge COMMAND --help` tells more of a command.");
    int exitCode = tool::exitDone;
    tool::addGrade(app, exitCode);
    tool::addEdge(app, exitCode);
    tool::addComposite(app, exitCode);
    tool::addBlend(app, exitCode);
    tool::addChroma(app, exitCode);
    tool::addFunctions(app);
    tool::addInfo(app);
    tool::addDiff(app, exitCode);
    tool::addCurve(app);
    tool::addPlate(app);
    try {
        app.parse(argc, argv);
        if (app.get_subcommands().empty()) {
            std::fputs(app.help().c_str(), stderr);
            return tool::exitUsage;
        }
        return exitCode;
    } catch (const CLI::Success& success) { // --help and --version
        return app.exit(success);
    } catch (const CLI::ParseError& error) {
        const CLI::App& command = chosenCommand(app);
        std::fprintf(stderr, "kreiluge: %s\n`kreiluge%s --help` tells more.\n", describe(error, app).c_str(),
                     &command == &app ? "" : (" " + command.get_name()).c_str());
        return tool::exitUsage;
    }
}

int runGuarded(int argc, char** argv)
{
    try {
        return run(argc, argv);
    } catch (const host::Error& error) {
        std::fprintf(stderr, "kreiluge: %s\n", error.what());
        return exitCodeOf(error);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kreiluge: %s\n", error.what());
        return tool::exitCannotRead;
    }
}

} // namespace

int main(int argc, char** argv)
{
    tool::catchSignals();
    const int exitCode = runGuarded(argc, argv);
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return exitCode;
    if (tool::caughtSignal() != 0) // nobody reads any more
        return 128 + tool::caughtSignal();
    std::fprintf(stderr, "kreiluge: cannot write to standard output\n");
    return tool::exitCannotWrite;
}
