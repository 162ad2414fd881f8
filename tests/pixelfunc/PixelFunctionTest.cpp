#include <RU/pixelfunc/RU_AddFunc.h>
#include <RU/pixelfunc/RU_MAddFunc.h>
#include <RU/pixelfunc/RU_MultFunc.h>
#include <reference/Chains.h>
#include <reference/Formats.h>

#include <thread>

using namespace reference;

namespace {

/// A host's own function, with no form but the scalar one.
class Halve : public RU_PixelFunction
{
public:
    RU_ScalarForm getPixelFunction() const override
    {
        return [](RU_PixelFunction*, float v, int component) { return component == 3 ? v : v * 0.5f; };
    }
};

RU_PixelFunction* anyFunction(Random& random)
{
    const auto number = [&] { return static_cast<float>(random.between(-2.0, 2.0)); };
    switch (random.between(0, 11)) {
    case 0:
        return new RU_AddFunc(random.oneIn(4) ? -0.0f : number());
    case 1:
        return new RU_MultFunc(random.oneIn(4) ? HUGE_VALF : number());
    case 2:
        return new RU_MAddFunc(number(), number());
    case 3:
        return new RU_ScaleFunc(number(), number());
    case 4:
        return new RU_LimitFunc(random.oneIn(2), number(), random.oneIn(2), number(), random.oneIn(2));
    case 5:
        return new RU_NegateFunc;
    case 6:
        return new RU_GammaFunc(number());
    case 7:
        return new RU_PowerFunc(static_cast<float>(random.between(-4, 4)));
    case 8:
        return new RU_LevelsFunc(0, 1, number(), 0, 1, 0, random.oneIn(2) ? 0 : number(), 1,
                                 random.oneIn(2) ? 1 : number(), 0, 1);
    case 9:
        return new RU_FloorFunc;
    case 10:
        return new Halve;
    default:
        return new Swap;
    }
}

std::vector<uint32_t> bitsOf(const std::vector<float>& values)
{
    std::vector<uint32_t> bits;
    for (const float v : values)
        bits.push_back(std::bit_cast<uint32_t>(v));
    return bits;
}

} // namespace

TEST(PixelFunction, ChainRunsInOrderInEveryForm)
{
    const Chain chain({new RU_AddFunc(1.0f), new RU_MultFunc(3.0f), new RU_AddFunc(-0.5f)});
    EXPECT_EQ(chain->processValue(2.0f, 0), 2.0f) << "before building";
    for (int time = 0; time < 2; ++time) { // building twice does not apply the chain twice
        chain->buildPixelEngine();
        chain->buildVectorEngine();
        float row[] = {2.0f, -1.0f}, red = 2.0f, alpha = -1.0f;
        float* components[] = {&red, nullptr, nullptr, &alpha};
        chain->processRow(row, row, 2, 1);
        chain->processValues(components);
        EXPECT_EQ(chain->processValue(2.0f, 0), 8.5f);
        EXPECT_EQ(row[0], 8.5f);
        EXPECT_EQ(row[1], -0.5f);
        EXPECT_EQ(red, 8.5f);
        EXPECT_EQ(alpha, -0.5f);
    }
    EXPECT_FALSE(chain->areAllComponentsNeeded() || chain->isComponentDependent());
}

// However a chain joins its functions into passes.
TEST(PixelFunction, RowsOfChainsHaveTheBitsOfSingleValues)
{
    for (uint64_t seed = 0; seed < 400; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const Chain chain({new RU_PixelFunction});
        for (int left = random.between(1, 7); left > 0; --left) {
            RU_PixelFunction* const next = anyFunction(random);
            bool scope[4];
            for (bool& scoped : scope)
                scoped = !random.oneIn(4);
            next->setScope(scope);
            next->setNext(chain->next());
            chain->setNext(next);
        }
        chain->buildPixelEngine();
        chain->buildVectorEngine();
        const int64_t count = random.between(0, 1100);
        std::vector<float> in[4], pixels[4], apart[4], inPlace[4];
        const float* from[4];
        float *to[4], *same[4];
        for (int c = 0; c < 4; ++c) {
            in[c].resize(static_cast<size_t>(count) + 1); // one that nobody reads or writes
            for (float& v : in[c])
                v = random.oneIn(90) ? anyFloat(random) : static_cast<float>(random.between(-1.0, 2.0));
            pixels[c] = apart[c] = inPlace[c] = in[c];
            from[c] = in[c].data();
            to[c] = apart[c].data();
            same[c] = inPlace[c].data();
            std::vector<float> row = in[c], values = in[c];
            chain->processRow(from[c], row.data(), count, c);
            for (int64_t i = 0; i < count; ++i)
                values[static_cast<size_t>(i)] = chain->processValue(from[c][i], c);
            ASSERT_EQ(bitsOf(row), bitsOf(values)) << c;
        }
        chain->processRows(from, to, count);
        chain->processRows(same, same, count);
        for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
            float* pixel[] = {&pixels[0][i], &pixels[1][i], &pixels[2][i], &pixels[3][i]};
            chain->processValues(pixel);
        }
        for (int c = 0; c < 4; ++c)
            ASSERT_TRUE(bitsOf(apart[c]) == bitsOf(pixels[c]) && bitsOf(inPlace[c]) == bitsOf(pixels[c]))
                << c;
    }
}

