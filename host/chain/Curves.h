#pragma once

#include <host/chain/Functions.h>

#include <RU/pixelfunc/RU_ColorCurve.h>

#include <string>
#include <vector>

namespace host {

/// Reads keys as people write them, "0 0, 0.5 0.6, 1 1": of one curve, or of three or four with | between.
std::vector<CurveKeys> curvesOfText(const std::string& text);

std::vector<RU_ColorCurve> makeCurves(const std::vector<CurveKeys>& curves, bool extend);

} // namespace host
