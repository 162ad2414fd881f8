#include "images.h"

#include <host/file/FileFormats.h>
#include <host/file/Format.h>
#include <host/file/Reader.h>
#include <host/file/Writer.h>

#include <OpenImageIO/strutil.h>

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <sys/resource.h>

namespace {

using Kind = host::Error::Kind;

std::string fileNameOf(const host::FileFormat& format)
{
    for (const auto& entry : OIIO::Strutil::splits(OIIO::get_string_attribute("extension_list"), ";"))
        if (entry.starts_with(format.name + ":"))
            return "out." + OIIO::Strutil::splits(entry.substr(format.name.size() + 1), ",").front();
    return {};
}

/// An image and its pixels, some of them in runs.
struct Sample
{
    host::Image image;
    host::Band band;

    Sample(int width, int height, int channels, unsigned char format)
        : image(host::newImage(width, height, channels, format, "sample"))
    {
        fill();
    }

    void fill()
    {
        std::mt19937 random;
        std::vector<float> values(static_cast<size_t>(image.pixels()) * image.channels.size());
        for (size_t i = 0; i < values.size(); ++i)
            values[i] = i % 97 > 40 ? values[i - 1] : static_cast<float>(random() % 4096) / 4095.0f;
        band.reset(image, image.data.y, image.data.y + image.data.height);
        host::convertFormat(PXL_FORMAT_float32, values.data(), image.channels.front().format,
                            band.row(image.data.y), static_cast<int64_t>(values.size()));
    }

    /// In two goes, so that rows follow on rows.
    void writeTo(host::Writer& writer) const
    {
        const int begin = band.yBegin(), middle = begin + image.data.height / 3;
        writer.write(band, begin, middle, [] {});
        writer.write(band, middle, band.yEnd(), [] {});
    }

    void write(const std::string& path) const
    {
        host::Writer writer(path, image);
        writeTo(writer);
        writer.commit();
    }

    bool equals(host::Reader& reader, size_t part) const
    {
        const host::Image& other = reader.picture().parts[part];
        const size_t bytes = static_cast<size_t>(image.rowBytes() * image.data.height);
        if (other.data.width != image.data.width || other.data.height != image.data.height ||
            other.rowBytes() != image.rowBytes())
            return false;
        std::vector<char> pixels(bytes);
        reader.read(part, other.data.y, other.data.y + other.data.height, pixels.data());
        return std::memcmp(pixels.data(), band.row(band.yBegin()), bytes) == 0;
    }
};

TEST(Formats, EachGivesBackWhatItIsSaidToHold)
{
    const TempDirectory dir;
    for (const host::FileFormat& format : host::fileFormats()) {
        const std::string path = dir.file(fileNameOf(format));
        ASSERT_EQ(host::fileFormatOf(path), &format) << path;
        for (const unsigned char depth : format.depths)
            for (const int channels :
                 format.channels.empty() ? std::vector{1, 2, 3, 4, 5, 9} : format.channels) {
                const std::string what =
                    format.name + " " + host::formatName(depth) + " " + std::to_string(channels);
                Sample sample(67, 45, channels, depth);
                const host::Window places[] = {{0, 0, 67, 45}, {20, 10, 67, 45}, {-5, -3, 67, 45}};
                const host::Window display{0, 0, 70, 40};
                for (const host::Window& data : places) {
                    sample.image.data = data;
                    sample.image.display = display;
                    sample.fill();
                    sample.write(path);
                    host::Reader reader(path);
                    EXPECT_TRUE(format.approximates || sample.equals(reader, 0)) << what;
                    const host::Image& image = reader.image();
                    EXPECT_EQ(image.channels.size(), static_cast<size_t>(channels)) << what;
                    EXPECT_EQ(image.channels.front().format, depth) << what;
                    const bool placed = host::holdsWindow(path, data, display);
                    EXPECT_EQ(image.data, (placed ? data : places[0])) << what;
                    EXPECT_EQ(image.display, (placed ? display : places[0])) << what;
                    const bool straight = host::straightIn(path).value_or(sample.image.straight);
                    EXPECT_EQ(image.straight, image.hasAlpha() && straight) << what;
                    std::vector<char> row(static_cast<size_t>(image.rowBytes())), again(row);
                    const int y = image.data.y + 7; // an earlier row than the last that was read
                    reader.read(y, y + 1, row.data());
                    reader.read(y + 20, y + 21, again.data());
                    reader.read(y, y + 1, again.data());
                    EXPECT_EQ(row, again) << what;
                    EXPECT_TRUE(format.approximates ||
                                std::memcmp(row.data(), sample.band.row(data.y + 7), row.size()) == 0)
                        << what;
                }
            }
    }
}

TEST(Formats, EachHoldsTheSmallestImagesOrSaysNo)
{
    const TempDirectory dir;
    for (const host::FileFormat& format : host::fileFormats())
        for (const auto& [width, height] : {std::pair{1, 1}, {1, 9}, {17, 1}, {2, 3}}) {
            const std::string path = dir.file(fileNameOf(format));
            const int channels = format.channels.empty() ? 4 : format.channels.back();
            const Sample sample(width, height, channels, format.depths.back());
            if (const host::Error error = errorOf([&] { sample.write(path); }); *error.what() != '\0') {
                EXPECT_TRUE((format.name == "jpeg2000" || format.name == "fits") &&
                            says(error, "does not give back"))
                    << path;
                continue;
            }
            host::Reader reader(path);
            EXPECT_TRUE(format.approximates || sample.equals(reader, 0)) << path << " " << width;
        }
}

/// The names of a PNG file's chunks, and its tags of colour alone.
std::string colourChunks(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    const std::string all((std::istreambuf_iterator<char>(in)), {});
    std::string found;
    for (const char* chunk : {"gAMA", "sRGB", "cHRM", "iCCP"})
        if (all.find(chunk) != std::string::npos)
            found += chunk;
    return found;
}

TEST(Formats, ColourTagsSayWhatIsKnown)
{
    const TempDirectory dir;
    Sample sample(8, 8, 3, PXL_FORMAT_uint8);
    for (const auto& [space, chunks] : {std::pair{"sRGB", "gAMAsRGBcHRM"}, {"Linear", "gAMA"}, {"", ""}}) {
        for (const char* before : {"Linear", "sRGB"}) {
            host::setColourSpace(sample.image, before);
            host::setColourSpace(sample.image, space);
            sample.write(dir.file("out.png"));
            EXPECT_EQ(colourChunks(dir.file("out.png")), chunks) << before << " to " << space;
        }
        sample.write(dir.file("out.tif"));
        const host::Reader reader(dir.file("out.tif"));
        const auto rows = host::metadata(reader.image());
        const bool tagged = std::any_of(rows.begin(), rows.end(),
                                        [](const auto& row) { return row.first == "oiio:ColorSpace"; });
        EXPECT_EQ(tagged, std::string(space) == "sRGB"); // TIFF has no word for light
    }
    OIIO::ImageSpec profiled(8, 8, 3, OIIO::TypeDesc::UINT8);
    const std::vector<unsigned char> profile(256, 1);
    profiled.attribute("ICCProfile", OIIO::TypeDesc(OIIO::TypeDesc::UINT8, 256), profile.data());
    TestImage(profiled).write(dir.file("in.tif"));
    sample.image.header = host::Reader(dir.file("in.tif")).image().header;
    sample.write(dir.file("out.tif"));
    EXPECT_NE(TestImage::read(dir.file("out.tif")).spec.find_attribute("ICCProfile"), nullptr);
    host::setColourSpace(sample.image, "");
    sample.write(dir.file("out.tif"));
    EXPECT_EQ(TestImage::read(dir.file("out.tif")).spec.find_attribute("ICCProfile"), nullptr);
}

/// No file may grow beyond some bytes while one of these exists, as on a full disk.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes) : oldHandler_(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &old_);
        const rlimit limited{bytes, old_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &old_);
        std::signal(SIGXFSZ, oldHandler_);
    }

