#include "pictures.h"

#include <host/file/FileFormats.h>
#include <host/file/Format.h>

#include <OpenImageIO/strutil.h>

namespace {

std::string fileNameOf(const host::FileFormat& format)
{
    for (const auto& entry : OIIO::Strutil::splits(OIIO::get_string_attribute("extension_list"), ";"))
        if (entry.starts_with(format.name + ":"))
            return std::string("out.") +
                   OIIO::Strutil::splits(entry.substr(format.name.size() + 1), ",").front();
    return {};
}

/// Pixels with noise and runs.
Bytes pixelsFor(const host::Image& image)
{
    std::mt19937 random;
    Bytes bytes(static_cast<size_t>(image.rowBytes() * image.data.height));
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = i % 97 > 40 ? bytes[i - 1] : static_cast<char>(random());
    return bytes;
}

void write(const std::string& path, const host::Image& image)
{
    writePicture(path, {path, {image}}, {pixelsFor(image)});
}

void expectBack(const host::FileFormat& format, const std::string& path, const host::Image& image)
{
    write(path, image);
    const auto reader = host::openReader(path);
    const host::Image& back = reader->picture().first();
    const std::string what = path + " of " + host::formatName(image.channels.front().format) + ", " +
                             std::to_string(image.channels.size()) + " channels, " + describe(image.data);
    const Bytes pixels = pixelsOf(*reader);
    EXPECT_TRUE(format.approximates || pixels == pixelsFor(image)) << what;
    EXPECT_EQ(pixelsOf(*reader), pixels) << what << ", read again";
    EXPECT_EQ(back.channels.size(), image.channels.size()) << what;
    EXPECT_EQ(back.channels.front().format, image.channels.front().format) << what;
    const bool placed = host::holdsWindow(path, image.data, image.display);
    const host::Window whole{0, 0, image.data.width, image.data.height};
    EXPECT_EQ(back.data, (placed ? image.data : whole)) << what;
    EXPECT_EQ(back.display, (placed ? image.display : whole)) << what;
    EXPECT_EQ(back.straight, back.hasAlpha() && host::straightIn(path).value_or(image.straight)) << what;
}

TEST(Formats, EachGivesBackWhatItIsSaidToHold)
{
    const TempDirectory dir;
    for (const host::FileFormat& format : host::fileFormats()) {
        const std::string path = dir.file(fileNameOf(format));
        ASSERT_EQ(host::fileFormatOf(path), &format) << path;
        if (leaksCount() && format.name == "heif")
            continue;
        for (const unsigned char depth : format.depths)
            for (const int channels :
                 format.channels.empty() ? std::vector{1, 2, 3, 4, 5, 9} : format.channels)
                for (const host::Window& data : {host::Window{0, 0, 67, 45},
                                                 {20, 10, 67, 45},
                                                 {-5, -3, 67, 45},
                                                 {0, 0, 17, 1},
                                                 {0, 0, 1, 1}}) {
                    host::Image image = host::newImage(data.width, data.height, channels, depth, "sample");
                    image.data = data;
                    image.display = {0, 0, 70, 40};
                    image.straight = data.x == 0;
                    const bool mayFail =
                        data.height == 1 && (format.name == "fits" || format.name == "jpeg2000");
                    if (!mayFail || *errorOf([&] { write(path, image); }).what() == '\0')
                        expectBack(format, path, image);
                }
    }
}

TEST(Formats, ColourTagsSayWhatIsKnown)
{
    const TempDirectory dir;
    host::Image image = host::newImage(8, 8, 3, PXL_FORMAT_uint8, "sample");
    for (const auto& [space, expected] :
         {std::pair{"sRGB", "gAMA sRGB cHRM "}, {"Linear", "gAMA "}, {"", ""}})
        for (const char* before : {"Linear", "sRGB"}) {
            host::setColourSpace(image, before);
            host::setColourSpace(image, space);
            write(dir.file("out.png"), image);
            std::string found;
            for (const char* chunk : {"gAMA", "sRGB", "cHRM", "iCCP"})
                if (textOf(dir.file("out.png")).find(std::string(chunk)) != std::string::npos)
                    found += std::string(chunk) + " ";
            EXPECT_EQ(found, expected) << before << " to " << space;
        }
}

} // namespace
