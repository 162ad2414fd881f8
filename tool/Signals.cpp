#include "Signals.h"

#include <csignal>

namespace tool {

namespace {

host::CancelSwitch cancelled{false};
volatile std::sig_atomic_t signalNumber = 0;

static_assert(host::CancelSwitch::is_always_lock_free, "a signal handler may turn it");

void onSignal(int number)
{
    signalNumber = number;
    cancelled.store(true, std::memory_order_relaxed);
}

} // namespace

void catchSignals()
{
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaction(number, &action, nullptr);
    std::signal(SIGXFSZ, SIG_IGN); // a file that may not grow is an error to report
}

int caughtSignal()
{
    return signalNumber;
}

const host::CancelSwitch& cancelSwitch()
{
    return cancelled;
}

} // namespace tool
