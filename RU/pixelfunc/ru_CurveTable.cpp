#include <RU/pixelfunc/ru_CurveTable.h>

#include <RU/kernel/ru_OneNaN.h>
#include <UT/UT_RootFinder.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <iterator>
#include <limits>

namespace {

constexpr int fewestCells = 4;
constexpr int mostCells = 512;
constexpr int64_t mostCoefficients = 1 << 30; ///< kernels count them with 32 bits
constexpr double undefined = std::numeric_limits<double>::quiet_NaN();

using Cell = std::array<double, ru_cellDoubles>;

/// One coordinate of a Bezier segment.
struct Bezier
{
    double p0, p1, p2, p3;

    double at(double t) const
    {
        const double u = 1.0 - t;
        return u * u * u * p0 + 3.0 * (u * u) * t * p1 + 3.0 * u * (t * t) * p2 + t * t * t * p3;
    }
    double slope(double t) const
    {
        const double u = 1.0 - t;
        return 3.0 * (u * u * (p1 - p0) + 2.0 * u * t * (p2 - p1) + t * t * (p3 - p2));
    }
    // Coefficients of the powers of t.
    double a() const { return p3 - p0 + 3.0 * (p1 - p2); }
    double b() const { return 3.0 * (p0 - 2.0 * p1 + p2); }
    double c() const { return 3.0 * (p1 - p0); }
};

/// The curve between two keys.
struct Segment
{
    Segment(const UT_Vector2Array& points, int64_t first)
    {
        const UT_Vector2 p0 = points(first), p1 = points(first + 1);
        const UT_Vector2 p2 = points(first + 2), p3 = points(first + 3);
        x = {p0.x, p1.x, p2.x, p3.x};
        y = {p0.y, p1.y, p2.y, p3.y};
    }

    /// The place of `at`: a root near 0..1 if it is the only one, the last in 0..1 of several, 0 without any.
    double parameter(double at) const
    {
        constexpr double rounding = 0x1p-40; // roots at the keys are off by less
        double roots[3];
        const int count = UT_RootFinder::cubic(x.a(), x.b(), x.c(), x.p0 - at, -0.1, 1.1, roots);
        if (count == 1)
            return roots[0];
        for (int i = count - 1; i >= 0; --i)
            if (roots[i] >= -rounding && roots[i] <= 1.0 + rounding)
                return roots[i];
        return 0.0;
    }

    Bezier x, y;
};

/// Cuts a segment into cells.
class Fitter
{
public:
    explicit Fitter(const Segment& segment) : x_(segment.x), y_(segment.y), segment_(segment)
    {
        extremes_ = UT_RootFinder::quadratic(3.0 * x_.a(), 2.0 * x_.b(), x_.c(), 0.0, 1.0, extreme_);
        const auto [low, high] = std::minmax({y_.p0, y_.p1, y_.p2, y_.p3});
        tolerance_ = 0x1p-28 * (high - low) + 0x1p-40 * std::max(std::abs(low), std::abs(high));
    }

    /// As few cells as it takes for all to be fit, or the most. None where keys share their x.
    std::vector<Cell> cells() const
    {
        std::vector<Cell> result;
        if (!(x_.p3 > x_.p0))
            return result;
        if (!std::isfinite(x_.a() + x_.b() + y_.a() + y_.b()))
            return {unfit};
        for (int count = fewestCells; !divide(count, result); count *= 2) {
        }
        return result;
    }

private:
    static constexpr Cell unfit = {undefined, undefined, undefined, undefined};

    /// False at the first cell that is not fit, while there may be more cells.
    bool divide(int count, std::vector<Cell>& cells) const
    {
        cells.clear();
        const double width = (x_.p3 - x_.p0) / count;
        double from = segment_.parameter(x_.p0);
        for (int i = 0; i < count; ++i) {
            const double to = segment_.parameter(x_.p0 + width * (i + 1));
            cells.push_back(fit(x_.p0 + width * i, width, from, to));
            if (std::isnan(cells.back()[0]) && count < mostCells)
                return false;
            from = to;
        }
        return true;
    }

    /// A cell as a cubic of x with the curve's values and slopes at its ends, unless that is not the curve: x
    /// turns back in between, or places in between are off.
    Cell fit(double start, double width, double from, double to) const
    {
        bool fits = from < to;
        for (int i = 0; i < extremes_; ++i)
            fits = fits && (extreme_[i] < from || extreme_[i] > to);
        if (!fits)
            return unfit;
        const double y = y_.at(from), rise = y_.at(to) - y;
        const double slope0 = width * (y_.slope(from) / x_.slope(from));
        const double slope1 = width * (y_.slope(to) / x_.slope(to));
        const Cell cell = {y, slope0, 3.0 * rise - 2.0 * slope0 - slope1, slope0 + slope1 - 2.0 * rise};
        for (const double part : {0.0, 0.25, 0.5, 0.75, 1.0}) {
            const double t = from + (to - from) * part;
            const double f = (x_.at(t) - start) / width;
            const double got = cell[0] + f * (cell[1] + f * (cell[2] + f * cell[3]));
            if (!(std::abs(got - y_.at(t)) <= tolerance_))
                return unfit;
        }
        return cell;
    }

