#include "images.h"

#include <host/operation/Resampling.h>

#include <array>
#include <cmath>
#include <functional>
#include <numbers>

namespace {

using OIIO::TypeDesc;
using Words = std::vector<std::string>;

using Mapping = std::function<std::array<double, 2>(double x, double y)>;

double cubic(double b, double c, double x)
{
    const double near = (12 - 9 * b - 6 * c) * x * x * x + (-18 + 12 * b + 6 * c) * x * x + 6 - 2 * b;
    const double far =
        (-b - 6 * c) * x * x * x + (6 * b + 30 * c) * x * x + (-12 * b - 48 * c) * x + 8 * b + 24 * c;
    return x < 1.0 ? near / 6.0 : x < 2.0 ? far / 6.0 : 0.0;
}

double kernel(const std::string& filter, double place)
{
    const double x = std::abs(place), p = std::numbers::pi * x;
    if (filter == "triangle")
        return std::max(1.0 - x, 0.0);
    if (filter == "gaussian")
        return x < 1.5 ? std::exp(-2.0 * x * x) : 0.0;
    if (filter == "hann")
        return x < 1.0 ? 0.5 + 0.5 * std::cos(p) : 0.0;
    if (filter == "lanczos3")
        return x == 0.0 ? 1.0 : x < 3.0 ? 3.0 * std::sin(p) * std::sin(p / 3.0) / (p * p) : 0.0;
    return filter == "mitchell" ? cubic(1.0 / 3.0, 1.0 / 3.0, x) : cubic(0.0, 0.5, x);
}

/// The weights of pixels, and the pixels of 0 .. size - 1 that they fall on; -1: nothing.
std::vector<std::pair<int, double>> tapsOf(const std::string& filter, const std::string& wrap, double centre,
                                           double extent, int size)
{
    const double c = filter == "nearest" ? std::floor(centre) + 0.5 : centre; // one pixel
    const double e = filter == "nearest" ? 1.0 : std::max(extent, 1.0);
    std::vector<std::pair<int, double>> taps;
    double sum = 0.0;
    for (int i = static_cast<int>(std::floor(c - 3 * e)); i <= c + 3 * e; ++i) {
        const double weight = filter == "nearest" || filter == "box"
                                  ? std::max(std::min(i + 1.0, c + e / 2) - std::max(i + 0.0, c - e / 2), 0.0)
                                  : kernel(filter, (i + 0.5 - c) / e);
        const int inside = std::clamp(i, 0, size - 1);
        taps.emplace_back(wrap == "repeat"                 ? (i % size + size) % size
                          : wrap == "clamp" || inside == i ? inside
                                                           : -1,
                          weight);
        sum += weight;
    }
    for (auto& tap : taps)
        tap.second /= sum;
    return taps;
}

/// Random pictures and what becomes of them.
struct Resample : ::testing::Test
{
    int pick(int from, int to)
    {
        return from + static_cast<int>(random() % static_cast<unsigned>(to - from + 1));
    }

    /// Floats from 0 to 1 in a window of its own.
    TestImage addRandom(const std::string& name, int channels)
    {
        OIIO::ImageSpec spec(pick(1, 40), pick(1, 40), channels, TypeDesc::FLOAT);
        for (int* const place : {&spec.x, &spec.y, &spec.full_x, &spec.full_y})
            *place = pick(-9, 9);
        spec.full_width = pick(8, 40);
        spec.full_height = pick(8, 40);
        if (channels == 2)
            spec.channelnames = {"R", "G"};
        TestImage image(spec);
        for (size_t k = 0; k < image.bytes.size() / 4; ++k)
            image.values<float>()[k] = static_cast<float>(pick(0, 1000)) / 1000.0f;
        image.write(dir.file(name));
        return image;
    }

