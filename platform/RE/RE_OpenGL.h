#pragma once

#include <RE/RE_OGLComputeGPU.h>
#include <SYS/SYS_API.h>
#include <UT/UT_String.h>

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

/// A computation on what was found. Without anything its setProgram() returns false.
std::unique_ptr<RE_OGLComputeGPU> REmakeOpenGLCompute();
