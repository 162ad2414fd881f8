#include <RU/composite/RU_Blend.h>
#include <RU/composite/ru_BlendRows.h>
#include <RU/composite/ru_ChromaAdjustRows.h>
#include <RU/framework/ru_Convert.h>
#include <reference/Picture.h>

using namespace reference;

namespace {

enum Form { single, filterRegion, filterList, binary };
constexpr Form forms[] = {single, filterRegion, filterList, binary};

constexpr Format floats{PXL_FORMAT_float32, true};

/// A result in the steps of the working type, and the sum of its terms without their signs.
struct Sum
{
    double value;
    double terms;
};

/// Two values and that of the mask; null: absent.
Sum blended(const Format& format, const RU_Blend& blend, Form form, double a, const double* b,
            const double* m)
{
    const auto step = [&](double v) { return format.code == 2 ? v : static_cast<float>(v); };
    double first = blend.firstWeight, second = blend.secondWeight;
    if (form == binary) {
        const double mask = !m ? 1.0 : blend.swapMaskedInputs && !b ? step(1.0 - *m) : *m;
        second = std::clamp(step(mask * blend.blendFactor), 0.0, 1.0);
        first = step(1.0 - second);
        if (blend.swapMaskedInputs && b && m)
            std::swap(first, second);
    } else if (blend.useBlendFactor) {
        first = blend.blendFactor;
        second = step(1.0 - first);
    }
    const double ofA = step(first * a), ofB = b ? step(second * *b) : 0.0;
    return {b ? step(ofA + ofB) : ofA, std::abs(ofA) + std::abs(ofB)};
}

/// The component of a mask that is used for component c, from those that are there; -1: none.
int maskComponent(const bool (&there)[4], int c)
{
    int lowest = -1, highest = -1;
    for (int j = 0; j < 4; ++j) {
        lowest = there[j] && lowest < 0 ? j : lowest;
        highest = there[j] ? j : highest;
    }
    return there[c] ? c : lowest < c ? lowest : highest;
}

void fill(const Format& format, void* data, int count, Random& random)
{
    for (int i = 0; i < count; ++i)
        format.put(data, i, format.isInteger() ? randomCode(format, random) : anyFloat(random));
}

/// Two images and a mask, and a way to blend them.
struct Images
{
    Images(Format format, Form of, int width, int height)
        : form(of), out(format, width, height), in(format, width, height), second(regionOver(out.plane)),
          mask(regionOver(maskPlane))
    {
    }
    TIL_Region regionOver(const TIL_Plane& plane) const
    {
        return TIL_Region(plane, out.list.x1, out.list.y1, out.list.x2, out.list.y2);
    }

