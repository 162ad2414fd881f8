#include <RU/composite/RU_Composite.h>

#include <PXL/PXL_Format.h>
#include <RU/composite/ru_CompositeRows.h>
#include <RU/kernel/ru_ConvertRows.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {

using Alphas = ru_CompositeAlphas;
using Step = ru_CompositeStep;

/// A line of the list.
struct Operation
{
    Alphas reads;
    Step whole, withoutSource, withoutDestination, withoutBoth;

    Step step(const void* dstAlpha, const void* srcAlpha) const
    {
        if (dstAlpha == nullptr)
            return srcAlpha == nullptr ? withoutBoth : withoutDestination;
        return srcAlpha == nullptr ? withoutSource : whole;
    }
};

constexpr Operation operations[] = {
#define RU_OPERATION(TYPE, NAME, FORMULA, READS, ARITHMETIC, SRC, DST, BOTH)                                 \
    {Alphas::READS, Step::TYPE, Step::SRC, Step::DST, Step::BOTH},
    RU_FOR_EACH_COMPOSITE_TYPE(RU_OPERATION)
#undef RU_OPERATION
};

/// The operation of a type; null for one that does not exist.
const Operation* operationOf(RU_CompositeType type)
{
    const auto index = static_cast<unsigned int>(type);
    return index < std::size(operations) ? &operations[index] : nullptr;
}

int64_t countOf(int count1, int count2)
{
    return static_cast<int64_t>(count1) * count2;
}

template <class... Pointers>
bool areAligned(uintptr_t boundary, Pointers... pointers)
{
    return ((reinterpret_cast<uintptr_t>(pointers) % boundary == 0) && ...);
}

/// The wide kernels where the arrays that are read are worth it, else the baseline's; the bytes are the same.
template <class T, class U>
const ru_CompositeKernels& kernelsFor(const Operation& operation, int64_t count, const T* dst,
                                      const U* dstAlpha, const T* src, const U* srcAlpha)
{
    constexpr bool isByte = sizeof(T) == 1;
    constexpr int64_t fewest = 128;
    PXLdetermineProcCaps();
    const bool capable = isByte ? operation.whole == Step::ADD || PXLcpuHasMMX() : PXLcpuHasSSE();
    const bool wide =
        count > fewest && capable &&
        areAligned(isByte ? 8 : 16, dst, ru_readsDestination(operation.reads) ? dstAlpha : nullptr, src,
                   ru_readsSource(operation.reads) ? srcAlpha : nullptr);
    return wide ? ru_compositeRows() : ru_compositeRows(PXL_InstructionSet::baseline);
}

/// Does a step that needs no loop; false for others.
template <class T>
bool doneWithoutLoop(Step step, T* dst, const T* src, int64_t count)
{
    const auto bytes = static_cast<size_t>(count) * sizeof(T);
    switch (step) {
    case Step::COPY:
        std::memmove(dst, src, bytes);
        return true;
    case Step::ZERO:
        std::memset(dst, 0, bytes); // is 0 as a float too
        return true;
    case Step::KEEP:
        return true;
    default:
        return false;
    }
}

template <class T, class U>
void compositeColours(RU_CompositeType type, int64_t count, T* dst, const U* dstAlpha, const T* src,
                      const U* srcAlpha)
{
    const Operation* operation = operationOf(type);
    if (operation == nullptr || count <= 0)
        return;
    const Step step = operation->step(dstAlpha, srcAlpha);
    if (doneWithoutLoop(step, dst, src, count))
        return;
    const ru_CompositeLoops<T, U>& kernels = kernelsFor(*operation, count, dst, dstAlpha, src, srcAlpha);
    kernels.loops[static_cast<int>(step)](dst, dstAlpha, src, srcAlpha, count);
}

