#pragma once

#include <SYS/SYS_API.h>

/// The instruction sets that hot loops are compiled for, narrowest first. avx2: AVX2 and F16C.  avx512:
/// AVX-512 F, BW, DQ, VL and VBMI, so that no table path needs a further test.
#if defined(__x86_64__)
#define PXL_FOR_EACH_INSTRUCTION_SET(X, ...)                                                                 \
    X(baseline __VA_OPT__(, ) __VA_ARGS__)                                                                   \
    X(avx2 __VA_OPT__(, ) __VA_ARGS__)                                                                       \
    X(avx512 __VA_OPT__(, ) __VA_ARGS__)
#else
#define PXL_FOR_EACH_INSTRUCTION_SET(X, ...) X(baseline __VA_OPT__(, ) __VA_ARGS__)
#endif

enum class PXL_InstructionSet {
#define PXL_ENUMERATOR(NAME) NAME,
    PXL_FOR_EACH_INSTRUCTION_SET(PXL_ENUMERATOR)
#undef PXL_ENUMERATOR
};

/// Reads what the processor can do, once per process; later calls cost a test. Any thread may call it.
/// KREILUGE_ISA in the environment (baseline, avx2, avx512) caps what is chosen; other texts are ignored.
PLATFORM_API void PXLdetermineProcCaps();

/// MMX, SSE, and the integer extensions of MMX that came with SSE.
PLATFORM_API bool PXLcpuHasMMX();
PLATFORM_API bool PXLcpuHasSSE();
PLATFORM_API bool PXLcpuHasXMMX();

/// The widest set that the processor has, and the one chosen for this process.
PLATFORM_API PXL_InstructionSet PXLwidestInstructionSet();
PLATFORM_API PXL_InstructionSet PXLinstructionSet();

/// False where KREILUGE_ISA is some other text, so that a host can say so.
PLATFORM_API bool PXLisInstructionSetCapKnown();

/// "baseline", "avx2", ...
PLATFORM_API const char* PXLinstructionSetName(PXL_InstructionSet set);
