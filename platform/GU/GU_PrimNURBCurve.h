#pragma once

#include <GEO/GEO_PointArray.h>
#include <GU/GU_PrimCurve.h>
#include <UT/UT_FloatArray.h>

/// A B-spline curve with knots of its own; control points have no weights.
///
/// Of degree d and n vertices, an open curve has n + d + 1 knots, of which d + 1 are equal at each end, so that it
/// begins and ends at its end vertices. A closed curve goes through the range of its n + 1 knots once, and knots and
/// vertices repeat periodically.
class PLATFORM_API GU_PrimNURBCurve : public GU_PrimCurve
{
public:
    GU_PrimNURBCurve(int64_t vertices, int order, bool closed);

    /// Adds a curve with even knots to a detail, which owns it, with new points at the origin unless `appendPoints`
    /// is 0. The order is at most 4 and lowered where there are fewer vertices; a closed curve's is 2 or 4. Null for
    /// less than 2 vertices or order 2. Open curves always reach their end vertices: `interpolateEnds` is 1.
    static GU_PrimNURBCurve* build(GEO_Detail* detail, int64_t vertices, int order = 4, int closed = 0,
                                   int interpolateEnds = 1, int appendPoints = 1);

    /// Shapes the curve so that it passes through points of its own detail in order. It then has as many vertices
    /// as there are points; those without points get new ones. A vertex takes over the attributes of its point, so
    /// that they change smoothly and stay in the range that the points span. Knots are parameters of the points.
    /// `parameterisation`: 0 spaces the parameters evenly, anything else by the distances of the points. `params`
    /// gives them instead, one for each point and another one for the end of a closed curve, where they ascend and
    /// are finite. `spacing`: 1. Points that repeat are passed at parameters a little apart.
    /// Result: whether it could. For less than 2 points, or any value that is not finite, nothing changes.
    bool interpGlobal(const GEO_PointArray& points, int order = 4, int closed = 0, int parameterisation = 1,
                      int spacing = 1, const UT_FloatArray* params = nullptr);

    GEO_PrimitiveType primitiveType() const override { return GEO_PRIMITIVE_NURBS_CURVE; }
    std::unique_ptr<GEO_Primitive> clone() const override
    {
        return std::make_unique<GU_PrimNURBCurve>(*this);
    }
    std::vector<Piece> pieces(const GEO_Detail& detail) const override;

private:
    void shape(int64_t vertices, int order, bool closed, const std::vector<double>& params);

    std::vector<double> knots_;
};
