#include <host/operation/MorphologyFilter.h>

#include <RU/filter/RU_Morphology.h>
#include <TIL/TIL_Region.h>
#include <TIL/TIL_Tile.h>

#include <algorithm>

namespace host {

MorphologyFilter::MorphologyFilter(std::vector<Pass> passes, int width, int height)
    : passes_(std::move(passes)), width_(width | 1), height_(height | 1)
{
}

/// Half an element for each pass, and behind that what fills the last segment of a line.
RU_Border MorphologyFilter::border() const
{
    const int passes = static_cast<int>(passes_.size());
    const int x = passes * (width_ / 2), y = passes * (height_ / 2);
    return {x, x + width_ - 1, y + height_ - 1, y};
}

template <class T, bool FullRange>
int MorphologyOp<T, FullRange>::filter(TIL_TileList* out, const TIL_Region* in, float, int thread, void*)
{
    const auto& filter = static_cast<const MorphologyFilter&>(*this->algorithm_);
    if (in == nullptr)
        return 1;
    const RU_Border border = filter.border();
    const int width = in->width(), height = in->height();
    const auto size = static_cast<size_t>(width) * static_cast<size_t>(height);
    std::vector<std::vector<T>> results(filter.passes().size(), std::vector<T>(size));
    for (int c = 0; c < 4; ++c) {
        const T* from = static_cast<const T*>(in->getImageData(c));
        T* to = nullptr;
        if (out->tiles[c] != nullptr)
            out->tiles[c]->getImageData(to);
        if (from == nullptr || to == nullptr)
            continue;
        for (size_t pass = 0; pass < filter.passes().size(); ++pass) {
            if (RU_Algorithm::interruptCheck(thread))
                return 1;
            T* result = results[pass].data();
            const int sign = filter.passes()[pass] == MorphologyFilter::Pass::Dilate ? 1 : -1;
            RU_Morphology::dilateErode(from, result, result, width, height, sign * filter.width(),
                                       sign * filter.height());
            from = result;
        }
        for (int y = 0; y < out->height(); ++y)
            std::copy_n(from + int64_t{y + border.bottom} * width + border.left, out->width(),
                        to + int64_t{y} * out->width());
    }
    return 1;
}

} // namespace host
