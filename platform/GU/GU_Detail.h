#pragma once

#include <GEO/GEO_Detail.h>
#include <GU/GU_ConvertParms.h>

/// A detail and what is done to all of it.
class PLATFORM_API GU_Detail : public GEO_Detail
{
public:
    GU_Detail() = default;
    /// A copy of all, or of a group's primitives in the group's order and the points that they use. Empty for null.
    explicit GU_Detail(const GU_Detail* source, const GB_PrimitiveGroup* group = nullptr);

    /// Makes polygons of curves, open ones of open curves. They keep the places and the groups of the curves; a
    /// curve without points gives a polygon without vertices.
    void convert(const GU_ConvertParms& parms);

    /// Cuts closed polygons of more than three vertices into convex ones of at most `mostVertices` that cover what
    /// the polygon winds around in x and y (see UT_Convex). These take its place, in its groups too. The points of
    /// triangles and open polygons stay; what new points have lies between the ends of their edge. Both other
    /// arguments are 0.
    void convex(int mostVertices = 3, int = 0, int = 0);
};
