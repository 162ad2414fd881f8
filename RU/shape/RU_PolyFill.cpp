#include <RU/shape/RU_PolyFill.h>

#include <RU/framework/ru_Tiles.h>
#include <RU/shape/ru_FillShapes.h>
#include <RU/shape/ru_FillWriter.h>
#include <UT/UT_Lock.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <mutex>
#include <new>
#include <utility>

namespace {

/// Blocks are what is drawn at once; larger buckets are cut into several.
constexpr int64_t blockWidth = 512, blockHeight = 128;
static_assert(blockWidth * ru_mostSamples <= ru_mostColumns);

/// What one thread draws with.
struct Workspace
{
    void begin(const ru_FillBlock& block, int nx, int ny)
    {
        const int64_t words = (block.width + 63) / 64;
        masks.resize(static_cast<size_t>(words * 64 * block.height + 1));
        touched.assign(static_cast<size_t>(words * block.height + 1), 0);
        full.assign(touched.size(), 0);
        coverage = {masks.data(), touched.data(), full.data(), words, nx, ny};
    }
    bool isEmpty() const
    {
        const auto any = [](uint64_t word) { return word != 0; };
        return std::none_of(touched.begin(), touched.end(), any) &&
               std::none_of(full.begin(), full.end(), any);
    }
    uint64_t maskAt(int64_t row, int64_t column) const
    {
        const auto word = static_cast<size_t>(row * coverage.words + column / 64);
        const uint64_t bit = uint64_t{1} << (column % 64);
        if ((full[word] & bit) != 0)
            return ~uint64_t{0} >> (64 - coverage.nx * coverage.ny);
        return (touched[word] & bit) != 0 ? masks[word * 64 + static_cast<size_t>(column % 64)] : 0;
    }

