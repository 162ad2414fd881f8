#pragma once

#include <RU/framework/RU_Factories.h>

template <class T, bool FullRange>
class RU_DegrainOp;

extern template class RU_API RU_FilterFactories<RU_DegrainOp>;

/// Removes grain and speckle: closes the image (dark specks go), then opens the result (bright ones go), each
/// along horizontal and along vertical lines of r + 1 pixels, r = grainSize, for each component on its own:
///
///     closed = min(erosion of the dilation along x, erosion of the dilation along y)
///     result = max(dilation of the erosion of `closed` along x, the same along y)
///
/// where a dilation is the maximum over a line and an erosion the minimum. Lines that are thinner than a grain
/// and go along x or y stay, as one of the two directions keeps them.
///
/// Input: a region with a border of 2 r pixels on every side, (W + 4 r) x (H + 4 r) values; r below 0 counts
/// as 0, which copies.
/// Units: pixels are compared, never converted, so that codes outside of black and white points stay what
/// they are, equal points or not. Floats and halves are ordered by value, -0 below 0, NaN beyond the infinity
/// of its sign: a NaN goes as other specks go.
/// Result: 1, also when interrupted. Only tile lists are written; the region form returns 0.
/// Cost: one pass over the input. Next to independent of r: nearly three comparisons per pixel and direction
/// down columns, along rows up to twice the logarithm of r. Memory for some 5 (r + 2) rows.
class RU_API RU_Degrain : public RU_FilterFactories<RU_DegrainOp>
{
public:
    ~RU_Degrain() override;
    RU_Degrain() = default;
    RU_Degrain(const RU_Degrain&) = default;
    RU_Degrain& operator=(const RU_Degrain&) = default;

    RU_Border border() const override;

    int grainSize = 5; ///< r, in pixels
};
