#include "images.h"

#include <host/file/Diff.h>
#include <host/file/Metadata.h>
#include <host/file/Reader.h>
#include <host/text/Text.h>

#include <cmath>

// What is told of images.

namespace {

TEST(Diff, ToleratesAndDraws)
{
    const TempDirectory dir;
    OIIO::ImageSpec spec(8, 4, 2, OIIO::TypeDesc::FLOAT);
    spec.channelnames = {"R", "A"};
    spec.x = spec.full_x = 5;
    TestImage a(spec), b(spec);
    for (int i = 0; i < 64; ++i)
        a.values<float>()[i] = b.values<float>()[i] = 1.0f;
    b.values<float>()[2] = 1.25f;
    b.values<float>()[7] = 0.5f; // alpha
    a.values<float>()[10] = NAN;
    b.values<float>()[10] = -NAN;
    b.values<float>()[20] = NAN;
    a.write(dir.file("a.exr"));
    b.write(dir.file("b.exr"));

    const auto compare = [&](double tolerance, const std::string& picture) {
        return host::diff(dir.file("a.exr"), dir.file("b.exr"),
                          {.tolerance = tolerance, .picture = picture.empty() ? "" : dir.file(picture)});
    };
    EXPECT_EQ(compare(0.25, "d.exr").channels[0].differing, 1); // with NaN
    EXPECT_EQ(compare(0.2, "").channels[0].differing, 2);
    EXPECT_EQ(compare(0.5, "d.tif").channels[1].differing, 0);
    EXPECT_EQ(compare(0.5, "").channels[1].largest, 0.5);

    TestImage exr = TestImage::read(dir.file("d.exr"));
    EXPECT_EQ(exr.spec.x, 5);
    ASSERT_EQ(exr.spec.format, OIIO::TypeDesc::FLOAT);
    for (int i = 0; i < 64; ++i)
        EXPECT_EQ(exr.values<float>()[i], i == 2 ? 0.25f : i == 7 ? 0.5f : i == 20 ? INFINITY : 0.0f) << i;
    TestImage tiff = TestImage::read(dir.file("d.tif"));
    ASSERT_EQ(tiff.spec.nchannels, 1);
    ASSERT_EQ(tiff.spec.format, OIIO::TypeDesc::UINT16);
    for (int i = 0; i < 32; ++i)
        EXPECT_EQ(tiff.values<uint16_t>()[i], i == 1 ? 16384 : i == 10 ? 65535 : 0) << i;

    EXPECT_TRUE(says(errorOf([&] { compare(1, "b.exr"); }), "give it another name"));
    EXPECT_TRUE(says(errorOf([&] { compare(NAN, ""); }), "not below 0"));
}

TEST(Metadata, KeepsItsTypesInJson)
{
    const TempDirectory dir;
    OIIO::ImageSpec spec(2, 2, 3, OIIO::TypeDesc::HALF);
    spec.attribute("take", 7);
    spec.attribute("gain", 0.1f);
    spec.attribute("lost", NAN);
    spec.attribute("by", "the \"crew\"");
    const float white[] = {0.3127f, 0.329f};
    spec.attribute("white", OIIO::TypeDesc(OIIO::TypeDesc::FLOAT, OIIO::TypeDesc::VEC2), white);
    TestImage(spec).write(dir.file("a.exr"));
    const auto reader = host::openReader(dir.file("a.exr"));
    const nlohmann::ordered_json json = host::metadataJson(reader->picture().first());
    EXPECT_EQ(json["take"].dump() + json["gain"].dump() + json["lost"].dump() + json["white"].dump(),
              "70.1null[0.3127,0.329]");
    EXPECT_EQ(json["by"], "the \"crew\"");
}

TEST(Text, ControlCharactersAndBrokenUTF8AreShownAsCodes)
{
    const std::string fine = "a\\b \u00e9 \u20ac \U0001F3A8";
    EXPECT_EQ(host::printable(fine), fine);
    EXPECT_EQ(host::printable("\x1b[31m\n\t\r\x7f"), "\\x1b[31m\\n\\t\\x0d\\x7f");
    EXPECT_EQ(host::printable("\xc2\x9b|\xff|\xc0\xaf|\xe0\x80\x80|\xed\xa0\x80|\xf4\x90\x80\x80|\xe2\x82"),
              "\\xc2\\x9b|\\xff|\\xc0\\xaf|\\xe0\\x80\\x80|\\xed\\xa0\\x80|\\xf4\\x90\\x80\\x80|\\xe2\\x82");
}

} // namespace
