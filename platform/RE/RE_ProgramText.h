#pragma once

#include <RE/RE_OGLComputeGPU.h>
#include <SYS/SYS_API.h>
#include <UT/UT_String.h>

#include <memory>

/// A computation that runs nothing: its setProgram() writes GLSL into `program`, for applications that run it
/// themselves. It needs no OpenGL.
///
/// Without a name for a function it is the compute shader that OpenGL would compile, below comments that say
/// what each uniform and buffer gets. With one, a function vec4 NAME(vec4 value) for any shader of GLSL 4.00: the
/// program's statements change `value`. Constants are uniforms that begin with their values, input arrays are
/// constants.
PLATFORM_API std::unique_ptr<RE_OGLComputeGPU> REmakeProgramText(UT_String& program,
                                                                 const char* function = nullptr);
