#pragma once

#include <atomic>

/// A lock for a few instructions: who waits keeps its processor. Works with std::lock_guard.
class UT_SpinLock
{
public:
    void lock()
    {
        while (held_.test_and_set(std::memory_order_acquire))
            while (held_.test(std::memory_order_relaxed))
                ;
    }
    void unlock() { held_.clear(std::memory_order_release); }

private:
    std::atomic_flag held_;
};
