// Area sampling against its definition, sample by sample and bit for bit.
#include <RU/filter/RU_FilterArea.h>
#include <gtest/gtest.h>
#include <reference/Random.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <numbers>

using namespace reference;

namespace {

struct Taps
{
    std::vector<float> weight;
    std::vector<int> pixel;

    void only(int at)
    {
        weight = {1.0f};
        pixel = {at};
    }
};

/// A caller's own filter: no polynomials to follow.
class Slope : public UT_Filter
{
public:
    Slope() : UT_Filter(1.5f) {}
    float getArea(float t0, float t1) const override { return (t1 - t0) * (1.0f + 0.5f * (t0 + t1)); }
};

struct Axis
{
    UT_FilterType type = UT_FILTER_BOX;
    UT_Filter* filter = nullptr;
    float size = 1.0f;
    int wrap = RU_FILTER_CLAMP, n = 1, first = 0, last = 0;

    float area(float t0, float t1) const { return type == UT_FILTER_BOX ? t1 - t0 : filter->getArea(t0, t1); }

    Taps taps(float u, float du) const
    {
        const float u0 = std::min(u, u + du), u1 = std::max(u, u + du), c = (u0 + u1) * 0.5f;
        const float h = std::max((u1 - u0) * (size * 0.5f), 0.5f) * filter->getSupport();
        if (std::isnan(c - h) || std::isnan(c + h))
            return {};
        const auto whole = [](float place) {
            return static_cast<int>(std::clamp(std::floor(place), -1e9f, 1e9f));
        };
        int lo = whole(c - h), hi = whole(c + h);
        if (hi - lo > 1000) {
            const int middle = (lo + hi) / 2;
            lo = middle - 500;
            hi = middle + 500;
        }
        return march(c, h > 0.0001f ? 0.5f / h : 1000.0f, lo, hi);
    }

    Taps march(float c, float s, int lo, int hi) const
    {
        Taps taps;
        if (wrap == RU_FILTER_BORDER && (lo > n || hi < 0))
            return taps;
        if (wrap == RU_FILTER_CLAMP && (lo > n - 1 || hi < 0)) {
            taps.only(hi < 0 ? 0 : n - 1);
            return taps;
        }
        const bool inside = lo >= 0 && hi < n;
        float t = -0.5f, sum = 0.0f;
        std::vector<float> slots(wrap == RU_FILTER_CLAMP ? static_cast<size_t>(n) : 0, 0.0f);
        int low = -1, high = -1;
        for (int i = lo; i <= hi && t < 0.5f; ++i) {
            const float next = std::min((static_cast<float>(i + 1) - c) * s, 0.5f), w = area(t, next);
            t = next;
            if (wrap == RU_FILTER_CLAMP) {
                if (!inside && w == 0 && low < 0) {
                    if (i + 1 < n)
                        continue;
                    taps.only(n - 1);
                    return taps;
                }
                if (!inside && w == 0 && i - 1 >= 0)
                    break;
                if (!inside && w == 0) {
                    taps.only(0);
                    return taps;
                }
                high = std::clamp(i, 0, n - 1);
                low = low < 0 ? high : low;
                slots[static_cast<size_t>(high)] += w;
            } else {
                if (wrap == RU_FILTER_BORDER && !inside && w == 0 && i > lo)
                    break;
                if (wrap == RU_FILTER_REPEAT || (i >= 0 && i < n)) {
                    taps.weight.push_back(w);
                    taps.pixel.push_back(((i % n) + n) % n);
                }
            }
            sum += w;
        }
        for (int i = low; i >= 0 && i <= high; ++i) {
            taps.weight.push_back(slots[static_cast<size_t>(i)]);
            taps.pixel.push_back(i);
        }
        if (sum != 1.0f && sum != 0.0f)
            for (float& w : taps.weight)
                w *= 1.0f / sum;
        return taps;
    }

