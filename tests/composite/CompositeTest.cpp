#include <RU/composite/ru_CompositeRows.h>
#include <reference/Combine.h>
#include <reference/Formats.h>
#include <reference/Random.h>

using namespace reference;

namespace {

constexpr int types = 15;
constexpr int longest = 1001;

template <class T>
constexpr bool isFloat = std::is_same_v<T, float>;

/// What a result may differ from: in steps of floats where it is one, exact otherwise.
template <class T>
using Number = std::conditional_t<isFloat<T>, float, double>;

template <class T>
constexpr Number<T> white = isFloat<T> ? 1 : static_cast<Number<T>>(std::numeric_limits<T>::max());

/// Any values, signalling NaN among them; codes with many ends.
template <class T>
std::vector<T> values()
{
    Random random(sizeof(T));
    std::vector<T> all;
    while (all.size() < 4096) {
        const int top = static_cast<int>(white<T>), ends[] = {0, 1, top / 2, top / 2 + 1, top - 1, top};
        const int code = random.oneIn(4) ? ends[random.between(0, 5)] : random.between(0, top);
        all.push_back(isFloat<T> ? static_cast<T>(anyFloat(random)) : static_cast<T>(code));
    }
    if constexpr (isFloat<T>)
        for (size_t i = 0; i < all.size(); i += 97)
            all[i] = std::bit_cast<float>(0x7F812345u);
    return all;
}

/// Some values at some distance from a 16-byte boundary, and around them what nobody may change.
template <class T>
class Row
{
public:
    Row(const std::vector<T>& from, Random& random, int count, int offset)
        : count_(count), first_(16 + offset), all_(static_cast<size_t>(first_ + count + 40), guard)
    {
        std::copy_n(from.begin() + random.between(0, static_cast<int>(from.size()) - count), count, data());
    }
    T* data() { return all_.data() + first_; }
    bool guardsIntact()
    {
        return std::count(all_.data(), data(), guard) == first_ &&
               std::count(data() + count_, all_.data() + all_.size(), guard) == 40;
    }

private:
    static constexpr T guard = 77;
    int count_, first_;
    std::vector<T> all_;
};

/// Every operation, with and without alphas, over rows of many lengths and places.
/// call(type, count1, count2, dst, dstAlpha, src, srcAlpha)
/// right(type, index, s, d, pointer to sA, pointer to dA, stored)
template <class T, class U, class Call, class Right>
void testRows(const Call& call, const Right& right)
{
    std::vector<int> counts = {longest};
    for (int count = 1; count <= 136; count += count == 40 ? 87 : 1)
        counts.push_back(count);
    const std::vector<T> colours = values<T>();
    std::vector<U> alphas = values<U>();
    if constexpr (!isFloat<T> && isFloat<U>) // where the order of steps would matter
        std::ranges::replace_if(
            alphas, [](U v) { return std::isfinite(v) && std::abs(v) > 1e30f; }, 2.0f);
    Random random(3);
    int runs = 0;
    for (int type = 0; type < types; ++type)
        for (const int given : {0, 1, 2, 3})
            for (const int count : counts)
                for (int run = count > 100 ? 0 : 14; run < 20; ++run, ++runs) {
                    const auto offset = [&] { return run < 16 ? (run + count) % 16 : random.between(0, 15); };
                    Row<T> dst(colours, random, count, offset()), src(colours, random, count, offset());
                    Row<U> dstAlpha(alphas, random, count, offset()),
                        srcAlpha(alphas, random, count, offset());
                    const T* s = run == 18 ? dst.data() : src.data();
                    const U *sA = srcAlpha.data(), *dA = dstAlpha.data();
                    if constexpr (std::is_same_v<T, U>)
                        if (run == 19) { // an alpha is composited with itself
                            sA = src.data();
                            dA = dst.data();
                        }
                    const std::vector<T> d(dst.data(), dst.data() + count), source(s, s + count);
                    const std::vector<U> sourceAlpha(sA, sA + count), alpha(dA, dA + count);
                    const int rows = count % 2 == 0 && count > 100 ? 2 : 1;
                    call(static_cast<RU_CompositeType>(type), rows, count / rows, dst.data(),
                         given & 1 ? dA : nullptr, s, given & 2 ? sA : nullptr);
                    ASSERT_TRUE(dst.guardsIntact()) << type << ", " << count << " values, run " << run;
                    for (size_t i = 0; i < d.size(); ++i)
                        ASSERT_TRUE(right(type, i, source[i], d[i], given & 2 ? &sourceAlpha[i] : nullptr,
                                          given & 1 ? &alpha[i] : nullptr, dst.data()[i]))
                            << "operation " << type << ", alphas " << given << ", " << i << " of " << count
                            << ", run " << run << ": s " << +source[i] << ", d " << +d[i] << ", sA "
                            << +sourceAlpha[i] << ", dA " << +alpha[i] << ", stored " << +dst.data()[i];
                }
    EXPECT_EQ(runs, 15 * 4 * (40 * 6 + 11 * 20));
}

/// Is `stored` the code of an unrounded result that may be off by `slack`? Without slack halves go up.
template <class T>
bool isCodeOf(T stored, double unrounded, double slack)
{
    const double within = std::isnan(unrounded) ? 0.0 : std::clamp<double>(unrounded, 0.0, white<T>);
    return slack == 0.0 ? stored == std::floor(within + 0.5) : std::abs(stored - within) <= 0.5 + slack;
}

/// What an alpha's code is multiplied by. 16-bit colours with 16-bit alphas have a number of their own where
/// the destination shows beneath the source.
template <class T, class U>
float alphaScale(int type, bool withSource)
{
    if (sizeof(T) == 2 && sizeof(U) == 2 && (type <= 1 || (type == 2 && withSource)))
        return 1.5301048e-05f;
    return isFloat<U> ? 1.0f : sizeof(U) == 1 ? 0.003921569f : 1.5259022e-05f;
}

template <class T, class U>
bool isComposite(int type, T s, T d, const U* sourceAlpha, const U* alpha, T stored)
{
    using N = Number<T>;
    const N scale = alphaScale<T, U>(type, sourceAlpha != nullptr);
    const N sA = sourceAlpha ? static_cast<N>(*sourceAlpha) * scale : 1;
    const N dA = alpha ? static_cast<N>(*alpha) * scale : 1;
    const N exact = composited<N>(type, s, d, sourceAlpha ? &sA : nullptr, alpha ? &dA : nullptr, white<T>);
    if constexpr (!isFloat<T>) {
        const auto size = [](N a) { return std::isfinite(a) ? std::max(1.0, std::abs(a)) : 1.0; };
        const bool isExact = (sizeof(T) == 1 && sizeof(U) == 1) || (type >= 6 && type != 9 && type != 13);
        return isCodeOf(stored, exact, isExact ? 0.0 : (s * size(dA) + d * size(sA)) * 0x1p-22);
    } else if (isPlain(type, sourceAlpha, alpha)) {
        return std::bit_cast<uint32_t>(stored) == std::bit_cast<uint32_t>(exact);
    } else {
        return sameFloat(stored, isFloat<U> ? exact : std::clamp(exact, -1e32f, 1e32f)) ||
               (!isFloat<U> && std::isnan(exact)); // a NaN may be clamped
    }
}

template <class T>
bool isCompositeAlpha(int type, T s, T d, T stored)
{
    const Number<T> exact = compositedAlpha<Number<T>>(type, s, d, white<T>);
    if constexpr (isFloat<T>)
        return sameFloat(stored, exact);
    else
        return isCodeOf(stored, exact, sizeof(T) == 1 ? 0.0 : (s + d) * 0x1p-22);
}

/// What the loops of an instruction set make of colours and alphas in many pairings.
template <class T, class U>
std::vector<T> resultsOf(PXL_InstructionSet set)
{
    const std::vector<T> colours = values<T>();
    const std::vector<U> alphas = values<U>();
    const int64_t count = 1999;
    const ru_CompositeLoops<T, U>& pair = ru_compositeRows(set);
    const ru_CompositeAlphaLoops<T>& alpha = ru_compositeRows(set);
    std::vector<T> all;
    for (size_t from = 0; from < 30; ++from)
        for (size_t step = 0; step < std::size(pair.loops); ++step)
            for (const bool ofAlphas : {false, true}) {
                const T* s = &colours[2001 + from];
                std::vector<T> d(colours.begin(), colours.begin() + count);
                if (!ofAlphas)
                    pair.loops[step](d.data(), &alphas[2 * from], s, &alphas[2000], count);
                else if (step < std::size(alpha.loops))
                    alpha.loops[step](d.data(), s, count);
                all.insert(all.end(), d.begin(), d.end());
            }
    return all;
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
                return isCompositeAlpha<T>(type, given ? s : static_cast<T>(white<T>), d, stored);           \
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
            return sameFloat(stored, selected(type, s, d, sA, dA, geometry));
        });
}

