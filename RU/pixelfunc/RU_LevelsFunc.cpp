#include <RU/pixelfunc/RU_LevelsFunc.h>

#include <RU/pixelfunc/RU_GammaFunc.h>
#include <RU/pixelfunc/ru_FunctionForms.h>

namespace {

const RU_LevelsFunc& levelsOf(const RU_PixelFunction* function)
{
    return static_cast<const RU_LevelsFunc&>(*function);
}

} // namespace

RU_LevelsFunc::Step::Step(float inBlack, float inWhite, float gamma, float outBlack, float outWhite)
    : igamma(1.0f / gamma), exponent(bends() ? std::make_shared<ru_Exponent>(igamma) : nullptr)
{
    colourMap(bent(inBlack), bent(inWhite), outBlack, outWhite, factor, addend);
}

float RU_LevelsFunc::Step::bent(float v) const
{
    return bends() ? ru_Gamma{exponent.get()}(v) : v;
}

ru_Line RU_LevelsFunc::Step::line() const
{
    return {.mult = factor, .add = addend};
}

float RU_LevelsFunc::Step::operator()(float v) const
{
    return line()(bent(v));
}

void RU_LevelsFunc::Step::addSteps(ru_RowSteps& steps) const
{
    if (bends())
        steps.add(ru_Gamma{exponent.get()});
    steps.add(line());
}

RU_LevelsFunc::RU_LevelsFunc(float inBlack, float inWhite, float gamma, float outBlack, float outWhite,
                             float offset, const float* inBlacks, const float* inWhites, const float* gammas,
                             const float* outBlacks, const float* outWhites)
    : global_(inBlack, inWhite, gamma, outBlack, outWhite), perComponent_(true)
{
    global_.addend += offset;
    for (int c = 0; c < 4; ++c)
        set(c, Step(inBlacks[c], inWhites[c], gammas[c], outBlacks[c], outWhites[c]));
}

RU_LevelsFunc::RU_LevelsFunc(float inBlack, float inWhite, float gamma, float outBlack, float outWhite,
                             float offset, float componentInBlack, float componentInWhite,
                             float componentGamma, float componentOutBlack, float componentOutWhite)
    : global_(inBlack, inWhite, gamma, outBlack, outWhite), perComponent_(false)
{
    global_.addend += offset;
    const Step step(componentInBlack, componentInWhite, componentGamma, componentOutBlack, componentOutWhite);
    for (int c = 0; c < 4; ++c)
        set(c, step);
}

void RU_LevelsFunc::set(int component, const Step& step)
{
    const double factor = global_.factor;
    components_[component] = step;
    fast_[component].factor = static_cast<float>(step.factor * factor);
    fast_[component].addend = static_cast<float>(step.addend * factor + global_.addend);
}

void RU_LevelsFunc::colourMap(float x0, float x1, float y0, float y1, float& factor, float& addend)
{
    const double slope = x0 == x1 ? 0.0 : (double(y1) - y0) / (double(x1) - x0);
    const double atZero = x0 == x1 ? (double(y0) + y1) / 2.0 : y0 - x0 * slope;
    factor = static_cast<float>(slope);
    addend = static_cast<float>(atZero);
}

bool RU_LevelsFunc::isFast() const
{
    return !global_.bends() && !bendsComponents();
}

bool RU_LevelsFunc::bendsComponents() const
{
    return components_[0].bends() || components_[1].bends() || components_[2].bends() ||
           components_[3].bends();
}

RU_ScalarForm RU_LevelsFunc::getPixelFunction() const
{
    return isFast() ? fastLevels : safeLevels;
}

RU_RowForm RU_LevelsFunc::getRowFunction() const
{
    return {row, addSteps};
}

float RU_LevelsFunc::fastLevels(RU_PixelFunction* function, float value, int component)
{
    return ru_oneNaN(levelsOf(function).fast_[component](value));
}

float RU_LevelsFunc::safeLevels(RU_PixelFunction* function, float value, int component)
{
    const RU_LevelsFunc& levels = levelsOf(function);
    return ru_oneNaN(levels.global_(levels.components_[component](value)));
}

void RU_LevelsFunc::addSteps(const RU_PixelFunction& function, int component, ru_RowSteps& steps)
{
    const RU_LevelsFunc& levels = levelsOf(&function);
    if (levels.isFast())
        return levels.fast_[component].addSteps(steps);
    const Step& step = levels.components_[component];
    const bool changesOnlyMinusZero = !step.bends() && step.factor == 1.0f && step.addend == 0.0f;
    if (!changesOnlyMinusZero || !levels.global_.bends()) // a gamma takes both zeros to the same
        step.addSteps(steps);
    levels.global_.addSteps(steps);
}

void RU_LevelsFunc::row(RU_PixelFunction* function, const float* in, float* out, int64_t count, int component)
{
    ru_RowSteps steps;
    addSteps(*function, component, steps);
    steps.run(in, out, count);
}

void RU_LevelsFunc::getPixelShader(UT_String& body)
{
    float igamma[4], factor[4], addend[4];
    for (int c = 0; c < 4; ++c) {
        igamma[c] = components_[c].igamma;
        factor[c] = components_[c].factor;
        addend[c] = components_[c].addend;
    }
    addConstant("igamma", RE_GPU_FLOAT32, 4, igamma, 1);
    addConstant("factor", RE_GPU_FLOAT32, 4, factor, 1);
    addConstant("addend", RE_GPU_FLOAT32, 4, addend, 1);
    addConstant("gigamma", RE_GPU_FLOAT32, 1, &global_.igamma, 1);
    addConstant("gfactor", RE_GPU_FLOAT32, 1, &global_.factor, 1);
    addConstant("gaddend", RE_GPU_FLOAT32, 1, &global_.addend, 1);
    body.clear();
    if (bendsComponents())
        body.append("value = sign(value) * pow(abs(value), VEC4(igamma));\n");
    body.append("value = value * VEC4(factor) + VEC4(addend);\n");
    if (global_.bends())
        body.append("value = sign(value) * pow(abs(value), VEC4(gigamma));\n");
    body.append("value = value * VEC4(gfactor) + VEC4(gaddend);\n");
}
