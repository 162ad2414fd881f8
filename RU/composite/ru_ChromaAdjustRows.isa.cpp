#include <RU/composite/ru_ChromaAdjustRows.h>

#include <RU/kernel/ru_Blocks.h>

namespace RU_ISA {
namespace {

template <class T, bool FullRange>
void adjustRow(T* codes, const float* matte, int64_t count, ru_Work<T> backing, const ru_Range<T>& of)
{
    using Work = ru_Work<T>;
    const ru_Range<T> range = of;
    const ru_Clamp<Work> white(PXL_FormatOf<T>::white);
    eachBlock<false>(count, [=](auto one, int64_t i) RU_BLOCK {
        const Work m = matte[i];
        const T stored = codes[i];
        Work value = loadAbove<FullRange>(one, codes + i, range);
        if constexpr (std::is_integral_v<T>)
            value = value * range.scale;
        const Work less = value - (Work(1) - m) * backing;
        Work adjusted = m <= Work(0) ? Work(0) : less;
        if constexpr (std::is_integral_v<T>)
            adjusted = range.span != Work(0) ? adjusted * range.span : Work(0); // NaN too is black then
        T code;
        storeAbove<FullRange>(one, &code, adjusted, range, white);
        codes[i] = m >= Work(1) ? stored : code;
    });
}

/// Halves go through floats, except where they stay: a NaN there keeps its bits.
void adjustHalves(fpreal16* halves, const float* matte, int64_t count, float backing,
                  const ru_Range<fpreal16>& range)
{
    const ru_RowConversion<fpreal16, true, float>& rows = ru_convertRows;
    float values[ru_chunk];
    fpreal16 adjusted[ru_chunk];
    for (int64_t start = 0; start < count; start += ru_chunk) {
        const int64_t length = count - start < ru_chunk ? count - start : ru_chunk;
        const float* m = matte + start;
        rows.read(halves + start, values, length, range);
        adjustRow<float, true>(values, m, length, backing, {});
        rows.write(values, adjusted, length, range);
        auto* stored = reinterpret_cast<uint16_t*>(halves + start);
        const auto* bits = reinterpret_cast<const uint16_t*>(adjusted);
        RU_EACH_ALONE
        for (int64_t i = 0; i < length; ++i) {
            const int kept = m[i] >= 1.0f ? -1 : 0; // as wide as the float; its lower half is the mask
            stored[i] = static_cast<uint16_t>((stored[i] & kept) | (bits[i] & ~kept));
        }
    }
}

template <class T, bool FullRange>
constexpr ru_ChromaAdjustRow<T, FullRange> chromaRow = {adjustRow<T, FullRange>};
template <bool FullRange>
constexpr ru_ChromaAdjustRow<float, FullRange> chromaRow<float, FullRange> = {adjustRow<float, true>};
template <bool FullRange>
constexpr ru_ChromaAdjustRow<fpreal16, FullRange> chromaRow<fpreal16, FullRange> = {adjustHalves};

} // namespace

extern constinit const ru_ChromaAdjustKernels ru_chromaAdjustRows = {
#define RU_ROWS(CODE, T, WHITE, NAME) chromaRow<T, true>, chromaRow<T, false>,
    PXL_FOR_EACH_FORMAT(RU_ROWS)
#undef RU_ROWS
        {RU_COMPILED_FOR}};

} // namespace RU_ISA
