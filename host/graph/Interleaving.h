#pragma once

#include <host/file/Image.h>

#include <cstdint>

namespace host {

/// How the components of a plane lie in interleaved pixels, and the copies between there and planes of
/// elements. Bits are moved, not values: NaN and the like keep theirs.
class Interleaving
{
public:
    Interleaving(const Image& image, const Plane& plane);

    /// `count` pixels to the planes, one per component; null planes and components that are not there are
    /// skipped.
    void split(const void* pixels, void* const planes[4], int64_t count) const;

    /// The reverse; the rest of each pixel is left as it is.
    void join(const void* const planes[4], void* pixels, int64_t count) const;

private:
    bool isPacked(const void* const planes[4]) const;

    int64_t elementBytes_;
    int64_t pixelBytes_;
    int64_t offset_[4]; ///< -1: not there
    int packed_ = 0;    ///< the number of components, where the pixel is nothing but those, in order
};

} // namespace host
