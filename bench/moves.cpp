// What the rows are held against: loops that read and write the same arrays and compute next to nothing.
#include <bench/moves.h>

#include <bench/bench.h>

#include <cstring>

namespace bench {

namespace {

/// Over the components one after another, as the library goes. `third(c)` lies beside component c, with
/// `elementBytes` for each of its values; null where there is none.
Work moves(Planes& planes, auto third, int elementBytes)
{
    return [&planes, &second = planes.second(), third, elementBytes, with = moveKernels().with] {
        const int ownBytes = PXLbytesPerElement(planes.plane.formatCode);
        for (int c = 0; c < planes.components(); ++c) {
            Word* to = nullptr;
            planes.out.tiles[c]->getImageData(to);
            const auto* beside = static_cast<const Word*>(third(c));
            with[beside == nullptr ? 0 : elementBytes / ownBytes](
                to, static_cast<const Word*>(second.region.getImageData(c)), beside,
                int64_t{planes.out.itemCount} * ownBytes / 8);
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
