#include <host_images.h>

#include <host/Combine.h>
#include <host/Error.h>

#include <gtest/gtest.h>

namespace {

using Composite = host::Combination::CompositeSettings;
using Blend = host::Combination::BlendSettings;
using Chroma = host::Combination::ChromaSettings;
using OIIO::TypeDesc;

/// Flat images in a directory, over windows of a picture of 8 x 6, and what becomes of them.
struct Combining : ::testing::Test
{
    std::string add(const std::string& name, const std::vector<std::string>& channels,
                    std::vector<float> pixel, host::Window window = {0, 0, 8, 6},
                    TypeDesc type = TypeDesc::HALF)
    {
        OIIO::ImageSpec header(window.width, window.height, static_cast<int>(channels.size()), type);
        header.x = window.x;
        header.y = window.y;
        header.full_width = 8;
        header.full_height = 6;
        header.channelnames = channels;
        header.attribute("oiio:UnassociatedAlpha", 1);
        const auto out = OIIO::ImageOutput::create(dir.file(name));
        EXPECT_TRUE(out->open(dir.file(name), header) &&
                    out->write_image(TypeDesc::FLOAT, pixel.data(), 0, 0, 0) && out->close());
        return dir.file(name);
    }

    host::CookReport run(const host::CombineInputs& inputs, const host::Combination& combination,
                         const char* name = "out.exr", const host::CookSettings& settings = {})
    {
        const host::CookReport report = host::combine(inputs, dir.file(name), combination, settings);
        OIIO::ImageSpec keep;
        keep.attribute("oiio:UnassociatedAlpha", 1);
        const auto in = OIIO::ImageInput::open(dir.file(name), &keep);
        spec = in->spec();
        pixels.resize(spec.image_pixels() * static_cast<size_t>(spec.nchannels));
        EXPECT_TRUE(in->read_image(0, 0, 0, spec.nchannels, TypeDesc::FLOAT, pixels.data()));
        return report;
    }

    void expect(int x, int y, const std::vector<float>& wanted, float tolerance = 0.001f) const
    {
        const int first = ((y - spec.y) * spec.width + x - spec.x) * spec.nchannels;
        for (size_t c = 0; c < wanted.size(); ++c)
            EXPECT_NEAR(pixels[static_cast<size_t>(first) + c], wanted[c], tolerance)
                << x << "," << y << " " << c;
    }

