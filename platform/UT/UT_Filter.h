#pragma once

#include <SYS/SYS_API.h>

/// The kernels of UT_Filter. Each is even, of the distance x from the centre in pixels, and 0 from its radius on.
/// They come in two forms: integrated over each pixel, which treats pixels as squares, and, "sampled", by their
/// values at the pixels' centres, which treats pixels as points: at whole shifts triangle, Catmull-Rom and
/// Lanczos leave a picture as it is, but for the rounding of the weights of Lanczos.
enum UT_FilterType {
    UT_FILTER_POINT,      ///< the one pixel at the centre
    UT_FILTER_BOX,        ///< 1, radius 1/2
    UT_FILTER_TRIANGLE,   ///< 1 - |x|, radius 1
    UT_FILTER_GAUSSIAN,   ///< exp(-2 x^2), radius 3/2
    UT_FILTER_CATMULLROM, ///< cubic with B = 0, C = 1/2 (Mitchell and Netravali), radius 2
    UT_FILTER_MITCHELL,   ///< cubic with B = C = 1/3 (Mitchell and Netravali), radius 2
    UT_FILTER_LANCZOS3,   ///< sinc(x) sinc(x / 3), radius 3
    UT_FILTER_HANN,       ///< (1 + cos(pi x)) / 2, radius 1
    UT_FILTER_TRIANGLE_SAMPLED,
    UT_FILTER_GAUSSIAN_SAMPLED,
    UT_FILTER_CATMULLROM_SAMPLED,
    UT_FILTER_MITCHELL_SAMPLED,
    UT_FILTER_LANCZOS3_SAMPLED,
    UT_FILTER_HANN_SAMPLED,
    UT_FILTER_TYPES
};

/// An even function of t in eight polynomials of degree 6 over |t| < reach, for code that evaluates filters many
/// at a time. With x = |t| * scale, i = floor(x), y = x - i:
///
///     f(t) = term[0][i] + y (term[1][i] + y (... + y term[6][i]))
///
/// Of an integrated filter this is the integral from 0 to |t|, which stays the same from `reach` on; of a
/// sampled one the kernel itself, 0 from `reach` on.
struct UT_FilterPieces
{
    static constexpr int pieces = 8, terms = 7;

    bool sampled = false;
    float reach = 0.5f, scale = 16.0f;
    alignas(32) float term[terms][pieces] = {};

    /// f(t), in the order of operations that everybody keeps to.
    float at(float t) const;
};

/// A reconstruction filter along one axis. Positions t go from -0.5 to 0.5 over the filter's whole width, which is
/// getSupport() times the width of a sample's footprint.
class PLATFORM_API UT_Filter
{
public:
    /// The weight between two positions: the integral of the kernel, that of all being 1.
    virtual float getArea(float t0, float t1) const = 0;

    virtual ~UT_Filter();

    float getSupport() const { return support_; }

    /// The polynomials that getArea() follows, if any.
    virtual const UT_FilterPieces* getPieces() const { return nullptr; }

    /// The filter of a type, one for the whole process; unknown types give the box.
    static UT_Filter* getFilter(UT_FilterType type);
    /// Does nothing: the filters of the process stay.
    static void releaseFilter(UT_Filter*) {}

protected:
    explicit UT_Filter(float support) : support_(support) {}

private:
    float support_;
};
