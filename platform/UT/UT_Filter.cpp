#include <UT/UT_Filter.h>

#include <array>
#include <cmath>

UT_Filter::~UT_Filter() = default;

float UT_FilterPieces::at(float t) const
{
    const float size = std::fabs(t);
    const float x = (size < reach ? size : reach) * scale;
    const int i = static_cast<int>(x) < pieces - 1 ? static_cast<int>(x) : pieces - 1;
    const float y = x - static_cast<float>(i);
    float value = term[terms - 1][i];
    for (int k = terms - 2; k >= 0; --k)
        value = value * y + term[k][i];
    return value;
}

namespace {

// Series rather than the library's functions, whose last bits depend on the processor.

constexpr double pi = 3.14159265358979323846;

/// cos(pi x), |x| <= 3
double cosine(double x)
{
    const double rest = x - 2.0 * std::floor(x / 2.0 + 0.5); // -1 .. 1
    const double square = -(pi * rest) * (pi * rest);
    double term = 1.0, sum = 1.0;
    for (int k = 2; k < 40; k += 2) {
        term *= square / (k * (k - 1));
        sum += term;
    }
    return sum;
}

double sinc(double x)
{
    return x == 0.0 ? 1.0 : cosine(x - 0.5) / (pi * x);
}

double triangle(double x)
{
    return 1.0 - x;
}

/// exp(-2 x^2)
double gaussian(double x)
{
    const double sixteenth = -2.0 * x * x / 16.0;
    double term = 1.0, sum = 1.0;
    for (int k = 1; k < 20; ++k) {
        term *= sixteenth / k;
        sum += term;
    }
    for (int k = 0; k < 4; ++k)
        sum *= sum;
    return sum;
}

template <int BTimesSix, int CTimesSix>
double cubic(double x)
{
    constexpr double b = BTimesSix / 6.0, c = CTimesSix / 6.0;
    if (x < 1.0)
        return ((12 - 9 * b - 6 * c) * x * x * x + (-18 + 12 * b + 6 * c) * x * x + (6 - 2 * b)) / 6;
    return ((-b - 6 * c) * x * x * x + (6 * b + 30 * c) * x * x + (-12 * b - 48 * c) * x + (8 * b + 24 * c)) /
           6;
}

double lanczos3(double x)
{
    return sinc(x) * sinc(x / 3.0);
}

double hann(double x)
{
    return 0.5 + 0.5 * cosine(x);
}

struct Kernel
{
    double (*value)(double x); ///< of x >= 0
    double radius;
};

constexpr Kernel kernels[] = {{triangle, 1.0},    {gaussian, 1.5}, {cubic<0, 3>, 2.0},
                              {cubic<2, 2>, 2.0}, {lanczos3, 3.0}, {hann, 1.0}};

constexpr int pieces = UT_FilterPieces::pieces;
constexpr int terms = UT_FilterPieces::terms;
using Nodes = std::array<double, terms>;

/// Chebyshev's points of a piece, from 0 to 1.
double node(int k)
{
    return 0.5 - 0.5 * cosine(static_cast<double>(k) / (terms - 1));
}

/// The powers of the polynomial through values at the nodes.
Nodes powersThrough(Nodes value)
{
    for (int order = 1; order < terms; ++order) // divided differences
        for (int k = terms - 1; k >= order; --k)
            value[static_cast<size_t>(k)] =
                (value[static_cast<size_t>(k)] - value[static_cast<size_t>(k - 1)]) /
                (node(k) - node(k - order));
    Nodes power{};
    for (int k = terms - 1; k >= 0; --k) {
        for (size_t i = terms - 1; i > 0; --i)
            power[i] = power[i - 1] - node(k) * power[i];
        power[0] = value[static_cast<size_t>(k)] - node(k) * power[0];
    }
    return power;
}

/// The integral of a kernel from a to b, by Simpson's rule in 64 steps.
double integral(const Kernel& kernel, double a, double b)
{
    const double step = (b - a) / 64.0;
    double sum = 0.0;
    for (int i = 0; i < 64; ++i) {
        const double x = a + i * step;
        sum += step / 6.0 * (kernel.value(x) + 4.0 * kernel.value(x + step / 2.0) + kernel.value(x + step));
    }
    return sum;
}

UT_FilterPieces piecesOf(const Kernel& kernel, bool sampled)
{
    const double width = kernel.radius / pieces;
    std::array<Nodes, pieces> values;
    double sum = 0.0;
    for (int p = 0; p < pieces; ++p)
        for (int k = 0; k < terms; ++k) {
            const double x = (p + node(k)) * width;
            if (k > 0)
                sum += integral(kernel, (p + node(k - 1)) * width, x);
            // The last node is the piece's own end, where a kernel may break.
            values[static_cast<size_t>(p)][static_cast<size_t>(k)] = sampled ? kernel.value(x) : sum;
        }
    const double support = 2.0 * kernel.radius + (sampled ? 1.0 : 0.0);
    const double norm = (sampled ? support : 1.0) * 0.5 / sum;
    UT_FilterPieces result;
    result.sampled = sampled;
    result.reach = static_cast<float>(kernel.radius / support);
    result.scale = static_cast<float>(pieces * support / kernel.radius);
    for (size_t p = 0; p < pieces; ++p) {
        const Nodes powers = powersThrough(values[p]);
        for (size_t k = 0; k < terms; ++k)
            result.term[k][p] = static_cast<float>(powers[k] * norm);
    }
    return result;
}

/// The box, and, with next to no support, the point.
class Box final : public UT_Filter
{
public:
    using UT_Filter::UT_Filter;
    float getArea(float t0, float t1) const override { return t1 - t0; }
};

class PieceFilter final : public UT_Filter
{
public:
    // Pixels as points reach half a pixel further than their kernel, so that no centre under it is missed.
    PieceFilter(const Kernel& kernel, bool sampled)
        : UT_Filter(static_cast<float>(2.0 * kernel.radius + (sampled ? 1.0 : 0.0))),
          pieces_(piecesOf(kernel, sampled))
    {
    }

    float getArea(float t0, float t1) const override
    {
        if (pieces_.sampled) {
            const float middle = (t0 + t1) * 0.5f;
            return (std::fabs(middle) < pieces_.reach ? pieces_.at(middle) : 0.0f) * (t1 - t0);
        }
        return std::copysign(pieces_.at(t1), t1) - std::copysign(pieces_.at(t0), t0);
    }

    const UT_FilterPieces* getPieces() const override { return &pieces_; }

private:
    UT_FilterPieces pieces_;
};

} // namespace

UT_Filter* UT_Filter::getFilter(UT_FilterType type)
{
    static Box point(0.001f), box(1.0f);
    static PieceFilter shaped[] = {{kernels[0], false}, {kernels[1], false}, {kernels[2], false},
                                   {kernels[3], false}, {kernels[4], false}, {kernels[5], false},
                                   {kernels[0], true},  {kernels[1], true},  {kernels[2], true},
                                   {kernels[3], true},  {kernels[4], true},  {kernels[5], true}};
    static_assert(sizeof shaped / sizeof *shaped == UT_FILTER_TYPES - UT_FILTER_TRIANGLE);
    if (type == UT_FILTER_POINT)
        return &point;
    if (type < UT_FILTER_TRIANGLE || type >= UT_FILTER_TYPES)
        return &box;
    return &shaped[type - UT_FILTER_TRIANGLE];
}
