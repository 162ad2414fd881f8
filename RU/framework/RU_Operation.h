#pragma once

#include <RU/RU_API.h>

class RU_Algorithm;
class TIL_Region;
class TIL_TileList;

/// What an algorithm's factory makes for one call of an entry point: the work method runs once, then the
/// object is deleted. It keeps no state, only a pointer to its algorithm, and never outlives the call.
class RU_API RU_Operation
{
public:
    explicit RU_Operation(RU_Algorithm* algorithm) : algorithm_(algorithm) {}
    virtual ~RU_Operation() = default;

protected:
    RU_Algorithm* algorithm_;
};

// The four families, for the element type T of the output. FullRange: 1 where integer codes span their type,
// 0 where they run from the black to the white point. Every work method returns 1 when it did its work and 0
// when it did nothing; those of the bases return 0.

/// Writes a tile list from nothing but coordinates and time.
template <class T, bool FullRange>
class RU_API RU_GeneratorOp : public RU_Operation
{
public:
    using RU_Operation::RU_Operation;

    virtual int generate(TIL_TileList* /*out*/, float /*time*/, int /*thread*/, void* /*context*/)
    {
        return 0;
    }
};

/// Writes each pixel of a tile list from the same pixel of another (or the same) one.
template <class T, bool FullRange>
class RU_API RU_PixelOp : public RU_Operation
{
public:
    using RU_Operation::RU_Operation;

    virtual int pixelAdjust(TIL_TileList* /*out*/, const TIL_TileList* /*in*/, float /*time*/, int /*thread*/,
                            void* /*context*/)
    {
        return 0;
    }
};

/// Writes a region or a tile list from a region that reaches around it.
template <class T, bool FullRange>
class RU_API RU_FilterOp : public RU_Operation
{
public:
    using RU_Operation::RU_Operation;

    virtual int filter(TIL_Region* /*out*/, const TIL_Region* /*in*/, float /*time*/, int /*thread*/,
                       void* /*context*/)
    {
        return 0;
    }
    virtual int filter(TIL_TileList* /*out*/, const TIL_Region* /*in*/, float /*time*/, int /*thread*/,
                       void* /*context*/)
    {
        return 0;
    }
};

/// Writes a region or a tile list from two regions.
template <class T, bool FullRange>
class RU_API RU_BinaryOp : public RU_Operation
{
public:
    using RU_Operation::RU_Operation;

    virtual int binary(TIL_Region* /*out*/, const TIL_Region* /*in1*/, const TIL_Region* /*in2*/,
                       float /*time*/, int /*thread*/, void* /*context*/)
    {
        return 0;
    }
    virtual int binary(TIL_TileList* /*out*/, const TIL_Region* /*in1*/, const TIL_Region* /*in2*/,
                       float /*time*/, int /*thread*/, void* /*context*/)
    {
        return 0;
    }
};
