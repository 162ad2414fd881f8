#pragma once

#include <RE/RE_OGLComputeGPU.h>
#include <SYS/SYS_API.h>
#include <UT/UT_String.h>

#include <cstdint>
#include <memory>

/// What was found to compute on.
struct RE_GPUReport
{
    bool found = false;
    bool software = false; ///< it runs on the processor
    UT_String name;        ///< the renderer's and its version
    UT_String refused;     ///< a line for everything that could not be used, and why
};

/// Looks for OpenGL 4.3 on the first call, without a window system: on the devices of the machine, then in
/// software. KREILUGE_GPU=off, software or auto in the environment narrows the search.
PLATFORM_API const RE_GPUReport& REfindGPU();

/// What computations cost so far: seconds of all threads together.
struct RE_GPUTimes
{
    int64_t computations = 0;
    int64_t programs = 0; ///< compiled; others were known by their text
    double compile = 0.0; ///< and the search for OpenGL, once
    double upload = 0.0;
    double run = 0.0; ///< the first run of a program includes what the driver puts off to then
    double readBack = 0.0;
};

PLATFORM_API RE_GPUTimes REgpuTimes();

/// Why the calling thread's last computation was not done; empty where it was.
PLATFORM_API const UT_String& RElastGPUError();

/// A computation on what was found. Without anything its setProgram() returns false.
std::unique_ptr<RE_OGLComputeGPU> REmakeOpenGLCompute();
