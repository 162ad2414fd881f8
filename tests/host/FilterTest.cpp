#include "images.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using OIIO::TypeDesc;
using Words = std::vector<std::string>;

/// Codes as whole numbers, floats in the order of their values, NaN beyond the infinities.
template <class T>
std::vector<int64_t> orderedBits(const TestImage& image, bool isFloat)
{
    std::vector<int64_t> keys(image.bytes.size() / sizeof(T));
    constexpr int64_t sign = int64_t{1} << (8 * sizeof(T) - 1);
    for (size_t k = 0; k < keys.size(); ++k) {
        T bits;
        std::memcpy(&bits, image.bytes.data() + k * sizeof(T), sizeof(T));
        keys[k] = isFloat && (bits & sign) != 0 ? -1 - (bits & (sign - 1)) : bits;
    }
    return keys;
}

std::vector<int64_t> ordered(const TestImage& image)
{
    const size_t bytes = image.spec.format.size();
    const bool isFloat = image.spec.format.is_floating_point();
    return bytes == 1   ? orderedBits<uint8_t>(image, isFloat)
           : bytes == 2 ? orderedBits<uint16_t>(image, isFloat)
                        : orderedBits<uint32_t>(image, isFloat);
}

/// Values in rows, the nearest one beyond the edges.
struct Grid
{
    int width, height;
    std::vector<int64_t> values;

    int64_t at(int x, int y) const
    {
        return values[static_cast<size_t>(std::clamp(y, 0, height - 1) * width +
                                          std::clamp(x, 0, width - 1))];
    }
    Grid part(int x0, int y0, int w, int h) const
    {
        Grid result{w, h, {}};
        for (int k = 0; k < w * h; ++k)
            result.values.push_back(at(x0 + k % w, y0 + k / w));
        return result;
    }
    Grid extremes(int w, int h, bool largest) const
    {
        Grid result = *this;
        for (int k = 0; k < width * height; ++k) {
            const Grid around = part(k % width - w / 2, k / width - h / 2, w | 1, h | 1);
            const auto [least, most] = std::minmax_element(around.values.begin(), around.values.end());
            result.values[static_cast<size_t>(k)] = largest ? *most : *least;
        }
        return result;
    }
};

TEST(Filter, MorphologyIsTheExtremeOfARectangle)
{
    const TempDirectory dir;
    std::mt19937 random(3);
    const auto pick = [&](unsigned int count) { return 1 + static_cast<int>(random() % count); };
    for (unsigned char format = PXL_FORMAT_uint8; format <= PXL_FORMAT_half; ++format)
        for (const std::string name : {"dilate", "erode", "open", "close"}) {
            const std::string extension = format < PXL_FORMAT_uint32 ? ".tif" : ".exr";
            const std::string in = dir.file("in" + extension), out = dir.file("out" + extension);
            const int w = pick(25), h = pick(25), width = pick(12), height = pick(12);
            const TestImage image(OIIO::ImageSpec(w, h, 1, typeOfFormat(format)));
            image.write(in);
            const std::string size = std::to_string(width) + "x" + std::to_string(height);
            host::RunSettings settings;
            settings.tile = pick(20);
            runOperation({name, in, "--size", size}, out, settings);
            const bool dilates = name == "dilate" || name == "close";
            Grid wanted = Grid{w, h, ordered(image)}.part(-12, -12, w + 24, h + 24);
            wanted = wanted.extremes(width, height, dilates);
            if (name == "open" || name == "close")
                wanted = wanted.extremes(width, height, !dilates);
            EXPECT_TRUE(ordered(TestImage::read(out)) == wanted.part(12, 12, w, h).values)
                << name << " " << size << " " << int{format};
        }
}

TEST(Filter, ShiftsKeepBitsOrMixTwoByTwo)
{
    const TempDirectory dir;
    const std::string in = dir.file("in.exr"), out = dir.file("out.exr");
    for (const unsigned char format : {PXL_FORMAT_uint32, PXL_FORMAT_half, PXL_FORMAT_float32}) {
        const TestImage image(OIIO::ImageSpec(9, 7, 4, typeOfFormat(format)));
        image.write(in);
        runOperation({"shift", in, "12", "-3"}, out);
        EXPECT_TRUE(TestImage::read(out).bytes == image.bytes);
    }
    TestImage image(OIIO::ImageSpec(9, 7, 1, TypeDesc::FLOAT));
    for (int k = 0; k < 63; ++k)
        image.values<float>()[k] = static_cast<float>(k * k % 17);
    image.write(in);
    for (const auto& [dx, dy] : {std::pair{0.25, -0.5}, {-3.75, 2.0}, {0.0, 7.125}}) {
        runOperation({"shift", in, std::to_string(dx), std::to_string(dy)}, out);
        TestImage moved = TestImage::read(out);
        const auto at = [&](double x, double y) {
            return double{image.values<float>()[static_cast<int>(std::clamp(y, 0.0, 6.0)) * 9 +
                                                static_cast<int>(std::clamp(x, 0.0, 8.0))]};
        };
        for (int y = 0; y < moved.spec.height; ++y)
            for (int x = 0; x < moved.spec.width; ++x) {
                const double u = moved.spec.x + x - dx, v = moved.spec.y + y - dy, i = std::floor(u),
                             j = std::floor(v);
                const double above = std::lerp(at(i, j), at(i + 1, j), u - i),
                             below = std::lerp(at(i, j + 1), at(i + 1, j + 1), u - i);
                EXPECT_NEAR(moved.values<float>()[y * moved.spec.width + x], std::lerp(above, below, v - j),
                            1e-5);
            }
    }
}

