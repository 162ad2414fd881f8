#include <RU/composite/RU_Blend.h>

#include <PXL/PXL_Caps.h>
#include <RU/composite/ru_BlendRows.h>
#include <RU/framework/ru_Convert.h>
#include <RU/framework/ru_Tiles.h>
#include <TIL/TIL_Region.h>

#include <algorithm>

namespace {

/// One call: its components, and the rows that go through them.
template <class T, bool FullRange>
class BlendPass
{
public:
    BlendPass(const RU_Blend& blend, const TIL_TileList& out)
        : BlendPass(blend, out.blackPoint, out.whitePoint, ru_TileRows::allOf(out))
    {
    }
    BlendPass(const RU_Blend& blend, const TIL_Region& out)
        : BlendPass(blend, out.plane->blackPoint, out.plane->whitePoint, ru_TileRows::allOf(out))
    {
    }

    /// Takes the weights of binary instead of those of pixelAdjust and filter: as under a mask of 1.
    void weighAsBinary()
    {
        constexpr float full = 1.0f;
        const ru_BlendMask<Work>& masks = ru_blendRows();
        masks.of(false)(&full, &weights_.second, &weights_.first, 1, factor_);
        weighsFirst_ = false;
    }

    /// A component, unless it has no output. Without a second image it is faded, without a mask its weights
    /// are the same everywhere. A second image that is constant has one pixel.
    void add(T* first, const T* second, const float* mask = nullptr, bool constant = false)
    {
        if (first == nullptr)
            return;
        if (ru_isEmpty<T, FullRange>(range_)) { // every value is written as the black code
            second = nullptr;
            mask = nullptr;
            weights_ = {};
        }
        const bool two = second != nullptr;
        Plane& plane = planes_[count_];
        plane = {first,
                 second,
                 mask,
                 &kernelsFor(mask),
                 two,
                 swap_ && !two,
                 !ru_isEmpty<T, FullRange>(range_) && mixes(two, mask != nullptr),
                 mask != nullptr ? swap_ && two : weighsFirst_};
        if (plane.isMix)
            prepareMix(plane);
        if (two && constant)
            setConstant(plane, *second);
        ++count_;
    }

    /// Returns 1, as every operation does.
    int run(int thread)
    {
        rows_.each(thread, [this](int64_t y) {
            for (int64_t x = 0; x < rows_.width; x += piece)
                runPiece(rows_.offset(y) + x, std::min(piece, rows_.width - x));
        });
        return 1;
    }

private:
    using Work = ru_Work<T>;
    using MixRow = ru_MixRow<T>;
    using Digit = typename MixRow::Digit;
    static constexpr int64_t piece = 4 * ru_chunk; ///< so that the weights stay in the nearest cache

    struct Plane
    {
        T* first;
        const T* second; ///< null: constants_ has its pixels, if there are two images
        const float* mask;
        const ru_BlendKernels* kernels;
        bool two;
        bool inverted; ///< the mask
        bool isMix;
        bool weighsFirst;        ///< the weight that mixes is that of the first image
        Digit high = 0, low = 0; ///< that weight, without a mask
    };

    BlendPass(const RU_Blend& blend, unsigned int black, unsigned int white, const ru_TileRows& rows)
        : range_(ru_rangeOf<T, FullRange>(black, white)), factor_(blend.blendFactor),
          swap_(blend.swapMaskedInputs), rows_(rows)
    {
        PXLdetermineProcCaps();
        weights_.first = blend.useBlendFactor ? factor_ : blend.firstWeight;
        weights_.second = blend.useBlendFactor ? Work(1) - factor_ : blend.secondWeight;
    }

    /// Under a mask, 8-bit planes take the wide path only with a certain size and mask.
    const ru_BlendKernels& kernelsFor(const float* mask) const
    {
        constexpr int64_t fewPixels = 32;
        const bool narrow = rows_.width * rows_.height <= fewPixels || !PXLcpuHasSSE() ||
                            reinterpret_cast<uintptr_t>(mask) % 16 != 0;
        if (std::is_same_v<T, unsigned char> && mask != nullptr && narrow)
            return ru_blendRows(PXL_InstructionSet::baseline);
        return ru_blendRows();
    }

