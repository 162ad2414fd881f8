#pragma once

#include <host/shape/SvgPath.h>

#include <algorithm>
#include <limits>
#include <vector>

// Several sub-paths that are filled together, as outlines of one each.

namespace host {

/// Empty, unless something is added.
struct Box
{
    Place least{std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};
    Place most{std::numeric_limits<double>::lowest(), std::numeric_limits<double>::lowest()};

    void add(const Box& other)
    {
        for (size_t axis = 0; axis < 2; ++axis) {
            least[axis] = std::min(least[axis], other.least[axis]);
            most[axis] = std::max(most[axis], other.most[axis]);
        }
    }

    bool meets(const Box& other) const
    {
        return least[0] <= other.most[0] && other.least[0] <= most[0] && least[1] <= other.most[1] &&
               other.least[1] <= most[1];
    }
};

/// Around an outline and its handles.
Box boxOf(const ShapePoints& points);

/// Turns sub-paths around so that what they wind around is what the even-odd rule fills, as long as none crosses itself
/// or another one. Each has two points at least.
void windByNesting(std::vector<SubPath>& paths);

/// Outlines that fill together what the sub-paths wind around. Those of opposite sense that may meet become one, with a
/// bridge there and back: they are holes. Others are united anyway.
std::vector<ShapePoints> joinedOutlines(const std::vector<SubPath>& paths);

/// Whether the edges between the points are straight.
bool isPolygon(const ShapePoints& points);

} // namespace host
