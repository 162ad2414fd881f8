#include <RU/pixelfunc/RU_AddFunc.h>
#include <RU/pixelfunc/RU_MAddFunc.h>
#include <RU/pixelfunc/RU_MultFunc.h>
#include <reference/Chains.h>
#include <reference/Formats.h>

#include <thread>

using namespace reference;

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
