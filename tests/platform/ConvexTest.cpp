#include <UT/UT_Convex.h>
#include <gtest/gtest.h>
#include <reference/Random.h>

#include <algorithm>
#include <cmath>

namespace {

using Outline = std::vector<UT_Vector2>;

double cross(UT_Vector2 o, UT_Vector2 a, UT_Vector2 b)
{
    return (double(a.x) - o.x) * (double(b.y) - o.y) - (double(a.y) - o.y) * (double(b.x) - o.x);
}

double areaOf(const Outline& outline)
{
    double area = 0.0;
    for (size_t i = 2; i < outline.size(); ++i)
        area += 0.5 * cross(outline[0], outline[i - 1], outline[i]);
    return area;
}

class Pieces : public UT_Convex
{
public:
    explicit Pieces(const Outline& outline, int most = 3) : outline_(outline) { convex(most); }

    double area() const
    {
        double area = 0.0;
        for (const Outline& piece : pieces)
            area += areaOf(piece);
        return area;
    }
    int64_t covering(UT_Vector2 p) const
    {
        return std::count_if(pieces.begin(), pieces.end(), [p](const Outline& piece) {
            int sides = 0;
            for (size_t i = 0; i < piece.size(); ++i)
                sides |= cross(piece[i], piece[(i + 1) % piece.size()], p) > 0.0 ? 1 : 2;
            return sides != 3;
        });
    }

    std::vector<Outline> pieces;
    bool cornersLieOnEdges = true;

private:
    int64_t vertexCount() const override { return static_cast<int64_t>(outline_.size()); }
    UT_Vector2 vertexPosition(int64_t index) const override { return outline_[static_cast<size_t>(index)]; }
    void beginPiece() override { pieces.emplace_back(); }
    void addVertex(const UT_ConvexCorner& corner) override
    {
        const UT_Vector2 a = vertexPosition(corner.index),
                         b = vertexPosition((corner.index + 1) % vertexCount());
        const UT_Vector2 p = a + (b - a) * corner.fraction, q = {corner.x, corner.y};
        cornersLieOnEdges = cornersLieOnEdges && (p - q).length() <= 1e-5f * (1.0f + (b - a).length());
        pieces.back().push_back(q);
    }
    void endPiece() override {}

    const Outline& outline_;
};

int windingAround(const Outline& outline, UT_Vector2 p)
{
    int winding = 0;
    for (size_t i = 0; i < outline.size(); ++i) {
        const UT_Vector2 a = outline[i], b = outline[(i + 1) % outline.size()];
        if ((a.y <= p.y) != (b.y <= p.y) && (cross(a, b, p) > 0.0) == (a.y <= p.y))
            winding += a.y <= p.y ? 1 : -1;
    }
    return winding;
}

bool isNearEdge(const Outline& outline, UT_Vector2 p)
{
    for (size_t i = 0; i < outline.size(); ++i) {
        const UT_Vector2 a = outline[i], d = outline[(i + 1) % outline.size()] - a, e = p - a;
        const float square = d.x * d.x + d.y * d.y;
        const float t = square > 0.0f ? std::clamp((d.x * e.x + d.y * e.y) / square, 0.0f, 1.0f) : 0.0f;
        if ((e - d * t).length() < 1e-4f)
            return true;
    }
    return false;
}

/// Every point that the outline winds around lies in exactly one piece, others in none.
void expectFilled(const Outline& outline, reference::Random& random)
{
    for (const int most : {3, 4}) {
        const Pieces got(outline, most);
        EXPECT_TRUE(got.cornersLieOnEdges);
        for (const Outline& piece : got.pieces) {
            EXPECT_GE(piece.size(), 3u);
            EXPECT_LE(piece.size(), static_cast<size_t>(most));
        }
        for (int i = 0; i < 200; ++i) {
            const UT_Vector2 p = {static_cast<float>(random.between(-0.1, 1.1)),
                                  static_cast<float>(random.between(-0.1, 1.1))};
            if (!isNearEdge(outline, p)) {
                ASSERT_EQ(got.covering(p), windingAround(outline, p) != 0 ? 1 : 0) << p.x << " " << p.y;
            }
        }
    }
}

/// Around (0.5, 0.5), so that it is simple for one turn. Radii take turns too, or are random.
Outline star(int64_t count, double low, double high, reference::Random* random = nullptr, double turns = 1.0)
{
    Outline outline;
    for (int64_t i = 0; i < count; ++i) {
        const double angle = 2.0 * M_PI * turns * static_cast<double>(i) / static_cast<double>(count);
        const double radius = random ? random->between(low, high) : (i % 2 == 0 ? high : low);
        outline.push_back({static_cast<float>(0.5 + radius * std::cos(angle)),
                           static_cast<float>(0.5 + radius * std::sin(angle))});
    }
    return outline;
}

} // namespace

