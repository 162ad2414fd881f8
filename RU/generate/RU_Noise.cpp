#include <RU/generate/RU_Noise.h>

#include <RU/framework/ru_Convert.h>
#include <RU/framework/ru_Tiles.h>
#include <RU/generate/ru_NoiseRows.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using UT_noise::Place;

size_t sizeOf(int64_t count)
{
    return static_cast<size_t>(count);
}

double frequencyOf(float period, int octave)
{
    const double frequency = 1.0 / period;
    return std::isfinite(frequency) ? std::ldexp(frequency, octave) : 0.0;
}

/// One octave of a component's noise, over the columns of a piece.
class NoiseOctave
{
public:
    NoiseOctave(const RU_Noise& noise, uint32_t component, int octave, double weight, double time)
        : type_(noise.type), weight_(static_cast<float>(weight)), isFirst_(octave == 0),
          key_(UT_noise::hashed(static_cast<uint32_t>(octave),
                                UT_noise::hashed(component, UT_noise::mixed(noise.seed)))),
          x_{0.0, noise.offsetX, frequencyOf(noise.periodX, octave), UT_noise::displacement(key_, 0)},
          y_{0.0, noise.offsetY, frequencyOf(noise.periodY, octave), UT_noise::displacement(key_, 1)}
    {
        const ru_NoiseAxis z = {0.0, noise.offsetZ, frequencyOf(noise.periodTime, octave),
                                UT_noise::displacement(key_, 2)};
        z_ = UT_noise::placeOf(ru_NoiseAxis::at(z, time));
    }

    /// Finds the columns of cells of `count` pixels from column `first` of the image.
    void locate(int64_t first, int64_t count)
    {
        count_ = count;
        x_.first = static_cast<double>(first);
        std::vector<uint32_t> cells(sizeOf(count));
        fractions_.resize(sizeOf(count + ru_noiseSpare));
        ru_noiseRows().locate(x_, cells.data(), fractions_.data(), count);
        columns_.resize(sizeOf(count + ru_noiseSpare));
        const double distance =
            ru_NoiseAxis::at(x_, static_cast<double>(count - 1)) - ru_NoiseAxis::at(x_, 0.0);
        if (std::abs(distance) <= static_cast<double>(count))
            shareColumns(cells, distance < 0.0 ? cells.back() : cells.front());
        else
            ownColumns(cells);
        std::fill_n(columns_.end() - ru_noiseSpare, ru_noiseSpare, columns_[sizeOf(count - 1)]);
        cells_.resize(cells_.size() + sizeOf(ru_noiseSpare), cells_.back());
        arrays_.resize(cells_.size() * (isPerlin() ? 2 : 3 * UT_noise::points));
        vectors_.resize(isPerlin() ? cells_.size() * 3 * UT_noise::perlinPoints : 0);
        hasVectors_ = false;
    }

    /// Adds a row's noise.
    void add(double y, float* sum)
    {
        const ru_NoiseKernels& kernels = ru_noiseRows();
        const Place place = UT_noise::placeOf(ru_NoiseAxis::at(y_, y));
        const auto columns = static_cast<int64_t>(cells_.size());
        if (isPerlin()) {
            const UT_noise::PerlinRow line = UT_noise::perlinRow(place, z_, key_);
            if (!hasVectors_ || place.cell != vectorsCell_)
                kernels.perlinVectors(line.keys, cells_.data(), vectors_.data(), columns);
            hasVectors_ = true;
            vectorsCell_ = place.cell;
            kernels.perlinColumns(line, vectors_.data(), arrays_.data(), columns);
        } else {
            kernels.pointColumns(UT_noise::pointRow(place, z_, key_), cells_.data(), arrays_.data(), columns);
        }
        const auto row = type_ == UT_NOISE_SPARSE     ? kernels.sparse
                         : type_ == UT_NOISE_CELLULAR ? kernels.cellular
                                                      : kernels.perlin;
        row({columns_.data(), fractions_.data(), count_, arrays_.data(), columns, weight_, isFirst_}, sum);
    }

private:
    bool isPerlin() const { return type_ != UT_NOISE_SPARSE && type_ != UT_NOISE_CELLULAR; }
    /// Columns of cells that a pixel takes, and the first of them beside its own.
    uint32_t reach() const { return isPerlin() ? 2 : 3; }
    uint32_t before() const { return isPerlin() ? 0 : 1; }

    /// Pixels close together: all columns from the lowest to the highest.
    void shareColumns(const std::vector<uint32_t>& cells, uint32_t lowest)
    {
        uint32_t highest = 0;
        for (size_t i = 0; i < cells.size(); ++i) {
            columns_[i] = static_cast<int32_t>(cells[i] - lowest);
            highest = std::max(highest, cells[i] - lowest);
        }
        cells_.resize(highest + reach());
        for (size_t i = 0; i < cells_.size(); ++i)
            cells_[i] = lowest - before() + static_cast<uint32_t>(i);
    }

