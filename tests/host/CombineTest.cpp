#include "images.h"

#include <host/graph/Combine.h>
#include <host/text/Error.h>

#include <OpenImageIO/imagebuf.h>

namespace {

using Composite = host::Combination::CompositeSettings;
using Blend = host::Combination::BlendSettings;
using Chroma = host::Combination::ChromaSettings;
using OIIO::TypeDesc;

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
        host::CombineInputs inputs;
        host::Combination combination;
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
        host::CookSettings settings;
        settings.planes = {c.plane};
        const host::CookReport report = host::combine(c.inputs, dir.file(c.output), c.combination, settings);
        EXPECT_EQ(report.planes, settings.planes);
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
    const Composite over, under{RU_COMP_UNDER}, inside{RU_COMP_INSIDE}, straight{RU_COMP_OVER, true, true};
    const Blend quarter{0.25f}, half{0.5f}, swapped{1.0f, {}, true};
    const Chroma green{{0.0f, 1.0f, 0.0f}};
    constexpr std::array<int, 4> both{-2, 7, -1, 5};
    const Case cases[] = {
        {{bg, fg}, {under}, "out.exr", TypeDesc::HALF, -2, {0.8f, 0.4f, 0.2f, 0.5f}, "color", 1, both},
        {{bg, fg}, {under}, "out.exr", TypeDesc::HALF, 2, {0.85f, 0.5f, 0.35f, 1.0f}, "color", 1, both},
        {{bg, fg}, {under}, "out.exr", TypeDesc::HALF, 6, {0.1f, 0.2f, 0.3f, 1.0f}, "color", -1, both},
        {{bg, fg}, {under}, "out.exr", TypeDesc::HALF, 6, {0, 0, 0, 0}, "color", 4, both},
        {{fg, bg}, {inside}, "out.exr", TypeDesc::HALF, -2, {0, 0, 0}, "color", 1, both},
        {{fg, bg}, {inside}, "out.exr", TypeDesc::HALF, 2, {0.8f, 0.4f, 0.2f}, "color", 1, both},
        {{bg8, fg8}, {under}, "out.png", TypeDesc::UINT8, 3, {0.84f, 0.48f, 0.32f, 1.0f}},
        {{bg8, fg8}, {under}, "out.png", TypeDesc::UINT8, 7, {0.1f, 0.2f, 0.3f, 1.0f}},
        {{a8, y8}, {over}, "out.png", TypeDesc::UINT8, 7, {0.88f, 0.64f, 0.52f, 0.76f}}, // luminance is grey
        {{a8, b16}, {over}, "out.png", TypeDesc::UINT16, 7, {0.8791f, 0.4396f, 0.2198f, 0.76f}},
        {{b16, c16}, {over}, "out.png", TypeDesc::UINT16, 2, {0.4f, 0.2f, 0.1f, 1.0f}}, // no 65535 / 65355
        {{b16, c16}, {over}, "out.png", TypeDesc::UINT16, 5, {0.4f, 0.2f, 0.1f, 0.4f}},
        {{a8, f}, {over}, "out.exr", TypeDesc::FLOAT, 7, {2.48f, -0.76f, 0.22f, 0.76f}},
        {{a8, f}, {straight}, "out.exr", TypeDesc::FLOAT, 7, {1.4316f, -0.3368f, 0.1474f, 0.76f}},
        {{k, z}, {over}, "out.exr", TypeDesc::HALF, 1, {0.6f, 0.45f, 0.05f, 0.85f, 5.0f}},
        {{k, z}, {over}, "out.exr", TypeDesc::HALF, 1, {0.2f, 0.9f, 0.1f, 0.7f, 2.0f}, "depth"},
        {{k, z}, {over}, "out.exr", TypeDesc::HALF, 6, {0.2f, 0.9f, 0.1f, 0.7f, 5.0f}, "depth"},
        {{a, b}, {quarter}, "out.exr", TypeDesc::HALF, 1, {0.7f, 0.45f, 0.4f, 0.75f}}, // alpha fades
        {{a, b}, {quarter}, "out.exr", TypeDesc::HALF, 5, {0.6f, 0.3f, 0.15f, 0.75f}},
        {{a, b, m}, {half}, "out.exr", TypeDesc::HALF, 1, {0.8f, 0.4f, 0.2f, 1.0f}}, // beside the matte
        {{a, b, m}, {half}, "out.exr", TypeDesc::HALF, 3, {0.7f, 0.45f, 0.4f, 0.5f}},
        {{a, b, m}, {swapped}, "out.exr", TypeDesc::HALF, 1, {0.4f, 0.6f, 1.0f, 0.0f}},
        {{k, {}, y}, {green}, "out.exr", TypeDesc::HALF, 3, {0.2f, 0.15f, 0.1f, 0.7f, 5.0f}},
        {{k, {}, y}, {green}, "out.exr", TypeDesc::HALF, 1, {0.0f, 0.0f, 0.0f, 0.7f, 5.0f}},
        {{k, {}, y, 1}, {green}, "out.exr", TypeDesc::HALF, 3, {0.2f, 0.9f, 0.1f, 0.7f, 5.0f}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        check(c, c.inputs.second == fg8 ? 1u : 0u); // which goes beyond the picture
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
    const std::pair<host::CombineInputs, host::Combination> jobs[] = {
        {{a, b}, {Composite{RU_COMP_XOR}}}, {{a, b, m}, {Blend{}}}, {{a, {}, m}, {Chroma{{1, 0, 2}}}}};
    for (const auto& [inputs, combination] : jobs)
        expectSameForEverySplit([&, in = inputs, how = combination](const host::CookSettings& settings) {
            return host::combine(in, out, how, settings).output.path;
        });
}

TEST_F(Combining, ErrorsNameTheFileOrTheOption)
{
    const std::string a = add("a.exr", rgb, {1, 1, 1}), grey = add("grey.exr", {"Y"}, {1});
    const std::string mask = add("mask.exr", {"mask"}, {1});
    std::filesystem::create_hard_link(mask, dir.file("hard.exr"));
    const host::Combination over{Composite{}}, blend{Blend{}}, weights{Blend{1.0f, {{1.0f, 1.0f}}}};
    host::CookSettings points, named;
    points.black = 3;
    named.planes = {"color"};
    const struct
    {
        host::CombineInputs inputs;
        host::Combination combination;
        const char* wanted;
        host::CookSettings settings = {};
        const char* output = "out.exr";
    } cases[] = {
        {{a, grey, grey}, over, "takes no matte, '"},
        {{a, grey}, over, "--black", points},
        {{grey, a}, over, "grey.exr': plane color is luminance"},
        {{a, mask}, over, "no plane of the same name: color and mask"},
        {{a, mask}, over, "mask.exr' has no plane 'color'", named},
        {{a}, weights, "weights are for two images"},
        {{a, grey, grey}, weights, "leave out the matte, '"},
        {{a, grey}, {Blend{1.0f, {{1.0f, INFINITY}}}}, "weights: inf is not finite"},
        {{a, {}, a}, {Chroma{{0.0f, -INFINITY, 0.0f}}}, "backing: -inf is not finite"},
        {{a, {}, mask, 3}, blend, "mask.exr': the matte has no component a; its channels are mask"},
        {{a, {}, mask}, blend, "the output is the input, '", {}, "hard.exr"},
        {{a, grey}, blend, "black and white points", points},
        {{a}, {Chroma{}}, "a.exr': a backing"},
        {{grey, {}, a}, {Chroma{}}, "grey.exr': plane color has no red"},
    };
    for (const auto& c : cases) {
        const auto run = [&] { host::combine(c.inputs, dir.file(c.output), c.combination, c.settings); };
        EXPECT_TRUE(says(errorOf(run), c.wanted));
    }
    EXPECT_EQ(host::compositeOfName("14"), host::compositeOfName("subtract_reversed"));
    EXPECT_THROW(host::compositeOfName("ove"), host::Error);
}

} // namespace
