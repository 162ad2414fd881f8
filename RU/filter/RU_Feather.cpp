#include <RU/filter/RU_Feather.h>

#include <RU/filter/ru_FeatherRows.h>
#include <RU/framework/ru_Convert.h>
#include <RU/framework/ru_Tiles.h>
#include <TIL/TIL_Region.h>

#include <cmath>
#include <cstdlib>
#include <new>

namespace {

/// A radius within the limits.
double radiusOf(float radius)
{
    const float positive = radius > 0.0f ? radius : 0.0f; // NaN becomes 0
    return std::min(positive, static_cast<float>(ru_featherReach));
}

int reachOf(float radius)
{
    return static_cast<int>(std::ceil(radiusOf(radius)));
}

double distance(int steps, double radius)
{
    return steps == 0 ? 0.0 : steps / radius;
}

/// What one call computes with: the table, the conversion, and the rows of the window, prepared, in a ring.
template <class T, bool FullRange>
class FeatherPass
{
public:
    template <class Out>
    FeatherPass(const RU_Feather& feather, const Out& out, const ru_Range<T>& range)
        : kernels_(ru_featherRows()), convert_(range), rows_(ru_TileRows::allOf(out)),
          reachX_(feather.border().left), reachY_(feather.border().bottom),
          blocks_((rows_.width + kernels_.block - 1) / kernels_.block), stride_(rows_.width + 2 * reachX_),
          padded_((blocks_ + 1) * kernels_.block + 2 * reachX_), ringSize_(2 * reachY_ + 1),
          ring_(size(ringSize_ * padded_)), largest_(size(ringSize_ * blocks_)), window_(size(ringSize_)),
          largestOfWindow_(size(ringSize_)), values_(size(stride_)), results_(size(rows_.width))
    {
        for (int y = 0; y <= reachY_; ++y) {
            for (int x = 0; x <= reachX_; ++x)
                weights_.push_back(feather.getLUTVal(x, y));
            tails_.insert(tails_.end(), weights_.end() - reachX_ - 1, weights_.end());
            for (auto tail = tails_.rbegin(); tail != tails_.rbegin() + reachX_; ++tail)
                tail[1] = std::max(tail[0], tail[1]);
        }
    }

    /// Computes a component. False when interrupted.
    bool run(const T* source, T* target, int thread)
    {
        for (int64_t y = 0; y + 1 < ringSize_; ++y)
            prepare(source, y);
        const ru_FeatherTable<Work> table = {weights_.data(), tails_.data(), reachX_, reachY_};
        return rows_.each(thread, [&](int64_t y) {
            prepare(source, y + ringSize_ - 1);
            for (int64_t k = 0; k < ringSize_; ++k) {
                window_[size(k)] = ring_.data() + (y + k) % ringSize_ * padded_;
                largestOfWindow_[size(k)] = largest_.data() + (y + k) % ringSize_ * blocks_;
            }
            const T* own = source + (y + reachY_) * stride_ + reachX_;
            T* codes = target + rows_.offset(y);
            Work* values = convert_.target(codes, results_.data());
            kernels_.spread(table, window_.data(), largestOfWindow_.data(),
                            convert_.read(own, values_.data(), rows_.width), values, rows_.width);
            convert_.write(values, codes, rows_.width);
        });
    }

private:
    using Work = ru_Work<T>;

    static size_t size(int64_t count) { return static_cast<size_t>(count); }

    void prepare(const T* source, int64_t y)
    {
        const int64_t slot = y % ringSize_;
        kernels_.prepare(convert_.read(source + y * stride_, values_.data(), stride_), stride_,
                         ring_.data() + slot * padded_, padded_, reachX_, largest_.data() + slot * blocks_,
                         blocks_);
    }

    const ru_FeatherRow<Work>& kernels_;
    ru_RowConverter<T, FullRange> convert_;
    ru_TileRows rows_; ///< of the output
    int64_t reachX_, reachY_;
    int64_t blocks_;
    int64_t stride_; ///< of the input
    int64_t padded_;
    int64_t ringSize_;
    std::vector<Work> weights_, tails_;
    std::vector<Work> ring_, largest_; ///< by input row
    std::vector<const Work*> window_, largestOfWindow_;
    std::vector<Work> values_, results_;
};

} // namespace

