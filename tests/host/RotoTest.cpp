#include "images.h"

#include <cmath>
#include <fstream>
#include <numbers>
#include <numeric>
#include <sstream>

namespace {

using Words = std::vector<std::string>;

class Roto : public ::testing::Test
{
protected:
    std::string written(const std::string& name, const std::string& text) const
    {
        std::ofstream(dir_.file(name)) << text;
        return dir_.file(name);
    }

    /// What a file of shapes gives with some options.
    TestImage drawn(const std::string& shapes, const std::string& options,
                    const std::string& out = "out.exr") const
    {
        Words words{"roto", shapes};
        std::istringstream stream(options);
        words.insert(words.end(), std::istream_iterator<std::string>(stream), {});
        runOperation(words, dir_.file(out));
        return TestImage::read(dir_.file(out));
    }

    static std::string square(double x, double y)
    {
        std::ostringstream points;
        for (const auto& [px, py] : {std::pair{x, y}, {x + 8, y}, {x + 8, y + 8}, {x, y + 8}})
            points << (points.tellp() > 0 ? ", " : "") << "{\"at\": [" << px << ", " << py << "]}";
        return R"("points": [)" + points.str() + "]";
    }

    TempDirectory dir_;
};

const std::string soft = R"({"size": [100, 60], "shapes": [
    {"colour": [1, 0.5, 0.25, 0.75], "feather": 6, "drop-off": "smooth", "keys": [
        {"frame": 0, "points": [{"at": [20, 10], "in": [10, 30], "out": [40, 0]}, {"at": [60, 30], "in": [60, 10], "out": [60, 50], "feather": 4}]},
        {"frame": 2, "points": [{"at": [30, 20], "in": [10, 30], "out": [40, 0]}, {"at": [90, 30], "in": [60, 10], "out": [60, 50]}]}]},
    {"kind": "nurbs", "fill": "open", "width": 5, "points": [{"at": [5, 50]}, {"at": [50, 20]}, {"at": [99, 55]}]}]})";

TEST_F(Roto, IsTheSameForEverySplit)
{
    const std::string shapes = written("soft.json", soft);
    for (const std::string depth : {"uint8", "uint16", "half"})
        for (const std::string moments : {"1", "3"})
            expectSameForEverySplit([&](const host::RunSettings& settings) {
                return runOperation(
                           {"roto", shapes, "--size", "230x170", "--depth", depth, "--motion", moments},
                           dir_.file(depth == "half" ? "split.exr" : "split.tif"), settings)
                    .outputs.front()
                    .path;
            });
}

TEST_F(Roto, ADrawingIsTheShapesOfItsPaths)
{
    const std::string json = written("a.json", R"({"size": [40, 20], "shapes": [
        {"colour": [0, 1, 0], "points": [{"at": [4, 2], "out": [10, 0]}, {"at": [20, 10], "in": [20, 4]}, {"at": [6, 18]}]},
        {"kind": "polygon", "colour": [0, 0, 1, 0.5], "fill": "open", "width": 2, "points": [{"at": [24, 3]}, {"at": [36, 9]}, {"at": [30, 17]}]}]})");
    const std::string svg = written(
        "a.svg",
        "<svg width='40' height='20'><path fill='#0f0' d='M4 2C10 0 20 4 20 10L6 18Z'/><path fill='none' "
        "stroke='rgb(0,0,255)' stroke-opacity='0.5' stroke-width='2' d='M24 3l12 6-6 8'/></svg>");
    for (const std::string size : {"", "--size 333x131"}) {
        const TestImage drawing = drawn(svg, size);
        EXPECT_EQ(drawing.bytes, drawn(json, size).bytes);
        EXPECT_EQ(drawing.spec.width, size.empty() ? 40 : 333);
    }
}

TEST_F(Roto, HolesOfADrawingStayOpen)
{
    const std::string shapes =
        written("ring.svg", "<svg><path d='M10 10H50V50H10ZM20 20V40H40V20ZM60 10h20v20z'/></svg>");
    const std::string options = "--size 90x60 --channels matte --depth float";
    TestImage ring = drawn(shapes, options), core = drawn(shapes, options + " --feather -3");
    const double area = std::accumulate(ring.values<float>(), ring.values<float>() + 90 * 60, 0.0);
    EXPECT_NEAR(area, 40 * 40 - 20 * 20 + 20 * 20 / 2, 1.0);
    for (TestImage* image : {&ring, &core}) {
        const auto at = [&](int x, int y) { return image->values<float>()[y * 90 + x]; };
        EXPECT_EQ(at(30, 30), 0.0f);
        EXPECT_EQ(at(15, 30), 1.0f);
        EXPECT_EQ(at(15, 15), 1.0f); // on the way to the hole
        EXPECT_NEAR(at(18, 30), image == &ring ? 1.0f : 0.5f, 1e-3f);
    }
}

TEST_F(Roto, CoversPixelsInProportion)
{
    const std::string shapes = written(
        "a.json", R"({"shapes": [{"kind": "polygon", "colour": [1, 0.5, 0], )" + square(4.5, 4) +
                      R"(}, {"kind": "polygon", "colour": [0, 0.25, 1, 0.5], )" + square(8, 6) + "}]}");
    for (const std::string depth : {"uint8", "uint16", "uint32", "half", "float"}) {
        const std::string out = depth == "half" || depth == "float" ? "a.exr" : "a.tif";
        const TestImage image = drawn(shapes, "--size 20x20 --channels rgb --depth " + depth, out);
        std::vector<float> values(1200);
        OIIO::convert_pixel_values(image.spec.format, image.bytes.data(), OIIO::TypeDesc::FLOAT,
                                   values.data(), 1200);
        const auto expectPixel = [&](int x, int y, float r, float g, float b) {
            for (const auto& [c, wanted] : {std::pair{0, r}, {1, g}, {2, b}})
                EXPECT_NEAR(values[static_cast<size_t>((y * 20 + x) * 3 + c)], wanted, 0.003f)
                    << depth << x << "," << y << c;
        };
        expectPixel(3, 5, 0, 0, 0);
        expectPixel(4, 5, 0.5f, 0.25f, 0);
        expectPixel(6, 5, 1, 0.5f, 0);
        expectPixel(9, 7, 1, 0.5f, 0.5f); // the larger of both
        expectPixel(14, 12, 0, 0.125f, 0.5f);
    }
}

