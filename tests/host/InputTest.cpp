#include "images.h"
#include "pictures.h"

#include <host/file/Temporary.h>

#include <OpenImageIO/deepdata.h>

#include <gtest/gtest.h>

#include <fstream>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

using Kind = host::Error::Kind;
using Names = std::vector<std::string>;

std::string bytesOf(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void store(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

host::Error errorOfReading(const std::string& path)
{
    return errorOf([&] { host::Reader reader(path); });
}

TEST(Inputs, WhatIsNoFileToReadSaysWhy)
{
    const TempDirectory dir;
    std::filesystem::create_symlink("loop.exr", dir.file("loop.exr"));
    store(dir.file("file"), "");
    ASSERT_EQ(::mkfifo(dir.file("pipe.exr").c_str(), 0600), 0);
    const std::tuple<std::string, Kind, const char*> cases[] = {
        {"none.exr", Kind::NoInput, "no such file"},
        {"loop.exr", Kind::NoInput, "symbolic links"},
        {"file/in.exr", Kind::NoInput, "Not a directory"},
        {std::string(300, 'a') + ".exr", Kind::NoInput, "too long"},
        {"pipe.exr", Kind::Read, "no ordinary file"},
        {".", Kind::Read, "a directory"}};
    for (const auto& [name, kind, text] : cases) {
        const host::Error error = errorOfReading(dir.file(name));
        EXPECT_EQ(error.kind(), kind) << name;
        EXPECT_TRUE(says(error, text) && says(error, dir.file(name)));
    }
    store(dir.file("closed.exr"), "");
    ::chmod(dir.file("closed.exr").c_str(), 0);
    const char* reason = ::geteuid() == 0 ? "closed.exr" : "Permission denied"; // root may read all
    EXPECT_TRUE(says(errorOfReading(dir.file("closed.exr")), reason));
}

TEST(Inputs, PixelsOfOtherKindsAreRefusedByName)
{
    const TempDirectory dir;
    OIIO::ImageSpec deep(8, 8, 2, OIIO::TypeDesc::FLOAT);
    deep.channelnames = {"A", "Z"};
    deep.deep = true;
    const auto out = OIIO::ImageOutput::create(dir.file("deep.exr"));
    OIIO::DeepData pixels(deep);
    ASSERT_TRUE(out->open(dir.file("deep.exr"), deep) && out->write_deep_image(pixels) && out->close());
    EXPECT_TRUE(says(errorOfReading(dir.file("deep.exr")), "deep.exr' holds deep pixels"));

    OIIO::ImageSpec luminance(8, 8, 1, OIIO::TypeDesc::HALF);
    luminance.channelnames = {"Y"};
    TestImage(luminance).write(dir.file("sub.exr"));
    std::string bytes = bytesOf(dir.file("sub.exr"));
    const size_t sampling = bytes.find(std::string("Y\0", 2), bytes.find("chlist")) + 10;
    bytes[sampling] = bytes[sampling + 4] = 2;
    store(dir.file("sub.exr"), bytes);
    EXPECT_TRUE(says(errorOfReading(dir.file("sub.exr")), "Subsampled channels are not supported"));

    const std::string header("8BPS\0\1\0\0\0\0\0\0\0\4\0\0\0\2\0\0\0\2\0\10\0\4", 26);
    store(dir.file("ink.psd"), header + std::string(30, '\0'));
    EXPECT_TRUE(says(errorOfReading(dir.file("ink.psd")), "ink.psd' is a CMYK picture"));
}

TEST(Inputs, OfTexturesTheLargestLevelIsReadAndWritten)
{
    const TempDirectory dir;
    for (const auto& [name, type] :
         {std::pair{"m.exr", OIIO::TypeDesc::HALF}, {"m.tif", OIIO::TypeDesc::UINT8}}) {
        OIIO::ImageSpec spec(64, 64, 3, type);
        spec.tile_width = spec.tile_height = 16;
        for (const auto& [key, value] :
             {std::pair{"textureformat", "Plain Texture"}, {"wrapmodes", "black,black"}})
            spec.attribute(key, value);
        const TestImage whole(spec);
        const std::string path = dir.file(name);
        const auto out = OIIO::ImageOutput::create(path);
        ASSERT_TRUE(out->open(path, spec) && out->write_image(type, whole.bytes.data()));
        spec.width = spec.height = spec.full_width = spec.full_height = 32;
        const auto next =
            out->supports("mipmap") ? OIIO::ImageOutput::AppendMIPLevel : OIIO::ImageOutput::AppendSubimage;
        ASSERT_TRUE(out->open(path, spec, next) && out->write_image(type, TestImage(spec).bytes.data()));
        ASSERT_TRUE(out->close());
        copyPicture(path, dir.file(std::string("out") + name));
        EXPECT_EQ(TestImage::read(dir.file(std::string("out") + name)).bytes, whole.bytes) << name;
    }
}

TEST(Inputs, AlphaIsStraightWhereTheFileSaysSo)
{
    const TempDirectory dir;
    using OIIO::TypeDesc;
    for (const auto& [name, type, unassociated, straight] :
         {std::tuple{"a.exr", TypeDesc::HALF, false, false},
          {"a.png", TypeDesc::UINT8, true, true},
          {"a.tif", TypeDesc::UINT8, false, false},
          {"b.tif", TypeDesc::UINT8, true, true},
          {"a.tga", TypeDesc::UINT8, true, true},
          {"a.bmp", TypeDesc::UINT8, true, true}}) {
        OIIO::ImageSpec spec(30, 20, 4, type);
        spec.attribute("oiio:UnassociatedAlpha", unassociated ? 1 : 0);
        const TestImage image(spec);
        image.write(dir.file(name));
        host::Reader reader(dir.file(name));
        EXPECT_EQ(reader.image().straight, straight) << name;
        EXPECT_EQ(pixelsOf(reader, 0), image.bytes) << name;
        EXPECT_EQ(pixelsOf(reader, 0), image.bytes) << name << " read again";
        host::Image turned = reader.image();
        turned.straight = !straight;
        const std::string out = dir.file(std::string("out_") + name);
        host::Band band;
        band.reset(turned, 0, 20);
        std::memcpy(band.row(0), image.bytes.data(), image.bytes.size());
        host::Writer writer(out, turned);
        writer.write(band, 0, 20, [] {});
        writer.commit();
        host::Reader again(out);
        EXPECT_EQ(again.image().straight, host::straightIn(out).value_or(!straight)) << name;
        EXPECT_EQ(pixelsOf(again, 0), image.bytes) << name;
    }
    OIIO::ImageSpec opaque(30, 20, 3, TypeDesc::UINT8);
    TestImage(opaque).write(dir.file("c.png"));
    EXPECT_FALSE(host::Reader(dir.file("c.png")).image().straight);
}

TEST(Inputs, WhatIsStoredOtherwiseIsNoted)
{
    const TempDirectory dir;
    OIIO::ImageSpec ten(20, 10, 3, OIIO::TypeDesc::UINT16), turned(20, 10, 3, OIIO::TypeDesc::UINT8);
    ten.attribute("oiio:BitsPerSample", 10);
    turned.attribute("Orientation", 6);
    const OIIO::ImageSpec light(20, 10, 3, OIIO::TypeDesc::FLOAT);
    const std::tuple<const char*, OIIO::ImageSpec, const char*> cases[] = {
        {"ten.dpx", ten, "its values have 10 bits; they are read, and written, as uint16"},
        {"ten.tif", ten, "its values have 10 bits"},
        {"turned.tif", turned, "orientation 6"},
        {"light.hdr", light, "one exponent"}};
    for (const auto& [name, spec, text] : cases) {
        TestImage(spec).write(dir.file(name));
        const std::string out = dir.file(std::string("out_") + name);
        const Names notes = copyPicture(dir.file(name), out);
        ASSERT_FALSE(notes.empty()) << name;
        EXPECT_TRUE(notes.front().find(text) != std::string::npos) << notes.front();
        const auto orientation = [](const std::string& path) {
            return TestImage::read(path).spec.get_int_attribute("Orientation", 1);
        };
        EXPECT_EQ(orientation(out), orientation(dir.file(name)));
    }
    TestImage(OIIO::ImageSpec(20, 10, 3, OIIO::TypeDesc::HALF)).write(dir.file("plain.exr"));
    EXPECT_TRUE(copyPicture(dir.file("plain.exr"), dir.file("out.exr")).empty());
}

TEST(Outputs, FilesOfDeadProcessesGo)
{
    const TempDirectory dir;
    const pid_t dead = ::fork();
    if (dead == 0)
        ::_exit(0);
    ::waitpid(dead, nullptr, 0);
    const std::string own = host::makeTemporary(dir.file("out.exr"));
    const std::string pid = std::string("-").append(std::to_string(::getpid())).append("-");
    ASSERT_NE(own.find("/.kreiluge-"), std::string::npos);
    const auto named = [&](const std::string& number) {
        return std::string(own).replace(own.find(pid) + 1, pid.size() - 2, number);
    };
    const std::string left = named(std::to_string(dead));
    const std::string foreign = dir.file(".kreiluge-1-" + std::to_string(dead) + "-1.exr");
    Names kept = {own, named("x"), named("99999999999"), foreign, dir.file(".kreiluge-1")};
    for (const std::string& path : kept)
        store(path, "");
    store(left, "");
    host::Writer(dir.file("out.exr"), host::newImage(8, 8, 3, PXL_FORMAT_half, ""));
    Names names = dir.names();
    for (std::string& name : names)
        name = dir.file(name);
    std::sort(kept.begin(), kept.end());
    EXPECT_EQ(names, kept);
}

/// What reading a file gives: all its pixels, or nothing and an error that names it.
std::vector<char> whatIsRead(const std::string& path)
{
    std::vector<char> all;
    const host::Error error = errorOf([&] {
        host::Reader reader(path);
        if (reader.image().pixels() < 1000000)
            all = pixelsOf(reader, 0);
    });
    EXPECT_TRUE(*error.what() == '\0' || says(error, path));
    return *error.what() == '\0' ? all : std::vector<char>();
}

TEST(Inputs, DamagedFilesGiveTheirPixelsOrAnError)
{
    const TempDirectory dir;
    using OIIO::TypeDesc;
    for (const auto& [name, type] : {std::pair{"a.exr", TypeDesc::HALF},
                                     {"a.tif", TypeDesc::UINT16},
                                     {"a.png", TypeDesc::UINT8},
                                     {"a.jpg", TypeDesc::UINT8},
                                     {"a.dpx", TypeDesc::UINT16},
                                     {"a.sgi", TypeDesc::UINT8},
                                     {"a.tga", TypeDesc::UINT8},
                                     {"a.bmp", TypeDesc::UINT8},
                                     {"a.hdr", TypeDesc::FLOAT},
                                     {"a.jp2", TypeDesc::UINT8},
                                     {"a.ppm", TypeDesc::UINT8},
                                     {"a.webp", TypeDesc::UINT8}}) {
        const std::string path = dir.file(name);
        TestImage(OIIO::ImageSpec(96, 70, 3, type)).write(path);
        const std::string whole = bytesOf(path);
        const std::vector<char> pixels = whatIsRead(path);
        ASSERT_FALSE(pixels.empty()) << name;
        for (size_t tenth = 0; tenth < 10; ++tenth) {
            store(path, whole.substr(0, whole.size() * tenth / 10));
            EXPECT_TRUE(whatIsRead(path).empty()) << name << " cut after " << tenth << " tenths";
        }
        std::mt19937 random(1);
        for (size_t i = 0; i < 20; ++i) {
            std::string damaged = whole;
            damaged[random() % (i % 2 == 0 ? 200 : whole.size())] ^= static_cast<char>(1 << random() % 8);
            store(path, damaged);
            whatIsRead(path); // not every format has check sums, but none may end the process
        }
    }
}

} // namespace
