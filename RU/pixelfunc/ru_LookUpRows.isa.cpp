#include <RU/pixelfunc/ru_LookUpRows.h>

#if defined(__AVX2__)
#include <immintrin.h>
#endif

namespace RU_ISA {
namespace {

// Look up as many values as fill registers and return how many that were; plain loops do the rest.

#if defined(__AVX512VBMI__)

/// Four registers hold the table. Each of two permutes looks up in one half of it; the top bit of an index
/// chooses between them.
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

/// A table in sixteen parts of 16 entries, one for each shuffle. A shuffle gives entry x % 16 where the top
/// bit of x is clear, else 0. When 16 has been subtracted k times, saturating as signed, the top bit of an
/// x < 128 is clear as long as part k is not behind the part of x. Each part is stored as the exclusive or
/// with the part before it, so that these shuffles together leave the entry of x. An x >= 128 has its top bit
/// set throughout; the upper half of the table is looked up in the same way by x - 128.
class ByteTable
{
public:
    [[gnu::always_inline]] explicit ByteTable(const uint8_t* table)
    {
        for (int part = 0; part < 16; ++part) {
            const bool first = part % 8 == 0; // of its half
            const __m128i before = first ? _mm_setzero_si128() : entries(table, part - 1);
            parts_[part] = _mm256_broadcastsi128_si256(_mm_xor_si128(entries(table, part), before));
        }
    }

    [[gnu::always_inline]] __m256i at(__m256i index) const
    {
        __m256i x = index;
        __m256i result = _mm256_setzero_si256();
        for (int part = 0; part < 16; ++part) {
            result = _mm256_xor_si256(result, _mm256_shuffle_epi8(parts_[part], x));
            asm("" : "+x"(result)); // keeps the order: by pairs, as g++ would, takes too many registers
            x = part == 7 ? _mm256_xor_si256(index, _mm256_set1_epi8(-128))
                          : _mm256_subs_epi8(x, _mm256_set1_epi8(16));
        }
        return result;
    }

private:
    [[gnu::always_inline]] static __m128i entries(const uint8_t* table, int64_t part)
    {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(table + 16 * part));
    }

    __m256i parts_[16];
};

RU_INLINE int64_t bytesByVectors(const uint8_t* table, const uint8_t* in, uint8_t* out, int64_t count)
{
    const ByteTable parts(table);
    int64_t i = 0;
    for (; i + 32 <= count; i += 32) {
        const __m256i index = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + i));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), parts.at(index));
    }
    return i;
}

#else

/// Loads eight indexes at once.
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

/// Gathers 32 bits for each index and keeps the lower 16.
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

template <class Code>
void lookUpFloats(const float* __restrict table, const Code* __restrict in, float* __restrict out,
                  int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
        out[i] = table[in[i]];
}

} // namespace

extern constinit const ru_LookUpKernels ru_lookUpRows = {
    {RU_COMPILED_FOR}, lookUpBytes, lookUpWords, lookUpFloats<uint8_t>, lookUpFloats<uint16_t>};

} // namespace RU_ISA