    const Bezier& x_;
    const Bezier& y_;
    const Segment& segment_;
    double extreme_[2]; ///< where x turns
    int extremes_;
    double tolerance_;
};

/// Segments can be told apart by their starts.
bool isOrdered(const UT_Vector2Array& points)
{
    bool ordered = std::isfinite(points(0).x);
    for (int64_t j = 3; j < points.entries(); j += 3)
        ordered = ordered && std::isfinite(points(j).x) && points(j).x >= points(j - 3).x;
    return ordered;
}

} // namespace

ru_CurveTable::ru_CurveTable(const UT_Vector2Array& points, bool extend, float preslope, float postslope)
    : points_(points), first_(points(0)), last_(points(points.entries() - 1)), extend_(extend),
      preslope_(preslope), postslope_(postslope)
{
    if (!isOrdered(points_))
        return;
    for (int64_t j = 0; j + 3 < points_.entries(); j += 3) {
        const Segment segment(points_, j);
        const std::vector<Cell> cells = Fitter(segment).cells();
        const double width = segment.x.p3 - segment.x.p0;
        const auto count = static_cast<double>(cells.size());
        const size_t before = cells_.size() / ru_cellDoubles;
        double entry[ru_segmentDoubles];
        entry[ru_segmentX] = segment.x.p0;
        entry[ru_segmentCells] = cells.empty() ? 0.0 : count / width;
        entry[ru_segmentCell] = static_cast<double>(before);
        segments_.insert(segments_.end(), std::begin(entry), std::end(entry));
        for (const Cell& cell : cells)
            cells_.insert(cells_.end(), cell.begin(), cell.end());
        cells_.insert(cells_.end(), {segment.y.p3, 0.0, 0.0, 0.0});
        if (j > 0)
            starts_.push_back(points_(j).x);
        if (std::ssize(cells_) > mostCoefficients) { // too many keys: every value is solved for
            cells_ = {};
            return;
        }
    }
    startCount_ = std::ssize(starts_);
    constexpr auto group = static_cast<size_t>(ru_curveStarts);
    const size_t groups = (starts_.size() + group - 1) / group * group;
    starts_.resize(groups > ru_curveCounted ? std::bit_ceil(starts_.size() + 1) : groups,
                   std::numeric_limits<float>::quiet_NaN());
}

ru_CurveView ru_CurveTable::view() const
{
    return {segments_.data(), cells_.data(), starts_.data(), std::ssize(starts_), first_.x, first_.y,
            preslope_,        last_.x,       last_.y,        postslope_,          extend_};
}

float ru_CurveTable::solve(float x) const
{
    return ru_oneNaN(solved(x));
}

float ru_CurveTable::solved(float x) const
{
    if (x <= first_.x)
        return extend_ ? (x - first_.x) * preslope_ + first_.y : first_.y;
    if (x >= last_.x)
        return extend_ ? (x - last_.x) * postslope_ + last_.y : last_.y;
    int64_t j = 0;
    while (j < points_.entries() - 4 && !(points_(j).x <= x && x < points_(j + 3).x))
        j += 3;
    const Segment segment(points_, j);
    return static_cast<float>(segment.y.at(segment.parameter(x)));
}

float ru_CurveTable::evaluate(float x) const
{
    if (cells_.empty() || std::isnan(x))
        return solve(x);
    const auto end = starts_.begin() + startCount_;
    const auto segment = static_cast<int32_t>(std::upper_bound(starts_.begin(), end, x) - starts_.begin());
    const ru_CurveView curve = view();
    const float inside = ru_curveInside(curve, segment, x);
    const float y = extend_ ? ru_curveValue<true>(curve, x, inside) : ru_curveValue<false>(curve, x, inside);
    return std::isnan(y) ? solve(x) : y;
}

void ru_CurveTable::evaluate(const float* in, float* out, int64_t count, const ru_CurveKernels& kernels) const
{
    if (cells_.empty()) {
        std::transform(in, in + count, out, [this](float x) { return solve(x); });
        return;
    }
    const ru_CurveView curve = view();
    float kept[ru_curveRow];
    for (int64_t start = 0; start < count; start += ru_curveRow) {
        const int64_t length = std::min(ru_curveRow, count - start);
        const float* from = in + start;
        float* to = out + start;
        if (in == out) {
            std::copy_n(from, length, kept);
            from = kept;
        }
        if (!kernels.run(curve, from, to, length))
            continue;
        for (int64_t i = 0; i < length; ++i)
            if (std::isnan(to[i]))
                to[i] = solve(from[i]);
    }
}
