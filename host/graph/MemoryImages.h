#pragma once

#include <host/graph/Source.h>

#include <string>
#include <vector>

namespace host {

/// Pixels in memory of somebody else's, planar or interleaved: they are read and written where they are.
struct MemoryChannel
{
    std::string name;
    unsigned char format = 0;
    void* first = nullptr;  ///< at the top left of the data window
    int64_t pixelBytes = 0; ///< from a pixel to the next one to the right
    int64_t rowBytes = 0;   ///< from a row to the next one below; may be negative
};

struct MemoryImage
{
    Window data, display;
    bool straight = false; ///< colours are not multiplied by alpha
    std::vector<MemoryChannel> channels;

    /// What there is beside the pixels; `name` stands for a path in messages.
    Picture picture(const std::string& name) const;
};

/// An image in memory that a graph reads; it must stay as long as the graph runs.
class MemorySource : public Source
{
public:
    MemorySource(const MemoryImage& image, const std::string& name)
        : image_(image), picture_(image.picture(name))
    {
    }

    const Picture& picture() const override { return picture_; }
    void load(const Picture::Place& place, const Window& rect, const Arrays& arrays) const override;

private:
    MemoryImage image_;
    Picture picture_;
};

/// Memory that a graph writes a picture to, channel by channel of the same names and formats; what is there
/// when a run fails is undefined. It must not be memory that the same graph reads.
class MemorySink : public Sink
{
public:
    /// Throws a usage error unless channels, formats and window are those of the picture.
    MemorySink(const MemoryImage& image, const Picture& picture);

    const Picture& picture() const override { return picture_; }
    void prepare(size_t, size_t, int, int) override {}
    void store(size_t slot, const Picture::Place& place, const Window& rect, const Block& block) override;
    void write(size_t, const std::function<void()>&) override {}

private:
    MemoryImage image_; ///< channels in the order of the picture's
    Picture picture_;
};

} // namespace host