    /// Footprints follow from the differences of the places.
    void expectReference(const Words& words, TestImage in, const Mapping& mapping)
    {
        SCOPED_TRACE(::testing::PrintToString(words));
        const bool isShift = words[0] == "shift";
        const std::string filter = isShift ? "triangle" : words[words.size() - 3];
        const std::string wrap = isShift ? "clamp" : words.back();
        runOperation(words, dir.file("out.exr"));
        TestImage out = TestImage::read(dir.file("out.exr"));
        // Places are rounded, most finely where all footprints are alike.
        const double tolerance = words[0] == "corners" || words[0] == "warp" ? 8e-4 : 1e-4;
        double worst = 0.0;
        int64_t wrong = 0;
        for (int k = 0; k < out.spec.width * out.spec.height; ++k) {
            const double x = out.spec.x + k % out.spec.width + 0.5, y = out.spec.y + k / out.spec.width + 0.5;
            constexpr double d = 1.0 / 1024.0;
            const auto place = mapping(x, y), left = mapping(x - d, y), right = mapping(x + d, y),
                       above = mapping(x, y - d), below = mapping(x, y + d);
            const auto length = [&](size_t axis) {
                return std::hypot(right[axis] - left[axis], below[axis] - above[axis]) / (2.0 * d);
            };
            const auto across = tapsOf(filter, wrap, place[0] - in.spec.x, length(0), in.spec.width);
            const auto down = tapsOf(filter, wrap, place[1] - in.spec.y, length(1), in.spec.height);
            double sum = 0.0;
            for (const auto& [row, weight] : down)
                for (const auto& [column, factor] : across)
                    if (row >= 0 && column >= 0)
                        sum += weight * factor * double{in.values<float>()[row * in.spec.width + column]};
            const double error = std::abs(double{out.values<float>()[k]} - sum);
            worst = std::max(worst, error);
            wrong += error > tolerance;
        }
        // What falls between two roundings goes either way: of "nearest" a pixel, of "gaussian" its rim.
        const bool hasRim = filter == "nearest" || filter == "gaussian";
        const int64_t either =
            words[0] == "resize" ? INT64_MAX : int64_t(out.bytes.size() / 100 + 3); // whole rows
        EXPECT_LE(wrong, hasRim ? either : 0);
        EXPECT_LE(worst, filter == "nearest" ? 1.0 : hasRim ? 5e-3 : tolerance);
    }

