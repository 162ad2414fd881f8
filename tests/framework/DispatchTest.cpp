#include <RU/framework/RU_Factories.h>
#include <TIL/TIL_Region.h>
#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

namespace {

#define COUNT(...) +1
constexpr int formatCount = PXL_FOR_EACH_FORMAT(COUNT);
#undef COUNT

using Factory = std::tuple<char, int, bool>; // family, format code, full range

/// What the last operation was, and what it was called with: output and inputs, time, thread, context.
using Call = std::tuple<Factory, std::vector<const void*>, float, int, const void*, const RU_Algorithm*>;

Call last;
int living = 0;
std::function<void()> duringCall = [] {};

/// An operation of any family: it overrides what its base has.
template <class Base, char Family, class T, bool F>
struct Recording : Base
{
    explicit Recording(RU_Algorithm* algorithm) : Base(algorithm) { ++living; }
    ~Recording() { --living; }

    using List = TIL_TileList;
    using Region = TIL_Region;
    using In = const TIL_Region;
    int generate(List* o, float t, int n, void* c) { return record({o}, t, n, c); }
    int pixelAdjust(List* o, const List* i, float t, int n, void* c) { return record({o, i}, t, n, c); }
    int filter(Region* o, In* i, float t, int n, void* c) { return record({o, i}, t, n, c); }
    int filter(List* o, In* i, float t, int n, void* c) { return record({o, i}, t, n, c); }
    int binary(Region* o, In* a, In* b, float t, int n, void* c) { return record({o, a, b}, t, n, c); }
    int binary(List* o, In* a, In* b, float t, int n, void* c) { return record({o, a, b}, t, n, c); }
    int record(std::vector<const void*> images, float time, int thread, void* context)
    {
        last = {{Family, PXL_FormatOf<T>::code, F}, images, time, thread, context, this->algorithm_};
        duringCall();
        return 17;
    }
};
template <class T, bool F>
using GeneratorOp = Recording<RU_GeneratorOp<T, F>, 'g', T, F>;
template <class T, bool F>
using PixelOp = Recording<RU_PixelOp<T, F>, 'p', T, F>;
template <class T, bool F>
using FilterOp = Recording<RU_FilterOp<T, F>, 'f', T, F>;
template <class T, bool F>
using BinaryOp = Recording<RU_BinaryOp<T, F>, 'b', T, F>;

using Recorder = RU_GeneratorFactories<
    GeneratorOp, RU_PixelFactories<PixelOp, RU_FilterFactories<FilterOp, RU_BinaryFactories<BinaryOp>>>>;

struct Refuser : RU_Algorithm
{
    using RU_Algorithm::allocatePixel;
    RU_PixelOp<unsigned char, true>* allocatePixel(unsigned char) override { return nullptr; }
};

/// The six entry points over one plane. Mode and plane of the inputs, and of the plane where the tile list
/// has its own, are the opposite of the output's: only the output's count.
struct Entries
{
    struct Entry
    {
        char family;
        std::vector<const void*> images;
        std::function<int(RU_Algorithm&, void* data, int thread)> run;
    };

    Entries(int format, bool points)
    {
        listPlane.formatCode = regionPlane.formatCode = static_cast<unsigned char>(format);
        listPlane.blackWhitePoints = inPlane.blackWhitePoints = !points;
        list.blackWhitePoints = regionPlane.blackWhitePoints = points;
        list.plane = &listPlane;
        region.plane = &regionPlane;
        inList.plane = in1.plane = in2.plane = &inPlane;
    }

    TIL_Plane listPlane, regionPlane, inPlane;
    TIL_TileList list, inList, *out = &list;
    TIL_Region region, in1, in2, *outRegion = &region;
    using A = RU_Algorithm;
    const std::vector<Entry> all = {
        {'g', {out}, [&](A& a, void* d, int t) { return a.generate(out, 2.5f, d, t, this); }},
        {'p',
         {out, &inList},
         [&](A& a, void* d, int t) { return a.pixelAdjust(out, &inList, 2.5f, d, t, this); }},
        {'f', {out, &in1}, [&](A& a, void* d, int t) { return a.filter(out, &in1, 2.5f, d, t, this); }},
        {'f',
         {outRegion, &in1},
         [&](A& a, void* d, int t) { return a.filter(outRegion, &in1, 2.5f, d, t, this); }},
        {'b',
         {out, &in1, &in2},
         [&](A& a, void* d, int t) { return a.binary(out, &in1, &in2, 2.5f, d, t, this); }},
        {'b', {outRegion, &in1, &in2}, [&](A& a, void* d, int t) {
             return a.binary(outRegion, &in1, &in2, 2.5f, d, t, this);
         }}};
};

} // namespace

