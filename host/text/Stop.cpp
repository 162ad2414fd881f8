#include <host/text/Stop.h>

#include <host/text/Error.h>

namespace host {

void StopToken::check() const
{
    if (isStopped())
        throw Error(Error::Kind::Cancelled, "stopped");
}

void checkStopped(const CancelSwitch* cancel)
{
    StopToken(cancel).check();
}

} // namespace host