private:
    rlimit old_{};
    void (*oldHandler_)(int);
};

TEST(Formats, NoneIsLeftCutByAFullDisk)
{
    const TempDirectory dir;
    for (const host::FileFormat& format : host::fileFormats()) {
        const std::string path = dir.file(fileNameOf(format));
        const int channels = format.channels.empty() ? 3 : format.channels.back();
        const Sample sample(256, 200, channels, format.depths.front());
        sample.write(path);
        const auto size = static_cast<rlim_t>(std::filesystem::file_size(path));
        std::filesystem::remove(path);
        for (const rlim_t limit : {rlim_t{0}, rlim_t{100}, size / 2, size - 1}) {
            const host::Error error = errorOf([&] {
                const FullDisk full(limit);
                sample.write(path);
            });
            EXPECT_EQ(error.kind(), Kind::Write) << format.name << " " << limit << " of " << size;
            EXPECT_TRUE(says(error, path)) << format.name << " " << limit << " of " << size;
        }
    }
    EXPECT_EQ(dir.names(), std::vector<std::string>{});
}

TEST(Formats, WhatAFileCannotHoldIsRefusedBeforeItIsOpened)
{
    const TempDirectory dir;
    const std::tuple<const char*, int, unsigned char, const char*> cases[] = {
        {"out.gif", 3, PXL_FORMAT_uint8, "gif files would not keep the pixels"},
        {"out.null", 3, PXL_FORMAT_uint8, "null files would not keep the pixels"},
        {"out.term", 3, PXL_FORMAT_uint8, "term files would not keep the pixels"},
        {"out.none", 3, PXL_FORMAT_uint8, "extension '.none'"},
        {"out.rla", 3, PXL_FORMAT_half, "rla cannot hold half values"},
        {"out.fits", 3, PXL_FORMAT_uint16, "fits cannot hold uint16 values"},
        {"out.jpg", 4, PXL_FORMAT_uint8, "jpeg cannot hold 4 channels but 1 or 3"},
        {"out.dpx", 2, PXL_FORMAT_uint8, "dpx cannot hold 2 channels but 1 or 3 or 4"},
        {"out.ico", 4, PXL_FORMAT_uint8, "ico cannot hold more than 256 pixels"}};
    for (const auto& [name, channels, format, text] : cases) {
        const host::Image image = host::newImage(300, 20, channels, format, "sample");
        const host::Error error = errorOf([&, name = name] { host::Writer(dir.file(name), image); });
        EXPECT_EQ(error.kind(), Kind::Output) << name;
        EXPECT_TRUE(says(error, text)) << name;
    }
    EXPECT_EQ(dir.names(), std::vector<std::string>{});
}

} // namespace
