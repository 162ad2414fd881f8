// Blend and chroma adjust.
#include <RU/composite/RU_Blend.h>
#include <RU/composite/RU_ChromaAdjust.h>
#include <reference/Contract.h>

using namespace reference;

namespace {

float anyWeight(Random& random)
{
    const float some[] = {0, 1, 0.5f, 0.3f, 1.75f, -0.5f, NAN};
    return random.oneIn(2) ? some[random.between(0, 6)] : static_cast<float>(random.between(-1.0, 2.0));
}

/// Rounds a step to the working type.
double step(const Scene& scene, double v)
{
    return scene.out.format.code == PXL_FORMAT_uint32 ? v : static_cast<float>(v);
}

/// Integers are computed in other steps, which may be off by parts of the terms.
Exact mixed(const Scene& scene, double value, double terms)
{
    return {value, scene.out.format.isInteger() ? 6 * scene.out.format.roundOff() * terms : 0.0};
}

enum class Form { single, filter, binary };

class Blending : public Subject
{
public:
    Blending(std::string of, Form form) : Subject(std::move(of)), form_(form) {}

    void choose(Random& random) override
    {
        for (float* weight : {&blend_.blendFactor, &blend_.firstWeight, &blend_.secondWeight})
            *weight = anyWeight(random);
        blend_.useBlendFactor = !random.oneIn(3);
        blend_.swapMaskedInputs = random.oneIn(2);
        greenIsEmpty_ = random.oneIn(3);
    }
    int run(Scene& scene, void* token, int thread) override
    {
        TIL_TileList* out = &scene.out.list;
        if (form_ == Form::filter)
            return blend_.filter(out, scene.aroundGiven(), 0.0f, token, thread, nullptr);
        if (form_ == Form::binary)
            return blend_.binary(out, scene.aroundGiven(), scene.maskGiven(), 0.0f, token, thread, nullptr);
        TIL_TileList in = scene.hasIn ? *scene.inList() : scene.in.list;
        TIL_Tile empty;
        if (greenIsEmpty_ && in.tiles[1])
            in.tiles[1] = &empty;
        return blend_.pixelAdjust(out, scene.hasIn ? &in : nullptr, 0.0f, token, thread, nullptr);
    }
    int runOnRegion(Scene& scene, TIL_Region& region) override
    {
        if (form_ == Form::binary)
            return blend_.binary(&region, scene.aroundGiven(), scene.maskGiven(), 0.0f, nullptr, 1, nullptr);
        return form_ == Form::filter ? blend_.filter(&region, scene.aroundGiven(), 0.0f, nullptr, 1, nullptr)
                                     : 0;
    }
    std::optional<Exact> expected(const Scene& scene, int c, int x, int y) const override
    {
        const bool hasTile = scene.hasIn && scene.inList()->tiles[c];
        if (!scene.out.mayWrite(c) || (form_ == Form::single && !hasTile))
            return {};
        const int64_t at = scene.index(x, y);
        const void* second = scene.hasAround ? scene.around.getImageData(c) : nullptr;
        bool hasSecond = second != nullptr;
        double b = second ? scene.value(second, at) : 0.0;
        if (form_ == Form::single) {
            b = scene.out.format.valueOf(scene.input(c, x, y), scene.points());
            hasSecond = !greenIsEmpty_ || c != 1;
        }
        const auto [first, other] = weights(scene, maskOf(scene, c), at, hasSecond);
        const double a = scene.value(scene.held[c].data(), at);
        const double ofA = step(scene, first * a), ofB = hasSecond ? step(scene, other * b) : 0.0;
        return mixed(scene, hasSecond ? step(scene, ofA + ofB) : ofA, std::abs(ofA) + std::abs(ofB));
    }

private:
    /// Of the output and of the second image.
    std::pair<double, double> weights(const Scene& scene, const float* mask, int64_t at, bool hasSecond) const
    {
        const double k = blend_.blendFactor;
        if (form_ != Form::binary)
            return blend_.useBlendFactor ? std::pair(k, step(scene, 1.0 - k))
                                         : std::pair<double, double>(blend_.firstWeight, blend_.secondWeight);
        const bool swaps = mask && blend_.swapMaskedInputs;
        const double m = mask ? mask[at] : 1.0, shown = swaps && !hasSecond ? step(scene, 1.0 - m) : m;
        const double f = std::clamp(step(scene, shown * k), 0.0, 1.0), rest = step(scene, 1.0 - f);
        return swaps && hasSecond ? std::pair(f, rest) : std::pair(rest, f);
    }

    /// The component's own mask, else the lowest one's below, else the highest one's above.
    static const float* maskOf(const Scene& scene, int c)
    {
        const auto has = [&](int j) { return scene.hasMask && scene.mask.getImageData(j); };
        int lowest = 0, highest = 3;
        while (lowest < 4 && !has(lowest))
            ++lowest;
        while (highest >= 0 && !has(highest))
            --highest;
        const int from = has(c) ? c : lowest < c ? lowest : highest;
        return from < 0 ? nullptr : static_cast<const float*>(scene.mask.getImageData(from));
    }

    Form form_;
    RU_Blend blend_;
    bool greenIsEmpty_ = false;
};

/// The matte is the mask's first component.
class Chroma : public Subject
{
public:
    using Subject::Subject;

    void choose(Random& random) override
    {
        for (float& part : backing_)
            part = anyWeight(random);
    }
    int run(Scene& scene, void* token, int thread) override
    {
        RU_ChromaAdjust chroma;
        chroma.matte = matteOf(scene);
        chroma.backingRed = backing_[0];
        chroma.backingGreen = backing_[1];
        chroma.backingBlue = backing_[2];
        const int result = chroma.pixelAdjust(&scene.out.list, nullptr, 0.0f, token, thread, nullptr);
        return chroma.matte ? result : result + 1; // 0 without
    }
    std::optional<Exact> expected(const Scene& scene, int c, int x, int y) const override
    {
        const float* matte = matteOf(scene);
        if (!scene.out.mayWrite(c) || !matte || matte[scene.index(x, y)] >= 1 || c == 3)
            return {};
        const double a = scene.value(scene.held[c].data(), scene.index(x, y)), m = matte[scene.index(x, y)];
        const double taken = step(scene, step(scene, 1 - m) * backing_[c]);
        return m <= 0 ? Exact{0, 0} : mixed(scene, step(scene, a - taken), std::abs(a) + std::abs(taken));
    }

private:
    static const float* matteOf(const Scene& scene)
    {
        return static_cast<const float*>(scene.mask.getImageData(0));
    }

    float backing_[3] = {};
};

const Registered<Blending> single("BlendSingle", Form::single), filter("BlendFilter", Form::filter),
    binary("BlendBinary", Form::binary);
const Registered<Chroma> chromaAdjust("ChromaAdjust");

} // namespace

TEST(Blend, MembersStandInOrderAndDoNothingAtFirst)
{
    const RU_Blend blend;
    const float* members = &blend.blendFactor;
    EXPECT_TRUE(members + 1 == &blend.secondWeight && members + 2 == &blend.firstWeight);
    EXPECT_TRUE(members[0] == 1 && members[1] == 0 && members[2] == 1);
    EXPECT_TRUE(blend.useBlendFactor && !blend.swapMaskedInputs && !RU_ChromaAdjust().matte);
}
