#include <host/graph/Interleaving.h>

#include <cstring>

namespace host {

namespace {

// Elements by size, as raw bits of whatever type the memory holds.
using Bits8 [[gnu::may_alias]] = uint8_t;
using Bits16 [[gnu::may_alias]] = uint16_t;
using Bits32 [[gnu::may_alias]] = uint32_t;

template <class Work>
void withBits(int64_t elementBytes, Work work)
{
    switch (elementBytes) {
    case 1:
        work(Bits8());
        break;
    case 2:
        work(Bits16());
        break;
    default:
        work(Bits32());
        break;
    }
}

template <class Bits, int N>
void splitPacked(const void* pixels, void* const planes[4], int64_t count)
{
    const Bits* __restrict in = static_cast<const Bits*>(pixels);
    Bits* __restrict a = static_cast<Bits*>(planes[0]);
    Bits* __restrict b = static_cast<Bits*>(planes[N > 1 ? 1 : 0]);
    Bits* __restrict c = static_cast<Bits*>(planes[N > 2 ? 2 : 0]);
    Bits* __restrict d = static_cast<Bits*>(planes[N > 3 ? 3 : 0]);
    for (int64_t i = 0; i < count; ++i) {
        a[i] = in[i * N];
        if constexpr (N > 1)
            b[i] = in[i * N + 1];
        if constexpr (N > 2)
            c[i] = in[i * N + 2];
        if constexpr (N > 3)
            d[i] = in[i * N + 3];
    }
}

template <class Bits, int N>
void joinPacked(const void* const planes[4], void* pixels, int64_t count)
{
    Bits* __restrict out = static_cast<Bits*>(pixels);
    const Bits* __restrict a = static_cast<const Bits*>(planes[0]);
    const Bits* __restrict b = static_cast<const Bits*>(planes[N > 1 ? 1 : 0]);
    const Bits* __restrict c = static_cast<const Bits*>(planes[N > 2 ? 2 : 0]);
    const Bits* __restrict d = static_cast<const Bits*>(planes[N > 3 ? 3 : 0]);
    for (int64_t i = 0; i < count; ++i) {
        out[i * N] = a[i];
        if constexpr (N > 1)
            out[i * N + 1] = b[i];
        if constexpr (N > 2)
            out[i * N + 2] = c[i];
        if constexpr (N > 3)
            out[i * N + 3] = d[i];
    }
}

/// One component of pixels of any layout, where elements need not be aligned.
template <class Bits>
void splitStrided(const char* in, int64_t stride, void* plane, int64_t count)
{
    Bits* out = static_cast<Bits*>(plane);
    for (int64_t i = 0; i < count; ++i)
        std::memcpy(out + i, in + i * stride, sizeof(Bits));
}

template <class Bits>
void joinStrided(const void* plane, int64_t stride, char* out, int64_t count)
{
    const Bits* in = static_cast<const Bits*>(plane);
    for (int64_t i = 0; i < count; ++i)
        std::memcpy(out + i * stride, in + i, sizeof(Bits));
}

} // namespace

Interleaving::Interleaving(const Image& image, const Plane& plane)
    : elementBytes_(PXLbytesPerElement(plane.format)), pixelBytes_(image.pixelBytes)
{
    bool inOrder = true;
    for (int c = 0; c < 4; ++c) {
        const int channel = plane.channel[static_cast<size_t>(c)];
        offset_[c] = channel < 0 ? -1 : image.channels[static_cast<size_t>(channel)].offset;
        inOrder = inOrder && (channel < 0 || offset_[c] == c * elementBytes_);
        packed_ += channel < 0 ? 0 : 1;
    }
    if (!inOrder || packed_ * elementBytes_ != pixelBytes_)
        packed_ = 0;
}

/// True when the copy can take whole pixels at a time.
bool Interleaving::isPacked(const void* const planes[4]) const
{
    for (int c = 0; c < packed_; ++c)
        if (planes[c] == nullptr)
            return false;
    return packed_ > 0;
}

void Interleaving::split(const void* pixels, void* const planes[4], int64_t count) const
{
    withBits(elementBytes_, [&](auto element) {
        using Bits = decltype(element);
        switch (isPacked(planes) ? packed_ : 0) {
        case 1:
            return splitPacked<Bits, 1>(pixels, planes, count);
        case 2:
            return splitPacked<Bits, 2>(pixels, planes, count);
        case 3:
            return splitPacked<Bits, 3>(pixels, planes, count);
        case 4:
            return splitPacked<Bits, 4>(pixels, planes, count);
        default:
            break;
        }
        for (int c = 0; c < 4; ++c)
            if (planes[c] != nullptr && offset_[c] >= 0)
                splitStrided<Bits>(static_cast<const char*>(pixels) + offset_[c], pixelBytes_, planes[c],
                                   count);
    });
}

void Interleaving::join(const void* const planes[4], void* pixels, int64_t count) const
{
    withBits(elementBytes_, [&](auto element) {
        using Bits = decltype(element);
        switch (isPacked(planes) ? packed_ : 0) {
        case 1:
            return joinPacked<Bits, 1>(planes, pixels, count);
        case 2:
            return joinPacked<Bits, 2>(planes, pixels, count);
        case 3:
            return joinPacked<Bits, 3>(planes, pixels, count);
        case 4:
            return joinPacked<Bits, 4>(planes, pixels, count);
        default:
            break;
        }
        for (int c = 0; c < 4; ++c)
            if (planes[c] != nullptr && offset_[c] >= 0)
                joinStrided<Bits>(planes[c], pixelBytes_, static_cast<char*>(pixels) + offset_[c], count);
    });
}

} // namespace host
