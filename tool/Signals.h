#pragma once

#include <host/text/Stop.h>

namespace tool {

/// Makes the first of SIGINT, SIGTERM, SIGHUP, SIGQUIT and SIGPIPE turn a switch that stops the job in hand,
/// which then removes its temporary file; a second one but SIGPIPE ends the process at once. Signals that are
/// ignored stay so.
void catchSignals();

/// The signal that came, or 0.
int caughtSignal();

/// The switch that signals turn.
const host::CancelSwitch& cancelSwitch();

} // namespace tool
