#pragma once

#include <RU/shape/ru_Outline.h>

class GB_PrimitiveGroup;

/// Adds `reach` to the feather of an outline's points, and a point where that crosses 0 along an edge.
/// Result: whether it is below 0 anywhere.
bool ru_addReach(ru_Outline& outline, double reach);

/// Adds feather quads along a closed outline, which has the inside on its left, and puts them into a group. The
/// ramp falls from 1 on the outline to 0 in the distance of the points' feather, on the outside and around corners;
/// inside too, but there perhaps over less.
void ru_addFeatherQuads(GEO_Detail& detail, GB_PrimitiveGroup& group, const ru_Outline& outline);
