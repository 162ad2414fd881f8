#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace tool {

/// What the command exits with; a signal's number is added to 128.
enum ExitCode {
    exitDone = 0,
    exitSomeFailed = 1, ///< some frames of a sequence failed; diff: the images differ
    exitUsage = 2,      ///< bad arguments, or no such input
    exitCannotRead = 3,
    exitCannotWrite = 4
};

/// The whole number that the text of an option is; throws a usage error for anything else.
unsigned int readWhole(const std::string& option, const std::string& text, unsigned int least,
                       unsigned int most);
int readThreads(const std::string& text);

// Each adds a subcommand to the application. Its callback sets `exitCode`, or throws host::Error.
void addGrade(CLI::App& app, int& exitCode);
void addEdge(CLI::App& app, int& exitCode);
void addComposite(CLI::App& app, int& exitCode);
void addBlend(CLI::App& app, int& exitCode);
void addChroma(CLI::App& app, int& exitCode);
void addFunctions(CLI::App& app);
void addInfo(CLI::App& app);
void addDiff(CLI::App& app, int& exitCode);
void addCurve(CLI::App& app);
void addPlate(CLI::App& app);

} // namespace tool