    std::vector<uint64_t> masks, touched, full;
    ru_Coverage coverage = {};
    std::vector<float> corners; ///< of the feather, with one more in each direction than pixels
    bool feathered = false;
    ru_TriangleSpans spans;
    ru_FillOutlines::Scratch outlines;
};

/// Which part of a tile list a block is, and of what values.
struct Drawing
{
    const Workspace& work;
    const ru_FillBlock& block;
    int64_t left, top; ///< of the block in the tiles
    RU_FeatherDropoff dropoff;
    bool shaped; ///< by the drop-off
};

/// Calls run(from, to) for each run of bits that are set in a row of words.
template <class Run>
void eachRun(const uint64_t* words, int64_t count, Run run)
{
    int64_t from = -1; // of a run that has begun
    for (int64_t w = 0; w < count; ++w) {
        int bit = 0;
        while (bit < 64) {
            const uint64_t rest = words[w] >> bit;
            if (from < 0) {
                if (rest == 0)
                    break;
                bit += std::countr_zero(rest);
                from = 64 * w + bit;
            } else {
                bit += std::countr_one(rest);
                if (bit >= 64)
                    break;
                run(std::exchange(from, -1), 64 * w + bit);
            }
        }
    }
    if (from >= 0)
        run(from, 64 * count);
}

/// Pixels that feathers do not reach: there are as many values as counts of samples.
template <class T, bool FullRange>
void drawCovered(const ru_FillWriter<T, FullRange>& writer, const Drawing& drawing, float colour, T* data,
                 int64_t stride)
{
    const ru_Coverage& coverage = drawing.work.coverage;
    const int samples = coverage.nx * coverage.ny;
    float values[ru_mostSamples + 1];
    T codes[ru_mostSamples + 1];
    for (int n = 0; n <= samples; ++n) {
        const float covered =
            n == samples ? 1.0f : static_cast<float>(n) * (1.0f / static_cast<float>(samples));
        values[n] = (drawing.shaped ? RUfeatherDropoff(drawing.dropoff, covered) : covered) * colour;
    }
    writer.convert(values, codes, samples + 1);
    const auto last = writer.lastBelow(values[samples]);
    for (int64_t row = 0; row < drawing.block.height; ++row) {
        T* const out = data + row * stride;
        const uint64_t* const full = coverage.full + row * coverage.words;
        for (int64_t word = 0; word < coverage.words; ++word) {
            const int64_t index = row * coverage.words + word;
            for (uint64_t part = coverage.touched[index] & ~full[word]; part != 0; part &= part - 1) {
                const int bit = std::countr_zero(part);
                const int n = std::popcount(coverage.masks[64 * index + bit]);
                T& code = out[64 * word + bit];
                if (n != 0 && writer.isBelow(code, values[n]))
                    code = codes[n];
            }
        }
        if (last)
            eachRun(full, coverage.words, [&](int64_t from, int64_t to) {
                writer.raiseRow(out + from, to - from, *last, codes[samples]);
            });
    }
}

/// Pixels with ramps.
template <class T, bool FullRange>
void drawFeathered(const ru_FillWriter<T, FullRange>& writer, const Drawing& drawing, float colour, T* data,
                   int64_t stride)
{
    const Workspace& work = drawing.work;
    const int samples = work.coverage.nx * work.coverage.ny;
    const float share = 1.0f / static_cast<float>(samples), whole = RUfeatherDropoff(drawing.dropoff, 1.0f);
    std::array<float, blockWidth> values;
    std::array<T, blockWidth> codes;
    for (int64_t row = 0; row < drawing.block.height; ++row) {
        const float* const above = work.corners.data() + row * (drawing.block.width + 1);
        const float* const below = above + drawing.block.width + 1;
        for (int64_t x = 0; x < drawing.block.width; ++x) {
            const int n = std::popcount(work.maskAt(row, x));
            const float sum = above[x] + above[x + 1] + below[x] + below[x + 1];
            const float covered = n == samples ? 1.0f : static_cast<float>(n) * share;
            const float value = (1.0f - covered) * (sum * 0.25f) + covered;
            values[static_cast<size_t>(x)] = n == 0 && sum == 0.0f ? std::numeric_limits<float>::quiet_NaN()
                                             : value >= 1.0f
                                                 ? whole * colour
                                                 : RUfeatherDropoff(drawing.dropoff, value) * colour;
        }
        writer.convert(values.data(), codes.data(), drawing.block.width);
        T* const out = data + row * stride;
        for (int64_t x = 0; x < drawing.block.width; ++x)
            if (writer.isBelow(out[x], values[static_cast<size_t>(x)]))
                out[x] = codes[static_cast<size_t>(x)];
    }
}

template <class T, bool FullRange>
void draw(TIL_TileList& tiles, const Drawing& drawing, const UT_Vector4& colour)
{
    const ru_FillWriter<T, FullRange> writer(tiles);
    const float components[4] = {colour.x, colour.y, colour.z, colour.w};
    const int64_t stride = tiles.width();
    for (int c = 0; c < 4; ++c) {
        T* const data = ru_outputData<T>(tiles, c);
        if (data == nullptr)
            continue;
        T* const first = data + drawing.top * stride + drawing.left;
        if (drawing.work.feathered)
            drawFeathered(writer, drawing, components[c], first, stride);
        else
            drawCovered(writer, drawing, components[c], first, stride);
    }
}

} // namespace

/// All that a fill has.
class RU_PolyFill::Fill
{
public:
    explicit Fill(RU_PolyFillMethod method) : shapes(method != RU_POLYFILL_NORMAL) {}

    void setDropoff(RU_FeatherDropoff dropoff) { dropoff_ = dropoff; }

    /// Changes what is drawn; nothing is any more, until the geometry is cleared, if there is no memory.
    template <class Change>
    void change(Change change)
    try {
        change();
    } catch (const std::bad_alloc&) {
        complete_ = false;
    }

    void clear()
    {
        shapes.clear();
        complete_ = true;
    }

    void scan(TIL_TileList& tiles, int64_t bx, int64_t by, const UT_Vector4& colour)
    {
        const ru_FillBuckets& buckets = shapes.buckets();
        if (bx < 0 || by < 0 || bx >= buckets.across || by >= buckets.down) {
            tiles.clearToBlack(true);
            return;
        }
        if (!complete_)
            return;
        static thread_local Workspace work; // of all fills: a picture may need many at a time
        const int64_t left = bx * buckets.width, top = by * buckets.height;
        const int64_t width = std::min({buckets.width, shapes.width() - left, int64_t{tiles.width()}});
        const int64_t height = std::min({buckets.height, shapes.height() - top, int64_t{tiles.height()}});
        for (int64_t y = 0; y < height; y += blockHeight)
            for (int64_t x = 0; x < width; x += blockWidth) {
                const ru_FillBlock block(shapes.samples(), left + x, top + y, std::min(blockWidth, width - x),
                                         std::min(blockHeight, height - y));
                scan(block, by * buckets.across + bx, work);
                if (work.feathered || !work.isEmpty())
                    write(tiles, {work, block, x, y, dropoff_, shapes.areFeathered()}, colour);
            }
    }

