// Blends and chroma adjust over random pictures.
#include "Bytes.h"

#include <RU/composite/RU_Blend.h>
#include <RU/composite/RU_ChromaAdjust.h>

namespace {

/// Rows of a picture, with the components that its list has.
TIL_Region regionOf(reference::Picture& of, const TIL_TileList& rect, int from)
{
    TIL_Region region(of.plane, rect.x1, rect.y1, rect.x2, rect.y2);
    for (int c = 0; c < 4; ++c) {
        const reference::Bytes rows = of.rows(c, from, from + rect.height());
        std::memcpy(region.getImageData(c), rows.data(), rows.size());
        if (of.list.tiles[c] == nullptr)
            region.removeImageData(c);
    }
    return region;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using reference::Picture;
    Bytes bytes(data, size);
    const int width = 1 + bytes.below(40), height = 1 + bytes.below(3);
    const reference::Format format = bytes.format();
    Picture out(format, width, height), in(format, width, height), mask({3, true}, width, height);
    for (Picture* picture : {&out, &in, &mask})
        bytes.fill(*picture);
    Row<float> matte(bytes, width * height);
    RU_Blend blend;
    RU_ChromaAdjust chroma;
    for (float* parameter : {&blend.blendFactor, &blend.firstWeight, &blend.secondWeight, &chroma.backingRed,
                             &chroma.backingGreen, &chroma.backingBlue})
        *parameter = bytes.number();
    blend.useBlendFactor = bytes.flag();
    blend.swapMaskedInputs = bytes.flag();
    const int kind = bytes.below(4);
    const bool hasSecond = bytes.flag(), hasMask = bytes.flag();
    checkRows(out, [&](Picture& part, int y) {
        const TIL_Region inRegion = regionOf(in, part.list, y), maskRegion = regionOf(mask, part.list, y);
        const TIL_Region* second = hasSecond ? &inRegion : nullptr;
        chroma.matte = hasMask ? matte.data() + y * width : nullptr;
        if (kind == 0)
            blend.binary(&part.list, second, hasMask ? &maskRegion : nullptr, 0.0f, nullptr, -1, nullptr);
        else if (kind == 1)
            blend.filter(&part.list, second, 0.0f, nullptr, -1, nullptr);
        else if (kind == 2)
            blend.pixelAdjust(&part.list, &part.list, 0.0f, nullptr, -1, nullptr);
        else
            chroma.pixelAdjust(&part.list, &part.list, 0.0f, nullptr, -1, nullptr);
    });
    return 0;
}
