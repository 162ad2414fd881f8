#include <RU/filter/RU_EdgeDetect.h>
#include <reference/Contract.h>

using namespace reference;

namespace {

class Edge : public FilterSubject<RU_EdgeDetect>
{
public:
    using FilterSubject::FilterSubject;

    void choose(Random& random) override
    {
        algorithm = {};
        if (random.oneIn(5))
            return;
        const float some[] = {1, 1, 1.001f, 0.5f, 2, 0.13f, 0, -1, -2};
        algorithm.sobelWeights = random.oneIn(2) ? 0 : random.between(1, 7);
        algorithm.edgeGain = some[random.between(0, 8)];
        algorithm.cornerWeight = some[random.between(0, 8)];
    }

    Exact result(const Neighbours& at) const override
    {
        const double w = algorithm.sobelWeights != 0 ? 2.0 : 1.0;
        const double a = algorithm.edgeGain, b = algorithm.cornerWeight;
        const double middle = a == 1.0 && b == 1.0 ? w : w + 1.0 - 2.0 * b;
        double gx = 0.0, gy = 0.0, largest = 0.0;
        for (int i = -1; i <= 1; ++i) {
            const double weight = a * (i == 0 ? middle : b);
            gx += weight * (at(1, i) - at(-1, i));
            gy += weight * (at(i, 1) - at(i, -1));
            for (int j = -1; j <= 1; ++j)
                if (std::isfinite(at(i, j)))
                    largest = std::max(largest, std::abs(at(i, j)));
        }
        const double norm = a > 0 && b > 0 ? 1.0 / std::pow(a * b, 0.25) : 1.0;
        const double weights = std::abs(a) * norm * (4 * std::abs(b) + 2 * (w + 1 + 2 * std::abs(b)));
        return {(std::abs(gx) + std::abs(gy)) * norm, 16 * weights * largest};
    }
};

const Registered<Edge> edge("EdgeDetect");

} // namespace

TEST(EdgeDetect, FlatInputGivesBlack)
{
    Random random(1);
    for (const Format& format : formats())
        for (int time = 0; time < 40; ++time) {
            Edge subject("");
            Scene scene(format, subject.border(), 20, 3);
            subject.choose(random);
            for (int i = 0; i < 22 * 5; ++i)
                format.put(scene.around.getImageData(0), i, format.range().white);
            ASSERT_EQ(subject.run(scene, nullptr, 1), 1);
            for (int i = 0; i < 60; ++i)
                ASSERT_EQ(format.codeAt(scene.out.data(0), i), format.isInteger() ? format.range().black : 0);
        }
}
