#include "images.h"

#include <host/file/Diff.h>
#include <host/operation/CompositeNames.h>

#include <OpenImageIO/imagebuf.h>

namespace {

using OIIO::TypeDesc;
using Words = std::vector<std::string>;

Words joined(Words words, const Words& more)
{
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

/// Flat images in a directory, over windows of a picture of 8 x 6, and what becomes of them.
struct Combining : ::testing::Test
{
    std::string add(const std::string& name, const std::vector<std::string>& channels,
                    std::vector<float> pixel, OIIO::ROI window = {0, 8, 0, 6}, TypeDesc type = TypeDesc::HALF)
    {
        window.chend = static_cast<int>(channels.size());
        OIIO::ImageSpec header(window, type);
        header.set_roi_full({0, 8, 0, 6});
        header.channelnames = channels;
        header.attribute("oiio:UnassociatedAlpha", 1);
        const auto out = OIIO::ImageOutput::create(dir.file(name));
        EXPECT_TRUE(out->open(dir.file(name), header) &&
                    out->write_image(TypeDesc::FLOAT, pixel.data(), 0, 0, 0) && out->close());
        return dir.file(name);
    }

    OIIO::ImageBuf read(const char* name) const
    {
        OIIO::ImageSpec keep;
        keep.attribute("oiio:UnassociatedAlpha", 1);
        OIIO::ImageBuf image(dir.file(name), 0, 0, nullptr, &keep);
        EXPECT_TRUE(image.read(0, 0, true)); // from the file, not from a cache
        return image;
    }

    /// A pixel of a combination, on a picture of 8 pixels.
    struct Case
    {
        Words words;
        const char* output;
        TypeDesc::BASETYPE format;
        int x;
        std::vector<float> wanted;
        const char* plane = "color";
        int y = 3;
        std::array<int, 4> window = {0, 8, 0, 6};
    };

    void check(const Case& c, size_t notes) const
    {
        const host::FrameReport report =
            runOperation(joined(c.words, {"--planes", c.plane}), dir.file(c.output));
        EXPECT_EQ(report.planes, Words{c.plane});
        EXPECT_EQ(report.notes.size(), notes);
        const OIIO::ImageBuf image = read(c.output);
        const OIIO::ROI roi(c.window[0], c.window[1], c.window[2], c.window[3], 0, 1, 0, image.nchannels());
        EXPECT_EQ(image.roi(), roi);
        EXPECT_EQ(image.spec().format, c.format);
        EXPECT_EQ(image.spec().full_width, 8);
        ASSERT_EQ(image.nchannels(), static_cast<int>(c.wanted.size()));
        for (size_t i = 0; i < c.wanted.size(); ++i)
            EXPECT_NEAR(image.getchannel(c.x, c.y, 0, static_cast<int>(i)), c.wanted[i],
                        c.format == TypeDesc::UINT8 ? 0.004f : 0.001f);
    }

    const std::vector<std::string> rgb = {"R", "G", "B"}, rgba = {"R", "G", "B", "A"};
    TempDirectory dir;
};

TEST_F(Combining, PixelsAndWindowsByHand)
{
    const OIIO::ROI all{0, 8, 0, 6};
    const std::string a8 = add("a8.png", rgba, {0.8f, 0.4f, 0.2f, 0.6f}, all, TypeDesc::UINT8);
    const std::string y8 = add("y8.png", {"Y", "A"}, {0.4f, 0.4f}, all, TypeDesc::UINT8);
    const std::string b16 = add("b16.png", rgba, {0.4f, 0.2f, 0.1f, 0.4f}, all, TypeDesc::UINT16);
    const std::string c16 = add("c16.tif", rgb, {0.4f, 0.2f, 0.1f}, {2, 5, 1, 4}, TypeDesc::UINT16);
    const std::string f = add("f.exr", rgba, {2.0f, -1.0f, 0.1f, 0.4f}, all, TypeDesc::FLOAT);
    const std::string a = add("a.exr", rgba, {0.8f, 0.4f, 0.2f, 1.0f});
    const std::string b = add("b.exr", rgb, {0.4f, 0.6f, 1.0f}, {0, 4, 0, 6});
    const std::string m = add("m.exr", {"R", "A"}, {0.5f, 1.0f}, {2, 8, 0, 6});
    const std::string k = add("k.exr", {"R", "G", "B", "A", "Z"}, {0.2f, 0.9f, 0.1f, 0.7f, 5.0f});
    const std::string z = add("z.exr", {"R", "A", "Z"}, {0.5f, 0.5f, 2.0f}, {0, 4, 0, 6});
    const std::string y = add("y.exr", {"Y", "A"}, {1.0f, 0.25f}, {2, 8, 0, 6});
    const std::string bg = add("bg.exr", rgba, {0.8f, 0.4f, 0.2f, 0.5f}, {-2, 4, 1, 5});
    const std::string fg = add("fg.exr", rgb, {0.1f, 0.2f, 0.3f}, {2, 7, -1, 3}); // full where it is
    const std::string bg8 = add("bg8.tif", rgba, {0.8f, 0.4f, 0.2f, 0.6f}, {2, 4, 1, 5}, TypeDesc::UINT8);
    const std::string fg8 = add("fg8.tif", rgb, {0.1f, 0.2f, 0.3f}, {3, 9, 0, 4}, TypeDesc::UINT8);
    const auto comp = [](const char* operation, const std::string& behind, const std::string& front) {
        return Words{"comp", operation, front, behind};
    };
    const Words straight{"--premult", "--unpremult"}, asIs{"--alpha", "as-is"}, half{"--mix", "0.5"},
        quarter{"--mix", "0.25"}, green{"--backing", "0", "1", "0"};
    constexpr std::array<int, 4> both{-2, 7, -1, 5};
    const Case cases[] = {
        {comp("under", bg, fg), "out.exr", TypeDesc::HALF, -2, {0.8f, 0.4f, 0.2f, 0.5f}, "color", 1, both},
        {comp("under", bg, fg), "out.exr", TypeDesc::HALF, 2, {0.85f, 0.5f, 0.35f, 1.0f}, "color", 1, both},
        {comp("under", bg, fg), "out.exr", TypeDesc::HALF, 6, {0.1f, 0.2f, 0.3f, 1.0f}, "color", -1, both},
        {comp("under", bg, fg), "out.exr", TypeDesc::HALF, 6, {0, 0, 0, 0}, "color", 4, both},
        {comp("inside", fg, bg), "out.exr", TypeDesc::HALF, -2, {0, 0, 0}, "color", 1, both},
        {comp("inside", fg, bg), "out.exr", TypeDesc::HALF, 2, {0.8f, 0.4f, 0.2f}, "color", 1, both},
        {joined(comp("under", bg8, fg8), asIs), "out.png", TypeDesc::UINT8, 3, {0.84f, 0.48f, 0.32f, 1.0f}},
        {joined(comp("under", bg8, fg8), asIs), "out.png", TypeDesc::UINT8, 7, {0.1f, 0.2f, 0.3f, 1.0f}},
        {joined(comp("over", a8, y8), asIs),
         "out.png",
         TypeDesc::UINT8,
         7,
         {0.88f, 0.64f, 0.52f, 0.76f}}, // luminance is grey
        {joined(comp("over", a8, b16), asIs),
         "out.png",
         TypeDesc::UINT16,
         7,
         {0.8791f, 0.4396f, 0.2198f, 0.76f}},
        {joined(comp("over", b16, c16), asIs),
         "out.png",
         TypeDesc::UINT16,
         2,
         {0.4f, 0.2f, 0.1f, 1.0f}}, // no 65535 / 65355
        {joined(comp("over", b16, c16), asIs), "out.png", TypeDesc::UINT16, 5, {0.4f, 0.2f, 0.1f, 0.4f}},
        {joined(comp("over", a8, f), asIs), "out.exr", TypeDesc::FLOAT, 7, {2.48f, -0.76f, 0.22f, 0.76f}},
        {joined(comp("over", a8, f), joined(straight, asIs)),
         "out.exr",
         TypeDesc::FLOAT,
         7,
         {1.4316f, -0.3368f, 0.1474f, 0.76f}},
        {comp("over", k, z), "out.exr", TypeDesc::HALF, 1, {0.6f, 0.45f, 0.05f, 0.85f, 5.0f}},
        {comp("over", k, z), "out.exr", TypeDesc::HALF, 1, {0.2f, 0.9f, 0.1f, 0.7f, 2.0f}, "depth"},
        {comp("over", k, z), "out.exr", TypeDesc::HALF, 6, {0.2f, 0.9f, 0.1f, 0.7f, 5.0f}, "depth"},
        {joined({"blend", a, b}, quarter),
         "out.exr",
         TypeDesc::HALF,
         1,
         {0.7f, 0.45f, 0.4f, 0.75f}}, // alpha fades
        {joined({"blend", a, b}, quarter), "out.exr", TypeDesc::HALF, 5, {0.6f, 0.3f, 0.15f, 0.75f}},
        {joined({"blend", a, b, "--mask", m}, half),
         "out.exr",
         TypeDesc::HALF,
         1,
         {0.8f, 0.4f, 0.2f, 1.0f}}, // beside the matte
        {joined({"blend", a, b, "--mask", m}, half), "out.exr", TypeDesc::HALF, 3, {0.7f, 0.45f, 0.4f, 0.5f}},
        {Words{"blend", a, b, "--mask", m, "--swap"}, "out.exr", TypeDesc::HALF, 1, {0.4f, 0.6f, 1.0f, 0.0f}},
        {joined({"chroma", k, "--matte", y}, green),
         "out.exr",
         TypeDesc::HALF,
         3,
         {0.2f, 0.15f, 0.1f, 0.7f, 5.0f}},
        {joined({"chroma", k, "--matte", y}, green),
         "out.exr",
         TypeDesc::HALF,
         1,
         {0.0f, 0.0f, 0.0f, 0.7f, 5.0f}},
        {joined({"chroma", k, "--matte", y, "--matte-channel", "g"}, green),
         "out.exr",
         TypeDesc::HALF,
         3,
         {0.2f, 0.9f, 0.1f, 0.7f, 5.0f}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        check(c, c.words[2] == fg8 ? 1u : 0u); // which goes beyond the picture
    }
}

TEST_F(Combining, SplitsAndThreadsDoNotMatter)
{
    const std::string a = dir.file("0.exr"), b = dir.file("1.exr"), m = dir.file("2.exr"),
                      out = dir.file("o.exr");
    for (const int i : {0, 1, 2}) {
        OIIO::ImageSpec header(131, 97, 4, TypeDesc::UINT32);
        header.x = i;
        header.y = -7 * i;
        TestImage(header).write(dir.file(std::to_string(i) + ".exr"));
    }
    for (const Words& words : {Words{"comp", "xor", b, a}, Words{"blend", a, b, "--mask", m},
                               Words{"chroma", a, "--matte", m, "--backing", "1", "0", "2"}})
        expectSameForEverySplit([&](const host::RunSettings& settings) {
            return runOperation(words, out, settings).outputs.front().path;
        });
}

TEST_F(Combining, AlphaIsWhatTheFileFormatHasAndRoundedOnce)
{
    const std::vector<float> colour{0.012f, 0.006f, 0.0f, 0.015f};
    const std::string exr = add("a.exr", rgba, colour), straight = dir.file("a.png");
    const host::FrameReport report = runOperation({"grade", exr, "", "--depth", "uint8"}, straight);
    EXPECT_EQ(report.notes.size(), 1u);
    const auto at = [this](const char* name, int c) { return read(name).getchannel(3, 3, 0, c); };
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(at("a.png", c), colour[static_cast<size_t>(c)] / 0.015f, 0.003f);
    runOperation({"comp", "over", straight, exr}, dir.file("b.exr")); // multiplied for the operation
    for (int c = 0; c < 4; ++c)
        EXPECT_NEAR(at("b.exr", c), colour[static_cast<size_t>(c)] * (2.0f - 0.015f), 1e-3f);
    runOperation({"comp", "over", exr, exr, "--unpremult", "--depth", "uint16"}, dir.file("c.png")); // once
    EXPECT_NEAR(at("c.png", 1), 0.4f, 0.001f);
    const std::string half = add("half.exr", rgba, {0.3f, 0.3f, 0.3f, 1.0f});
    runOperation({"comp", "add", half, half, "--depth", "uint8"},
                 dir.file("f.png")); // an alpha of 2, stored as 1
    EXPECT_NEAR(at("f.png", 0), 0.6f, 0.003f);
    runOperation({"comp", "add", half, dir.file("f.png"), "--depth", "uint8"},
                 dir.file("g.png")); // over what is straight
    EXPECT_NEAR(at("g.png", 0), 0.9f, 0.003f);
    runOperation({"grade", straight, "", "--alpha", "as-is"}, dir.file("d.tif"));
    EXPECT_EQ(read("d.tif").spec().get_int_attribute("oiio:UnassociatedAlpha"), 1);
    runOperation({"grade", straight, ""}, dir.file("e.png"));
    EXPECT_TRUE(host::diff(straight, dir.file("e.png")).same());
}

TEST_F(Combining, ErrorsNameTheFileOrTheOption)
{
    const std::string a = add("a.exr", rgb, {1, 1, 1}), grey = add("grey.exr", {"Y"}, {1});
    const std::string mask = add("mask.exr", {"mask"}, {1});
    std::filesystem::create_hard_link(mask, dir.file("hard.exr"));
    const struct
    {
        Words words;
        const char* wanted;
        const char* output = "out.exr";
    } cases[] = {
        {{"comp", "over", grey, a, "--black", "3"}, "--black"},
        {{"comp", "over", a, grey}, "grey.exr': plane color is luminance"},
        {{"comp", "over", mask, a}, "no plane of the same name: color and mask"},
        {{"comp", "over", mask, a, "--planes", "color"}, "mask.exr' has no plane 'color'"},
        {{"blend", a, "--weights", "1", "1"}, "--weights requires B"},
        {{"blend", a, grey, "--weights", "1", "inf"}, "--weights"},
        {{"chroma", a, "--matte", a, "--backing", "0", "-inf", "0"}, "--backing"},
        {{"blend", a, "--mask", mask, "--mask-channel", "a"},
         "the matte has no component a; its channels are mask"},
        {{"blend", a, "--mask", mask}, "the output is the input, '", "hard.exr"},
        {{"blend", a, grey, "--mix", "1", "--black", "3"}, "black and white points"},
        {{"chroma", grey, "--matte", a, "--backing", "0", "1", "0"}, "grey.exr': plane color has no red"},
    };
    for (const auto& c : cases)
        EXPECT_TRUE(says(errorOf([&] { runOperation(c.words, dir.file(c.output)); }), c.wanted));
    EXPECT_EQ(host::compositeOfName("14"), host::compositeOfName("subtract_reversed"));
    EXPECT_THROW(host::compositeOfName("ove"), host::Error);
}

} // namespace
