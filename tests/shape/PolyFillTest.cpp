#include <GU/GU_Detail.h>
#include <GU/GU_PrimPoly.h>
#include <RU/shape/RU_PolyFill.h>
#include <gtest/gtest.h>
#include <reference/Picture.h>
#include <reference/PolyFill.h>

#include <atomic>
#include <numbers>
#include <thread>

namespace {

using namespace reference;

using Outline = std::vector<UT_Vector2>;

/// An image, its buckets and its sub-samples.
struct Setting
{
    int width, height, tileWidth, tileHeight, nx = 8, ny = 8;
};
constexpr Setting wide = {97, 53, 32, 20};

Setting anySetting(uint64_t seed)
{
    static constexpr Setting cuts[] = {{40, 23, 16, 7}, {64, 32, 32, 32},   {17, 11, 1, 1},  {200, 3, 30, 2},
                                       {3, 90, 5, 128}, {1100, 2, 1100, 2}, {2, 300, 2, 300}};
    static constexpr int patterns[][2] = {{8, 8}, {4, 4}, {3, 5}, {1, 1}, {64, 1}, {1, 64}, {5, 11}};
    Setting setting = cuts[seed % std::size(cuts)];
    const auto& pattern = patterns[seed / std::size(cuts) % std::size(patterns)];
    setting.nx = pattern[0];
    setting.ny = pattern[1];
    return setting;
}

/// A fill, and the same by brute force.
class Subject
{
public:
    explicit Subject(const Setting& s, RU_PolyFillMethod method = RU_POLYFILL_NORMAL)
        : fill(method, 8), expected(s.width, s.height, s.nx, s.ny), setting(s), method_(method)
    {
    }

    void add(const FillTriangles& triangles)
    {
        expected.add(triangles);
        for (const auto& [a, b, c] : triangles)
            fill.addTriangle(a.x, b.x, c.x, a.y, b.y, c.y);
    }

    /// Draws all buckets in any order.
    void draw(Picture& image, Random& random, const UT_Vector4& colour, int threadCount)
    {
        const Setting& s = setting;
        const bool isEarly = random.oneIn(2), isDefault = s.nx == 8; // which threads find then
        if (isEarly && !isDefault)
            fill.setSampling(s.nx, s.ny);
        if (isEarly)
            fill.setResolution(5, 4, 3, 2); // of a picture before
        fill.setResolution(s.width, s.height, s.tileWidth, s.tileHeight);
        if (!isEarly && !isDefault)
            fill.setSampling(s.nx, s.ny);
        std::vector<std::pair<int, int>> corners;
        for (int y = 0; y < s.height; y += s.tileHeight)
            for (int x = 0; x < s.width; x += s.tileWidth)
                corners.emplace(corners.begin() + random.between(0, static_cast<int>(corners.size())), x, y);
        std::atomic<size_t> next = 0;
        const auto work = [&](int thread) {
            for (size_t i = next++; i < corners.size(); i = next++)
                drawBucket(image, corners[i].first, corners[i].second, colour, thread);
        };
        std::vector<std::thread> others;
        for (int thread = 1; thread < threadCount; ++thread)
            others.emplace_back(work, thread);
        work(0);
        for (std::thread& other : others)
            other.join();
    }

    /// Draws in white over -1, which shows what is written. Result: the sum of all pixels that are.
    double expectSame(Random& random, RU_FeatherDropoff dropoff = RU_DROPOFF_LINEAR)
    {
        const bool isFeather = method_ == RU_POLYFILL_FEATHER;
        fill.setDropoff(dropoff);
        Picture image({PXL_FORMAT_float32, true}, setting.width, setting.height);
        const auto* values = reinterpret_cast<float*>(image.data(0));
        std::fill_n(reinterpret_cast<float*>(image.data(0)), image.list.itemCount, -1.0f);
        draw(image, random, {1.0f, 1.0f, 1.0f, 1.0f}, isFeather ? 8 : 1);
        int wrong = 0;
        double sum = 0.0;
        for (int64_t i = 0; i < image.list.itemCount; ++i) {
            const float value = isFeather ? expected.feathered(i, dropoff) : expected.value(i, 1.0f);
            const float apart = std::abs(values[i] - (expected.covers(i) ? value : -1.0f));
            wrong += !(apart <= (isFeather ? 1e-6f : 0.0f));
            sum += std::max(values[i], 0.0f);
        }
        EXPECT_EQ(wrong, 0) << "of " << setting.width << " x " << setting.height << " pixels, " << setting.nx
                            << " x " << setting.ny;
        return sum;
    }