TEST_F(Roto, KeepsColoursWhereAlphaIsLow)
{
    const TestImage image = drawn(
        written("a.json", R"({"shapes": [{"kind": "polygon", "feather": 9, "colour": [0.8, 0.4, 0.2], )" +
                              square(16, 16) + "}]}"),
        "--size 40x40 --depth uint8", "a.png");
    const auto* const codes = reinterpret_cast<const unsigned char*>(image.bytes.data());
    for (int k = 0; k < 1600; ++k) {
        const unsigned char* const c = codes + 4 * k;
        EXPECT_TRUE(c[3] == 0 || (c[0] == 204 && c[1] == 102 && c[2] == 51)) << k;
    }
}

TEST_F(Roto, MotionBlurIsTheMeanOfItsMoments)
{
    const auto shapes = [&](const std::string& name, const std::string& moving) {
        return written(name, R"({"shapes": [{)" + moving + R"(}, {"kind": "polygon", "feather": 3, "points": [
                       {"at": [1.3, 30]}, {"at": [70, 33]}, {"at": [40, 60]}]}]})");
    };
    const std::string options = "--size 120x70 --channels matte --depth float";
    std::vector<double> mean(120 * 70);
    for (const double t : {0.8125, 0.9375, 1.0625, 1.1875}) { // half a frame around frame 1, in four parts
        TestImage moment =
            drawn(shapes("still.json", R"("kind": "polygon", )" + square(32 * t, 5 + 8 * t)), options);
        for (size_t k = 0; k < mean.size(); ++k)
            mean[k] += static_cast<double>(moment.values<float>()[k]) / 4.0;
    }
    TestImage blurred =
        drawn(shapes("keyed.json", R"("kind": "polygon", "keys": [{"frame": 0, )" + square(0, 5) +
                                       R"(}, {"frame": 2, )" + square(64, 21) + "}]"),
              options + " --motion 4");
    for (size_t k = 0; k < mean.size(); ++k)
        EXPECT_EQ(blurred.values<float>()[k], static_cast<float>(mean[k])) << k % 120 << "," << k / 120;
}

TEST_F(Roto, LiesInThePictureThatItIsLike)
{
    OIIO::ImageSpec spec(30, 20, 3, OIIO::TypeDesc::HALF); // the right lower part of a picture, and beyond
    spec.x = 33, spec.y = 25;
    spec.full_x = 3, spec.full_y = 5, spec.full_width = 50, spec.full_height = 30;
    TestImage(spec).write(dir_.file("like.exr"));
    const std::string shapes =
        written("a.json", R"({"shapes": [{"kind": "polygon", )" + square(35.5, 24) + "}]}");
    const TestImage whole = drawn(shapes, "--size 80x60"),
                    part = drawn(shapes, "--like " + dir_.file("like.exr"));
    EXPECT_EQ(std::tuple(part.spec.x, part.spec.y, part.spec.width, part.spec.full_x),
              std::tuple(33, 25, 30, 3));
    for (size_t y = 0; y < 20; ++y)
        EXPECT_EQ(std::memcmp(&part.bytes[y * 30 * 8], &whole.bytes[((y + 20) * 80 + 30) * 8], 30 * 8), 0)
            << y;
}

TEST_F(Roto, FollowsAFreehandStroke)
{
    std::ostringstream circle;
    circle << "# x, y\n\n";
    for (int k = 0; k < 90; ++k)
        circle << 50 + 30 * std::cos(k * std::numbers::pi / 45) << ", "
               << 40 + 30 * std::sin(k * std::numbers::pi / 45) << "\n";
    const auto area = [&](const std::string& options) {
        runOperation({"roto", "--freehand", written("stroke.csv", circle.str()), "--size", "100x80",
                      "--channels", "matte", "--depth", "float", options,
                      options == "--open" ? "--width=2" : "0.5"},
                     dir_.file("out.exr"));
        TestImage image = TestImage::read(dir_.file("out.exr"));
        return std::accumulate(image.values<float>(), image.values<float>() + 8000, 0.0);
    };
    EXPECT_NEAR(area("--tolerance"), 900 * std::numbers::pi, 60 * std::numbers::pi * 0.5);
    EXPECT_NEAR(area("--open"), 2 * 60 * std::numbers::pi, 20.0);

    const auto error = [&](const std::string& text) {
        return errorOf([&] {
            runOperation({"roto", "--freehand", written("bad.csv", text)}, dir_.file("out.exr"));
        });
    };
    EXPECT_TRUE(
        says(error("1, 2\n# no\n3; 4\n"), "bad.csv', line 3: '3; 4' is no sample; expected x, y in pixels"));
    EXPECT_TRUE(says(error("1, 2, 3"), "line 1"));
    EXPECT_TRUE(says(error("1, inf"), "line 1"));
    EXPECT_TRUE(says(error("1, 2\n1, 2\n"), "2 samples; expected three (two with --open) at least"));
    EXPECT_TRUE(
        says(errorOf([&] { runOperation({"roto"}, dir_.file("out.exr")); }), "roto: nothing to draw"));
}

} // namespace
