#include <RU/pixelfunc/ru_LookUpRows.h>

#if defined(__AVX2__)
#include <immintrin.h>
#endif

namespace RU_ISA {
namespace {

// What goes through registers before the plain loops take the rest; answers how many entries that were.

#if defined(__AVX512VBMI__)

/// Four registers hold the table; two permutes of 128 entries each, chosen by the index's top bit.
RU_INLINE int64_t bytesByVectors(const uint8_t* table, const uint8_t* in, uint8_t* out, int64_t count)
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

#elif defined(__AVX2__)

/// Sixteen shuffles of 16 entries each: the saturating sum sets the top bit of an index that is outside a
/// shuffle's entries, and its result to 0.
RU_INLINE int64_t bytesByVectors(const uint8_t* table, const uint8_t* in, uint8_t* out, int64_t count)
{
    const __m256i outside = _mm256_set1_epi8(0x70);
    int64_t i = 0;
    for (; i + 32 <= count; i += 32) {
        const __m256i index = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i));
        __m256i result = _mm256_setzero_si256();
        for (int64_t part = 0; part < 16; ++part) {
            const auto* entries = reinterpret_cast<const __m128i*>(table + 16 * part);
            const __m256i shuffled = _mm256_broadcastsi128_si256(_mm_loadu_si128(entries));
            const __m256i offset = _mm256_xor_si256(index, _mm256_set1_epi8(static_cast<char>(part << 4)));
            result =
                _mm256_or_si256(result, _mm256_shuffle_epi8(shuffled, _mm256_adds_epu8(offset, outside)));
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), result);
    }
    return i;
}

#else

/// Eight indexes by one load.
RU_INLINE int64_t bytesByVectors(const uint8_t* table, const uint8_t* in, uint8_t* out, int64_t count)
{
    int64_t i = 0;
    for (; i + 8 <= count; i += 8) {
        uint64_t indexes;
        __builtin_memcpy(&indexes, in + i, sizeof indexes);
        for (int k = 0; k < 8; ++k)
            out[i + k] = table[(indexes >> (8 * k)) & 0xFF];
    }
    return i;
}

#endif

#if defined(__AVX2__)

/// Gathers 32 bits at each index and keeps the lower 16.
RU_INLINE int64_t wordsByVectors(const uint16_t* table, const uint16_t* in, uint16_t* out, int64_t count)
{
    const auto* entries = reinterpret_cast<const int*>(table);
    int64_t i = 0;
    for (; i + 8 <= count; i += 8) {
        const __m256i index =
            _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i)));
        const __m256i pairs = _mm256_i32gather_epi32(entries, index, 2);
        const __m256i words = _mm256_and_si256(pairs, _mm256_set1_epi32(0xFFFF));
        const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi32(words, words), 0x08);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm256_castsi256_si128(packed));
    }
    return i;
}

#else

RU_INLINE int64_t wordsByVectors(const uint16_t*, const uint16_t*, uint16_t*, int64_t)
{
    return 0;
}

#endif

void lookUpBytes(const uint8_t* table, const uint8_t* in, uint8_t* out, int64_t count)
{
    for (int64_t i = bytesByVectors(table, in, out, count); i < count; ++i)
        out[i] = table[in[i]];
}

void lookUpWords(const uint16_t* table, const uint16_t* in, uint16_t* out, int64_t count)
{
    for (int64_t i = wordsByVectors(table, in, out, count); i < count; ++i)
        out[i] = table[in[i]];
}

} // namespace

extern constinit const ru_LookUpKernels ru_lookUpRows = {{RU_COMPILED_FOR}, lookUpBytes, lookUpWords};

} // namespace RU_ISA
