#include <PXL/PXL_Caps.h>

#if defined(__x86_64__)
#include <cpuid.h>
#endif

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string_view>

namespace {

constexpr const char* setNames[] = {
#define PXL_NAME(NAME) #NAME,
    PXL_FOR_EACH_INSTRUCTION_SET(PXL_NAME)
#undef PXL_NAME
};

struct Capabilities
{
    bool mmx = false;
    bool sse = false;
    PXL_InstructionSet widest = PXL_InstructionSet::baseline;
    PXL_InstructionSet chosen = PXL_InstructionSet::baseline;
};

/// What KREILUGE_ISA names; the count of the sets where that is none.
size_t setFromEnvironment()
{
    const char* wanted = std::getenv("KREILUGE_ISA");
    size_t i = 0;
    while (i < std::size(setNames) && (wanted == nullptr || std::string_view(wanted) != setNames[i]))
        ++i;
    return i;
}

PXL_InstructionSet capFromEnvironment(PXL_InstructionSet widest)
{
    return std::min(widest, static_cast<PXL_InstructionSet>(setFromEnvironment()));
}

#if defined(__x86_64__)
/// clang 14 does not know the name in __builtin_cpu_supports.
bool hasF16C()
{
    unsigned int a = 0, b = 0, c = 0, d = 0;
    return __get_cpuid(1, &a, &b, &c, &d) != 0 && (c & bit_F16C) != 0;
}
#endif

Capabilities readCapabilities()
{
    Capabilities caps;
#if defined(__x86_64__)
    __builtin_cpu_init();
    caps.mmx = __builtin_cpu_supports("mmx");
    caps.sse = __builtin_cpu_supports("sse");
    if (__builtin_cpu_supports("avx2") && hasF16C())
        caps.widest = PXL_InstructionSet::avx2;
    if (caps.widest == PXL_InstructionSet::avx2 && __builtin_cpu_supports("avx512f") &&
        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vbmi"))
        caps.widest = PXL_InstructionSet::avx512;
#endif
    caps.chosen = capFromEnvironment(caps.widest);
    return caps;
}

const Capabilities& capabilities()
{
    static const Capabilities caps = readCapabilities();
    return caps;
}

} // namespace

void PXLdetermineProcCaps()
{
    capabilities();
}

bool PXLcpuHasMMX()
{
    return capabilities().mmx;
}

bool PXLcpuHasSSE()
{
    return capabilities().sse;
}

bool PXLcpuHasXMMX()
{
    return capabilities().mmx && capabilities().sse;
}

PXL_InstructionSet PXLwidestInstructionSet()
{
    return capabilities().widest;
}

PXL_InstructionSet PXLinstructionSet()
{
    return capabilities().chosen;
}

bool PXLisInstructionSetCapKnown()
{
    return std::getenv("KREILUGE_ISA") == nullptr || setFromEnvironment() < std::size(setNames);
}

const char* PXLinstructionSetName(PXL_InstructionSet set)
{
    return setNames[static_cast<size_t>(set)];
}
