#include <PXL/PXL_Format.h>
#include <RU/composite/RU_Composite.h>
#include <reference/Combine.h>
#include <reference/Formats.h>
#include <reference/Random.h>

using namespace reference;

namespace {

#define COUNT(...) +1
constexpr int types = RU_FOR_EACH_COMPOSITE_TYPE(COUNT);
#undef COUNT
constexpr int longest = 1001;

template <class T>
constexpr bool isFloat = std::is_same_v<T, float>;

/// What a result may differ from: in steps of floats where it is one, exact otherwise.
template <class T>
using Number = std::conditional_t<isFloat<T>, float, double>;

template <class T>
constexpr Number<T> white = isFloat<T> ? 1 : static_cast<Number<T>>(std::numeric_limits<T>::max());

/// Any values, NaN of every kind among them; codes with many ends.
template <class T>
std::vector<T> values()
{
    Random random(sizeof(T));
    std::vector<T> all(4096);
    Format{PXL_FormatOf<T>::code, true}.randomize(all.data(), std::ssize(all), random, 8, 6);
    if constexpr (!isFloat<T>)
        for (size_t i = 0; i < all.size(); i += 4) {
            const int top = static_cast<int>(white<T>), ends[] = {0, 1, top / 2, top / 2 + 1, top - 1, top};
            all[i] = static_cast<T>(ends[random.between(0, 5)]);
        }
    return all;
}

/// Some values at some distance from a 16-byte boundary, behind and before what nobody may change.
constexpr int margin = 32;
template <class T>
std::vector<T> padded(const std::vector<T>& from, Random& random, int count, int offset)
{
    std::vector<T> row(static_cast<size_t>(margin + offset + count + margin), T(77));
    std::copy_n(from.begin() + random.between(0, static_cast<int>(from.size()) - count), count,
                row.begin() + margin + offset);
    return row;
}

/// Every operation, with and without alphas, over rows of many lengths and places; on boundaries long rows take
/// the kernels of the process's instruction set, the others the baseline's.
/// call(type, count1, count2, dst, dstAlpha, src, srcAlpha)
/// right(type, index, s, d, pointer to sA, pointer to dA, stored)
template <class T, class U, class Call, class Right>
void testRows(const Call& call, const Right& right)
{
    std::vector<int> counts = {127, 136, longest};
    for (int count = 1; count <= 40; ++count)
        counts.push_back(count);
    const std::vector<T> colours = values<T>();
    std::vector<U> alphas = values<U>();
    if constexpr (!isFloat<T> && isFloat<U>) // where the order of steps would matter
        std::ranges::replace_if(
            alphas, [](U v) { return std::isfinite(v) && std::abs(v) > 1e30f; }, 2.0f);
    Random random(3);
    for (int type = 0; type < types; ++type)
        for (const int given : {0, 1, 2, 3})
            for (const int count : counts)
                for (int run = count > 100 ? 0 : 14; run < 20; ++run) {
                    const auto place = [&] { return run < 16 ? (run + count) % 16 : random.between(0, 15); };
                    const int at[] = {place(), place(), place(), place()};
                    std::vector<T> dst = padded(colours, random, count, at[0]), before = dst,
                                   src = padded(colours, random, count, at[1]);
                    const std::vector<U> dstAlpha = padded(alphas, random, count, at[2]),
                                         srcAlpha = padded(alphas, random, count, at[3]);
                    T* d = dst.data() + margin + at[0];
                    const T* s = run == 18 ? d : src.data() + margin + at[1];
                    const U *sA = srcAlpha.data() + margin + at[3], *dA = dstAlpha.data() + margin + at[2];
                    if constexpr (std::is_same_v<T, U>)
                        if (run == 19) { // an alpha is composited with itself
                            sA = s;
                            dA = d;
                        }
                    const std::vector<T> source(s, s + count), destination(d, d + count);
                    const std::vector<U> sourceAlpha(sA, sA + count), alpha(dA, dA + count);
                    const int rows = count % 2 == 0 && count > 100 ? 2 : 1;
                    call(static_cast<RU_CompositeType>(type), rows, count / rows, d, given & 1 ? dA : nullptr,
                         s, given & 2 ? sA : nullptr);
                    const std::vector<T> stored(d, d + count);
                    for (size_t i = 0; i < stored.size(); ++i)
                        ASSERT_TRUE(right(type, i, source[i], destination[i],
                                          given & 2 ? &sourceAlpha[i] : nullptr,
                                          given & 1 ? &alpha[i] : nullptr, stored[i]))
                            << "operation " << type << ", alphas " << given << ", " << i << " of " << count
                            << ", run " << run << ": s " << +source[i] << ", d " << +destination[i] << ", sA "
                            << +sourceAlpha[i] << ", dA " << +alpha[i] << ", stored " << +stored[i];
                    std::ranges::copy(destination, d);
                    ASSERT_EQ(std::memcmp(dst.data(), before.data(), dst.size() * sizeof(T)), 0)
                        << "beyond its ends";
                }
}

/// The very bits, or the one NaN.
bool isNumber(float stored, float exact)
{
    return std::bit_cast<uint32_t>(stored) == (exact == exact ? std::bit_cast<uint32_t>(exact) : 0x7FC00000);
}

/// Is `stored` the code of an unrounded result that may be off by `slack`? Without slack halves go up.
template <class T>
bool isCodeOf(T stored, double unrounded, double slack)
{
    const double within = std::isnan(unrounded) ? 0.0 : std::clamp<double>(unrounded, 0.0, white<T>);
    return slack == 0.0 ? stored == std::floor(within + 0.5) : std::abs(stored - within) <= 0.5 + slack;
}

/// 16-bit colours with 16-bit alphas have a scale of their own where the destination shows beneath.
template <class T, class U>
bool isComposite(int type, T s, T d, const U* sourceAlpha, const U* alpha, T stored, bool ofAlphas = false)
{
    using N = Number<T>;
    const bool isOdd =
        sizeof(T) == 2 && sizeof(U) == 2 && !ofAlphas && (type <= 1 || (type == 2 && sourceAlpha));
    const N scale = isOdd            ? 1.5301048e-05f
                    : isFloat<U>     ? 1.0f
                    : sizeof(U) == 1 ? 0.003921569f
                                     : 1.5259022e-05f;
    const N sA = sourceAlpha ? static_cast<N>(*sourceAlpha) * scale : 1;
    const N dA = alpha ? static_cast<N>(*alpha) * scale : 1;
    const N exact = composited<N>(type, s, d, sourceAlpha ? &sA : nullptr, alpha ? &dA : nullptr, white<T>);
    if constexpr (!isFloat<T>) {
        const auto size = [](N a) { return std::isfinite(a) ? std::max(1.0, std::abs(a)) : 1.0; };
        const bool isExact = (sizeof(T) == 1 && sizeof(U) == 1) || (type >= 6 && type != 9 && type != 13);
        return isCodeOf(stored, exact, isExact ? 0.0 : (s * size(dA) + d * size(sA)) * 0x1p-22);
    } else if (const T* bits = plain(type, &s, &d, sourceAlpha, alpha)) {
        return std::memcmp(&stored, bits, sizeof(T)) == 0;
    } else {
        return isNumber(stored, isFloat<U> ? exact : std::clamp(exact, -1e32f, 1e32f));
    }
}

template <class T>
bool isCompositeAlpha(int type, T s, T d, T stored)
{
    return type == 2 ? std::memcmp(&stored, &d, sizeof d) == 0
                     : isComposite(type, s, d, &s, &d, stored, true);
}

} // namespace

