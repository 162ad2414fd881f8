#include <PXL/PXL_Caps.h>
#include <RU/composite/ru_BlendRows.h>
#include <RU/composite/ru_ChromaAdjustRows.h>
#include <RU/composite/ru_CompositeRows.h>
#include <RU/filter/ru_AreaRows.h>
#include <RU/filter/ru_EdgeDetectRows.h>
#include <RU/filter/ru_ExtremeRows.h>
#include <RU/filter/ru_FeatherRows.h>
#include <RU/filter/ru_SubPixelRows.h>
#include <RU/generate/ru_NoiseRows.h>
#include <RU/pixelfunc/ru_CurveRows.h>
#include <RU/pixelfunc/ru_LineRows.h>
#include <RU/pixelfunc/ru_LookUpRows.h>
#include <RU/pixelfunc/ru_VectorExpressions.h>
#include <RU/shape/ru_FillRows.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

constexpr PXL_InstructionSet allSets[] = {
#define VALUE(SET) PXL_InstructionSet::SET,
    PXL_FOR_EACH_INSTRUCTION_SET(VALUE)
#undef VALUE
};

bool choosesBy(std::string_view text)
{
    PXL_InstructionSet expected = PXLwidestInstructionSet();
    for (const PXL_InstructionSet set : allSets)
        if (text == PXLinstructionSetName(set))
            expected = std::min(expected, set);
    return PXLinstructionSet() == expected && ru_convertRows().compiledFor == expected;
}

} // namespace

TEST(Caps, EachKernelTableIsCompiledForItsSet)
{
    for (const PXL_InstructionSet set : allSets) {
#define EXPECT_SET(TABLE, NAME) EXPECT_EQ(NAME(set).compiledFor, set) << #NAME;
        RU_FOR_EACH_KERNEL_TABLE(EXPECT_SET)
#undef EXPECT_SET
    }
}

#if defined(__x86_64__)
TEST(Caps, ProcessorIsReadRight)
{
    PXLdetermineProcCaps();
    EXPECT_TRUE(PXLcpuHasMMX() && PXLcpuHasSSE() && PXLcpuHasXMMX()) << "part of every 64-bit processor";
    EXPECT_EQ(PXLwidestInstructionSet() >= PXL_InstructionSet::avx2, __builtin_cpu_supports("avx2") != 0);
}
#endif

// What a process chose stays; so each text is tried in a process of its own, which runs this test alone.
TEST(CapsDeathTest, EnvironmentCapsTheSet)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const char* before = std::getenv("KREILUGE_ISA");
    const std::string kept = before != nullptr ? before : "";
    for (const char* text : {"baseline", "avx2", "avx512", "", "AVX2", "nonsense"}) {
        ASSERT_EQ(setenv("KREILUGE_ISA", text, 1), 0);
        EXPECT_EXIT(std::exit(choosesBy(text) ? 0 : 1), ::testing::ExitedWithCode(0), "") << text;
    }
    before != nullptr ? setenv("KREILUGE_ISA", kept.c_str(), 1) : unsetenv("KREILUGE_ISA");
}

// Entries of ctest run all tests with the variable set; this one shows that it took.
TEST(Caps, RunUsesTheSetThatWasAskedFor)
{
    const char* text = std::getenv("KREILUGE_ISA");
    if (text == nullptr)
        GTEST_SKIP() << "KREILUGE_ISA is not set";
    const auto isCalled = [&](PXL_InstructionSet set) {
        return PXLinstructionSetName(set) == std::string_view(text);
    };
    EXPECT_TRUE(std::ranges::any_of(allSets, isCalled)) << text;
    EXPECT_TRUE(choosesBy(text));
}
