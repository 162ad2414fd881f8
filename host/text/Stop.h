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

} // namespace host
