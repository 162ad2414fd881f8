#include "images.h"

#include <host/file/Diff.h>
#include <host/graph/FileImages.h>
#include <host/operation/AlgorithmNode.h>
#include <host/text/Error.h>

#include <RU/framework/RU_Factories.h>
#include <TIL/TIL_Region.h>

#include <reference/Formats.h>

#include <cmath>

namespace {

using host::Chain;
using Words = std::vector<std::string>;

/// One file for every storage format, each with windows that are off the origin where the file format has
/// them.
struct FormatCase
{
    unsigned char format;
    const char* name;
    int channels;
};

const FormatCase formatCases[] = {
    {PXL_FORMAT_uint8, "u8.png", 3},   {PXL_FORMAT_uint8, "u8a.png", 4},   {PXL_FORMAT_uint8, "gray.png", 1},
    {PXL_FORMAT_uint16, "u16.png", 4}, {PXL_FORMAT_uint16, "u16.tif", 3},  {PXL_FORMAT_uint32, "u32.tif", 3},
    {PXL_FORMAT_half, "f16.exr", 4},   {PXL_FORMAT_float32, "f32.exr", 3}, {PXL_FORMAT_float32, "f32.tif", 4},
};

TestImage imageOf(const FormatCase& c, int width = 237, int height = 141)
{
    OIIO::ImageSpec spec(width, height, c.channels, typeOfFormat(c.format));
    spec.attribute("oiio:UnassociatedAlpha", 1);
    if (std::string(c.name).ends_with(".exr")) {
        spec.x = -13;
        spec.y = 29;
        spec.full_width = 640;
        spec.full_height = 480;
    }
    return TestImage(spec);
}

host::FrameReport grade(const std::string& in, const std::string& out, const std::string& chain,
                        const Words& options = {}, const host::RunSettings& settings = {})
{
    Words words{"grade", in, chain};
    words.insert(words.end(), options.begin(), options.end());
    return runOperation(words, out, settings);
}

TEST(Cook, AnEmptyChainCopiesEveryBit)
{
    const TempDirectory dir;
    for (const FormatCase& c : formatCases) {
        const TestImage image = imageOf(c);
        image.write(dir.file(c.name));
        const std::string out = dir.file(std::string("out_") + c.name);
        grade(dir.file(c.name), out, "");
        const TestImage copy = TestImage::read(out);
        EXPECT_EQ(copy.bytes, image.bytes) << c.name;
        EXPECT_TRUE(host::diff(dir.file(c.name), out).same()) << c.name;
        EXPECT_EQ(copy.spec.x, image.spec.x);
        EXPECT_EQ(copy.spec.full_width, image.spec.full_width);
    }
}

TEST(Cook, AGradeIsTheChainOnEveryValueOfItsScope)
{
    const TempDirectory dir;
    const Chain chain = Chain::fromText("gamma 2.2, add 0.1");
    const Chain::Built built = chain.build();
    built.head->buildPixelEngine();
    for (const FormatCase& c : formatCases) {
        TestImage image = imageOf(c);
        image.write(dir.file(c.name));
        const std::string out = dir.file(std::string("out_") + c.name);
        grade(dir.file(c.name), out, "gamma 2.2 @rgb, add 0.1 @rgb");
        const TestImage graded = TestImage::read(out);
        const reference::Format format{c.format, true};
        int64_t wrong = 0;
        for (int64_t i = 0; i < std::ssize(image.bytes) / format.size(); ++i) {
            const double in = format.valueOf(format.codeAt(image.bytes.data(), i), format.range());
            const double made = format.codeAt(graded.bytes.data(), i);
            const int component = static_cast<int>(i % c.channels);
            double wanted = built.head->processValue(static_cast<float>(in), component);
            if (component == 3)
                wanted = in;
            else if (format.isHalf() && !std::isfinite(in))
                wanted = 0.0;
            wrong += !format.holds(made, wanted, format.range(), format.isInteger() ? 1e-6 : 0.0);
        }
        EXPECT_EQ(wrong, 0) << c.name;
    }
}

TEST(Cook, SplitsAndThreadsDoNotMatter)
{
    const TempDirectory dir;
    const FormatCase c{PXL_FORMAT_float32, "in.exr", 4};
    TestImage image = imageOf(c, 291, 437);
    for (int64_t i = 0; i < 291 * 437 * 4; ++i) // numbers: NaN bits need not survive arithmetic
        image.values<float>()[i] = static_cast<float>(image.values<int>()[i]) * 1e-9f;
    image.write(dir.file("in.exr"));
    const std::string in = dir.file("in.exr");
    for (const Words& words : {Words{"edge", in, "--gain", "1.5", "--corner", "0.7", "--scope", "rgba"},
                               Words{"grade", in, "gamma 2.2, sin 3 @rb"}})
        expectSameForEverySplit([&](const host::RunSettings& settings) {
            return runOperation(words, dir.file("out.exr"), settings).outputs.front().path;
        });
}

/// Takes each pixel from the first or last corner of what a filter may read for it, in even and odd columns.
template <class T, bool FullRange>
struct CornersOp : RU_FilterOp<T, FullRange>
{
    using RU_FilterOp<T, FullRange>::RU_FilterOp;
    using RU_FilterOp<T, FullRange>::filter;

