#pragma once

#include <RU/RU_API.h>
#include <UT/UT_String.h>

class RE_OGLComputeGPU;
class TIL_TileList;

/// Makes the tiles of a list the outputs of a computation, and appends to its program what writes them from a
/// variable.
///
/// Each tile that is there and not marked done becomes an output array of single values, "red", "green", "blue"
/// or "alpha", of the list's width, height and data format. Its statement is "OUT_red(variable.r);\n", likewise
/// with g, b and a: every component keeps its place, whichever others are there. Where the plane has a single
/// component the variable is a FLOAT, and red's statement "OUT_red(variable);\n".
///
/// The tiles stay the caller's and must outlive the computation, whose getResults() writes them. A constant tile
/// is bound like any other and stays marked as constant, although what is written may vary.
/// Threads: as RE_OGLComputeGPU.
RU_API void RUsetOutput(RE_OGLComputeGPU& compute, const TIL_TileList& tiles, const char* variable,
                        UT_String& code);
