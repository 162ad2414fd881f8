#include <RU/pixelfunc/RU_GPUTiming.h>

#include <UT/UT_Thread.h>

#include <mutex>

RU_GPUTiming& RU_GPUTiming::buildShader()
{
    static RU_GPUTiming timing("Build Shader");
    return timing;
}

RU_GPUTiming& RU_GPUTiming::compute()
{
    static RU_GPUTiming timing("Compute");
    return timing;
}

double RU_GPUTiming::total() const
{
    const std::lock_guard guard(totalLock_);
    return total_;
}

void RU_GPUTiming::stop()
{
    const double seconds = watch().getTime();
    const std::lock_guard guard(totalLock_);
    total_ += seconds;
}

UT_StopWatch& RU_GPUTiming::watch()
{
    const auto index = static_cast<size_t>(UT_Thread::getMySequentialThreadIndex() - 1);
    if (index < watches_.size())
        return watches_[index];
    const std::lock_guard guard(overflowLock_);
    const size_t slot = index - watches_.size();
    if (slot >= overflow_.size())
        overflow_.resize(slot + 1);
    if (overflow_[slot] == nullptr)
        overflow_[slot] = std::make_unique<UT_StopWatch>();
    return *overflow_[slot];
}
