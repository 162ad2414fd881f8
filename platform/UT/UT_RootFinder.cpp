#include <UT/UT_RootFinder.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

struct Cubic
{
    double a, b, c, d;

    double at(double t) const { return ((a * t + b) * t + c) * t + d; }
    double slope(double t) const { return (3.0 * a * t + 2.0 * b) * t + c; }
    /// The value, 0 where rounding may have made it.
    double settled(double t) const
    {
        const double u = std::abs(t);
        const double terms = ((std::abs(a) * u + std::abs(b)) * u + std::abs(c)) * u + std::abs(d);
        const double value = at(t);
        return std::abs(value) <= 0x1p-50 * terms ? 0.0 : value;
    }
};

/// What takes the largest coefficient to between 1 and 2 exactly, so that squares stay in range; 0 when there
/// is nothing to scale.
double unitScale(double largest)
{
    const bool scalable = largest > 0.0 && std::isfinite(largest);
    return scalable ? std::ldexp(1.0, std::min(-std::ilogb(largest), 1000)) : 0.0;
}

/// The root between two ends of different sign. The cubic is monotone there.
double bracketed(const Cubic& cubic, double low, double high, bool rising)
{
    const double close = 0x1p-30 * (high - low);
    double t = 0.5 * (low + high);
    int last = 2; // steps to go once they are short: each squares the error
    for (int step = 0; step < 64 && last > 0; ++step) {
        const double value = cubic.at(t);
        if (value == 0.0)
            break;
        ((value < 0.0) == rising ? low : high) = t;
        double next = t - value / cubic.slope(t);
        if (!(next >= low && next <= high))
            next = 0.5 * (low + high);
        if (std::abs(next - t) <= close)
            --last;
        t = next;
    }
    return t;
}

} // namespace

int UT_RootFinder::quadratic(double a, double b, double c, double low, double high, double* roots)
{
    const double scale = unitScale(std::max({std::abs(a), std::abs(b), std::abs(c)}));
    a *= scale;
    b *= scale;
    c *= scale;
    const double discriminant = b * b - 4.0 * a * c;
    if (!(discriminant >= 0.0))
        return 0;
    // Nothing cancels here. A root that runs away with a vanishing coefficient becomes infinite or NaN.
    const double q = -0.5 * (b + std::copysign(std::sqrt(discriminant), b));
    int count = 0;
    for (const double root : {q / a, c / q})
        if (std::isfinite(root) && root >= low && root <= high)
            roots[count++] = root;
    if (count == 2 && roots[0] > roots[1])
        std::swap(roots[0], roots[1]);
    return count == 2 && roots[0] == roots[1] ? 1 : count;
}

int UT_RootFinder::cubic(double a, double b, double c, double d, double low, double high, double* roots)
{
    const double scale = unitScale(std::max({std::abs(a), std::abs(b), std::abs(c), std::abs(d)}));
    const Cubic cubic = {a * scale, b * scale, c * scale, d * scale};
    if (scale == 0.0 || !std::isfinite(cubic.at(1.0)) || !(low <= high))
        return 0;

    // Between its extremes and the ends the cubic is monotone.
    double ends[4] = {low};
    int last = 1 + quadratic(3.0 * cubic.a, 2.0 * cubic.b, cubic.c, low, high, ends + 1);
    ends[last] = high;

    int count = 0;
    double before = 1.0;
    for (int i = 0; i <= last; ++i) {
        const double value = cubic.settled(ends[i]);
        if (value == 0.0) {
            if (i == 0 || before != 0.0)
                roots[count++] = ends[i];
        } else if (i > 0 && before != 0.0 && (before < 0.0) != (value < 0.0)) {
            roots[count++] = bracketed(cubic, ends[i - 1], ends[i], value > 0.0);
        }
        before = value;
    }
    return count;
}
