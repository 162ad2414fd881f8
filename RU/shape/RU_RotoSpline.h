#pragma once

#include <GU/GU_Detail.h>
#include <RU/RU_API.h>
#include <RU/shape/RU_RotoPoint.h>
#include <UT/UT_Vector2.h>

#include <cstdint>
#include <memory>
#include <vector>

struct ru_Outline;

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
///
/// The curve. A polygon joins its points. A Bezier piece goes from point i to i + 1,
///
///     (1 - t)^3 p(i) + 3 (1 - t)^2 t out(i) + 3 (1 - t) t^2 in(i + 1) + t^3 p(i + 1),  t from 0 to 1
///
/// A NURBS curve is the cubic spline through the points, parameters spaced by their distances. Filled curves are
/// closed. Alpha and feather change along a curve as places do; on a NURBS curve they follow those of the points more
/// smoothly, between their least and largest. build() and the functions after it take the curve as
/// the polygon that GU_Detail::convert() makes of it, within 0.1 / level of detail.
///
/// The stroke is h = max(width / 2, 0.01) wide on both sides of the line. Open ends are butt ends. Corners are mitred;
/// where the mitre would be longer than 2 h, from a turn by 120 degrees, they are bevelled. Polygons overlap at
/// corners whose edges are shorter than some widths, so that nothing is left out.
///
/// The soft edge. With r = reach + the feather of the points, interpolated along the edges, and d the distance from
/// the outline (of the stroke, where there is one),
///
///     r > 0:  ramp = max(1 - d / r, 0) outside of the shape, which stays whole
///     r < 0:  the shape becomes its core, what is further than |r| inside; ramp = max(1 - d / |r|, 0) around that
///
/// so that below 0 the shape fades from 1 in its core to 0 on its outline, or before that in corners, which become
/// round. Parts that are narrower than 2 |r| go. Its edges may be off by |r| / 1000. To draw it:
///
///     fill.initialize(spline.buildCore(reach));  fill.initializeFeather(spline.buildFeather(reach));
///
/// buildCore() is build() where no r is below 0. Quads have vertices 0 and 3 outside (ramp 0) and 1 and 2 on the
/// outline (ramp 1). There are some on the inner side as well: pixels that the outline cuts average the ramp over
/// their corners, of which some lie inside, and would be darker than their neighbours outside without. Around corners
/// there are fans of quads whose vertices 1 and 2 are one place, each of at most 10 degrees; their straight rims are
/// up to 0.4 % of r short. Where quads overlap, the largest ramp counts: that of the nearest edge.
///
/// Inputs: points in any order; they go by index, those with equal ones in the order in which they came. At least 2,
/// or 3 for a closed polygon.
/// Units: those of the points, for width, feather and reach too. Hosts use pixels, and scale the results to the 0..1
/// of RU_PolyFill. The level of detail is per unit; not above 0 or not finite counts as 1.
/// Results: details with closed polygons, none where there are too few points or where anything in a point but its
/// index (and handles that go unused) is not finite. Polygons beyond the range of floats are left out. A width or
/// reach that is not finite counts as 0. What the `detail` of build() and buildFeather() holds makes no difference, as
/// buildRawCurve() begins with an empty one. With r that differs around an outline which crosses itself, a part that
/// runs the other way may have a narrower ramp.
/// Ownership: the spline owns its points, together with its copies; changes to a point are seen by all of them. The
/// caller owns the details that are returned.
/// Threads: const members may run at once, as long as nobody changes a point or adds one.
/// Cost: by the vertices n of the converted outline; some 4 n quads and 40 for each sharp corner, whatever the reach.
/// For cores, edges are cut by each other: mostly some ms.
class RU_API RU_RotoSpline
{
public:
    RU_RotoSpline(RU_RotoType type, RU_RotoFill fill, float levelOfDetail, float width);
    RU_RotoSpline(const RU_RotoSpline&) = default;
    RU_RotoSpline& operator=(const RU_RotoSpline&) = default;
    virtual ~RU_RotoSpline();

    int64_t entries() const;
    RU_RotoPoint* getPoint(int index) const; ///< in order of the indices; null out of range
    RU_RotoFill getFillType() const;
    /// Takes ownership. The point comes after the last one whose index is not above its own.
    void addPoint(RU_RotoPoint* point);
    /// The first point whose index differs by at most 1e-5; null when there is none.
    RU_RotoPoint* getPointByIndex(float index) const;

    /// Makes `detail` hold the curve alone, with the point attribute "Alpha" and, if asked for, "feather". A Bezier
    /// curve's vertices are p(0), out(0), in(1), p(1) and so on; a closed one's last vertex is in(0).
    void buildRawCurve(GU_Detail& detail, bool withFeather) const;
    /// The filled shape in triangles, the stroke, or both, by the kind of fill.
    GU_Detail* build(GU_Detail* detail = nullptr) const;
    /// The quads of the soft edge, in a group "feather".
    GU_Detail* buildFeather(float reach, GU_Detail* detail = nullptr) const;
    /// What is solid beside that soft edge: build(), or less where the edge lies inside.
    GU_Detail* buildCore(float reach) const;

    /// Fits a Bezier curve to samples: points and handles, as many of each, of a curve that passes each sample within
    /// `tolerance` and is smooth. `corners` lets it have a corner where samples turn by more than 60 degrees. An open
    /// curve's first in-handle and last out-handle are their points. Samples that are not finite are left out; less
    /// than two different ones give no points.
    static void buildFreehand(const UT_Vector2Array& stroke, UT_Vector2Array& points,
                              UT_Vector2Array& inHandles, UT_Vector2Array& outHandles, float tolerance,
                              bool closed, bool corners);

private:
    ru_Outline flattened() const;
    double halfWidth() const;

    std::vector<std::shared_ptr<RU_RotoPoint>> points_; ///< by index
    RU_RotoFill fill_;
    float width_;
    float levelOfDetail_;
    RU_RotoType type_;
};
