#pragma once

#include <RE/RE_Types.h>

/// One computation on the GPU: named constants and arrays for a shader program that is being built. What the
/// data pointers point at is copied by the call.
class RE_OGLComputeGPU
{
public:
    virtual ~RE_OGLComputeGPU() = default;

    /// `count` constants of `vectorSize` elements each; `normalize` reads integers as fractions of their
    /// white.
    virtual void setConstant(const char* name, RE_GPUType type, int vectorSize, const void* data, int count,
                             bool normalize) = 0;

    /// An input array of width x height vectors. The program reads it as IN_name at the pixel that it
    /// computes, and as ABS_name(x, y) anywhere; single values are FLOAT, pairs VEC2 and so on.
    virtual void setArray2D(const char* name, RE_GPUType type, int vectorSize, int width, int height,
                            const void* data) = 0;

    /// An input array whose four components lie apart; a null pointer leaves one out.
    virtual void setArray2D(const char* name, RE_GPUType type, int vectorSize, int width, int height,
                            const void* d0, const void* d1, const void* d2, const void* d3) = 0;
};
