#include <RU/filter/RU_EdgeDetect.h>

#include <RU/filter/ru_EdgeDetectRows.h>
#include <RU/framework/ru_Convert.h>
#include <RU/framework/ru_Tiles.h>
#include <TIL/TIL_Region.h>

#include <cmath>
#include <vector>

namespace {

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

} // namespace

template <class T, bool FullRange>
class RU_EdgeDetectOp : public RU_FilterOp<T, FullRange>
{
public:
    using RU_FilterOp<T, FullRange>::RU_FilterOp;
    using RU_FilterOp<T, FullRange>::filter; // the region form stays the base's

    int filter(TIL_TileList* out, const TIL_Region* in, float, int thread, void*) override
    {
        if (out->width() <= 0 || out->height() <= 0)
            return 1;
        const EdgeKernel<Work> kernel(static_cast<const RU_EdgeDetect&>(*this->algorithm_));
        const ru_RowConverter<T, FullRange> rows(*out);
        Scratch scratch(out->width());
        for (int c = 0; c < 4; ++c) {
            T* target = ru_outputData<T>(*out, c);
            const T* source = static_cast<const T*>(in->getImageData(c));
            if (target != nullptr && source != nullptr)
                filterComponent(kernel, rows, scratch, target, source, out->height(), thread);
        }
        return 1;
    }

private:
    using Work = ru_Work<T>;

    /// Three rows of input and one of output in the working type.
    struct Scratch
    {
        explicit Scratch(int64_t columns)
            : width(columns), stride(columns + 2), values(static_cast<size_t>(4 * stride))
        {
        }
        Work* row(int64_t index) { return values.data() + index * stride; }

        int64_t width;  ///< of the output
        int64_t stride; ///< of the input
        std::vector<Work> values;
    };

    /// Each input row is read once and handed up through the three.
    static void filterComponent(const EdgeKernel<Work>& kernel, const ru_RowConverter<T, FullRange>& rows,
                                Scratch& scratch, T* target, const T* source, int64_t height, int thread)
    {
        const auto read = [&](int64_t y) {
            return rows.read(source + y * scratch.stride, scratch.row(y % 3), scratch.stride);
        };
        const Work* top = read(0);
        const Work* middle = read(1);
        for (int64_t y = 0; y < height; ++y) {
            if (RU_Algorithm::interruptCheck(thread))
                return;
            const Work* bottom = read(y + 2);
            T* codes = target + y * scratch.width;
            Work* values = rows.target(codes, scratch.row(3));
            kernel(top, middle, bottom, values, scratch.width);
            rows.write(values, codes, scratch.width);
            top = middle;
            middle = bottom;
        }
    }
};

template class RU_FilterFactories<RU_EdgeDetectOp>;

RU_EdgeDetect::~RU_EdgeDetect() = default;
