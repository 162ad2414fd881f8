#include <RU/pixelfunc/RU_HSVConvertFunc.h>

#include <RU/pixelfunc/ru_HSVShader.h>
#include <RU/pixelfunc/ru_VectorForms.h>

namespace {

/// One 360th.
constexpr float turnOfDegree = 0.002777778f;

} // namespace

RU_HSVConvertFunc::RU_HSVConvertFunc(RU_HSVConvertOp op, float hueShift, const float* sat, const float* val,
                                     bool preserveLuminance)
    : op_(op), hueShift_(hueShift), satScale_(sat != nullptr ? sat[0] : 1.0f),
      satShift_(sat != nullptr ? sat[1] : 0.0f), valScale_(val != nullptr ? val[0] : 1.0f),
      valShift_(val != nullptr ? val[1] : 0.0f), preserveLuminance_(preserveLuminance)
{
}

ru_VectorFormPair RU_HSVConvertFunc::forms() const
{
    if (op_ == RU_RGB_TO_HSV)
        return ru_VectorForms<RU_HSVConvertFunc, ru_ToHSV>::both();
    if (op_ == RU_HSV_TO_RGB)
        return ru_VectorForms<RU_HSVConvertFunc, ru_FromHSV>::both();
    return preserveLuminance_ ? ru_VectorForms<RU_HSVConvertFunc, ru_AdjustHSVKeepingLuminance>::both()
                              : ru_VectorForms<RU_HSVConvertFunc, ru_AdjustHSV>::both();
}

RU_VectorForm RU_HSVConvertFunc::getVectorFunction() const
{
    return forms().pixel;
}

RU_VectorRowForm RU_HSVConvertFunc::getVectorRowFunction() const
{
    return forms().rows;
}

void RU_HSVConvertFunc::fill(ru_AdjustHSV& expression, ru_Present present) const
{
    const bool grey = ru_AdjustHSV::redAlone(present);
    expression.turn = hueShift_ * turnOfDegree;
    expression.satScale = grey ? 0.0f : satScale_;
    expression.satShift = grey ? 0.0f : satShift_;
    expression.valScale = valScale_;
    expression.valShift = valShift_;
}

void RU_HSVConvertFunc::fill(ru_AdjustHSVKeepingLuminance& expression, ru_Present present) const
{
    fill(static_cast<ru_AdjustHSV&>(expression), present);
    const bool grey = ru_AdjustHSV::redAlone(present);
    expression.weights = grey ? ru_Weights{1.0f, 0.0f, 0.0f} : ru_linearLuminance;
}

void RU_HSVConvertFunc::getPixelShader(UT_String& body)
{
    usesGlobal("num_comps");
    addLocal("prev", RE_GPU_FLOAT32, 4);
    for (const char* name : {"lum", "lum2", "minv", "maxv", "hue", "sat", "rs", "gs", "bs", "s1"})
        addLocal(name, RE_GPU_FLOAT32, 1);
    UT_String shared;
    if (op_ != RU_HSV_TO_RGB) {
        RUgetToHSVConvertGPU(shared);
        addFunction("toHSV", shared.buffer());
    }
    if (op_ != RU_RGB_TO_HSV) {
        addLocal("i", RE_GPU_INT32, 1);
        for (const char* name : {"val", "f", "p", "q", "t"})
            addLocal(name, RE_GPU_FLOAT32, 1);
        RUgetFromHSVConvertGPU(shared);
        addFunction("fromHSV", shared.buffer());
    }
    if (op_ == RU_RGB_TO_HSV || op_ == RU_HSV_TO_RGB)
        body = UT_String("if(num_comps < 3) return value;\n")
                   .append(op_ == RU_RGB_TO_HSV ? ru_toHSVText : ru_fromHSVText);
    else
        adjustmentShader(body);
}

void RU_HSVConvertFunc::adjustmentShader(UT_String& body)
{
    addConstant("hueshift", RE_GPU_FLOAT32, 1, &hueShift_, 1);
    addConstant("satscale", RE_GPU_FLOAT32, 1, &satScale_, 1);
    addConstant("satshift", RE_GPU_FLOAT32, 1, &satShift_, 1);
    addConstant("valscale", RE_GPU_FLOAT32, 1, &valScale_, 1);
    addConstant("valshift", RE_GPU_FLOAT32, 1, &valShift_, 1);
    body = "prev = value;\n"
           "if(num_comps == 1) value.rgb = VEC3(value.r);\n";
    body.append(ru_toHSVText);
    body.append("if(num_comps > 1) {\n"
                "  value.r = mod(value.r + hueshift* 0.002777778f, 1.0f);\n"
                "  if(value.r < 0.0f) value.r += 1.0;\n"
                "  value.g = clamp(value.g * satscale + satshift, 0.0f, 1.0f);\n"
                "}\n"
                "value.b = value.b * valscale + valshift;\n");
    body.append(ru_fromHSVText);
    if (preserveLuminance_)
        body.append("lum = (num_comps > 1) ? 0.3086*prev.r + 0.6094*prev.g + 0.082*prev.b : prev.r;\n"
                    "lum2 = 0.3086*value.r + 0.6094*value.g + 0.082*value.b;\n"
                    "  if(lum2 != 0.0) {\n"
                    "     lum = lum * valscale + valshift;\n"
                    "     value.rgb *= lum / lum2;\n"
                    "  }\n");
}
