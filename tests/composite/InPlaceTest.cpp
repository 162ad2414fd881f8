// Blend and chroma adjust.
#include <RU/composite/RU_Blend.h>
#include <RU/composite/RU_ChromaAdjust.h>
#include <RU/composite/ru_BlendRows.h>
#include <RU/composite/ru_ChromaAdjustRows.h>
#include <RU/framework/ru_Convert.h>
#include <reference/Picture.h>

#include <optional>

using namespace reference;

namespace {

enum Form { single, filterRegion, filterList, binary, chromaAdjust };
constexpr Form forms[] = {single, filterRegion, filterList, binary, chromaAdjust};

constexpr Format floats{PXL_FORMAT_float32, true};

/// A result in the steps of the working type, and the sum of its terms without their signs.
struct Sum
{
    double value;
    double terms;
};

void fill(const Format& format, void* data, int count, Random& random)
{
    const uint16_t signalling = 0x7D01; // bits that no conversion keeps
    for (int i = 0; i < count; ++i)
        if (format.isHalf() && random.oneIn(9))
            std::memcpy(static_cast<uint16_t*>(data) + i, &signalling, 2);
        else
            format.put(data, i, format.isInteger() ? randomCode(format, random) : anyFloat(random));
}

/// A picture, what it is combined with, and how.
struct Work
{
    Work(Format format, Form of, int width, int height)
        : form(of), out(format, width, height), in(format, width, height), second(regionOver(out.plane)),
          mask(regionOver(maskPlane))
    {
        chroma.matte = static_cast<const float*>(mask.getImageData(0));
    }
    TIL_Region regionOver(const TIL_Plane& plane) const
    {
        return TIL_Region(plane, out.list.x1, out.list.y1, out.list.x2, out.list.y2);
    }

    /// Any pixels in components and tiles of every state, and any parameters.
    void scatter(Random& random)
    {
        const float some[] = {0, 1, 0.5f, 0.3f, 1.75f, -0.5f, NAN};
        for (float* weight : {&blend.blendFactor, &blend.firstWeight, &blend.secondWeight, &chroma.backingRed,
                              &chroma.backingGreen, &chroma.backingBlue})
            *weight = random.oneIn(2) ? some[random.between(0, 6)] : float(random.between(-1.0, 2.0));
        blend.useBlendFactor = !random.oneIn(3);
        blend.swapMaskedInputs = random.oneIn(2);
        for (int c = 0; c < 4; ++c) {
            fill(out.format, out.data(c), out.list.itemCount, random);
            fill(out.format, in.data(c), out.list.itemCount, random);
            fill(out.format, second.getImageData(c), out.list.itemCount, random);
            fill(floats, mask.getImageData(c), out.list.itemCount, random);
            if (form == binary && random.oneIn(2))
                mask.removeImageData(c);
            if (random.oneIn(5))
                second.removeImageData(c);
        }
        in.scatter(random);
        if (random.oneIn(3))
            in.list.tiles[1] = &empty;
        if (form != filterRegion)
            out.scatter(random);
        if (!out.format.full && random.oneIn(5)) // a range without width
            out.plane.whitePoint = out.list.whitePoint = out.plane.blackPoint;
        out.list.firstRow = 1; // for generators
        out.list.rowStep = 2;
        withItself = form <= filterRegion && random.oneIn(4);
        secondGiven = !random.oneIn(4);
        maskGiven = !random.oneIn(4);
    }

    int run(void* token = nullptr)
    {
        RU_Blend blending(blend);
        RU_ChromaAdjust adjusting(chroma);
        const TIL_Region* image = secondGiven ? &second : nullptr;
        if (form == single)
            return blending.pixelAdjust(&out.list, withItself ? &out.list : &in.list, 0.0f, token, 1,
                                        nullptr);
        if (form == filterList)
            return blending.filter(&out.list, image, 0.0f, token, 1, nullptr);
        if (form == binary)
            return blending.binary(&out.list, image, maskGiven ? &mask : nullptr, 0.0f, token, 1, nullptr);
        if (form == chromaAdjust)
            return adjusting.pixelAdjust(&out.list, nullptr, 0.0f, token, 1, nullptr);
        TIL_Region region = regionOver(out.plane);
        for (int c = 0; c < 4; ++c)
            std::memcpy(region.getImageData(c), out.data(c), out.bytes(c).size() + 64); // with its guard
        const int result = blending.filter(&region, withItself ? &region : image, 0.0f, token, 1, nullptr);
        for (int c = 0; c < 4; ++c)
            std::memcpy(out.data(c), region.getImageData(c), out.bytes(c).size() + 64);
        return result;
    }

