#pragma once

#include "images.h"

#include <host/file/Reader.h>
#include <host/file/Writer.h>

#include <cstdlib>
#include <fstream>

/// Some file libraries leak, which the address sanitizer would say of the test.
inline bool leaksCount()
{
    return std::getenv("KREILUGE_SANITIZED") != nullptr;
}

using Bytes = std::vector<char>;
using Names = std::vector<std::string>;

/// All pixels of a part, read row by row.
inline Bytes pixelsOf(host::Reader& reader, size_t part = 0)
{
    const host::Image& image = reader.picture().parts[part];
    Bytes pixels(static_cast<size_t>(image.rowBytes() * image.data.height));
    for (int y = image.data.y; y < image.data.y + image.data.height; ++y)
        reader.read(part, y, y + 1, pixels.data() + (y - image.data.y) * image.rowBytes());
    return pixels;
}

/// Writes parts, in two goes each; returns what is noted.
inline Names writePicture(const std::string& path, const host::Picture& picture,
                          const std::vector<Bytes>& pixels)
{
    const auto writer = host::createWriter(path, picture);
    for (size_t part = 0; part < pixels.size(); ++part) {
        if (part > 0)
            writer->nextPart();
        const host::Image& image = picture.parts[part];
        host::Band band;
        band.reset(image, image.data.y, image.data.y + image.data.height);
        std::memcpy(band.row(image.data.y), pixels[part].data(), pixels[part].size());
        const int middle = image.data.y + image.data.height / 3;
        writer->write(band, image.data.y, middle, [] {});
        writer->write(band, middle, band.yEnd(), [] {});
    }
    writer->commit();
    return writer->notes();
}

inline Names copyPicture(const std::string& in, const std::string& out)
{
    const auto reader = host::openReader(in);
    std::vector<Bytes> pixels;
    for (size_t part = 0; part < reader->picture().parts.size(); ++part)
        pixels.push_back(pixelsOf(*reader, part));
    Names notes = writePicture(out, reader->picture(), pixels);
    notes.insert(notes.begin(), reader->notes().begin(), reader->notes().end());
    return notes;
}

inline std::string textOf(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}
