#include <CL/CL_Clip.h>
#include <PXL/PXL_Lookup.h>
#include <RU/pixelfunc/RU_ColorCurveFunc.h>
#include <RU/pixelfunc/RU_HueCurveFunc.h>
#include <RU/pixelfunc/RU_LookupClipFunc.h>
#include <RU/pixelfunc/RU_LookupTableFunc.h>
#include <reference/Formats.h>
#include <reference/Functions.h>
#include <reference/VectorFunctions.h>

#include <fstream>
#include <iterator>
#include <sstream>

using namespace reference;

namespace {

/// Keeps what a shader declares.
class RecordingGPU : public RE_OGLComputeGPU
{
public:
    struct ConstantCall
    {
        std::string name;
        RE_GPUType type;
        std::vector<float> values;
        int count;
        bool normalize;
    };
    struct ArrayCall
    {
        std::string name;
        std::array<int, 4> shape; // type, vector size, width, height
        std::vector<const void*> data;

        bool operator==(const ArrayCall&) const = default;
    };

    void setConstant(const char* name, RE_GPUType type, int size, const void* data, int count,
                     bool normalize) override
    {
        const int elements = (type == RE_GPU_MATRIX4 ? 16 : size) * count;
        const auto* floats = static_cast<const float*>(data);
        const auto* integers = static_cast<const int*>(data);
        std::vector<float> values(floats, floats + elements);
        if (type == RE_GPU_INT32)
            values.assign(integers, integers + elements);
        constants.push_back({name, type, values, count, normalize});
    }
    void setArray2D(const char* name, RE_GPUType type, int size, int width, int height,
                    const void* data) override
    {
        arrays.push_back({name, {type, size, width, height}, {data}});
        const auto* floats = static_cast<const float*>(data);
        if (type == RE_GPU_FLOAT32)
            lastArray.assign(floats, floats + size * width * height);
    }
    void setArray2D(const char* name, RE_GPUType type, int size, int width, int height, const void* d0,
                    const void* d1, const void* d2, const void* d3) override
    {
        arrays.push_back({name, {type, size, width, height}, {d0, d1, d2, d3}});
    }

