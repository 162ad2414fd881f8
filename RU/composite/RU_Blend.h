#pragma once

#include <RU/framework/RU_Factories.h>

template <class T, bool FullRange>
class RU_BlendSingleOp;
template <class T, bool FullRange>
class RU_BlendFilterOp;
template <class T, bool FullRange>
class RU_BlendOp;

using RU_BlendBinaryFactories = RU_BinaryFactories<RU_BlendOp>;
using RU_BlendFilterFactories = RU_FilterFactories<RU_BlendFilterOp, RU_BlendBinaryFactories>;
using RU_BlendFactories = RU_PixelFactories<RU_BlendSingleOp, RU_BlendFilterFactories>;

extern template class RU_API RU_BinaryFactories<RU_BlendOp>;
extern template class RU_API RU_FilterFactories<RU_BlendFilterOp, RU_BlendBinaryFactories>;
extern template class RU_API RU_PixelFactories<RU_BlendSingleOp, RU_BlendFilterFactories>;

/// Mixes two images, or fades one, perhaps under a mask M. The output holds the first image A when an entry
/// point is called and the result afterwards. With k = blendFactor, component by component:
///
///     pixelAdjust, filter:  A = wA A + wB B
///     binary:               A = (1 - f) A + f B    f = clamp01(k), with a mask clamp01(k M)
///
/// where wA = k and wB = 1 - k with useBlendFactor, else firstWeight and secondWeight: k is the weight of the
/// first image in the former, of the second in binary. Where B is missing its term is left out.
/// swapMaskedInputs does something only in binary and under a mask: the images change their weights, or,
/// without B, the mask is inverted to 1 - M.
///
/// Inputs: the second image B, in the output's format and range: pixelAdjust's tiles, filter's region or
/// binary's first region; the mask, always float: binary's second region. Regions have the output's
/// rectangle. B may be the output itself, the mask may not. A component without mask takes that of the lowest
/// component below it that has one, else of the highest above it.
/// Range: wA and wB may be anything, and extrapolate; in binary the product k M is clamped, not its factors.
/// NaN in a mask makes NaN, code 0.
/// Rounding: once, halves up, where the weights of 8- or 16-bit codes are from 0 to 1 and share 1: these are
/// mixed in integers. Else as everywhere.
/// Null and constant: any region may be null but the output's, and so may components of it. pixelAdjust skips
/// components without an input tile; where a tile has no data there is no B. A constant input tile stands for
/// its first pixel everywhere.
/// Result: 1, also when interrupted; the region form of binary returns 0. All rows are processed.
/// Cost: one pass over what is read. Components that share a mask share its weights. 8-bit images under a
/// mask go the fastest with more than 32 pixels and the mask on a 16-byte boundary.
class RU_API RU_Blend : public RU_BlendFactories
{
public:
    ~RU_Blend() override;
    RU_Blend() = default;
    RU_Blend(const RU_Blend&) = default;
    RU_Blend& operator=(const RU_Blend&) = default;

    float blendFactor = 1.0f;
    float secondWeight = 0.0f;
    float firstWeight = 1.0f;
    bool useBlendFactor = true; ///< pixelAdjust, filter: the weights come from blendFactor
    bool swapMaskedInputs = false;
};
