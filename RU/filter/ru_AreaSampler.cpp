#include <RU/filter/ru_AreaSampler.h>

#include <RU/filter/RU_FilterArea.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr int64_t stripColumns = 256; ///< whose row sums stay in the cache
constexpr int32_t bandRows = 512;     ///< of the input at a time

/// The nearest whole number that an int holds with room to spare; not for NaN.
int wholeOf(float v)
{
    return static_cast<int>(std::clamp(std::floor(v), -1e9f, 1e9f));
}

/// The pixel of a tap, as a place among those that the planes hold.
int32_t placeOf(const ru_AreaAxis& axis, int pixel)
{
    return std::clamp(pixel, axis.first, axis.last) - axis.first;
}

/// Can the kernels build this axis's windows?
bool buildsInLanes(const ru_AreaAxis& axis)
{
    constexpr int exact = 1 << 24; // integers that a float holds
    return (axis.box || axis.pieces != nullptr) && axis.support > 0.0002f && axis.last < exact &&
           axis.first <= axis.last;
}

/// Do columns share (u, du) and rows (v, dv), bit for bit?
bool isShared(const ru_AreaGrid& grid)
{
    const auto n = static_cast<size_t>(grid.columns);
    for (int64_t r = 0; r < grid.rows; ++r) {
        const int64_t k = r * grid.columns;
        if (std::memcmp(grid.u, grid.u + k, 4 * n) != 0 || std::memcmp(grid.du, grid.du + k, 4 * n) != 0 ||
            std::memcmp(grid.v + k, grid.v + k + 1, 4 * (n - 1)) != 0 ||
            std::memcmp(grid.dv + k, grid.dv + k + 1, 4 * (n - 1)) != 0)
            return false;
    }
    return true;
}

void appendOrdered(const ru_AreaAxis& axis, float u, float du, ru_AreaTaps& out)
{
    ru_areaWindow(axis, std::min(u, u + du), std::max(u, u + du), out);
}

/// A window under construction, appended to others.
class March
{
public:
    March(const ru_AreaAxis& axis, ru_AreaTaps& out) : axis_(axis), out_(out), begin_(out.weight.size()) {}

    /// The window is this one pixel.
    void only(int pixel)
    {
        drop();
        add(pixel, 1.0f);
    }

    void drop()
    {
        out_.weight.resize(begin_);
        out_.tap.resize(begin_);
    }

    void add(int pixel, float weight)
    {
        out_.weight.push_back(weight);
        out_.tap.push_back(placeOf(axis_, pixel));
        last_ = pixel;
    }

    /// As add(), to the last tap where it is the same pixel.
    void accumulate(int pixel, float weight)
    {
        if (out_.weight.size() > begin_ && pixel == last_)
            out_.weight.back() += weight;
        else
            add(pixel, weight);
    }

    void divideBy(float sum)
    {
        if (sum == 1.0f || sum == 0.0f)
            return;
        const float scale = 1.0f / sum;
        for (size_t i = begin_; i < out_.weight.size(); ++i)
            out_.weight[i] *= scale;
    }

private:
    const ru_AreaAxis& axis_;
    ru_AreaTaps& out_;
    size_t begin_;
    int last_ = 0;
};

/// The weights of pixels lo .. hi around c. False: the march is over, and its taps as they should be.
bool march(const ru_AreaAxis& axis, float c, float h, int lo, int hi, March& window)
{
    const int n = axis.resolution;
    const bool inside = lo >= 0 && hi < n;
    const float s = h > 0.0001f ? 0.5f / h : 1000.0f;
    float t = -0.5f, sum = 0.0f;
    bool leading = true;
    for (int i = lo; i <= hi && t < 0.5f; ++i) {
        const float next = std::min((static_cast<float>(i + 1) - c) * s, 0.5f);
        const float weight = axis.box ? next - t : axis.filter->getArea(t, next);
        t = next;
        if (!inside && axis.wrap != RU_FILTER_REPEAT && weight == 0.0f) {
            if (axis.wrap == RU_FILTER_CLAMP && leading) {
                if (i + 1 >= n) {
                    window.only(n - 1);
                    return false;
                }
                continue;
            }
            if (axis.wrap == RU_FILTER_CLAMP && i - 1 < 0) {
                window.only(0);
                return false;
            }
            if (axis.wrap == RU_FILTER_CLAMP || i > lo)
                break;
        }
        leading = false;
        sum += weight;
        if (axis.wrap == RU_FILTER_REPEAT)
            window.add((i % n + n) % n, weight);
        else if (axis.wrap == RU_FILTER_CLAMP)
            window.accumulate(std::clamp(i, 0, n - 1), weight);
        else if (i >= 0 && i < n)
            window.add(i, weight);
    }
    window.divideBy(sum);
    return true;
}

} // namespace

