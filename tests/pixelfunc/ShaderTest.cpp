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
        const auto* values = static_cast<const float*>(data);
        const int elements = (type == RE_GPU_MATRIX4 ? 16 : size) * count;
        constants.push_back({name, type, {values, values + elements}, count, normalize});
    }
    void setArray2D(const char* name, RE_GPUType type, int size, int width, int height,
                    const void* data) override
    {
        arrays.push_back({name, {type, size, width, height}, {data}});
    }
    void setArray2D(const char* name, RE_GPUType type, int size, int width, int height, const void* d0,
                    const void* d1, const void* d2, const void* d3) override
    {
        arrays.push_back({name, {type, size, width, height}, {d0, d1, d2, d3}});
    }

    std::vector<ConstantCall> constants;
    std::vector<ArrayCall> arrays;
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

/// Values of constants, then declarations and body unless they are those of the function before.
std::string shaderOf(const std::string& name, RU_PixelFunction& function, std::string& before)
{
    RU_PixelFunction head;
    RecordingGPU gpu;
    UT_String body;
    function.declareShader(head, &gpu, 7, body);
    std::ostringstream constants;
    constants.precision(7);
    for (const auto& constant : gpu.constants) {
        EXPECT_FALSE(constant.normalize);
        constants << "; " << constant.name;
        for (const float value : constant.values)
            constants << " " << value;
    }
    std::string text = head.getParameterDeclarations().buffer() + std::string("\n") + body.buffer();
    text += text.back() == '\n' ? "" : "\n";
    const std::string_view code = head.getAddedFunctionCode().view();
    for (const std::string called : {"toHSV(", "fromHSV("})
        EXPECT_TRUE(text.find(" " + called) == text.npos || code.find("VEC3 " + called) != code.npos) << name;
    return "-- " + name + constants.str() + "\n" + (std::exchange(before, text) == text ? "" : text);
}

} // namespace

// After a deliberate change, copy the file that the failure names over the expected one.
TEST(Shader, EveryFunctionHasItsTextAndConstants)
{
    std::string shaders, before;
    for (const Function& function : functions())
        shaders += shaderOf(function.kernel, *function.object, before);
    for (const VectorFunction& function : vectorFunctions())
        shaders += shaderOf(function.name, *function.object, before);
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
    EXPECT_EQ(head.getParameterDeclarations().view(),
              ", in FLOAT one12, in VEC2 three12[3], out VEC3 hue12, out VEC4 planes12, in int num_comps");
    EXPECT_EQ(head.getCallArguments().view(), ",one12,three12,hue12,planes12, num_comps");
    EXPECT_EQ(head.getLocalDeclarations().view(), "VEC3 hue12;\n");
    EXPECT_EQ(head.getAddedFunctionCode().view(), "void zed();\nvoid alpha();\n");
    EXPECT_TRUE(head.usesNumCompsGlobal());
    EXPECT_TRUE(declarer.getParameterDeclarations().isEmpty() && declarer.getAddedFunctionCode().isEmpty());

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
    EXPECT_EQ(head.getAddedFunctionCode().view(), "void zed();\nvoid alpha();\n") << "once per chain";
    EXPECT_EQ(gpu.constants.back().name, "three13");
}

TEST(Shader, TypesHaveTheNamesOfThePrelude)
{
    using Names = std::vector<std::string>; // by the size of the vector
    const Names none(4), integers = {"INT", "IVEC2", "IVEC3", "IVEC4"},
                         floats = {"FLOAT", "VEC2", "VEC3", "VEC4"};
    const Names matrices[] = {{"MATRIX2", "", "", ""}, {"MATRIX3", "", "", ""}, {"MATRIX4", "", "", ""}};
    std::ostringstream expected;
    for (const Names& names : {none, none, integers, integers, integers, integers, integers, integers, floats,
                               none, floats, matrices[0], matrices[1], matrices[2], none})
        for (const std::string& name : names)
            expected << name << " v0;\n";
    RU_PixelFunction head, base;
    UT_String body("text");
    TypeNamer().declareShader(head, nullptr, 0, body);
    EXPECT_EQ(head.getLocalDeclarations().view(), expected.str());
    base.declareShader(head, nullptr, 0, body);
    EXPECT_TRUE(body.isEmpty()) << "the base does nothing";
}

TEST(Shader, LookupsUploadTheirTables)
{
    PXL_Lookup table(0, 1, 2, {1, 2, 3, 4, 5, 6});
    CL_Clip clip;
    clip.append(std::make_unique<CL_Track>(std::vector<CL_Key>{{0, 1}, {2, 3}, {5, 4}}));
    clip.append(nullptr);
    clip.append(std::make_unique<CL_Track>(10.0f, 4.0f, std::vector<float>{7, 8}));
    RU_LookupTableFunc tableFunction(&table);
    RU_LookupClipFunc clipFunction(&clip);
    RU_PixelFunction head;
    RecordingGPU gpu;
    UT_String body;
    tableFunction.declareShader(head, &gpu, 7, body);
    clipFunction.declareShader(head, &gpu, 8, body);
    ASSERT_EQ(gpu.arrays.size(), 2u);
    const RecordingGPU::ArrayCall samples{"lookup7", {RE_GPU_FLOAT32, 1, 3, 2}, {table.data()}};
    EXPECT_EQ(gpu.arrays[0], samples);
    EXPECT_EQ(gpu.arrays[1].name, "clip8");
    EXPECT_EQ(gpu.arrays[1].shape, (std::array<int, 4>{RE_GPU_FLOAT32, 2, 3, 3}));
    const auto* keys = static_cast<const float*>(gpu.arrays[1].data[0]);
    EXPECT_EQ(std::vector(keys, keys + 18), (std::vector<float>{0, 1, 2, 3, 5, 4, 0, 0, 0, //
                                                                0, 0, 0, 10, 7, 10.25f, 8, 0, 0}));
    // Blue is looked up for green, and green for blue.
    EXPECT_EQ(body.view(), "value = VEC4(clipTrack8(value.r, 0, 3),\n"
                           "             0.0f,\n"
                           "             clipTrack8(value.g, 2, 2),\n"
                           "             clipTrack8(value.a, 0, 3));\n");
    EXPECT_EQ(head.getAddedFunctionCode().view().find("FLOAT clipTrack8(FLOAT time, INT track, INT keys)\n"),
              0u);

    RU_LookupClipFunc(nullptr).declareShader(head, &gpu, 9, body);
    EXPECT_EQ(gpu.arrays.size(), 2u);
    CL_Clip single;
    single.append(std::make_unique<CL_Track>(std::vector<CL_Key>{{0, 1}}));
    RU_LookupClipFunc(&single).declareShader(head, &gpu, 9, body);
    EXPECT_NE(body.view().find("clipTrack9(value.b, 0, 1),\n             clipTrack9(value.g, 0, 1)"),
              std::string_view::npos);
}

