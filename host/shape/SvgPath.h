#pragma once

#include <host/shape/Shapes.h>

#include <string>
#include <vector>

namespace host {

struct SubPath
{
    ShapePoints points;
    bool closed = false;
};

/// The sub-paths of an SVG path's data. `where` is before messages.
std::vector<SubPath> readPathData(const std::string& data, const std::string& where);

} // namespace host
