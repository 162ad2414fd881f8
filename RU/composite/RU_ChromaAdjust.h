#pragma once

#include <RU/framework/RU_Factories.h>

template <class T, bool FullRange>
class RU_ChromaAdjustOp;

extern template class RU_API RU_PixelFactories<RU_ChromaAdjustOp>;

/// Takes a backing colour out of a keyed image, in place, as far as a matte m lets it shine through:
///
///     m >= 1         the code stays as it is stored, bit for bit
///     m <= 0         0
///     between, NaN   v - (1 - m) * backing
///
/// for red, green and blue, components 0 to 2 of the output, each with its value of the backing colour. A
/// fourth component is not touched, and the input is not looked at.
///
/// Inputs: the matte, one float per pixel of the tile list in the order of its tiles, whatever the format. It
/// is none of the three.
/// Range: what is darker than the backing colour's part becomes negative; nothing is clamped before the code.
/// Result: 1, also when interrupted; 0 without a matte. All rows are processed.
/// Ownership: the matte is the host's, copies share it; it is set before each call.
/// Threads: as the matte belongs to a tile list, each thread takes an object of its own.
/// Cost: one pass, 2 additions and multiplications per value.
class RU_API RU_ChromaAdjust : public RU_PixelFactories<RU_ChromaAdjustOp>
{
public:
    ~RU_ChromaAdjust() override;
    RU_ChromaAdjust() = default;
    RU_ChromaAdjust(const RU_ChromaAdjust&) = default;
    RU_ChromaAdjust& operator=(const RU_ChromaAdjust&) = default;

    const float* matte = nullptr;
    float backingRed = 0.0f;
    float backingGreen = 0.0f;
    float backingBlue = 0.0f;
};
