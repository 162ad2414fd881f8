#include <GU/gu_FitCurve.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

using Places = std::vector<gu_Place>;
using Bezier = std::array<gu_Place, 4>;

gu_Place sum(const gu_Place& a, double scale, const gu_Place& b)
{
    return {a[0] + scale * b[0], a[1] + scale * b[1], a[2] + scale * b[2]};
}

double dot(const gu_Place& a, const gu_Place& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

double distance(const gu_Place& a, const gu_Place& b)
{
    return std::hypot(b[0] - a[0], b[1] - a[1], b[2] - a[2]);
}

/// The direction from a to b; null for equal places.
gu_Place direction(const gu_Place& a, const gu_Place& b)
{
    const double length = distance(a, b);
    return length > 0.0 ? sum({}, 1.0 / length, sum(b, -1.0, a)) : gu_Place{};
}

std::array<double, 4> weights(double t)
{
    const double s = 1.0 - t;
    return {s * s * s, 3.0 * s * s * t, 3.0 * s * t * t, t * t * t};
}

gu_Place at(const Bezier& curve, double t)
{
    const std::array<double, 4> w = weights(t);
    gu_Place p = {};
    for (size_t i = 0; i < 4; ++i)
        p = sum(p, w[i], curve[i]);
    return p;
}

gu_Place slope(const Bezier& curve, double t)
{
    const double s = 1.0 - t;
    const double w[] = {-3.0 * s * s, 3.0 * s * (s - 2.0 * t), 3.0 * t * (2.0 * s - t), 3.0 * t * t};
    gu_Place p = {};
    for (size_t i = 0; i < 4; ++i)
        p = sum(p, w[i], curve[i]);
    return p;
}

/// A parameter nearer to the place on the curve that is next to a sample: a step of Newton's method.
double nearer(const Bezier& curve, const gu_Place& sample, double t)
{
    const gu_Place off = sum(at(curve, t), -1.0, sample), along = slope(curve, t);
    gu_Place bend = {};
    for (size_t i = 0; i < 2; ++i) {
        const gu_Place turn = sum(sum(curve[i], -2.0, curve[i + 1]), 1.0, curve[i + 2]);
        bend = sum(bend, 6.0 * (i == 0 ? 1.0 - t : t), turn);
    }
    const double rate = dot(along, along) + dot(off, bend);
    const double next = rate > 0.0 ? t - dot(off, along) / rate : t;
    return std::isfinite(next) ? std::clamp(next, 0.0, 1.0) : t;
}

/// Goes along the samples piece by piece, each as long as it may be. Pieces go on in one direction where they meet.
class Fitter
{
public:
    Fitter(const Places& samples, double tolerance, bool closed)
        : samples_(samples), tolerance_(tolerance), closed_(closed), result_{samples.front()}
    {
    }

    /// The samples from `begin` to `end`, with directions that point into the curve at both ends.
    void fit(size_t begin, size_t end, gu_Place from, const gu_Place& to)
    {
        Bezier curve;
        const auto fits = [&](size_t last) {
            return fitPiece(begin, last, from, last == end ? to : sum({}, -1.0, tangent(last)), curve);
        };
        while (begin < end) {
            size_t longest = begin, shortest = end + 1; // that fit, and that do not
            for (size_t step = 1; longest < end && shortest > end; step *= 2) {
                const size_t last = std::min(begin + step, end);
                (fits(last) ? longest : shortest) = last;
            }
            while (longest + 1 < shortest) {
                const size_t last = longest + (shortest - longest) / 2;
                (fits(last) ? longest : shortest) = last;
            }
            fits(longest);
            result_.insert(result_.end(), curve.begin() + 1, curve.end());
            from = tangent(longest);
            begin = longest;
        }
    }

    /// The direction at a sample, from one a little before it to one a little behind.
    gu_Place tangent(size_t sample) const
    {
        const gu_Place ahead = direction(beside(sample, -1), beside(sample, 1));
        return dot(ahead, ahead) > 0.0 ? ahead : direction(samples_[sample], beside(sample, 1));
    }
    gu_Place inwards(size_t sample, int way) const
    {
        return direction(samples_[sample], beside(sample, way));
    }

    /// Which samples are corners: those that turn most around, and by more than `angle`. None for angle 0.
    std::vector<char> corners(double angle) const
    {
        std::vector<char> corners(samples_.size(), 0);
        if (!(angle > 0.0))
            return corners;
        const auto last = static_cast<int64_t>(samples_.size()) - 1;
        std::vector<double> cosines(samples_.size(), 1.0);
        for (int64_t i = closed_ ? 0 : 1; i < last; ++i) {
            const auto sample = static_cast<size_t>(i);
            cosines[sample] = -dot(inwards(sample, -1), inwards(sample, 1));
        }
        for (int64_t i = closed_ ? 0 : 1; i < last; ++i) {
            const double own = cosines[static_cast<size_t>(i)];
            bool isCorner = own < std::cos(angle);
            for (int64_t beside = i - 3; beside <= i + 3; ++beside) {
                if (beside == i || (!closed_ && (beside < 0 || beside > last)))
                    continue;
                const double other = cosines[static_cast<size_t>((beside % last + last) % last)];
                isCorner =
                    isCorner && (beside < i ? own < other : own <= other); // of equal ones the first counts
            }
            corners[static_cast<size_t>(i)] = isCorner;
        }
        return corners;
    }

    Places result() { return std::move(result_); }

private:
    /// The next sample on one side that is further away than noise, among the nearest few.
    const gu_Place& beside(size_t sample, int way) const
    {
        const size_t last = samples_.size() - 1;
        size_t i = sample;
        for (int step = 0; step < 16; ++step) {
            if (i == (way > 0 ? last : 0)) {
                if (!closed_)
                    break;
                i = way > 0 ? 0 : last;
            }
            i = way > 0 ? i + 1 : i - 1;
            if (distance(samples_[i], samples_[sample]) > 3.0 * tolerance_)
                break;
        }
        return samples_[i];
    }

    bool fitPiece(size_t begin, size_t end, const gu_Place& from, const gu_Place& to, Bezier& curve) const
    {
        const gu_Place &first = samples_[begin], &last = samples_[end];
        if (end == begin + 1) {
            const double length = distance(first, last) / 3.0;
            curve = {first, sum(first, length, from), sum(last, length, to), last};
            return true;
        }
        std::vector<double> params = chordParams(begin, end);
        for (int round = 0; round < 5; ++round) {
            curve = leastSquares(begin, end, from, to, params, round == 0 ? nullptr : &curve);
            for (int step = 0; step < 2; ++step)
                for (size_t i = 1; i + 1 < params.size(); ++i)
                    params[i] = nearer(curve, samples_[begin + i], params[i]);
            const double error = largestError(curve, begin, params);
            if (error <= tolerance_)
                return true;
            if (!(error <=
                  (round == 0 ? 100.0 : 4.0) * tolerance_)) // another round will not make up for that
                return false;
        }
        return false;
    }

    std::vector<double> chordParams(size_t begin, size_t end) const
    {
        std::vector<double> params = {0.0};
        for (size_t i = begin; i < end; ++i)
            params.push_back(params.back() + distance(samples_[i], samples_[i + 1]));
        const double whole = params.back();
        for (double& t : params)
            t /= whole;
        return params;
    }

    /// The lengths of the handles that bring the curve closest to all samples at their parameters; where a curve
    /// before is given, to the lines along it there, since samples may slide.
    Bezier leastSquares(size_t begin, size_t end, const gu_Place& from, const gu_Place& to,
                        const std::vector<double>& params, const Bezier* before) const
    {
        const gu_Place &first = samples_[begin], &last = samples_[end];
        double aa = 0.0, ab = 0.0, bb = 0.0, ar = 0.0, br = 0.0;
        for (size_t i = 0; i < params.size(); ++i) {
            const std::array<double, 4> w = weights(params[i]);
            gu_Place a = sum({}, w[1], from), b = sum({}, w[2], to);
            gu_Place rest = sum(sum(samples_[begin + i], -(w[0] + w[1]), first), -(w[2] + w[3]), last);
            if (before) {
                const gu_Place along = direction({}, slope(*before, params[i]));
                for (gu_Place* const p : {&a, &b, &rest})
                    *p = sum(*p, -dot(*p, along), along);
            }
            aa += dot(a, a);
            ab += dot(a, b);
            bb += dot(b, b);
            ar += dot(a, rest);
            br += dot(b, rest);
        }
        const double chord = distance(first, last), determinant = aa * bb - ab * ab;
        double head = (ar * bb - br * ab) / determinant, tail = (aa * br - ab * ar) / determinant;
        const auto fits = [chord](double length) { return length > 1e-6 * chord && length < 1e3 * chord; };
        if (!(determinant > 1e-12 * aa * bb) || !fits(head) || !fits(tail))
            head = tail = chord / 3.0;
        Bezier curve = {first, sum(first, head, from), sum(last, tail, to), last};
        for (gu_Place& p : curve) // errors are measured of what the result will hold
            for (double& v : p)
                v = static_cast<float>(v);
        return curve;
    }

    double largestError(const Bezier& curve, size_t begin, const std::vector<double>& params) const
    {
        double largest = 0.0;
        for (size_t i = 0; i < params.size(); ++i)
            largest = std::max(largest, distance(at(curve, params[i]), samples_[begin + i]));
        return largest;
    }

    const Places& samples_;
    double tolerance_;
    bool closed_;
    Places result_;
};

} // namespace

std::vector<gu_Place> gu_fitCurve(const std::vector<gu_Place>& samples, double tolerance, double cornerAngle,
                                  bool closed)
{
    const size_t last = samples.size() - 1;
    Fitter fitter(samples, tolerance, closed);
    const std::vector<char> corners = fitter.corners(cornerAngle);
    size_t begin = 0;
    for (size_t i = 1; i <= last; ++i) {
        if (i < last && !corners[i])
            continue;
        const bool smoothStart = begin == 0 && !corners[0], smoothEnd = i == last && !corners[0];
        const gu_Place from = smoothStart ? fitter.tangent(0) : fitter.inwards(begin, 1);
        const gu_Place to = smoothEnd ? sum({}, -1.0, fitter.tangent(last)) : fitter.inwards(i, -1);
        fitter.fit(begin, i, from, to);
        begin = i;
    }
    return fitter.result();
}