    /// Mixes take weights that share 1, and only what is a code.
    bool mixes(bool two, bool masked) const
    {
        if constexpr (ru_hasMixes<T>) {
            const Work first = weights_.first, second = weights_.second;
            const bool shared = first >= 0 && (two ? second >= 0 && first + second == 1 : first <= 1);
            return (masked || shared) && (two || range_.black <= PXL_FormatOf<T>::white);
        }
        return false;
    }

    /// What there is one of for all pieces: the weight without a mask, and black in place of a second image.
    void prepareMix(Plane& plane)
    {
        if constexpr (ru_hasMixes<T>) {
            constexpr float full = 1.0f;
            const MixRow& rows = *plane.kernels;
            if (plane.mask == nullptr)
                rows.weigh(false)(&full, {&plane.high, &plane.low}, 1,
                                  weighsFirst_ ? weights_.first : weights_.second);
            if (!plane.two)
                setConstant(plane, static_cast<T>(range_.black));
        }
    }

    void setConstant(Plane& plane, T pixel)
    {
        plane.second = nullptr;
        std::fill_n(constants_[&plane - planes_], std::min(piece, rows_.width), pixel);
    }

    void runPiece(int64_t offset, int64_t length)
    {
        const Plane* weighed = nullptr; // whose weights are in the rows
        for (int c = 0; c < count_; ++c) {
            Plane& plane = planes_[c];
            const bool isWeighed = weighed != nullptr && weighed->mask == plane.mask &&
                                   weighed->inverted == plane.inverted && weighed->isMix == plane.isMix;
            if (plane.mask != nullptr && !isWeighed)
                weighed = weigh(plane, offset, length);
            const T* second = plane.second != nullptr ? plane.second + offset : constants_[c];
            if (plane.isMix)
                mix(plane, plane.first + offset, second, length);
            else
                add(plane, plane.first + offset, second, length);
        }
    }

    const Plane* weigh(const Plane& plane, int64_t offset, int64_t length)
    {
        const float* mask = plane.mask + offset;
        if constexpr (ru_hasMixes<T>)
            if (plane.isMix) {
                const MixRow& rows = *plane.kernels;
                someNaN_ = rows.weigh(plane.inverted)(mask, {high_, low_}, length, factor_);
                return &plane;
            }
        const ru_BlendMask<Work>& masks = *plane.kernels;
        masks.of(plane.inverted)(mask, fraction_, rest_, length, factor_);
        return &plane;
    }

    /// Code by code, in whole numbers. A weight that is NaN gives code 0, as everywhere.
    void mix(Plane& plane, T* first, const T* second, int64_t length)
    {
        if constexpr (ru_hasMixes<T>) {
            const MixRow& rows = *plane.kernels;
            const bool masked = plane.mask != nullptr;
            const T* a = plane.weighsFirst ? second : first;
            const T* b = plane.weighsFirst ? first : second;
            rows.of(masked)(first, a, b, length,
                            masked ? typename MixRow::Weights{high_, low_}
                                   : typename MixRow::Weights{&plane.high, &plane.low});
            for (int64_t i = 0; masked && someNaN_ && i < length; ++i)
                if (high_[i] == MixRow::notANumber)
                    first[i] = 0;
        }
    }

    /// The sum of both images by any weights, in the working type.
    void add(const Plane& plane, T* first, const T* second, int64_t length)
    {
        const ru_BlendRow<T, FullRange>& rows = *plane.kernels;
        weights_.firstRow = plane.weighsFirst ? fraction_ : rest_;
        weights_.secondRow = plane.weighsFirst ? rest_ : fraction_;
        rows.of(plane.two, plane.mask != nullptr)(first, second, length, weights_, range_);
    }

