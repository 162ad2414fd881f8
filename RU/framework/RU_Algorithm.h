#pragma once

#include <PXL/PXL_Format.h>
#include <RU/framework/RU_Operation.h>
#include <TIL/TIL_TileList.h>

/// Columns and rows around a rectangle: to the left of x1, to the right of x2, above y2, below y1.
struct RU_Border
{
    int left = 0, right = 0, top = 0, bottom = 0;
};

/// The base of every raster algorithm that a host runs piece by piece over its images.
///
/// The host sets the algorithm's parameters, calls initialize() once per cook, and then one entry point for
/// each tile list or region of output: generate(), pixelAdjust(), filter() or binary(). The entry point asks
/// the algorithm's factory for an operation object made for the output's format and range, runs it and
/// deletes it.
///
/// What holds for all algorithms, so that their own headers need not repeat it:
///
/// - Shape. A tile list covers an inclusive rectangle; its tiles and region components are planes of
///   elements, x fastest. Up to four components; a null tile or a component without data is skipped.
/// - Units. Codes are read to float (32-bit integers to double), computed, and written back:
///
///       full range:               v = code / white          code = floor(v * white + 0.5)
///       black and white point:    v = (code - black) * s    code = floor(v * (white - black) + black + 0.5)
///
///   with s = 1 / (white - black), or 1 where the points are equal: then every result is the black code.
///   Codes are clamped to their type, NaN becomes code 0. Float and half are taken as they are and never
///   clamped; a NaN that is computed is the one quiet NaN 7fc00000 (half 7e00), copies keep their bits. Which
///   of the two holds, and the points, come from the output alone.
/// - Borders. A filter's input region reaches around the output by exactly border(): its rows are taken to be
///   that long. Builds with RU_CHECKED compare the bounds and stop the program when they differ.
/// - Null and constant tiles. An output tile that is null, constant or done is not written. A null input, or
///   component of it, is skipped. A constant input is read at its first processed pixel only.
/// - Result. 1 when work was done, 0 when nothing was: no output or an output without a plane, a format code
///   above 4, a family that the algorithm does not override, or no memory. Nothing is thrown and nothing is
///   printed.
/// - Ownership. The host owns algorithms, images and whatever an algorithm points at.
/// - Threads. Up to 8 threads may call the entry points of one object at once, each with a thread index of
///   its own, 0 to 7, or a negative one when it has none. Parameters must not change meanwhile.
/// - Cancelling. Long loops ask interruptCheck() once per row and return early, leaving the rest unwritten.
/// - Cost. Results are the same bytes for every split into tiles, every thread count and every instruction
///   set, so a host may choose these for speed alone.
class RU_API RU_Algorithm
{
public:
    RU_Algorithm() = default;
    RU_Algorithm(const RU_Algorithm&) = default;
    RU_Algorithm& operator=(const RU_Algorithm&) = default;
    virtual ~RU_Algorithm();

    /// Called by the host once per cook, before any entry point; 1 on success.
    virtual int initialize(float time);

    // The factories: per family five for the full range, then five for black and white points,
    //     virtual RU_GeneratorOp<fpreal16, true>* allocateGenerator(fpreal16);
    //     virtual RU_GeneratorOp<fpreal16, false>* allocateGenerator(fpreal16, int);
    // and so on. The arguments only select the overload; the int is always 0. A null result means that the
    // algorithm does not do this. Algorithms override them through RU_Factories.h.
#define RU_DECLARE_FULL(CODE, T, WHITE, NAME, FAMILY) virtual RU_##FAMILY##Op<T, true>* allocate##FAMILY(T);
#define RU_DECLARE_POINTS(CODE, T, WHITE, NAME, FAMILY)                                                      \
    virtual RU_##FAMILY##Op<T, false>* allocate##FAMILY(T, int);
#define RU_DECLARE_FACTORIES(FAMILY)                                                                         \
    PXL_FOR_EACH_FORMAT(RU_DECLARE_FULL, FAMILY)                                                             \
    PXL_FOR_EACH_FORMAT(RU_DECLARE_POINTS, FAMILY)

    RU_DECLARE_FACTORIES(Generator)
    RU_DECLARE_FACTORIES(Pixel)
    RU_DECLARE_FACTORIES(Filter)
    RU_DECLARE_FACTORIES(Binary)

    /// What a filter's input has around the output, and no more; none unless a filter says so.
    virtual RU_Border border() const;

#undef RU_DECLARE_FACTORIES
#undef RU_DECLARE_POINTS
#undef RU_DECLARE_FULL

    // The entry points. `data` is the host's token for the interrupt callback, or null; `thread` the index of
    // the calling thread; `time` and `context` reach the operation unchanged.
    int generate(TIL_TileList* out, float time, void* data, int thread, void* context);
    int pixelAdjust(TIL_TileList* out, const TIL_TileList* in, float time, void* data, int thread,
                    void* context);
    int filter(TIL_TileList* out, const TIL_Region* in, float time, void* data, int thread, void* context);
    int filter(TIL_Region* out, const TIL_Region* in, float time, void* data, int thread, void* context);
    int binary(TIL_TileList* out, const TIL_Region* in1, const TIL_Region* in2, float time, void* data,
               int thread, void* context);
    int binary(TIL_Region* out, const TIL_Region* in1, const TIL_Region* in2, float time, void* data,
               int thread, void* context);

    /// Sets the function by which the host says whether a running call, known by its token and its thread's
    /// index, is to stop. To be called before any entry point runs; null switches the checks off.
    static void setInterruptCallback(bool (*callback)(void* data, int thread));

    /// True when the host wants the call that runs on `thread` to stop. Cheap enough for once per row.
    static bool interruptCheck(int thread);

private:
    class InterruptScope;
    template <class Out, class Allocate, class Run>
    static int run(const Out* out, void* data, int thread, Allocate allocate, Run work);

    static constexpr int maxThreads = 8;
    static bool (*copInterruptCheck)(void*, int);
    static void* interruptData[maxThreads]; ///< by thread index; deliberately never tested against the size
};