    size_t place(int pixel) const { return static_cast<size_t>(std::clamp(pixel, first, last) - first); }
};

/// A random block of samples and what reads it.
struct Scene
{
    explicit Scene(Random& random) : rows(random.between(1, 40)), columns(random.between(1, 40))
    {
        static Slope slope;
        for (Axis* axis : {&x, &y}) {
            axis->n = random.between(1, 60);
            axis->type = static_cast<UT_FilterType>(random.between(0, UT_FILTER_TYPES - 1));
            axis->filter = random.oneIn(8) ? &slope : UT_Filter::getFilter(axis->type);
            axis->size = static_cast<float>(random.between(0.3, 2.5));
            axis->wrap = random.between(0, 2);
        }
        const auto count = static_cast<size_t>(rows * columns);
        const double turn = random.oneIn(3) ? 0.0 : random.between(-3.0, 3.0),
                     zoom = random.between(0.05, 3.0);
        const bool wild = random.oneIn(3);
        for (size_t k = 0; k < count; ++k) {
            const double i = static_cast<double>(k % static_cast<size_t>(columns)) - columns / 2.0;
            const double j = static_cast<double>(k / static_cast<size_t>(columns)) - rows / 2.0;
            u.push_back(static_cast<float>(x.n / 2.0 + zoom * (std::cos(turn) * i - std::sin(turn) * j)));
            v.push_back(static_cast<float>(y.n / 2.0 + zoom * (std::sin(turn) * i + std::cos(turn) * j)));
            for (std::vector<float>* end : {&u1, &v1})
                end->push_back((end == &u1 ? u : v).back() +
                               static_cast<float>(wild ? random.between(-9.0, 9.0) : zoom));
            if (wild && random.oneIn(30)) {
                static constexpr float odd[] = {1e30f, -1e30f, 3000.0f, INFINITY, NAN, -0.0f};
                (random.oneIn(2)   ? random.oneIn(2) ? u : v
                 : random.oneIn(2) ? u1
                                   : v1)[k] = odd[random.between(0, 5)];
            }
            mask.push_back(static_cast<char>(!random.oneIn(5)));
        }
        masked = random.oneIn(2);
        corners = random.oneIn(2);
    }

    void setUp(RU_FilterArea& area)
    {
        area.setFilter(x.type, x.size, y.type, y.size);
        area.setFilter(x.filter, x.size, y.filter, y.size);
        area.setWrap(x.wrap, y.wrap);
        const char* const chosen = masked ? mask.data() : nullptr;
        if (corners)
            area.setFourCornerCoords(u.data(), v.data(), u1.data(), v1.data(), rows, columns, x.n, y.n,
                                     chosen);
        else
            area.setTextureCoords(u.data(), v.data(), rows, columns, x.n, y.n, chosen);
        area.getInputRegion(x.first, x.last, y.first, y.last);
        for (Axis* axis : {&x, &y})
            axis->first = std::max(axis->first, 0);
    }

    float du(int r, int c) const
    {
        return extent(u, u1, r, c, c + 1 < columns ? c : c - 1, r, 0, 1, columns);
    }
    float dv(int r, int c) const { return extent(v, v1, r, c, c, r + 1 < rows ? r : r - 1, 1, 0, rows); }

    float extent(const std::vector<float>& from, const std::vector<float>& to, int r, int c, int fromC,
                 int fromR, int down, int across, int neighbours) const
    {
        const auto at = [&](int row, int column) { return static_cast<size_t>(row * columns + column); };
        if (corners)
            return to[at(r, c)] - from[at(r, c)];
        return neighbours < 2 ? 1.0f : from[at(fromR + down, fromC + across)] - from[at(fromR, fromC)];
    }

    int64_t width() const { return std::max(x.last - x.first + 1, 0); }
    int64_t height() const { return std::max(y.last - y.first + 1, 0); }