void ru_AreaTaps::clear()
{
    weight.clear();
    tap.clear();
    start.assign(1, 0);
}

void ru_areaWindow(const ru_AreaAxis& axis, float u0, float u1, ru_AreaTaps& out)
{
    const float c = (u0 + u1) * 0.5f;
    float h = (u1 - u0) * axis.half;
    h = (h < 0.5f ? 0.5f : h) * axis.support;
    const int n = axis.resolution;
    // No window: without pixels to read, or at a place that is none.
    if (n >= 1 && axis.first <= axis.last && !std::isnan(c - h) && !std::isnan(c + h)) {
        int lo = wholeOf(c - h), hi = wholeOf(c + h);
        constexpr int most = 1000;
        if (hi - lo > most) {
            const int middle = (lo + hi) / 2;
            lo = middle - most / 2;
            hi = middle + most / 2;
        }
        March window(axis, out);
        if (axis.wrap == RU_FILTER_CLAMP && (lo > n - 1 || hi < 0))
            window.only(hi < 0 ? 0 : n - 1);
        else if (axis.wrap != RU_FILTER_BORDER || (lo <= n && hi >= 0))
            march(axis, c, h, lo, hi, window);
    }
    out.start.push_back(static_cast<int64_t>(out.weight.size()));
}

ru_AreaWindows* ru_AreaSampler::work()
{
    if (work_ == nullptr)
        work_ = std::make_unique_for_overwrite<ru_AreaWindows[]>(2);
    return work_.get();
}

void ru_AreaSampler::sample(const ru_AreaGrid& grid, const ru_AreaAxis& x, const ru_AreaAxis& y,
                            const ru_AreaPlanes& planes, const char* mask)
{
    if (isShared(grid))
        sampleShared(grid, x, y, planes);
    else
        sampleEach(grid, x, y, planes, mask);
}

void ru_AreaSampler::sampleEach(const ru_AreaGrid& grid, const ru_AreaAxis& x, const ru_AreaAxis& y,
                                const ru_AreaPlanes& planes, const char* mask)
{
    const int64_t total = grid.rows * grid.columns;
    left_.assign(static_cast<size_t>(total), 1);
    constexpr int64_t reach = INT32_MAX; // of the kernel's places
    if (buildsInLanes(x) && buildsInLanes(y) &&
        planes.size + planes.stride * (ru_AreaWindows::mostTaps + 2) + ru_AreaWindows::mostTaps < reach)
        ru_areaRows().samples(grid, x, y, planes, work(), left_.data());
    for (int64_t k = 0; k < total; ++k) {
        if (left_[static_cast<size_t>(k)] == 0 || (mask != nullptr && mask[k] == 0))
            continue;
        x_.clear();
        y_.clear();
        appendOrdered(x, grid.u[k], grid.du[k], x_);
        appendOrdered(y, grid.v[k], grid.dv[k], y_);
        sampleOne(planes, k);
    }
}

/// The sample of the one window of each axis.
void ru_AreaSampler::sampleOne(const ru_AreaPlanes& planes, int64_t k)
{
    for (int p = 0; p < planes.count; ++p) {
        float sum = 0.0f;
        for (size_t j = 0; j < y_.tap.size(); ++j) {
            const float* in = planes.in[p] + y_.tap[j] * planes.stride;
            float row = 0.0f;
            for (size_t i = 0; i < x_.tap.size(); ++i)
                row += x_.weight[i] * in[x_.tap[i]];
            sum += row * y_.weight[j];
        }
        planes.out[p][k] = sum;
    }
}

