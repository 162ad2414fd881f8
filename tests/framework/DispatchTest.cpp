#include <RU/framework/RU_Factories.h>
#include <TIL/TIL_Region.h>
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <set>
#include <tuple>
#include <utility>

namespace {

enum class Family { generator, pixel, filter, binary };
enum class Shape { tiles, region };
using Factory = std::tuple<Family, int, bool>; // family, format code, full range

/// What the last operation was, and what it was called with.
struct Call
{
    Factory factory;
    Shape shape = Shape::tiles;
    std::array<const void*, 3> images{}; // output, inputs
    float time = 0.0f;
    int thread = 0;
    const void* context = nullptr;
    const RU_Algorithm* algorithm = nullptr;

    bool operator==(const Call&) const = default;
};

Call last;
int living = 0;
std::function<void(int thread)> duringCall = [](int) {};

struct Counted
{
    Counted() { ++living; }
    ~Counted() { --living; }
};

template <class Base, Family family, class T, bool F>
struct Recording : Base, Counted
{
    using Base::Base;
    int record(Shape shape, std::array<const void*, 3> images, float time, int thread, void* context)
    {
        last = {{family, PXL_FormatOf<T>::code, F}, shape, images, time, thread, context, this->algorithm_};
        duringCall(thread);
        return 17;
    }
};

template <class T, bool F>
struct GeneratorOp : Recording<RU_GeneratorOp<T, F>, Family::generator, T, F>
{
    using GeneratorOp::Recording::Recording;
    int generate(TIL_TileList* out, float time, int thread, void* context) override
    {
        return this->record(Shape::tiles, {out}, time, thread, context);
    }
};

template <class T, bool F>
struct PixelOp : Recording<RU_PixelOp<T, F>, Family::pixel, T, F>
{
    using PixelOp::Recording::Recording;
    int pixelAdjust(TIL_TileList* out, const TIL_TileList* in, float time, int thread, void* context) override
    {
        return this->record(Shape::tiles, {out, in}, time, thread, context);
    }
};

template <class T, bool F>
struct FilterOp : Recording<RU_FilterOp<T, F>, Family::filter, T, F>
{
    using FilterOp::Recording::Recording;
    int filter(TIL_Region* out, const TIL_Region* in, float time, int thread, void* context) override
    {
        return this->record(Shape::region, {out, in}, time, thread, context);
    }
    int filter(TIL_TileList* out, const TIL_Region* in, float time, int thread, void* context) override
    {
        return this->record(Shape::tiles, {out, in}, time, thread, context);
    }
};

template <class T, bool F>
struct BinaryOp : Recording<RU_BinaryOp<T, F>, Family::binary, T, F>
{
    using BinaryOp::Recording::Recording;
    int binary(TIL_Region* out, const TIL_Region* in1, const TIL_Region* in2, float time, int thread,
               void* context) override
    {
        return this->record(Shape::region, {out, in1, in2}, time, thread, context);
    }
    int binary(TIL_TileList* out, const TIL_Region* in1, const TIL_Region* in2, float time, int thread,
               void* context) override
    {
        return this->record(Shape::tiles, {out, in1, in2}, time, thread, context);
    }
};

/// Supports every family.
class Recorder
    : public RU_GeneratorFactories<
          GeneratorOp, RU_PixelFactories<PixelOp, RU_FilterFactories<FilterOp, RU_BinaryFactories<BinaryOp>>>>
{
};

/// Refuses everything by null.
class Refuser : public RU_Algorithm
{
#define REFUSE(CODE, T, WHITE, NAME, FAMILY)                                                                 \
    RU_##FAMILY##Op<T, true>* allocate##FAMILY(T) override                                                   \
    {                                                                                                        \
        return nullptr;                                                                                      \
    }                                                                                                        \
    RU_##FAMILY##Op<T, false>* allocate##FAMILY(T, int) override                                             \
    {                                                                                                        \
        return nullptr;                                                                                      \
    }
    PXL_FOR_EACH_FORMAT(REFUSE, Generator)
    PXL_FOR_EACH_FORMAT(REFUSE, Pixel)
    PXL_FOR_EACH_FORMAT(REFUSE, Filter)
    PXL_FOR_EACH_FORMAT(REFUSE, Binary)
#undef REFUSE
};

/// The six entry points over one plane. Mode and plane of the inputs, and of the plane where the tile list
/// has its own, are the opposite of the output's: only the output's count.
class Entries
{
public:
    Entries(int format, bool points)
    {
        inPlane.blackWhitePoints = !points;
        listPlane.formatCode = regionPlane.formatCode = static_cast<unsigned char>(format);
        listPlane.blackWhitePoints = !points;
        regionPlane.blackWhitePoints = points;
        list = TIL_TileList(listPlane, 0, 0, 1, 1);
        list.blackWhitePoints = points;
        region.plane = &regionPlane;
        in1.plane = in2.plane = &inPlane;
        inList.plane = &inPlane;
    }

    struct Entry
    {
        Family family;
        Shape shape;
        std::array<const void*, 3> images;
        std::function<int(RU_Algorithm&, void* data, int thread)> run;
    };

