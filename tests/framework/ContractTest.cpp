// What holds for every algorithm; the subjects are registered in their own tests.
#include <reference/Contract.h>

#include <thread>

using namespace reference;

class Contract : public ::testing::TestWithParam<std::tuple<Subject*, Format>>
{
protected:
    Subject& subject = *std::get<0>(GetParam());
    const Format format = std::get<1>(GetParam());
};
INSTANTIATE_TEST_SUITE_P(, Contract,
                         ::testing::Combine(::testing::ValuesIn(subjects()), ::testing::ValuesIn(formats())),
                         [](const auto& parameter) {
                             std::string name = std::get<0>(parameter.param)->name;
                             std::erase(name, ' ');
                             return name + nameOf(std::get<1>(parameter.param));
                         });

TEST_P(Contract, EverySizeAndStateOfTilesGivesTheFormula)
{
    for (int width = 1; width <= 40; ++width)
        for (const int height : {1, 2, 5, 8}) {
            const auto seed = static_cast<uint64_t>(width * 10 + height);
            SCOPED_TRACE("seed " + std::to_string(seed));
            Random random(seed);
            Scene scene(format, subject.border(), width < 38 || height > 2 ? width : 2500, height,
                        random.between(-9, 9), random.between(-9, 9));
            subject.choose(random);
            scene.fill(random, random.oneIn(3) ? 16 : 0);
            scene.scatter(random);
            scene.hold();
            ASSERT_EQ(subject.run(scene, nullptr, 1), 1);
            ASSERT_TRUE(scene.out.guardsIntact() && scene.in.guardsIntact());
            ASSERT_NO_FATAL_FAILURE(expectFormula(subject, scene));
        }
}

TEST_P(Contract, EverySplitAmongThreadsGivesTheSameBytes)
{
    Random random(6);
    Scene whole(format, subject.border(), 37, 23);
    subject.choose(random);
    whole.fill(random, 16);
    whole.hold();
    ASSERT_EQ(subject.run(whole, nullptr, -1), 1);
    for (const auto& [w, h] : {std::pair(1, 1), {7, 5}, {16, 16}, {37, 1}, {36, 22}}) {
        const int columns = (36 + w) / w, tiles = columns * ((22 + h) / h);
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < 8; ++thread)
            threads.emplace_back([&, w = w, h = h, thread] {
                for (int tile = thread; tile < tiles; tile += 8) {
                    const int x = tile % columns * w, y = tile / columns * h;
                    Scene scene(format, subject.border(), std::min(w, 37 - x), std::min(h, 23 - y), x, y);
                    scene.copyFrom(whole);
                    EXPECT_EQ(subject.run(scene, nullptr, thread), 1);
                    for (int c = 0; c < 4; ++c)
                        EXPECT_EQ(scene.out.bytes(c),
                                  part(whole.out.data(c), whole.out.list, scene.out.list, format.size()))
                            << c << " at " << x << ", " << y;
                }
            });
    }
}

TEST_P(Contract, RegionsAreWrittenLikeTilesOrLeftAlone)
{
    Random random(7);
    Scene scene(format, subject.border(), 13, 5, -3, 4);
    subject.choose(random);
    scene.fill(random, 0);
    scene.hold();
    TIL_Region region(scene.out.plane, -3, 4, 9, 8);
    for (int c = 0; c < 4; ++c)
        std::memcpy(region.getImageData(c), scene.held[c].data(), scene.held[c].size());
    const bool writes = subject.runOnRegion(scene, region) == 1;
    if (writes) {
        EXPECT_EQ(subject.run(scene, nullptr, 1), 1);
    }
    for (int c = 0; c < 4; ++c)
        EXPECT_EQ(part(region.getImageData(c), region, region, format.size()), scene.out.bytes(c)) << c;
}

// Before the fourth row, whether an algorithm goes component by component or row by row.
TEST_P(Contract, StopsWhenTold)
{
    int changed = 0;
    for (uint64_t seed = 0; seed < 8; ++seed) {
        Random random(seed);
        Scene scene(format, subject.border(), 9, 20);
        subject.choose(random);
        scene.fill(random, 0);
        Picture& out = scene.out;
        const Bytes third = out.rows(0, 2, 3), rest = out.rows(0, 3, 20), restOfNext = out.rows(1, 3, 20);
        StopAfter host(3);
        EXPECT_EQ(subject.run(scene, &host.token, 1), 1);
        EXPECT_LE(host.furtherQuestions(), 3) << "one for each of the other components";
        EXPECT_TRUE(out.rows(0, 3, 20) == rest && out.rows(1, 3, 20) == restOfNext);
        changed += out.rows(0, 2, 3) != third ? 1 : 0;
    }
    EXPECT_GT(changed, 0);
}

#if defined(RU_CHECKED)
TEST_P(Contract, WithoutItsBorderCheckedBuildsStopAndSayWhatWasNeeded)
{
    const RU_Border border = subject.border();
    Scene scene(format, {}, 5, 4);
    if (border.left + border.right + border.top + border.bottom > 0) {
        EXPECT_DEATH(subject.run(scene, nullptr, -1), "border included; it covers \\(0, 0\\) to \\(4, 3\\)");
    }
}
#endif