    RU_PolyFill fill;
    Fill expected;
    Setting setting;

private:
    void drawBucket(Picture& image, int x1, int y1, const UT_Vector4& colour, int thread)
    {
        const int bucketWidth = std::min(setting.tileWidth, setting.width - x1);
        const int bucketHeight = std::min(setting.tileHeight, setting.height - y1);
        Picture bucket(image.format, bucketWidth, bucketHeight, x1, y1);
        bucket.list.blackPoint = image.list.blackPoint;
        bucket.list.whitePoint = image.list.whitePoint;
        const auto copyRows = [&](bool in) {
            const int64_t row = int64_t(bucketWidth) * image.format.size();
            for (int i = 0; i < 4 * bucketHeight; ++i) {
                unsigned char* here =
                    image.data(i % 4) + (int64_t(y1 + i / 4) * setting.width + x1) * image.format.size();
                unsigned char* there = bucket.data(i % 4) + i / 4 * row;
                std::copy_n(in ? here : there, row, in ? there : here);
            }
        };
        copyRows(true);
        for (int c = 0; c < 4; ++c) {
            bucket.list.tiles[c] = image.list.tiles[c] == nullptr ? nullptr : &bucket.tiles[c];
            bucket.tiles[c].setConstantTile(image.tiles[c].isConstant());
            bucket.tiles[c].setDone(image.tiles[c].isDone());
        }
        fill.scanConvert(&bucket.list, x1 / setting.tileWidth, y1 / setting.tileHeight, colour, thread);
        EXPECT_TRUE(bucket.guardsIntact());
        copyRows(false);
    }

