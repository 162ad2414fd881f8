#include <RU/filter/RU_EdgeDetect.h>

#include <RU/filter/ru_EdgeDetectRows.h>
#include <RU/framework/ru_Convert.h>
#include <RU/framework/ru_Tiles.h>
#include <TIL/TIL_Region.h>

#include <algorithm>
#include <cmath>

namespace {

/// Planes are processed in strips of this many columns, so that a strip's rows fit on the stack and in cache.
constexpr int stripWidth = 512;

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
        const EdgeKernel<Work> kernel(static_cast<const RU_EdgeDetect&>(*this->algorithm_));
        const ru_RowConverter<T, FullRange> rows(*out);
        for (int c = 0; c < 4; ++c) {
            T* target = ru_outputData<T>(*out, c);
            const T* source = static_cast<const T*>(in->getImageData(c));
            if (target == nullptr || source == nullptr)
                continue;
            for (int x = 0; x < out->width(); x += stripWidth)
                filterStrip(kernel, rows, target + x, source + x, std::min(stripWidth, out->width() - x),
                            *out, thread);
        }
        return 1;
    }

private:
    using Work = ru_Work<T>;

    /// A strip of `columns` of one component; the rows above and below are read once and handed down.
    static void filterStrip(const EdgeKernel<Work>& kernel, const ru_RowConverter<T, FullRange>& rows,
                            T* target, const T* source, int columns, const TIL_TileList& out, int thread)
    {
        Work scratch[3][stripWidth + 2];
        Work result[stripWidth];
        const int64_t stride = out.width();
        const auto read = [&](int64_t y) {
            return rows.read(source + y * (stride + 2), scratch[y % 3], columns + 2);
        };
        const Work* top = read(0);
        const Work* middle = read(1);
        for (int y = 0; y < out.height(); ++y) {
            if (RU_Algorithm::interruptCheck(thread))
                return;
            const Work* bottom = read(y + 2);
            T* codes = target + y * stride;
            Work* values = rows.target(codes, result);
            kernel(top, middle, bottom, values, columns);
            rows.write(values, codes, columns);
            top = middle;
            middle = bottom;
        }
    }
};

template class RU_FilterFactories<RU_EdgeDetectOp>;

RU_EdgeDetect::~RU_EdgeDetect() = default;
