#include <RU/kernel/ru_Blocks.h>
#include <RU/kernel/ru_ConvertRows.h>

#include <SYS/SYS_Half.h>

#if defined(__F16C__)
#include <immintrin.h>
#endif

namespace RU_ISA {
namespace {

// Integer codes.

template <class T, bool FullRange, class Value>
void readCodes(const T* codes, Value* values, int64_t count, const ru_Range<T>& of)
{
    const ru_Range<T> range = of;
    eachBlock<hasBlocks<T>>(count, [=](auto block, int64_t i) RU_BLOCK {
        block.put(values + i, loadAbove<FullRange>(block, codes + i, range) * range.scale);
    });
}

template <class T, bool FullRange, class Value>
void writeCodes(const Value* values, T* codes, int64_t count, const ru_Range<T>& of)
{
    const ru_Range<T> range = of;
    const ru_Clamp<ru_Work<T>> white(PXL_FormatOf<T>::white);
    eachBlock<hasBlocks<T>>(count, [=](auto block, int64_t i) RU_BLOCK {
        storeAbove<FullRange>(block, codes + i, block.load(values + i) * range.span, range, white);
    });
}

// Halves.

#if defined(__AVX512F__)
constexpr __mmask16 everyLane = 0xFFFF; // g++ 12 warns about the unmasked forms
#endif

void readHalves(const fpreal16* from, float* __restrict values, int64_t count, const ru_Range<fpreal16>&)
{
    const auto* bits = reinterpret_cast<const uint16_t*>(from);
    int64_t i = 0;
#if defined(__AVX512F__)
    for (; i + 16 <= count; i += 16)
        _mm512_storeu_ps(
            values + i,
            _mm512_maskz_cvtph_ps(everyLane, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bits + i))));
#elif defined(__F16C__)
    for (; i + 8 <= count; i += 8)
        _mm256_storeu_ps(values + i,
                         _mm256_cvtph_ps(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bits + i))));
#endif
    for (; i < count; ++i)
#if defined(__F16C__)
        values[i] = _cvtsh_ss(bits[i]);
#else
        values[i] = SYShalfValue(bits[i]);
#endif
}

void writeHalves(const float* __restrict values, fpreal16* to, int64_t count, const ru_Range<fpreal16>&)
{
    auto* bits = reinterpret_cast<uint16_t*>(to);
    int64_t i = 0;
#if defined(__AVX512F__)
    for (; i + 16 <= count; i += 16)
        _mm256_storeu_si256(
            reinterpret_cast<__m256i*>(bits + i),
            _mm512_maskz_cvtps_ph(everyLane, _mm512_loadu_ps(values + i), _MM_FROUND_TO_NEAREST_INT));
#elif defined(__F16C__)
    for (; i + 8 <= count; i += 8)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(bits + i),
                         _mm256_cvtps_ph(_mm256_loadu_ps(values + i), _MM_FROUND_TO_NEAREST_INT));
#endif
    for (; i < count; ++i)
#if defined(__F16C__)
        bits[i] = _cvtss_sh(values[i], _MM_FROUND_TO_NEAREST_INT);
#else
        bits[i] = SYShalfBits(values[i]);
#endif
}

// Floats are their own values; what is left is the copy.

void copyFloats(const float* __restrict from, float* __restrict to, int64_t count, const ru_Range<float>&)
{
    for (int64_t i = 0; i < count; ++i)
        to[i] = from[i];
}

template <class T, bool FullRange, class Value = ru_Work<T>>
constexpr ru_RowConversion<T, FullRange, Value> conversion = {readCodes<T, FullRange, Value>,
                                                              writeCodes<T, FullRange, Value>};
template <bool FullRange>
constexpr ru_RowConversion<float, FullRange, float> conversion<float, FullRange> = {copyFloats, copyFloats};
template <bool FullRange>
constexpr ru_RowConversion<fpreal16, FullRange, float> conversion<fpreal16, FullRange> = {readHalves,
                                                                                          writeHalves};

} // namespace

extern constinit const ru_ConvertKernels ru_convertRows = {
#define RU_CONVERSIONS(CODE, T, WHITE, NAME) conversion<T, true>, conversion<T, false>,
    PXL_FOR_EACH_FORMAT(RU_CONVERSIONS)
#undef RU_CONVERSIONS
        conversion<unsigned int, true, float>,
    conversion<unsigned int, false, float>,
    {RU_COMPILED_FOR}};

} // namespace RU_ISA
