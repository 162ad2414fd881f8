#include "images.h"

#include <host/file/Diff.h>
#include <host/file/Reader.h>
#include <host/text/Error.h>

#include <gtest/gtest.h>

#include <fstream>

namespace {

using Kind = host::Error::Kind;

void copy(const std::string& in, const std::string& out)
{
    runOperation({"grade", in, ""}, out);
}

host::Error errorOfCopy(const std::string& in, const std::string& out)
{
    return errorOf([&] { copy(in, out); });
}

TEST(Files, TiledSeparateAndBottomUpFilesComeOutTheSame)
{
    const TempDirectory dir;
    OIIO::ImageSpec tiled(333, 217, 4, OIIO::TypeDesc::HALF);
    tiled.tile_width = tiled.tile_height = 64;
    tiled.x = -5;
    tiled.y = 11;
    OIIO::ImageSpec separate(333, 217, 3, OIIO::TypeDesc::UINT16);
    separate.attribute("planarconfig", "separate");
    OIIO::ImageSpec upward(333, 217, 3, OIIO::TypeDesc::HALF);
    upward.attribute("openexr:lineOrder", "decreasingY");
    upward.tile_width = upward.tile_height = 32;
    OIIO::ImageSpec wholeStrip(333, 217, 3, OIIO::TypeDesc::UINT8);
    wholeStrip.attribute("tiff:RowsPerStrip", 217);
    const std::pair<const char*, OIIO::ImageSpec> cases[] = {
        {"tiled.exr", tiled}, {"separate.tif", separate}, {"upward.exr", upward}, {"strip.tif", wholeStrip}};
    for (const auto& [name, spec] : cases) {
        TestImage(spec).write(dir.file(name));
        const std::string out = dir.file(std::string("out_") + name);
        copy(dir.file(name), out);
        EXPECT_TRUE(host::diff(dir.file(name), out).same()) << name;
    }
}

TEST(Files, UnassociatedAlphaAndLossyCompressionDoNotChangeValues)
{
    const TempDirectory dir;
    for (const char* name : {"a.png", "a.tif"}) {
        OIIO::ImageSpec spec(40, 30, 4, OIIO::TypeDesc::UINT8);
        spec.attribute("oiio:UnassociatedAlpha", 1);
        TestImage(spec).write(dir.file(name));
        copy(dir.file(name), dir.file(std::string("out_") + name));
        const TestImage out = TestImage::read(dir.file(std::string("out_") + name));
        EXPECT_EQ(out.bytes, TestImage(spec).bytes) << name;
        EXPECT_EQ(out.spec.get_int_attribute("oiio:UnassociatedAlpha"), 1) << name;
    }
    OIIO::ImageSpec spec(64, 64, 3, OIIO::TypeDesc::HALF);
    spec.attribute("compression", "dwaa");
    TestImage(spec).write(dir.file("lossy.exr"));
    copy(dir.file("lossy.exr"), dir.file("out.exr"));
    EXPECT_TRUE(host::diff(dir.file("lossy.exr"), dir.file("out.exr")).same());
    EXPECT_EQ(TestImage::read(dir.file("out.exr")).spec.get_string_attribute("compression"), "zip");
    spec.attribute("compression", "piz");
    spec.attribute("shot:scene", "21a");
    spec.attribute("textureformat", "Plain Texture");
    spec.tile_width = spec.tile_height = 32;
    TestImage(spec).write(dir.file("piz.exr"));
    copy(dir.file("piz.exr"), dir.file("out.exr"));
    const TestImage out = TestImage::read(dir.file("out.exr"));
    EXPECT_EQ(out.spec.get_string_attribute("compression"), "piz");
    EXPECT_EQ(out.spec.get_string_attribute("shot:scene"), "21a");
}

TEST(Files, WhatCannotBeReadIsSaid)
{
    const TempDirectory dir;
    std::ofstream(dir.file("text.exr")) << "no image";
    TestImage(OIIO::ImageSpec(20, 20, 3, OIIO::TypeDesc::DOUBLE)).write(dir.file("double.tif"));
    TestImage(OIIO::ImageSpec(300, 300, 3, OIIO::TypeDesc::HALF)).write(dir.file("whole.exr"));
    std::filesystem::copy_file(dir.file("whole.exr"), dir.file("cut.exr"));
    std::filesystem::resize_file(dir.file("cut.exr"), std::filesystem::file_size(dir.file("whole.exr")) / 2);
    const std::tuple<const char*, Kind, const char*> cases[] = {
        {"none.exr", Kind::NoInput, ""},
        {".", Kind::Read, ""},
        {"text.exr", Kind::Read, ""},
        {"double.tif", Kind::Read, "stored as double"},
        {"cut.exr", Kind::Read, ""}};
    for (const auto& [name, kind, text] : cases) {
        const host::Error error = errorOfCopy(dir.file(name), dir.file("out.exr"));
        EXPECT_EQ(error.kind(), kind) << name;
        EXPECT_TRUE(says(error, text) && says(error, dir.file(name)));
    }
    for (const std::string& name : dir.names())
        EXPECT_TRUE(name.find("out") == std::string::npos && !name.starts_with(".")) << name;
}

TEST(Files, WhatCannotBeWrittenIsSaidAndLeavesNothing)
{
    const TempDirectory dir;
    TestImage(OIIO::ImageSpec(20, 20, 4, OIIO::TypeDesc::HALF)).write(dir.file("in.exr"));
    std::filesystem::create_directory(dir.file("directory.exr"));
    std::filesystem::create_symlink(dir.file("in.exr"), dir.file("link.exr"));
    const auto errorTo = [&](const std::string& out) { return errorOfCopy(dir.file("in.exr"), out); };
    EXPECT_TRUE(says(errorTo(dir.file("out.png")), "png cannot hold half values"));
    for (const char* name : {"out.png", "out.jpg", "out.tif", "out.none", "out", "no/such/out.exr", "out.gif",
                             "out.null", "out.rla", "out.fits"})
        EXPECT_EQ(errorTo(dir.file(name)).kind(), Kind::Output) << name;
    for (const std::string& name : {dir.file("directory.exr"), std::string("/dev/null")})
        EXPECT_EQ(errorTo(name).kind(), Kind::Write) << name;
    for (const char* name : {"in.exr", "link.exr"})
        EXPECT_TRUE(says(errorTo(dir.file(name)), "the output is the input")) << name;
    EXPECT_EQ(dir.names(), (std::vector<std::string>{"directory.exr", "in.exr", "link.exr"}));
}

TEST(Files, AReplacedFileKeepsItsPermissionsAndTheLinkToIt)
{
    const TempDirectory dir;
    TestImage(OIIO::ImageSpec(20, 20, 4, OIIO::TypeDesc::HALF)).write(dir.file("in.exr"));
    std::filesystem::create_directory(dir.file("store"));
    std::filesystem::create_symlink(dir.file("store/real.exr"), dir.file("link.exr"));
    copy(dir.file("in.exr"), dir.file("link.exr"));
    constexpr auto ownersOnly = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
    std::filesystem::permissions(dir.file("store/real.exr"), ownersOnly);
    copy(dir.file("in.exr"), dir.file("link.exr"));
    EXPECT_EQ(std::filesystem::status(dir.file("store/real.exr")).permissions(), ownersOnly);
    EXPECT_TRUE(std::filesystem::is_symlink(dir.file("link.exr")));
    EXPECT_TRUE(host::diff(dir.file("in.exr"), dir.file("store/real.exr")).same());
}

TEST(Diff, FindsTheLargestDifferenceAndSparesNaN)
{
    const TempDirectory dir;
    OIIO::ImageSpec spec(10, 10, 1, OIIO::TypeDesc::FLOAT);
    spec.channelnames = {"Y"};
    TestImage a(spec), b(spec);
    for (int i = 0; i < 100; ++i)
        a.values<float>()[i] = b.values<float>()[i] = static_cast<float>(i);
    a.values<float>()[0] = b.values<float>()[0] = NAN;
    a.values<float>()[1] = NAN;
    b.values<float>()[42] = 50.5f;
    a.values<float>()[7] = 0.0f;
    b.values<float>()[7] = -0.0f;
    a.write(dir.file("a.exr"));
    b.write(dir.file("b.exr"));
    const host::DiffReport report = host::diff(dir.file("a.exr"), dir.file("b.exr"));
    ASSERT_EQ(report.channels.size(), 1u);
    const host::ChannelDiff& channel = report.channels[0];
    EXPECT_EQ(channel.differing, 3);
    EXPECT_EQ(channel.notNumbers, 1);
    EXPECT_EQ(channel.largest, 8.5);
    EXPECT_EQ(channel.x, 2);
    EXPECT_EQ(channel.y, 4);
    EXPECT_EQ(channel.b, 50.5);
    EXPECT_TRUE(host::diff(dir.file("a.exr"), dir.file("a.exr")).same());

    spec.width = 11;
    TestImage(spec).write(dir.file("wide.exr"));
    const host::DiffReport windows = host::diff(dir.file("a.exr"), dir.file("wide.exr"));
    EXPECT_FALSE(windows.same());
    EXPECT_TRUE(windows.channels.empty());
}

} // namespace
