#include <RE/re_Times.h>

#include <mutex>

namespace {

struct Total
{
    std::mutex mutex;
    RE_GPUTimes times;
};

Total& total()
{
    static Total total;
    return total;
}

} // namespace

RE_GPUTimes REgpuTimes()
{
    const std::lock_guard guard(total().mutex);
    return total().times;
}

re_Timer::~re_Timer()
{
    const double seconds = watch_.getTime();
    const std::lock_guard guard(total().mutex);
    total().times.*step_ += seconds;
}

void re_count(int64_t RE_GPUTimes::*what)
{
    const std::lock_guard guard(total().mutex);
    ++(total().times.*what);
}
