// What the rows are held against: loops that read and write the same arrays and compute next to nothing.
#include <bench/moves.h>

#include <bench/bench.h>

#include <algorithm>
#include <cstring>

namespace bench {

namespace {

/// Piece by piece, and in each over the components one after another. `third(c)` lies beside component c, with
/// `elementBytes` for each of its values; null where there is none.
Work moves(Planes& planes, auto third, int elementBytes)
{
    return [&planes, &second = planes.second(), third, elementBytes, with = moveKernels().with] {
        const int ownBytes = PXLbytesPerElement(planes.plane.formatCode);
        for (int at = 0; at < planes.out.itemCount; at += pieceLength)
            for (int c = 0; c < planes.components(); ++c) {
                char* to = nullptr;
                planes.out.tiles[c]->getImageData(to);
                const char* from = static_cast<const char*>(second.region.getImageData(c));
                const char* beside = static_cast<const char*>(third(c));
                const int besideBytes = beside == nullptr ? 0 : elementBytes;
                with[besideBytes / ownBytes](
                    reinterpret_cast<Word*>(to + int64_t{at} * ownBytes),
                    reinterpret_cast<const Word*>(from + int64_t{at} * ownBytes),
                    reinterpret_cast<const Word*>(beside + int64_t{at} * besideBytes),
                    int64_t{std::min(pieceLength, planes.out.itemCount - at)} * ownBytes / 8);
            }
    };
}

} // namespace

Work copy(Planes& planes)
{
    return [&planes] { std::memcpy(planes.output, planes.input, planes.bytes()); };
}

Work movePair(Planes& planes)
{
    return moves(
        planes, [](int) -> const void* { return nullptr; }, 0);
}

Work moveWithAlpha(Planes& planes)
{
    const void* alpha = planes.second().region.getImageData(3);
    return moves(
        planes, [alpha](int c) { return c == 3 ? nullptr : alpha; },
        PXLbytesPerElement(planes.plane.formatCode));
}

Work moveWithMask(Planes& planes)
{
    return moves(
        planes, [mask = planes.second().mask.getImageData(0)](int) { return mask; }, sizeof(float));
}

} // namespace bench
