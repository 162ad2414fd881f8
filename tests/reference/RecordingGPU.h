#pragma once

#include <RE/RE_OGLComputeGPU.h>

#include <string>
#include <vector>

namespace reference {

/// Keeps what a shader declares.
class RecordingGPU : public RE_OGLComputeGPU
{
public:
    struct ConstantCall
    {
        std::string name;
        RE_GPUType type;
        int vectorSize;
        std::vector<float> values;
        int count;
        bool normalize;
    };
    struct ArrayCall
    {
        std::string name;
        RE_GPUType type;
        int vectorSize, width, height;
        std::vector<const void*> data;

        bool operator==(const ArrayCall&) const = default;
    };

    void setConstant(const char* name, RE_GPUType type, int vectorSize, const void* data, int count,
                     bool normalize) override
    {
        const auto* values = static_cast<const float*>(data);
        constants.push_back(
            {name, type, vectorSize, {values, values + vectorSize * count}, count, normalize});
    }
    void setArray2D(const char* name, RE_GPUType type, int vectorSize, int width, int height,
                    const void* data) override
    {
        arrays.push_back({name, type, vectorSize, width, height, {data}});
    }
    void setArray2D(const char* name, RE_GPUType type, int vectorSize, int width, int height, const void* d0,
                    const void* d1, const void* d2, const void* d3) override
    {
        arrays.push_back({name, type, vectorSize, width, height, {d0, d1, d2, d3}});
    }

    std::vector<ConstantCall> constants;
    std::vector<ArrayCall> arrays;
};

} // namespace reference
