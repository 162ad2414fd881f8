#pragma once

#include <chrono>

/// Counts seconds from its start.
class UT_StopWatch
{
public:
    void start() { start_ = Clock::now(); }
    double getTime() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point start_ = Clock::now();
};
