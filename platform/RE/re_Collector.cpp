#include <RE/re_Collector.h>

#include <algorithm>
#include <cstring>

namespace {

const re_Array& add(std::vector<re_Array>& arrays, const char* name, RE_GPUType type, int vectorSize,
                    int width, int height)
{
    return arrays.emplace_back(re_Array{name, type, vectorSize, static_cast<uint32_t>(std::max(width, 0)),
                                        static_cast<uint32_t>(std::max(height, 0))});
}

} // namespace

void re_Collector::setConstant(const char* name, RE_GPUType type, int vectorSize, const void* data, int count,
                               bool normalize)
{
    declared_.constants.push_back(re_makeConstant(name, type, vectorSize, data, count, normalize));
}

void re_Collector::setArray2D(const char* name, RE_GPUType type, int vectorSize, int width, int height,
                              const void* data)
{
    const re_Array& array = add(declared_.inputs, name, type, vectorSize, width, height);
    const auto* bytes = static_cast<const uint8_t*>(data);
    inputs_.emplace_back(bytes, bytes + array.bytes());
}

void re_Collector::setArray2D(const char* name, RE_GPUType type, int vectorSize, int width, int height,
                              const void* d0, const void* d1, const void* d2, const void* d3)
{
    const re_Array& array = add(declared_.inputs, name, type, vectorSize, width, height);
    const void* const planes[] = {d0, d1, d2, d3};
    const auto element = static_cast<size_t>(re_Layout(type).bits / 8);
    const auto components = static_cast<size_t>(vectorSize);
    std::vector<uint8_t> together(static_cast<size_t>(array.bytes()));
    for (size_t at = 0; at < together.size(); at += element)
        if (const void* plane = planes[at / element % components]; plane != nullptr)
            std::memcpy(&together[at],
                        static_cast<const uint8_t*>(plane) + at / element / components * element, element);
    inputs_.push_back(std::move(together));
}

void re_Collector::setOutputArray2D(const char* name, RE_GPUType type, int vectorSize, int width, int height,
                                    void* data)
{
    add(declared_.outputs, name, type, vectorSize, width, height);
    outputs_.push_back(data);
}
