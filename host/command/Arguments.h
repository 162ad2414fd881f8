#pragma once

#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

// What commands take from the command line, as data: the library that parses it takes long to compile, so that
// only one source includes it.

namespace host {

/// Where the value of an option goes. A bool makes it a flag, a function one that does something instead of
/// the command. A list has commas between its parts, by position blanks, unless help names several words.
using Target = std::variant<bool*, std::function<void()>, float*, std::string*, std::optional<float>*,
                            std::optional<std::string>*, std::vector<std::string>*>;

struct Rules
{
    bool required = false;
    const char* words = nullptr; ///< what help calls the words of an option: "N", "WA WB"; null: its name
    const char* preset = nullptr;
    std::vector<const char*> needs = {}, excludes = {};
    std::vector<std::string> choices = {}; ///< the words there are
    bool repeats = false; ///< a list whose parts are options of their own, and not parted by commas
};
inline const Rules required{.required = true};

/// An option, or an argument by position where the name has no dashes. The help shows the preset of a number
/// or text.
struct Option
{
    const char* name;
    Target target;
    std::string help;
    Rules rules = {};
};

struct Command
{
    const char* name;
    const char* summary;
    const char* footer; ///< null: that of all commands together
    std::vector<Option> options = {};
    std::function<int()> run = {}; ///< returns the exit code, or throws Error

    void add(std::initializer_list<Option> more) { options.insert(options.end(), more); }
};

struct ExitCode
{
    std::string code;
    const char* meaning;
};

struct Program
{
    const char* name;
    const char* summary;
    const char* version;
    std::vector<Command> commands;
    std::vector<ExitCode> exitCodes;
};

/// What every command takes, and what the program takes besides.
Option helpOption();
Option versionOption();

/// Runs the command that the arguments name, or tells what is wrong with them; returns the exit code, for
/// wrong arguments that of bad usage.
int runCommand(const Program& program, int usageCode, int argc, char** argv);

/// Reads words as the arguments of a command; throws a usage error. `at` becomes the number of the word that is
/// wrong, if there is one.
void readWords(const Command& command, const std::vector<std::string>& words, std::optional<size_t>& at);

} // namespace host
