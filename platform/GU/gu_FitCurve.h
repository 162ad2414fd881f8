#pragma once

#include <array>
#include <cstddef>
#include <vector>

using gu_Place = std::array<double, 3>;

/// The anchors and handles of cubic Bezier pieces, anchor, handle, handle, anchor and so on, that pass each sample
/// within `tolerance`; the first and the last sample are passed exactly. No two neighbours among the samples are
/// equal. Handles beside an anchor lie on a line through it, but at corners, where the samples turn by more than
/// `cornerAngle` radians; 0 for none. `closed`: the last sample is the first one again, and joined to it as others are.
std::vector<gu_Place> gu_fitCurve(const std::vector<gu_Place>& samples, double tolerance, double cornerAngle,
                                  bool closed);
