#include <gtest/gtest.h>
#include <reference/Functions.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

using namespace reference;

namespace {

/// Writes down what a shader hands over: all values of constants, some of arrays.
class RecordingGPU : public RE_OGLComputeGPU
{
public:
    RecordingGPU() { text.precision(7); }

    void setConstant(const char* name, RE_GPUType type, int size, const void* data, int count,
                     bool normalize) override
    {
        EXPECT_FALSE(normalize);
        text << "; " << name;
        writeValues(type, (type == RE_GPU_MATRIX4 ? 16 : size) * count, data);
    }
    void setArray2D(const char* name, RE_GPUType type, int size, int width, int height,
                    const void* data) override
    {
        text << "; " << name << " " << width << " x " << height << ", type " << type << ", " << size << ":";
        writeValues(type, size * width * height, data);
    }
    void setArray2D(const char* name, RE_GPUType type, int size, int width, int height, const void* d0,
                    const void* d1, const void* d2, const void* d3) override
    {
        text << "; " << name << " " << width << " x " << height << ", type " << type << ", " << size << ":";
        for (const void* plane : {d0, d1, d2, d3})
            writeValues(type, plane ? 1 : 0, plane);
    }

    void setOutputArray2D(const char*, RE_GPUType, int, int, int, void*) override {}
    bool setProgram(const char*, const char*, bool) override { return false; }
    bool compute(UT_String&, bool) override { return false; }
    void getResults() override {}

    std::ostringstream text;

private:
    void writeValues(RE_GPUType type, int count, const void* data)
    {
        for (int i = 0; i < count; i += std::max(count / 24, 1))
            type == RE_GPU_INT32 ? text << " " << static_cast<const int*>(data)[i]
                                 : text << " " << static_cast<const float*>(data)[i];
    }
};

/// Declares one thing of each kind, twice where once has to suffice.
class Declarer : public RU_PixelFunction
{
public:
    void getPixelShader(UT_String& body) override
    {
        const float values[] = {1, 2, 3, 4, 5, 6};
        const int planes[] = {7, 8, 9, 10};
        addConstant("one", RE_GPU_FLOAT32, 1, values, 1);
        addConstant("three", RE_GPU_FLOAT32, 2, values, 3);
        addLocal("hue", RE_GPU_FLOAT32, 3);
        addArray("table", RE_GPU_INT32, 2, 2, 1, planes);
        addArray("planes", RE_GPU_INT32, 4, 1, 1, planes, nullptr, planes + 1, planes + 2);
        addFunction("zed", "void zed();");
        addFunction("alpha", "void alpha();");
        addFunction("zed", "another text");
        usesGlobal("width");
        usesGlobal("num_comps");
        usesGlobal("num_comps");
        body = UT_String(std::to_string(getNumComps()) + " of " + std::to_string(getFunctionIndex()));
    }
};

struct TypeNamer : RU_PixelFunction
{
    void getPixelShader(UT_String&) override
    {
        for (int type = 0; type <= 14; ++type)
            for (int size = 1; size <= 4; ++size)
                addLocal("v", static_cast<RE_GPUType>(type), size);
    }
};

/// The texts of all functions one after the other.
class Shaders
{
public:
    /// Adds the values of a function's constants and arrays, then declarations and body unless they are those of the
    /// function before, then functions that it brings along unless they are shared or there already.
    void add(const std::string& name, RU_PixelFunction& function)
    {
        RU_PixelFunction head;
        RecordingGPU gpu;
        UT_String body;
        function.declareShader(head, &gpu, 7, body);
        std::string declared =
            head.shader().parameterDeclarations().buffer() + std::string("\n") + body.buffer();
        const std::string code = head.shader().addedFunctionCode().buffer();
        for (const std::string shared : {" toHSV(", " fromHSV("})
            EXPECT_TRUE(declared.find(shared) == declared.npos ||
                        code.find("VEC3" + shared + "VEC3 value") != code.npos)
                << name;
        declared += declared.back() == '\n' ? "" : "\n";
        text += "-- " + name + gpu.text.str() + "\n" +
                (std::exchange(before_, declared) == declared ? "" : declared);
        text += code.find("HSV(") == code.npos && text.find(code) == text.npos ? code : "";
    }

    std::string text;

private:
    std::string before_;
};

} // namespace

// After a deliberate change, copy the file that the failure names over the expected one.
TEST(Shader, EveryFunctionHasItsTextAndConstants)
{
    Shaders shaders;
    for (const Function& function : allFunctions())
        shaders.add(function.name, *function.object);
    TypeNamer types;
    RU_PixelFunction base, head;
    shaders.add("types", types);
    shaders.add("base", base);

    head.setNumComps(3);
    for (const int index : {12, 13}) {
        Declarer declarer;
        RecordingGPU gpu;
        UT_String body;
        declarer.declareShader(head, &gpu, index, body);
        shaders.text += "-- head, " + std::string(body.view()) + gpu.text.str() + "\n";
        EXPECT_TRUE(declarer.shader().parameterDeclarations().isEmpty() && head.usesNumCompsGlobal());
    }
    for (const UT_String& text : {head.shader().parameterDeclarations(), head.shader().callArguments(),
                                  head.shader().localDeclarations(), head.shader().addedFunctionCode()})
        shaders.text += std::string(text.view()) + "\n";

    std::ifstream file(KREILUGE_TESTS "/reference/shaders.txt");
    const std::string expected{std::istreambuf_iterator<char>(file), {}};
    const std::string now = ::testing::TempDir() + "shaders.txt";
    if (shaders.text != expected)
        std::ofstream(now) << shaders.text;
    EXPECT_EQ(shaders.text, expected) << now;
}