    std::vector<ConstantCall> constants;
    std::vector<ArrayCall> arrays;
    std::vector<float> lastArray; ///< the values of the last one that has floats
};

constexpr int planes[4] = {};

/// Declares one thing of each kind, twice where once has to suffice.
class Declarer : public RU_PixelFunction
{
public:
    void getPixelShader(UT_String& body) override
    {
        const float values[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
        addConstant("one", RE_GPU_FLOAT32, 1, values, 1);
        addConstant("three", RE_GPU_FLOAT32, 2, values, 3);
        addLocal("hue", RE_GPU_FLOAT32, 3);
        addArray("table", RE_GPU_UINT8, 1, 5, 6, planes);
        addArray("planes", RE_GPU_FLOAT16, 4, 7, 8, planes, nullptr, planes + 1, planes + 2);
        addFunction("zed", "void zed();");
        addFunction("alpha", "void alpha();");
        addFunction("zed", "another text");
        usesGlobal("width");
        EXPECT_FALSE(usesNumCompsGlobal());
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

/// Functions that upload tables.
struct Uploads
{
    PXL_Lookup table{0, 1, 2, {1, 2, 3, 4, 5, 6}};
    CL_Clip three, single;
    RU_ColorCurve shorter, longer, hue, saturation;
    RU_ColorCurve* curves[3] = {&shorter, nullptr, &longer};

    RU_LookupTableFunc lookup{&table};
    RU_LookupClipFunc clip{&three}, oneTrack{&single}, noClip{nullptr};
    RU_ColorCurveFunc colourCurves{curves, 3}, noCurves{curves + 1, 1};
    std::unique_ptr<RU_HueCurveFunc> hueCurves;

    Uploads()
    {
        three.append(std::make_unique<CL_Track>(std::vector<CL_Key>{{0, 1}, {2, 3}, {5, 4}}));
        three.append(nullptr);
        three.append(std::make_unique<CL_Track>(10.0f, 4.0f, std::vector<float>{7, 8}));
        single.append(std::make_unique<CL_Track>(std::vector<CL_Key>{{0, 1}}));
        for (const float x : {0.0f, 1.0f, 2.0f}) {
            longer.addPoint(x, 10 + x, 1);
            if (x < 2)
                shorter.addPoint(x, 20 + x, 1);
        }
        shorter.create(false);
        longer.create(true);
        for (const float x : {0.0f, 0.25f, 0.75f})
            hue.addPoint(x, 0.5f + x, 0);
        saturation.addPoint(0, -1, 0);
        hueCurves = std::make_unique<RU_HueCurveFunc>(&hue, &saturation, nullptr);
    }
};

/// The array that a function uploads.
std::vector<float> arrayOf(RU_PixelFunction& function)
{
    RU_PixelFunction head;
    RecordingGPU gpu;
    UT_String body;
    function.declareShader(head, &gpu, 7, body);
    return gpu.lastArray;
}

/// Lists values of constants and sizes of arrays, then declarations and body unless they are those of the function
/// before, then functions that it brings along unless they are shared or in the list already.
void list(std::string& shaders, std::string& before, const std::string& name, RU_PixelFunction& function)
{
    RU_PixelFunction head;
    RecordingGPU gpu;
    UT_String body;
    function.declareShader(head, &gpu, 7, body);
    std::ostringstream values;
    values.precision(7);
    for (const auto& constant : gpu.constants) {
        EXPECT_FALSE(constant.normalize);
        values << "; " << constant.name;
        for (const float value : constant.values)
            values << " " << value;
    }
    for (const auto& [array, shape, data] : gpu.arrays)
        values << "; " << array << " " << shape[2] << " x " << shape[3] << ", type " << shape[0] << ", "
               << shape[1];
    std::string text = head.shader().parameterDeclarations().buffer() + std::string("\n") + body.buffer();
    const std::string code = head.shader().addedFunctionCode().buffer();
    const std::pair<const char*, const char*> shared[] = {
        {" toHSV(", "VEC3 toHSV(VEC3 value, out FLOAT minv, out FLOAT maxv, out FLOAT s1, out FLOAT hue,"},
        {" fromHSV(", "VEC3 fromHSV(VEC3 value, out INT i, out FLOAT hue, out FLOAT sat,"}};
    for (const auto& [called, defined] : shared)
        EXPECT_TRUE(text.find(called) == text.npos || code.find(defined) != code.npos) << name;
    text += text.back() == '\n' ? "" : "\n";
    shaders += "-- " + name + values.str() + "\n" + (std::exchange(before, text) == text ? "" : text);
    shaders += code.find("HSV(") == code.npos && shaders.find(code) == shaders.npos ? code : "";
}

} // namespace

// After a deliberate change, copy the file that the failure names over the expected one.
TEST(Shader, EveryFunctionHasItsTextAndConstants)
{
    std::string shaders, before;
    for (const Function& function : functions())
        list(shaders, before, function.kernel, *function.object);
    for (const VectorFunction& function : vectorFunctions())
        list(shaders, before, function.name, *function.object);
    Uploads uploads;
    TypeNamer types;
    RU_PixelFunction base;
    const std::pair<const char*, RU_PixelFunction*> others[] = {{"LookupTable", &uploads.lookup},
                                                                {"LookupClip", &uploads.clip},
                                                                {"LookupClip", &uploads.oneTrack},
                                                                {"LookupClip", &uploads.noClip},
                                                                {"ColorCurve", &uploads.colourCurves},
                                                                {"ColorCurve", &uploads.noCurves},
                                                                {"types", &types},
                                                                {"base", &base}};
    for (const auto& [name, function] : others)
        list(shaders, before, name, *function);
    std::ifstream file(KREILUGE_TESTS "/reference/shaders.txt");
    const std::string expected{std::istreambuf_iterator<char>(file), {}};
    const std::string now = ::testing::TempDir() + "shaders.txt";
    if (shaders != expected)
        std::ofstream(now) << shaders;
    EXPECT_EQ(shaders, expected) << now;
}

TEST(Shader, DeclarationsGoToTheHeadUnderIndexedNames)
{
    RU_PixelFunction head;
    Declarer declarer;
    RecordingGPU gpu;
    UT_String body;
    head.setNumComps(3);
    declarer.declareShader(head, &gpu, 12, body);

    EXPECT_EQ(body.view(), "3 of 12");
    EXPECT_EQ(head.shader().parameterDeclarations().view(),
              ", in FLOAT one12, in VEC2 three12[3], out VEC3 hue12, out VEC4 planes12, in int num_comps");
    EXPECT_EQ(head.shader().callArguments().view(), ",one12,three12,hue12,planes12, num_comps");
    EXPECT_EQ(head.shader().localDeclarations().view(), "VEC3 hue12;\n");
    EXPECT_EQ(head.shader().addedFunctionCode().view(), "void zed();\nvoid alpha();\n");
    EXPECT_TRUE(head.usesNumCompsGlobal());
    EXPECT_TRUE(declarer.shader().parameterDeclarations().isEmpty() &&
                declarer.shader().addedFunctionCode().isEmpty());

    ASSERT_EQ(gpu.constants.size(), 2u);
    EXPECT_EQ(gpu.constants[1].name, "three12");
    EXPECT_EQ(gpu.constants[1].values, (std::vector<float>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(gpu.constants[1].count, 3);
    const RecordingGPU::ArrayCall one{"table", {RE_GPU_UINT8, 1, 5, 6}, {planes}};
    const RecordingGPU::ArrayCall four{
        "planes12", {RE_GPU_FLOAT16, 4, 7, 8}, {planes, nullptr, planes + 1, planes + 2}};
    EXPECT_EQ(gpu.arrays, (std::vector{one, four}));

    Declarer second;
    second.declareShader(head, &gpu, 13, body);
    EXPECT_EQ(head.shader().addedFunctionCode().view(), "void zed();\nvoid alpha();\n") << "once per chain";
    EXPECT_EQ(gpu.constants.back().name, "three13");
}

TEST(Shader, TablesAreUploadedWhole)
{
    Uploads uploads;
    EXPECT_EQ(arrayOf(uploads.lookup), std::vector(uploads.table.data(), uploads.table.data() + 6));
    EXPECT_EQ(arrayOf(uploads.clip), (std::vector<float>{0, 1, 2, 3, 5, 4, 0, 0, 0, //
                                                         0, 0, 0, 10, 7, 10.25f, 8, 0, 0}));
    // x and y of each component's curve, also where there is none.
    const std::vector<float> points = arrayOf(uploads.colourCurves);
    const float lasts[] = {1, 21, 0, 0, 2, 12, 2, 12};
    for (size_t row = 0; row < 8; ++row)
        EXPECT_EQ(points[row * 7 + (row < 2 ? 3 : 6)], lasts[row]) << row;
    const std::vector<float> turns = arrayOf(*uploads.hueCurves); // and factors of saturation and value
    for (const auto& [at, turn] : {std::pair(0, 0.0f), {512, 0.25f}, {1536, 0.75f}, {2048, 0.0f}})
        EXPECT_EQ(std::vector(turns.data() + 3 * at, turns.data() + 3 * at + 3),
                  (std::vector{turn, 0.0f, 1.0f}))
            << at;
}
