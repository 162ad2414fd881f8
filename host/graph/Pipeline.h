#pragma once

#include <cstdint>
#include <functional>

namespace host {

/// Work on an image in bands that pass through three stages at once: while a few threads work on one band,
/// the next one is filled and the one before is drained. Bands are kept in `slots` places that take turns.
struct Pipeline
{
    int64_t bands = 0;
    int slots = 3;
    int threads = 1; ///< one at the least, also for bands without work

    /// Gets a band ready, one after the other; the result is the number of pieces of work in it.
    std::function<int(int64_t band, int slot)> fill;
    /// One piece of a band, on one of `threads` threads.
    std::function<void(int64_t band, int slot, int piece, int thread)> work;
    /// Takes a band away when all of it is done, one after the other, on the calling thread.
    std::function<void(int64_t band, int slot)> drain;

    /// Runs all bands. What a stage throws stops the others, and is thrown on.
    void run() const;
};

} // namespace host