// Two inputs go through all pairs of codes, the others take some.
TEST(Composite, BytesAreTheNearestToTheFormulaForEveryPairOfInputs)
{
    const Bytes some = {0, 1, 128, 255};
    int64_t pairs = 0;
    for (int type = 0; type < types; ++type)
        for (size_t one = 0; one < 4; ++one)
            for (size_t other = 0; other < one; ++other)
                for (size_t rest = 0; rest < 16; ++rest) {
                    const bool readsAlphas = type <= 4 || type == 13;
                    if (!readsAlphas && (one != 1 || rest != 0))
                        continue; // the colours only
                    Bytes in[4];  // s, d, sA, dA
                    for (size_t k = 0, digits = rest; k < 4; ++k)
                        if (k != one && k != other) {
                            in[k].assign(65536, some[digits % 4]);
                            digits /= 4;
                        }
                    in[one].resize(65536);
                    in[other].resize(65536);
                    for (size_t i = 0; i < 65536; ++i) {
                        in[one][i] = static_cast<unsigned char>(i);
                        in[other][i] = static_cast<unsigned char>(i >> 8);
                    }
                    Bytes out = in[1], alpha = in[1];
                    const auto name = static_cast<RU_CompositeType>(type);
                    RU_Composite::composite(name, 256, 256, out.data(), in[3].data(), in[0].data(),
                                            in[2].data());
                    RU_Composite::compositeAlpha(name, 256, 256, alpha.data(), in[0].data());
                    for (size_t i = 0; i < 65536; ++i)
                        ASSERT_TRUE(isComposite(type, in[0][i], in[1][i], &in[2][i], &in[3][i], out[i]) &&
                                    isCompositeAlpha(type, in[0][i], in[1][i], alpha[i]))
                            << "operation " << type << ": s " << +in[0][i] << ", d " << +in[1][i] << ", sA "
                            << +in[2][i] << ", dA " << +in[3][i] << ", stored " << +out[i] << " and "
                            << +alpha[i];
                    pairs += 65536;
                }
    EXPECT_EQ(pairs, 65536 * (6 * 6 * 16 + 9));
}

