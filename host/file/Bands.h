#pragma once

#include <host/file/Image.h>
#include <host/graph/Interleaving.h>

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

/// The bands and tiles that an image is cut into.
struct Tiling
{
    Tiling(const Window& whole, int64_t rowBytes, int tileSide)
        : window(whole), side(tileSide), columns((whole.width + tileSide - 1) / tileSide)
    {
        // Narrow images take several rows of tiles, so that all threads find work in a band.
        constexpr int64_t bandBytes = 4 << 20;
        const int64_t tileRowBytes = std::max<int64_t>(1, rowBytes * tileSide);
        bandRows = static_cast<int>(tileSide * std::clamp<int64_t>(bandBytes / tileRowBytes, 1, 64));
        bands = (static_cast<int64_t>(window.height) + bandRows - 1) / bandRows;
    }

    int bandBegin(int64_t band) const { return window.y + static_cast<int>(band * bandRows); }
    int bandEnd(int64_t band) const
    {
        return window.y + static_cast<int>(std::min<int64_t>((band + 1) * bandRows, window.height));
    }
    int pieces(int64_t band) const { return columns * ((bandEnd(band) - bandBegin(band) + side - 1) / side); }

    /// The rectangle of a tile of a band.
    Window tile(int64_t band, int piece) const
    {
        const int x = window.x + piece % columns * side;
        const int y = bandBegin(band) + piece / columns * side;
        return {x, y, std::min(side, window.x + window.width - x), std::min(side, bandEnd(band) - y)};
    }

    Window window;
    int side;
    int columns;
    int bandRows = 0;
    int64_t bands = 0;
};

} // namespace host
