#include <RU/filter/RU_EdgeDetect.h>

#include <RU/filter/ru_EdgeDetectRows.h>
#include <RU/framework/ru_Convert.h>
#include <RU/framework/ru_Tiles.h>
#include <TIL/TIL_Region.h>

#include <cmath>
#include <vector>

namespace {

constexpr int reach = 1; ///< of the neighbourhood, to every side

template <class Work>
ru_EdgeWeights<Work> weightsOf(const RU_EdgeDetect& edge)
{
    const Work a = edge.edgeGain;
    const Work b = edge.cornerWeight;
    const Work w = edge.sobelWeights != 0 ? 2 : 1;
    // Square roots are exact to the last bit everywhere, powers are not.
    const double product = static_cast<double>(edge.edgeGain) * edge.cornerWeight;
    const double norm = a > 0 && b > 0 ? 1.0 / std::sqrt(std::sqrt(product)) : 1.0;
    return {a, b, w + 1 - 2 * b, static_cast<Work>(norm)};
}

/// The kernel that an algorithm's parameters select, for rows of the working type.
template <class Work>
class EdgeKernel
{
public:
    explicit EdgeKernel(const RU_EdgeDetect& edge)
        : rows_(ru_edgeDetectRows()), weights_(weightsOf<Work>(edge)),
          general_(edge.edgeGain != 1.0f || edge.cornerWeight != 1.0f), sobel_(edge.sobelWeights != 0)
    {
    }

    void operator()(const Work* top, const Work* middle, const Work* bottom, Work* out, int64_t count) const
    {
        if (general_)
            rows_.general(top, middle, bottom, out, count, weights_);
        else
            (sobel_ ? rows_.sobel : rows_.prewitt)(top, middle, bottom, out, count);
    }

private:
    const ru_EdgeRow<Work>& rows_;
    ru_EdgeWeights<Work> weights_;
    bool general_;
    bool sobel_;
};

/// What one call computes with: the kernel, the conversion, three rows of input and one of output.
template <class T, bool FullRange>
class EdgePass
{
public:
    EdgePass(const RU_EdgeDetect& edge, const TIL_TileList& out)
        : kernel_(edge), convert_(out), rows_(ru_TileRows::allOf(out)),
          stride_(rows_.width + int64_t{2} * reach), scratch_(static_cast<size_t>(4 * stride_))
    {
    }

    /// Computes a component; each input row is read once and handed up through the three. False when
    /// interrupted.
    bool run(const T* source, T* target, int thread)
    {
        const Work* top = read(source, 0);
        const Work* middle = read(source, 1);
        return rows_.each(thread, [&](int64_t y) {
            const Work* bottom = read(source, y + 2);
            T* codes = target + rows_.offset(y);
            Work* values = convert_.target(codes, scratch_.data() + 3 * stride_);
            kernel_(top, middle, bottom, values, rows_.width);
            convert_.write(values, codes, rows_.width);
            top = middle;
            middle = bottom;
        });
    }

private:
    using Work = ru_Work<T>;

    const Work* read(const T* source, int64_t y)
    {
        return convert_.read(source + y * stride_, scratch_.data() + y % 3 * stride_, stride_);
    }

    EdgeKernel<Work> kernel_;
    ru_RowConverter<T, FullRange> convert_;
    ru_TileRows rows_; ///< of the output
    int64_t stride_;   ///< of the input
    std::vector<Work> scratch_;
};

} // namespace

template <class T, bool FullRange>
class RU_EdgeDetectOp : public RU_FilterOp<T, FullRange>
{
public:
    using RU_FilterOp<T, FullRange>::RU_FilterOp;
    using RU_FilterOp<T, FullRange>::filter; // the region form stays the base's

    int filter(TIL_TileList* out, const TIL_Region* in, float, int thread, void*) override
    {
        if (in == nullptr || ru_TileRows::allOf(*out).empty())
            return 1;
        EdgePass<T, FullRange> pass(static_cast<const RU_EdgeDetect&>(*this->algorithm_), *out);
        for (int c = 0; c < 4; ++c) {
            T* target = ru_outputData<T>(*out, c);
            const T* source = static_cast<const T*>(in->getImageData(c));
            if (target != nullptr && source != nullptr && !pass.run(source, target, thread))
                break;
        }
        return 1;
    }
};

template class RU_FilterFactories<RU_EdgeDetectOp>;

RU_EdgeDetect::~RU_EdgeDetect() = default;

RU_Border RU_EdgeDetect::border() const
{
    return {reach, reach, reach, reach};
}
