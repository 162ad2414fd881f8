#pragma once

#include <RU/framework/RU_Factories.h>

template <class T, bool FullRange>
class RU_SubPixelOp;

extern template class RU_API RU_FilterFactories<RU_SubPixelOp>;

/// Shifts an image by a fraction of a pixel, by bilinear interpolation: each pixel is the weighted sum of the
/// 2 x 2 pixels at and after its place, for each component on its own:
///
///     out(x, y) = weight11 in(x + 1, y + 1) + weight01 in(x, y + 1) + weight10 in(x + 1, y) + weight00 in(x, y)
///
/// added in this order. A weight of 0 does not read its pixel: infinities and NaN do not come from there. Where
/// only one weight is not 0, and that is 1, codes are copied and keep every bit.
///
/// Input: a region with one column more to the right and one row more at the top, where y is larger;
/// (W + 1) x (H + 1) values.
/// Result: 1, also when interrupted. Tile lists and regions are written.
/// Cost: one pass over the input, four multiplications per pixel, or as many as there are weights.
class RU_API RU_SubPixel : public RU_FilterFactories<RU_SubPixelOp>
{
public:
    ~RU_SubPixel() override;
    RU_SubPixel() = default;
    RU_SubPixel(const RU_SubPixel&) = default;
    RU_SubPixel& operator=(const RU_SubPixel&) = default;

    /// The weights for out(x, y) = in(x + fx, y + fy). Fractions outside of 0 to 1 extrapolate.
    void setWeights(float fx, float fy);

    RU_Border border() const override;

    float weight00 = 1.0f; ///< (1 - fx) (1 - fy)
    float weight10 = 0.0f; ///< fx (1 - fy)
    float weight01 = 0.0f; ///< (1 - fx) fy
    float weight11 = 0.0f; ///< fx fy
};
