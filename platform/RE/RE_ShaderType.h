#pragma once

#include <RE/RE_Types.h>
#include <SYS/SYS_API.h>

/// The macro that shader texts have for a type and a vector of 1 to 4 of them: FLOAT, IVEC2, MATRIX4 and so on;
/// empty where there is none.
PLATFORM_API const char* REshaderType(RE_GPUType type, int vectorSize);
