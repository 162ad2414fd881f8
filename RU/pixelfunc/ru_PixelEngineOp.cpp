#include <RU/pixelfunc/ru_PixelEngineOp.h>

#include <RU/pixelfunc/ru_RowSteps.h>

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
    for (int64_t y = rows.first; y < rows.height; y += rows.step)
        std::fill_n(data + rows.offset(y), rows.width, code);
    tile.setConstantTile(true);
}

bool allConstant(const TIL_TileList& list)
{
    return std::all_of(std::begin(list.tiles), std::end(list.tiles),
                       [](const TIL_Tile* tile) { return tile == nullptr || tile->isConstant(); });
}

/// Calls visit(component, output tile, input tile) for the components that have both.
template <class Visit>
void eachPair(const TIL_TileList& out, const TIL_TileList& in, Visit visit)
{
    for (int c = 0; c < 4; ++c) {
        TIL_Tile* to = openTile(out, c);
        if (to != nullptr && in.tiles[c] != nullptr)
            visit(c, *to, *in.tiles[c]);
    }
}

bool hasVarying(const TIL_TileList& out, const TIL_TileList& in)
{
    bool found = false;
    eachPair(out, in, [&](int, TIL_Tile&, const TIL_Tile& from) { found = found || !from.isConstant(); });
    return found;
}

/// Varying tiles by `evaluator`, component by component.
template <class Rows>
void adjustRows(const TIL_TileList& out, const TIL_TileList& in, int thread, const Rows& evaluator)
{
    using T = typename Rows::Code;
    const ru_TileRows rows(out);
    bool running = true;
    eachPair(out, in, [&](int c, TIL_Tile& to, const TIL_Tile& from) {
        if (from.isConstant())
            return;
        running = running && rows.each(thread, [&](int64_t y) {
            to.setConstantTile(false);
            evaluator.evaluate(dataOf<T>(from) + rows.offset(y), dataOf<T>(to) + rows.offset(y), rows.width,
                               c);
        });
    });
}

template <class T>
constexpr bool hasLeadingTables = sizeof(T) <= 2;

/// Segments of pixels, as the chain sees them: a row of values per component, zeros where the input has
/// none. Float values are computed where the output has them. Constant inputs are read once, up front: the
/// output may be the same tile. With tables of what its leading functions make of the codes, the chain
/// begins behind these.
template <class T, bool FullRange>
class PixelRows
{
public:
    PixelRows(const RU_PixelFunction& chain, const TIL_TileList& out, const TIL_TileList& in,
              const ru_Range<T>& range, int64_t first, const ru_leadingTables* leading)
        : chain_(chain), rows_(range), leading_(leading)
    {
        for (int c = 0; c < 4; ++c) {
            if (TIL_Tile* tile = openTile(out, c))
                output_[c] = dataOf<T>(*tile);
            const TIL_Tile* tile = in.tiles[c];
            if (tile == nullptr)
                continue;
            input_[c] = dataOf<T>(*tile);
            isConstant_[c] = tile->isConstant();
            constant_[c] = *read(c, input_[c] + first, &constant_[c], 1);
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
                in[c] = read(c, input_[c] + offset, values_[c], count);
            }
        }
        if (leading_ != nullptr)
            chain_.pixelSteps().runRest(in, out, count);
        else
            chain_.processRows(in, out, count);
    }

    /// What evaluate() came to for a component.
    void write(T* codes, int component, int64_t count) const
    {
        rows_.write(values_[component], codes, count);
    }

private:
    /// `count` codes as values: in `scratch`, or where they are.
    const float* read(int c, const T* codes, float* scratch, int64_t count) const
    {
        if constexpr (hasLeadingTables<T>)
            if (leading_ != nullptr) {
                ru_lookUpFloats(leading_->table[c], codes, scratch, count);
                return scratch;
            }
        return rows_.read(codes, scratch, count);
    }

    bool isReadForAnother(int c) const
    {
        for (int other = 0; other < 4; ++other)
            if (other != c && input_[other] == output_[c])
                return true;
        return false;
    }

    const RU_PixelFunction& chain_;
    ru_FloatRows<T, FullRange> rows_;
    const ru_leadingTables* leading_;
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
int RU_PixelEngineOp<T, FullRange>::pixelAdjust(TIL_TileList* out, const TIL_TileList* given, float,
                                                int thread, void*)
{
    static const TIL_TileList none;
    const TIL_TileList& in = given != nullptr ? *given : none;
    if (ru_TileRows(*out).empty())
        return 1;
    const RU_PixelFunction* function = engine().function;
    if (function != nullptr && function->areAllComponentsNeeded()) {
        adjustPixels(*out, in, thread);
        return 1;
    }
    adjustConstants(*out, in);
    if (function == nullptr)
        adjustRows(*out, in, thread, ru_CopiedRows<T>());
    else if (hasVarying(*out, in))
        adjustRows(*out, in, thread, componentRows(*out));
    return 1;
}

