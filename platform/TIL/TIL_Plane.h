#pragma once

#include <PXL/PXL_Format.h>

/// What is common to all pixels of a plane: storage format, number of components, integer range.
class TIL_Plane
{
public:
    TIL_Plane() = default;
    /// Over the full range of its format.
    TIL_Plane(unsigned char format, unsigned char components)
        : formatCode(format), componentCount(components), whitePoint(PXLfullWhite(format))
    {
    }

    bool isAlphaPlane() const { return alpha; }

    /// Non-zero when integer codes run from the black to the white point instead of over the full range.
    int usesBlackWhitePoints() const { return blackWhitePoints ? 1 : 0; }

    unsigned char formatCode = PXL_FORMAT_float32;
    unsigned char componentCount = 4; ///< 1 to 4
    bool alpha = false;
    bool blackWhitePoints = false;
    unsigned int blackPoint = 0; ///< the codes of 0.0 and 1.0
    unsigned int whitePoint = 1;
};
