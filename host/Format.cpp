#include <host/Format.h>

#include <host/Names.h>

#include <PXL/PXL_Caps.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>
#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace host {

namespace {

struct FormatName
{
    unsigned char format;
    const char* name;
};

/// From the narrowest to the widest.
constexpr FormatName formatNames[] = {{PXL_FORMAT_uint8, "uint8"},
                                      {PXL_FORMAT_uint16, "uint16"},
                                      {PXL_FORMAT_uint32, "uint32"},
                                      {PXL_FORMAT_half, "half"},
                                      {PXL_FORMAT_float32, "float"}};

const FormatName* entryOf(unsigned char format)
{
    return std::find_if(std::begin(formatNames), std::end(formatNames),
                        [&](const FormatName& entry) { return entry.format == format; });
}

template <class T>
T codeOfValue(double value)
{
    if constexpr (std::is_integral_v<T>) {
        constexpr double white = PXL_FormatOf<T>::white;
        const double code = std::floor(value * white + 0.5);
        return code > 0.0 ? static_cast<T>(std::min(code, white)) : T{0}; // false for NaN too
    } else {
        return static_cast<T>(static_cast<float>(value));
    }
}

/// Floats to halves as the plain loop does it, in whole vectors; the result is how many. Nearly all images
/// that are composited come through here, and no compiler makes vectors of that loop.
#if defined(__x86_64__)
[[gnu::target("avx,f16c")]] int64_t halvesOfFloats(const float* in, fpreal16* out, int64_t count)
{
    int64_t i = 0;
    for (; i + 8 <= count; i += 8)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i),
                         _mm256_cvtps_ph(_mm256_loadu_ps(in + i), _MM_FROUND_TO_NEAREST_INT));
    return i;
}

bool hasHalfVectors()
{
    return PXLinstructionSet() != PXL_InstructionSet::baseline;
}
#else
int64_t halvesOfFloats(const float*, fpreal16*, int64_t)
{
    return 0;
}

bool hasHalfVectors()
{
    return false;
}
#endif

} // namespace

const char* formatName(unsigned char format)
{
    return entryOf(format)->name;
}

unsigned char formatOfName(const std::string& name)
{
    std::vector<std::string> known;
    for (const FormatName& entry : formatNames) {
        if (name == entry.name)
            return entry.format;
        known.emplace_back(entry.name);
    }
    refuseName("unknown depth", name, known);
}

unsigned char widerFormat(unsigned char a, unsigned char b)
{
    return std::max(entryOf(a), entryOf(b))->format;
}

void convertFormat(unsigned char from, const void* in, unsigned char to, void* out, int64_t count)
{
    if (from == to) {
        std::memcpy(out, in, static_cast<size_t>(count * PXLbytesPerElement(from)));
        return;
    }
    withElementType(from, [&](auto fromElement) {
        withElementType(to, [&](auto toElement) {
            const auto* source = static_cast<const decltype(fromElement)*>(in);
            auto* target = static_cast<decltype(toElement)*>(out);
            int64_t i = 0;
            if constexpr (std::is_same_v<decltype(fromElement), float> &&
                          std::is_same_v<decltype(toElement), fpreal16>)
                i = hasHalfVectors() ? halvesOfFloats(source, target, count) : 0;
            for (; i < count; ++i)
                target[i] = codeOfValue<decltype(toElement)>(valueOfCode(source[i]));
        });
    });
}

} // namespace host
