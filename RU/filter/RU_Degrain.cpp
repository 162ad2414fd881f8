#include <RU/filter/RU_Degrain.h>

#include <RU/filter/ru_Windows.h>
#include <RU/framework/ru_Tiles.h>
#include <TIL/TIL_Region.h>

#include <algorithm>
#include <limits>

namespace {

/// A closing or an opening along rows and down columns at once, for rows that come one after the other. What
/// comes out is 2 r columns narrower, and centred in as many rows.
template <class T>
class Stage
{
public:
    Stage(bool closes, int64_t r, int64_t width)
        : r_(r), width_(width), firstAlong_(closes, r + 1, width + 2 * r),
          thenAlong_(!closes, r + 1, width + 2 * r), firstDown_(closes, r + 1, width),
          thenDown_(!closes, r + 1, width), combine_(ru_extremes<T>(!closes)), along_(r + 1, width),
          wide_(1, width + 2 * r), down_(1, width)
    {
    }

    void restart()
    {
        count_ = 0;
        firstDown_.restart();
        thenDown_.restart();
    }

    /// Takes a row of width + 2 r pixels and gives one of `width`, which means something from the 2 r + 1st on.
    void push(const T* from, T* to)
    {
        const int64_t size = r_ + 1, at = count_++ % size;
        firstAlong_.run(from, wide_[0], width_ + r_);
        thenAlong_.run(wide_[0], along_[at], width_);
        firstDown_.push({from + r_, 0}, {down_[0], 0}, 1);
        if (count_ > r_)
            thenDown_.push({down_[0], 0}, {down_[0], 0}, 1);
        combine_.both(along_[(at + 1) % size], down_[0], to, width_); // from r rows before
    }

private:
    int64_t r_;
    int64_t width_;
    int64_t count_ = 0;
    ru_RowWindow<T> firstAlong_, thenAlong_;
    ru_ColumnWindow<T> firstDown_, thenDown_;
    const ru_ExtremeRow<T>& combine_;
    ru_ScratchRows<T> along_; ///< of the last r + 1 rows
    ru_ScratchRows<T> wide_, down_;
};

/// What one call computes with.
template <class T>
class DegrainPass
{
public:
    DegrainPass(int64_t r, const TIL_TileList& out)
        : r_(r), rows_(ru_TileRows::allOf(out)), closing_(true, r, rows_.width + 2 * r),
          opening_(false, r, rows_.width), closed_(1, rows_.width + 2 * r)
    {
    }

    /// Computes a component. False when interrupted.
    bool run(const T* source, T* target, int thread)
    {
        closing_.restart();
        opening_.restart();
        int64_t taken = 0;
        return rows_.each(thread, [&](int64_t y) {
            for (; taken <= y + 4 * r_; ++taken) {
                closing_.push(source + taken * (rows_.width + 4 * r_), closed_[0]);
                if (taken >= 2 * r_)
                    opening_.push(closed_[0], target + rows_.offset(y));
            }
        });
    }

private:
    int64_t r_;
    ru_TileRows rows_; ///< of the output
    Stage<T> closing_, opening_;
    ru_ScratchRows<T> closed_;
};

int64_t reachOf(const RU_Degrain& degrain)
{
    return std::clamp(degrain.grainSize, 0, std::numeric_limits<int>::max() / 2);
}

} // namespace

template <class T, bool FullRange>
class RU_DegrainOp : public RU_FilterOp<T, FullRange>
{
public:
    using RU_FilterOp<T, FullRange>::RU_FilterOp;
    using RU_FilterOp<T, FullRange>::filter; // the region form stays the base's

    int filter(TIL_TileList* out, const TIL_Region* in, float, int thread, void*) override
    {
        if (in == nullptr || ru_TileRows::allOf(*out).empty())
            return 1;
        DegrainPass<T> pass(reachOf(static_cast<const RU_Degrain&>(*this->algorithm_)), *out);
        for (int c = 0; c < 4; ++c) {
            T* target = ru_outputData<T>(*out, c);
            const T* source = static_cast<const T*>(in->getImageData(c));
            if (target != nullptr && source != nullptr && !pass.run(source, target, thread))
                break;
        }
        return 1;
    }
};

template class RU_FilterFactories<RU_DegrainOp>;

RU_Degrain::~RU_Degrain() = default;

RU_Border RU_Degrain::border() const
{
    const int reach = static_cast<int>(2 * reachOf(*this));
    return {reach, reach, reach, reach};
}
