#include "pictures.h"

#include <host/file/Temporary.h>

#include <sys/stat.h>
#include <sys/wait.h>

namespace {

using Kind = host::Error::Kind;
using OIIO::TypeDesc;

void store(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

TEST(Inputs, WhatCannotBeReadSaysWhy)
{
    const TempDirectory dir;
    std::filesystem::create_symlink("loop.exr", dir.file("loop.exr"));
    ASSERT_EQ(::mkfifo(dir.file("pipe.exr").c_str(), 0600), 0);
    OIIO::ImageSpec luminance(8, 8, 1, TypeDesc::HALF);
    luminance.channelnames = {"Y"};
    TestImage(luminance).write(dir.file("sub.exr"));
    std::string bytes = textOf(dir.file("sub.exr"));
    const size_t sampling = bytes.find(std::string("Y\0", 2), bytes.find("chlist")) + 10;
    bytes[sampling] = bytes[sampling + 4] = 2;
    store(dir.file("sub.exr"), bytes);
    const std::string header("8BPS\0\1\0\0\0\0\0\0\0\4\0\0\0\2\0\0\0\2\0\10\0\4", 26);
    store(dir.file("ink.psd"), header + std::string(30, '\0'));
    const std::tuple<std::string, Kind, const char*> cases[] = {
        {"loop.exr", Kind::NoInput, "symbolic links"},
        {std::string(300, 'a') + ".exr", Kind::NoInput, "too long"},
        {"sub.exr/in.exr", Kind::NoInput, "Not a directory"},
        {"pipe.exr", Kind::Read, "no ordinary file"},
        {"sub.exr", Kind::Read, "Subsampled channels are not supported"},
        {"ink.psd", Kind::Read, "is a CMYK picture"}};
    for (const auto& [name, kind, text] : cases) {
        const host::Error error = errorOf([&, name = name] { host::openReader(dir.file(name)); });
        EXPECT_EQ(error.kind(), kind) << name;
        EXPECT_TRUE(says(error, text) && says(error, dir.file(name)));
    }
}

TEST(Inputs, WhatIsStoredOtherwiseIsNoted)
{
    const TempDirectory dir;
    for (const auto& [name, attribute, value, text] :
         {std::tuple{"a.dpx", "oiio:BitsPerSample", 10,
                     "its values have 10 bits; they are read, and written, as"},
          {"a.tif", "oiio:BitsPerSample", 12, "its values have 12 bits"},
          {"b.tif", "Orientation", 6, "orientation 6"}}) {
        OIIO::ImageSpec spec(20, 10, 3, TypeDesc::UINT16);
        spec.attribute(attribute, value);
        TestImage(spec).write(dir.file(name));
        const Names notes = copyPicture(dir.file(name), dir.file(std::string("out_") + name));
        ASSERT_EQ(notes.size(), 1u) << name;
        EXPECT_NE(notes.front().find(text), std::string::npos) << notes.front();
    }
    EXPECT_EQ(TestImage::read(dir.file("out_b.tif")).spec.get_int_attribute("Orientation"), 6);
}

TEST(Inputs, DamagedFilesGiveTheirPixelsOrAnError)
{
    const TempDirectory dir;
    /// All pixels, or none and an error that names the file.
    const auto whatIsRead = [](const std::string& path) {
        Bytes all;
        const host::Error error = errorOf([&] {
            const auto reader = host::openReader(path);
            if (reader->picture().first().pixels() < 1000000)
                all = pixelsOf(*reader);
        });
        EXPECT_TRUE(*error.what() == '\0' || says(error, path));
        return *error.what() == '\0' ? all : Bytes();
    };
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
        if (leaksCount() && path.ends_with(".png"))
            continue;
        TestImage(OIIO::ImageSpec(96, 70, 3, type)).write(path);
        const std::string whole = textOf(path);
        ASSERT_FALSE(whatIsRead(path).empty()) << name;
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

TEST(Outputs, FilesOfDeadProcessesGo)
{
    const TempDirectory dir;
    const pid_t dead = ::fork();
    if (dead == 0)
        ::_exit(0);
    ::waitpid(dead, nullptr, 0);
    const std::string own = host::makeTemporary(dir.file("out.exr"));
    const std::string start =
        own.substr(0, own.find(std::string("-") + std::to_string(::getpid()) + "-") + 1);
    const std::string left = start + std::to_string(dead) + "-1.exr";
    Names kept = {own, start + "x-1.exr", dir.file(".kreiluge-1-" + std::to_string(dead) + "-1.exr")};
    for (const std::string& path : {left, kept[1], kept[2]})
        store(path, "");
    host::createWriter(dir.file("out.exr"), {"", {host::newImage(8, 8, 3, PXL_FORMAT_half, "")}});
    Names found;
    for (const std::string& name : dir.names())
        found.push_back(dir.file(name));
    std::sort(kept.begin(), kept.end());
    EXPECT_EQ(found, kept);
}

} // namespace