    /// The definition.
    float sampleAt(const std::vector<float>& in, int r, int c) const
    {
        const size_t k = static_cast<size_t>(r * columns + c);
        float sum = 0.0f;
        if (width() * height() == 0)
            return sum;
        const Taps alongX = x.taps(u[k], du(r, c)), alongY = y.taps(v[k], dv(r, c));
        for (size_t j = 0; j < alongY.pixel.size(); ++j) {
            float row = 0.0f;
            for (size_t i = 0; i < alongX.pixel.size(); ++i)
                row += alongX.weight[i] *
                       in[y.place(alongY.pixel[j]) * static_cast<size_t>(width()) + x.place(alongX.pixel[i])];
            sum += row * alongY.weight[j];
        }
        return sum;
    }

    int rows, columns;
    Axis x, y;
    std::vector<float> u, v, u1, v1;
    std::vector<char> mask;
    bool masked = false, corners = false;
};

bool same(float a, float b)
{
    return std::isnan(a) ? std::isnan(b) : std::memcmp(&a, &b, 4) == 0;
}

} // namespace

TEST(FilterArea, IsItsDefinition)
{
    int sampled = 0;
    for (uint64_t seed = 0; seed < 1500; ++seed) {
        SCOPED_TRACE(::testing::Message() << "seed " << seed);
        Random random(seed);
        Scene scene(random);
        RU_FilterArea area;
        scene.setUp(area);
        std::vector<float> in[4];
        for (std::vector<float>& plane : in) // of exactly the region
            for (int64_t i = 0; i < scene.width() * scene.height(); ++i)
                plane.push_back(random.oneIn(400) ? anyFloat(random)
                                                  : static_cast<float>(random.between(-1.0, 2.0)));
        const auto count = static_cast<size_t>(scene.rows * scene.columns);
        const UT_Vector4 before = {7.0f, 7.0f, 7.0f, 7.0f};
        std::vector<UT_Vector4> four(count, before);
        std::vector<float> one(count, 7.0f);
        area.sample4(four.data(), in[0].data(), in[1].data(), nullptr, in[3].data());
        RU_FilterArea(area).sample1(one.data(), in[0].data());
        for (int r = 0; r < scene.rows; ++r)
            for (int c = 0; c < scene.columns; ++c) {
                const auto k = static_cast<size_t>(r * scene.columns + c);
                const bool out = scene.masked && scene.mask[k] == 0;
                const float expected[] = {scene.sampleAt(in[0], r, c), scene.sampleAt(in[1], r, c), 0.0f,
                                          scene.sampleAt(in[3], r, c)};
                const float got[] = {four[k].x, four[k].y, four[k].z, four[k].w};
                for (int p = 0; p < 4; ++p)
                    ASSERT_TRUE(same(got[p], out ? 7.0f : expected[p]))
                        << "row " << r << ", column " << c << ", plane " << p << ": " << got[p] << ", not "
                        << expected[p];
                ASSERT_TRUE(same(one[k], four[k].x));
                ++sampled;
            }
    }
    EXPECT_GT(sampled, 400000);
}

