#pragma once

#include <PXL/PXL_Caps.h>

/// Hot loops live in sources named *.isa.cpp. Each is compiled once per instruction set, inside the
/// namespace RU_ISA (ru_baseline, ru_avx2, ru_avx512), and ends in a constant table of its kernels. Rules
/// for them:
/// - plain loops over rows;
/// - all but the table is in an unnamed namespace: of two templates of one name the linker would keep one for
///   both sources. Helpers in headers are RU_INLINE and inside RU_ISA;
/// - no inline function of the standard library: the linker keeps one copy of it for everybody, perhaps the
///   AVX one.
/// A test over the object files holds them to it.
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

/// RU_KERNELS(Table, name) declares the table `name` of every instruction set, and a function of that name:
///
///     const ru_BlendKernels& kernels = ru_blendRows();    // of the set chosen for this process
///     const ru_BlendKernels& narrow = ru_blendRows(PXL_InstructionSet::baseline);
#define RU_KERNELS_DECLARE(SET, TABLE, NAME)                                                                 \
    namespace ru_##SET                                                                                       \
    {                                                                                                        \
        extern const TABLE NAME;                                                                             \
    }
#define RU_KERNELS_ADDRESS(SET, NAME) &ru_##SET::NAME,
#define RU_KERNELS(TABLE, NAME)                                                                              \
    struct TABLE;                                                                                            \
    PXL_FOR_EACH_INSTRUCTION_SET(RU_KERNELS_DECLARE, TABLE, NAME)                                            \
    inline const TABLE& NAME(PXL_InstructionSet set = PXLinstructionSet())                                   \
    {                                                                                                        \
        static constexpr const TABLE* tables[] = {PXL_FOR_EACH_INSTRUCTION_SET(RU_KERNELS_ADDRESS, NAME)};   \
        return *tables[static_cast<int>(set)];                                                               \
    }

/// All tables of the library.
#define RU_FOR_EACH_KERNEL_TABLE(X)                                                                          \
    X(ru_ConvertKernels, ru_convertRows)                                                                     \
    X(ru_ExpressionKernels, ru_expressionRows)                                                               \
    X(ru_LineKernels, ru_lineRows)                                                                           \
    X(ru_VectorKernels, ru_vectorRows)                                                                       \
    X(ru_CurveKernels, ru_curveRows)                                                                         \
    X(ru_LookUpKernels, ru_lookUpRows)                                                                       \
    X(ru_EdgeDetectKernels, ru_edgeDetectRows)                                                               \
    X(ru_AreaKernels, ru_areaRows)                                                                           \
    X(ru_ExtremeKernels, ru_extremeRows)                                                                     \
    X(ru_SubPixelKernels, ru_subPixelRows)                                                                   \
    X(ru_FeatherKernels, ru_featherRows)                                                                     \
    X(ru_FillKernels, ru_fillRows)                                                                           \
    X(ru_NoiseKernels, ru_noiseRows)                                                                         \
    X(ru_CompositeKernels, ru_compositeRows)                                                                 \
    X(ru_BlendKernels, ru_blendRows)                                                                         \
    X(ru_ChromaAdjustKernels, ru_chromaAdjustRows)

RU_FOR_EACH_KERNEL_TABLE(RU_KERNELS)
