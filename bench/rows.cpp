// The rows of the table, and what one writes without a library.
#include <bench/bench.h>

#include <RU/filter/RU_EdgeDetect.h>
#include <RU/pixelfunc/RU_AddFunc.h>
#include <RU/pixelfunc/RU_GammaFunc.h>
#include <RU/pixelfunc/RU_LimitFunc.h>
#include <RU/pixelfunc/RU_MultFunc.h>
#include <RU/pixelfunc/RU_PixelEngine.h>
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

Work edgeDetect(Planes& planes)
{
    return [edge = std::make_shared<RU_EdgeDetect>(), &planes] {
        edge->filter(&planes.out, &planes.region, 0.0f, nullptr, 0, nullptr);
    };
}

/// A formula, value by value: float in float, codes in double.
template <class T, class Compute>
Work loop(Planes& planes, auto formula)
{
    return [&planes, formula] {
        const T* from = static_cast<const T*>(planes.input);
        T* to = static_cast<T*>(planes.output);
        for (int64_t i = 0; i < planes.components(); ++i) {
            constexpr Compute white = PXL_FormatOf<T>::white;
            to[i] = encode<T>(formula(static_cast<Compute>(from[i]) / white));
        }
    };
}

template <class T, class Compute>
Work gammaAddLoop(Planes& planes)
{
    return loop<T, Compute>(planes, [](Compute value) {
        return std::pow(value, Compute{1} / Compute{gammaValue}) + Compute{addValue};
    });
}

Work sineLoop(Planes& planes)
{
    return loop<float, float>(planes, [](float value) { return std::sin(value * sinScale + sinShift); });
}

const bool added = addPeers({
    {"gamma_add/float", "loop over std::pow", gammaAddLoop<float, float>},
    {"gamma_add/uint32", "loop over std::pow", gammaAddLoop<uint32_t, double>},
    {"sin/float", "loop over std::sin", sineLoop},
});

} // namespace

const std::vector<Row> rows = {
    {"gamma_add/uint8", PXL_FORMAT_uint8, gammaThenAdd, true},
    {"gamma_add/uint16", PXL_FORMAT_uint16, gammaThenAdd, true},
    {"gamma_add/half", PXL_FORMAT_half, gammaThenAdd, true},
    {"gamma_add/uint32", PXL_FORMAT_uint32, gammaThenAdd},
    {"gamma_add/float", PXL_FORMAT_float32, gammaThenAdd, true},
    {"add_mult_limit/float", PXL_FORMAT_float32, addMultLimit, true},
    {"sin/float", PXL_FORMAT_float32, sine, true},
    {"edge_detect/uint8", PXL_FORMAT_uint8, edgeDetect, true},
    {"edge_detect/uint16", PXL_FORMAT_uint16, edgeDetect},
    {"edge_detect/half", PXL_FORMAT_half, edgeDetect},
    {"edge_detect/float", PXL_FORMAT_float32, edgeDetect, true},
};

} // namespace bench
