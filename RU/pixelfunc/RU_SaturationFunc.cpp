#include <RU/pixelfunc/RU_SaturationFunc.h>

#include <RU/pixelfunc/ru_VectorForms.h>

RU_VECTOR_FORMS(RU_SaturationFunc, ru_Saturation)

void RU_SaturationFunc::getPixelShader(UT_String& body)
{
    addLocal("maxv", RE_GPU_FLOAT32, 1);
    addLocal("minv", RE_GPU_FLOAT32, 1);
    body = "minv = min(value.r, min(value.g, value.b));\n"
           "  maxv = max(value.r, max(value.g, value.b));\n"
           "  value.rgb = (maxv > 0) ? ((maxv - minv)/maxv) : 0.0;\n";
}
