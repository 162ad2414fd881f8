// The rows of the table.
#include <bench/areas.h>
#include <bench/fills.h>

#include <RU/composite/RU_Blend.h>
#include <RU/composite/RU_Composite.h>
#include <RU/filter/RU_Degrain.h>
#include <RU/filter/RU_EdgeDetect.h>
#include <RU/filter/RU_Feather.h>
#include <RU/filter/RU_Morphology.h>
#include <RU/filter/RU_SubPixel.h>
#include <RU/generate/RU_Noise.h>
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

#include <algorithm>
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

Work gammaThenHSV(Planes& planes)
{
    constexpr float sat[] = {satScale, 0.0f}, val[] = {valScale, 0.0f};
    auto* gamma = new RU_GammaFunc(gammaValue);
    gamma->setNext(new RU_HSVConvertFunc(RU_HSV_ADJUST, hueShift, sat, val, false));
    return engine(planes, gamma);
}

Work edgeDetect(Planes& planes)
{
    return [edge = std::make_shared<RU_EdgeDetect>(), &planes] {
        edge->filter(&planes.out, &planes.region, 0.0f, nullptr, 0, nullptr);
    };
}

Work filterAround(Planes& planes, const std::shared_ptr<RU_Algorithm>& algorithm)
{
    return [algorithm, &planes, around = planes.around(algorithm->border())] {
        algorithm->filter(&planes.out, around.get(), 0.0f, nullptr, 0, nullptr);
    };
}

Work degrain(Planes& planes)
{
    return filterAround(planes, std::make_shared<RU_Degrain>());
}

Work shift(Planes& planes)
{
    const auto shift = std::make_shared<RU_SubPixel>();
    shift->setWeights(shiftX, shiftY);
    return filterAround(planes, shift);
}

template <int Radius>
Work feather(Planes& planes)
{
    const auto feather = std::make_shared<RU_Feather>();
    feather->radiusX = feather->radiusY = Radius;
    feather->initialize(0.0f);
    return filterAround(planes, feather);
}

template <UT_NoiseType Type, int Octaves>
Work noise(Planes& planes)
{
    const auto noise = std::make_shared<RU_Noise>();
    noise->type = Type;
    noise->turbulence = Octaves;
    noise->periodX = noise->periodY = noiseCell;
    return [noise, &planes] { noise->generate(&planes.out, 0.0f, nullptr, 0, nullptr); };
}

/// The output is the plane between the passes, too.
template <class T, int Size>
Work dilate(Planes& planes)
{
    return [&planes] {
        T* output = static_cast<T*>(planes.output);
        RU_Morphology::dilate(static_cast<const T*>(planes.input), output, output, planes.in.width(),
                              planes.in.height(), Size, Size);
    };
}

/// Over, piece by piece as a host hands over its tiles; the last component is the alpha.
template <class T>
Work over(Planes& planes)
{
    return [&planes, &second = planes.second()] {
        T* to[4] = {};
        const T* from[4] = {};
        for (int c = 0; c < 4; ++c) {
            planes.out.tiles[c]->getImageData(to[c]);
            from[c] = static_cast<const T*>(second.region.getImageData(c));
        }
        for (int at = 0; at < planes.out.itemCount; at += pieceLength) {
            const int count = std::min(pieceLength, planes.out.itemCount - at);
            for (int c = 0; c < 3; ++c)
                RU_Composite::composite(RU_COMP_OVER, count, 1, to[c] + at, to[3] + at, from[c] + at,
                                        from[3] + at);
            RU_Composite::compositeAlpha(RU_COMP_OVER, count, 1, to[3] + at, from[3] + at);
        }
    };
}

/// An operation that reads no alpha, on a single component.
template <class T, RU_CompositeType Type>
Work composite(Planes& planes)
{
    return [&planes, from = static_cast<const T*>(planes.second().pixels)] {
        const T* none = nullptr;
        RU_Composite::composite(Type, planes.out.width(), planes.out.height(), static_cast<T*>(planes.output),
                                none, from, none);
    };
}

Work blendMasked(Planes& planes)
{
    return [blend = std::make_shared<RU_Blend>(), &planes, &second = planes.second()] {
        blend->binary(&planes.out, &second.region, &second.mask, 0.0f, nullptr, 0, nullptr);
    };
}

Work blendWeighted(Planes& planes)
{
    const auto blend = std::make_shared<RU_Blend>();
    blend->blendFactor = mixWeight;
    return [blend, &planes, &second = planes.second()] {
        blend->filter(&planes.out, &second.region, 0.0f, nullptr, 0, nullptr);
    };
}

