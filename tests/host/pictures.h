#pragma once

#include <host/file/Reader.h>
#include <host/file/Writer.h>

#include <cstring>
#include <string>
#include <vector>

/// All pixels of a part, read row by row.
inline std::vector<char> pixelsOf(host::Reader& reader, size_t part)
{
    const host::Image& image = reader.picture().parts[part];
    std::vector<char> pixels(static_cast<size_t>(image.rowBytes() * image.data.height));
    for (int y = image.data.y; y < image.data.y + image.data.height; ++y)
        reader.read(part, y, y + 1, pixels.data() + (y - image.data.y) * image.rowBytes());
    return pixels;
}

/// Writes what is read; returns what reading and writing note.
inline std::vector<std::string> copyPicture(const std::string& in, const std::string& out)
{
    host::Reader reader(in);
    host::Writer writer(out, reader.picture());
    for (size_t part = 0; part < reader.picture().parts.size(); ++part) {
        if (part > 0)
            writer.nextPart();
        const host::Image& image = reader.picture().parts[part];
        host::Band band;
        band.reset(image, image.data.y, image.data.y + image.data.height);
        const std::vector<char> pixels = pixelsOf(reader, part);
        std::memcpy(band.row(image.data.y), pixels.data(), pixels.size());
        writer.write(band, band.yBegin(), band.yEnd(), [] {});
    }
    writer.commit();
    std::vector<std::string> notes = reader.notes();
    notes.insert(notes.end(), writer.notes().begin(), writer.notes().end());
    return notes;
}
