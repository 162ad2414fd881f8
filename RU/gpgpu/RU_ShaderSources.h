#pragma once

#include <RU/RU_API.h>
#include <UT/UT_String.h>

// All pieces of GLSL, each with: the function that gets it, its parameters (the output is `text`), its file, what
// it is, and what the function puts for which marker of the file, in order: pairs such as {"%s", name}.
// clang-format off
#define RU_FOR_EACH_SHADER_SOURCE(X)                                                                         \
    X(RUgetToHSVConvertGPU, (UT_String& text), "gpgpu_toHSV",                                                \
      "VEC3 toHSV(VEC3 rgb, out FLOAT minv, maxv, s1, hue, sat, rs, gs, bs): hue, saturation and value")     \
    X(RUgetFromHSVConvertGPU, (UT_String& text), "gpgpu_fromHSV",                                            \
      "VEC3 fromHSV(VEC3 hsv, out INT i, out FLOAT hue, sat, val, f, p, q, t): red, green and blue")
// clang-format on

// Pieces of GLSL for programs that the host or a pixel function puts together. They stand in files of the
// installation, ogl2/gpgpu/ under a directory of UT_PathSearch, and use the macros FLOAT, VEC3, INT and so on
// of the program's prelude.
//
// Each function writes its text into `text`, or empties it where the file is missing or cannot be read; the
// latter is reported on the standard error stream, and later calls try again. Once read, a file is kept for the
// rest of the process.
// Threads: any; one lock for all.
#define RU_SHADER_DECLARE(FUNCTION, PARAMETERS, ...) RU_API void FUNCTION PARAMETERS;
RU_FOR_EACH_SHADER_SOURCE(RU_SHADER_DECLARE)
#undef RU_SHADER_DECLARE
