#include <host/graph/LibraryCall.h>

#include <RU/framework/RU_Algorithm.h>

#include <bit>
#include <condition_variable>
#include <mutex>

namespace host {

namespace {

bool isStopped(void* token, int)
{
    return static_cast<const StopToken*>(token)->isStopped();
}

/// The indexes that nobody uses.
class Indexes
{
public:
    Indexes() { RU_Algorithm::setInterruptCallback(isStopped); }

    int take()
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return free_ != 0; });
        const int index = std::countr_zero(free_);
        free_ &= free_ - 1;
        return index;
    }

    void give(int index)
    {
        {
            const std::lock_guard lock(mutex_);
            free_ |= 1u << index;
        }
        changed_.notify_one();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    unsigned int free_ = (1u << libraryThreads) - 1;
};

Indexes& indexes()
{
    static Indexes all;
    return all;
}

} // namespace

LibraryCall::LibraryCall(const StopToken& stop) : stop_(stop), thread_(indexes().take()) {}

LibraryCall::~LibraryCall()
{
    indexes().give(thread_);
}

void* LibraryCall::token() const
{
    return const_cast<StopToken*>(&stop_);
}

} // namespace host
