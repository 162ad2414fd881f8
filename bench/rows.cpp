// The rows of the table.
#include <bench/bench.h>

#include <RU/filter/RU_EdgeDetect.h>
#include <RU/pixelfunc/RU_AddFunc.h>
#include <RU/pixelfunc/RU_ColorCurveFunc.h>
#include <RU/pixelfunc/RU_GammaFunc.h>
#include <RU/pixelfunc/RU_HSVConvertFunc.h>
#include <RU/pixelfunc/RU_LevelsFunc.h>
#include <RU/pixelfunc/RU_LimitFunc.h>
#include <RU/pixelfunc/RU_MultFunc.h>
#include <RU/pixelfunc/RU_PixelEngine.h>
#include <RU/pixelfunc/RU_SaturationFunc.h>
#include <RU/pixelfunc/RU_SinFunc.h>

#include <memory>

namespace bench {

namespace {

/// An engine over a chain, which it keeps.
Work engine(Planes& planes, RU_PixelFunction* head)
{
    const std::shared_ptr<RU_PixelFunction> chain(head);
    const auto engine = std::make_shared<RU_PixelEngine>(head);
    return
        [chain, engine, &planes] { engine->pixelAdjust(&planes.out, &planes.in, 0.0f, nullptr, 0, nullptr); };
}

Work gammaThenAdd(Planes& planes)
{
    auto* gamma = new RU_GammaFunc(gammaValue);
    gamma->setNext(new RU_AddFunc(addValue));
    return engine(planes, gamma);
}

Work addMultLimit(Planes& planes)
{
    auto* add = new RU_AddFunc(addValue);
    auto* mult = new RU_MultFunc(multValue);
    add->setNext(mult);
    mult->setNext(new RU_LimitFunc(true, 0.0f, true, 1.0f, true));
    return engine(planes, add);
}

Work sine(Planes& planes)
{
    return engine(planes, new RU_SinFunc(sinScale, sinShift));
}

Work gamma(Planes& planes)
{
    return engine(planes, new RU_GammaFunc(gammaValue));
}

Work levels(Planes& planes)
{
    return engine(planes, new RU_LevelsFunc(levelsBlack, levelsWhite, gammaValue, 0.0f, 1.0f, 0.0f, 0.0f,
                                            1.0f, 1.0f, 0.0f, 1.0f));
}

Work curve(Planes& planes)
{
    static RU_ColorCurve curve = fiveKeyCurve();
    return engine(planes, new RU_ColorCurveFunc(&curve));
}

Work saturation(Planes& planes)
{
    return engine(planes, new RU_SaturationFunc);
}

Work adjustHSV(Planes& planes)
{
    constexpr float sat[] = {satScale, 0.0f}, val[] = {valScale, 0.0f};
    return engine(planes, new RU_HSVConvertFunc(RU_HSV_ADJUST, hueShift, sat, val, false));
}

Work edgeDetect(Planes& planes)
{
    return [edge = std::make_shared<RU_EdgeDetect>(), &planes] {
        edge->filter(&planes.out, &planes.region, 0.0f, nullptr, 0, nullptr);
    };
}

} // namespace

const std::vector<Row> rows = {
    {"gamma_add/uint8", PXL_FORMAT_uint8, gammaThenAdd, {hd, small}},
    {"gamma_add/uint16", PXL_FORMAT_uint16, gammaThenAdd, {hd, small}},
    {"gamma_add/half", PXL_FORMAT_half, gammaThenAdd, {hd, small}},
    {"gamma_add/uint32", PXL_FORMAT_uint32, gammaThenAdd},
    {"gamma_add/float", PXL_FORMAT_float32, gammaThenAdd, {hd, small}},
    {"add_mult_limit/float", PXL_FORMAT_float32, addMultLimit, {hd, small}},
    {"sin/float", PXL_FORMAT_float32, sine, {hd, small}},
    {"gamma/float", PXL_FORMAT_float32, gamma, {uhd, small}, 3},
    {"levels/float", PXL_FORMAT_float32, levels, {uhd, small}, 3},
    {"levels/half", PXL_FORMAT_half, levels, {uhd, small}, 3},
    {"curve/float", PXL_FORMAT_float32, curve, {uhd, small}, 3},
    {"curve/half", PXL_FORMAT_half, curve, {uhd, small}, 3},
    {"saturation/float", PXL_FORMAT_float32, saturation, {uhd, small}, 3},
    {"saturation/half", PXL_FORMAT_half, saturation, {uhd, small}, 3},
    {"hsv_adjust/float", PXL_FORMAT_float32, adjustHSV, {uhd, small}, 3},
    {"hsv_adjust/half", PXL_FORMAT_half, adjustHSV, {uhd, small}, 3},
    {"edge_detect/uint8", PXL_FORMAT_uint8, edgeDetect, {hd, small}},
    {"edge_detect/uint16", PXL_FORMAT_uint16, edgeDetect},
    {"edge_detect/half", PXL_FORMAT_half, edgeDetect},
    {"edge_detect/float", PXL_FORMAT_float32, edgeDetect, {hd, small}},
};

} // namespace bench
