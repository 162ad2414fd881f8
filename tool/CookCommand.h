#pragma once

#include "Arguments.h"

#include <host/graph/Combine.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

// What the commands that turn images into others share.

namespace tool {

/// The image files of a command: those of one frame, or names with a place for its number.
struct CookFiles
{
    host::CombineInputs inputs; ///< commands of one image have the first alone
    std::string output;
};

struct CookOptions : CookFiles
{
    std::optional<std::string> frames, depth, black, white;
    std::string progress = "auto";
    std::vector<std::string> planes;
    std::string threads = std::to_string(host::defaultThreads());
    std::string tile = "200";
    bool stats = false;
};

/// What help says of an input.
std::string inputHelp(const std::string& what);

void addCookOptions(Command& command, CookOptions& o);
void addPoints(Command& command, CookOptions& o);

/// What is done to the files of one frame.
using CookJob = std::function<host::CookReport(const CookFiles& files, const host::CookSettings& settings)>;

/// Runs a job over all frames and returns the exit code. A frame that fails does not keep the others from
/// being done.
int cookAll(const CookOptions& o, const CookJob& job);

/// The same for an operation on one image.
int cookAll(const CookOptions& o, const host::Operation& operation);

} // namespace tool
