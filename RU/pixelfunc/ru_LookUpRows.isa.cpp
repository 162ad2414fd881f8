#include <RU/pixelfunc/ru_LookUpRows.h>

#if defined(__AVX512VBMI__)
#include <immintrin.h>
#endif

namespace RU_ISA {

#if defined(__AVX512VBMI__)

/// Four registers hold the table; two permutes of 128 entries each, chosen by the index's top bit.
RU_INLINE int64_t lookUpVectors(const uint8_t* table, const uint8_t* in, uint8_t* out, int64_t count)
{
    const __m512i t0 = _mm512_loadu_si512(table);
    const __m512i t1 = _mm512_loadu_si512(table + 64);
    const __m512i t2 = _mm512_loadu_si512(table + 128);
    const __m512i t3 = _mm512_loadu_si512(table + 192);
    int64_t i = 0;
    for (; i + 64 <= count; i += 64) {
        const __m512i index = _mm512_loadu_si512(in + i);
        const __m512i low = _mm512_permutex2var_epi8(t0, index, t1);
        const __m512i high = _mm512_permutex2var_epi8(t2, index, t3);
        _mm512_storeu_si512(out + i, _mm512_mask_blend_epi8(_mm512_movepi8_mask(index), low, high));
    }
    return i;
}

#else

RU_INLINE int64_t lookUpVectors(const uint8_t*, const uint8_t*, uint8_t*, int64_t)
{
    return 0;
}

#endif

void lookUpBytes(const uint8_t* table, const uint8_t* in, uint8_t* out, int64_t count)
{
    for (int64_t i = lookUpVectors(table, in, out, count); i < count; ++i)
        out[i] = table[in[i]];
}

void lookUpWords(const uint16_t* table, const uint16_t* in, uint16_t* out, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
        out[i] = table[in[i]];
}

extern constinit const ru_LookUpKernels ru_lookUpRows = {{RU_COMPILED_FOR}, lookUpBytes, lookUpWords};

} // namespace RU_ISA
