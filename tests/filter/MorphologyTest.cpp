#include <RU/filter/RU_Morphology.h>
#include <reference/Order.h>

using namespace reference;

namespace {

/// A pass along rows or columns, as it is described, over all rows but the last.
void pass(const Places& in, Places& out, bool down, int size, bool largest)
{
    const int k = std::abs(size), h = k / 2;
    const int written = ((down ? in.height - 1 : in.width) - 2 * h) / k * k;
    const Places from = in;
    for (int y = 0; y < in.height - 1; ++y)
        for (int x = 0; x < in.width; ++x)
            if (const int at = down ? y : x; at >= h && at < h + written) {
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

/// Any call on planes with a row behind them that nothing touches; `tmp` may be `dst`, and `src` too.
template <class T>
void check(uint64_t seed)
{
    SCOPED_TRACE("seed " + std::to_string(seed) + ", format " + std::to_string(PXL_FormatOf<T>::code));
    Random random(seed);
    const auto anySize = [&](int least) { return random.oneIn(3) ? 1 : random.between(least, 40); };
    const int call = static_cast<int>(seed % 3), xsize = anySize(call == 2 ? -40 : 0);
    const int ysize = call == 2 && random.oneIn(6) ? -1 : anySize(call == 2 ? -40 : 0);
    const int dst = odd(ysize) != 1 && random.oneIn(3) ? 0 : 1, tmp = random.oneIn(3) ? 1 : 2;
    const int width = random.between(1, random.oneIn(4) ? 300 : 50), height = random.between(1, 90);

    const Format format{PXL_FormatOf<T>::code, true};
    const auto placesOf = [&](const std::vector<T>& p) {
        return Places(format, p.data(), width, height + 1);
    };
    std::vector<T> planes[3];
    Places wanted[3];
    for (int i = 0; i < 3; ++i) {
        planes[i].resize(static_cast<size_t>(width * (height + 1)));
        format.randomize(planes[i].data(), std::ssize(planes[i]), random, 4, 6);
        wanted[i] = placesOf(planes[i]);
    }
    const auto run = [&](auto function) {
        const T* src = planes[0].data();
        function(src, planes[dst].data(), planes[tmp].data(), width, height, xsize, ysize);
    };
    if (call == 0)
        run([](auto... all) { RU_Morphology::dilate(all...); });
    else if (call == 1)
        run([](auto... all) { RU_Morphology::erode(all...); });
    else
        run([](auto... all) { RU_Morphology::dilateErode(all...); });

    const bool both = odd(xsize) != 1 && odd(ysize) != 1;
    const auto dilates = [&](int size) { return call == 0 || (call == 2 && size >= 0); };
    if (both || odd(ysize) == 1)
        pass(wanted[0], wanted[both ? tmp : dst], false, odd(xsize), dilates(xsize));
    if (odd(ysize) != 1)
        pass(wanted[both ? tmp : 0], wanted[dst], true, odd(ysize), dilates(ysize));
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(placesOf(planes[i]).all == wanted[i].all) << "plane " << i;
}

} // namespace

TEST(Morphology, EverySizeGivesThePassesToTheBit)
{
    for (uint64_t seed = 0; seed < 600 && !HasFatalFailure(); ++seed) {
#define CHECK(CODE, T, WHITE, NAME) check<T>(seed);
        PXL_FOR_EACH_FORMAT(CHECK)
#undef CHECK
    }
}

TEST(Morphology, WithoutPlanesOrPixelsNothingHappens)
{
    float pixel = 1, other = 2, *none = nullptr;
    RU_Morphology::dilate(none, &other, none, 1, 1, 1, 1);
    RU_Morphology::dilate(&pixel, none, none, 1, 1, 1, 1);
    RU_Morphology::erode(&pixel, &other, none, 1, 1, 3, 3);
    RU_Morphology::erode(&pixel, &other, &other, -1, 1, 1, 1);
    RU_Morphology::dilateErode(&pixel, &other, &other, 1, 1, std::numeric_limits<int>::min(), 2147483647);
    EXPECT_EQ(other, 2);
}
