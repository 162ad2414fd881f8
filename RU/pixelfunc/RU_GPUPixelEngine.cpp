#include <RU/pixelfunc/RU_GPUPixelEngine.h>

#include <RU/framework/ru_Tiles.h>
#include <RU/gpgpu/ru_OutputTiles.h>
#include <RU/pixelfunc/RU_GPUTiming.h>
#include <RU/pixelfunc/RU_PixelFunction.h>
#include <UT/UT_WorkBuffer.h>

#include <cstdio>
#include <vector>

namespace {

/// The tiles of one call.
template <class T>
class Tiles
{
public:
    Tiles(const TIL_TileList& out, const TIL_TileList* in) : out_(out), rows_(out)
    {
        for (int c = 0; c < 4; ++c) {
            if (TIL_Tile* tile = out.tiles[c]; tile != nullptr && !tile->isDone())
                output_[c] = tile;
            input_[c] = in != nullptr && hasData(in->tiles[c]) ? in->tiles[c] : nullptr;
            inputs_ += input_[c] != nullptr ? 1 : 0;
        }
    }

    bool hasInput(int c) const { return input_[c] != nullptr; }
    int inputs() const { return inputs_; }

    bool nothingToWrite() const
    {
        return rows_.empty() || (!output_[0] && !output_[1] && !output_[2] && !output_[3]);
    }

    /// Hands the tiles over and adds to the program what writes the outputs.
    void bind(RE_OGLComputeGPU& gpu, UT_WorkBuffer& program) const
    {
        const auto width = static_cast<int>(rows_.width);
        const auto height = static_cast<int>(rows_.height);
        for (int c = 0; c < 4; ++c)
            if (hasInput(c))
                gpu.setArray2D(ru_componentNames[c], type, 1, width, height, inputData(c).pixels);
        int written = 0;
        for (int c = 0; c < 4; ++c)
            if (ru_setOutputTile(gpu, out_, c))
                program.append("OUT_", ru_componentNames[c], "( value.", ru_componentLetters[written++],
                               " );\n");
    }

    void markWritten() const
    {
        for (TIL_Tile* tile : output_)
            if (tile != nullptr)
                tile->setConstantTile(false);
    }

private:
    static constexpr RE_GPUType type = REconvertPXLType(PXL_FormatOf<T>::code);

    struct Pixels
    {
        std::vector<T> filled;
        const T* pixels;
    };

    static T* dataOf(TIL_Tile& tile)
    {
        T* data = nullptr;
        tile.getImageData(data);
        return data;
    }

    static bool hasData(TIL_Tile* tile) { return tile != nullptr && dataOf(*tile) != nullptr; }

    /// A constant tile says what its pixels are at the first processed one only.
    Pixels inputData(int c) const
    {
        const T* data = dataOf(*input_[c]);
        if (!input_[c]->isConstant())
            return {{}, data};
        const auto count = static_cast<size_t>(rows_.width * rows_.height);
        Pixels constant{std::vector<T>(count, data[rows_.offset(rows_.first)]), nullptr};
        constant.pixels = constant.filled.data();
        return constant;
    }

    const TIL_TileList& out_;
    ru_TileRows rows_;
    TIL_Tile* input_[4] = {};
    TIL_Tile* output_[4] = {};
    int inputs_ = 0;
};

/// Runs the program; true when the outputs were written.
bool compute(RE_OGLComputeGPU& gpu)
{
    RU_GPUTiming& timing = RU_GPUTiming::compute();
    timing.start();
    UT_String error;
    if (!gpu.compute(error, true)) {
        std::fprintf(stderr, "%s\n", error.buffer());
        return false;
    }
    timing.stop();
    timing.start();
    const bool written = gpu.getResults();
    timing.stop();
    return written;
}

} // namespace

/// The engine's operation: one program over all pixels of the output.
template <class T, bool FullRange>
class RU_GPUPixelEngineOp : public RU_PixelOp<T, FullRange>
{
public:
    using RU_PixelOp<T, FullRange>::RU_PixelOp;

    int pixelAdjust(TIL_TileList* out, const TIL_TileList* in, float, int, void*) override
    {
        const Tiles<T> tiles(*out, in);
        if (tiles.nothingToWrite())
            return 1;
        const std::unique_ptr<RE_OGLComputeGPU> gpu = RE_OGLComputeGPU::create();
        UT_String functions, statements;
        const int numComps = tiles.inputs();
        RU_GPUTiming::buildShader().start();
        chain().buildShader(gpu.get(), numComps, functions, statements);
        RU_GPUTiming::buildShader().stop();

        UT_WorkBuffer program;
        program.append("VEC4 value;\n", functions.view(), "\nvalue = VEC4( ");
        for (int c = 0; c < 4; ++c)
            program.append(tiles.hasInput(c) ? "IN_" : "", tiles.hasInput(c) ? ru_componentNames[c] : "0.0f",
                           c < 3 ? ",\n\t " : ");\n\n");
        program.append(statements.view());
        gpu->setConstant("num_comps", RE_GPU_INT32, 1, &numComps, 1, false);
        tiles.bind(*gpu, program);
        if (gpu->setProgram("RU_GPUPixelEngine", program.buffer(), true) && compute(*gpu))
            tiles.markWritten();
        return 1;
    }

private:
    RU_PixelFunction& chain() const
    {
        static RU_PixelFunction unchanged;
        RU_PixelFunction* function = static_cast<RU_GPUPixelEngine*>(this->algorithm_)->function;
        return function != nullptr ? *function : unchanged;
    }
};

template class RU_PixelFactories<RU_GPUPixelEngineOp>;

RU_GPUPixelEngine::~RU_GPUPixelEngine() = default;
