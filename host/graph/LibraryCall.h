#pragma once

#include <atomic>

namespace host {

/// A switch that another thread, or a signal handler, turns to stop a run.
using CancelSwitch = std::atomic<bool>;

/// Whether a run is to stop.
class StopToken
{
public:
    explicit StopToken(const CancelSwitch* cancel) : cancel_(cancel) {}

    bool isStopped() const { return cancel_ != nullptr && cancel_->load(std::memory_order_relaxed); }

    /// Throws when the run is to stop.
    void check() const;

private:
    const CancelSwitch* cancel_;
};

/// Throws when a switch is turned; none never is.
void checkStopped(const CancelSwitch* cancel);

/// The threads that the library takes at once.
constexpr int libraryThreads = 8;

/// A call to the library in the process: while it lasts it has one of the library's thread indexes to itself.
/// There may be more threads than indexes, those of several runs too; they wait here for their turn.
class LibraryCall
{
public:
    explicit LibraryCall(const StopToken& stop);
    ~LibraryCall();
    LibraryCall(const LibraryCall&) = delete;
    LibraryCall& operator=(const LibraryCall&) = delete;

    int thread() const { return thread_; }
    void* token() const;

private:
    const StopToken& stop_;
    int thread_;
};

} // namespace host
