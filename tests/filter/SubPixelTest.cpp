#include <RU/filter/RU_SubPixel.h>
#include <reference/Contract.h>

using namespace reference;

namespace {

class SubPixel : public FilterSubject<RU_SubPixel>
{
public:
    using FilterSubject::FilterSubject;

    void choose(Random& random) override
    {
        const float some[] = {0, 0, 1, 1, 0.5f, 0.25f, 0.37f, -0.5f, 1.75f};
        const auto any = [&] { return some[random.between(0, 8)]; };
        algorithm = {};
        if (random.oneIn(3)) {
            for (float* weight :
                 {&algorithm.weight00, &algorithm.weight10, &algorithm.weight01, &algorithm.weight11})
                *weight = any();
        } else if (!random.oneIn(5)) {
            const float fx = any(), fy = any();
            algorithm.setWeights(fx, fy);
        }
    }

    Exact result(const Neighbours& at) const override
    {
        Exact exact = {};
        double weights = 0;
        for (const auto& [weight, dx, dy] : {std::tuple(algorithm.weight00, 0, 0),
                                             {algorithm.weight10, 1, 0},
                                             {algorithm.weight01, 0, 1},
                                             {algorithm.weight11, 1, 1}})
            if (weight != 0) {
                const double term = double(weight) * at(dx, dy);
                exact.value += term;
                exact.slack += std::isfinite(term) ? 8 * std::abs(term) : 0;
                weights += weight == 1 ? 1 : 2;
            }
        exact.copied = weights == 1;
        if (exact.copied)
            exact.slack = 0;
        return exact;
    }
};

const Registered<SubPixel> subPixel("SubPixel");

} // namespace

TEST(SubPixel, CopiesKeepEveryBitAndReadNothingElse)
{
    Random random(1);
    for (const Format& format : formats())
        for (int dx = 0; dx <= 1; ++dx)
            for (int dy = 0; dy <= 1; ++dy) {
                RU_SubPixel shift;
                shift.setWeights(static_cast<float>(dx), static_cast<float>(dy));
                Scene scene(format, shift.border(), 37, 5);
                scene.fill(random, 2, 6);
                ASSERT_EQ(shift.filter(&scene.out.list, &scene.around, 0.0f, nullptr, -1, nullptr), 1);
                const TIL_Region moved(scene.out.plane, dx, dy, 36 + dx, 4 + dy);
                for (int c = 0; c < 4; ++c)
                    EXPECT_EQ(scene.out.bytes(c),
                              part(scene.around.getImageData(c), scene.around, moved, format.size()));
            }
}

TEST(SubPixel, FractionsGiveTheirWeights)
{
    RU_SubPixel shift;
    shift.setWeights(0.25f, 0.5f);
    EXPECT_EQ(shift.weight00, 0.375f);
    EXPECT_EQ(shift.weight10, 0.125f);
    EXPECT_EQ(shift.weight01, 0.375f);
    EXPECT_EQ(shift.weight11, 0.125f);
}