TEST(FilterArea, AnnouncesWhatItReads)
{
    const float u[] = {1.5f, 3.5f}, v[] = {0.5f, 0.5f};
    RU_FilterArea area;
    int x0 = 0, x1 = 0, y0 = 0, y1 = 0;
    const auto rangeOf = [&](int wrap, float from, float to) {
        const float ends[] = {from, to};
        area.setWrap(wrap, wrap);
        area.setFourCornerCoords(ends, v, ends + 1, v, 1, 1, 10, 10, nullptr);
        area.getInputRegion(x0, x1, y0, y1);
        return std::pair(x0, x1);
    };
    EXPECT_EQ(rangeOf(RU_FILTER_REPEAT, 12.0f, 14.5f), std::pair(2, 4));
    EXPECT_EQ(rangeOf(RU_FILTER_REPEAT, 8.0f, 12.0f), std::pair(0, 9));                // over the end
    EXPECT_EQ(rangeOf(RU_FILTER_REPEAT, -0.50000006f, -0.50000006f), std::pair(9, 9)); // not 10
    EXPECT_EQ(rangeOf(RU_FILTER_CLAMP, -9.0f, -5.0f), std::pair(0, 0));
    EXPECT_EQ(rangeOf(RU_FILTER_CLAMP, 8.0f, 40.0f), std::pair(8, 9));
    EXPECT_EQ(rangeOf(RU_FILTER_BORDER, 12.0f, 40.0f), std::pair(-1, -1));
    EXPECT_EQ(rangeOf(RU_FILTER_BORDER, 10.0f, 11.0f), std::pair(10, 9)); // starts at the end: nothing

    area.setWrap(5, -1);
    EXPECT_EQ(std::pair(area.getXWrap(), area.getYWrap()), std::pair(+RU_FILTER_CLAMP, +RU_FILTER_CLAMP));
    area.setFilter(UT_FILTER_HANN, 4.0f, UT_FILTER_BOX, 2.0f); // half sizes come back
    EXPECT_EQ(std::pair(area.getXSize(), area.getYSize()), std::pair(2.0f, 1.0f));
    EXPECT_EQ(area.getXFilter(), UT_Filter::getFilter(UT_FILTER_HANN));

    RU_FilterArea plain; // one column: a pixel each, whatever the places
    plain.setTextureCoords(u, v, 2, 1, 10, 10, nullptr);
    plain.getInputRegion(x0, x1, y0, y1);
    EXPECT_EQ(x0, 1);
    EXPECT_EQ(x1, 4);
}

TEST(FilterArea, KernelsAreTheirFormulas)
{
    const auto sinc = [](double x) {
        return x == 0 ? 1.0 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
    };
    struct Kernel
    {
        std::function<double(double)> value;
        double radius;
    };
    const auto cubic = [](double b, double c) {
        return [=](double x) {
            return x < 1 ? ((12 - 9 * b - 6 * c) * x * x * x + (12 * b + 6 * c - 18) * x * x + 6 - 2 * b) / 6
                         : ((-b - 6 * c) * x * x * x + (6 * b + 30 * c) * x * x - (12 * b + 48 * c) * x +
                            8 * b + 24 * c) /
                               6;
        };
    };
    const Kernel kernels[] = {{[](double x) { return 1 - x; }, 1},
                              {[](double x) { return std::exp(-2 * x * x); }, 1.5},
                              {cubic(0, 0.5), 2},
                              {cubic(1.0 / 3, 1.0 / 3), 2},
                              {[&](double x) { return sinc(x) * sinc(x / 3); }, 3},
                              {[](double x) { return 0.5 + 0.5 * std::cos(std::numbers::pi * x); }, 1}};
    int types = 0;
    for (const Kernel& kernel : kernels) {
        SCOPED_TRACE(++types);
        constexpr int steps = 6000;
        const double step = kernel.radius / steps;
        std::vector<double> running = {0.0};
        for (int i = 0; i < steps; ++i)
            running.push_back(running.back() + step * kernel.value((i + 0.5) * step));
        const UT_Filter& area =
            *UT_Filter::getFilter(static_cast<UT_FilterType>(UT_FILTER_TRIANGLE + types - 1));
        const UT_Filter& point =
            *UT_Filter::getFilter(static_cast<UT_FilterType>(UT_FILTER_TRIANGLE_SAMPLED + types - 1));
        const double full = 2 * running.back(), width = point.getSupport();
        EXPECT_EQ(area.getSupport(), 2 * kernel.radius);
        for (int i = 0; i < steps; i += 7) {
            const auto t = static_cast<float>(i * step / (2 * kernel.radius));
            ASSERT_NEAR(area.getArea(-t, 0.0f), running[static_cast<size_t>(i)] / full, 4e-7) << i;
            const auto middle = static_cast<float>(i * step / width), part = 0x1p-10f;
            ASSERT_NEAR(point.getArea(middle - part, middle + part) / (2 * part),
                        kernel.value(i * step) * width / full, 1e-5)
                << i;
        }
        EXPECT_EQ(point.getArea(0.499f, 0.5f), 0.0f); // between its radius and half a pixel more
    }
    EXPECT_EQ(types + 2 + types, UT_FILTER_TYPES);
}
