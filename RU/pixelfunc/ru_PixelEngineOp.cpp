#include <RU/pixelfunc/ru_PixelEngineOp.h>

#include <algorithm>
#include <iterator>

namespace {

/// The output tile of component `c`, null when it is done already. The engine writes constant tiles too, so
/// that it can run in place over one.
TIL_Tile* openTile(const TIL_TileList& out, int c)
{
    TIL_Tile* tile = out.tiles[c];
    return tile != nullptr && !tile->isDone() ? tile : nullptr;
}

template <class T>
T* dataOf(TIL_Tile& tile)
{
    T* data = nullptr;
    tile.getImageData(data);
    return data;
}

template <class T>
const T* dataOf(const TIL_Tile& tile)
{
    const T* data = nullptr;
    tile.getImageData(data);
    return data;
}

template <class T>
void fillConstant(TIL_Tile& tile, const ru_TileRows& rows, T code)
{
    T* data = dataOf<T>(tile);
    for (int y = rows.first; y < rows.height; y += rows.step)
        std::fill_n(data + rows.offset(y), rows.width, code);
    tile.setConstantTile(true);
}

bool allConstant(const TIL_TileList& list)
{
    return std::all_of(std::begin(list.tiles), std::end(list.tiles),
                       [](const TIL_Tile* tile) { return tile == nullptr || tile->isConstant(); });
}

/// Stretches of pixels, as the chain sees them: a row of values per component, zeros where the input has
/// none. Float values are computed where the output has them. Constant inputs are read once, up front: the
/// output may be the same tile.
template <class T, bool FullRange>
class PixelRows
{
public:
    PixelRows(const RU_PixelFunction& chain, const TIL_TileList& out, const TIL_TileList& in,
              const ru_Range<T>& range, int64_t first)
        : chain_(chain), rows_(range)
    {
        for (int c = 0; c < 4; ++c) {
            if (TIL_Tile* tile = openTile(out, c))
                output_[c] = dataOf<T>(*tile);
            const TIL_Tile* tile = in.tiles[c];
            if (tile == nullptr)
                continue;
            input_[c] = dataOf<T>(*tile);
            isConstant_[c] = tile->isConstant();
            rows_.load(input_[c] + first, &constant_[c], 1);
        }
        for (int c = 0; c < 4; ++c)
            computesInOutput_[c] = input_[c] != nullptr && output_[c] != nullptr && !isReadForAnother(c);
    }

    /// Reads `count` pixels from `offset` on, at most ru_chunk, and runs the chain on them.
    void evaluate(int64_t offset, int64_t count)
    {
        const float* in[4] = {};
        float* out[4] = {};
        for (int c = 0; c < 4; ++c) {
            values_[c] = computesInOutput_[c] ? rows_.target(output_[c] + offset, scratch_[c]) : scratch_[c];
            if (input_[c] == nullptr)
                continue;
            out[c] = values_[c];
            if (isConstant_[c]) {
                std::fill_n(values_[c], count, constant_[c]);
                in[c] = values_[c];
            } else {
                in[c] = rows_.read(input_[c] + offset, values_[c], count);
            }
        }
        chain_.processRows(in, out, count);
    }

    /// What evaluate() came to for a component.
    void write(T* codes, int component, int64_t count) const
    {
        rows_.write(values_[component], codes, count);
    }

private:
    bool isReadForAnother(int c) const
    {
        for (int other = 0; other < 4; ++other)
            if (other != c && input_[other] == output_[c])
                return true;
        return false;
    }

    const RU_PixelFunction& chain_;
    ru_FloatRows<T, FullRange> rows_;
    const T* input_[4] = {};
    T* output_[4] = {};
    bool computesInOutput_[4] = {};
    bool isConstant_[4] = {};
    float constant_[4] = {};
    float* values_[4] = {};
    float scratch_[4][ru_chunk] = {};
};

} // namespace

