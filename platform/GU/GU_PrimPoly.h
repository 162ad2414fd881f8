#pragma once

#include <GEO/GEO_Primitive.h>

class GEO_Detail;

/// A polygon, or a line of edges when it is open.
class PLATFORM_API GU_PrimPoly : public GEO_Primitive
{
public:
    GU_PrimPoly(int64_t vertices, bool open) : GEO_Primitive(vertices, !open) {}

    /// Adds a polygon to a detail, which owns it. Its vertices have new points at the origin, or none yet when
    /// `appendPoints` is 0. Null for less than one vertex.
    static GU_PrimPoly* build(GEO_Detail* detail, int64_t vertices, int open = 0, int appendPoints = 1);

    GEO_PrimitiveType primitiveType() const override { return GEO_PRIMITIVE_POLYGON; }
    std::unique_ptr<GEO_Primitive> clone() const override { return std::make_unique<GU_PrimPoly>(*this); }
};