    /// The pattern of samples, if nobody has set one yet.
    void ensureSampling()
    {
        const std::lock_guard guard(lock_);
        if (!shapes.isSampled())
            change([&] { shapes.setSampling(8, 8); });
    }

    ru_FillShapes shapes;

private:
    void scan(const ru_FillBlock& block, int64_t bucket, Workspace& work) const
    {
        const ru_FillGrid& grid = shapes.samples();
        const ru_FillKernels& kernels = ru_fillRows();
        work.begin(block, grid.nx, grid.ny);
        for (const int32_t index : shapes.trianglesIn(bucket))
            if (work.spans.find(grid, block, ru_TriangleEdges(shapes.triangle(index))))
                kernels.cover(work.coverage, work.spans.firstRow(), work.spans.pixelRows(),
                              work.spans.begin(), work.spans.end());
        shapes.outlines().cover(grid, block, bucket, work.coverage, work.outlines);
        work.feathered = shapes.areFeathered() && !shapes.feathersIn(bucket).empty();
        if (work.feathered)
            shapes.ramps(block, bucket, work.spans, work.corners);
    }

    static void write(TIL_TileList& tiles, const Drawing& drawing, const UT_Vector4& colour)
    {
        const bool full =
            !tiles.blackWhitePoints ||
            (tiles.blackPoint == 0 && tiles.whitePoint == PXLfullWhite(tiles.plane->formatCode));
        PXLwithElement(tiles.plane->formatCode, [&]<class T>() {
            if (std::is_integral_v<T> && !full)
                draw<T, false>(tiles, drawing, colour);
            else
                draw<T, true>(tiles, drawing, colour);
        });
    }

    RU_FeatherDropoff dropoff_ = RU_DROPOFF_LINEAR;
    bool complete_ = true;
    UT_Lock lock_;
};

RU_PolyFill::RU_PolyFill(RU_PolyFillMethod method, int) : fill_(std::make_unique<Fill>(method)) {}

RU_PolyFill::~RU_PolyFill() = default;

void RU_PolyFill::initialize(const GEO_Detail* detail)
{
    clearGeometry();
    append(detail);
}

void RU_PolyFill::append(const GEO_Detail* detail)
{
    if (detail != nullptr)
        fill_->change([&] { fill_->shapes.append(*detail); });
}

void RU_PolyFill::initializeFeather(const GEO_Detail* detail)
{
    if (detail != nullptr)
        fill_->change([&] { fill_->shapes.appendFeather(*detail); });
}

void RU_PolyFill::addTriangle(float x0, float x1, float x2, float y0, float y1, float y2)
{
    fill_->change([&] { fill_->shapes.add({{{{x0, y0}, {x1, y1}, {x2, y2}}}}); });
}

void RU_PolyFill::addFeatherTriangle(float x0, float x1, float x2, float y0, float y1, float y2, int quad)
{
    fill_->change([&] { fill_->shapes.addFeather({{{{x0, y0}, {x1, y1}, {x2, y2}}}, quad}); });
}

void RU_PolyFill::clearGeometry()
{
    fill_->clear();
}

void RU_PolyFill::setSampling(int nx, int ny)
{
    fill_->change([&] { fill_->shapes.setSampling(nx, ny); });
}

void RU_PolyFill::setDropoff(RU_FeatherDropoff dropoff)
{
    fill_->setDropoff(dropoff);
}

void RU_PolyFill::setDropoff(int n, float (*dropoff)(float))
{
    for (int i = 0; i < n && dropoff != nullptr; ++i)
        dropoff(static_cast<float>(i) / static_cast<float>(n));
    fill_->shapes.setMargin(std::max(n, 0));
}

void RU_PolyFill::setResolution(int width, int height, int tileWidth, int tileHeight)
{
    fill_->change([&] { fill_->shapes.setResolution(width, height, tileWidth, tileHeight); });
}

void RU_PolyFill::doSorting()
{
    fill_->change([&] { fill_->shapes.sort(); });
}

void RU_PolyFill::scanConvert(TIL_TileList* tiles, int bx, int by, const UT_Vector4& colour, int)
try {
    if (tiles == nullptr || tiles->plane == nullptr)
        return;
    fill_->ensureSampling();
    fill_->scan(*tiles, bx, by, colour);
} catch (const std::bad_alloc&) {
    return; // what is missing is not drawn
}
