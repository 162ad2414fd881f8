#include <RU/filter/RU_Morphology.h>
#include <reference/Order.h>

using namespace reference;

namespace {

/// A pass along rows or columns, as it is described.
void pass(const Places& in, Places& out, bool down, int size, bool largest)
{
    const int k = std::abs(size), h = k / 2, length = down ? in.height : in.width;
    const int written = (length - 2 * h) / k * k;
    const Places from = in;
    for (int y = 0; y < in.height; ++y)
        for (int x = 0; x < in.width; ++x) {
            const int along = down ? y : x;
            if (along < h || along >= h + written)
                continue;
            int64_t most = from.at(x, y);
            for (int i = -h; i <= h; ++i) {
                const int64_t value = down ? from.at(x, y + i) : from.at(x + i, y);
                most = largest ? std::max(most, value) : std::min(most, value);
            }
            out.at(x, y) = most;
        }
}

int odd(int size)
{
    return size % 2 != 0 ? size : size < 0 ? size - 1 : size + 1;
}

/// Three planes of a format; `shared` names those that are one.
template <class T>
struct Planes
{
    enum Shared { none, tmpIsDst, srcIsDst };

    Planes(Format of, int w, int h, Shared which, Random& random)
        : format(of), width(w), height(h), shared(which)
    {
        for (std::vector<T>& plane : memory) {
            plane.resize(static_cast<size_t>(w * h + guard));
            format.randomize(plane.data(), w * h + guard, random, 4, 6);
        }
        held[0] = memory[0], held[1] = memory[1], held[2] = memory[2];
    }

    std::vector<T>& dst() { return memory[shared == srcIsDst ? 0 : 1]; }
    std::vector<T>& tmp() { return memory[shared == tmpIsDst ? 1 : 2]; }
    Places places(const std::vector<T>& plane) const { return {format, plane.data(), width, height}; }

    /// What the planes hold afterwards is what the passes leave, and nothing behind their ends is touched.
    void expect(int xsize, int ysize, bool xLargest, bool yLargest)
    {
        Places planes[3] = {places(held[0]), places(held[1]), places(held[2])};
        Places& to = planes[shared == srcIsDst ? 0 : 1];
        Places& between = planes[shared == tmpIsDst ? 1 : 2];
        xsize = odd(xsize);
        ysize = odd(ysize);
        if (ysize == 1)
            pass(planes[0], to, false, xsize, xLargest);
        else if (xsize == 1)
            pass(planes[0], to, true, ysize, yLargest);
        else {
            pass(planes[0], between, false, xsize, xLargest);
            pass(between, to, true, ysize, yLargest);
        }
        for (int i = 0; i < 3; ++i) {
            ASSERT_TRUE(places(memory[i]).all == planes[i].all) << "plane " << i;
            ASSERT_EQ(std::memcmp(&memory[i][size_t(width * height)], &held[i][size_t(width * height)],
                                  guard * sizeof(T)),
                      0);
        }
    }

    static constexpr int guard = 64;
    Format format;
    int width, height;
    Shared shared;
    std::vector<T> memory[3], held[3];
};

template <class T>
class Morphology : public ::testing::Test
{
};
using Types = ::testing::Types<unsigned char, unsigned short, unsigned int, float, fpreal16>;
TYPED_TEST_SUITE(Morphology, Types);

} // namespace

TYPED_TEST(Morphology, EverySizeGivesThePassesToTheBit)
{
    using P = Planes<TypeParam>;
    const Format format{PXL_FormatOf<TypeParam>::code, true};
    for (int number = 0; number < 600; ++number) {
        SCOPED_TRACE(number);
        Random random(static_cast<uint64_t>(number));
        const int call = number % 3, least = call == 2 ? -40 : 0;
        int xsize = random.oneIn(3) ? 1 : random.between(least, 40);
        int ysize = random.oneIn(3) ? 1 : random.between(least, 40);
        if (call == 2 && random.oneIn(6))
            (random.oneIn(2) ? xsize : ysize) = -1;
        auto shared = static_cast<typename P::Shared>(random.between(0, 2));
        if (shared == P::srcIsDst && odd(ysize) == 1) // one pass along rows
            shared = P::none;
        P planes(format, random.between(1, random.oneIn(4) ? 300 : 50), random.between(1, 90), shared,
                 random);
        const auto arguments = std::tuple(std::as_const(planes.memory[0]).data(), planes.dst().data(),
                                          planes.tmp().data(), planes.width, planes.height, xsize, ysize);
        if (call == 0)
            std::apply([](auto... all) { RU_Morphology::dilate(all...); }, arguments);
        else if (call == 1)
            std::apply([](auto... all) { RU_Morphology::erode(all...); }, arguments);
        else
            std::apply([](auto... all) { RU_Morphology::dilateErode(all...); }, arguments);
        ASSERT_NO_FATAL_FAILURE(planes.expect(xsize, ysize, call == 0 || (call == 2 && xsize >= 0),
                                              call == 0 || (call == 2 && ysize >= 0)));
    }
}

TEST(MorphologyCalls, WithoutPlanesOrPixelsNothingHappens)
{
    float pixel = 1, other = 2;
    RU_Morphology::dilate(static_cast<float*>(nullptr), &other, nullptr, 1, 1, 1, 1);
    RU_Morphology::dilate(&pixel, static_cast<float*>(nullptr), nullptr, 1, 1, 1, 1);
    RU_Morphology::erode(&pixel, &other, nullptr, 1, 1, 3, 3);
    RU_Morphology::erode(&pixel, &other, &other, -1, 1, 1, 1);
    RU_Morphology::dilateErode(&pixel, &other, &other, 1, 1, std::numeric_limits<int>::min(), 2147483647);
    EXPECT_EQ(other, 2);
}
