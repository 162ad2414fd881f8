#pragma once

#include <RU/framework/RU_Factories.h>
#include <UT/UT_Lock.h>
#include <UT/UT_PtrArray.h>

#include <atomic>
#include <cstdint>

class RU_PixelFunction;
template <class T, bool FullRange>
class RU_PixelEngineOp;

/// Tables of 8-bit results by 8-bit code, one per component; all four pointers are equal when the chain
/// treats the components alike. `black` and `white` are what the table was asked for.
struct ru_lut8
{
    uint8_t* table[4] = {};
    uint32_t black = 0;
    uint32_t white = 0;
};

/// The same for 16 bits.
struct ru_lut16
{
    uint16_t* table[4] = {};
    uint32_t black = 0;
    uint32_t white = 0;
};

/// Tables of halves by bit pattern.
struct ru_lut16fp
{
    fpreal16* table[4] = {};
    std::atomic<bool> ready = false;
};

extern template class RU_API RU_PixelFactories<RU_PixelEngineOp>;

/// Runs a chain of pixel functions over tiles: out = chain(in) for every pixel.
///
/// Chains that need one component at a time go through tables where the format allows it:
///
///     8 and 16 bit    a table of the results of all codes
///     half            a table by bit pattern, over the full range only: infinities and NaN give 0;
///                     between black and white points each value is evaluated and infinities and NaN survive
///     32 bit, float   evaluated row by row
///
/// Chains that need all components of a pixel are evaluated pixel by pixel in every format.
///
/// Departures from the common rules, all of them deliberate:
/// - 8-bit tables span the full range also when black and white points are in use; the pixel path honours
/// them.
/// - A full-range 16-bit table of a chain that treats components differently tops out at code 65355.
/// - 32-bit codes between points are scaled by a float 1 / (white - black), and evaluated as float.
///
/// Input and output: tile lists over the same rectangle; they may share tiles. The output's first row and row
/// step choose the rows. Only an output tile's done flag keeps it from being written. When the inputs are
/// constant the chain is evaluated once and the outputs are filled and marked constant; in the one-component
/// paths each component decides for itself, in the pixel path all existing inputs must be constant.
/// Result: 1, also when interrupted; 0 without a function.
/// Ownership: the chain stays the caller's and must outlive the engine; the engine owns its tables, builds
/// each once on first use and keeps it. Change a chain, and it takes a new engine. Threads: tables are built
/// under a lock, by the row form, and then shared. Cost: one table look-up per value in the table paths; see
/// docs/performance.md.
class RU_API RU_PixelEngine : public RU_PixelFactories<RU_PixelEngineOp>
{
public:
    explicit RU_PixelEngine(RU_PixelFunction* chain = nullptr) : function(chain) {}
    RU_PixelEngine(const RU_PixelEngine&) = delete;
    RU_PixelEngine& operator=(const RU_PixelEngine&) = delete;
    ~RU_PixelEngine() override;

    RU_PixelFunction* function; ///< head of the chain

    /// The table for a pair of points, building it when there is none.
    ru_lut8* buildLUT8(unsigned int black, unsigned int white);
    ru_lut16* buildLUT16(unsigned int black, unsigned int white);
    ru_lut16fp* buildLUT16FP();

private:
    UT_Lock lut8Lock_;
    UT_Lock lut16Lock_;
    UT_Lock lut16fpLock_;
    UT_PtrArray<ru_lut8*> lut8s_;
    UT_PtrArray<ru_lut16*> lut16s_;
    std::atomic<ru_lut16fp*> lut16fp_ = nullptr;
};
