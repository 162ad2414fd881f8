#pragma once

#include <host/file/Image.h>

#include <algorithm>
#include <vector>

namespace host {

/// Some rows of an image as interleaved pixels.
class Band
{
public:
    /// Makes room for rows `yBegin` up to but not including `yEnd`.
    void reset(const Image& image, int yBegin, int yEnd)
    {
        yBegin_ = yBegin;
        yEnd_ = yEnd;
        rowBytes_ = image.rowBytes();
        pixelBytes_ = image.pixelBytes;
        x_ = image.data.x;
        constexpr int64_t slack = 256; // the writer of HEIF reads beyond a row, up to 64 pixels
        const auto size = static_cast<size_t>(rowBytes_ * (yEnd - yBegin) + slack);
        if (bytes_.size() < size)
            bytes_.resize(size);
    }

    int yBegin() const { return yBegin_; }
    int yEnd() const { return yEnd_; }
    int64_t rowBytes() const { return rowBytes_; }

    char* pixel(int x, int y) { return bytes_.data() + offset(x, y); }
    const char* pixel(int x, int y) const { return bytes_.data() + offset(x, y); }
    char* row(int y) { return pixel(x_, y); }
    const char* row(int y) const { return pixel(x_, y); }

private:
    int64_t offset(int x, int y) const { return (y - yBegin_) * rowBytes_ + (x - x_) * pixelBytes_; }

    std::vector<char> bytes_;
    int yBegin_ = 0, yEnd_ = 0, x_ = 0;
    int64_t rowBytes_ = 0, pixelBytes_ = 0;
};

} // namespace host