    RU_PolyFillMethod method_;
};

UT_Vector2 placeIn(Random& random, double low, double high)
{
    const auto x = static_cast<float>(random.between(low, high));
    return {x, static_cast<float>(random.between(low, high))};
}

/// The place of a sub-sample that far into the image, or beside one where it is no float.
UT_Vector2 sampleAt(const Fill& fill, double x, double y)
{
    const auto on = [](const std::vector<double>& samples, double part) {
        return static_cast<float>(
            samples[static_cast<size_t>(part * static_cast<double>(samples.size() - 1))]);
    };
    return {on(fill.across.samples, x), on(fill.down.samples, y)};
}

/// Around the image or far about, close together, on few places, almost on a line, on sub-samples, or hostile.
Outline anyVertices(int count, const Fill& fill, Random& random)
{
    static constexpr float hostile[] = {1e7f,  -5.0f,  1.0f,  0.0f, -0.0f,     0.5f,
                                        1e30f, -1e30f, 3e38f, NAN,  -HUGE_VALF};
    const int kind = random.between(0, 7);
    const UT_Vector2 middle = placeIn(random, -0.1, 1.1), across = placeIn(random, -1.0, 1.0);
    Outline all(static_cast<size_t>(count));
    for (UT_Vector2& p : all) {
        p = kind == 1 ? placeIn(random, -20.0, 20.0) : placeIn(random, -0.2, 1.2);
        if (kind == 2)
            p = middle + p * 0.05f;
        else if (kind == 3)
            p = {std::round(p.x * 8.0f) / 8.0f, std::round(p.y * 8.0f) / 8.0f};
        else if (kind == 4)
            p = middle + across * p.x;
        else if (kind == 5 || kind == 6)
            p = sampleAt(fill, random.between(0.0, 1.0), random.between(0.0, 1.0));
        if (kind >= 6 && random.oneIn(2)) // the far ones not among places in line, whose area they round off
            (random.oneIn(2) ? p.x : p.y) = hostile[random.bits() % (kind == 6 ? 6 : std::size(hostile))];
    }
    return all;
}

/// Over few vertices, so that they share edges in all ways, overlap and repeat.
FillTriangles anyTriangles(int count, const Fill& fill, Random& random)
{
    const Outline vertices = anyVertices(random.between(3, 3 + count), fill, random);
    FillTriangles triangles(static_cast<size_t>(count));
    for (FillTriangle& triangle : triangles)
        for (UT_Vector2& p : triangle)
            p = vertices[random.bits() % vertices.size()];
    return triangles;
}

/// A grid from outside to outside of the image, its inner vertices shifted or on sub-samples.
FillTriangles mesh(const Fill& fill, Random& random)
{
    const int across = random.between(1, 9), down = random.between(1, 9), kind = random.between(0, 2);
    std::vector<Outline> rows(static_cast<size_t>(down + 1));
    for (int j = 0; j <= down; ++j)
        for (int i = 0; i <= across; ++i) {
            const double shift = kind == 0 || i % across == 0 || j % down == 0 ? 0.0 : 0.4;
            const double x = (i + random.between(-shift, shift)) / across;
            const double y = (j + random.between(-shift, shift)) / down;
            UT_Vector2 p = {static_cast<float>(x * 1.25 - 0.125), static_cast<float>(y * 1.25 - 0.125)};
            if (kind == 2 && shift > 0.0)
                p = sampleAt(fill, x, y);
            rows[static_cast<size_t>(j)].push_back(p);
        }
    FillTriangles triangles;
    for (size_t j = 1; j < rows.size(); ++j)
        for (size_t i = 1; i < rows[j].size(); ++i)
            for (const UT_Vector2 corner : {rows[j - 1][i], rows[j][i - 1]})
                triangles.insert(triangles.begin() + random.between(0, static_cast<int>(triangles.size())),
                                 {corner, rows[j][i], rows[j - 1][i - 1]});
    for (FillTriangle& triangle : triangles)
        std::swap(triangle[0], triangle[random.bits() % 3]);
    return triangles;
}

/// Around (0.5, 0.5).
Outline star(int count, double low, double high, Random& random)
{
    Outline outline;
    for (int i = 0; i < count; ++i) {
        const double angle = 2.0 * std::numbers::pi * i / count, radius = random.between(low, high);
        outline.push_back({static_cast<float>(0.5 + radius * std::cos(angle)),
                           static_cast<float>(0.5 + radius * std::sin(angle))});
    }
    return outline;
}

double areaOf(const Outline& outline)
{
    double area = 0.0;
    for (size_t i = 0; i < outline.size(); ++i) {
        const UT_Vector2 a = outline[i], b = outline[(i + 1) % outline.size()];
        area += 0.5 * (double(a.x) * b.y - double(b.x) * a.y);
    }
    return area;
}

template <class Places>
void appendPolygon(GU_Detail& detail, const Places& places, int open = 0)
{
    const GU_PrimPoly* const polygon = GU_PrimPoly::build(&detail, std::ssize(places), open);
    int64_t vertex = 0;
    for (const UT_Vector2 p : places)
        detail.setPosition(polygon->vertexPoint(vertex++), {p.x, p.y, 7.0f, 1.0f});
}

/// The triangles that polygons are cut into.
FillTriangles trianglesOf(const GU_Detail& detail)
{
    GU_Detail cut = detail;
    cut.convex();
    FillTriangles triangles;
    for (int64_t i = 0; i < cut.primitiveCount(); ++i)
        if (cut.primitive(i)->isClosed() && cut.primitive(i)->vertexCount() == 3)
            for (int64_t k = (triangles.emplace_back(), 0); k < 3; ++k) {
                const UT_Vector4& p = cut.position(cut.primitive(i)->vertexPoint(k));
                triangles.back()[static_cast<size_t>(k)] = {p.x, p.y};
            }
    return triangles;
}

/// A convex quad in any direction; one of three has its vertices 1 and 2 at one place.
FillQuad anyQuad(Random& random)
{
    const Outline corners = star(4, 0.1, 0.4, random);
    const UT_Vector2 shift = placeIn(random, -0.4, 0.4);
    const bool back = random.oneIn(2);
    FillQuad quad;
    for (size_t i = 0; i < 4; ++i)
        quad[back ? 3 - i : i] = corners[i] + shift;
    if (random.oneIn(3))
        quad[2] = quad[1];
    return quad;
}

} // namespace