    int filter(TIL_TileList* out, const TIL_Region* in, float, int, void*) override
    {
        const int last = (in->height() - out->height()) * in->width() + in->width() - out->width();
        for (int c = 0; c < 2; ++c) {
            T* to = nullptr;
            out->tiles[c]->getImageData(to);
            const T* from = static_cast<const T*>(in->getImageData(c));
            for (int i = 0; i < out->itemCount; ++i) {
                const int x = i % out->width(), y = i / out->width();
                to[i] = from[y * in->width() + x + ((out->x1 + x) % 2 != 0 ? last : 0)];
            }
        }
        return 1;
    }
};

struct Corners : RU_FilterFactories<CornersOp>
{
    RU_Border border() const override { return around; }
    RU_Border around;
};

TEST(Cook, AFilterReadsAsFarAsItSaysAndThePixelsAtTheEndsGoOn)
{
    const TempDirectory dir;
    constexpr int width = 70, height = 43;
    OIIO::ImageSpec spec(width, height, 3, OIIO::TypeDesc::HALF);
    spec.x = 100;
    spec.y = -7;
    const TestImage image(spec);
    image.write(dir.file("in.exr"));
    const reference::Format half{PXL_FORMAT_half, true}, floats{PXL_FORMAT_float32, true};
    const auto at = [&](int x, int y, int c) {
        const int pixel = std::clamp(y, 0, height - 1) * width + std::clamp(x, 0, width - 1);
        return half.codeAt(image.bytes.data(), pixel * 3 + c);
    };
    host::RunSettings settings;
    settings.tile = 16;
    host::PlaneSettings planes;
    planes.depth = PXL_FORMAT_float32;
    for (const RU_Border border : {RU_Border{0, 0, 0, 0}, {1, 1, 1, 1}, {30, 2, 0, 90}}) {
        auto corners = std::make_unique<Corners>();
        corners->around = border;
        host::AlgorithmNode::Work work;
        work.algorithm = std::move(corners);
        work.isFilter = true;
        work.written = {true, true, false, false};
        host::Graph graph;
        const size_t source = graph.add(std::make_unique<host::FileSource>(dir.file("in.exr")));
        const size_t node =
            graph.add("corners", std::make_unique<host::AlgorithmNode>(std::move(work), planes), {source});
        graph.write(node, std::make_unique<host::FileSink>(dir.file("out.exr"), graph.picture(node)));
        graph.run(settings);
        const TestImage out = TestImage::read(dir.file("out.exr"));
        int wrong = 0;
        for (int i = 0; i < width * height * 3; ++i) {
            const int c = i % 3, x = i / 3 % width, y = i / 3 / width;
            const double moved = x % 2 != 0 ? at(x + border.right, y + border.top, c)
                                            : at(x - border.left, y - border.bottom, c);
            wrong += !floats.holds(floats.codeAt(out.bytes.data(), i), c < 2 ? moved : at(x, y, c), {});
        }
        EXPECT_EQ(wrong, 0) << border.left;
    }
}

TEST(Cook, OtherPlanesAreCopiedAlsoInMixedFiles)
{
    const TempDirectory dir;
    OIIO::ImageSpec spec(50, 60, 5, OIIO::TypeDesc::HALF);
    spec.channelnames = {"R", "G", "B", "A", "Z"};
    spec.channelformats = {OIIO::TypeDesc::HALF, OIIO::TypeDesc::HALF, OIIO::TypeDesc::HALF,
                           OIIO::TypeDesc::HALF, OIIO::TypeDesc::FLOAT};
    const TestImage image(spec);
    image.write(dir.file("in.exr"));
    EXPECT_EQ(grade(dir.file("in.exr"), dir.file("out.exr"), "negate").planes,
              std::vector<std::string>{"color"});
    host::DiffReport report = host::diff(dir.file("in.exr"), dir.file("out.exr"));
    EXPECT_TRUE(report.headers.empty());
    EXPECT_GT(report.channels[0].differing, 2900);
    EXPECT_EQ(report.channels[4].differing, 0);

    const Words depth{"--planes", "depth"};
    grade(dir.file("in.exr"), dir.file("out.exr"), "negate", depth);
    report = host::diff(dir.file("in.exr"), dir.file("out.exr"));
    EXPECT_EQ(report.channels[0].differing, 0);
    EXPECT_GT(report.channels[4].differing, 2900);

    EXPECT_THROW(grade(dir.file("in.exr"), dir.file("out.exr"), "negate @a", depth), host::Error);
    EXPECT_THROW(grade(dir.file("in.exr"), dir.file("out.exr"), "negate", {"--planes", "dept"}), host::Error);
}

TEST(Cook, DepthComputesInTheWiderFormat)
{
    const TempDirectory dir;
    TestImage image(OIIO::ImageSpec(256, 1, 3, OIIO::TypeDesc::UINT8));
    for (int i = 0; i < 256 * 3; ++i)
        image.values<uint8_t>()[i] = static_cast<uint8_t>(i / 3);
    image.write(dir.file("in.png"));
    grade(dir.file("in.png"), dir.file("wide.exr"), "mult 4", {"--depth", "float"});
    EXPECT_FLOAT_EQ(TestImage::read(dir.file("wide.exr")).values<float>()[255 * 3], 4.0f);
    // Values above white come back before anything is clamped.
    grade(dir.file("wide.exr"), dir.file("back.png"), "mult 0.25", {"--depth", "uint8"});
    EXPECT_EQ(TestImage::read(dir.file("back.png")).bytes, image.bytes);
}

TEST(Cook, BlackAndWhitePointsHoldForIntegersOnly)
{
    const TempDirectory dir;
    TestImage image(OIIO::ImageSpec(4, 1, 3, OIIO::TypeDesc::UINT16));
    std::fill_n(image.values<uint16_t>(), 12, uint16_t{30000});
    image.write(dir.file("in.tif"));
    const auto add = [&](const Words& options) {
        grade(dir.file("in.tif"), dir.file("out.tif"), "add 0.25", options);
    };
    add({"--black", "10000", "--white", "50000"});
    EXPECT_EQ(TestImage::read(dir.file("out.tif")).values<uint16_t>()[0], 40000);
    EXPECT_THROW(add({"--black", "10000", "--white", "50000", "--depth", "uint8"}), host::Error);
    EXPECT_THROW(add({"--black", "10000", "--white", "70000"}), host::Error);
    EXPECT_THROW(add({"--black", "10000", "--white", "10000"}), host::Error);
}

TEST(Cook, ACancelledJobLeavesNothing)
{
    const TempDirectory dir;
    imageOf({PXL_FORMAT_half, "", 4}, 900, 900).write(dir.file("in.exr"));
    host::CancelSwitch cancel{false};
    host::RunSettings settings;
    settings.cancel = &cancel;
    settings.tile = 32;
    settings.progress = [&](int64_t, int64_t) { cancel = true; };
    const auto run = [&] { grade(dir.file("in.exr"), dir.file("out.exr"), "gamma 2", {}, settings); };
    EXPECT_EQ(errorOf(run).kind(), host::Error::Kind::Cancelled);
    EXPECT_EQ(dir.names(), std::vector<std::string>{"in.exr"});
}

} // namespace
