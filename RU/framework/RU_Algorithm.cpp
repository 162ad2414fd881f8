#include <RU/framework/RU_Algorithm.h>

#include <TIL/TIL_Region.h>

#include <memory>
#include <new>

bool (*RU_Algorithm::copInterruptCheck)(void*, int) = nullptr;
void* RU_Algorithm::interruptData[RU_Algorithm::maxThreads] = {};

/// Keeps a call's token in the interrupt table while the call runs.
class RU_Algorithm::InterruptScope
{
public:
    InterruptScope(void* data, int thread)
        : entry_(data != nullptr && thread >= 0 ? &interruptData[thread] : nullptr)
    {
        if (entry_ != nullptr)
            *entry_ = data;
    }
    ~InterruptScope()
    {
        if (entry_ != nullptr)
            *entry_ = nullptr;
    }
    InterruptScope(const InterruptScope&) = delete;
    InterruptScope& operator=(const InterruptScope&) = delete;

private:
    void** entry_;
};

RU_Algorithm::~RU_Algorithm() = default;

int RU_Algorithm::initialize(float)
{
    return 1;
}

#define RU_DEFINE_FACTORIES(CODE, T, WHITE, NAME, FAMILY)                                                    \
    RU_##FAMILY##Op<T, true>* RU_Algorithm::allocate##FAMILY(T)                                              \
    {                                                                                                        \
        return new (std::nothrow) RU_##FAMILY##Op<T, true>(this);                                            \
    }                                                                                                        \
    RU_##FAMILY##Op<T, false>* RU_Algorithm::allocate##FAMILY(T, int)                                        \
    {                                                                                                        \
        return new (std::nothrow) RU_##FAMILY##Op<T, false>(this);                                           \
    }

PXL_FOR_EACH_FORMAT(RU_DEFINE_FACTORIES, Generator)
PXL_FOR_EACH_FORMAT(RU_DEFINE_FACTORIES, Pixel)
PXL_FOR_EACH_FORMAT(RU_DEFINE_FACTORIES, Filter)
PXL_FOR_EACH_FORMAT(RU_DEFINE_FACTORIES, Binary)

#undef RU_DEFINE_FACTORIES

/// What all entry points share: pick the factory by format and range, run its operation, delete it. Without
/// memory nothing is done.
template <class Allocate, class Run>
int RU_Algorithm::run(const TIL_Plane& plane, bool points, void* data, int thread, Allocate allocate,
                      Run work)
try {
    const auto runOnce = [&](auto* made) {
        const std::unique_ptr<RU_Operation> op(made);
        return made != nullptr ? work(*made) : 0;
    };
    switch (plane.formatCode) {
#define RU_CASE(CODE, T, WHITE, NAME)                                                                        \
    case CODE: {                                                                                             \
        const InterruptScope scope(data, thread);                                                            \
        return points ? runOnce(allocate(static_cast<T>(0), 0)) : runOnce(allocate(static_cast<T>(0)));      \
    }
        PXL_FOR_EACH_FORMAT(RU_CASE)
#undef RU_CASE
    default:
        return 0;
    }
} catch (const std::bad_alloc&) {
    return 0;
}

int RU_Algorithm::generate(TIL_TileList* out, float time, void* data, int thread, void* context)
{
    return run(
        *out->plane, out->blackWhitePoints, data, thread,
        [this](auto... select) { return allocateGenerator(select...); },
        [&](auto& op) { return op.generate(out, time, thread, context); });
}

int RU_Algorithm::pixelAdjust(TIL_TileList* out, const TIL_TileList* in, float time, void* data, int thread,
                              void* context)
{
    return run(
        *out->plane, out->blackWhitePoints, data, thread,
        [this](auto... select) { return allocatePixel(select...); },
        [&](auto& op) { return op.pixelAdjust(out, in, time, thread, context); });
}

int RU_Algorithm::filter(TIL_TileList* out, const TIL_Region* in, float time, void* data, int thread,
                         void* context)
{
    return run(
        *out->plane, out->blackWhitePoints, data, thread,
        [this](auto... select) { return allocateFilter(select...); },
        [&](auto& op) { return op.filter(out, in, time, thread, context); });
}

int RU_Algorithm::filter(TIL_Region* out, const TIL_Region* in, float time, void* data, int thread,
                         void* context)
{
    return run(
        *out->plane, out->plane->usesBlackWhitePoints() != 0, data, thread,
        [this](auto... select) { return allocateFilter(select...); },
        [&](auto& op) { return op.filter(out, in, time, thread, context); });
}

int RU_Algorithm::binary(TIL_TileList* out, const TIL_Region* in1, const TIL_Region* in2, float time,
                         void* data, int thread, void* context)
{
    return run(
        *out->plane, out->blackWhitePoints, data, thread,
        [this](auto... select) { return allocateBinary(select...); },
        [&](auto& op) { return op.binary(out, in1, in2, time, thread, context); });
}

int RU_Algorithm::binary(TIL_Region* out, const TIL_Region* in1, const TIL_Region* in2, float time,
                         void* data, int thread, void* context)
{
    return run(
        *out->plane, out->plane->usesBlackWhitePoints() != 0, data, thread,
        [this](auto... select) { return allocateBinary(select...); },
        [&](auto& op) { return op.binary(out, in1, in2, time, thread, context); });
}

void RU_Algorithm::setInterruptCallback(bool (*callback)(void* data, int thread))
{
    copInterruptCheck = callback;
}

bool RU_Algorithm::interruptCheck(int thread)
{
    if (copInterruptCheck == nullptr || thread < 0 || interruptData[thread] == nullptr)
        return false;
    return copInterruptCheck(interruptData[thread], thread);
}
