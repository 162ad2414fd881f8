#pragma once

#include <RE/RE_OGLComputeGPU.h>
#include <RE/re_Program.h>

#include <cstdint>
#include <vector>

/// A computation as far as it is declared: its constants with their values, and its arrays with copies of the
/// inputs.
class re_Collector : public RE_OGLComputeGPU
{
public:
    void setConstant(const char* name, RE_GPUType type, int vectorSize, const void* data, int count,
                     bool normalize) override;
    void setArray2D(const char* name, RE_GPUType type, int vectorSize, int width, int height,
                    const void* data) override;
    void setArray2D(const char* name, RE_GPUType type, int vectorSize, int width, int height, const void* d0,
                    const void* d1, const void* d2, const void* d3) override;
    void setOutputArray2D(const char* name, RE_GPUType type, int vectorSize, int width, int height,
                          void* data) override;

protected:
    re_Declared declared_;
    std::vector<std::vector<uint8_t>> inputs_;
    std::vector<void*> outputs_;
};
