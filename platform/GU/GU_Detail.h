#pragma once

#include <GEO/GEO_Detail.h>
#include <GU/GU_ConvertParms.h>
#include <UT/UT_Vector4Array.h>

class GU_PrimRBezCurve;

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

    /// Adds a cubic Bezier curve that passes each sample within `tolerance` in x, y and z, and the first one, and an
    /// open curve's last one, exactly. It has as few pieces as were found to do, each for two samples at least.
    /// Vertices 0, 3, 6 and so on lie on the curve; the handles beside each lie on a line through it. Only where
    /// samples turn by more than `cornerAngle` radians, if that is above 0, there may be a corner. Samples that are
    /// not finite or repeat the one before are left out. Null, and nothing added, for less than two others. The
    /// integers are the order, 4, twice, and 1.
    GU_PrimRBezCurve* approxCurveGlobal(const UT_Vector4Array& samples, int, int, int closed, float tolerance,
                                        float cornerAngle = 0.0f, int = 1);
};