    TempDirectory dir;
    std::mt19937 random{7};
};

TEST_F(Resample, FollowsTheDefinition)
{
    const std::string path = dir.file("in.exr"), map = dir.file("map.exr");
    const auto numbers = [](double a, double b) { return std::to_string(a) + "," + std::to_string(b); };
    for (const std::string& filter : host::resamplingFilters())
        for (const std::string& wrap : host::resamplingWraps()) {
            const TestImage in = addRandom("in.exr", 1);
            const OIIO::ImageSpec& s = in.spec;
            const auto words = [&](Words given) {
                given.insert(given.end(), {"--filter", filter, "--wrap", wrap});
                return given;
            };
            const int width = pick(1, 60), height = pick(1, 60);
            expectReference(words({"resize", path, std::to_string(width) + "x" + std::to_string(height)}), in,
                            [&](double x, double y) {
                                return std::array{s.full_x + (x - s.full_x) * s.full_width / width,
                                                  s.full_y + (y - s.full_y) * s.full_height / height};
                            });
            const double px = pick(-9, 30), py = pick(-9, 30), tx = pick(-300, 300) / 16.0,
                         ty = pick(-300, 300) / 16.0, sx = pick(1, 40) / 16.0, sy = pick(-40, -1) / 16.0;
            const int degrees = pick(-200, 200);
            expectReference(
                words({"transform", path, "--pivot", numbers(px, py), "--translate", numbers(tx, ty),
                       "--scale", numbers(sx, sy), "--rotate", std::to_string(degrees)}),
                in, [&](double x, double y) {
                    const double a = degrees * std::numbers::pi / 180.0, c = std::cos(a), i = std::sin(a);
                    const double dx = x - px - tx, dy = y - py - ty;
                    return std::array{(c * dx - i * dy) / sx + px, (i * dx + c * dy) / sy + py};
                });
            expectReference({"shift", path, std::to_string(tx), std::to_string(ty)}, in,
                            [&](double x, double y) {
                                return std::array{x - tx, y - ty};
                            });
            // From places 0 to 1 to those of pixels: their inverse solves two equations.
            const double b = pick(-9, 9), d = pick(-9, 9), e = pick(20, 50), f = pick(-9, 9),
                         g = pick(-4, 9) / 20.0, h = pick(-4, 9) / 20.0;
            Words pinned{"corners", path};
            for (const auto& [x, y] : {std::pair{0, 0}, {1, 0}, {1, 1}, {0, 1}}) {
                const double w = g * x + h * y + 1.0;
                pinned.push_back(numbers((e * x + b * y + d) / w, (f * x + e * y + b) / w));
            }
            expectReference(words(pinned), in, [&](double x, double y) {
                const double m[] = {e - g * x, b - h * x, x - d, f - g * y, e - h * y, y - b};
                const double det = m[0] * m[4] - m[1] * m[3];
                return std::array{s.full_x + s.full_width * (m[2] * m[4] - m[1] * m[5]) / det,
                                  s.full_y + s.full_height * (m[0] * m[5] - m[2] * m[3]) / det};
            });
            TestImage st = addRandom("map.exr", 2);
            const auto value = [&](int x, int y, int c) {
                x = std::clamp(x, 0, st.spec.width - 1);
                y = std::clamp(y, 0, st.spec.height - 1);
                return double{st.values<float>()[(y * st.spec.width + x) * 2 + c]};
            };
            expectReference(words({"warp", path, "--map", map}), in, [&](double x, double y) {
                const double u = x - st.spec.x - 0.5, v = y - st.spec.y - 0.5, i = std::floor(u),
                             j = std::floor(v);
                const auto between = [&](int c) {
                    const int column = static_cast<int>(i), row = static_cast<int>(j);
                    return std::lerp(
                        std::lerp(value(column, row, c), value(column + 1, row, c), u - i),
                        std::lerp(value(column, row + 1, c), value(column + 1, row + 1, c), u - i), v - j);
                };
                return std::array{s.full_x + between(0) * s.full_width,
                                  s.full_y + (1.0 - between(1)) * s.full_height};
            });
        }
}

TEST_F(Resample, WhatStaysInPlaceKeepsItsBits)
{
    for (const unsigned char format : {PXL_FORMAT_uint8, PXL_FORMAT_uint16, PXL_FORMAT_half}) {
        const bool isHalf = format == PXL_FORMAT_half;
        const std::string in = dir.file(isHalf ? "a.exr" : "a.tif"),
                          out = dir.file(isHalf ? "b.exr" : "b.tif");
        TestImage image(OIIO::ImageSpec(31, 17, 3, typeOfFormat(format)));
        image.write(in);
        runOperation({"shift", in, isHalf ? "12" : "0", "0"}, out); // TIFF would cut it
        EXPECT_TRUE(TestImage::read(out).bytes == image.bytes);
        for (size_t k = 1; isHalf && k < image.bytes.size(); k += 2)
            image.bytes[k] = static_cast<char>(image.bytes[k] & ~0x40); // no infinities and NaN
        image.write(in);
        for (const Words& words : {Words{"transform", in},
                                   {"resize", in, "100%", "--filter", "catmullrom"},
                                   {"corners", in, "0,0", "31,0", "31,17", "0,17"}}) {
            runOperation(words, out);
            EXPECT_TRUE(TestImage::read(out).bytes == image.bytes) << words[0] << int{format};
        }
    }
}

TEST_F(Resample, PlacesThatAreNoneGiveNothingOrAnEdge)
{
    const std::string in = dir.file("in.exr"), map = dir.file("map.exr"), out = dir.file("out.exr");
    addRandom("in.exr", 1);
    TestImage places = addRandom("map.exr", 2);
    for (size_t k = 0; k < places.bytes.size() / 4; ++k)
        places.values<float>()[k] = std::array{NAN, INFINITY, -1e38f, 1e9f}[static_cast<size_t>(pick(0, 3))];
    places.write(map);
    for (const std::string& wrap : host::resamplingWraps()) {
        runOperation({"warp", in, "--map", map, "--filter", "box", "--wrap", wrap}, out);
        TestImage result = TestImage::read(out);
        for (size_t k = 0; k < result.bytes.size() / 4; ++k)
            EXPECT_TRUE(result.values<float>()[k] >= 0.0f && result.values<float>()[k] <= 1.001f);
    }
}

TEST_F(Resample, TransparentColoursDoNotBleed)
{
    OIIO::ImageSpec spec(40, 30, 4, TypeDesc::UINT8);
    spec.attribute("oiio:UnassociatedAlpha", 1);
    TestImage image(spec);
    const unsigned char left[] = {255, 255, 255, 0}, right[] = {50, 50, 50, 255};
    for (size_t k = 0; k < image.bytes.size(); k += 4)
        std::memcpy(&image.bytes[k], k / 4 % 40 < 20 ? left : right, 4);
    const std::string in = dir.file("in.png"), out = dir.file("out.png");
    image.write(in);
    for (const Words& words : {Words{"resize", in, "33x21", "--filter", "triangle"},
                               {"transform", in, "--rotate", "10"},
                               {"corners", in, "3,0", "31,2", "39,29", "0,27"},
                               {"shift", in, "0.5", "-0.25"}}) {
        runOperation(words, out);
        TestImage result = TestImage::read(out);
        int64_t edges = 0, wrong = 0;
        for (size_t k = 0; k < result.bytes.size(); k += 4) {
            const unsigned char* const pixel = result.values<unsigned char>() + k;
            edges += pixel[3] > 20 && pixel[3] < 235;
            wrong += pixel[3] > 20 && std::abs(pixel[0] - 50) > 1;
        }
        EXPECT_TRUE(edges > 9 && wrong == 0) << words[0] << edges << " " << wrong;
    }
}

TEST_F(Resample, WindowsFollowThePicture)
{
    OIIO::ImageSpec spec(OIIO::ROI(10, 40, -4, 6, 0, 1, 0, 1), TypeDesc::HALF);
    spec.set_roi_full({0, 40, 0, 20, 0, 1, 0, 1});
    TestImage(spec).write(dir.file("in.exr"));
    const struct
    {
        Words words;
        std::array<int, 6> wanted; ///< the ends of the data window, and the display window's
    } cases[] = {
        {{"resize", "20x20"}, {5, 20, -4, 6, 20, 20}},
        {{"resize", "0.01%"}, {0, 1, -1, 1, 1, 1}},
        {{"resize", "60x60", "--fit", "height"}, {30, 120, -12, 18, 120, 60}},
        {{"resize", "60x60", "--fit", "inside"}, {15, 60, -6, 9, 60, 30}},
        {{"resize", "60x60", "--fit", "fill"}, {0, 90, -12, 18, 60, 60}},
        {{"transform", "--translate", "5,0"}, {11, 40, -4, 10, 40, 20}},
        {{"transform", "--wrap", "clamp"}, {0, 40, -4, 20, 40, 20}},
        {{"shift", "0.5", "-1.25"}, {10, 41, -6, 5, 40, 20}},
        {{"shift", "1e-9", "-3"}, {10, 40, -7, 3, 40, 20}},
    };
    TestImage(OIIO::ImageSpec(60, 20, 1, TypeDesc::HALF)).write(dir.file("60.exr"));
    runOperation({"resize", dir.file("60.exr"), "31x20"}, dir.file("31.exr")); // 60 (31 / 60) is above 31
    EXPECT_EQ(TestImage::read(dir.file("31.exr")).spec.width, 31);
    for (auto [words, wanted] : cases) {
        words.insert(words.begin() + 1, dir.file("in.exr"));
        runOperation(words, dir.file("out.exr"));
        const OIIO::ImageSpec out = TestImage::read(dir.file("out.exr")).spec;
        const OIIO::ROI data = out.roi();
        EXPECT_EQ(wanted, (std::array{data.xbegin, data.xend, data.ybegin, data.yend, out.full_width,
                                      out.full_height}))
            << ::testing::PrintToString(words);
    }
}

TEST_F(Resample, ErrorsNameTheOption)
{
    const std::string in = dir.file("in.exr");
    addRandom("in.exr", 1);
    const std::pair<Words, const char*> cases[] = {
        {{"resize", in, "0.009%"}, "SIZE: '0.009%' is not from 0.01% to 10000%"},
        {{"resize", in, "50%", "--fit", "width"}, "--fit is for a size in pixels"},
        {{"resize", in, "5x5", "--filter", "lancos"}, "did you mean 'lanczos3'?"},
        {{"transform", in, "--scale", "1,0"}, "--scale: '1,0' leaves nothing"},
        {{"corners", in, "0,0", "9,9", "9,0", "0,9"}, "enclose no convex shape"},
        {{"corners", in, "0,0", "9,0", "a,9", "0,9"}, "BOTTOM-RIGHT: 'a,9' is not 2 numbers"},
        {{"warp", in, "--map", in}, "in.exr' is no map of places"},
        {{"shift", in, "inf", "0"}, "DX: 'inf' is no number"},
        {{"degrain", in, "--size", "1.5"}, "--size: '1.5' is no whole number from 0 to 1000"},
        {{"feather", in, "--radius", "-1"}, "--radius: '-1' is not from 0 to 1000"},
    };
    for (const auto& known : cases)
        EXPECT_TRUE(says(errorOf([&] { runOperation(known.first, dir.file("out.exr")); }), known.second));
    EXPECT_EQ(dir.names(), Words{"in.exr"});
}

} // namespace
