#pragma once

#include <host/file/Picture.h>

#include <memory>
#include <string>
#include <vector>

namespace host {

/// Reads an image file in the formats that it is stored in. Nothing is converted: alpha stays associated or
/// not as the file has it. Rows may be read again, but reading down is what is fast.
class Reader
{
public:
    virtual ~Reader() = default;

    const Picture& picture() const { return picture_; }

    /// Rows `yBegin` up to but not including `yEnd`, of a part's data window, as interleaved pixels.
    virtual void read(size_t part, int yBegin, int yEnd, void* pixels) = 0;

    /// Up to where to read in one call from row `y` on: whole blocks of the file, but little enough to stop
    /// soon.
    virtual int callEnd(size_t part, int y) const = 0;

    /// What the pixels are not that their file could make one expect, one line each.
    const std::vector<std::string>& notes() const { return notes_; }

protected:
    Picture picture_;
    std::vector<std::string> notes_;
};

/// Opens a file and reads its headers. Of a file with several images that are not parts of one picture, a
/// path such as "file.tif[2]" chooses one.
std::unique_ptr<Reader> openReader(const std::string& path);

} // namespace host