TEST(PolyFill, CoversTheSubSamplesInAnyTriangle)
{
    for (uint64_t seed = 1; seed <= 2400 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        Subject subject(anySetting(seed));
        subject.add(anyTriangles(seed % 3 == 0 ? 1 : random.between(1, 8), subject.expected, random));
        subject.expectSame(random);
    }
}

TEST(PolyFill, LeavesNoGapBetweenTriangles)
{
    for (uint64_t seed = 1; seed <= 30; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const Setting setting = seed % 4 == 0 ? wide : anySetting(seed);
        Subject all(setting), half(setting);
        FillTriangles triangles = mesh(all.expected, random);
        all.add(triangles);
        EXPECT_EQ(all.expectSame(random), setting.width * setting.height);
        triangles.resize(triangles.size() / 2 + 1);
        half.add(triangles);
        half.expectSame(random);
    }
}

TEST(PolyFill, FillsWhatPolygonsWindAround)
{
    const double pixels = wide.width * wide.height;
    for (uint64_t seed = 1; seed <= 10; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const Outline outline = star(random.between(4, 200), 0.1, 0.5, random);
        Outline other = star(random.between(3, 50), 0.05, 0.4, random);
        if (seed % 2 == 0)
            std::reverse(other.begin(), other.end());
        GU_Detail detail, more;
        appendPolygon(detail, Outline{{0, 0}, {1, 0}, {1, 1}, {0, 1}}, 1); // is left out
        appendPolygon(detail, Outline{{0, 0}, {1, 1}});
        appendPolygon(detail, outline);
        appendPolygon(more, other);
        Subject subject(wide);
        subject.fill.append(&more);
        subject.fill.initialize(&detail);
        subject.expected.add(trianglesOf(detail));
        EXPECT_NEAR(subject.expectSame(random) / pixels, areaOf(outline), 4e-4);
        subject.fill.append(&more);
        subject.expected.add(trianglesOf(more));
        subject.expectSame(random);
        subject.fill.clearGeometry();
        subject.expected = Subject(wide).expected;
        subject.expectSame(random);
    }
}

class PolyFillOf : public ::testing::TestWithParam<Format>
{
};
INSTANTIATE_TEST_SUITE_P(Formats, PolyFillOf, ::testing::ValuesIn(formats()), nameOfParameter);

TEST_P(PolyFillOf, KeepsTheLargerAndClearsOutside)
{
    for (uint64_t seed = 1; seed <= 24; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const Setting setting = anySetting(seed);
        Picture image(GetParam(), setting.width, setting.height);
        for (int c = 0; c < 4; ++c)
            GetParam().randomize(image.data(c), image.list.itemCount, random, 8);
        if (seed % 4 == 0)
            image.scatter(random);
        if (seed % 8 == 1 && !GetParam().full)
            image.plane.whitePoint = image.list.whitePoint = image.list.blackPoint;
        const float values[] = {1.0f, placeIn(random, 0.0, 1.0).x, -0.25f, 0.0f, 1.5f, 1e9f, NAN};
        float colour[4] = {values[1]};
        for (int c = 1; c < 4; ++c)
            colour[c] = values[random.bits() % std::size(values)];

        Subject subject(setting);
        subject.add(anyTriangles(3, subject.expected, random));
        Bytes expected[4];
        for (int c = 0; c < 4; ++c) {
            expected[c] = image.bytes(c);
            for (int64_t i = 0; i < image.list.itemCount && image.mayWrite(c); ++i)
                if (subject.expected.covers(i))
                    raise(GetParam(), image.plane, expected[c].data(), i,
                          subject.expected.value(i, colour[c]));
        }
        subject.draw(image, random, {colour[0], colour[1], colour[2], colour[3]}, 8);
        for (int c = 0; c < 4; ++c)
            ASSERT_EQ(image.bytes(c), expected[c]) << "component " << c;

        const int outside[][2] = {{-1, 0}, {0, -1}, {9999, 0}, {0, 9999}};
        const auto& [bx, by] = outside[seed % 4];
        subject.fill.scanConvert(&image.list, bx, by, {1.0f, 1.0f, 1.0f, 1.0f}, 0);
        Picture black(GetParam(), setting.width, setting.height);
        black.list.clearToBlack(true);
        for (int c = 0; c < 4; ++c)
            EXPECT_EQ(image.bytes(c),
                      image.tiles[c].isDone() || !image.list.tiles[c] ? expected[c] : black.bytes(c));
    }
}

