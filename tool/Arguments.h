#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

// What commands take from the command line, as data: the library that parses it takes long to compile, so that
// only one source includes it.

namespace tool {

/// Where the value of an option goes. A bool makes it a flag, a function one that does something instead of
/// the command. A list has commas between its parts, an array spaces.
using Target =
    std::variant<bool*, void (*)(), float*, std::string*, std::optional<float>*, std::optional<std::string>*,
                 std::vector<std::string>*, std::array<float, 3>*, std::optional<std::array<float, 2>>*>;

struct Rules
{
    bool required = false;
    const char* values = nullptr; ///< what the help calls them
    std::vector<const char*> needs = {}, excludes = {};
};
inline const Rules required{.required = true};

inline Rules needs(const char* other)
{
    return {.needs = {other}};
}

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
    std::function<int()> run = {}; ///< returns the exit code, or throws host::Error

    void add(std::initializer_list<Option> more) { options.insert(options.end(), more); }
};

/// Runs the command that the arguments name, or tells what is wrong with them; returns the exit code.
int runCommand(const std::vector<Command>& commands, int argc, char** argv);

} // namespace tool
