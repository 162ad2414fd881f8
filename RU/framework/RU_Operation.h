#pragma once

#include <RU/RU_API.h>

class RU_Algorithm;
class TIL_Region;
class TIL_TileList;

/// The four families of operation objects. An algorithm's factory makes one for each call of an entry point,
/// for the element type T of the output; its work method runs once; then it is deleted. It keeps no state of
/// its own, only a pointer to its algorithm, and never outlives the call.
///
/// FullRange: 1 where integer codes span their type, 0 where they run from the black to the white point.
/// Every work method returns 1 when it did its work and 0 when it did nothing; those of the bases return 0.

/// Writes a tile list from nothing but coordinates and time.
template <class T, bool FullRange>
class RU_API RU_GeneratorOp
{
public:
    explicit RU_GeneratorOp(RU_Algorithm* algorithm) : algorithm_(algorithm) {}
    virtual ~RU_GeneratorOp() = default;

    virtual int generate(TIL_TileList*, float /*time*/, int /*thread*/, void* /*context*/) { return 0; }

protected:
    RU_Algorithm* algorithm_;
};

/// Writes each pixel of a tile list from the same pixel of another (or the same) one.
template <class T, bool FullRange>
class RU_API RU_PixelOp
{
public:
    explicit RU_PixelOp(RU_Algorithm* algorithm) : algorithm_(algorithm) {}
    virtual ~RU_PixelOp() = default;

    virtual int pixelAdjust(TIL_TileList*, const TIL_TileList*, float /*time*/, int /*thread*/,
                            void* /*context*/)
    {
        return 0;
    }

protected:
    RU_Algorithm* algorithm_;
};

/// Writes a region or a tile list from a region that reaches around it.
template <class T, bool FullRange>
class RU_API RU_FilterOp
{
public:
    explicit RU_FilterOp(RU_Algorithm* algorithm) : algorithm_(algorithm) {}
    virtual ~RU_FilterOp() = default;

    virtual int filter(TIL_Region*, const TIL_Region*, float /*time*/, int /*thread*/, void* /*context*/)
    {
        return 0;
    }
    virtual int filter(TIL_TileList*, const TIL_Region*, float /*time*/, int /*thread*/, void* /*context*/)
    {
        return 0;
    }

protected:
    RU_Algorithm* algorithm_;
};

/// Writes a region or a tile list from two regions.
template <class T, bool FullRange>
class RU_API RU_BinaryOp
{
public:
    explicit RU_BinaryOp(RU_Algorithm* algorithm) : algorithm_(algorithm) {}
    virtual ~RU_BinaryOp() = default;

    virtual int binary(TIL_Region*, const TIL_Region*, const TIL_Region*, float /*time*/, int /*thread*/,
                       void* /*context*/)
    {
        return 0;
    }
    virtual int binary(TIL_TileList*, const TIL_Region*, const TIL_Region*, float /*time*/, int /*thread*/,
                       void* /*context*/)
    {
        return 0;
    }

protected:
    RU_Algorithm* algorithm_;
};
