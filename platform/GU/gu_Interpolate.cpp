#include <GU/gu_Interpolate.h>

#include <algorithm>
#include <utility>

namespace {

using Values = GEO_Detail::Values;

/// a += scale * b
void addScaled(Values& a, double scale, const Values& b)
{
    for (size_t i = 0; i < a.size(); ++i)
        a[i] += scale * b[i];
}

/// The values of the `degree` + 1 basis functions that differ from 0 on the span from `knots[span]` on.
std::vector<double> basis(const std::vector<double>& knots, size_t span, size_t degree, double at)
{
    std::vector<double> values(degree + 1, 0.0);
    values[0] = 1.0;
    for (size_t d = 1; d <= degree; ++d) {
        double carried = 0.0;
        for (size_t i = 0; i < d; ++i) {
            const double right = knots[span + i + 1], left = knots[span + i + 1 - d];
            const double part = values[i] / (right - left);
            values[i] = carried + (right - at) * part;
            carried = (at - left) * part;
        }
        values[d] = carried;
    }
    return values;
}

/// Equations lower x[i - 1] + middle x[i] + upper x[i + 1] = rows[i], where the middle dominates; indexes wrap.
struct CyclicSystem
{
    std::vector<double> lower, middle, upper;
    gu_Rows rows;

    gu_Rows solve()
    {
        const size_t last = rows.size() - 1;
        // What all but the last unknown are without it, and how they change with it.
        std::vector<double> change(last, 0.0);
        change[0] -= lower[0];
        change[last - 1] -= upper[last - 1];
        for (size_t i = 1; i < last; ++i) {
            const double scale = lower[i] / middle[i - 1];
            middle[i] -= scale * upper[i - 1];
            change[i] -= scale * change[i - 1];
            addScaled(rows[i], -scale, rows[i - 1]);
        }
        for (size_t i = last; i-- > 0;) {
            if (i + 1 < last) {
                change[i] -= upper[i] * change[i + 1];
                addScaled(rows[i], -upper[i], rows[i + 1]);
            }
            change[i] /= middle[i];
            for (double& v : rows[i])
                v /= middle[i];
        }
        addScaled(rows[last], -upper[last], rows[0]);
        addScaled(rows[last], -lower[last], rows[last - 1]);
        const double rest = middle[last] + upper[last] * change[0] + lower[last] * change[last - 1];
        for (double& v : rows[last])
            v /= rest;
        for (size_t i = 0; i < last; ++i)
            addScaled(rows[i], change[i], rows[last]);
        return std::move(rows);
    }
};

} // namespace

std::vector<double> gu_openKnots(const std::vector<double>& params, int degree)
{
    const size_t n = params.size(), d = static_cast<size_t>(degree);
    std::vector<double> knots(d + 1, params.front());
    for (size_t i = 1; i + d < n; ++i)
        knots.push_back(0.5 * (params[i + (d - 1) / 2] + params[i + d / 2]));
    knots.insert(knots.end(), d + 1, params.back());
    return knots;
}

gu_Rows gu_interpolateOpen(const std::vector<double>& params, const std::vector<double>& knots, int degree,
                           gu_Rows rows)
{
    // The matrix is totally positive and differs from 0 in a band only: elimination needs no pivots.
    const size_t n = rows.size(), d = static_cast<size_t>(degree), width = 2 * d + 1;
    std::vector<double> band(n * width, 0.0);
    const auto at = [&](size_t i, size_t k) -> double& { return band[i * width + k + d - i]; };
    for (size_t i = 0; i < n; ++i) {
        const auto after = std::upper_bound(knots.begin(), knots.end(), params[i]);
        const size_t span = std::min(static_cast<size_t>(after - knots.begin()) - 1, n - 1);
        const std::vector<double> values = basis(knots, span, d, params[i]);
        for (size_t k = 0; k <= d; ++k)
            at(i, span - d + k) = values[k];
    }
    for (size_t i = 0; i < n; ++i)
        for (size_t row = i + 1; row < std::min(i + d + 1, n); ++row) {
            const double scale = at(row, i) / at(i, i);
            for (size_t k = i; k < std::min(i + d + 1, n); ++k)
                at(row, k) -= scale * at(i, k);
            addScaled(rows[row], -scale, rows[i]);
        }
    for (size_t i = n; i-- > 0;) {
        for (size_t k = i + 1; k < std::min(i + d + 1, n); ++k)
            addScaled(rows[i], -at(i, k), rows[k]);
        for (double& v : rows[i])
            v /= at(i, i);
    }
    return rows;
}

gu_Rows gu_interpolateClosed(const std::vector<double>& params, const gu_Rows& rows)
{
    // Solved for the slopes at the knots, since there the middle dominates however uneven these are.
    const size_t n = rows.size();
    const auto step = [&](size_t i) { return params[i % n + 1] - params[i % n]; };
    const auto rise = [&](size_t i) {
        Values rises = rows[(i + 1) % n];
        addScaled(rises, -1.0, rows[i % n]);
        return rises;
    };
    CyclicSystem system;
    for (size_t i = 0; i < n; ++i) {
        const double before = 1.0 / step(i + n - 1), after = 1.0 / step(i);
        system.lower.push_back(before);
        system.middle.push_back(2.0 * (before + after));
        system.upper.push_back(after);
        Values& row = system.rows.emplace_back(rows[i].size(), 0.0);
        addScaled(row, 3.0 * before * before, rise(i + n - 1));
        addScaled(row, 3.0 * after * after, rise(i));
    }
    const gu_Rows slopes = system.solve();

    // Of the piece behind row i with the Bezier points b0 to b3: the blossom at the knots around i.
    gu_Rows controls = rows;
    for (size_t i = 0; i < n; ++i) {
        const double h = step(i), ratio = step(i + n - 1) / h;
        addScaled(controls[i], (1.0 + ratio) * h / 3.0, slopes[i]);   // (1 + ratio) (b1 - b0)
        addScaled(controls[i], -ratio, rise(i));                      // -ratio (b3 - b0)
        addScaled(controls[i], ratio * h / 3.0, slopes[(i + 1) % n]); // ratio (b3 - b2)
    }
    return controls;
}
