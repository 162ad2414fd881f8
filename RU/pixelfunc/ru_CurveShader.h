#pragma once

#include <UT/UT_String.h>

#include <string_view>

/// The GLSL functions that evaluate a colour curve, with `index` in their names and in that of the array of
/// control points.
UT_String ru_curveShader(std::string_view index);