TEST(Convex, CutsSimpleOutlinesAtTheirVertices)
{
    reference::Random random(1);
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        Outline outline = star(random.between(3, 60), 0.02, 0.5, &random);
        if (round % 2 == 0)
            std::reverse(outline.begin(), outline.end());
        const Pieces got(outline);
        EXPECT_LE(got.pieces.size(), outline.size() - 2);
        EXPECT_NEAR(got.area(), areaOf(outline), 1e-7);
        expectFilled(outline, random);
    }
    for (const int64_t count : {5000, 10000}) {
        const Outline outline = star(count, count == 5000 ? 0.5 : 0.2, 0.5);
        const Pieces got(outline);
        EXPECT_EQ(got.pieces.size(), outline.size() - 2);
        EXPECT_NEAR(got.area(), areaOf(outline), 1e-6);
    }
}

TEST(Convex, FillsWhatCrossingOutlinesWindAround)
{
    reference::Random random(2);
    for (int round = 0; round < 150; ++round) {
        SCOPED_TRACE(round);
        Outline outline;
        const int cells = round % 3 == 0 ? 4 : 1 << 20; // few places: vertices and edges lie on each other
        for (int i = random.between(3, 40); i > 0; --i)
            outline.push_back({static_cast<float>(random.between(0, cells)) / static_cast<float>(cells),
                               static_cast<float>(random.between(0, cells)) / static_cast<float>(cells)});
        expectFilled(outline, random);
    }
    const Outline pentagram = star(5, 0.5, 0.5, nullptr, 2.0);
    EXPECT_NEAR(Pieces(pentagram).area(), 0.25 * 1.12257, 1e-5);
    EXPECT_NEAR(Pieces(star(8, 0.5, 0.5, nullptr, 2.0)).area(), 0.5, 1e-6); // a square twice
    EXPECT_NEAR(Pieces({{0, 0}, {1, 1}, {1, 0}, {0, 1}}).area(), 0.5, 1e-6);
}

TEST(Convex, BearsAnyOutline)
{
    for (const Outline& nothing :
         {Outline{}, Outline{{1, 1}, {2, 2}}, Outline(50, {3, 3}),
          Outline{{0, 0}, {1, 1}, {2, 2}, {0.5f, 0.5f}}, Outline{{0, 0}, {1, 0}, {1, 0}, {0, 0}},
          Outline{{0, 0}, {1, 0}, {HUGE_VALF, 1}}, Outline{{0, 0}, {1, NAN}, {1, 1}, {0, 1}}})
        EXPECT_TRUE(Pieces(nothing).pieces.empty());

    const Outline repeated = {{0, 0}, {0, 0}, {0.5f, 0}, {1, 0}, {1, 0},
                              {2, 0}, {1, 0}, {1, 1},    {0, 1}, {0, 0.3f}};
    EXPECT_EQ(Pieces(repeated).area(), 1.0);
    EXPECT_EQ(Pieces(repeated).pieces.size(), 2u);
    // One vertex that is far off leaves the others their shape.
    const Outline far = {{0, 0}, {1, 0}, {1, 0.5f}, {1e9f, 0.75f}, {1, 1}, {0, 1}};
    const Pieces wide(far);
    EXPECT_EQ(wide.covering({0.25f, 0.25f}), 1);
    EXPECT_EQ(wide.covering({2.0f, 0.7f}), 1);
    EXPECT_EQ(wide.covering({2.0f, 0.25f}), 0);
    for (const float size : {1e-44f, 1e-30f, 1e30f, 3e38f})
        EXPECT_EQ(Pieces({{-size, -size}, {size, -size}, {size, size}, {-size, size}}).pieces.size(), 2u);

    reference::Random random(3);
    for (int round = 0; round < 2000; ++round) {
        Outline outline;
        for (int i = random.between(0, 12); i > 0; --i)
            outline.push_back({reference::anyFloat(random), reference::anyFloat(random)});
        for (const Outline& piece : Pieces(outline).pieces)
            for (const UT_Vector2 p : piece)
                ASSERT_TRUE(std::isfinite(p.x) && std::isfinite(p.y));
    }
}