    /// Any pixels in components and tiles of every state.
    void scatter(Random& random)
    {
        const int count = out.list.itemCount;
        for (int c = 0; c < 4; ++c) {
            fill(out.format, out.data(c), count, random);
            fill(out.format, in.data(c), count, random);
            fill(out.format, second.getImageData(c), count, random);
            fill(floats, mask.getImageData(c), count, random);
            if (random.oneIn(2))
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
        secondGiven = form == filterRegion || !random.oneIn(4);
        maskGiven = !random.oneIn(4);
    }

    int run(RU_Blend& blend, void* token = nullptr)
    {
        const TIL_Region* image = secondGiven ? &second : nullptr;
        if (form == single)
            return blend.pixelAdjust(&out.list, &in.list, 0.0f, token, 1, nullptr);
        if (form == filterList)
            return blend.filter(&out.list, image, 0.0f, token, 1, nullptr);
        if (form == binary)
            return blend.binary(&out.list, image, maskGiven ? &mask : nullptr, 0.0f, token, 1, nullptr);
        TIL_Region region = regionOver(out.plane);
        for (int c = 0; c < 4; ++c)
            std::memcpy(region.getImageData(c), out.data(c), out.bytes(c).size() + 64); // with its guard
        const int result = blend.filter(&region, image, 0.0f, token, 1, nullptr);
        for (int c = 0; c < 4; ++c)
            std::memcpy(out.data(c), region.getImageData(c), out.bytes(c).size() + 64);
        return result;
    }

    /// The second image; null where it is absent.
    const void* secondData(int c)
    {
        if (form == single)
            return in.list.tiles[c] == &empty ? nullptr : in.data(c);
        return secondGiven ? second.getImageData(c) : nullptr;
    }

    Sum expected(const RU_Blend& blend, int c, int i, const Bytes& before)
    {
        if (out.format.isInteger() && out.plane.whitePoint == out.plane.blackPoint)
            return {0, 0};
        const auto at = [&](const void* data, int k) {
            return out.format.valueOf(out.format.codeAt(data, k),
                                      {out.plane.blackPoint, out.plane.whitePoint});
        };
        bool there[4];
        for (int j = 0; j < 4; ++j)
            there[j] = maskGiven && mask.getImageData(j);
        const int from = maskComponent(there, c);
        const double b =
            secondData(c) ? at(secondData(c), form == single && in.tiles[c].isConstant() ? 0 : i) : 0;
        const double m = from < 0 ? 0.0 : floats.codeAt(mask.getImageData(from), i);
        return blended(out.format, blend, form, at(before.data(), i), secondData(c) ? &b : nullptr,
                       from < 0 ? nullptr : &m);
    }

    Form form;
    Picture out, in;
    TIL_Plane maskPlane{PXL_FORMAT_float32, 4};
    TIL_Region second, mask;
    TIL_Tile empty;
    bool secondGiven = true, maskGiven = true;
};

RU_Blend anyBlend(Random& random)
{
    const float some[] = {0, 1, 0.5f, 0.3f, 1.75f, -0.5f, NAN};
    RU_Blend blend;
    for (float* weight : {&blend.blendFactor, &blend.firstWeight, &blend.secondWeight})
        *weight =
            random.oneIn(2) ? some[random.between(0, 6)] : static_cast<float>(random.between(-1.0, 2.0));
    blend.useBlendFactor = !random.oneIn(3);
    blend.swapMaskedInputs = random.oneIn(2);
    return blend;
}

/// What the kernels of an instruction set make of some rows.
template <class T, bool Full>
std::vector<T> resultsOf(PXL_InstructionSet set)
{
    using Work = ru_Work<T>;
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
    const ru_BlendMask<Work>& masks = ru_blendRows(set);
    const ru_BlendRow<T, Full>& rows = ru_blendRows(set);
    const ru_ChromaAdjustRow<T, Full>& chroma = ru_chromaAdjustRows(set);
    for (const bool masked : {false, true})
        for (const bool two : {false, true}) {
            Work fraction[count], rest[count];
            masks.of(two)(mask.data(), fraction, rest, count, Work(0.9));
            rows.of(two, masked)(next(), second.data(), count, {Work(0.3), Work(0.8), fraction, rest}, range);
        }
    chroma.adjust(next(), mask.data(), count, Work(0.3), range);
    return all;
}

} // namespace

class Blend : public ::testing::TestWithParam<Format>
{
};
INSTANTIATE_TEST_SUITE_P(, Blend, ::testing::ValuesIn(formats()), nameOf);

TEST_P(Blend, EveryFormGivesTheFormulaAtEverySize)
{
    uint64_t pictures = 0;
    for (const Form form : forms)
        for (int width = 1; width <= 40; ++width)
            for (const int height : {1, 2, 5, 8}) {
                Random random(++pictures);
                Images images(GetParam(), form, width < 38 || height > 2 ? width : 2500, height);
                images.scatter(random);
                Picture& out = images.out;
                out.list.firstRow = 1; // for generators
                out.list.rowStep = 2;
                const RU_Blend settings = anyBlend(random);
                RU_Blend blend(settings);
                const Bytes before[] = {out.bytes(0), out.bytes(1), out.bytes(2), out.bytes(3)};
                ASSERT_EQ(images.run(blend), 1);
                ASSERT_TRUE(out.guardsIntact());
                for (int c = 0; c < 4; ++c) {
                    if (!out.mayWrite(c) || (form == single && !images.in.list.tiles[c])) {
                        ASSERT_EQ(out.bytes(c), before[c]) << c;
                        continue;
                    }
                    for (int i = 0; i < out.list.itemCount; ++i) {
                        const Sum sum = images.expected(blend, c, i, before[c]);
                        const double slack =
                            out.format.isInteger() ? sum.terms * 6 * out.format.roundOff() : 0.0;
                        ASSERT_TRUE(out.format.holds(out.format.codeAt(out.data(c), i), sum.value,
                                                     {out.list.blackPoint, out.list.whitePoint}, slack))
                            << "form " << form << ", component " << c << " at " << i << ", factor "
                            << blend.blendFactor << ", weights " << blend.firstWeight << " and "
                            << blend.secondWeight << ", seed " << pictures;
                    }
                }
            }
    EXPECT_EQ(pictures, 640u);
}

// A weight of 1 beside one of 0 leaves what is stored.
TEST_P(Blend, WholeWeightsKeepEveryCode)
{
    struct
    {
        Form form;
        float factor, mask; // NaN: no mask
        bool swap;
    } const cases[] = {{single, 1, NAN, false}, {filterRegion, 1, NAN, true}, {filterList, 1, NAN, false},
                       {binary, -3, NAN, true}, {binary, 1, 0, false},        {binary, 3, 0.5f, true}};
    constexpr int count = 65536;
    const Format& format = GetParam();
    for (const auto& [form, factor, mask, swap] : cases) {
        Random random(1);
        Images images(format, form, 256, 256);
        images.maskGiven = !std::isnan(mask);
        unsigned char* const data = images.out.data(0);
        void* second = form == single ? images.in.data(0) : images.second.getImageData(0);
        fill(format, data, count, random);
        for (int i = 0; i < count; ++i) {
            const auto half =
                static_cast<uint16_t>(format.isHalf() && std::isnan(halfValue(uint16_t(i))) ? i | 0x200 : i);
            if (format.size() == 2) // all codes, NaN quiet
                std::memcpy(data + 2 * i, &half, 2);
            format.put(second, i,
                       format.isInteger() ? randomCode(format, random) : -1.0); // zeros keep their sign
            floats.put(images.mask.getImageData(0), i, mask);
        }
        const Bytes before = images.out.bytes(0);
        RU_Blend blend;
        blend.blendFactor = factor;
        blend.swapMaskedInputs = swap;
        ASSERT_EQ(images.run(blend), 1);
        EXPECT_TRUE(images.out.bytes(0) == before)
            << "form " << form << ", factor " << factor << ", mask " << mask;
    }
}

TEST_P(Blend, StopsWhenToldAndNeedsATileListForMasks)
{
    for (const Form form : forms) {
        Images images(GetParam(), form, 9, 20);
        images.maskGiven = false;
        RU_Blend blend;
        blend.blendFactor = 0.6f;
        expectStop(images.out, [&](void* token) { return images.run(blend, token); });
        TIL_Region region = images.regionOver(images.out.plane);
        EXPECT_EQ(blend.binary(&region, &images.second, &images.mask, 0.0f, nullptr, 1, nullptr), 0);
    }
}

TEST(BlendCases, EveryInstructionSetGivesTheSameBytes)
{
    for (const PXL_InstructionSet set : runnableSets()) {
#define TEST_FORMAT(CODE, T, WHITE, NAME)                                                                    \
    EXPECT_EQ((resultsOf<T, true>(set)), (resultsOf<T, true>(PXL_InstructionSet::baseline))) << #NAME;       \
    EXPECT_EQ((resultsOf<T, false>(set)), (resultsOf<T, false>(PXL_InstructionSet::baseline))) << #NAME;
        PXL_FOR_EACH_FORMAT(TEST_FORMAT)
#undef TEST_FORMAT
    }
}

TEST(BlendCases, MasksAreClampedInvertedOrExchangeTheImages)
{
    constexpr float A = 0.75f, B = 0.25f, none = NAN;
    struct
    {
        float factor;
        bool second;
        float mask;
        bool swap;
        float result;
    } const cases[] = {{0.5f, false, none, false, A / 2},
                       {2, true, 0.25f, false, (A + B) / 2},
                       {0.5f, true, 1, true, (A + B) / 2},
                       {0.5f, true, 0, true, B},
                       {0.5f, true, 0, false, A},
                       {0.5f, false, 0, true, A / 2},
                       {1, false, 1, true, A},
                       {2, false, 0.25f, true, 0},
                       {0.25f, true, none, true, 0.625f},
                       {2, true, none, false, B}};
    for (const auto& [factor, second, mask, swap, result] : cases) {
        Images images(floats, binary, 1, 1);
        floats.put(images.out.data(2), 0, A);
        floats.put(images.second.getImageData(2), 0, B);
        floats.put(images.mask.getImageData(2), 0, mask);
        images.secondGiven = second;
        images.maskGiven = !std::isnan(mask);
        RU_Blend blend;
        blend.blendFactor = factor;
        blend.swapMaskedInputs = swap;
        images.run(blend);
        EXPECT_EQ(images.out.at(2, 0, 0), result) << "factor " << factor << ", mask " << mask << ", " << swap;
    }
    const RU_Blend plain;
    EXPECT_TRUE(plain.blendFactor == 1 && plain.secondWeight == 0 && plain.firstWeight == 1);
    EXPECT_TRUE(plain.useBlendFactor && !plain.swapMaskedInputs);
}
