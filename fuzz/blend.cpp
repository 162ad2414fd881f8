// Blends and chroma adjust over random pictures.
#include "Bytes.h"

#include <RU/composite/RU_Blend.h>
#include <RU/composite/RU_ChromaAdjust.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Bytes bytes(data, size);
    RU_Blend blend;
    RU_ChromaAdjust chroma;
    for (float* parameter : {&blend.blendFactor, &blend.firstWeight, &blend.secondWeight, &chroma.backingRed,
                             &chroma.backingGreen, &chroma.backingBlue})
        *parameter = bytes.number();
    blend.useBlendFactor = bytes.flag();
    blend.swapMaskedInputs = bytes.flag();
    const int kind = bytes.below(4);
    checkRows(bytes, [&](reference::Scene& scene, int) {
        TIL_TileList* out = &scene.out.list;
        chroma.matte = static_cast<const float*>(scene.mask.getImageData(0));
        if (kind == 0)
            blend.binary(out, scene.aroundGiven(), scene.maskGiven(), 0.0f, nullptr, -1, nullptr);
        else if (kind == 1)
            blend.filter(out, scene.aroundGiven(), 0.0f, nullptr, -1, nullptr);
        else if (kind == 2)
            blend.pixelAdjust(out, scene.inList(), 0.0f, nullptr, -1, nullptr);
        else
            chroma.pixelAdjust(out, scene.inList(), 0.0f, nullptr, -1, nullptr);
    });
    return 0;
}