template <class T, bool FullRange>
int RU_PixelEngineOp<T, FullRange>::pixelAdjust(TIL_TileList* out, const TIL_TileList* in, float, int thread,
                                                void*)
{
    if (engine().function == nullptr)
        return 0;
    if (ru_TileRows(*out).empty())
        return 1;
    if (engine().function->areAllComponentsNeeded())
        adjustPixels(*out, *in, thread);
    else
        adjustComponents(*out, *in, thread);
    return 1;
}

template <class T, bool FullRange>
auto RU_PixelEngineOp<T, FullRange>::componentRows(const TIL_TileList& out) const
{
    constexpr unsigned int fullWhite = PXL_FormatOf<T>::white;
    const unsigned int black = FullRange ? 0 : out.blackPoint;
    const unsigned int white = FullRange ? fullWhite : out.whitePoint;
    if constexpr (std::is_same_v<T, unsigned char>)
        return ru_TableRows<T>(engine().buildLUT8(black, white)->table);
    else if constexpr (std::is_same_v<T, unsigned short>)
        return ru_TableRows<T>(engine().buildLUT16(black, white)->table);
    else if constexpr (std::is_same_v<T, fpreal16> && FullRange)
        return ru_TableRows<T>(engine().buildLUT16FP()->table);
    else {
        engine().function->buildPixelEngine();
        return ru_ChainRows<T, FullRange>(*engine().function, ru_engineRange<T, FullRange>(black, white));
    }
}

template <class T, bool FullRange>
void RU_PixelEngineOp<T, FullRange>::adjustComponents(const TIL_TileList& out, const TIL_TileList& in,
                                                      int thread) const
{
    const auto evaluator = componentRows(out);
    const ru_TileRows rows(out);
    for (int c = 0; c < 4; ++c) {
        TIL_Tile* to = openTile(out, c);
        const TIL_Tile* from = in.tiles[c];
        if (to == nullptr || from == nullptr)
            continue;
        const T* source = dataOf<T>(*from);
        if (from->isConstant()) {
            T code;
            evaluator.evaluate(source + rows.offset(rows.first), &code, 1, c);
            fillConstant(*to, rows, code);
            continue;
        }
        T* target = dataOf<T>(*to);
        for (int y = rows.first; y < rows.height; y += rows.step) {
            if (RU_Algorithm::interruptCheck(thread))
                return;
            to->setConstantTile(false);
            evaluator.evaluate(source + rows.offset(y), target + rows.offset(y), rows.width, c);
        }
    }
}

template <class T, bool FullRange>
void RU_PixelEngineOp<T, FullRange>::adjustPixels(const TIL_TileList& out, const TIL_TileList& in,
                                                  int thread) const
{
    RU_PixelFunction& chain = *engine().function;
    chain.buildVectorEngine();
    const ru_TileRows rows(out);
    const int64_t first = rows.offset(rows.first);
    const auto range = ru_engineRange<T, FullRange>(out.blackPoint, out.whitePoint);
    PixelRows<T, FullRange> pixels(chain, out, in, range, first);
    if (allConstant(in)) {
        pixels.evaluate(first, 1);
        for (int c = 0; c < 4; ++c)
            if (TIL_Tile* tile = openTile(out, c)) {
                T code;
                pixels.write(&code, c, 1);
                fillConstant(*tile, rows, code);
            }
        return;
    }
    for (int y = rows.first; y < rows.height; y += rows.step) {
        if (RU_Algorithm::interruptCheck(thread))
            return;
        for (int64_t x = 0; x < rows.width; x += ru_chunk) {
            const int64_t count = std::min<int64_t>(ru_chunk, rows.width - x);
            pixels.evaluate(rows.offset(y) + x, count);
            for (int c = 0; c < 4; ++c)
                if (TIL_Tile* tile = openTile(out, c)) {
                    tile->setConstantTile(false);
                    pixels.write(dataOf<T>(*tile) + rows.offset(y) + x, c, count);
                }
        }
    }
}

#define RU_INSTANTIATE(CODE, T, WHITE, NAME)                                                                 \
    template class RU_PixelEngineOp<T, true>;                                                                \
    template class RU_PixelEngineOp<T, false>;
PXL_FOR_EACH_FORMAT(RU_INSTANTIATE)
#undef RU_INSTANTIATE
