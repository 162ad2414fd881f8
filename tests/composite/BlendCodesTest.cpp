// Blends of 8- and 16-bit codes with weights that share 1: in integers, exact.
#include <RU/composite/RU_Blend.h>
#include <RU/composite/ru_BlendRows.h>
#include <reference/Picture.h>

using namespace reference;

namespace {

/// Two pictures of one component, the second also as a region, and a mask.
struct Pair
{
    Pair(Format format, int width, int height)
        : a(format, width, height), b(format, width, height), second(b.plane, 0, 0, width - 1, height - 1),
          mask(maskPlane, 0, 0, width - 1, height - 1), weights(static_cast<float*>(mask.getImageData(0)))
    {
        for (int c = 1; c < 4; ++c)
            a.list.tiles[c] = b.list.tiles[c] = nullptr;
    }
    void put(int i, double first, double other)
    {
        a.format.put(a.data(0), i, first);
        a.format.put(b.data(0), i, other);
        a.format.put(second.getImageData(0), i, other);
    }
    void adjust(float factor)
    {
        RU_Blend blend;
        blend.blendFactor = factor;
        blend.pixelAdjust(&a.list, &b.list, 0.0f, nullptr, 1, nullptr);
    }
    void mix(bool two, bool swap)
    {
        RU_Blend blend;
        blend.swapMaskedInputs = swap;
        blend.binary(&a.list, two ? &second : nullptr, &mask, 0.0f, nullptr, 1, nullptr);
    }
    double result(int i) const { return a.format.codeAt(a.data(0), i); }

    Picture a, b;
    TIL_Plane maskPlane{PXL_FORMAT_float32, 1};
    TIL_Region second, mask;
    float* weights;
};

/// Weights are whole numbers of these; those that are not may be off by one.
double weightStep(const Format& format)
{
    return format.code == 0 ? 0x1p-24 : 0x1p-29;
}

/// Is `stored` weight * a + (1 - weight) * b, rounded once, halves up?
::testing::AssertionResult isMix(const Format& format, double stored, double a, double b, double weight)
{
    const double unrounded = b + (a - b) * weight, step = weightStep(format);
    const bool whole = std::fmod(weight, step) == 0;
    if (whole ? stored == std::floor(unrounded + 0.5)
              : std::abs(stored - unrounded) <= 0.5 + std::abs(a - b) * step)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << a << " and " << b << " by " << weight << " give " << stored << ", not " << unrounded;
}

template <class T>
std::vector<T> mixesOf(PXL_InstructionSet set, int count)
{
    const ru_MixRow<T>& rows = ru_blendRows(set);
    Random random(static_cast<uint64_t>(count));
    const auto length = static_cast<size_t>(count);
    std::vector<T> a(length), b(length), all;
    std::vector<float> mask(length);
    std::vector<typename ru_MixRow<T>::Digit> high(length), low(length);
    for (size_t i = 0; i < length; ++i) {
        const T ends[] = {0, 1, static_cast<T>(-1), static_cast<T>(random.bits())};
        a[i] = ends[random.between(0, 3)];
        b[i] = ends[random.between(0, 3)];
        mask[i] = random.oneIn(3) ? anyFloat(random) : static_cast<float>(random.between(0.0, 1.0));
    }
    for (const bool inverted : {false, true})
        for (const bool masked : {false, true}) {
            all.push_back(rows.weigh(inverted)(mask.data(), {high.data(), low.data()}, count, 0.9f));
            T* codes = &*all.insert(all.end(), a.begin(), a.end());
            rows.of(masked)(codes, inverted ? b.data() : codes, inverted ? codes : b.data(), count,
                            {high.data(), low.data()});
        }
    return all;
}

} // namespace

class BlendCodes : public ::testing::TestWithParam<Format>
{
};
INSTANTIATE_TEST_SUITE_P(, BlendCodes,
                         ::testing::Values(Format{0, true}, Format{0, false}, Format{1, true},
                                           Format{1, false}),
                         nameOfParameter);

TEST_P(BlendCodes, EveryWeightMixesEveryByteAndAnyOtherCode)
{
    constexpr int side = 256;
    const Format format = GetParam();
    Random random(1);
    Pair pair(format, side, side);
    std::vector<double> a(side * side), b(side * side);
    std::vector<float> weights = {0x1p-24f, 0x1p-29f, 1e-40f, 0.5f - 0x1p-25f, 1.0f - 0x1p-24f, 0.3f, 0.7f};
    for (int k = 0; k <= 255; ++k)
        weights.push_back(static_cast<float>(k) / 255.0f);
    for (size_t k = 0; k < weights.size(); ++k) {
        for (int i = 0; i < side * side; ++i) {
            const bool atEnd = i / side % 16 == 0 || format.code == 0;
            a[size_t(i)] = atEnd ? i / side * (format.white() / 255) : random.between(0, 65535);
            b[size_t(i)] = format.code == 0 ? i % side : random.between(0, 65535);
            pair.put(i, a[size_t(i)], b[size_t(i)]);
            pair.weights[i] = weights[(k + size_t(i)) % weights.size()];
        }
        const bool masked = k % 2 == 0;
        masked ? pair.mix(true, true) : pair.adjust(weights[k]);
        for (int i = 0; i < side * side; ++i)
            ASSERT_TRUE(isMix(format, pair.result(i), a[size_t(i)], b[size_t(i)],
                              double(masked ? pair.weights[i] : weights[k])));
    }
}

TEST_P(BlendCodes, FadesEndAtBlackAndNaNIsCodeZero)
{
    const Format format = GetParam();
    const double black = format.range().black, white = format.range().white;
    Pair pair(format, 83, 3);
    const float mask[] = {0.0f, 1.0f, 0.25f, -HUGE_VALF, HUGE_VALF, NAN, 3.0f};
    for (const bool two : {false, true})
        for (const bool swap : {false, true}) {
            for (int i = 0; i < pair.a.list.itemCount; ++i) {
                pair.put(i, white, 17.0);
                pair.weights[i] = mask[i % 7];
            }
            pair.mix(two, swap);
            for (int i = 0; i < pair.a.list.itemCount; ++i) {
                const double m = double(mask[i % 7]), weight = std::clamp(swap && !two ? 1 - m : m, 0.0, 1.0);
                if (std::isnan(m))
                    ASSERT_EQ(pair.result(i), 0);
                else
                    ASSERT_TRUE(isMix(format, pair.result(i), white, two ? 17.0 : black,
                                      swap && two ? weight : 1 - weight));
            }
        }
    ASSERT_TRUE(pair.a.guardsIntact());
}

TEST(BlendCodesCases, FadesToABlackThatIsNoCode)
{
    Pair pair({0, false}, 50, 1);
    pair.a.list.blackPoint = 300;
    pair.a.list.whitePoint = 400;
    for (int i = 0; i < 50; ++i) {
        pair.put(i, i * 5, 0);
        pair.weights[i] = 0.5f;
    }
    pair.mix(false, false);
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(pair.result(i), std::min(255.0, std::floor(150 + i * 2.5 + 0.5)));
}

TEST(BlendCodesCases, EveryInstructionSetMixesTheSameInRowsOfEveryLength)
{
    for (const PXL_InstructionSet set : runnableSets())
        for (int count = 1; count <= 200; ++count) {
            ASSERT_EQ(mixesOf<uint8_t>(set, count), mixesOf<uint8_t>(PXL_InstructionSet::baseline, count));
            ASSERT_EQ(mixesOf<uint16_t>(set, count), mixesOf<uint16_t>(PXL_InstructionSet::baseline, count));
        }
}
