#pragma once

#include <RU/shape/ru_Outline.h>

/// What remains of what closed outlines wind around, when all that lies within a distance from their edges goes: at
/// points whose feather is below 0 that much, elsewhere nothing. The outlines have the inside on their left; feathers
/// are positive then.
std::vector<ru_Outline> ru_shrunk(const std::vector<ru_Outline>& outlines);
