#pragma once

#include <RU/framework/RU_Factories.h>
#include <RU/shape/RU_FeatherDropoff.h>

#include <vector>

template <class T, bool FullRange>
class RU_FeatherOp;

extern template class RU_API RU_FilterFactories<RU_FeatherOp>;

/// Feather: bright areas grow a soft edge, for each component on its own. A pixel spreads its value around it, less
/// and less up to the radii, and where several reach a pixel the largest counts:
///
///     out(x, y) = max( in(x, y), max over dx, dy of in(x + dx, y + dy) table(|dx|, |dy|) )
///     table(x, y) = f(1 - d),  d = sqrt((x / radiusX)^2 + (y / radiusY)^2)
///
/// f is one of the curves of RU_FeatherDropoff.h; the table is 1 in the centre and 0 where d is 1 or more. This is a
/// dilation of grey values by a soft ellipse, with products in place of sums. initialize() makes the table from the
/// parameters; what setLUTVal() puts there afterwards holds until the next call. Without a table, pixels are copied.
///
/// Input: a region with a border of the radii, rounded up. Radii are taken as from 0 to 1024, NaN as 0; a radius
/// of 0 leaves that direction out, and with two of 0, or up to 1, pixels are copied.
/// Range: values are never lowered. Only values above 0 spread: a pixel below 0 is raised by them alone, so that
/// an area of one value stays as it is. An infinity spreads as such. NaN spreads nothing and stays.
/// Result: 1, also when interrupted.
/// Cost: per pixel up to a quarter of the ellipse's pixels, for each three operations in vectors. Of a block of
/// pixels only those rows and columns of the window are gone through that could raise one of them.
class RU_API RU_Feather : public RU_FilterFactories<RU_FeatherOp>
{
public:
    RU_Feather() = default;
    RU_Feather(const RU_Feather&) = default;
    RU_Feather& operator=(const RU_Feather&) = default;
    ~RU_Feather() override;

    int initialize(float time) override; ///< makes the table
    RU_Border border() const override;

    /// An entry of the table, at any sign of x and y; 0 outside of it.
    float getLUTVal(int x, int y) const;
    /// Sets the up to four entries at x, y, limited to 0 to 1, NaN as 0. Nothing outside of the table.
    void setLUTVal(int x, int y, float v);
    /// Between the entries, linearly in both directions.
    float evalLUT(float fx, float fy) const;

    float radiusX = 5.0f; ///< in pixels, across
    float radiusY = 5.0f; ///< in pixels, up and down
    RU_FeatherDropoff dropoff = RU_DROPOFF_LINEAR;

private:
    int columns_ = 0, rows_ = 0; ///< of the quarter with x, y >= 0
    std::vector<float> table_;
};