TEST(Filter, SpecksGoAndEdgesGrowSoft)
{
    const TempDirectory dir;
    const std::string in = dir.file("in.exr"), out = dir.file("out.exr");
    TestImage image(OIIO::ImageSpec(40, 40, 3, TypeDesc::FLOAT));
    std::fill_n(image.values<float>(), 4800, 0.25f);
    for (const int k : {1644, 2403}) // specks, and an area
        image.values<float>()[k] = k % 2 == 0 ? 1.0f : -1.0f;
    std::vector<float> clean(image.values<float>(), image.values<float>() + 4800);
    for (size_t k = 0; k < 4800; ++k)
        clean[k] = k / 120 >= 25 && k / 120 < 33 && k % 120 < 60 && k % 120 >= 30 ? 0.75f : 0.25f;
    for (size_t k = 0; k < 4800; ++k)
        image.values<float>()[k] = clean[k] > 0.5f ? clean[k] : image.values<float>()[k];
    image.write(in);
    runOperation({"degrain", in, "--size", "3"}, out);
    EXPECT_EQ(std::memcmp(TestImage::read(out).bytes.data(), clean.data(), 4 * clean.size()), 0);
    for (const char* curve : {"linear", "gaussian", "ease-out", "ease-in", "smooth"}) {
        runOperation({"feather", in, "--radius", "6,3", "--drop-off", curve}, out);
        TestImage soft = TestImage::read(out);
        for (int k = 0; k < 4800; ++k)
            EXPECT_GE(soft.values<float>()[k], image.values<float>()[k]) << curve;
        const auto beside = [&](int x, int y) { return soft.values<float>()[1644 + 3 * (40 * y + x)]; };
        EXPECT_TRUE(beside(1, 0) >= beside(2, 0) && beside(0, 1) >= beside(0, 2) &&
                    beside(1, 0) > beside(0, 1))
            << curve;
        EXPECT_EQ(beside(6, 0), 0.25f) << curve;
    }
    const std::pair<Words, const char*> wrong[] = {
        {{"degrain", in, "--size", "1.5"}, "--size: '1.5' is no whole number from 0 to 1000"},
        {{"dilate", in, "--size", "1001"}, "--size: '1001' is larger than 1000"},
        {{"feather", in, "--radius", "-1"}, "--radius: '-1' is not from 0 to 1000"},
        {{"noise", "--octaves", "17"}, "--octaves: '17' is no whole number from 1 to 16"},
    };
    for (const auto& [words, wanted] : wrong)
        EXPECT_TRUE(says(errorOf([&] { runOperation(words, out); }), wanted));
}

TEST(Filter, NoiseIsOfItsSeedAndFrame)
{
    const TempDirectory dir;
    const Words words{"noise",   "--size", "90x70",  "--octaves", "3",
                      "--depth", "uint16", "--type", "cellular"};
    expectSameForEverySplit([&](const host::RunSettings& settings) {
        return runOperation(words, dir.file("split.tif"), settings).outputs.front().path;
    });
    const auto at = [&](Words more, std::optional<int64_t> frame) {
        host::OperationWords given(host::operationOfName("noise"));
        host::Command command{"noise", "", nullptr, given.options()};
        std::optional<size_t> place;
        more.insert(more.begin(), words.begin() + 1, words.end());
        host::readWords(command, more, place);
        host::ScriptGraph(host::Script::single(given.call(), {dir.file("o.tif"), {}, false, false}), frame)
            .run({});
        return TestImage::read(dir.file("o.tif")).bytes;
    };
    const std::vector<char> first = at({}, 1);
    EXPECT_TRUE(first == at({}, {}) && first == TestImage::read(dir.file("split.tif")).bytes);
    EXPECT_TRUE(first != at({}, 2) && first != at({"--seed", "1"}, 1));
}

} // namespace
