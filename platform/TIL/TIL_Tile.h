#pragma once

#include <PXL/PXL_Format.h>
#include <TIL/TIL_Buffer.h>

#include <cstdint>
#include <utility>

/// One component of a tile list: width x height elements, x fastest, rows without a gap. The buffer is whole
/// even while the tile is constant.
class TIL_Tile
{
public:
    static constexpr uint32_t constantFlag = 8; ///< all pixels hold the same value
    static constexpr uint32_t doneFlag = 16;    ///< the host has this tile already; nothing may write it

    TIL_Tile() = default;
    TIL_Tile(unsigned char format, int width, int height)
        : data_(static_cast<int64_t>(width) * height * PXLbytesPerElement(format))
    {
    }

    /// Over memory that holds its pixels already.
    explicit TIL_Tile(TIL_Buffer&& data) : data_(std::move(data)) {}
    TIL_Buffer takeData() { return std::move(data_); }

    bool isConstant() const { return (flags_ & constantFlag) != 0; }
    void setConstantTile(bool on) { setFlag(constantFlag, on); }

    bool isDone() const { return (flags_ & doneFlag) != 0; }
    void setDone(bool on) { setFlag(doneFlag, on); }

    /// Points `data` at the first pixel. T must be the element type of the plane's format.
    template <class T>
    void getImageData(T*& data)
    {
        data = static_cast<T*>(data_.data());
    }
    template <class T>
    void getImageData(const T*& data) const
    {
        data = static_cast<const T*>(data_.data());
    }

private:
    void setFlag(uint32_t flag, bool on) { flags_ = on ? flags_ | flag : flags_ & ~flag; }

    uint32_t flags_ = 0;
    TIL_Buffer data_;
};
