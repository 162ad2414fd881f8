#include <RU/pixelfunc/RU_HueFunc.h>

#include <RU/pixelfunc/ru_VectorForms.h>

RU_VECTOR_FORMS(RU_HueFunc, ru_Hue)

void RU_HueFunc::getPixelShader(UT_String& body)
{
    for (const char* name : {"minv", "maxv", "hue", "s1", "rs", "gs", "bs"})
        addLocal(name, RE_GPU_FLOAT32, 1);
    body = "  minv = min(value.r, min(value.g, value.b));\n"
           "  maxv = max(value.r, max(value.g, value.b));\n"
           "  s1 = maxv - minv;\n"
           "  if(s1 > 0) {\n"
           "    rs = (maxv - value.r) / s1;\n"
           "    gs = (maxv - value.g) / s1;\n"
           "    bs = (maxv - value.b) / s1;\n"
           "    if(maxv == value.r)\n"
           "       hue = (minv == value.g) ? (5.0 + bs) : (1.0 - gs);\n"
           "    else if(maxv == value.g)\n"
           "       hue = (minv == value.b) ? (1.0 + rs) : (3.0 - bs);\n"
           "    else\n"
           "       hue = (minv == value.r) ? (3.0 + gs) : (5.0 - rs);\n"
           "    hue *= 0.1666667;\n"
           "    if(hue == 1.0)\n"
           "       hue = 0.0;\n"
           "  } else hue = 0;\n"
           "  value.rgb = vec3(hue, hue, hue);\n";
}