    /// The component of the mask that is used for component c; -1: none.
    int maskComponent(int c)
    {
        const auto has = [&](int j) { return maskGiven && mask.getImageData(j); };
        int lowest = 0, highest = 3;
        while (lowest < 4 && !has(lowest))
            ++lowest;
        while (highest >= 0 && !has(highest))
            --highest;
        return has(c) ? c : lowest < c ? lowest : highest;
    }

    /// What pixel i becomes; nothing where it stays as it is stored.
    std::optional<Sum> expected(int c, int i, const Bytes& before)
    {
        const TIL_Tile* tile = withItself ? out.list.tiles[c] : in.list.tiles[c];
        if (!out.mayWrite(c) || (form == single && !tile))
            return {};
        const Range points = {out.plane.blackPoint, out.plane.whitePoint};
        const auto at = [&](const void* data, int k) {
            return out.format.valueOf(out.format.codeAt(data, k), points);
        };
        const int from = form == chromaAdjust ? 0 : maskComponent(c);
        const double a = at(before.data(), i);
        const double m = from < 0 ? 1.0 : floats.codeAt(mask.getImageData(from), i);
        if (form == chromaAdjust)
            return m >= 1 || c == 3 ? std::optional<Sum>() : adjusted(a, m, c);
        const void* data = secondGiven ? second.getImageData(c) : nullptr;
        if (form == single)
            tile->getImageData(data);
        if (withItself)
            data = before.data();
        const double b = data ? at(data, form == single && tile->isConstant() ? 0 : i) : 0.0;
        return blended(a, data ? &b : nullptr, from < 0 ? nullptr : &m);
    }

    ::testing::AssertionResult isRight(int c, int i, const Bytes& before)
    {
        const auto size = static_cast<size_t>(out.format.size()), offset = size * static_cast<size_t>(i);
        const std::optional<Sum> sum = expected(c, i, before);
        if (!sum)
            return ::testing::AssertionResult(std::memcmp(out.data(c) + offset, &before[offset], size) == 0);
        return out.format.holds(out.format.codeAt(out.data(c), i), sum->value,
                                {out.list.blackPoint, out.list.whitePoint},
                                out.format.isInteger() ? sum->terms * 6 * out.format.roundOff() : 0.0);
    }

    Sum adjusted(double a, double m, int c) const
    {
        const double backing[] = {chroma.backingRed, chroma.backingGreen, chroma.backingBlue};
        const double taken = step(step(1 - m) * backing[c]);
        return m <= 0 ? Sum{0, 0} : Sum{step(a - taken), std::abs(a) + std::abs(taken)};
    }

    /// Of two values and that of the mask; null: absent.
    Sum blended(double a, const double* b, const double* m) const
    {
        double first = blend.firstWeight, weight = blend.secondWeight;
        if (form == binary) {
            const double shown = !m ? 1.0 : blend.swapMaskedInputs && !b ? step(1.0 - *m) : *m;
            weight = std::clamp(step(shown * blend.blendFactor), 0.0, 1.0);
            first = step(1.0 - weight);
            if (blend.swapMaskedInputs && b && m)
                std::swap(first, weight);
        } else if (blend.useBlendFactor) {
            first = blend.blendFactor;
            weight = step(1.0 - first);
        }
        const double ofA = step(first * a), ofB = b ? step(weight * *b) : 0.0;
        return {b ? step(ofA + ofB) : ofA, std::abs(ofA) + std::abs(ofB)};
    }

    double step(double v) const { return out.format.code == 2 ? v : static_cast<float>(v); }

