// Blends of 8- and 16-bit codes with weights that share 1: in integers, exact.
#include <RU/composite/RU_Blend.h>
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
    void mix(bool two)
    {
        RU_Blend blend;
        blend.swapMaskedInputs = two; // the mask is the first image's weight
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
            a[size_t(i)] = atEnd ? double(i / side) * (format.white() / 255) : random.between(0, 65535);
            b[size_t(i)] = format.code == 0 ? i % side : random.between(0, 65535);
            pair.put(i, a[size_t(i)], b[size_t(i)]);
            pair.weights[i] = weights[(k + size_t(i)) % weights.size()];
        }
        const bool masked = k % 2 == 0;
        masked ? pair.mix(true) : pair.adjust(weights[k]);
        for (int i = 0; i < side * side; ++i)
            ASSERT_TRUE(isMix(format, pair.result(i), a[size_t(i)], b[size_t(i)],
                              double(masked ? pair.weights[i] : weights[k])));
    }
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
    pair.mix(false);
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(pair.result(i), std::min(255.0, std::floor(150 + i * 2.5 + 0.5)));
}
