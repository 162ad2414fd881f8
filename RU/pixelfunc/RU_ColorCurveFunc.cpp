#include <RU/pixelfunc/RU_ColorCurveFunc.h>

#include <RU/pixelfunc/ru_ChainRows.h>
#include <RU/pixelfunc/ru_CurveShader.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

constexpr int maxCurves = 4;

const RU_ColorCurveFunc& asCurves(const RU_PixelFunction* function)
{
    return static_cast<const RU_ColorCurveFunc&>(*function);
}

} // namespace

RU_ColorCurveFunc::RU_ColorCurveFunc(RU_ColorCurve* curve) : curves_{curve}, count_(1) {}

RU_ColorCurveFunc::RU_ColorCurveFunc(RU_ColorCurve** curves, int count) : count_(count)
{
    std::copy_n(curves, std::clamp(count, 0, maxCurves), curves_);
}

int RU_ColorCurveFunc::curveIndex(int component) const
{
    return std::max(std::min(component, std::min(count_, maxCurves) - 1), -1);
}

const RU_ColorCurve* RU_ColorCurveFunc::curveOf(int component) const
{
    const int index = curveIndex(component);
    return index < 0 ? nullptr : curves_[index];
}

float RU_ColorCurveFunc::curve(RU_PixelFunction* function, float value, int component)
{
    const RU_ColorCurve* curve = asCurves(function).curveOf(component);
    return curve != nullptr ? curve->evaluate(value) : value;
}

RU_RowForm RU_ColorCurveFunc::getRowFunction() const
{
    return {[](RU_PixelFunction* function, const float* in, float* out, int64_t count, int component) {
        if (const RU_ColorCurve* curve = asCurves(function).curveOf(component); curve != nullptr)
            curve->evaluate(in, out, count);
        else
            ru_copyRow(in, out, count);
    }};
}

void RU_ColorCurveFunc::declareConstants(const RU_ColorCurve& curve, int index)
{
    const std::string number = std::to_string(index);
    const int points = curve.builtCount();
    const int extend = curve.extend() ? 1 : 0;
    const float preslope = curve.preslope(), postslope = curve.postslope();
    addConstant(("numsplines" + number).c_str(), RE_GPU_INT32, 1, &points, 1);
    addConstant(("extend" + number).c_str(), RE_GPU_INT32, 1, &extend, 1);
    addConstant(("preslope" + number).c_str(), RE_GPU_FLOAT32, 1, &preslope, 1);
    addConstant(("postslope" + number).c_str(), RE_GPU_FLOAT32, 1, &postslope, 1);
}

void RU_ColorCurveFunc::declarePoints()
{
    int64_t width = 1;
    for (const RU_ColorCurve* curve : curves_)
        if (curve != nullptr)
            width = std::max(width, curve->controlPoints().entries());

    // All four components have their rows, however many curves there are: the shader steps through them.
    std::vector<float> points(static_cast<size_t>(width * maxCurves * 2));
    float* row = points.data();
    for (int c = 0; c < maxCurves; ++c, row += 2 * width) {
        const RU_ColorCurve* curve = curveOf(c);
        for (int64_t i = 0; curve != nullptr && i < curve->controlPoints().entries(); ++i) {
            row[i] = curve->controlPoints()(i).x;
            row[width + i] = curve->controlPoints()(i).y;
        }
    }
    addArray(("points" + std::to_string(getFunctionIndex())).c_str(), RE_GPU_FLOAT32, 1,
             static_cast<int>(width), 2 * maxCurves, points.data());
}

void RU_ColorCurveFunc::getPixelShader(UT_String& body)
{
    body.clear();
    if (std::all_of(curves_, curves_ + maxCurves, [](auto* curve) { return curve == nullptr; }))
        return;
    for (const char* name : {"i", "coffset"})
        addLocal(name, RE_GPU_INT32, 1);
    for (const char* name : {"splx", "sply"})
        addLocal(name, RE_GPU_FLOAT32, 4);
    for (const char* name : {"a", "b", "c", "d", "Q", "R", "Q3", "A", "B", "r"})
        addLocal(name, RE_GPU_FLOAT32, 1);
    for (int k = 0; k < maxCurves; ++k)
        if (curves_[k] != nullptr)
            declareConstants(*curves_[k], k);
    declarePoints();

    const std::string index = std::to_string(getFunctionIndex());
    addFunction(("CCevalCurve" + index).c_str(), ru_curveShader(index).buffer());
    body = "coffset = 0;\n";
    for (int c = 0; c < maxCurves; ++c) {
        if (curveOf(c) != nullptr) {
            UT_String call(
                "value.%c =\n  CCevalCurve%n(value.%c,coffset,numsplines%k,extend%k,preslope%k,postslope%k,\n"
                "                i,splx,sply,\n                a,b,c,d,Q,R,Q3,A,B,r);\n");
            call.substitute("%c", std::string_view("rgba").substr(static_cast<size_t>(c), 1));
            call.substitute("%n", index);
            call.substitute("%k", std::to_string(curveIndex(c)));
            body.append(call.view());
        }
        body.append("coffset += 2;\n");
    }
}
