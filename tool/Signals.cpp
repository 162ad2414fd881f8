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
    struct sigaction action = {}, old = {};
    action.sa_handler = onSignal;
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE}) {
        const bool again = number == SIGPIPE; // comes with every line that nobody reads
        action.sa_flags = static_cast<int>(again ? SA_RESTART : SA_RESETHAND | SA_RESTART);
        sigaction(number, nullptr, &old);
        if (old.sa_handler != SIG_IGN) // as nohup wants it
            sigaction(number, &action, nullptr);
    }
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
