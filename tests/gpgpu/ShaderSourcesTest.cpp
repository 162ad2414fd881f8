#include <RU/gpgpu/RU_ShaderSources.h>
#include <RU/gpgpu/ru_ShaderFile.h>
#include <UT/UT_PathSearch.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
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
    fs::remove(late);
    EXPECT_EQ(textOf(file), text);
}

TEST_F(ShaderSources, ReplaceEveryMarkerInOrder)
{
    put("first", "gpgpu_marked", "%1 %2(%1 %11) %3");
    EXPECT_EQ(textOf("gpgpu_marked", {{"%1", "<%1%2>"}, {"%2", ""}, {"", "never"}, {"%4", "absent"}}),
              "<%1> (<%1> <%1>1) %3");
    EXPECT_EQ(textOf("gpgpu_marked"), "%1 %2(%1 %11) %3") << "the kept text stays";
}

/// A getter with any arguments but the output.
template <class... Arguments>
std::string textOf(void (*getter)(Arguments..., UT_String&))
{
    UT_String text;
    getter(Arguments()..., text);
    return text.buffer();
}

TEST(ShaderSourceList, NamesFilesThatAreInstalled)
{
#define EXPECT_TEXT(FUNCTION, PARAMETERS, FILE, ...)                                                         \
    EXPECT_NE(textOf(static_cast<void(*) PARAMETERS>(FUNCTION)), "") << #FUNCTION << ": " << FILE;
    RU_FOR_EACH_SHADER_SOURCE(EXPECT_TEXT)
#undef EXPECT_TEXT
}

TEST_F(ShaderSources, AreReadOnceByManyThreads)
{
    const std::string text(100000, 'z');
    put("first", "gpgpu_shared", text);
    std::vector<std::string> got(8);
    std::vector<std::thread> threads;
    for (std::string& one : got)
        threads.emplace_back([&] { one = textOf("gpgpu_shared"); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(got, std::vector(8, text));
}
