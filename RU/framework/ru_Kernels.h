#pragma once

#include <PXL/PXL_Caps.h>

/// Hot loops live in sources named *.isa.cpp. Each is compiled once per instruction set, inside the
/// namespace RU_ISA (ru_baseline, ru_avx2, ru_avx512), and ends in a constant table of its kernels. Rules
/// for them: plain loops over rows; no inline function of the standard library (the linker keeps one copy of
/// such a function for everybody, perhaps the AVX one); their own helpers are RU_INLINE and inside RU_ISA.
#define RU_INLINE [[gnu::always_inline]] static inline

/// Before a loop: rows that it reads and writes overlap only where they are the same.
#if defined(__clang__)
#define RU_EACH_ALONE _Pragma("clang loop vectorize(assume_safety)")
#else
#define RU_EACH_ALONE _Pragma("GCC ivdep")
#endif

/// What every table of kernels starts from.
struct ru_KernelTable
{
    PXL_InstructionSet compiledFor; ///< by the compiler's own word, not the build's
};

#if defined(__AVX512VBMI__)
#define RU_COMPILED_FOR PXL_InstructionSet::avx512
#elif defined(__AVX2__)
#define RU_COMPILED_FOR PXL_InstructionSet::avx2
#else
#define RU_COMPILED_FOR PXL_InstructionSet::baseline
#endif

/// RU_KERNELS(Table, name) declares the table `name` of every instruction set, and the function name(),
/// which answers the table for a set: by default the one chosen for this process.
#define RU_KERNELS_DECLARE(SET, TABLE, NAME)                                                                 \
    namespace ru_##SET                                                                                       \
    {                                                                                                        \
        extern const TABLE NAME;                                                                             \
    }
#define RU_KERNELS_ADDRESS(SET, NAME) &ru_##SET::NAME,
#define RU_KERNELS(TABLE, NAME)                                                                              \
    PXL_FOR_EACH_INSTRUCTION_SET(RU_KERNELS_DECLARE, TABLE, NAME)                                            \
    inline const TABLE& NAME(PXL_InstructionSet set = PXLinstructionSet())                                   \
    {                                                                                                        \
        static constexpr const TABLE* tables[] = {PXL_FOR_EACH_INSTRUCTION_SET(RU_KERNELS_ADDRESS, NAME)};   \
        return *tables[static_cast<int>(set)];                                                               \
    }
