#pragma once

#include <host/chain/Chain.h>
#include <host/file/Bands.h>
#include <host/graph/Workspace.h>

namespace host {

/// One plane in the bands of an image, and the copies between there and planes of elements in any format, one
/// array per component. Components whose array is null are left out.
class PlanePixels
{
public:
    using Arrays = std::array<void*, 4>;
    enum class Outside { Edge, Zero }; ///< what lies beyond the image: its nearest pixel, or nothing

    PlanePixels(const Image& image, const Plane& plane);

    unsigned char format() const { return format_; }
    const Components& present() const { return present_; }

    /// Pixels to arrays of `format` over a rectangle, rows without a gap.
    void load(const Band& in, const Window& rect, unsigned char format, const Arrays& arrays, Outside outside,
              Workspace& workspace) const;

    /// The reverse; the rectangle lies in the image.
    void store(unsigned char format, const Arrays& arrays, Band& out, const Window& rect,
               Workspace& workspace) const;

    /// The data of four tiles, where wanted.
    static Arrays arraysOf(TIL_Tile* tiles, const Components& wanted);
    static Arrays arraysOf(TIL_Region& region);

private:
    Arrays inOwnFormat(unsigned char format, const Arrays& arrays, int64_t count, Workspace& workspace) const;

    Window window_;
    unsigned char format_;
    Components present_{};
    Interleaving layout_;
};

} // namespace host
