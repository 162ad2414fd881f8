#include <reference/Contract.h>

namespace reference {

Scene::Scene(Format format, RU_Border border, int width, int height, int x1, int y1)
    : out(format, width, height, x1, y1), in(format, width, height, x1, y1),
      around(out.plane, x1 - border.left, y1 - border.bottom, out.list.x2 + border.right,
             out.list.y2 + border.top),
      mask(floats_, x1, y1, out.list.x2, out.list.y2)
{
}

void Scene::hold()
{
    for (int c = 0; c < 4; ++c) {
        held[c] = out.bytes(c);
        const TIL_Tile* tile = shared ? out.list.tiles[c] : in.list.tiles[c];
        inputIsConstant[c] = tile && tile->isConstant();
    }
}

void Scene::fill(Random& random, int oddOneIn, int kinds)
{
    constexpr Format floats{PXL_FORMAT_float32, true};
    for (int c = 0; c < 4; ++c) {
        out.format.randomize(out.data(c), out.list.itemCount, random, oddOneIn, kinds);
        out.format.randomize(in.data(c), in.list.itemCount, random, oddOneIn, kinds);
        out.format.randomize(around.getImageData(c), around.width() * around.height(), random, oddOneIn,
                             kinds);
        floats.randomize(mask.getImageData(c), mask.width() * mask.height(), random, oddOneIn, kinds);
    }
}

void Scene::scatter(Random& random)
{
    hasIn = !random.oneIn(8);
    hasAround = !random.oneIn(6);
    hasMask = !random.oneIn(4);
    shared = random.oneIn(4);
    for (Picture* picture : {&out, &in})
        picture->scatter(random);
    for (int c = 0; c < 4; ++c) {
        if (random.oneIn(5))
            around.removeImageData(c);
        if (random.oneIn(2))
            mask.removeImageData(c);
    }
    if (!out.format.full && random.oneIn(5))
        out.plane.whitePoint = out.list.whitePoint = out.plane.blackPoint;
    out.list.firstRow = static_cast<signed char>(random.oneIn(2) ? 0 : random.between(-1, 3));
    out.list.rowStep = static_cast<signed char>(random.oneIn(2) ? 1 : random.between(-1, 3));
}

void Scene::copyFrom(const Scene& whole)
{
    const auto copy = [](const void* from, const auto& of, void* to, const auto& covered, int size) {
        const Bytes bytes = part(from, of, covered, size);
        std::memcpy(to, bytes.data(), bytes.size());
    };
    const int size = out.format.size();
    for (int c = 0; c < 4; ++c) {
        copy(whole.held[c].data(), whole.out.list, out.data(c), out.list, size);
        copy(whole.in.data(c), whole.in.list, in.data(c), in.list, size);
        copy(whole.around.getImageData(c), whole.around, around.getImageData(c), around, size);
        copy(whole.mask.getImageData(c), whole.mask, mask.getImageData(c), mask, 4);
    }
}

void expectFormula(const Subject& subject, const Scene& scene)
{
    const Format& format = scene.out.format;
    const auto size = static_cast<size_t>(format.size());
    ASSERT_TRUE(scene.out.guardsIntact() && scene.in.guardsIntact());
    for (int c = 0; c < 4; ++c)
        for (int y = 0; y < scene.out.list.height(); ++y)
            for (int x = 0; x < scene.out.list.width(); ++x) {
                const std::optional<Exact> exact = subject.expected(scene, c, x, y);
                const size_t at = size * static_cast<size_t>(scene.index(x, y));
                const unsigned char* stored = scene.out.data(c) + at;
                auto right = ::testing::AssertionResult(true);
                if (!exact)
                    right = ::testing::AssertionResult(std::memcmp(stored, &scene.held[c][at], size) == 0)
                            << "was not to be written";
                else if (!format.isInteger() && std::isnan(exact->value) && !exact->copied)
                    right = ::testing::AssertionResult(format.bitsAt(stored, 0) == format.quietNaN())
                            << "not the one quiet NaN";
                else
                    right = format.holds(format.codeAt(stored, 0), exact->value,
                                         exact->points.value_or(scene.points()), exact->slack);
                ASSERT_TRUE(right) << c << " at " << x << ", " << y;
            }
}

std::vector<Subject*>& subjects()
{
    static std::vector<Subject*> all;
    return all;
}

} // namespace reference
