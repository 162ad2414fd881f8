#include <RU/composite/RU_ChromaAdjust.h>

#include <RU/composite/ru_ChromaAdjustRows.h>
#include <RU/framework/ru_Convert.h>
#include <RU/framework/ru_Tiles.h>

template <class T, bool FullRange>
class RU_ChromaAdjustOp : public RU_PixelOp<T, FullRange>
{
public:
    using RU_PixelOp<T, FullRange>::RU_PixelOp;

    int pixelAdjust(TIL_TileList* out, const TIL_TileList*, float, int thread, void*) override
    {
        const auto& chroma = static_cast<const RU_ChromaAdjust&>(*this->algorithm_);
        if (chroma.matte == nullptr)
            return 0;
        const ru_ChromaAdjustRow<T, FullRange>& rows = ru_chromaAdjustRows();
        const ru_Range<T> range = ru_rangeOf<T, FullRange>(out->blackPoint, out->whitePoint);
        const float backing[] = {chroma.backingRed, chroma.backingGreen, chroma.backingBlue};
        T* const colour[] = {ru_outputData<T>(*out, 0), ru_outputData<T>(*out, 1), ru_outputData<T>(*out, 2)};
        const auto all = ru_TileRows::allOf(*out);
        all.each(thread, [&](int64_t y) {
            for (int c = 0; c < 3; ++c)
                if (colour[c] != nullptr)
                    rows.adjust(colour[c] + all.offset(y), chroma.matte + all.offset(y), all.width,
                                backing[c], range);
        });
        return 1;
    }
};

template class RU_PixelFactories<RU_ChromaAdjustOp>;

RU_ChromaAdjust::~RU_ChromaAdjust() = default;