template <class T, bool FullRange>
auto RU_PixelEngineOp<T, FullRange>::chainRows(const TIL_TileList& out) const -> ru_ChainRows<T, FullRange>
{
    engine().function->buildPixelEngine();
    const auto range = ru_engineRange<T, FullRange>(out.blackPoint, out.whitePoint);
    return ru_ChainRows<T, FullRange>(*engine().function, range);
}

template <class T, bool FullRange>
auto RU_PixelEngineOp<T, FullRange>::componentRows(const TIL_TileList& out) const
{
    const unsigned int black = FullRange ? 0 : out.blackPoint;
    const unsigned int white = FullRange ? static_cast<unsigned int>(PXL_FormatOf<T>::white) : out.whitePoint;
    if constexpr (std::is_same_v<T, unsigned char>)
        return ru_TableRows<T>(engine().buildLUT8(black, white)->table);
    else if constexpr (std::is_same_v<T, unsigned short>)
        return ru_TableRows<T>(engine().buildLUT16(black, white)->table);
    else if constexpr (std::is_same_v<T, fpreal16> && FullRange)
        return ru_TableRows<T>(engine().buildLUT16FP()->table);
    else
        return chainRows(out);
}

template <class T, bool FullRange>
const ru_leadingTables* RU_PixelEngineOp<T, FullRange>::leadingTables(const TIL_TileList& out) const
{
    if constexpr (!hasLeadingTables<T>)
        return nullptr;
    else if constexpr (FullRange || !std::is_integral_v<T>)
        return engine().buildLeadingTables(PXL_FormatOf<T>::code, 0,
                                           static_cast<unsigned int>(PXL_FormatOf<T>::white));
    else
        return engine().buildLeadingTables(PXL_FormatOf<T>::code, out.blackPoint, out.whitePoint);
}

template <class T, bool FullRange>
void RU_PixelEngineOp<T, FullRange>::adjustConstants(const TIL_TileList& out, const TIL_TileList& in) const
{
    const ru_TileRows rows(out);
    eachPair(out, in, [&](int c, TIL_Tile& to, const TIL_Tile& from) {
        if (!from.isConstant())
            return;
        T code = dataOf<T>(from)[rows.offset(rows.first)];
        if (engine().function != nullptr)
            chainRows(out).evaluate(&code, &code, 1, c);
        fillConstant(to, rows, code);
    });
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
    const bool constant = allConstant(in);
    PixelRows<T, FullRange> pixels(chain, out, in, range, first, constant ? nullptr : leadingTables(out));
    if (constant) {
        pixels.evaluate(first, 1);
        for (int c = 0; c < 4; ++c)
            if (TIL_Tile* tile = openTile(out, c)) {
                T code;
                pixels.write(&code, c, 1);
                fillConstant(*tile, rows, code);
            }
        return;
    }
    rows.each(thread, [&](int64_t y) {
        for (int64_t x = 0; x < rows.width; x += ru_chunk) {
            const int64_t count = std::min(ru_chunk, rows.width - x);
            pixels.evaluate(rows.offset(y) + x, count);
            for (int c = 0; c < 4; ++c)
                if (TIL_Tile* tile = openTile(out, c)) {
                    tile->setConstantTile(false);
                    pixels.write(dataOf<T>(*tile) + rows.offset(y) + x, c, count);
                }
        }
    });
}

#define RU_INSTANTIATE(CODE, T, WHITE, NAME)                                                                 \
    template class RU_PixelEngineOp<T, true>;                                                                \
    template class RU_PixelEngineOp<T, false>;
PXL_FOR_EACH_FORMAT(RU_INSTANTIATE)
#undef RU_INSTANTIATE