    /// Pixels far apart: each has its own.
    void ownColumns(const std::vector<uint32_t>& cells)
    {
        cells_.clear();
        for (size_t i = 0; i < cells.size(); ++i) {
            columns_[i] = static_cast<int32_t>(cells_.size());
            for (uint32_t k = 0; k < reach(); ++k)
                cells_.push_back(cells[i] - before() + k);
        }
    }

    UT_NoiseType type_;
    float weight_;
    bool isFirst_;
    uint32_t key_;
    ru_NoiseAxis x_, y_;
    Place z_;
    int64_t count_ = 0;
    std::vector<int32_t> columns_; ///< of each pixel
    std::vector<float> fractions_;
    std::vector<uint32_t> cells_; ///< of each column
    std::vector<float> arrays_;
    bool hasVectors_ = false;
    uint32_t vectorsCell_ = 0;   ///< whose y they have
    std::vector<float> vectors_; ///< of Perlin's columns
};

std::vector<NoiseOctave> octavesOf(const RU_Noise& noise, int component, double time)
{
    const int count = std::clamp(noise.turbulence, 1, RU_Noise::maxTurbulence);
    const double positive = noise.roughness > 0.0f ? noise.roughness : 0.0f; // NaN becomes 0
    const double factor = std::min(positive, 1.0);
    double weights[RU_Noise::maxTurbulence], weight = 1.0, squares = 0.0;
    for (int k = 0; k < count; ++k, weight *= factor) {
        weights[k] = weight;
        squares += weight * weight;
    }
    std::vector<NoiseOctave> octaves;
    octaves.reserve(sizeOf(count));
    for (int k = 0; k < count; ++k)
        octaves.emplace_back(noise, static_cast<uint32_t>(component), k, weights[k] / std::sqrt(squares),
                             time);
    return octaves;
}

/// The coordinate of a row of the image.
class NoiseRows
{
public:
    explicit NoiseRows(const TIL_TileList& list)
        : first_(list.y1), offset_(list.verticalOffset),
          scale_(list.verticalScale < 0.0f || list.verticalScale > 0.0f ? list.verticalScale : 1.0f)
    {
    }

    double at(int64_t y) const { return (first_ + static_cast<double>(y) + offset_) / scale_; }

private:
    double first_, offset_, scale_;
};

/// What one call computes with.
template <class T, bool FullRange>
class NoisePass
{
public:
    NoisePass(const RU_Noise& noise, const TIL_TileList& out)
        : noise_(noise), convert_(out), rows_(out), y_(out), x1_(out.x1),
          sum_(sizeOf(ru_noisePiece + ru_noiseSpare)), values_(sizeOf(ru_noisePiece))
    {
        for (int c = 0; c < 4; ++c)
            targets_[c] = rows_.empty() ? nullptr : ru_outputData<T>(out, c);
    }

    void run(double time, int thread)
    {
        for (int c = 0; c < (noise_.monochrome ? 1 : 4); ++c) {
            const int end = noise_.monochrome ? 4 : c + 1; // of the components with this noise
            if (std::all_of(targets_ + c, targets_ + end, [](const T* target) { return target == nullptr; }))
                continue;
            std::vector<NoiseOctave> octaves = octavesOf(noise_, c, time);
            for (int64_t x = 0; x < rows_.width; x += ru_noisePiece)
                if (!runPiece(octaves, x, c, end, thread))
                    return;
        }
    }

private:
    /// False when interrupted.
    bool runPiece(std::vector<NoiseOctave>& octaves, int64_t x, int component, int end, int thread)
    {
        const int64_t count = std::min(ru_noisePiece, rows_.width - x);
        for (NoiseOctave& octave : octaves)
            octave.locate(x1_ + x, count);
        return rows_.each(thread, [&](int64_t y) {
            for (NoiseOctave& octave : octaves)
                octave.add(y_.at(y), sum_.data());
            for (int c = component; c < end; ++c) {
                if (targets_[c] == nullptr)
                    continue;
                T* codes = targets_[c] + rows_.offset(y) + x;
                float* values = convert_.target(codes, values_.data());
                ru_noiseRows().finish(sum_.data(), values, count, noise_.mean[c], noise_.amplitude[c]);
                convert_.write(values, codes, count);
            }
        });
    }

    const RU_Noise& noise_;
    ru_RowConverter<T, FullRange, float> convert_;
    ru_TileRows rows_;
    NoiseRows y_;
    int64_t x1_;
    T* targets_[4];
    std::vector<float> sum_, values_;
};

} // namespace

template <class T, bool FullRange>
class RU_NoiseOp : public RU_GeneratorOp<T, FullRange>
{
public:
    using RU_GeneratorOp<T, FullRange>::RU_GeneratorOp;

    int generate(TIL_TileList* out, float time, int thread, void*) override
    {
        NoisePass<T, FullRange>(static_cast<const RU_Noise&>(*this->algorithm_), *out).run(time, thread);
        return 1;
    }
};

template class RU_GeneratorFactories<RU_NoiseOp>;

RU_Noise::~RU_Noise() = default;