TEST(PolyFill, LimitsItsSettings)
{
    static std::vector<float> asked;
    const auto ask = [](float x) {
        asked.push_back(x);
        return x;
    };
    const int settings[][4] = {
        {10, 10, 8, 8}, {0, 3, 1, 3}, {-7, 65, 8, 8}, {1 << 30, 4, 8, 8}, {65, -1, 8, 8}};
    for (const auto& [nx, ny, isX, isY] : settings) {
        Random random(1);
        Subject subject({5, 2, 2, 2, isX, isY});
        subject.setting.nx = nx;
        subject.setting.ny = ny;
        subject.fill.setDropoff(5, ask); // reaches further, without effect here
        subject.fill.setDropoff(0, nullptr);
        subject.add({{UT_Vector2{0.0f, -1.0f}, UT_Vector2{0.5f, -1.0f}, UT_Vector2{0.0f, 2.0f}}});
        subject.expectSame(random);
    }
    ASSERT_EQ(asked.size(), 5 * std::size(settings));
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(asked[static_cast<size_t>(i)], static_cast<float>(i) / 5.0f);
}

TEST(PolyFill, FeathersAcrossQuads)
{
    for (uint64_t seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        Subject subject(seed % 4 == 0 ? wide : anySetting(seed), RU_POLYFILL_FEATHER);
        GU_Detail quads;
        appendPolygon(quads, Outline{{0, 0}, {1, 0}, {1, 1}}); // not a quad
        for (int i = random.between(1, 4); i > 0; --i) {
            const FillQuad quad = anyQuad(random);
            appendPolygon(quads, quad);
            subject.expected.addFeather(quad);
        }
        subject.fill.initializeFeather(&quads);
        subject.add(anyTriangles(seed % 3 == 0 ? 0 : 3, subject.expected, random));
        for (int dropoff = RU_DROPOFF_LINEAR; dropoff <= RU_DROPOFF_SMOOTH; ++dropoff)
            subject.expectSame(random, static_cast<RU_FeatherDropoff>(dropoff));
    }
}

TEST(PolyFill, TakesRampsAtCornersOfPixels)
{
    Random random(1);
    GU_Detail quads;
    appendPolygon(quads, Outline{{0.25f, 0.25f}, {0.5f, 0.25f}, {0.5f, 0.75f}, {0.25f, 0.75f}});
    for (const int tile : {1, 2, 8}) {
        Subject subject({4, 4, tile, tile}, RU_POLYFILL_FEATHER);
        subject.fill.initializeFeather(&quads);
        Picture image({PXL_FORMAT_float32, true}, 4, 4);
        for (int64_t i = 0; i < 16; ++i)
            image.format.put(image.data(0), i, -1.0);
        subject.draw(image, random, {1.0f, 1.0f, 1.0f, 1.0f}, 1);
        const double n = -1.0, h = 0.5, q = 0.25; // 1 at x = 2 and y = 1 to 3
        const double expected[4][4] = {{n, q, q, n}, {n, h, h, n}, {n, h, h, n}, {n, q, q, n}};
        for (int i = 0; i < 16; ++i)
            EXPECT_EQ(image.at(0, i % 4, i / 4), expected[i / 4][i % 4]) << i;
    }
}
