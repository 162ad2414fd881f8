#pragma once

#include <RU/framework/RU_Factories.h>
#include <UT/UT_Lock.h>
#include <UT/UT_PtrArray.h>

#include <atomic>
#include <cstdint>

class RU_PixelFunction;
template <class T, bool FullRange>
class RU_PixelEngineOp;

/// Results by code, one table per component; all four pointers are equal when the chain treats them alike.
template <class T>
struct ru_tables
{
    ru_tables() = default;
    ru_tables(const ru_tables&) = delete;
    ru_tables& operator=(const ru_tables&) = delete;
    ~ru_tables()
    {
        const bool shared = table[1] == table[0];
        for (int c = 0; c < (shared ? 1 : 4); ++c)
            delete[] table[c];
    }

    T* table[4] = {};
};

/// Tables for 8 bits, and the points that they were asked for.
struct ru_lut8 : ru_tables<unsigned char>
{
    unsigned int black = 0;
    unsigned int white = 0;
};

/// The same for 16 bits.
struct ru_lut16 : ru_tables<unsigned short>
{
    unsigned int black = 0;
    unsigned int white = 0;
};

/// Tables for halves, by bit pattern.
struct ru_lut16fp : ru_tables<fpreal16>
{
    std::atomic<bool> ready = false;
};

/// Values by code, or by the bit pattern of a half: what the functions of single values make of it with which
/// a chain begins that then looks at several components.
struct ru_leadingTables : ru_tables<float>
{
    unsigned char format = 0;
    unsigned int black = 0;
    unsigned int white = 0;
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
/// Chains that need all components of a pixel are evaluated pixel by pixel in every format. In 8 and 16 bits
/// and halves their leading functions of single values, unless these are mere lines and limits, go through
/// tables of floats, which change no bit of the results and keep infinities and NaN.
///
/// Departures from the common rules, all of them deliberate:
/// - 8-bit tables span the full range also when black and white points are in use; the pixel path and
///   constant tiles honour them.
/// - A full-range 16-bit table of a chain that treats components differently tops out at code 65355.
/// - 32-bit codes between points are scaled by a float 1 / (white - black), and evaluated as float.
/// - Only an output tile's done flag keeps it from being written, so that a constant tile can be adjusted in
///   place.
/// - In the pixel path an output without an input is written too: values that are absent start at 0.
///
/// Input and output: tile lists over the same rectangle; they may share tiles. The output's first row and
/// row step choose the rows.
/// Constant tiles: where the input is constant the chain is evaluated once, and the output is filled and
/// marked constant. One-component chains decide that tile by tile; for the others all existing inputs must
/// be constant. The code goes through the common rules, never through a table, so that it may differ from
/// that of a varying tile wherever a table departs from them.
/// Without a function the codes are copied as they are; tables are then those of a chain that changes nothing.
/// Result: 1, also when interrupted.
/// Ownership: the chain stays the caller's and must outlive the engine; the engine owns its tables, builds
/// each once on first use and keeps it. A changed chain takes a new engine.
/// Threads: tables are built under a lock, by the row form, and then shared.
/// Cost: one table look-up per value in the table paths; see docs/performance.md.
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
    /// The same for the leading functions; null where no table would help. Not for 32-bit formats.
    const ru_leadingTables* buildLeadingTables(unsigned char format, unsigned int black, unsigned int white);

private:
    RU_PixelFunction& chain() const; ///< the function, or one that changes nothing

    UT_Lock lut8Lock_;
    UT_Lock lut16Lock_;
    UT_Lock lut16fpLock_;
    UT_PtrArray<ru_lut8*> lut8s_;
    UT_PtrArray<ru_lut16*> lut16s_;
    UT_Lock leadingLock_;
    UT_PtrArray<ru_leadingTables*> leading_;
    std::atomic<ru_lut16fp*> lut16fp_ = nullptr;
};
