#include <RU/filter/RU_Morphology.h>

#include <RU/filter/ru_Windows.h>

#include <cstdlib>
#include <memory>
#include <new>

namespace {

/// A pass over lines of some length.
struct Pass
{
    Pass(int oddOrEven, bool dilates, int64_t length) : maxima(dilates)
    {
        const int64_t wide = oddOrEven;
        signedSize = wide % 2 != 0 ? wide : wide < 0 ? wide - 1 : wide + 1;
        size = std::abs(signedSize);
        half = size / 2;
        written = (length - 2 * half) / size * size;
    }

    bool maxima;
    int64_t signedSize, size, half;
    int64_t written; ///< pixels of a line, from `half` on; none where that is not above 0
};

/// Both passes, some rows at once: they go into the columns while they are in the cache.
template <class T>
class Passes
{
public:
    Passes(int64_t width, int64_t height, const Pass* along, const Pass* down)
        : width_(width), height_(height), along_(along), down_(down)
    {
        if (along_ != nullptr && along_->written > 0)
            rows_ = std::make_unique<ru_RowWindow<T>>(along_->maxima, along_->size, width_);
        if (down_ != nullptr && down_->written > 0) {
            columns_ = std::make_unique<ru_ColumnWindow<T>>(down_->maxima, down_->size, width_);
            unused_ = std::make_unique<T[]>(static_cast<size_t>(width_));
        }
    }

    void run(const T* src, T* dst, T* tmp) const
    {
        constexpr int64_t atOnce = 8;
        T* target = down_ != nullptr ? tmp : dst;
        for (int64_t y = 0, count = 0; y < height_; y += count) {
            count = std::min(atOnce, height_ - y);
            if (columns_ != nullptr)
                count = std::min(count, columns_->room());
            for (int64_t row = y; rows_ != nullptr && row < y + count; ++row)
                rows_->run(src + row * width_, target + row * width_ + along_->half, along_->written);
            if (columns_ != nullptr && y < down_->written + 2 * down_->half)
                push(along_ != nullptr ? tmp : src, dst, y, count);
        }
    }

private:
    void push(const T* src, T* dst, int64_t y, int64_t count) const
    {
        const bool started = y >= 2 * down_->half;
        columns_->push({src + y * width_, width_},
                       started ? ru_Rows<T>{dst + (y - down_->half) * width_, width_}
                               : ru_Rows<T>{unused_.get(), 0},
                       count);
    }

    int64_t width_, height_;
    const Pass* along_;
    const Pass* down_;
    std::unique_ptr<ru_RowWindow<T>> rows_;
    std::unique_ptr<ru_ColumnWindow<T>> columns_;
    std::unique_ptr<T[]> unused_; ///< where windows go that are not complete
};

template <class T>
void run(const T* src, T* dst, T* tmp, int width, int height, const Pass& along, const Pass& down)
try {
    if (src == nullptr || dst == nullptr || width <= 0 || height <= 0)
        return;
    const bool goesDown = down.signedSize != 1, goesAlong = !goesDown || along.signedSize != 1;
    if (tmp != nullptr || !goesDown || !goesAlong)
        Passes<T>(width, height, goesAlong ? &along : nullptr, goesDown ? &down : nullptr).run(src, dst, tmp);
} catch (const std::bad_alloc&) {
    return; // before anything was written
}

} // namespace

#define RU_MORPHOLOGY(CODE, T, WHITE, NAME)                                                                  \
    void RU_Morphology::dilate(const T* src, T* dst, T* tmp, int xres, int yres, int xsize, int ysize)       \
    {                                                                                                        \
        run(src, dst, tmp, xres, yres, {xsize, true, xres}, {ysize, true, yres});                            \
    }                                                                                                        \
    void RU_Morphology::erode(const T* src, T* dst, T* tmp, int xres, int yres, int xsize, int ysize)        \
    {                                                                                                        \
        run(src, dst, tmp, xres, yres, {xsize, false, xres}, {ysize, false, yres});                          \
    }                                                                                                        \
    void RU_Morphology::dilateErode(const T* src, T* dst, T* tmp, int xres, int yres, int xsize, int ysize)  \
    {                                                                                                        \
        run(src, dst, tmp, xres, yres, {xsize, xsize >= 0, xres}, {ysize, ysize >= 0, yres});                \
    }
PXL_FOR_EACH_FORMAT(RU_MORPHOLOGY)
#undef RU_MORPHOLOGY
