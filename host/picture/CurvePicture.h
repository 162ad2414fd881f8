#pragma once

#include <host/chain/Functions.h>

#include <string>
#include <vector>

namespace host {

struct CurvePictureSettings
{
    int size = 512;      ///< pixels, in both directions
    bool extend = false; ///< straight on outside the keys, and not level
};

/// Draws curves of colour over a grid, with their keys as dots: one in white, or red, green, blue and alpha
/// in their colours and grey. The square from 0 to 1 is outlined and always in the picture; other keys widen
/// it.
void drawCurves(const std::string& path, const std::vector<CurveKeys>& curves,
                const CurvePictureSettings& settings);

} // namespace host
