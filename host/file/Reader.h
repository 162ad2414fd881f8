#pragma once

#include <host/file/Image.h>

#include <memory>
#include <string>
#include <vector>

namespace host {

/// Reads an image file from top to bottom, in the formats that it is stored in. Nothing is converted: alpha
/// stays associated or not as the file has it.
class Reader
{
public:
    /// Opens a file and reads its header.
    explicit Reader(const std::string& path);
    ~Reader();

    const Image& image() const { return image_; }

    /// Rows `yBegin` up to but not including `yEnd`, of the data window, as interleaved pixels.
    void read(int yBegin, int yEnd, void* pixels);

    /// Up to where to read in one call from row `y` on: whole blocks of the file, but little enough to stop
    /// soon.
    int callEnd(int y) const;

private:
    void readFileTiles(int yBegin);
    [[noreturn]] void fail(const std::string& reason) const;

    struct File;
    Image image_;
    std::unique_ptr<File> file_;
    int rowsPerCall_ = 1;
    std::vector<char> tileRow_; ///< of a tiled file: one row of its tiles
    int tileRowBegin_ = 0, tileRowEnd_ = 0;
};

} // namespace host
