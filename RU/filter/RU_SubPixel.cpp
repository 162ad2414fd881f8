#include <RU/filter/RU_SubPixel.h>

#include <RU/filter/ru_SubPixelRows.h>
#include <RU/framework/ru_Convert.h>
#include <RU/framework/ru_Tiles.h>
#include <TIL/TIL_Region.h>

#include <algorithm>
#include <vector>

namespace {

/// What one call computes with: the weights, the conversion, two rows of input and one of output.
template <class T, bool FullRange>
class SubPixelPass
{
public:
    SubPixelPass(const RU_SubPixel& shift, const TIL_TileList& out)
        : SubPixelPass(shift, out.blackPoint, out.whitePoint, ru_TileRows::allOf(out))
    {
    }
    SubPixelPass(const RU_SubPixel& shift, const TIL_Region& out)
        : SubPixelPass(shift, out.plane->blackPoint, out.plane->whitePoint, ru_TileRows::allOf(out))
    {
    }

    /// Computes a component, if it is there. False when interrupted.
    bool run(const T* source, T* target, int thread)
    {
        if (source == nullptr || target == nullptr)
            return true;
        if (copied_ != nowhere)
            return rows_.each(thread, [&](int64_t y) {
                std::copy_n(source + y * stride_ + copied_, rows_.width, target + rows_.offset(y));
            });
        const Work* row = read(source, 0);
        return rows_.each(thread, [&](int64_t y) {
            const Work* next = read(source, y + 1);
            T* codes = target + rows_.offset(y);
            Work* values = convert_.target(codes, scratch_.data() + 2 * stride_);
            sum_(row, next, values, rows_.width, weights_);
            convert_.write(values, codes, rows_.width);
            row = next;
        });
    }

private:
    using Work = ru_Work<T>;
    static constexpr int64_t nowhere = -1;

    SubPixelPass(const RU_SubPixel& shift, unsigned int black, unsigned int white, const ru_TileRows& rows)
        : range_(ru_rangeOf<T, FullRange>(black, white)), convert_(range_), rows_(rows),
          stride_(rows.width + 1), weights_{shift.weight00, shift.weight10, shift.weight01, shift.weight11},
          scratch_(static_cast<size_t>(3 * stride_))
    {
        const float weights[] = {shift.weight00, shift.weight10, shift.weight01, shift.weight11};
        const int64_t places[] = {0, 1, stride_, stride_ + 1};
        unsigned int read = 0;
        for (unsigned int i = 0; i < 4; ++i)
            if (weights[i] != 0)
                read |= 1u << i;
        for (unsigned int i = 0; i < 4; ++i)
            if (read == 1u << i && weights[i] == 1 && !ru_isEmpty<T, FullRange>(range_))
                copied_ = places[i];
        const ru_SubPixelRow<Work>& kernels = ru_subPixelRows();
        sum_ = kernels.sums[read];
    }

    const Work* read(const T* source, int64_t y)
    {
        return convert_.read(source + y * stride_, scratch_.data() + y % 2 * stride_, stride_);
    }

    ru_Range<T> range_;
    ru_RowConverter<T, FullRange> convert_;
    ru_TileRows rows_; ///< of the output
    int64_t stride_;   ///< of the input
    ru_SubPixelWeights<Work> weights_;
    typename ru_SubPixelRow<Work>::Sum sum_;
    int64_t copied_ = nowhere; ///< where the pixels lie that are copied
    std::vector<Work> scratch_;
};

} // namespace

template <class T, bool FullRange>
class RU_SubPixelOp : public RU_FilterOp<T, FullRange>
{
public:
    using RU_FilterOp<T, FullRange>::RU_FilterOp;

    int filter(TIL_Region* out, const TIL_Region* in, float, int thread, void*) override
    {
        return run(*out, in, thread, std::min<int>(out->plane->componentCount, 4),
                   [&](int c) { return static_cast<T*>(out->getImageData(c)); });
    }

    int filter(TIL_TileList* out, const TIL_Region* in, float, int thread, void*) override
    {
        return run(*out, in, thread, 4, [&](int c) { return ru_outputData<T>(*out, c); });
    }

private:
    template <class Out, class Target>
    int run(const Out& out, const TIL_Region* in, int thread, int components, Target target)
    {
        if (in == nullptr || ru_TileRows::allOf(out).empty())
            return 1;
        SubPixelPass<T, FullRange> pass(static_cast<const RU_SubPixel&>(*this->algorithm_), out);
        for (int c = 0; c < components; ++c)
            if (!pass.run(static_cast<const T*>(in->getImageData(c)), target(c), thread))
                break;
        return 1;
    }
};

template class RU_FilterFactories<RU_SubPixelOp>;

RU_SubPixel::~RU_SubPixel() = default;

void RU_SubPixel::setWeights(float fx, float fy)
{
    weight00 = (1.0f - fx) * (1.0f - fy);
    weight10 = fx * (1.0f - fy);
    weight01 = (1.0f - fx) * fy;
    weight11 = fx * fy;
}

RU_Border RU_SubPixel::border() const
{
    return {.right = 1, .top = 1};
}
