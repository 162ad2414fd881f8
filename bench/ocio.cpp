#include <bench/bench.h>

#include <OpenColorIO/OpenColorIO.h>

#include <memory>

namespace OCIO = OCIO_NAMESPACE;

namespace bench::ocio {

/// Runs a transform over the components taken as RGBA pixels, its fastest layout; all four count, though
/// tables pass alpha by. Lossless optimization: no approximations of powers.
Work processor(Planes& planes, const OCIO::ConstTransformRcPtr& transform)
{
    constexpr OCIO::BitDepth depths[] = {OCIO::BIT_DEPTH_UINT8, OCIO::BIT_DEPTH_UINT16,
                                         OCIO::BIT_DEPTH_UINT32, OCIO::BIT_DEPTH_F32, OCIO::BIT_DEPTH_F16};
    const OCIO::BitDepth depth = depths[planes.plane.formatCode];
    const auto image = [&](void* data) {
        return std::make_shared<OCIO::PackedImageDesc>(data, planes.in.width() / 4, planes.in.height(), 4,
                                                       depth, OCIO::AutoStride, OCIO::AutoStride,
                                                       OCIO::AutoStride);
    };
    const auto cpu = OCIO::Config::CreateRaw()->getProcessor(transform)->getOptimizedCPUProcessor(
        depth, depth, OCIO::OPTIMIZATION_LOSSLESS);
    return [cpu, from = image(planes.input), to = image(planes.output)] { cpu->apply(*from, *to); };
}

/// A one-dimensional table with an entry for every code, or every half.
template <class T>
Work table(Planes& planes)
{
    constexpr bool half = std::is_same_v<T, fpreal16>;
    constexpr unsigned long size = 1UL << (8 * sizeof(T));
    const auto lut = OCIO::Lut1DTransform::Create(size, half);
    for (unsigned long i = 0; i < size; ++i) {
        const double value =
            half ? SYShalfValue(static_cast<uint16_t>(i)) : static_cast<double>(i) / (size - 1);
        const float result =
            value >= 0.0 && std::isfinite(value) ? static_cast<float>(gammaAdd(value)) : 0.0f;
        lut->setValue(i, result, result, result);
    }
    return processor(planes, lut);
}

/// A power and an offset.
Work power(Planes& planes)
{
    constexpr double powers[] = {1.0 / gammaValue, 1.0 / gammaValue, 1.0 / gammaValue, 1.0 / gammaValue};
    constexpr double offsets[] = {addValue, addValue, addValue, addValue};
    const auto exponent = OCIO::ExponentTransform::Create();
    exponent->setValue(powers);
    const auto offset = OCIO::MatrixTransform::Create();
    offset->setOffset(offsets);
    const auto both = OCIO::GroupTransform::Create();
    both->appendTransform(exponent);
    both->appendTransform(offset);
    return processor(planes, both);
}

const bool added = addPeers({
    {"gamma_add/uint8", "OCIO Lut1D", table<uint8_t>, true},
    {"gamma_add/uint16", "OCIO Lut1D", table<uint16_t>, true},
    {"gamma_add/half", "OCIO Lut1D", table<fpreal16>, true},
    {"gamma_add/float", "OCIO Exponent, Matrix", power},
});

} // namespace bench::ocio