    Form form;
    RU_Blend blend;
    RU_ChromaAdjust chroma;
    Picture out, in;
    TIL_Plane maskPlane{PXL_FORMAT_float32, 4};
    TIL_Region second, mask;
    TIL_Tile empty;
    bool withItself = false, secondGiven = true, maskGiven = true;
};

/// What the kernels of an instruction set make of some rows.
template <class T, bool Full>
std::vector<T> resultsOf(PXL_InstructionSet set)
{
    using Value = ru_Work<T>;
    constexpr int count = 499;
    constexpr Format format{PXL_FormatOf<T>::code, Full};
    const ru_Range<T> range = ru_rangeOf<T, Full>(format.range().black, format.range().white);
    Random random(7);
    std::vector<T> first(count), second(count), all;
    std::vector<float> mask(count);
    for (int i = 0; i < count; ++i) {
        format.put(first.data(), i, randomCode(format, random));
        format.put(second.data(), i, randomCode(format, random));
        floats.put(mask.data(), i, random.between(-0.5, 1.5));
    }
    const auto next = [&] { return &*all.insert(all.end(), first.begin(), first.end()); };
    const ru_BlendMask<Value>& masks = ru_blendRows(set);
    const ru_BlendRow<T, Full>& rows = ru_blendRows(set);
    const ru_ChromaAdjustRow<T, Full>& chroma = ru_chromaAdjustRows(set);
    for (const bool masked : {false, true})
        for (const bool two : {false, true}) {
            Value fraction[count], rest[count];
            masks.of(two)(mask.data(), fraction, rest, count, Value(0.9));
            rows.of(two, masked)(next(), second.data(), count, {Value(0.3), Value(0.8), fraction, rest},
                                 range);
        }
    chroma.adjust(next(), mask.data(), count, Value(0.3), range);
    return all;
}

} // namespace

class InPlace : public ::testing::TestWithParam<Format>
{
};
INSTANTIATE_TEST_SUITE_P(, InPlace, ::testing::ValuesIn(formats()), nameOf);

TEST_P(InPlace, EveryFormGivesTheFormulaAtEverySize)
{
    uint64_t pictures = 0;
    for (const Form form : forms)
        for (int width = 1; width <= 40; ++width)
            for (const int height : {1, 2, 5, 8}) {
                Random random(++pictures);
                Work work(GetParam(), form, width < 38 || height > 2 ? width : 2500, height);
                work.scatter(random);
                Picture& out = work.out;
                const Bytes before[] = {out.bytes(0), out.bytes(1), out.bytes(2), out.bytes(3)};
                ASSERT_EQ(work.run(), 1);
                ASSERT_TRUE(out.guardsIntact());
                for (int c = 0; c < 4; ++c)
                    for (int i = 0; i < out.list.itemCount; ++i)
                        ASSERT_TRUE(work.isRight(c, i, before[c]))
                            << "form " << form << ", component " << c << " at " << i << ", seed " << pictures;
            }
    EXPECT_EQ(pictures, 800u);
}

TEST_P(InPlace, StopsWhenToldAndDoesNothingWithoutWhatItNeeds)
{
    for (const Form form : forms) {
        Work work(GetParam(), form, 9, 20);
        work.maskGiven = false;
        work.blend.blendFactor = 0.6f;
        expectStop(work.out, [&](void* token) { return work.run(token); });
    }
    Work work(GetParam(), chromaAdjust, 3, 2);
    work.chroma.matte = nullptr;
    EXPECT_EQ(work.run(), 0);
    TIL_Region region = work.regionOver(work.out.plane);
    EXPECT_EQ(work.blend.binary(&region, &work.second, &work.mask, 0.0f, nullptr, 1, nullptr), 0);
}

TEST(InPlaceCases, EveryInstructionSetGivesTheSameBytes)
{
    for (const PXL_InstructionSet set : runnableSets()) {
#define TEST_FORMAT(CODE, T, WHITE, NAME)                                                                    \
    EXPECT_EQ((resultsOf<T, true>(set)), (resultsOf<T, true>(PXL_InstructionSet::baseline))) << #NAME;       \
    EXPECT_EQ((resultsOf<T, false>(set)), (resultsOf<T, false>(PXL_InstructionSet::baseline))) << #NAME;
        PXL_FOR_EACH_FORMAT(TEST_FORMAT)
#undef TEST_FORMAT
    }
}

TEST(InPlaceCases, MembersStandInOrderAndDoNothingAtFirst)
{
    const RU_Blend blend;
    const float* members = &blend.blendFactor;
    EXPECT_TRUE(members + 1 == &blend.secondWeight && members + 2 == &blend.firstWeight);
    EXPECT_TRUE(members[0] == 1 && members[1] == 0 && members[2] == 1);
    EXPECT_TRUE(blend.useBlendFactor && !blend.swapMaskedInputs && !RU_ChromaAdjust().matte);
}
