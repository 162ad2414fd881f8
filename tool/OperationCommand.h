#pragma once

#include <host/command/Arguments.h>
#include <host/script/Script.h>

#include <optional>
#include <string>
#include <vector>

// What the commands that turn images into others share.

namespace tool {

struct RunOptions
{
    std::optional<std::string> frames;
    std::string progress = "auto";
    std::string threads = std::to_string(host::defaultThreads());
    std::string tile = "200";
    std::string window = "display";
    bool stats = false;
};

void addRunOptions(host::Command& command, RunOptions& o);

/// The frames to run a script for; none: once, without a number.
std::vector<std::optional<int64_t>> framesOf(const host::Script& script,
                                             const std::optional<std::string>& numbers);

/// Runs a script over all frames and returns the exit code. A frame that fails does not keep the others from
/// being done.
int runAll(const host::Script& script, const RunOptions& o);

} // namespace tool