TEST(Dispatch, EveryFormatRangeAndEntryReachesItsOwnOperation)
{
    Recorder recorder;
    std::set<Factory> reached;
    for (int format = 0; format < formatCount; ++format)
        for (const bool points : {false, true})
            for (Entries entries(format, points); const auto& entry : entries.all) {
                EXPECT_EQ(entry.run(recorder, nullptr, 5), 17);
                const Call expected{
                    {entry.family, format, !points}, entry.images, 2.5f, 5, &entries, &recorder};
                EXPECT_TRUE(last == expected) << "format " << format << ", family " << entry.family;
                EXPECT_EQ(living, 0) << "the operation has to be deleted";
                reached.insert(std::get<Factory>(last));
            }
    EXPECT_EQ(reached.size(), 4u * formatCount * 2);
}

TEST(Dispatch, DefaultsNullFactoriesUnknownFormatsAndMissingOutputsDoNothing)
{
    RU_Algorithm base;
    Refuser refuser;
    Recorder recorder;
    EXPECT_EQ(base.initialize(1.0f), 1);
    last = {};
    for (const int format : {0, 1, 2, 3, 4, formatCount, 255})
        for (const bool points : {false, true})
            for (Entries entries(format, points); const auto& entry : entries.all) {
                EXPECT_EQ(entry.run(base, nullptr, 0), 0);
                EXPECT_EQ(entry.run(refuser, nullptr, 0), 0);
                EXPECT_TRUE(format < formatCount || entry.run(recorder, nullptr, 0) == 0);
            }
    Entries entries(0, false);
    const auto expectNothing = [&] {
        for (const auto& entry : entries.all)
            EXPECT_EQ(entry.run(recorder, nullptr, 0), 0);
    };
    entries.list.plane = entries.region.plane = nullptr;
    expectNothing();
    entries.out = nullptr;
    entries.outRegion = nullptr;
    expectNothing();
    EXPECT_TRUE(last == Call{});
}

// Calls nested in a running one show whether they touch its entry of the table.
TEST(Dispatch, InterruptIsAskedWhileACallWithATokenRunsOnTheThread)
{
    const auto stopOnThree = [](void* data, int thread) { return *static_cast<bool*>(data) && thread == 3; };
    Recorder recorder, nested;
    bool stop = true, go = false;
    int calls = 0;
    const auto runWith = [&](const Entries::Entry& entry, void* data, int thread, bool answer) {
        bool outer = true;
        duringCall = [&, answer] {
            if (!std::exchange(outer, false))
                return;
            for (Entries known(0, false), unknown(7, false); const size_t i : {0u, 1u, 2u, 3u, 4u, 5u}) {
                EXPECT_EQ(known.all[i].run(nested, nullptr, 3), 17);
                EXPECT_EQ(unknown.all[i].run(nested, &go, 3), 0);
                EXPECT_EQ(RU_Algorithm::interruptCheck(3), answer);
            }
            EXPECT_FALSE(RU_Algorithm::interruptCheck(2) || RU_Algorithm::interruptCheck(-1));
            ++calls;
        };
        entry.run(recorder, data, thread);
        duringCall = [] {};
        EXPECT_FALSE(RU_Algorithm::interruptCheck(3)) << "cleared after the call";
    };
    for (Entries entries(1, true); const auto& entry : entries.all) {
        runWith(entry, &stop, 3, false);
        RU_Algorithm::setInterruptCallback(stopOnThree);
        runWith(entry, &stop, 3, true);
        runWith(entry, &go, 3, false);
        runWith(entry, nullptr, 3, false);
        runWith(entry, &stop, -1, false);
        RU_Algorithm::setInterruptCallback(nullptr);
    }
    EXPECT_EQ(calls, 5 * std::ssize(Entries(1, true).all));
}
