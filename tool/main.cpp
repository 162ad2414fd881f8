#include "Commands.h"
#include "Signals.h"

#include <host/text/Error.h>
#include <host/text/Text.h>

#include <PXL/PXL_Caps.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace {

int exitCodeOf(const host::Error& error)
{
    switch (error.kind()) {
    case host::Error::Kind::Read:
        return tool::exitCannotRead;
    case host::Error::Kind::Write:
    case host::Error::Kind::Output:
        return tool::exitCannotWrite;
    case host::Error::Kind::Device:
        return tool::exitNoDevice;
    case host::Error::Kind::Cancelled:
        return 128 + tool::caughtSignal();
    default:
        return tool::exitUsage;
    }
}

/// Once: results are the same with every instruction set, but somebody wanted another speed.
void warnOfUnknownInstructionSet()
{
    if (PXLisInstructionSetCapKnown())
        return;
    constexpr const char* known = ""
#define TOOL_NAME(NAME) " " #NAME
        PXL_FOR_EACH_INSTRUCTION_SET(TOOL_NAME);
#undef TOOL_NAME
    std::fprintf(stderr, "kreiluge: warning: KREILUGE_ISA is '%s', which is unknown and ignored; known:%s\n",
                 host::printable(std::getenv("KREILUGE_ISA")).c_str(), known);
}

int run(int argc, char** argv)
{
    try {
        return host::runCommand(tool::program(), tool::exitUsage, argc, argv);
    } catch (const host::Error& error) {
        std::fprintf(stderr, "kreiluge: %s\n", host::printable(error.what()).c_str());
        return exitCodeOf(error);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kreiluge: %s\n", host::printable(error.what()).c_str());
        return tool::exitCannotRead;
    }
}

} // namespace

int main(int argc, char** argv)
{
    tool::catchSignals();
    warnOfUnknownInstructionSet();
    const int exitCode = run(argc, argv);
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return exitCode;
    if (tool::caughtSignal() != 0) // nobody reads any more
        return 128 + tool::caughtSignal();
    std::fprintf(stderr, "kreiluge: cannot write to standard output\n");
    return tool::exitCannotWrite;
}