    ru_Range<T> range_;
    Work factor_;
    bool swap_;
    ru_BlendWeights<Work> weights_ = {};
    bool weighsFirst_ = true;
    ru_TileRows rows_;
    int count_ = 0;
    Plane planes_[4];
    Work fraction_[piece], rest_[piece]; ///< weights of sums
    Digit high_[piece], low_[piece];     ///< of mixes
    bool someNaN_ = false;               ///< among these
    T constants_[4][piece];
};

/// A component of a region as T; null where it, or the region, is missing.
template <class T>
const T* componentOf(const TIL_Region* region, int c)
{
    return region != nullptr ? static_cast<const T*>(region->getImageData(c)) : nullptr;
}

/// The mask of component `c`. The scans run to their ends on purpose: the last one found counts.
const float* maskOf(const TIL_Region* region, int c)
{
    const float* mask = componentOf<float>(region, c);
    if (mask != nullptr)
        return mask;
    for (int j = c - 1; j >= 0; --j)
        if (const float* below = componentOf<float>(region, j))
            mask = below;
    if (mask != nullptr)
        return mask;
    for (int j = c + 1; j < 4; ++j)
        if (const float* above = componentOf<float>(region, j))
            mask = above;
    return mask;
}

} // namespace

template <class T, bool FullRange>
class RU_BlendSingleOp : public RU_PixelOp<T, FullRange>
{
public:
    using RU_PixelOp<T, FullRange>::RU_PixelOp;

    int pixelAdjust(TIL_TileList* out, const TIL_TileList* in, float, int thread, void*) override
    {
        BlendPass<T, FullRange> pass(static_cast<const RU_Blend&>(*this->algorithm_), *out);
        for (int c = 0; c < 4; ++c) {
            const TIL_Tile* tile = in != nullptr ? in->tiles[c] : nullptr;
            if (tile == nullptr)
                continue;
            const T* second = nullptr;
            tile->getImageData(second);
            pass.add(ru_outputData<T>(*out, c), second, nullptr, tile->isConstant());
        }
        return pass.run(thread);
    }
};

template <class T, bool FullRange>
class RU_BlendFilterOp : public RU_FilterOp<T, FullRange>
{
public:
    using RU_FilterOp<T, FullRange>::RU_FilterOp;

    int filter(TIL_Region* out, const TIL_Region* in, float, int thread, void*) override
    {
        BlendPass<T, FullRange> pass(static_cast<const RU_Blend&>(*this->algorithm_), *out);
        for (int c = 0; c < std::min<int>(out->plane->componentCount, 4); ++c)
            pass.add(static_cast<T*>(out->getImageData(c)), componentOf<T>(in, c));
        return pass.run(thread);
    }

    int filter(TIL_TileList* out, const TIL_Region* in, float, int thread, void*) override
    {
        BlendPass<T, FullRange> pass(static_cast<const RU_Blend&>(*this->algorithm_), *out);
        for (int c = 0; c < 4; ++c)
            pass.add(ru_outputData<T>(*out, c), componentOf<T>(in, c));
        return pass.run(thread);
    }
};

template <class T, bool FullRange>
class RU_BlendOp : public RU_BinaryOp<T, FullRange>
{
public:
    using RU_BinaryOp<T, FullRange>::RU_BinaryOp;
    using RU_BinaryOp<T, FullRange>::binary; // the region form stays the base's

    int binary(TIL_TileList* out, const TIL_Region* second, const TIL_Region* mask, float, int thread,
               void*) override
    {
        BlendPass<T, FullRange> pass(static_cast<const RU_Blend&>(*this->algorithm_), *out);
        pass.weighAsBinary();
        for (int c = 0; c < 4; ++c)
            pass.add(ru_outputData<T>(*out, c), componentOf<T>(second, c), maskOf(mask, c));
        return pass.run(thread);
    }
};

template class RU_BinaryFactories<RU_BlendOp>;
template class RU_FilterFactories<RU_BlendFilterOp, RU_BlendBinaryFactories>;
template class RU_PixelFactories<RU_BlendSingleOp, RU_BlendFilterFactories>;

RU_Blend::~RU_Blend() = default;
