#pragma once

#include <GU/GU_PrimCurve.h>

/// A row of Bezier pieces. Of order 4, vertices 0, 3, 6 and so on lie on the curve, and each has its handles beside
/// it. A closed curve's last piece ends at vertex 0.
class PLATFORM_API GU_PrimRBezCurve : public GU_PrimCurve
{
public:
    GU_PrimRBezCurve(int64_t vertices, int order, bool closed) : GU_PrimCurve(vertices, order, closed) {}

    /// Adds a curve to a detail, which owns it, with new points at the origin unless `appendPoints` is 0. Null
    /// when the number of vertices makes no whole pieces: n (order - 1), and one more for an open curve.
    static GU_PrimRBezCurve* build(GEO_Detail* detail, int64_t vertices, int order = 4, int closed = 0,
                                   int appendPoints = 1);

    GEO_PrimitiveType primitiveType() const override { return GEO_PRIMITIVE_BEZIER_CURVE; }
    std::unique_ptr<GEO_Primitive> clone() const override
    {
        return std::make_unique<GU_PrimRBezCurve>(*this);
    }
    std::vector<Piece> pieces(const GEO_Detail& detail) const override;
};
