#include "images.h"

#include <algorithm>

namespace {

using OIIO::TypeDesc;
using Words = std::vector<std::string>;

/// Codes as whole numbers, floats in the order of their values, NaN beyond the infinities.
std::vector<int64_t> ordered(const TestImage& image)
{
    const size_t bytes = image.spec.format.size();
    const int64_t sign = int64_t{1} << (8 * bytes - 1);
    std::vector<int64_t> keys;
    for (size_t k = 0; k < image.bytes.size(); k += bytes) {
        uint32_t bits = 0;
        std::memcpy(&bits, &image.bytes[k], bytes);
        const bool isBelow = image.spec.format.is_floating_point() && (bits & sign) != 0;
        keys.push_back(isBelow ? -1 - (bits & (sign - 1)) : bits);
    }
    return keys;
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
        Grid result{width, height, {}};
        for (int k = 0; k < width * height; ++k) {
            const Grid around = part(k % width - w / 2, k / width - h / 2, w | 1, h | 1);
            const auto [least, most] = std::minmax_element(around.values.begin(), around.values.end());
            result.values.push_back(largest ? *most : *least);
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

TEST(Filter, SpecksGoAndEdgesGrowSoft)
{
    const TempDirectory dir;
    const std::string in = dir.file("in.exr"), out = dir.file("out.exr");
    TestImage clean(OIIO::ImageSpec(40, 40, 1, TypeDesc::FLOAT)), image = clean;
    for (int k = 0; k < 1600; ++k) // an area, and two specks
        clean.values<float>()[k] = k / 40 > 24 && k / 40 < 33 && k % 40 > 9 && k % 40 < 20 ? 0.75f : 0.25f;
    image.bytes = clean.bytes;
    image.values<float>()[13 * 40 + 28] = 1.0f;
    image.values<float>()[20 * 40 + 5] = -1.0f;
    image.write(in);
    runOperation({"degrain", in, "--size", "3"}, out);
    EXPECT_TRUE(TestImage::read(out).bytes == clean.bytes);
    for (const char* curve : {"linear", "gaussian", "ease-out", "ease-in", "smooth"}) {
        SCOPED_TRACE(curve);
        runOperation({"feather", in, "--radius", "6,3", "--drop-off", curve}, out);
        TestImage soft = TestImage::read(out);
        for (int k = 0; k < 1600; ++k)
            EXPECT_GE(soft.values<float>()[k], image.values<float>()[k]);
        const auto beside = [&](int x, int y) { return soft.values<float>()[13 * 40 + 28 + 40 * y + x]; };
        EXPECT_TRUE(beside(1, 0) > beside(2, 0) && beside(1, 0) > beside(0, 1));
        EXPECT_EQ(beside(6, 0), 0.25f);
    }
}

TEST(Filter, NoiseIsOfItsSeedAndFrame)
{
    const TempDirectory dir;
    const Words words{"noise",   "--size", "90x70",  "--octaves", "3",
                      "--depth", "uint16", "--type", "cellular"};
    expectSameForEverySplit([&](const host::RunSettings& settings) {
        return runOperation(words, dir.file("split.tif"), settings).outputs.front().path;
    });
    const auto at = [&](const char* seed, std::optional<int64_t> frame) {
        host::Call call(host::operationOfName("noise"));
        call.set(*call.operation().find("size"), {"90x70"});
        call.set(*call.operation().find("seed"), {seed});
        host::ScriptGraph(host::Script::single(call, {dir.file("o.exr"), {}, false, false}), frame).run({});
        return TestImage::read(dir.file("o.exr")).bytes;
    };
    EXPECT_TRUE(at("0", 1) == at("0", {}) && at("0", 1) != at("0", 2) && at("0", 1) != at("1", 1));
}

} // namespace
