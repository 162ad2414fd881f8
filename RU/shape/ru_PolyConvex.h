#pragma once

#include <GEO/GEO_Detail.h>
#include <RU/shape/ru_FillEdges.h>
#include <UT/UT_Convex.h>

#include <vector>

/// Cuts a polygon of a detail into triangles.
class ru_PolyConvex : public UT_Convex
{
public:
    ru_PolyConvex(const GEO_Detail& detail, const GEO_Primitive& polygon,
                  std::vector<ru_FillTriangle>& triangles)
        : detail_(detail), polygon_(polygon), triangles_(triangles)
    {
    }

protected:
    int64_t vertexCount() const override { return polygon_.vertexCount(); }
    UT_Vector2 vertexPosition(int64_t index) const override
    {
        const UT_Vector4& p = detail_.position(polygon_.vertexPoint(index));
        return {p.x, p.y};
    }
    void beginPiece() override { count_ = 0; }
    void addVertex(const UT_ConvexCorner& corner) override
    {
        if (count_ < piece_.corners.size())
            piece_.corners[count_++] = {corner.x, corner.y};
    }
    void endPiece() override
    {
        if (count_ == piece_.corners.size())
            triangles_.push_back(piece_);
    }

    ru_FillTriangle piece_;

private:
    const GEO_Detail& detail_;
    const GEO_Primitive& polygon_;
    std::vector<ru_FillTriangle>& triangles_;
    size_t count_ = 0;
};

/// Cuts a feather quad into triangles that know it.
class ru_FeatherQuadConvex : public ru_PolyConvex
{
public:
    ru_FeatherQuadConvex(const GEO_Detail& detail, const GEO_Primitive& polygon, int quad,
                         std::vector<ru_FillTriangle>& triangles)
        : ru_PolyConvex(detail, polygon, triangles)
    {
        piece_.quad = quad;
    }
};