TEST(Shader, ColourCurvesUploadAndCallByComponent)
{
    RU_ColorCurve shorter, longer;
    for (const float x : {0.0f, 1.0f, 2.0f}) {
        longer.addPoint(x, 10 + x, 1);
        if (x < 2)
            shorter.addPoint(x, 20 + x, 1);
    }
    shorter.create(false);
    longer.create(true);
    RU_ColorCurve* curves[] = {&shorter, nullptr, &longer};
    RU_ColorCurveFunc function(curves, 3);
    RU_PixelFunction head;
    RecordingGPU gpu;
    UT_String body;
    function.declareShader(head, &gpu, 7, body);

    const auto call = [](const std::string& component, const std::string& k) {
        return "value." + component + " =\n  CCevalCurve7(value." + component + ",coffset,numsplines" + k +
               ",extend" + k + ",preslope" + k + ",postslope" + k +
               ",\n                i,splx,sply,\n                a,b,c,d,Q,R,Q3,A,B,r);\n";
    };
    const std::string step = "coffset += 2;\n";
    EXPECT_EQ(body.view(), "coffset = 0;\n" + call("r", "0") + step + step + call("b", "2") + step +
                               call("a", "2") + step);

    ASSERT_EQ(gpu.constants.size(), 8u);
    const char* names[] = {"numsplines", "extend", "preslope", "postslope"};
    for (size_t i = 0; i < 8; ++i)
        EXPECT_EQ(gpu.constants[i].name, names[i % 4] + std::string(i < 4 ? "07" : "27"));
    const auto number = [&](size_t i) { return std::bit_cast<int>(gpu.constants[i].values[0]); };
    EXPECT_TRUE(number(0) == 4 && number(1) == 0 && number(4) == 7 && number(5) == 1);
    EXPECT_EQ(gpu.constants[6].values, std::vector{longer.preslope()});

    // x and y of each component's curve, also where there is none.
    ASSERT_EQ(gpu.arrays.size(), 1u);
    EXPECT_EQ(gpu.arrays[0].name, "points7");
    EXPECT_EQ(gpu.arrays[0].shape, (std::array{int{RE_GPU_FLOAT32}, 1, 7, 8}));
    const auto* points = static_cast<const float*>(gpu.arrays[0].data[0]);
    const float lasts[] = {1, 21, 0, 0, 2, 12, 2, 12};
    for (int row = 0; row < 8; ++row)
        EXPECT_EQ(points[row * 7 + (row < 2 ? 3 : 6)], lasts[row]) << row;

    const std::string_view code = head.getAddedFunctionCode().view(),
                           locals = head.getLocalDeclarations().view();
    for (const char* part : {"FLOAT quadratic7(", "FLOAT CCevalCurve7(", "ABS_points7(i, coffset)", "0.00005",
                             "0.0005", "+ 6.2832", "- 6.2832", "r*r*r*r"})
        EXPECT_NE(code.find(part), code.npos) << part;
    for (const char* local : {"INT coffset7;", "VEC4 splx7;", "FLOAT Q37;", "FLOAT B7;", "INT i7;"})
        EXPECT_NE(locals.find(local), locals.npos) << local;

    RU_ColorCurveFunc none(curves + 1, 1);
    none.declareShader(head, &gpu, 8, body);
    EXPECT_TRUE(body.isEmpty() && gpu.arrays.size() == 1);
}

TEST(Shader, HueCurvesUploadTheirSamples)
{
    RU_ColorCurve hue, saturation;
    for (const float x : {0.0f, 0.25f, 0.75f})
        hue.addPoint(x, 0.5f + x, 0);
    saturation.addPoint(0, -1, 0);
    RU_HueCurveFunc function(&hue, &saturation, nullptr);
    RU_PixelFunction head;
    RecordingGPU gpu;
    UT_String body;
    function.declareShader(head, &gpu, 7, body);
    ASSERT_EQ(gpu.arrays.size(), 1u);
    EXPECT_EQ(gpu.arrays[0].name, "huecurve7");
    EXPECT_EQ(gpu.arrays[0].shape, (std::array{int{RE_GPU_FLOAT32}, 3, 2049, 1}));
    const auto* table = static_cast<const float*>(gpu.arrays[0].data[0]); // turn, saturation, value
    for (const auto& [at, turn] : {std::pair(0, 0.0f), {512, 0.25f}, {1536, 0.75f}, {2048, 0.0f}})
        EXPECT_EQ(std::vector(table + 3 * at, table + 3 * at + 3), (std::vector{turn, 0.0f, 1.0f}));
}
