#pragma once

#include <RU/RU_API.h>
#include <RU/shape/RU_FeatherDropoff.h>
#include <TIL/TIL_TileList.h>
#include <UT/UT_Vector4.h>

#include <memory>

class GEO_Detail;

enum RU_PolyFillMethod : int {
    RU_POLYFILL_NORMAL = 0,  ///< coverage alone
    RU_POLYFILL_FEATHER = 1, ///< coverage, and ramps across feather quads
};

/// Polygon fill: draws polygons in one colour, each pixel by how much of it they cover.
///
///     coverage = sub-samples of the pixel that lie in any triangle / all sub-samples
///     out      = max(out, coverage * colour)
///
/// Polygons become triangles. A sub-sample lies in a triangle where (A x + B y) + C <= 0 for its three edges, in
/// double; one on an edge is inside, so that triangles side by side leave no gap and count nothing twice. A pixel
/// that is covered whole gets exactly the colour.
///
/// With RU_POLYFILL_FEATHER, quads beside the shape carry a ramp u from their edge of vertices 0 and 3, the outer
/// one, where it is 0, to that of vertices 1 and 2, where it is 1. It is taken at the corners of pixels, the largest
/// where quads overlap:
///
///     a   = the mean of the ramp at the four corners
///     out = max(out, f((1 - coverage) a + coverage) * colour)
///
/// f is one of the curves of RU_FeatherDropoff.h.
///
/// Inputs: positions in the image, which is 1 wide and 1 high, with (0, 0) at its first pixel's corner. Parts outside
/// of the image count for nothing. Triangles without area or with a place that is not finite are left out.
/// Order of use: geometry; setResolution(), again after the geometry changed; then scanConvert() for each bucket.
/// Sampling and drop-off may be set at any time in between, but not during a scan.
/// Result: nothing is reported. Without memory nothing is drawn any more, until clearGeometry() or initialize().
/// Ownership: what is drawn is copied out of the details.
/// Threads: scanConvert() may run for different buckets at once, each call with an index of its own, from 0 to one
/// less than the number of threads. No other call may run meanwhile. What a thread draws with it keeps for all fills.
/// Cost: by the pixels along edges, in triangles on their own, or along the outline where triangles share edges; and
/// a pass over what is covered whole.
class RU_API RU_PolyFill
{
public:
    RU_PolyFill(RU_PolyFillMethod method, int threads);
    RU_PolyFill(const RU_PolyFill&) = delete;
    RU_PolyFill& operator=(const RU_PolyFill&) = delete;
    ~RU_PolyFill();

    /// Draws this detail's polygons in place of all before.
    void initialize(const GEO_Detail* detail);
    /// Draws this detail's polygons as well. Those with more than three vertices are cut into triangles; they cover
    /// what they wind around. Open ones are left out.
    void append(const GEO_Detail* detail);
    /// Takes the polygons of four vertices as feather quads, in place of those before. One whose vertices 1 and 2 lie
    /// at one place is the triangle of vertices 0, 1 and 3.
    void initializeFeather(const GEO_Detail* detail);
    void addTriangle(float x0, float x1, float x2, float y0, float y1, float y2);
    /// Adds a part of feather quad number `quad`, that is primitive number `quad` of the feather's detail.
    void addFeatherTriangle(float x0, float x1, float x2, float y0, float y1, float y2, int quad);
    void clearGeometry();

    /// The sub-samples of a pixel: nx across, ny down, evenly spaced. Below 1 counts as 1; more than 64 become 8 by 8,
    /// which is also the default.
    void setSampling(int nx, int ny);
    void setDropoff(RU_FeatherDropoff dropoff);
    /// Has each triangle sorted into the buckets up to `n` pixels around it. The function is called for i / n, i from
    /// 0 to n - 1; values are not used in drawing.
    void setDropoff(int n, float (*dropoff)(float));

    /// The image has `width` x `height` pixels, in buckets of tileWidth x tileHeight, or less at its far edges.
    void setResolution(int width, int height, int tileWidth, int tileHeight);
    /// Sorts the triangles into buckets, as setResolution() does at its end.
    void doSorting();

    /// Draws bucket (bx, by) into tiles of its rectangle; component i of the colour goes into tile i. Nothing is ever
    /// lowered. A bucket outside of the image clears the tiles to black instead.
    void scanConvert(TIL_TileList* tiles, int bx, int by, const UT_Vector4& colour, int thread);

private:
    class Fill;
    std::unique_ptr<Fill> fill_;
};
