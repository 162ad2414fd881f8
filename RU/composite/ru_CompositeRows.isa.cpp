#include <RU/composite/ru_CompositeArithmetic.h>
#include <RU/composite/ru_CompositeRows.h>

#include <type_traits>

namespace RU_ISA {
namespace {

/// Have colours of type C the operators of a formula without alphas?
template <class Formula, class C>
concept Combines = requires(C colour)
{
    Formula::of(colour, NoAlpha(), colour, NoAlpha());
};

// The formulas of the list, for whatever lanes have the operators. 16-bit codes, which have no products, have
// those of all that is computed in codes and of nothing else.
#define RU_FORMULA(TYPE, NAME, FORMULA, READS, ARITHMETIC, ...)                                              \
    struct TYPE                                                                                              \
    {                                                                                                        \
        static constexpr auto reads = ru_CompositeAlphas::READS;                                             \
        static constexpr bool inCodes = ru_CompositeArithmetic::ARITHMETIC == ru_CompositeArithmetic::CODES; \
        template <class C, class DA, class SA>                                                               \
        RU_INLINE auto of([[maybe_unused]] C d, [[maybe_unused]] DA dA, [[maybe_unused]] C s,                \
                          [[maybe_unused]] SA sA) -> decltype(FORMULA)                                       \
        {                                                                                                    \
            return FORMULA;                                                                                  \
        }                                                                                                    \
    };                                                                                                       \
    static_assert(TYPE::inCodes == Combines<TYPE, Code<unsigned short>>);
RU_FOR_EACH_COMPOSITE_TYPE(RU_FORMULA)
RU_FORMULA(ERASE, , (1 - sA) * d, SOURCE, BYTES)
#undef RU_FORMULA

template <class Formula>
constexpr bool readsSource = ru_readsSource(Formula::reads);
template <class Formula>
constexpr bool readsDestination = ru_readsDestination(Formula::reads);

/// What one code of an alpha is worth.
template <class U>
constexpr float alphaUnit = 1.0f / PXL_FormatOf<U>::white;

/// Over, under and atop of 16-bit colours beside 16-bit alphas divide the alpha by 65355: full is a little
/// more than 1 there.
constexpr float oddAlphaUnit16 = 1.0f / 65355.0f;
template <class Formula, class T, class U>
constexpr bool isOdd = std::is_same_v<T, unsigned short>&& std::is_same_v<U, unsigned short> &&
                       (std::is_same_v<Formula, OVER> || std::is_same_v<Formula, UNDER> ||
                        std::is_same_v<Formula, ATOP>);

/// Is a formula computed in codes?
template <class Formula, class T, class U>
constexpr bool isExact = std::is_integral_v<T> && (Formula::inCodes || (sizeof(T) == 1 && sizeof(U) == 1));

template <bool reads>
RU_INLINE auto alphaAt(const auto& lanes, auto block, const auto* alpha, int64_t i)
{
    if constexpr (reads)
        return lanes.alpha(block, alpha + i);
    else
        return NoAlpha();
}

template <class Formula, class T, class U>
RU_INLINE void combine(T* dst, const U* dstAlpha, const T* src, const U* srcAlpha, int64_t count, float unit)
{
    constexpr bool exact = isExact<Formula, T, U>;
    const std::conditional_t<exact, CodeLanes<T, U>, FloatLanes<T, U>> lanes(unit);
    eachBlock<!exact && hasBlocks<T>>(count, [=](auto block, int64_t i) RU_BLOCK {
        const auto d = lanes.colour(block, dst + i);
        const auto s = lanes.colour(block, src + i);
        const auto dA = alphaAt<readsDestination<Formula>>(lanes, block, dstAlpha, i);
        const auto sA = alphaAt<readsSource<Formula>>(lanes, block, srcAlpha, i);
        lanes.store(block, dst + i, Formula::of(d, dA, s, sA));
    });
}

template <class Formula, class T, class U>
[[gnu::noinline]] // the one for another U calls it
void compositeRow(T* dst, const U* dstAlpha, const T* src, const U* srcAlpha, int64_t count)
{
    // Where no alpha is read, U matters to floats alone, which are clamped beside integer alphas.
    using Same = std::conditional_t<std::is_integral_v<T> || std::is_same_v<U, float>, T, unsigned char>;
    if constexpr (Formula::reads == ru_CompositeAlphas::NEITHER && !std::is_same_v<U, Same>)
        compositeRow<Formula, T, Same>(dst, nullptr, src, nullptr, count);
    else
        combine<Formula>(dst, dstAlpha, src, srcAlpha, count,
                         isOdd<Formula, T, U> ? oddAlphaUnit16 : alphaUnit<U>);
}

template <class Formula, class T>
void compositeAlphaRow(T* dstAlpha, const T* srcAlpha, int64_t count)
{
    if constexpr (Formula::reads == ru_CompositeAlphas::NEITHER)
        compositeRow<Formula, T, T>(dstAlpha, nullptr, srcAlpha, nullptr, count);
    else
        combine<Formula>(dstAlpha, dstAlpha, srcAlpha, srcAlpha, count, alphaUnit<T>);
}

void markNonZero(int32_t* mask, const float* plane, int64_t count)
{
    RU_EACH_ALONE
    for (int64_t i = 0; i < count; ++i)
        mask[i] |= plane[i] != 0.0f ? 1 : 0;
}

void andPositive(int32_t* mask, const float* alpha, int64_t count)
{
    RU_EACH_ALONE
    for (int64_t i = 0; i < count; ++i)
        mask[i] &= alpha[i] > 0.0f ? 1 : 0;
}

void andBelowOne(int32_t* mask, const float* alpha, int64_t count)
{
    RU_EACH_ALONE
    for (int64_t i = 0; i < count; ++i)
        mask[i] &= alpha[i] < 1.0f ? 1 : 0;
}

void select(float* dst, const int32_t* mask, const float* chosen, const float* other, int64_t count)
{
    RU_EACH_ALONE
    for (int64_t i = 0; i < count; ++i)
        dst[i] = mask[i] != 0 ? chosen[i] : other[i];
}

template <class T, class U>
constexpr ru_CompositeLoops<T, U> loops = {{
#define RU_LOOP(TYPE, ...) compositeRow<TYPE, T, U>,
    RU_FOR_EACH_COMPOSITE_TYPE(RU_LOOP)
#undef RU_LOOP
        compositeRow<ERASE, T, U>,
}};

template <class T>
constexpr ru_CompositeAlphaLoops<T> alphaLoops = {{
#define RU_LOOP(TYPE, ...) compositeAlphaRow<TYPE, T>,
    RU_FOR_EACH_COMPOSITE_TYPE(RU_LOOP)
#undef RU_LOOP
}};

} // namespace

extern constinit const ru_CompositeKernels ru_compositeRows = {
#define RU_LOOPS(T, U) loops<T, U>,
    RU_FOR_EACH_COMPOSITE_PAIR(RU_LOOPS)
#undef RU_LOOPS
#define RU_LOOPS(T) alphaLoops<T>,
        RU_FOR_EACH_COMPOSITE_FORMAT(RU_LOOPS)
#undef RU_LOOPS
            {markNonZero, andPositive, andBelowOne, select},
    {RU_COMPILED_FOR}};

} // namespace RU_ISA
