#pragma once

#include <RU/framework/RU_Factories.h>

class RU_PixelFunction;
template <class T, bool FullRange>
class RU_GPUPixelEngineOp;

extern template class RU_API RU_PixelFactories<RU_GPUPixelEngineOp>;

/// Runs a chain of pixel functions over tiles on the GPU, as one program made of the functions' shaders.
///
/// Departures from the common rules, all of them deliberate:
/// - Codes span their full range whatever the black and white points are; all rows are computed whatever the
///   first row and the row step are; NaN is what the GPU makes of it.
/// - Only an output tile's done flag keeps it from being written. A tile that was written is not constant.
/// - A function without any component in its scope runs on all. Absent components start at 0. The outputs take
///   the results' components one after the other: without a red one, green gets what red would have got.
/// - An error of the computation is printed on the standard error stream, once per call, and the outputs stay
///   as they were. Without OpenGL, or where results cannot be read back, nothing is printed; ask REfindGPU() first and
///   RElastGPUError() afterwards.
///
/// Input and output: tile lists over the same rectangle; they may share tiles. Without a function the input is
/// read and written again.
/// Result: 1, also after an error.
/// Ownership: the chain stays the caller's and must outlive the engine; copies share it.
/// Threads: any number may run one chain at once; building the shader's text locks the chain.
/// Cost: see RU_GPUTiming. A program is compiled when its text is first seen.
class RU_API RU_GPUPixelEngine : public RU_PixelFactories<RU_GPUPixelEngineOp>
{
public:
    explicit RU_GPUPixelEngine(RU_PixelFunction* chain = nullptr) : function(chain) {}
    RU_GPUPixelEngine(const RU_GPUPixelEngine&) = default;
    RU_GPUPixelEngine& operator=(const RU_GPUPixelEngine&) = default;
    ~RU_GPUPixelEngine() override;

    RU_PixelFunction* function; ///< head of the chain
};
