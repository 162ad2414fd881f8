#include <RU/gpgpu/RU_ShaderSources.h>
#include <RU/gpgpu/ru_ShaderFile.h>
#include <UT/UT_PathSearch.h>
#include <gpgpu/ShaderPrograms.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;

namespace {

/// Two directories that KREILUGE_PATH lists, after one that does not exist.
class ShaderSources : public ::testing::Test
{
protected:
    void SetUp() override
    {
        std::string name = (fs::temp_directory_path() / "shaders-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        root_ = name;
        for (const char* place : {"first", "second"})
            fs::create_directories(root_ / place / "ogl2/gpgpu");
        const std::string list = name + "/none::" + name + "/first:" + name + "/second";
        setenv("KREILUGE_PATH", list.c_str(), 1);
    }
    void TearDown() override
    {
        unsetenv("KREILUGE_PATH");
        fs::remove_all(root_);
    }

    fs::path path(const char* place, const char* name) const { return root_ / place / "ogl2/gpgpu" / name; }
    void put(const char* place, const char* name, const std::string& text) const
    {
        std::ofstream(path(place, name)) << text;
    }

    static std::string textOf(const char* file, std::initializer_list<ru_Substitution> substitutions = {})
    {
        UT_String text("what was there before");
        ru_writeShaderFile(text, file, substitutions);
        return text.buffer();
    }
    static std::string found(const char* name)
    {
        return UT_PathSearch::getInstance(UT_PATH_RESOURCES)->findFile(name).buffer();
    }

    fs::path root_;
};

} // namespace

TEST_F(ShaderSources, AreFoundInOrderOfTheListedDirectoriesAndBesideTheLibrary)
{
    put("second", "gpgpu_a", "");
    EXPECT_EQ(found("ogl2/gpgpu/gpgpu_a"), path("second", "gpgpu_a"));
    put("first", "gpgpu_a", "");
    EXPECT_EQ(found("ogl2/gpgpu/gpgpu_a"), path("first", "gpgpu_a"));
    EXPECT_EQ(found("ogl2/gpgpu"), "") << "a directory";

    const fs::path before = fs::current_path();
    fs::current_path(root_);
    setenv("KREILUGE_PATH", "second", 1);
    EXPECT_EQ(found("ogl2/gpgpu/gpgpu_a"), fs::current_path() / "second/ogl2/gpgpu/gpgpu_a");
    fs::current_path(before);

    const fs::path own = found("ogl2/gpgpu/gpgpu_toHSV");
    EXPECT_TRUE(own.is_absolute() && fs::exists(own)) << own;
    EXPECT_EQ(own.parent_path().parent_path().parent_path().filename(), "kreiluge");
    setenv("KREILUGE_PATH", (root_ / "second").c_str(), 1);
    put("second", "gpgpu_toHSV", "");
    EXPECT_NE(found("ogl2/gpgpu/gpgpu_toHSV"), own) << "listed directories come first";
}

TEST_F(ShaderSources, AreTriedAgainUntilTheyCanBeReadAndThenKept)
{
    const char* file = "gpgpu_late";
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(textOf(file), "");
    EXPECT_EQ(textOf(file), "");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");

    const fs::path late = path("first", "gpgpu_late");
    ASSERT_EQ(mknod(late.c_str(), S_IFSOCK | 0600, 0), 0); // nobody can open one, root included
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(textOf(file), "");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Error loading " + late.string() + "\n");
    fs::remove(late);

    const std::string text = std::string(700, 'x') + "\n\n" + std::string(255, 'y') + "\nno end of line";
    put("first", "gpgpu_late", text);
    EXPECT_EQ(textOf(file), text);
    put("first", "gpgpu_late", "changed");
    EXPECT_EQ(textOf(file), text);
}

TEST_F(ShaderSources, ReplaceEveryMarkerOfTheFileAndNoneOfWhatWasPutIn)
{
    put("first", "gpgpu_marked", "%1 %2(%1 %11) %3%points%");
    EXPECT_EQ(
        textOf("gpgpu_marked", {{"%points", "%p"}, {"%1", "<%1%2>"}, {"%2", ""}, {"", "never"}, {"%p", "x"}}),
        "<%1%2> (<%1%2> <%1%2>1) %3%p%");
    EXPECT_EQ(textOf("gpgpu_marked", {{"%1", nullptr}, {"%2", "two"}}), "%1 two(%1 %11) %3%points%");
    EXPECT_EQ(textOf("gpgpu_marked"), "%1 %2(%1 %11) %3%points%") << "the kept text stays";
    EXPECT_EQ(textOf(""), "");
}

TEST(ShaderSourceList, LeavesMarkersOfImpossibleCountsAndIsEmptyForUnknownTypes)
{
    UT_String text;
    const auto has = [&](const char* part) { return text.view().find(part) != std::string_view::npos; };
    for (const int n : {INT_MIN, -1, 0, 5, INT_MAX}) {
        RUgetTransformBlur(n, "s", text);
        EXPECT_TRUE(has(("\n%1 transformBlur_s" + std::to_string(n) + "(").c_str()) && has("%t sum")) << n;
        RUgetDeform("s", n, text);
        EXPECT_TRUE(has("\n%1 deform_s%3(")) << n;
        text = "before";
        RUgetSoftDropoff(n == 0 ? 5 : n == 5 ? 6 : n, text);
        EXPECT_TRUE(text.isEmpty()) << n;
        text = "before";
        RUgetLuminanceFunc(static_cast<PXL_LumFunction>(n == 0 || n == 5 ? 9 : n), text);
        EXPECT_TRUE(text.isEmpty()) << n;
    }
}

TEST(ShaderSourceList, NamesAllFilesThatThereAre)
{
#define ADD_ROW(...) +1
    EXPECT_EQ(RU_FOR_EACH_SHADER_SOURCE(ADD_ROW), 65);
#undef ADD_ROW
    std::set<std::string> files;
    const fs::path one =
        UT_PathSearch::getInstance(UT_PATH_RESOURCES)->findFile("ogl2/gpgpu/gpgpu_toHSV").buffer();
    for (const auto& entry : fs::directory_iterator(one.parent_path()))
        files.insert(entry.path().filename());
    EXPECT_EQ(files.size(), 77u);
    EXPECT_EQ(shaders::listedFiles(), files);
    EXPECT_EQ(shaders::usedFiles(), files) << "in programs whose values are compared";
}

TEST_F(ShaderSources, AreReadOnceByManyThreads)
{
    const fs::path shared = path("first", "gpgpu_shared"); // a pipe: whoever else reads it gets less
    ASSERT_EQ(mkfifo(shared.c_str(), 0600), 0);
    const std::string text(10000, 'z');
    std::vector<std::string> got(8);
    std::vector<std::jthread> threads;
    for (std::string& one : got)
        threads.emplace_back([&] { one = textOf("gpgpu_shared"); });
    std::ofstream pipe(shared); // as soon as one reads
    fs::remove(shared);
    pipe << text;
    pipe.close();
    threads.clear();
    EXPECT_EQ(got, std::vector(8, text));
}
