#pragma once

#include <RU/framework/RU_Factories.h>

#include <vector>

namespace host {

/// The largest or smallest value of a rectangle around each pixel, one after the other: RU_Morphology as an
/// algorithm that can be run tile by tile. One pass dilates or erodes; to erode, then dilate takes bright specks
/// away, the other way round dark ones.
class MorphologyFilter;

template <class T, bool FullRange>
class MorphologyOp : public RU_FilterOp<T, FullRange>
{
public:
    using RU_FilterOp<T, FullRange>::RU_FilterOp;
    using RU_FilterOp<T, FullRange>::filter;
    int filter(TIL_TileList* out, const TIL_Region* in, float time, int thread, void* context) override;
};

class MorphologyFilter : public RU_FilterFactories<MorphologyOp>
{
public:
    enum class Pass { Dilate, Erode };

    /// Even sizes count as the next larger.
    MorphologyFilter(std::vector<Pass> passes, int width, int height);

    RU_Border border() const override;

    const std::vector<Pass>& passes() const { return passes_; }
    int width() const { return width_; }
    int height() const { return height_; }

private:
    std::vector<Pass> passes_;
    int width_, height_;
};

} // namespace host
