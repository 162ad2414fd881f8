#pragma once

#include <GU/GU_Detail.h>
#include <RU/RU_API.h>
#include <RU/shape/RU_RotoPoint.h>
#include <UT/UT_Vector2.h>

#include <cstdint>
#include <memory>
#include <vector>

enum RU_RotoType : int {
    RU_ROTO_POLYGON = 0,
    RU_ROTO_BEZIER = 1, ///< and any other value
    RU_ROTO_NURBS = 2,  ///< passes through its points
};

enum RU_RotoFill : int {
    RU_ROTO_OPEN = 0,           ///< an open line, drawn as a stroke
    RU_ROTO_FILLED = 1,         ///< closed and filled
    RU_ROTO_FILLED_OUTLINE = 2, ///< closed, filled and drawn around with a stroke
};

/// A rotoscoping shape: an outline through control points, and what RU_PolyFill needs to draw it.
class RU_API RU_RotoSpline
{
public:
    RU_RotoSpline(RU_RotoType type, RU_RotoFill fill, float levelOfDetail, float width);
    RU_RotoSpline(const RU_RotoSpline&) = default;
    RU_RotoSpline& operator=(const RU_RotoSpline&) = default;
    virtual ~RU_RotoSpline();

    int64_t entries() const;
    RU_RotoPoint* getPoint(int index) const;
    RU_RotoFill getFillType() const;
    void addPoint(RU_RotoPoint* point);
    RU_RotoPoint* getPointByIndex(float index) const;

    void buildRawCurve(GU_Detail& detail, bool withFeather) const;
    GU_Detail* build(GU_Detail* detail = nullptr) const;
    GU_Detail* buildFeather(float reach, GU_Detail* detail = nullptr) const;

    static void buildFreehand(const UT_Vector2Array& stroke, UT_Vector2Array& points,
                              UT_Vector2Array& inHandles, UT_Vector2Array& outHandles, float tolerance,
                              bool closed, bool corners);
};