/// The windows of u[0], u[step], ...
void ru_AreaSampler::windowsAlong(const ru_AreaAxis& axis, const float* u, const float* du, int64_t step,
                                  int64_t count, ru_AreaTaps& out)
{
    const ru_AreaKernels& kernels = ru_areaRows();
    const bool inLanes = buildsInLanes(axis);
    out.clear();
    for (int64_t k = 0; k < count; k += kernels.lanes) {
        const int64_t live = std::min(kernels.lanes, count - k);
        float low[ru_AreaWindows::mostLanes] = {}, high[ru_AreaWindows::mostLanes] = {};
        for (int64_t lane = 0; lane < live; ++lane) {
            const float a = u[(k + lane) * step], b = a + du[(k + lane) * step];
            low[lane] = std::min(a, b);
            high[lane] = std::max(a, b);
        }
        ru_AreaWindows& built = *work();
        if (inLanes)
            kernels.windows(axis, low, high, built);
        for (int64_t lane = 0; lane < live; ++lane) {
            if (!inLanes || built.plain[lane] == 0) {
                ru_areaWindow(axis, low[lane], high[lane], out);
                continue;
            }
            for (int32_t j = 0; j < built.count[lane]; ++j) {
                out.weight.push_back(built.weight[j * kernels.lanes + lane]);
                out.tap.push_back(built.first[lane] + j);
            }
            out.start.push_back(static_cast<int64_t>(out.weight.size()));
        }
    }
}

/// The sums of input rows top .. top + rows - 1 with the taps of columns k0 .. k1 - 1, to sums_.
void ru_AreaSampler::sumBand(const ru_AreaPlanes& planes, int plane, int64_t k0, int64_t k1, int32_t top,
                             int32_t rows)
{
    const ru_AreaKernels& kernels = ru_areaRows();
    const auto begin = x_.tap.begin() + x_.start[static_cast<size_t>(k0)];
    const auto end = x_.tap.begin() + x_.start[static_cast<size_t>(k1)];
    const int32_t leftmost = begin == end ? 0 : *std::min_element(begin, end);
    const int32_t rightmost = begin == end ? -1 : *std::max_element(begin, end);
    const int64_t width = k1 - k0 + 3 + kernels.lanes;
    turned_.resize(std::max(turned_.size(), static_cast<size_t>((rightmost - leftmost + 1) * kernels.lanes)));
    sums_.resize(std::max(sums_.size(), static_cast<size_t>((rows + kernels.lanes) * width)));
    for (int32_t b = 0; b < rows; b += static_cast<int32_t>(kernels.lanes)) {
        const float* from[ru_AreaWindows::mostLanes];
        for (int32_t lane = 0; lane < static_cast<int32_t>(kernels.lanes); ++lane)
            from[lane] = planes.in[plane] + (top + std::min(b + lane, rows - 1)) * planes.stride + leftmost;
        kernels.turn(from, rightmost - leftmost + 1, turned_.data());
        kernels.rowSums(x_.weight.data(), x_.tap.data(), x_.start.data() + k0, k1 - k0, turned_.data(),
                        leftmost, sums_.data() + b * width, width);
    }
}

void ru_AreaSampler::sampleShared(const ru_AreaGrid& grid, const ru_AreaAxis& x, const ru_AreaAxis& y,
                                  const ru_AreaPlanes& planes)
{
    const ru_AreaKernels& kernels = ru_areaRows();
    windowsAlong(x, grid.u, grid.du, 1, grid.columns, x_);
    windowsAlong(y, grid.v, grid.dv, grid.columns, grid.rows, y_);
    const auto tapsOf = [&](int64_t row) { return y_.start[static_cast<size_t>(row)]; };
    for (int64_t k0 = 0; k0 < grid.columns; k0 += stripColumns) {
        const int64_t k1 = std::min(k0 + stripColumns, grid.columns);
        for (int64_t r0 = 0, r1 = 0; r0 < grid.rows; r0 = r1) {
            int32_t top = INT32_MAX, bottom = -1;
            for (r1 = r0; r1 < grid.rows; ++r1) { // as many output rows as a band of the input serves
                int32_t low = top, high = bottom;
                for (int64_t j = tapsOf(r1); j < tapsOf(r1 + 1); ++j) {
                    low = std::min(low, y_.tap[static_cast<size_t>(j)]);
                    high = std::max(high, y_.tap[static_cast<size_t>(j)]);
                }
                if (r1 > r0 && high - low >= bandRows)
                    break;
                top = low;
                bottom = high;
            }
            for (int p = 0; p < planes.count; ++p) {
                if (bottom >= top)
                    sumBand(planes, p, k0, k1, top, bottom - top + 1);
                const int64_t width = k1 - k0 + 3 + kernels.lanes;
                for (int64_t r = r0; r < r1; ++r)
                    kernels.columnSums(y_.weight.data() + tapsOf(r), y_.tap.data() + tapsOf(r),
                                       tapsOf(r + 1) - tapsOf(r), sums_.data(), top, width,
                                       planes.out[p] + r * grid.columns + k0, k1 - k0);
            }
        }
    }
}
