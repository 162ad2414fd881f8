#include <RU/framework/RU_Algorithm.h>

#include <SYS/SYS_Fail.h>
#include <TIL/TIL_Region.h>

#include <algorithm>
#include <iterator>
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

RU_Border RU_Algorithm::border() const
{
    return {};
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

namespace {

bool usesPoints(const TIL_TileList& out)
{
    return out.blackWhitePoints;
}

bool usesPoints(const TIL_Region& out)
{
    return out.plane->usesBlackWhitePoints() != 0;
}

/// A filter takes its input's rows for as long as the output and the border make them: any other region
/// would be read in the wrong places, or behind its end.
template <class Out>
void checkBorder([[maybe_unused]] const RU_Border& border, [[maybe_unused]] const Out* out,
                 [[maybe_unused]] const TIL_Region* in)
{
#if defined(RU_CHECKED)
    if (out == nullptr || in == nullptr)
        return;
    const int needed[] = {out->x1 - border.left, out->y1 - border.bottom, out->x2 + border.right,
                          out->y2 + border.top};
    const int given[] = {in->x1, in->y1, in->x2, in->y2};
    if (!std::equal(std::begin(needed), std::end(needed), given))
        SYSfail(
            "The filter's input has to cover (%d, %d) to (%d, %d), border included; it covers (%d, %d) to "
            "(%d, %d).",
            needed[0], needed[1], needed[2], needed[3], given[0], given[1], given[2], given[3]);
#endif
}

} // namespace

/// What all entry points share: pick the factory by format and range, run its operation, delete it. Without
/// an output or memory nothing is done.
template <class Out, class Allocate, class Run>
int RU_Algorithm::run(const Out* out, void* data, int thread, Allocate allocate, Run work)
try {
    if (out == nullptr || out->plane == nullptr)
        return 0;
    const bool points = usesPoints(*out);
    const auto runOnce = [&](auto* made) {
        const std::unique_ptr<RU_Operation> op(made);
        return made != nullptr ? work(*made) : 0;
    };
    switch (out->plane->formatCode) {
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
        out, data, thread, [this](auto... select) { return allocateGenerator(select...); },
        [&](auto& op) { return op.generate(out, time, thread, context); });
}

int RU_Algorithm::pixelAdjust(TIL_TileList* out, const TIL_TileList* in, float time, void* data, int thread,
                              void* context)
{
    return run(
        out, data, thread, [this](auto... select) { return allocatePixel(select...); },
        [&](auto& op) { return op.pixelAdjust(out, in, time, thread, context); });
}

int RU_Algorithm::filter(TIL_TileList* out, const TIL_Region* in, float time, void* data, int thread,
                         void* context)
{
    checkBorder(border(), out, in);
    return run(
        out, data, thread, [this](auto... select) { return allocateFilter(select...); },
        [&](auto& op) { return op.filter(out, in, time, thread, context); });
}

int RU_Algorithm::filter(TIL_Region* out, const TIL_Region* in, float time, void* data, int thread,
                         void* context)
{
    checkBorder(border(), out, in);
    return run(
        out, data, thread, [this](auto... select) { return allocateFilter(select...); },
        [&](auto& op) { return op.filter(out, in, time, thread, context); });
}

int RU_Algorithm::binary(TIL_TileList* out, const TIL_Region* in1, const TIL_Region* in2, float time,
                         void* data, int thread, void* context)
{
    return run(
        out, data, thread, [this](auto... select) { return allocateBinary(select...); },
        [&](auto& op) { return op.binary(out, in1, in2, time, thread, context); });
}

int RU_Algorithm::binary(TIL_Region* out, const TIL_Region* in1, const TIL_Region* in2, float time,
                         void* data, int thread, void* context)
{
    return run(
        out, data, thread, [this](auto... select) { return allocateBinary(select...); },
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