TEST(Composite, OtherOperationsAndCountsWithoutValuesDoNothing)
{
    const float zero = 0, one = 1;
    const float* const geometry[4] = {&one};
    const int cases[][3] = {{-1, 1, 1}, {15, 1, 1}, {1 << 30, 1, 1}, {0, 0, 1},
                            {6, 1, 0},  {9, -1, 1}, {6, 1, -3}};
    for (const auto& [type, n, m] : cases) {
        const auto name = static_cast<RU_CompositeType>(type);
        float value = 0.5f;
        RU_Composite::composite(name, n, m, &value, &one, &one, &zero);
        RU_Composite::compositeAlpha(name, n, m, &value, &one);
        RU_Composite::compositeGeo(name, n, m, &value, &one, &one, &one, geometry);
        EXPECT_EQ(value, 0.5f) << type << ", " << n << " x " << m;
    }
}

TEST(Composite, EveryInstructionSetGivesTheSameBytes)
{
    const auto same = []<class T>(T a, T b) {
        return isFloat<T> ? sameFloat(static_cast<float>(a), static_cast<float>(b)) : a == b;
    };
    for (const PXL_InstructionSet set : runnableSets()) {
#define TEST_PAIR(T, U)                                                                                      \
    EXPECT_TRUE(                                                                                             \
        std::ranges::equal(resultsOf<T, U>(set), resultsOf<T, U>(PXL_InstructionSet::baseline), same))       \
        << #T ", " #U ", " << PXLinstructionSetName(set);
        RU_FOR_EACH_COMPOSITE_PAIR(TEST_PAIR)
#undef TEST_PAIR
    }
}
