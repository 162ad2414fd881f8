#pragma once

#include <host/Cook.h>

namespace tool {

/// Makes the first of SIGINT, SIGTERM and SIGHUP turn a switch that stops the job in hand, which then removes
/// its temporary file; a second one ends the process at once.
void catchSignals();

/// The signal that came, or 0.
int caughtSignal();

/// The switch that signals turn.
const host::CancelSwitch& cancelSwitch();

} // namespace tool
