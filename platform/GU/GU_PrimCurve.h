#pragma once

#include <GEO/GEO_Detail.h>

/// A curve of polynomial pieces. Attributes follow it as positions do; w is carried along and is no weight.
class PLATFORM_API GU_PrimCurve : public GEO_Primitive
{
public:
    int order() const { return order_; } ///< the degree of the pieces plus 1

    /// The control points of a piece in Bezier form, `order()` of them.
    using Piece = std::vector<GEO_Detail::Values>;
    /// All pieces along the curve; each begins where the one before it ends. None while vertices have no points.
    virtual std::vector<Piece> pieces(const GEO_Detail& detail) const = 0;

    /// Points along the curve, from its first to its last (a closed curve's last is left out, since it is the
    /// first), whose polygon lies within `tolerance` of it. At most 1024 for each piece.
    std::vector<GEO_Detail::Values> flattened(const GEO_Detail& detail, double tolerance) const;

protected:
    GU_PrimCurve(int64_t vertices, int order, bool closed) : GEO_Primitive(vertices, closed), order_(order) {}
    bool hasAllPoints() const;
    void setOrder(int order) { order_ = order; }

private:
    int order_;
};
