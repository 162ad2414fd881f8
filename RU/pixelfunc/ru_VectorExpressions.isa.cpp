#include <RU/kernel/ru_OneNaN.h>
#include <RU/pixelfunc/ru_VectorExpressions.h>

namespace RU_ISA {
namespace {

template <class Expression>
void runPixels(const Expression& given, const float* const* in, float* const* out, int64_t count)
{
    const Expression expression = given; // a copy: nothing the loop stores can change it
    const float *red = in[0], *green = in[1], *blue = in[2], *alpha = in[3];
    float *toRed = out[0], *toGreen = out[1], *toBlue = out[2], *toAlpha = out[3];
    RU_EACH_ALONE
    for (int64_t i = 0; i < count; ++i) {
        float r = red[i], g = green[i], b = blue[i];
        if constexpr (Expression::width == 4) {
            float a = alpha[i];
            expression(r, g, b, a);
            toAlpha[i] = ru_oneNaN(a);
        } else {
            expression(r, g, b);
        }
        toRed[i] = ru_oneNaN(r);
        toGreen[i] = ru_oneNaN(g);
        toBlue[i] = ru_oneNaN(b);
    }
}

} // namespace

extern constinit const ru_VectorKernels ru_vectorRows = {
#define RU_ROW(EXPRESSION) {runPixels<EXPRESSION>},
    RU_FOR_EACH_VECTOR_EXPRESSION(RU_ROW)
#undef RU_ROW
        {RU_COMPILED_FOR}};

} // namespace RU_ISA
