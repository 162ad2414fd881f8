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

class Blending : public Subject
{
public:
    using Subject::Subject;

    void choose(Random& random) override
    {
        for (float* weight : {&blend.blendFactor, &blend.firstWeight, &blend.secondWeight})
            *weight = anyWeight(random);
        blend.useBlendFactor = !random.oneIn(3);
        blend.swapMaskedInputs = random.oneIn(2);
    }

protected:
    /// Of the output's own value and, unless it is null, that of the second image.
    Exact sum(const Scene& scene, double a, const double* b, double first, double second) const
    {
        const double ofA = step(scene, first * a), ofB = b ? step(scene, second * *b) : 0.0;
        return mixed(scene, b ? step(scene, ofA + ofB) : ofA, std::abs(ofA) + std::abs(ofB));
    }
    Exact unmasked(const Scene& scene, double a, const double* b) const
    {
        const double k = blend.blendFactor;
        return blend.useBlendFactor ? sum(scene, a, b, k, step(scene, 1.0 - k))
                                    : sum(scene, a, b, blend.firstWeight, blend.secondWeight);
    }

    RU_Blend blend;
};

class Single : public Blending
{
public:
    using Blending::Blending;

    int run(Scene& scene, void* token, int thread) override
    {
        TIL_TileList in = scene.in.list;
        if (scene.hasIn)
            in = *scene.inList();
        TIL_Tile empty;
        if (greenIsEmpty_ && in.tiles[1])
            in.tiles[1] = &empty;
        return blend.pixelAdjust(&scene.out.list, scene.hasIn ? &in : nullptr, 0.0f, token, thread, nullptr);
    }
    void choose(Random& random) override
    {
        Blending::choose(random);
        greenIsEmpty_ = random.oneIn(3);
    }
    std::optional<Exact> expected(const Scene& scene, int c, int x, int y) const override
    {
        if (!scene.out.mayWrite(c) || !scene.hasIn || !scene.inList()->tiles[c])
            return {};
        const double a = scene.value(scene.held[c].data(), scene.index(x, y)),
                     b = scene.out.format.valueOf(scene.input(c, x, y), scene.points());
        return unmasked(scene, a, greenIsEmpty_ && c == 1 ? nullptr : &b);
    }

private:
    bool greenIsEmpty_ = false;
};

class Filter : public Blending
{
public:
    using Blending::Blending;

    int run(Scene& scene, void* token, int thread) override
    {
        return blend.filter(&scene.out.list, scene.aroundGiven(), 0.0f, token, thread, nullptr);
    }
    int runOnRegion(Scene& scene, TIL_Region& region) override
    {
        return blend.filter(&region, scene.aroundGiven(), 0.0f, nullptr, 1, nullptr);
    }
    std::optional<Exact> expected(const Scene& scene, int c, int x, int y) const override
    {
        if (!scene.out.mayWrite(c))
            return {};
        const double a = scene.value(scene.held[c].data(), scene.index(x, y));
        const void* second = scene.hasAround ? scene.around.getImageData(c) : nullptr;
        const double b = second ? scene.value(second, scene.index(x, y)) : 0.0;
        return under(scene, a, second ? &b : nullptr, c, x, y);
    }

private:
    virtual Exact under(const Scene& scene, double a, const double* b, int, int, int) const
    {
        return unmasked(scene, a, b);
    }
};

class Binary : public Filter
{
public:
    using Filter::Filter;

    int run(Scene& scene, void* token, int thread) override
    {
        return blend.binary(&scene.out.list, scene.aroundGiven(), scene.maskGiven(), 0.0f, token, thread,
                            nullptr);
    }
    int runOnRegion(Scene& scene, TIL_Region& region) override
    {
        return blend.binary(&region, scene.aroundGiven(), scene.maskGiven(), 0.0f, nullptr, 1, nullptr);
    }

private:
    Exact under(const Scene& scene, double a, const double* b, int c, int x, int y) const override
    {
        const float* mask = maskOf(scene, c);
        const double m = mask ? mask[scene.index(x, y)] : 1.0;
        const double shown = mask && blend.swapMaskedInputs && !b ? step(scene, 1.0 - m) : m;
        const double f = std::clamp(step(scene, shown * blend.blendFactor), 0.0, 1.0),
                     rest = step(scene, 1.0 - f);
        const bool swapped = mask && blend.swapMaskedInputs && b;
        return sum(scene, a, b, swapped ? f : rest, swapped ? rest : f);
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

const Registered<Single> single("BlendSingle");
const Registered<Filter> filter("BlendFilter");
const Registered<Binary> binary("BlendBinary");
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
