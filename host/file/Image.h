#pragma once

#include <TIL/TIL_Plane.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace host {

struct Header;

/// A rectangle of pixels; y runs down.
struct Window
{
    int x = 0, y = 0, width = 0, height = 0;

    bool isEmpty() const { return width <= 0 || height <= 0; }
    int64_t pixels() const { return static_cast<int64_t>(width) * height; }
    bool operator==(const Window&) const = default;
};

/// What two windows have in common; empty where that is nothing.
Window intersection(const Window& a, const Window& b);

/// The least window around two; an empty one does not count.
Window enclosing(const Window& a, const Window& b);

/// "911x876 at 654,245"
std::string describe(const Window& window);

/// One channel of a file, and where it lies in an interleaved pixel.
struct Channel
{
    std::string name;
    unsigned char format = 0;
    int64_t offset = 0; ///< bytes
};

/// Up to four channels of one storage format that belong together.
struct Plane
{
    std::string name;
    unsigned char format = 0;
    bool colour = false;                        ///< has red, green, blue or luminance
    bool luminance = false;                     ///< component 0 is luminance
    bool alpha = false;                         ///< component 3 is an alpha
    std::array<int, 4> channel{-1, -1, -1, -1}; ///< per component its channel, -1 where the plane lacks it

    /// The components that it has.
    std::array<bool, 4> present() const
    {
        return {channel[0] >= 0, channel[1] >= 0, channel[2] >= 0, channel[3] >= 0};
    }

    std::vector<std::string> channelNames(const std::vector<Channel>& channels) const;
};

/// What is known of an image, or of a part of a file with several, beside its pixels.
struct Image
{
    std::string path;
    std::string fileFormat; ///< "openexr", "tiff", ...
    std::string part;       ///< its name in a file of several
    std::string layer;      ///< of the channels whose names have none
    Window data;            ///< the pixels that the file holds
    Window display;         ///< the picture that they are part of
    std::vector<Channel> channels;
    std::vector<Plane> planes;
    int64_t pixelBytes = 0;
    bool straight = false;                ///< colours are not multiplied by alpha
    std::shared_ptr<const Header> header; ///< the rest of the file's header

    int64_t rowBytes() const { return pixelBytes * data.width; }
    int64_t pixels() const { return static_cast<int64_t>(data.width) * data.height; }
    std::vector<std::string> planeNames() const;
    bool hasAlpha() const;

    /// The layer of a plane: what its channels' names have before their last dot, else that of the image.
    std::string layerOf(const Plane& plane) const;

    /// The plane that has the alpha of another one: itself, or one of its layer; for planes without colour
    /// also the first of all. Null when there is none.
    const Plane* alphaOf(const Plane& plane) const;

    /// The same image with every channel stored in `format`, or those of each plane in one of their own.
    Image withFormat(unsigned char format) const;
    Image withFormats(const std::vector<unsigned char>& formats) const;

    /// Derives offsets, pixel size and planes from the channels.
    void arrange();
};

/// A picture of our own, of red, green, blue and perhaps alpha in one format: linear light in half and float,
/// with the sRGB curve in integers.
Image newImage(int width, int height, int channels, unsigned char format, const std::string& description);

/// Says in an image's header what its values mean, "Linear" or "sRGB"; nothing when `name` is empty. Whatever the header said before, profiles too, is gone.
void setColourSpace(Image& image, const std::string& name);

/// Puts channels into planes, by the layer before the last dot of their names: red, green, blue, luminance
/// and alpha form one plane, depth another; other channels of a layer fill planes in their order.
std::vector<Plane> groupChannels(const std::vector<Channel>& channels);

/// Name and value of everything in the header that a person may want to read.
std::vector<std::pair<std::string, std::string>> metadata(const Image& image);

/// How many threads a file format may use to pack and unpack pixels; for the whole process.
void setFileThreads(int count);

} // namespace host
