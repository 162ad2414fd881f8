#include <host/graph/MemoryImages.h>

#include <host/file/Format.h>
#include <host/text/Error.h>

#include <algorithm>
#include <cstring>

namespace host {

namespace {

/// Copies elements between places that need not be aligned.
void copyElements(char* to, int64_t toStep, const char* from, int64_t fromStep, int64_t bytes, int count)
{
    if (toStep == bytes && fromStep == bytes) {
        std::memcpy(to, from, static_cast<size_t>(count * bytes));
        return;
    }
    for (int i = 0; i < count; ++i)
        std::memcpy(to + i * toStep, from + i * fromStep, static_cast<size_t>(bytes));
}

char* pixelOf(const MemoryImage& image, const MemoryChannel& channel, int x, int y)
{
    return static_cast<char*>(channel.first) + (y - image.data.y) * channel.rowBytes +
           (x - image.data.x) * channel.pixelBytes;
}

} // namespace

Picture MemoryImage::picture(const std::string& name) const
{
    if (channels.empty() || data.isEmpty())
        refuse("'" + name + "': an image in memory has a channel and a pixel at the least");
    Image image = newImage(data.width, data.height, 1, channels.front().format, "");
    image.path = name;
    image.data = data;
    image.display = display.isEmpty() ? data : display;
    image.channels.clear();
    for (const MemoryChannel& channel : channels)
        image.channels.push_back({channel.name, channel.format});
    image.arrange();
    image.straight = straight;
    setColourSpace(image, "");
    return {name, {image}};
}

void MemorySource::load(const Picture::Place& place, const Window& rect, const Arrays& arrays) const
{
    const Plane& plane = picture_.plane(place);
    const int64_t bytes = PXLbytesPerElement(plane.format);
    for (size_t c = 0; c < 4; ++c) {
        if (arrays[c] == nullptr || plane.channel[c] < 0)
            continue;
        const MemoryChannel& channel = image_.channels[static_cast<size_t>(plane.channel[c])];
        char* to = static_cast<char*>(arrays[c]);
        for (int y = rect.y; y < rect.y + rect.height; ++y, to += rect.width * bytes)
            copyElements(to, bytes, pixelOf(image_, channel, rect.x, y), channel.pixelBytes, bytes,
                         rect.width);
    }
}

MemorySink::MemorySink(const MemoryImage& image, const Picture& picture) : image_(image), picture_(picture)
{
    const Image& wanted = picture.first();
    if (picture.parts.size() > 1 || image.data != wanted.data)
        refuse("'" + picture.path + "': the memory is " + describe(image.data) + ", and the picture " +
               describe(wanted.data));
    image_.channels.clear();
    for (const Channel& channel : wanted.channels) {
        const auto found = std::find_if(image.channels.begin(), image.channels.end(), [&](const auto& given) {
            return given.name == channel.name && given.format == channel.format;
        });
        if (found == image.channels.end())
            refuse("'" + picture.path + "': there is no memory for channel " + channel.name + ", " +
                   formatName(channel.format));
        image_.channels.push_back(*found);
    }
}

void MemorySink::store(size_t, const Picture::Place& place, const Window& rect, const Block& block)
{
    const Plane& plane = picture_.plane(place);
    const int64_t bytes = PXLbytesPerElement(plane.format);
    for (size_t c = 0; c < 4; ++c) {
        if (!block.has(c) || plane.channel[c] < 0)
            continue;
        const MemoryChannel& channel = image_.channels[static_cast<size_t>(plane.channel[c])];
        for (int y = rect.y; y < rect.y + rect.height; ++y)
            copyElements(pixelOf(image_, channel, rect.x, y), channel.pixelBytes, block.pixel(c, rect.x, y),
                         bytes, bytes, rect.width);
    }
}

} // namespace host
