#pragma once

#include <RE/RE_Types.h>
#include <SYS/SYS_API.h>
#include <UT/UT_String.h>

#include <functional>
#include <memory>

/// One computation on the GPU: a program that runs once per pixel, with named constants and arrays.
///
/// The calls come in this order: constants and arrays, setProgram(), compute(), getResults(). What the input
/// pointers point at is copied by the call; outputs are written by getResults() alone.
/// Threads: an object is for one thread at a time; any number of objects may compute at once.
class PLATFORM_API RE_OGLComputeGPU
{
public:
    /// Makes the computations of this process; may be called on any thread.
    using Maker = std::function<std::unique_ptr<RE_OGLComputeGPU>()>;

    /// A new computation: on OpenGL unless another maker was set.
    static std::unique_ptr<RE_OGLComputeGPU> create();
    /// Puts another maker in the place of OpenGL, or with none OpenGL back. Not while create() may run.
    static void setMaker(Maker maker);

    virtual ~RE_OGLComputeGPU() = default;

    /// `count` constants of `vectorSize` elements each; `normalize` reads integers as fractions of their
    /// white.
    virtual void setConstant(const char* name, RE_GPUType type, int vectorSize, const void* data, int count,
                             bool normalize) = 0;

    /// An input array of width x height vectors. The program reads it as IN_name at the pixel that it
    /// computes, and as ABS_name(x, y) anywhere; single values are FLOAT, pairs VEC2 and so on. SIZE_name is an
    /// IVEC2, its columns and rows.
    virtual void setArray2D(const char* name, RE_GPUType type, int vectorSize, int width, int height,
                            const void* data) = 0;

    /// An input array whose four components lie apart; a null pointer leaves one out.
    virtual void setArray2D(const char* name, RE_GPUType type, int vectorSize, int width, int height,
                            const void* d0, const void* d1, const void* d2, const void* d3) = 0;

    /// An output array, which the program writes with OUT_name(value). The first one says how many pixels
    /// there are; the others are as large.
    virtual void setOutputArray2D(const char* name, RE_GPUType type, int vectorSize, int width, int height,
                                  void* data) = 0;

    /// The program: declarations, functions and statements, the latter run once per pixel. `normalize` reads
    /// and writes unsigned arrays as fractions of their white; else they are integers. False when there is
    /// nothing to run it on.
    virtual bool setProgram(const char* name, const char* text, bool normalize) = 0;

    /// Compiles and runs the program; with `wait` it has run when the call returns. False, and why, when it
    /// did not.
    virtual bool compute(UT_String& error, bool wait) = 0;

    /// Writes the outputs to where setOutputArray2D() pointed. False when they cannot be read.
    virtual bool getResults() = 0;
};
