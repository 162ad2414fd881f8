#include <host/Format.h>

#include <host/Names.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>

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
            for (int64_t i = 0; i < count; ++i)
                target[i] = codeOfValue<decltype(toElement)>(valueOfCode(source[i]));
        });
    });
}

} // namespace host
