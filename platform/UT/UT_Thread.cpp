#include <UT/UT_Thread.h>

#include <mutex>
#include <vector>

namespace {

/// The numbers that threads have. Never destroyed: threads may end after main().
struct Numbers
{
    std::mutex mutex;
    std::vector<bool> taken;
};

Numbers& numbers()
{
    static auto* const all = new Numbers;
    return *all;
}

struct Number
{
    Number()
    {
        const std::lock_guard guard(numbers().mutex);
        while (index < numbers().taken.size() && numbers().taken[index])
            ++index;
        if (index == numbers().taken.size())
            numbers().taken.push_back(false);
        numbers().taken[index] = true;
    }
    ~Number()
    {
        const std::lock_guard guard(numbers().mutex);
        numbers().taken[index] = false;
    }
    Number(const Number&) = delete;
    Number& operator=(const Number&) = delete;

    size_t index = 0;
};

} // namespace

int UT_Thread::getMySequentialThreadIndex()
{
    static thread_local const Number number;
    return static_cast<int>(number.index) + 1;
}