TEST(PixelFunction, EnginesCanBeBuiltInEitherOrderAndKeepToTheScope)
{
    for (const bool pixelFirst : {false, true}) {
        auto* const redOnly = new RU_AddFunc(1.0f);
        const bool scope[] = {true, false, false, false};
        redOnly->setScope(scope);
        const Chain chain({redOnly, new Swap, new RU_MultFunc(2.0f)});
        pixelFirst ? chain->buildPixelEngine() : chain->buildVectorEngine();
        pixelFirst ? chain->buildVectorEngine() : chain->buildPixelEngine();
        float values[] = {0.0f, 1.5f, 2.0f, 3.0f};
        float* components[] = {values, values + 1, values + 2, values + 3};
        chain->processValues(components);
        EXPECT_EQ(std::vector(values, values + 4), (std::vector{3.0f, 2.0f, 4.0f, 6.0f}));
        for (int c = 0; c < 4; ++c) { // without a scalar form, Swap passes values through
            float row[] = {1.0f};
            chain->processRow(row, row, 1, c);
            EXPECT_EQ(row[0], c == 0 ? 4.0f : 2.0f);
            EXPECT_EQ(chain->processValue(1.0f, c), row[0]);
        }
    }
}

TEST(PixelFunction, QueriesLookFromTheFunctionToTheEndOfItsChain)
{
    const float four[] = {1.0f, 2.0f, 3.0f, 4.0f};
    const Chain chain({new RU_AddFunc(1.0f), new RU_MAddFunc(four, four), new Swap, new RU_AddFunc(1.0f)});
    RU_PixelFunction* function = chain.head();
    for (const auto& [needed, dependent] :
         {std::pair(true, true), {true, true}, {true, false}, {false, false}}) {
        EXPECT_EQ(function->areAllComponentsNeeded(), needed);
        EXPECT_EQ(function->isComponentDependent(), dependent);
        function = function->next();
    }
    EXPECT_EQ(function, nullptr);
}

TEST(PixelFunction, ScopeIsPartialUnlessAllFlagsAreEqual)
{
    RU_PixelFunction function;
    EXPECT_FALSE(function.isPartialScope());
    for (int mask = 0; mask < 16; ++mask) {
        const bool scope[] = {(mask & 1) != 0, (mask & 2) != 0, (mask & 4) != 0, (mask & 8) != 0};
        function.setScope(scope);
        const bool partial = mask != 0 && mask != 15;
        EXPECT_EQ(function.isPartialScope(), partial);
        EXPECT_EQ(function.isComponentDependent(), partial);
        EXPECT_TRUE(std::equal(scope, scope + 4, function.getScope()));
    }
}

TEST(PixelFunction, LongChainsAreDeletedWithoutDeepRecursion)
{
    auto* const head = new RU_PixelFunction;
    for (int i = 1; i < 1'000'000; ++i) {
        auto* const next = new RU_PixelFunction;
        next->setNext(head->next());
        head->setNext(next);
    }
    delete head;
}

TEST(PixelFunction, ManyThreadsMayBuildTheSameChain)
{
    const Chain chain({new RU_AddFunc(1.0f), new RU_MultFunc(2.0f)});
    std::vector<std::jthread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] {
            chain->buildPixelEngine();
            chain->buildVectorEngine();
            float v = 1.0f;
            float* components[] = {&v, nullptr, nullptr, nullptr};
            chain->processValues(components);
            EXPECT_EQ(chain->processValue(1.0f, 0), 4.0f);
            EXPECT_EQ(v, 4.0f);
        });
}
