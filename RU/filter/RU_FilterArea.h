#pragma once

#include <RU/RU_API.h>
#include <UT/UT_Filter.h>
#include <UT/UT_Vector3.h>
#include <UT/UT_Vector4.h>

#include <cstdint>
#include <memory>
#include <vector>

struct ru_AreaAxis;
class ru_AreaSampler;

/// What lies outside of a plane.
enum RU_FILTER_WRAP {
    RU_FILTER_REPEAT, ///< the plane again
    RU_FILTER_CLAMP,  ///< the nearest pixel at the edge
    RU_FILTER_BORDER  ///< nothing: its weight is lost, results fall towards 0
};

/// Filtered area sampling: weighted averages of the pixels under footprints, for texture look-ups and warps.
///
/// A sample has a place (u, v) in input pixels, pixel i reaching from i to i + 1, and extents (du, dv). Along
/// each axis, with u0 <= u1 the ends u and u + du in order,
///
///     c = (u0 + u1) / 2,   h = max((u1 - u0) * half size, 0.5) * support of the filter
///
/// pixels floor(c - h) to floor(c + h) get as weight the filter's area under them, that from c - h to c + h
/// taken as -0.5 to 0.5, divided by the sum of all. The sample is the sum over rows of (the sum over the row of
/// weight times pixel) times the row's weight, in floats, in this order. A window of more than 1001 pixels is cut
/// to those in its middle; its first pixel gets what lies before it.
///
/// Use: setFilter() and setWrap(); a coordinate call, for a block of samples; getInputRegion(); then sample
/// calls on planes that cover exactly that region.
/// Input: planes of floats, rows x0 .. x1, y0 .. y1, both inclusive, no padding. Pixels that rounding puts just
/// outside of the region are taken from its edge; of an empty region (x1 < x0) nothing is read.
/// Units: input pixels; sizes in widths of a footprint. getXSize() and getYSize() give half of what was set.
/// Null planes read as 0. A mask of 0 leaves a sample's output as it was, but its coordinates still count in
/// the region and in the differences of its neighbours. A place or extent that is no number gives 0.
/// Windows end at 10^9 pixels on either side.
/// Result: none. Without memory samples are left as they were.
/// Ownership: coordinates, masks and filters stay the caller's and must last until the last sample call; a copy
/// has work memory of its own.
/// Threads: an object per thread.
/// Cost: per sample the multiplications under its window, and some 10 operations per weight; where columns share
/// u and rows v (scaling) only the sum of both sides of the window. A caller's own filter is called per weight.
class RU_API RU_FilterArea
{
public:
    RU_FilterArea();
    RU_FilterArea(const RU_FilterArea& other);
    RU_FilterArea& operator=(const RU_FilterArea& other);
    virtual ~RU_FilterArea();

    /// Types and sizes of the filters along x and y.
    void setFilter(UT_FilterType xtype, float xsize, UT_FilterType ytype, float ysize);
    /// The same with filters of the caller. The types stay: after UT_FILTER_BOX weights are the box's.
    void setFilter(UT_Filter* xfilter, float xsize, UT_Filter* yfilter, float ysize);
    UT_Filter* getXFilter() const { return x_.filter; }
    UT_Filter* getYFilter() const { return y_.filter; }
    float getXSize() const { return x_.half; }
    float getYSize() const { return y_.half; }

    /// RU_FILTER_WRAP; anything else is RU_FILTER_CLAMP.
    void setWrap(int xwrap, int ywrap);
    int getXWrap() const { return x_.wrap; }
    int getYWrap() const { return y_.wrap; }

    /// Kept; RU_FILTER_BORDER does not blend it in.
    void setBorder(float* const colour);

    /// Samples in rows, their extents being the differences to the next in the row (du) and in the next row
    /// (dv); the last repeat those before them, and one alone has 1.
    void setTextureCoords(const float* u, const float* v, int rows, int columns, int xres, int yres,
                          const char* mask);
    /// Samples that reach from (u0, v0) to (u1, v1).
    void setFourCornerCoords(const float* u0, const float* v0, const float* u1, const float* v1, int rows,
                             int columns, int xres, int yres, const char* mask);

    /// The pixels that the samples read, inclusive; with RU_FILTER_BORDER -1, -1 when there are none.
    void getInputRegion(int& x0, int& x1, int& y0, int& y1) const;

    void sample1(float* out, const float* in);
    void sample3(UT_Vector3* out, const float* r, const float* g, const float* b);
    void sample4(UT_Vector4* out, const float* r, const float* g, const float* b, const float* a);

private:
    struct Axis
    {
        UT_FilterType type = UT_FILTER_BOX;
        UT_Filter* filter = nullptr;
        float half = 0.5f;
        int wrap = RU_FILTER_CLAMP;
        const float* place = nullptr; ///< the caller's
        std::vector<float> extent;
        int resolution = 0;
        int first = 0, last = 0;

        void setFilter(UT_Filter* to, float size);
        void findRange();
        ru_AreaAxis forSampling() const;
    };

    bool startBlock(const float* u, const float* v, int rows, int columns, int xres, int yres,
                    const char* mask);
    void sample(float* out, const float* const* in, int components);
    void sampleComponents(float* out, const float* const* in, int components);

    Axis x_, y_;
    float border_[4] = {};
    const char* mask_ = nullptr;
    int64_t rows_ = 0, columns_ = 0;
    std::vector<float> scratch_;
    std::unique_ptr<ru_AreaSampler> sampler_; ///< null until the first sample
};
