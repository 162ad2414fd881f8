#pragma once

#include <mutex>

/// A lock that one thread holds at a time; not recursive. Works with std::lock_guard.
class UT_Lock
{
public:
    void lock() { mutex_.lock(); }
    void unlock() { mutex_.unlock(); }

private:
    std::mutex mutex_;
};
