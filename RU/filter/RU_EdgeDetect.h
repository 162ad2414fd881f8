#pragma once

#include <RU/framework/RU_Factories.h>

template <class T, bool FullRange>
class RU_EdgeDetectOp;

extern template class RU_API RU_FilterFactories<RU_EdgeDetectOp>;

/// Edge strength: |gx| + |gy|, the sum of the absolute horizontal and vertical 3 x 3 differences around each
/// pixel, for each component on its own. With the neighbourhood
///
///     A B C
///     D E F
///     G H I
///
/// and w = 2 with sobelWeights (the Sobel operator), else 1 (the Prewitt operator): where edgeGain and
/// cornerWeight are exactly 1,
///
///     gx = (C + w F + I) - (A + w D + G)
///     gy = (G + w H + I) - (A + w B + C)
///
/// otherwise, with a = edgeGain, b = cornerWeight, m = w + 1 - 2 b,
///
///     gx = a (b ((C + I) - (A + G)) + m (F - D))
///     gy = a (b ((G + I) - (A + C)) + m (H - B))
///
/// and the sum is divided by (a b)^(1/4) where a and b are above 0. The two do not meet: at a = b = 1 the
/// second would weigh the middle row and column w - 1 rather than w.
///
/// Input: a region with a border of one pixel on every side, (W + 2) x (H + 2) values.
/// Range: a flat input gives 0, or the black code between black and white points; integers saturate at the
/// end of their type.
/// Result: 1, also when interrupted. Only tile lists are written; the region form returns 0.
/// Cost: one pass over the input, 13 additions and multiplications per pixel.
class RU_API RU_EdgeDetect : public RU_FilterFactories<RU_EdgeDetectOp>
{
public:
    ~RU_EdgeDetect() override;
    RU_EdgeDetect() = default;
    RU_EdgeDetect(const RU_EdgeDetect&) = default;
    RU_EdgeDetect& operator=(const RU_EdgeDetect&) = default;

    RU_Border border() const override;

    int sobelWeights = 1;      ///< non-zero: the middle row and column weigh 2, else 1
    float edgeGain = 1.0f;     ///< gain of both differences
    float cornerWeight = 1.0f; ///< share of the corner pixels
};
