#pragma once

#include <UT/UT_String.h>

/// GLSL that applies `call` to each component whose magnitude passes `test`, such as "<=1.0f"; the others
/// become `replacement`, or stay.
UT_String ru_guardedShader(const char* test, const char* call, bool useReplacement);