template <class T>
void compositeAlphas(RU_CompositeType type, int64_t count, T* dstAlpha, const T* srcAlpha)
{
    const Operation* operation = operationOf(type);
    if (operation == nullptr || count <= 0 || type == RU_COMP_ATOP)
        return;
    const ru_CompositeAlphaLoops<T>& kernels =
        kernelsFor(*operation, count, dstAlpha, dstAlpha, srcAlpha, srcAlpha);
    const auto loop = kernels.loops[type];
    if (srcAlpha != nullptr) {
        loop(dstAlpha, srcAlpha, count);
        return;
    }
    T full[ru_chunk];
    std::fill_n(full, ru_chunk, static_cast<T>(PXL_FormatOf<T>::white));
    for (int64_t at = 0; at < count; at += ru_chunk)
        loop(dstAlpha + at, full, std::min(ru_chunk, count - at));
}

/// Marks where an operation that selects takes its first choice.
void markChosen(RU_CompositeType type, const ru_CompositeSelection& kernels, int32_t* mask,
                const float* dstAlpha, const float* srcAlpha, const float* const geometry[4], int64_t at,
                int64_t count)
{
    const bool byGeometry = type <= RU_COMP_ATOP;
    std::fill_n(mask, count, byGeometry ? 0 : 1);
    for (int k = 0; k < 4 && byGeometry; ++k)
        if (geometry[k] != nullptr)
            kernels.markNonZero(mask, geometry[k] + at, count);
    if (ru_readsSource(operations[type].reads) && srcAlpha != nullptr)
        kernels.andPositive(mask, srcAlpha + at, count);
    if (ru_readsDestination(operations[type].reads) && dstAlpha != nullptr)
        (type == RU_COMP_OUTSIDE ? kernels.andBelowOne : kernels.andPositive)(mask, dstAlpha + at, count);
}

} // namespace

#define RU_COMPOSITE_DEFINE(T, U)                                                                            \
    void RU_Composite::composite(RU_CompositeType type, int count1, int count2, T* dst, const U* dstAlpha,   \
                                 const T* src, const U* srcAlpha)                                            \
    {                                                                                                        \
        compositeColours(type, countOf(count1, count2), dst, dstAlpha, src, srcAlpha);                       \
    }
RU_FOR_EACH_COMPOSITE_PAIR(RU_COMPOSITE_DEFINE)

#define RU_COMPOSITE_DEFINE_ALPHA(T)                                                                         \
    void RU_Composite::compositeAlpha(RU_CompositeType type, int count1, int count2, T* dstAlpha,            \
                                      const T* srcAlpha)                                                     \
    {                                                                                                        \
        compositeAlphas(type, countOf(count1, count2), dstAlpha, srcAlpha);                                  \
    }
RU_FOR_EACH_COMPOSITE_FORMAT(RU_COMPOSITE_DEFINE_ALPHA)

void RU_Composite::compositeGeo(RU_CompositeType type, int count1, int count2, float* dst,
                                const float* dstAlpha, const float* src, const float* srcAlpha,
                                const float* const geometry[4])
{
    const int64_t count = countOf(count1, count2);
    const Operation* operation = operationOf(type);
    if (operation == nullptr || count <= 0)
        return;
    if (type > RU_COMP_OUTSIDE) {
        compositeColours(type, count, dst, dstAlpha, src, srcAlpha);
        return;
    }
    if (doneWithoutLoop(operation->step(dstAlpha, srcAlpha), dst, src, count))
        return;
    static constexpr float zeros[ru_chunk] = {};
    const ru_CompositeSelection& kernels = kernelsFor(*operation, count, dst, dstAlpha, src, srcAlpha);
    for (int64_t at = 0; at < count; at += ru_chunk) {
        int32_t mask[ru_chunk];
        const int64_t length = std::min(ru_chunk, count - at);
        markChosen(type, kernels, mask, dstAlpha, srcAlpha, geometry, at, length);
        const float* chosen = type == RU_COMP_UNDER ? dst + at : src + at;
        const float* other = type == RU_COMP_UNDER ? src + at : type > RU_COMP_ATOP ? zeros : dst + at;
        kernels.select(dst + at, mask, chosen, other, length);
    }
}