TEST(Composite, EveryLengthPlaceAndPairOfFormatsGivesTheFormula){
#define TEST_PAIR(T, U)                                                                                      \
    {                                                                                                        \
        SCOPED_TRACE(#T ", " #U);                                                                            \
        testRows<T, U>([](auto... all) { RU_Composite::composite(all...); },                                 \
                       [](int type, size_t, auto... all) { return isComposite<T, U>(type, all...); });       \
    }
    RU_FOR_EACH_COMPOSITE_PAIR(TEST_PAIR)
#undef TEST_PAIR
}

TEST(Composite, AlphasThemselvesFollowTheSameFormulas){
#define TEST_ALPHA(T)                                                                                        \
    {                                                                                                        \
        SCOPED_TRACE(#T);                                                                                    \
        testRows<T, T>(                                                                                      \
            [](auto type, int n, int m, T* dst, const T*, const T* src, const T* given) {                    \
                RU_Composite::compositeAlpha(type, n, m, dst, given ? src : nullptr);                        \
            },                                                                                               \
            [](int type, size_t, T s, T d, const T* given, const T*, T stored) {                             \
                return isCompositeAlpha(type, given ? s : static_cast<T>(white<T>), d, stored);              \
            });                                                                                              \
    }
    RU_FOR_EACH_COMPOSITE_FORMAT(TEST_ALPHA)
#undef TEST_ALPHA
}

TEST(Composite, GeometryIsSelectedAndOnlyWhereThereIsAny)
{
    Random random(5);
    std::vector<float> planes[4];
    const float kinds[] = {0, -0.0f, 1e-45f, -2, NAN, HUGE_VALF};
    for (auto& plane : planes)
        for (int i = 0; i < longest; ++i)
            plane.push_back(random.oneIn(5) ? kinds[random.between(0, 5)] : 0.0f);
    const float* given[4];
    testRows<float, float>(
        [&](auto... all) {
            const int mask = random.between(0, 15);
            for (size_t k = 0; k < 4; ++k)
                given[k] = mask >> k & 1 ? planes[k].data() : nullptr;
            RU_Composite::compositeGeo(all..., given);
        },
        [&](int type, size_t i, float s, float d, const float* sA, const float* dA, float stored) {
            const bool geometry =
                std::ranges::any_of(given, [&](auto* plane) { return plane && plane[i] != 0; });
            return type < 5 ? sameFloat(stored, selected(type, s, d, sA, dA, geometry))
                            : isNumber(stored, composited(type, s, d, sA, dA, 1.0f));
        });
}

TEST(Composite, BytesAreTheNearestToTheFormulaForEveryPairOfColoursAndOfAlphas)
{
    const Bytes some = {0, 1, 128, 255};
    Bytes s, d;
    for (int i = 0; i < 65536; ++i) {
        s.push_back(static_cast<unsigned char>(i));
        d.push_back(static_cast<unsigned char>(i >> 8));
    }
    for (int type = 0; type < types; ++type)
        for (const unsigned char sA : some)
            for (const unsigned char dA : some) {
                const Bytes source(s.size(), sA), destination(s.size(), dA);
                Bytes out = d, alpha = d;
                const auto name = static_cast<RU_CompositeType>(type);
                RU_Composite::composite(name, 256, 256, out.data(), destination.data(), s.data(),
                                        source.data());
                RU_Composite::compositeAlpha(name, 256, 256, alpha.data(), s.data());
                for (size_t i = 0; i < s.size(); ++i)
                    ASSERT_TRUE(isComposite(type, s[i], d[i], &sA, &dA, out[i]) &&
                                isCompositeAlpha(type, s[i], d[i], alpha[i]))
                        << "operation " << type << ": s " << +s[i] << ", d " << +d[i] << ", sA " << +sA
                        << ", dA " << +dA << ", stored " << +out[i] << " and " << +alpha[i];
            }
}

TEST(Composite, OtherOperationsAndCountsWithoutValuesDoNothing)
{
    const float zero = 0, one = 1;
    const float* const geometry[4] = {&one};
    const int cases[][3] = {{-1, 1, 1}, {types, 1, 1}, {1 << 30, 1, 1}, {0, 0, 1},
                            {6, 1, 0},  {9, -1, 1},    {6, 1, -3}};
    for (const auto& [type, n, m] : cases) {
        const auto name = static_cast<RU_CompositeType>(type);
        float value = 0.5f;
        RU_Composite::composite(name, n, m, &value, &one, &one, &zero);
        RU_Composite::compositeAlpha(name, n, m, &value, &one);
        RU_Composite::compositeGeo(name, n, m, &value, &one, &one, &one, geometry);
        EXPECT_EQ(value, 0.5f) << type << ", " << n << " x " << m;
    }
}