template <class T, bool FullRange>
class RU_FeatherOp : public RU_FilterOp<T, FullRange>
{
public:
    using RU_FilterOp<T, FullRange>::RU_FilterOp;

    int filter(TIL_Region* out, const TIL_Region* in, float, int thread, void*) override
    {
        const auto range = ru_rangeOf<T, FullRange>(out->plane->blackPoint, out->plane->whitePoint);
        return run(*out, in, range, thread, [out](int c) { return static_cast<T*>(out->getImageData(c)); });
    }

    int filter(TIL_TileList* out, const TIL_Region* in, float, int thread, void*) override
    {
        const auto range = ru_rangeOf<T, FullRange>(out->blackPoint, out->whitePoint);
        return run(*out, in, range, thread, [out](int c) { return ru_outputData<T>(*out, c); });
    }

private:
    template <class Out, class Target>
    int run(const Out& out, const TIL_Region* in, const ru_Range<T>& range, int thread, Target targetOf)
    {
        if (in == nullptr || ru_TileRows::allOf(out).empty())
            return 1;
        FeatherPass<T, FullRange> pass(static_cast<const RU_Feather&>(*this->algorithm_), out, range);
        for (int c = 0; c < 4; ++c) {
            T* target = targetOf(c);
            const T* source = static_cast<const T*>(in->getImageData(c));
            if (target != nullptr && source != nullptr && !pass.run(source, target, thread))
                break;
        }
        return 1;
    }
};

template class RU_FilterFactories<RU_FeatherOp>;

RU_Feather::~RU_Feather() = default;

int RU_Feather::initialize(float)
try {
    const double acrossX = radiusOf(radiusX), acrossY = radiusOf(radiusY);
    const RU_Border size = border();
    std::vector<float> table;
    for (int y = 0; y <= size.bottom; ++y)
        for (int x = 0; x <= size.left; ++x) {
            const double u = distance(x, acrossX), v = distance(y, acrossY);
            const double d = std::sqrt(u * u + v * v);
            const float weight = RUfeatherDropoff(dropoff, static_cast<float>(1.0 - d));
            table.push_back(d == 0.0 ? 1.0f : d < 1.0 ? std::clamp(weight, 0.0f, 1.0f) : 0.0f);
        }
    table_ = std::move(table);
    columns_ = size.left + 1;
    rows_ = size.bottom + 1;
    return 1;
} catch (const std::bad_alloc&) {
    return 0;
}

RU_Border RU_Feather::border() const
{
    const int x = reachOf(radiusX), y = reachOf(radiusY);
    return {x, x, y, y};
}

float RU_Feather::getLUTVal(int x, int y) const
{
    const int64_t column = std::abs(int64_t{x}), row = std::abs(int64_t{y});
    return column < columns_ && row < rows_ ? table_[static_cast<size_t>(row * columns_ + column)] : 0.0f;
}

void RU_Feather::setLUTVal(int x, int y, float v)
{
    const int64_t column = std::abs(int64_t{x}), row = std::abs(int64_t{y});
    if (column < columns_ && row < rows_)
        table_[static_cast<size_t>(row * columns_ + column)] = std::clamp(v > 0.0f ? v : 0.0f, 0.0f, 1.0f);
}

float RU_Feather::evalLUT(float fx, float fy) const
{
    const float x = std::abs(fx), y = std::abs(fy);
    if (!(x < static_cast<float>(columns_) && y < static_cast<float>(rows_)))
        return 0.0f;
    const int column = static_cast<int>(x), row = static_cast<int>(y);
    const float u = x - static_cast<float>(column), v = y - static_cast<float>(row);
    const auto across = [&](int at) {
        const float left = getLUTVal(column, at);
        return left + u * (getLUTVal(column + 1, at) - left);
    };
    const float low = across(row);
    return low + v * (across(row + 1) - low);
}