    const std::vector<std::string> rgb = {"R", "G", "B"}, rgba = {"R", "G", "B", "A"};
    TempDirectory dir;
    OIIO::ImageSpec spec;
    std::vector<float> pixels;
};

TEST_F(Combining, ACompositeCoversBothWindowsAndIsNothingOutside)
{
    const std::string bg = add("bg.exr", rgba, {0.8f, 0.4f, 0.2f, 0.5f}, {-2, 1, 6, 4});
    const std::string fg = add("fg.exr", rgb, {0.1f, 0.2f, 0.3f}, {2, -1, 5, 4}); // full where it is
    run({bg, fg}, {Composite{RU_COMP_UNDER}});
    EXPECT_EQ(spec.roi(), OIIO::ROI(-2, 7, -1, 5, 0, 1, 0, 4));
    EXPECT_EQ(spec.full_width, 8);
    expect(-2, 1, {0.8f, 0.4f, 0.2f, 0.5f});  // the first alone
    expect(2, 1, {0.85f, 0.5f, 0.35f, 1.0f}); // both
    expect(6, -1, {0.1f, 0.2f, 0.3f, 1.0f});  // the second alone
    expect(6, 4, {0, 0, 0, 0});               // neither
    run({fg, bg}, {Composite{RU_COMP_INSIDE}});
    EXPECT_EQ(spec.nchannels, 3);
    expect(-2, 1, {0, 0, 0});
    expect(2, 1, {0.8f, 0.4f, 0.2f});

    host::CookSettings bytes;
    bytes.depth = PXL_FORMAT_uint8; // and no windows: the picture of the first
    EXPECT_EQ(run({bg, fg}, {Composite{RU_COMP_UNDER}}, "out.png", bytes).notes.size(), 1u);
    EXPECT_EQ(spec.roi(), OIIO::ROI(0, 8, 0, 6, 0, 1, 0, 4));
    expect(2, 1, {0.85f, 0.5f, 0.35f, 1.0f}, 0.003f);
    expect(7, 5, {0, 0, 0, 0});
}

TEST_F(Combining, PixelsByHand)
{
    const host::Window all{0, 0, 8, 6};
    const std::string a8 = add("a8.png", rgba, {0.8f, 0.4f, 0.2f, 0.6f}, all, TypeDesc::UINT8);
    const std::string y8 = add("y8.png", {"Y", "A"}, {0.4f, 0.4f}, all, TypeDesc::UINT8);
    const std::string b16 = add("b16.png", rgba, {0.4f, 0.2f, 0.1f, 0.4f}, all, TypeDesc::UINT16);
    const std::string c16 = add("c16.tif", rgb, {0.4f, 0.2f, 0.1f}, {2, 1, 3, 3}, TypeDesc::UINT16);
    const std::string f = add("f.exr", rgba, {2.0f, -1.0f, 0.1f, 0.4f}, all, TypeDesc::FLOAT);
    const std::string a = add("a.exr", rgba, {0.8f, 0.4f, 0.2f, 1.0f});
    const std::string b = add("b.exr", rgb, {0.4f, 0.6f, 1.0f}, {0, 0, 4, 6});
    const std::string m = add("m.exr", {"R", "A"}, {0.5f, 1.0f}, {2, 0, 6, 6});
    const std::string k = add("k.exr", {"R", "G", "B", "A", "Z"}, {0.2f, 0.9f, 0.1f, 0.7f, 5.0f});
    const std::string z = add("z.exr", {"R", "A", "Z"}, {0.5f, 0.5f, 2.0f}, {0, 0, 4, 6});
    const std::string y = add("y.exr", {"Y", "A"}, {1.0f, 0.25f}, {2, 0, 6, 6});
    const Composite over, straight{RU_COMP_OVER, true, true};
    const Blend quarter{0.25f}, half{0.5f}, swapped{1.0f, {}, true}, weights{1.0f, {{0.5f, 2.0f}}};
    const Chroma green{{0.0f, 1.0f, 0.0f}};
    const struct
    {
        host::CombineInputs inputs;
        host::Combination combination;
        const char* output;
        TypeDesc::BASETYPE format;
        int x;
        std::vector<float> wanted;
        const char* plane = "color";
    } cases[] = {
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
        {{a}, {quarter}, "out.exr", TypeDesc::HALF, 1, {0.6f, 0.3f, 0.15f, 0.75f}},
        {{a, b}, {weights}, "out.exr", TypeDesc::HALF, 1, {1.2f, 1.4f, 2.1f, 0.5f}},
        {{a, b, m}, {half}, "out.exr", TypeDesc::HALF, 1, {0.8f, 0.4f, 0.2f, 1.0f}}, // beside the matte
        {{a, b, m}, {half}, "out.exr", TypeDesc::HALF, 3, {0.7f, 0.45f, 0.4f, 0.5f}},
        {{a, b, m, 3}, {half}, "out.exr", TypeDesc::HALF, 3, {0.6f, 0.5f, 0.6f, 0.5f}},
        {{a, b, m}, {swapped}, "out.exr", TypeDesc::HALF, 1, {0.4f, 0.6f, 1.0f, 0.0f}},
        {{a, {}, m}, {swapped}, "out.exr", TypeDesc::HALF, 3, {0.4f, 0.2f, 0.1f, 1.0f}},
        {{k, {}, y}, {green}, "out.exr", TypeDesc::HALF, 3, {0.2f, 0.15f, 0.1f, 0.7f, 5.0f}},
        {{k, {}, y}, {green}, "out.exr", TypeDesc::HALF, 1, {0.0f, 0.0f, 0.0f, 0.7f, 5.0f}},
        {{k, {}, y, 1}, {green}, "out.exr", TypeDesc::HALF, 3, {0.2f, 0.9f, 0.1f, 0.7f, 5.0f}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        host::CookSettings settings;
        settings.planes = {c.plane};
        EXPECT_EQ(run(c.inputs, c.combination, c.output, settings).planes, settings.planes);
        EXPECT_EQ(spec.format, c.format);
        expect(c.x, 3, c.wanted, c.format == TypeDesc::UINT8 ? 0.004f : 0.001f);
    }
}

TEST_F(Combining, SplitsAndThreadsDoNotMatter)
{
    for (const char* name : {"a.exr", "b.exr", "m.exr"}) {
        OIIO::ImageSpec header(131, 97, 4, name[0] == 'b' ? TypeDesc::HALF : TypeDesc::FLOAT);
        header.x = name[0] - 'a';
        header.y = -header.x * 7;
        TestImage image(header);
        for (size_t i = 1; i < image.bytes.size(); i += 2) // no NaN: either side's bits may come through
            image.bytes[i] = static_cast<char>(image.bytes[i] & 0xBB);
        image.write(dir.file(name));
    }
    const std::string a = dir.file("a.exr"), b = dir.file("b.exr"), m = dir.file("m.exr");
    const std::pair<host::CombineInputs, host::Combination> jobs[] = {
        {{a, b}, {Composite{RU_COMP_XOR}}}, {{a, b, m}, {Blend{}}}, {{a, {}, m}, {Chroma{{1, 0, 2}}}}};
    for (const auto& [inputs, combination] : jobs) {
        std::vector<char> first;
        for (const auto& [threads, tile] : {std::pair{1, 4096}, {2, 64}, {8, 200}, {8, 5}, {3, 17}}) {
            host::CookSettings settings;
            settings.threads = threads;
            settings.tile = tile;
            host::combine(inputs, dir.file("out.exr"), combination, settings);
            const TestImage out = TestImage::read(dir.file("out.exr"));
            first = first.empty() ? out.bytes : first;
            EXPECT_EQ(out.bytes, first) << threads << " threads, tiles of " << tile;
        }
    }
}

TEST_F(Combining, ErrorsNameTheFileOrTheOption)
{
    const std::string a = add("a.exr", rgb, {1, 1, 1}), grey = add("grey.exr", {"Y"}, {1});
    const std::string mask = add("mask.exr", {"mask"}, {1});
    const host::Combination over{Composite{}}, blend{Blend{}}, chroma{Chroma{}};
    const host::Combination weights{Blend{1.0f, {{1.0f, 1.0f}}}};
    host::CookSettings plain, points, named;
    points.black = 3;
    named.planes = {"color"};
    const struct
    {
        host::CombineInputs inputs;
        const host::Combination& combination;
        const host::CookSettings& settings;
        const char* wanted;
    } cases[] = {
        {{a}, over, plain, "takes two images"},
        {{a, grey, grey}, over, plain, "takes no matte, '"},
        {{a, grey}, over, points, "--black"},
        {{grey, a}, over, plain, "grey.exr': plane color is luminance"},
        {{a, mask}, over, plain, "no plane of the same name: color and mask"},
        {{a, mask}, over, named, "mask.exr' has no plane 'color'"},
        {{a}, weights, plain, "weights are for two images"},
        {{a, grey, grey}, weights, plain, "leave out the matte, '"},
        {{a, {}, mask, 3}, blend, plain, "mask.exr': the matte has no component a; its channels are mask"},
        {{a, grey}, blend, points, "black and white points"},
        {{a}, chroma, plain, "a.exr': a backing"},
        {{grey, {}, a}, chroma, plain, "grey.exr': plane color has no red"},
    };
    for (const auto& c : cases)
        try {
            host::combine(c.inputs, dir.file("out.exr"), c.combination, c.settings);
            ADD_FAILURE() << "no error with: " << c.wanted;
        } catch (const host::Error& error) {
            EXPECT_NE(std::string(error.what()).find(c.wanted), std::string::npos) << error.what();
        }
    EXPECT_EQ(host::compositeOfName("14"), host::compositeOfName("subtract_reversed"));
    EXPECT_THROW(host::compositeOfName("ove"), host::Error);
    EXPECT_STREQ(host::compositeNames()[3].formula, "s * dA");
}

} // namespace