const std::vector<Size> allSizes = {hd, uhd, small};

Row onTheClock(Row row)
{
    row.onTheClock = true;
    return row;
}

Row withErrors(Row row, std::vector<double> (*exact)(const TIL_TileList& image))
{
    row.exact = exact;
    return row;
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
    {"gamma_hsv/uint16", PXL_FORMAT_uint16, gammaThenHSV, {uhd, small}, 3},
    {"edge_detect/uint8", PXL_FORMAT_uint8, edgeDetect, {hd, small}},
    {"edge_detect/uint16", PXL_FORMAT_uint16, edgeDetect},
    {"edge_detect/half", PXL_FORMAT_half, edgeDetect},
    {"edge_detect/float", PXL_FORMAT_float32, edgeDetect, {hd, small}},
    {"dilate_3/uint8", PXL_FORMAT_uint8, dilate<uint8_t, 3>, {hd, small}},
    {"dilate_3/uint16", PXL_FORMAT_uint16, dilate<uint16_t, 3>, {hd, small}},
    {"dilate_3/float", PXL_FORMAT_float32, dilate<float, 3>, {hd, small}},
    {"dilate_15/uint8", PXL_FORMAT_uint8, dilate<uint8_t, 15>},
    {"dilate_15/uint16", PXL_FORMAT_uint16, dilate<uint16_t, 15>},
    {"dilate_15/float", PXL_FORMAT_float32, dilate<float, 15>},
    {"dilate_61/uint8", PXL_FORMAT_uint8, dilate<uint8_t, 61>},
    {"dilate_61/uint16", PXL_FORMAT_uint16, dilate<uint16_t, 61>},
    {"dilate_61/float", PXL_FORMAT_float32, dilate<float, 61>},
    {"degrain/uint8", PXL_FORMAT_uint8, degrain},
    {"degrain/uint16", PXL_FORMAT_uint16, degrain},
    {"degrain/float", PXL_FORMAT_float32, degrain},
    {"shift/uint8", PXL_FORMAT_uint8, shift},
    {"shift/uint16", PXL_FORMAT_uint16, shift},
    {"shift/half", PXL_FORMAT_half, shift},
    {"shift/float", PXL_FORMAT_float32, shift},
    {"feather_5/uint8", PXL_FORMAT_uint8, feather<5>},
    {"feather_5/float", PXL_FORMAT_float32, feather<5>},
    {"feather_15/uint8", PXL_FORMAT_uint8, feather<15>},
    {"feather_15/float", PXL_FORMAT_float32, feather<15>},
    {"reduce_4_box/float", PXL_FORMAT_float32, areas<quarter, UT_FILTER_BOX>},
    {"reduce_37_box/float", PXL_FORMAT_float32, areas<by37, UT_FILTER_BOX>},
    {"reduce_4_gaussian/float", PXL_FORMAT_float32, areas<quarter, UT_FILTER_GAUSSIAN>},
    {"reduce_4_lanczos3/float", PXL_FORMAT_float32, areas<quarter, UT_FILTER_LANCZOS3_SAMPLED>},
    {"warp_box/float", PXL_FORMAT_float32, areas<leaning, UT_FILTER_BOX>},
    {"warp_gaussian/float", PXL_FORMAT_float32, areas<leaning, UT_FILTER_GAUSSIAN>},
    {"noise_perlin/uint8", PXL_FORMAT_uint8, noise<UT_NOISE_PERLIN, 1>},
    {"noise_perlin/float", PXL_FORMAT_float32, noise<UT_NOISE_PERLIN, 1>, {hd, small}},
    {"noise_perlin_4/float", PXL_FORMAT_float32, noise<UT_NOISE_PERLIN, 4>, {hd, small}},
    {"noise_sparse/float", PXL_FORMAT_float32, noise<UT_NOISE_SPARSE, 1>},
    {"noise_cellular/float", PXL_FORMAT_float32, noise<UT_NOISE_CELLULAR, 1>},
    withErrors({"fill_blob/uint8", PXL_FORMAT_uint8, fill<Shape::blob, 8>}, coverageOf<Shape::blob>),
    withErrors({"fill_blob/float", PXL_FORMAT_float32, fill<Shape::blob, 8>}, coverageOf<Shape::blob>),
    withErrors({"fill_blob_4x4/uint8", PXL_FORMAT_uint8, fill<Shape::blob, 4>}, coverageOf<Shape::blob>),
    withErrors({"fill_blob_4x4/float", PXL_FORMAT_float32, fill<Shape::blob, 4>}, coverageOf<Shape::blob>),
    onTheClock({"fill_blob_2_threads/uint8", PXL_FORMAT_uint8, fill<Shape::blob, 8, 2>}),
    onTheClock({"fill_blob_2_threads/float", PXL_FORMAT_float32, fill<Shape::blob, 8, 2>}),
    {"prepare_blob/float", PXL_FORMAT_float32, prepareFill<Shape::blob>},
    withErrors({"fill_star/uint8", PXL_FORMAT_uint8, fill<Shape::star, 8>}, coverageOf<Shape::star>),
    withErrors({"fill_star/float", PXL_FORMAT_float32, fill<Shape::star, 8>}, coverageOf<Shape::star>),
    withErrors({"fill_star_4x4/uint8", PXL_FORMAT_uint8, fill<Shape::star, 4>}, coverageOf<Shape::star>),
    withErrors({"fill_star_4x4/float", PXL_FORMAT_float32, fill<Shape::star, 4>}, coverageOf<Shape::star>),
    onTheClock({"fill_star_2_threads/uint8", PXL_FORMAT_uint8, fill<Shape::star, 8, 2>}),
    onTheClock({"fill_star_2_threads/float", PXL_FORMAT_float32, fill<Shape::star, 8, 2>}),
    {"prepare_star/float", PXL_FORMAT_float32, prepareFill<Shape::star>},
    {"fill_triangles/uint8", PXL_FORMAT_uint8, fill<Shape::triangles, 8>},
    {"fill_triangles/float", PXL_FORMAT_float32, fill<Shape::triangles, 8>},
    {"fill_triangles_4x4/uint8", PXL_FORMAT_uint8, fill<Shape::triangles, 4>},
    {"fill_triangles_4x4/float", PXL_FORMAT_float32, fill<Shape::triangles, 4>},
    onTheClock({"fill_triangles_2_threads/uint8", PXL_FORMAT_uint8, fill<Shape::triangles, 8, 2>}),
    onTheClock({"fill_triangles_2_threads/float", PXL_FORMAT_float32, fill<Shape::triangles, 8, 2>}),
    {"prepare_triangles/float", PXL_FORMAT_float32, prepareFill<Shape::triangles>},
    {"over/uint8", PXL_FORMAT_uint8, over<uint8_t>, allSizes, 4, moveWithAlpha},
    {"over/uint16", PXL_FORMAT_uint16, over<uint16_t>, allSizes, 4, moveWithAlpha},
    {"over/float", PXL_FORMAT_float32, over<float>, allSizes, 4, moveWithAlpha},
    {"screen/uint8", PXL_FORMAT_uint8, composite<uint8_t, RU_COMP_SCREEN>, allSizes, 1, movePair},
    {"screen/uint16", PXL_FORMAT_uint16, composite<uint16_t, RU_COMP_SCREEN>, allSizes, 1, movePair},
    {"screen/float", PXL_FORMAT_float32, composite<float, RU_COMP_SCREEN>, allSizes, 1, movePair},
    {"add/uint8", PXL_FORMAT_uint8, composite<uint8_t, RU_COMP_ADD>, allSizes, 1, movePair},
    {"add/uint16", PXL_FORMAT_uint16, composite<uint16_t, RU_COMP_ADD>, allSizes, 1, movePair},
    {"add/float", PXL_FORMAT_float32, composite<float, RU_COMP_ADD>, allSizes, 1, movePair},
    {"min/uint8", PXL_FORMAT_uint8, composite<uint8_t, RU_COMP_MINIMUM>, allSizes, 1, movePair},
    {"min/uint16", PXL_FORMAT_uint16, composite<uint16_t, RU_COMP_MINIMUM>, allSizes, 1, movePair},
    {"min/float", PXL_FORMAT_float32, composite<float, RU_COMP_MINIMUM>, allSizes, 1, movePair},
    {"blend_mask/uint8", PXL_FORMAT_uint8, blendMasked, allSizes, 4, moveWithMask},
    {"blend_mask/uint16", PXL_FORMAT_uint16, blendMasked, allSizes, 4, moveWithMask},
    {"blend_mask/half", PXL_FORMAT_half, blendMasked, allSizes, 4, moveWithMask},
    {"blend_mask/float", PXL_FORMAT_float32, blendMasked, allSizes, 4, moveWithMask},
    {"blend/uint8", PXL_FORMAT_uint8, blendWeighted, allSizes, 1, movePair},
    {"blend/uint16", PXL_FORMAT_uint16, blendWeighted, allSizes, 1, movePair},
    {"blend/float", PXL_FORMAT_float32, blendWeighted, allSizes, 1, movePair},
};

} // namespace bench
