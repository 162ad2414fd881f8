#include <RU/pixelfunc/RU_LimitFunc.h>

#include <RU/pixelfunc/ru_FunctionForms.h>

#include <limits>

RU_FUNCTION_FORMS(RU_LimitFunc)

RU_LimitFunc::RU_LimitFunc(bool useLower, float lower, bool useUpper, float upper, bool clamp)
    : flags_(static_cast<unsigned char>((useLower ? useLowerFlag : 0) | (useUpper ? useUpperFlag : 0) |
                                        (clamp ? clampFlag : 0))),
      lower_(lower), upper_(upper)
{
}

ru_Line RU_LimitFunc::expression(int) const
{
    constexpr float unlimited = std::numeric_limits<float>::infinity();
    return {.lower = has(useLowerFlag) ? lower_ : -unlimited,
            .belowValue = has(clampFlag) ? lower_ : 0.0f,
            .upper = has(useUpperFlag) ? upper_ : unlimited,
            .aboveValue = has(clampFlag) ? upper_ : 0.0f};
}

void RU_LimitFunc::getPixelShader(UT_String& body)
{
    body.clear();
    addConstant("lower", RE_GPU_FLOAT32, 1, &lower_, 1);
    addConstant("upper", RE_GPU_FLOAT32, 1, &upper_, 1);
    const bool both = has(useLowerFlag) && has(useUpperFlag);
    if (has(clampFlag)) {
        if (both)
            body = "value = clamp(value, VEC4(lower), VEC4(upper));";
        else if (has(useLowerFlag))
            body = "value = max(value, VEC4(lower));";
        else if (has(useUpperFlag))
            body = "value = min(value, VEC4(upper));";
        return;
    }
    if (has(useLowerFlag))
        body.append("value *= sign(sign(value-VEC4(lower)) + VEC4(1.0f));\n");
    if (has(useUpperFlag))
        body.append("value *= sign(sign(VEC4(upper)-value) + VEC4(1.0f));\n");
}
