#include <RU/filter/RU_Degrain.h>
#include <reference/Contract.h>
#include <reference/Order.h>

using namespace reference;

namespace {

int64_t most(bool largest, int64_t a, int64_t b)
{
    return largest ? std::max(a, b) : std::min(a, b);
}

/// A closing (first the largest) or an opening by lines of r + 1 pixels, 2 r smaller either way.
Places stage(const Places& in, int r, bool largest)
{
    Places along(in.width - r, in.height - r), down = along, out(in.width - 2 * r, in.height - 2 * r);
    for (int y = 0; y < along.height; ++y)
        for (int x = 0; x < along.width; ++x) {
            along.at(x, y) = in.at(x, y + r);
            down.at(x, y) = in.at(x + r, y);
            for (int k = 1; k <= r; ++k) {
                along.at(x, y) = most(largest, along.at(x, y), in.at(x + k, y + r));
                down.at(x, y) = most(largest, down.at(x, y), in.at(x + r, y + k));
            }
        }
    for (int y = 0; y < out.height; ++y)
        for (int x = 0; x < out.width; ++x) {
            out.at(x, y) = along.at(x, y);
            int64_t lines[2] = {along.at(x, y), down.at(x, y)};
            for (int k = 1; k <= r; ++k) {
                lines[0] = most(!largest, lines[0], along.at(x + k, y));
                lines[1] = most(!largest, lines[1], down.at(x, y + k));
            }
            out.at(x, y) = most(!largest, lines[0], lines[1]);
        }
    return out;
}

Places degrained(const Places& in, int r)
{
    return stage(stage(in, r, true), r, false);
}

class Degrain : public Subject
{
public:
    Degrain(std::string of, int r) : Subject(std::move(of)) { algorithm.grainSize = r; }

    RU_Border border() const override { return algorithm.border(); }
    int run(Scene& scene, void* token, int thread) override
    {
        const int result =
            algorithm.filter(&scene.out.list, scene.aroundGiven(), 0.0f, token, thread, nullptr);
        for (int c = 0; c < 4; ++c)
            if (const void* data = scene.around.getImageData(c))
                wanted[c] = degrained({scene.out.format, data, scene.around.width(), scene.around.height()},
                                      border().left / 2);
        return result;
    }
    std::optional<Exact> expected(const Scene& scene, int c, int x, int y) const override
    {
        const Format& format = scene.out.format;
        if (!scene.out.mayWrite(c) || !scene.hasAround || scene.around.getImageData(c) == nullptr)
            return {};
        const uint32_t bits = bitsOfPlace(format, wanted[c].at(x, y));
        const Range codes{0, format.white()};
        return Exact{format.valueOf(format.codeAt(&bits, 0), codes), 0.0, codes, true};
    }

private:
    RU_Degrain algorithm;
    static thread_local Places wanted[4]; ///< by the last run of a thread
};
thread_local Places Degrain::wanted[4];

const Registered<Degrain> copy("Degrain below 0", -3);
const Registered<Degrain> small("Degrain 1", 1);
const Registered<Degrain> usual("Degrain 5", 5);

} // namespace

TEST(Degrain, EveryGrainSizeGivesTheFormulaToTheBit)
{
    Random random(1);
    for (const Format& format : formats())
        for (int r = 0; r <= 40; r += r < 8 ? 1 : 8) {
            SCOPED_TRACE(nameOf(format) + ", grain size " + std::to_string(r));
            RU_Degrain degrain;
            degrain.grainSize = r;
            Scene scene(format, degrain.border(), random.between(1, 150), random.between(1, 3 * r + 3));
            scene.fill(random, 4, 6);
            degrain.filter(&scene.out.list, &scene.around, 0.0f, nullptr, 0, nullptr);
            ASSERT_TRUE(scene.out.guardsIntact());
            const auto placesOf = [&](const void* data, const auto& of) {
                return Places(format, data, of.width(), of.height());
            };
            for (int c = 0; c < 4; ++c)
                ASSERT_TRUE(placesOf(scene.out.data(c), scene.out.list).all ==
                            degrained(placesOf(scene.around.getImageData(c), scene.around), r).all);
        }
}
