#pragma once

#include <RU/RU_API.h>
#include <UT/UT_String.h>

/// Pieces of GLSL for programs that the host or a pixel function puts together. They stand in files of the
/// installation, ogl2/gpgpu/ under a directory of UT_PathSearch, and use the macros FLOAT, VEC3, INT and so
/// on of the program's prelude.
///
/// Each writes its text into `text`, or empties it where the file is missing or cannot be read; the latter is
/// reported on the standard error stream, and later calls try again. Once read, a file is kept for the rest
/// of the process.
/// Threads: any; one lock for all while reading.

/// VEC3 toHSV(VEC3 rgb, out FLOAT minv, maxv, s1, hue, sat, rs, gs, bs): hue, saturation and value.
RU_API void RUgetToHSVConvertGPU(UT_String& text);
/// VEC3 fromHSV(VEC3 hsv, out INT i, out FLOAT hue, sat, val, f, p, q, t): red, green and blue.
RU_API void RUgetFromHSVConvertGPU(UT_String& text);