    std::vector<Entry> all()
    {
        using A = RU_Algorithm;
        return {{Family::generator,
                 Shape::tiles,
                 {&list},
                 [&](A& a, void* d, int t) { return a.generate(&list, time, d, t, &context); }},
                {Family::pixel,
                 Shape::tiles,
                 {&list, &inList},
                 [&](A& a, void* d, int t) { return a.pixelAdjust(&list, &inList, time, d, t, &context); }},
                {Family::filter,
                 Shape::tiles,
                 {&list, &in1},
                 [&](A& a, void* d, int t) { return a.filter(&list, &in1, time, d, t, &context); }},
                {Family::filter,
                 Shape::region,
                 {&region, &in1},
                 [&](A& a, void* d, int t) { return a.filter(&region, &in1, time, d, t, &context); }},
                {Family::binary,
                 Shape::tiles,
                 {&list, &in1, &in2},
                 [&](A& a, void* d, int t) { return a.binary(&list, &in1, &in2, time, d, t, &context); }},
                {Family::binary, Shape::region, {&region, &in1, &in2}, [&](A& a, void* d, int t) {
                     return a.binary(&region, &in1, &in2, time, d, t, &context);
                 }}};
    }

    TIL_Plane listPlane, regionPlane, inPlane;
    TIL_TileList list, inList;
    TIL_Region region, in1, in2;
    float time = 2.5f;
    int context = 0;
};

bool stopOnThree(void* data, int thread)
{
    return *static_cast<bool*>(data) && thread == 3;
}

class Interrupt : public ::testing::Test
{
    void SetUp() override { RU_Algorithm::setInterruptCallback(stopOnThree); }
    void TearDown() override
    {
        RU_Algorithm::setInterruptCallback(nullptr);
        duringCall = [](int) {};
    }
};

} // namespace

TEST(Dispatch, EveryFormatRangeAndEntryReachesItsOwnOperation)
{
    Recorder recorder;
    std::set<Factory> reached;
    int calls = 0;
    for (int format = 0; format < 5; ++format) {
        for (const bool points : {false, true}) {
            Entries entries(format, points);
            for (const auto& entry : entries.all()) {
                EXPECT_EQ(entry.run(recorder, nullptr, 5), 17);
                const Call expected{{entry.family, format, !points},
                                    entry.shape,
                                    entry.images,
                                    2.5f,
                                    5,
                                    &entries.context,
                                    &recorder};
                EXPECT_TRUE(last == expected) << "format " << format << ", entry " << calls % 6;
                EXPECT_EQ(living, 0) << "the operation has to be deleted";
                reached.insert(last.factory);
                ++calls;
            }
        }
    }
    EXPECT_EQ(calls, 60);
    EXPECT_EQ(reached.size(), 40u);
}

TEST(Dispatch, DefaultsNullFactoriesAndUnknownFormatsDoNothing)
{
    RU_Algorithm base;
    Refuser refuser;
    Recorder recorder;
    EXPECT_EQ(base.initialize(1.0f), 1);
    for (int format = 0; format < 5; ++format)
        for (const bool points : {false, true})
            for (Entries entries(format, points); const auto& entry : entries.all()) {
                EXPECT_EQ(entry.run(base, nullptr, 0), 0);
                EXPECT_EQ(entry.run(refuser, nullptr, 0), 0);
            }
    last = {};
    for (const int format : {5, 7, 255})
        for (Entries entries(format, false); const auto& entry : entries.all())
            EXPECT_EQ(entry.run(recorder, nullptr, 0), 0);
    EXPECT_TRUE(last == Call{});
}

TEST_F(Interrupt, AnswersWhileACallWithATokenRunsOnTheThread)
{
    Recorder recorder;
    for (bool stop : {false, true}) {
        for (Entries entries(0, false); const auto& entry : entries.all()) {
            int asked = 0;
            duringCall = [&](int) {
                EXPECT_EQ(RU_Algorithm::interruptCheck(3), stop);
                EXPECT_FALSE(RU_Algorithm::interruptCheck(2));
                EXPECT_FALSE(RU_Algorithm::interruptCheck(-1));
                ++asked;
            };
            EXPECT_FALSE(RU_Algorithm::interruptCheck(3));
            entry.run(recorder, &stop, 3);
            EXPECT_FALSE(RU_Algorithm::interruptCheck(3)) << "cleared after the call";

            duringCall = [&](int thread) { EXPECT_FALSE(RU_Algorithm::interruptCheck(thread)); };
            entry.run(recorder, nullptr, 3);
            entry.run(recorder, &stop, -1);
            EXPECT_EQ(asked, 1);

            Refuser refuser;
            entry.run(refuser, &stop, 3);
            EXPECT_FALSE(RU_Algorithm::interruptCheck(3));
            RU_Algorithm::setInterruptCallback(nullptr);
            entry.run(recorder, &stop, 3);
            RU_Algorithm::setInterruptCallback(stopOnThree);
        }
    }
}

// Calls nested in a running one show whether they touch its entry of the table.
TEST_F(Interrupt, CallsWithoutTokenOrWithUnknownFormatLeaveTheEntryAlone)
{
    Recorder recorder, nested;
    bool stop = true, other = false;
    int checks = 0;
    bool outer = true;
    duringCall = [&](int) {
        if (!std::exchange(outer, false))
            return;
        for (Entries unknown(7, false); const auto& entry : unknown.all()) {
            EXPECT_EQ(entry.run(nested, &other, 3), 0);
            EXPECT_TRUE(RU_Algorithm::interruptCheck(3));
        }
        for (Entries known(0, false); const auto& entry : known.all()) {
            EXPECT_EQ(entry.run(nested, nullptr, 3), 17);
            EXPECT_TRUE(RU_Algorithm::interruptCheck(3));
            ++checks;
        }
    };
    Entries entries(1, true);
    entries.all().front().run(recorder, &stop, 3);
    EXPECT_EQ(checks, 6);
}
