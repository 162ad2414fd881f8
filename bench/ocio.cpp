#include <bench/bench.h>

#include <OpenColorIO/OpenColorIO.h>

#include <array>
#include <memory>

namespace OCIO = OCIO_NAMESPACE;

namespace bench::ocio {

/// Runs a transform over the values taken as RGBA pixels, its fastest layout; all four count, though
/// tables and curves pass alpha by. Where the pixels matter they are RGB. Lossless optimization: no
/// approximations of powers.
Work processor(Planes& planes, const OCIO::ConstTransformRcPtr& transform, int channels = 4)
{
    constexpr OCIO::BitDepth depths[] = {OCIO::BIT_DEPTH_UINT8, OCIO::BIT_DEPTH_UINT16,
                                         OCIO::BIT_DEPTH_UINT32, OCIO::BIT_DEPTH_F32, OCIO::BIT_DEPTH_F16};
    const int width = planes.in.width() * planes.components() / channels;
    const OCIO::BitDepth depth = depths[planes.plane.formatCode];
    const auto image = [&](void* data) {
        return std::make_shared<OCIO::PackedImageDesc>(data, width, planes.in.height(), channels, depth,
                                                       OCIO::AutoStride, OCIO::AutoStride, OCIO::AutoStride);
    };
    const auto cpu = OCIO::Config::CreateRaw()->getProcessor(transform)->getOptimizedCPUProcessor(
        depth, depth, OCIO::OPTIMIZATION_LOSSLESS);
    return [cpu, from = image(planes.input), to = image(planes.output)] { cpu->apply(*from, *to); };
}

/// A one-dimensional table with an entry for every code, or every half.
template <class T, Formula formula>
Work table(Planes& planes)
{
    constexpr bool half = std::is_same_v<T, fpreal16>;
    constexpr unsigned long size = 1UL << (8 * sizeof(T));
    const auto lut = OCIO::Lut1DTransform::Create(size, half);
    for (unsigned long i = 0; i < size; ++i) {
        const double value =
            half ? SYShalfValue(static_cast<uint16_t>(i)) : static_cast<double>(i) / (size - 1);
        const float result = value >= 0.0 && std::isfinite(value) ? static_cast<float>(formula(value)) : 0.0f;
        lut->setValue(i, result, result, result);
    }
    return processor(planes, lut);
}

OCIO::MatrixTransformRcPtr matrix(const std::array<double, 4>& scales, const std::array<double, 4>& offsets)
{
    const auto matrix = OCIO::MatrixTransform::Create();
    double diagonal[16] = {};
    for (size_t i = 0; i < 4; ++i)
        diagonal[5 * i] = scales[i];
    matrix->setMatrix(diagonal);
    matrix->setOffset(offsets.data());
    return matrix;
}

OCIO::GroupTransformRcPtr group(std::initializer_list<OCIO::TransformRcPtr> steps)
{
    const auto all = OCIO::GroupTransform::Create();
    for (const OCIO::TransformRcPtr& step : steps)
        all->appendTransform(step);
    return all;
}

OCIO::ExponentTransformRcPtr exponent()
{
    constexpr double powers[] = {1.0 / gammaValue, 1.0 / gammaValue, 1.0 / gammaValue, 1.0 / gammaValue};
    const auto exponent = OCIO::ExponentTransform::Create();
    exponent->setValue(powers);
    return exponent;
}

/// A power, then a line.
Work power(Planes& planes, double factor, double addend)
{
    if (factor == 1.0 && addend == 0.0)
        return processor(planes, exponent());
    return processor(planes, group({exponent(), matrix({factor, factor, factor, factor},
                                                       {addend, addend, addend, addend})}));
}

Work curve(Planes& planes)
{
    const auto keys = OCIO::GradingBSplineCurve::Create(std::size(curveKeys));
    for (size_t i = 0; i < std::size(curveKeys); ++i)
        keys->getControlPoint(i) = {curveKeys[i][0], curveKeys[i][1]};
    const auto transform = OCIO::GradingRGBCurveTransform::Create(OCIO::GRADING_VIDEO);
    const auto none = OCIO::GradingBSplineCurve::Create({{0.0f, 0.0f}, {1.0f, 1.0f}});
    transform->setValue(OCIO::GradingRGBCurve::Create(keys, keys, keys, none));
    return processor(planes, transform);
}

/// Without the clamp of the saturation, for which there is no transform.
Work adjustHSV(Planes& planes, bool bent)
{
    const auto to = OCIO::FixedFunctionTransform::Create(OCIO::FIXED_FUNCTION_RGB_TO_HSV);
    const auto from = OCIO::FixedFunctionTransform::Create(OCIO::FIXED_FUNCTION_RGB_TO_HSV);
    from->setDirection(OCIO::TRANSFORM_DIR_INVERSE);
    const auto change = matrix({1.0, satScale, valScale, 1.0}, {hueShift / 360.0, 0.0, 0.0, 0.0});
    return processor(planes, bent ? group({exponent(), to, change, from}) : group({to, change, from}), 3);
}

Work plainHSV(Planes& planes)
{
    return adjustHSV(planes, false);
}

Work bentHSV(Planes& planes)
{
    return adjustHSV(planes, true);
}

const bool added = addPeers({
    {"gamma_add/uint8", "OCIO Lut1D", table<uint8_t, gammaAdd>, Agreement::allButAlpha},
    {"gamma_add/uint16", "OCIO Lut1D", table<uint16_t, gammaAdd>, Agreement::allButAlpha},
    {"gamma_add/half", "OCIO Lut1D", table<fpreal16, gammaAdd>, Agreement::allButAlpha},
    {"gamma_add/float", "OCIO Exponent, Matrix", [](Planes& planes) { return power(planes, 1.0, addValue); }},
    {"gamma/float", "OCIO Exponent", [](Planes& planes) { return power(planes, 1.0, 0.0); }},
    {"levels/float", "OCIO Exponent, Matrix",
     [](Planes& planes) { return power(planes, levelsLine().factor, levelsLine().addend); }},
    {"levels/half", "OCIO Lut1D", table<fpreal16, levelsValue>, Agreement::allButAlpha},
    {"curve/float", "OCIO GradingRGBCurve", curve, Agreement::none},
    {"curve/half", "OCIO Lut1D", table<fpreal16, curveValue>, Agreement::allButAlpha},
    {"hsv_adjust/float", "OCIO FixedFunction, Matrix", plainHSV, Agreement::none},
    {"hsv_adjust/half", "OCIO FixedFunction, Matrix", plainHSV, Agreement::none},
    {"gamma_hsv/uint16", "OCIO Exponent, FixedFunction", bentHSV, Agreement::none},
});

} // namespace bench::ocio
