#pragma once

#include <host/file/Image.h>
#include <host/graph/Operation.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace host {

/// The threads that the library takes at once, and those of them that this machine has cores for.
constexpr int maxThreads = 8;
int defaultThreads();

/// The name of the instruction set that the library computes with.
const char* instructionSet();

/// A switch that another thread, or a signal handler, turns to stop a job.
using CancelSwitch = std::atomic<bool>;

/// Throws when a switch is turned; none never is.
void checkStopped(const CancelSwitch* cancel);

struct CookSettings
{
    int threads = defaultThreads();
    int tile = 200;                           ///< side of a tile in pixels
    std::optional<unsigned char> depth;       ///< storage format of the output; that of the input without
    std::optional<unsigned int> black, white; ///< integer codes of 0.0 and 1.0; the full range without
    std::vector<std::string> planes;          ///< to work on; empty: those with colour; "all": all
    const CancelSwitch* cancel = nullptr;
    std::function<void(int64_t rows, int64_t total)> progress; ///< called on the calling thread
};

struct CookReport
{
    Image output;
    std::vector<std::string> planes; ///< those worked on
    double readSeconds = 0.0;
    double workSeconds = 0.0; ///< of all threads together
    double writeSeconds = 0.0;
    double seconds = 0.0; ///< from start to end; the stages overlap
    std::vector<std::string> notes;
};

/// Works on one image file and writes another one. Planes and components that the operation leaves alone are
/// copied. The image passes through memory in bands of tile rows.
///
/// Where `depth` asks for another format, values are computed in the wider of the two formats.
/// Throws Error; the output file is complete or not touched at all.
CookReport cook(const std::string& input, const std::string& output, const Operation& operation,
                const CookSettings& settings);

} // namespace host
