#include "images.h"

#include <host/chain/ChainShader.h>
#include <host/graph/FileImages.h>
#include <host/operation/AlgorithmNode.h>
#include <host/script/ScriptText.h>

#include <RE/RE_OpenGL.h>
#include <RU/pixelfunc/RU_GPUPixelEngine.h>
#include <RU/pixelfunc/RU_PixelEngine.h>

#include <cmath>
#include <fstream>

namespace {

using Words = std::vector<std::string>;

/// Skipped, and why, where there is no OpenGL.
class Device : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!REfindGPU().found)
            GTEST_SKIP() << REfindGPU().refused.buffer();
    }

    std::string grade(const std::string& chain, const std::string& in, const std::string& out,
                      const std::string& device, const host::RunSettings& settings = {})
    {
        notes =
            runOperation({"grade", dir.file(in), chain, "--device", device}, dir.file(out), settings).notes;
        return dir.file(out);
    }

    TempDirectory dir;
    Words notes;
};

/// No infinities, NaN and subnormals, which the CPU's tables of halves leave out.
void limitFloats(TestImage& image)
{
    if (image.spec.format == OIIO::TypeDesc::HALF)
        for (size_t i = 0; i < image.bytes.size() / 2; ++i)
            image.values<uint16_t>()[i] =
                static_cast<uint16_t>((image.values<uint16_t>()[i] & 0xBFFFu) | 0x2000u);
    if (image.spec.format == OIIO::TypeDesc::FLOAT)
        for (size_t i = 0; i < image.bytes.size() / 4; ++i)
            image.values<uint32_t>()[i] = (image.values<uint32_t>()[i] & 0xBFFFFFFFu) | 0x20000000u;
}

} // namespace

TEST_F(Device, ExactChainsComeOutTheSameInAllFormatsAndScopes)
{
    const std::tuple<OIIO::TypeDesc, const char*, int> files[] = {
        {OIIO::TypeDesc::UINT8, "a.png", 3}, {OIIO::TypeDesc::UINT8, "b.png", 2}, // grey and alpha
        {OIIO::TypeDesc::UINT8, "c.png", 1}, {OIIO::TypeDesc::UINT16, "d.tif", 4},
        {OIIO::TypeDesc::HALF, "e.exr", 4},  {OIIO::TypeDesc::FLOAT, "f.exr", 3}};
    int covered = 0;
    for (const auto& [type, name, channels] : files) {
        OIIO::ImageSpec spec(217, 53, channels, type);
        spec.attribute("oiio:UnassociatedAlpha", 1);
        TestImage image(spec);
        limitFloats(image);
        image.write(dir.file(name));
        for (const char* chain : {"mult 0.7, add 0.1, limit 0 1", "add 0.25 @g", "negate @a, add 1 @a",
                                  "max @r", "mult 0.5 @rb, min, abs @ga", "hsv 30 1.5 @rg"}) {
            const std::string extension = std::string(name).substr(1);
            const bool writes = channels > 2 || std::string(chain).find("@g") == std::string::npos;
            if (!writes || (channels != 4 && channels != 2 && std::string(chain).starts_with("negate")))
                continue; // there is no such component
            const TestImage cpu = TestImage::read(grade(chain, name, "cpu" + extension, "cpu"));
            const TestImage gpu = TestImage::read(grade(chain, name, "gpu" + extension, "gpu"));
            EXPECT_EQ(cpu.bytes, gpu.bytes) << name << ", " << chain;
            ++covered;
        }
    }
    EXPECT_EQ(covered, 29);
}

TEST_F(Device, ComponentsOutOfScopeKeepAllBits)
{
    const TestImage image(OIIO::ImageSpec(67, 31, 4, OIIO::TypeDesc::UINT32));
    image.write(dir.file("in.tif"));
    TestImage out = TestImage::read(grade("mult 0.5 @g", "in.tif", "out.tif", "gpu")), in = image;
    for (size_t i = 0; i < out.bytes.size() / 4; ++i) {
        const double exact = in.values<uint32_t>()[i] * (i % 4 == 1 ? 0.5 : 1.0);
        EXPECT_NEAR(out.values<uint32_t>()[i], exact, i % 4 == 1 ? 256.0 : 0.0) << i;
    }
}

TEST_F(Device, CutsDoNotMatterBetweenOtherOperations)
{
    OIIO::ImageSpec spec(301, 229, 4, OIIO::TypeDesc::HALF);
    TestImage image(spec);
    limitFloats(image);
    image.write(dir.file("in.exr"));
    expectSameForEverySplit([&](const host::RunSettings& settings) {
        host::Script script = host::readScript("a = edge '" + dir.file("in.exr") +
                                                   "'\nb = grade a 'gamma 2' --device gpu\n"
                                                   "c = edge b\nwrite c '" +
                                                   dir.file("out.exr") + "'\n",
                                               "test", {}, "");
        host::ScriptGraph(script, {}).run(settings);
        return dir.file("out.exr");
    });
}

TEST_F(Device, AutoTakesTheProcessorWhereThePictureWouldDiffer)
{
    TestImage(OIIO::ImageSpec(9, 5, 3, OIIO::TypeDesc::UINT8)).write(dir.file("in.png"));
    grade("curve 0 0, 0.5 0.7, 1 1", "in.png", "cpu.png", "cpu");
    grade("curve 0 0, 0.5 0.7, 1 1", "in.png", "auto.png", "auto");
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_TRUE(notes[0].starts_with("grade: computed on the CPU, as ")) << notes[0];
    EXPECT_EQ(TestImage::read(dir.file("auto.png")).bytes, TestImage::read(dir.file("cpu.png")).bytes);
    grade("curve 0 0, 0.5 0.7, 1 1", "in.png", "gpu.png", "gpu");
    EXPECT_NE(notes.back().find("differs from the CPU's picture: curve"), std::string::npos) << notes.back();
    EXPECT_NE(TestImage::read(dir.file("gpu.png")).bytes, TestImage::read(dir.file("cpu.png")).bytes);
    const auto points = [&] {
        runOperation({"grade", dir.file("in.png"), "add 1", "--device", "gpu", "--white", "235"},
                     dir.file("x.png"));
    };
    EXPECT_TRUE(says(errorOf(points), "--black and --white count on the CPU alone"));
}

TEST_F(Device, AFailureLeavesNoFile)
{
    struct Broken : RU_PixelFunction
    {
        void getPixelShader(UT_String& body) override { body = "value = nonsense;"; }
    } broken;
    TestImage(OIIO::ImageSpec(9, 5, 3, OIIO::TypeDesc::UINT8)).write(dir.file("in.png"));
    const auto run = [&] {
        host::AlgorithmNode::Work work;
        work.written = {true, true, true, false};
        work.algorithm = std::make_unique<RU_PixelEngine>(&broken);
        work.onGPU = std::make_unique<RU_GPUPixelEngine>(&broken);
        host::Graph graph;
        const size_t source = graph.add(std::make_unique<host::FileSource>(dir.file("in.png")));
        auto node = std::make_unique<host::AlgorithmNode>(std::move(work), host::PlaneSettings());
        const size_t graded = graph.add("broken", std::move(node), {source});
        graph.write(graded, std::make_unique<host::FileSink>(dir.file("out.png"), graph.picture(graded)));
        graph.run({});
    };
    testing::internal::CaptureStderr();
    const host::Error error = errorOf(run);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("nonsense"), std::string::npos);
    EXPECT_EQ(error.kind(), host::Error::Kind::Device);
    EXPECT_TRUE(says(error, "nonsense", "the GPU failed: RU_GPUPixelEngine: "));
    EXPECT_EQ(dir.names(), Words{"in.png"});
}

// The function that `shader` prints, with its uniforms as constants, in a program of its own.
TEST_F(Device, PrintedFunctionsComputeWhatTheEngineDoes)
{
    constexpr int count = 64;
    constexpr size_t values = count * size_t{4};
    std::ofstream(dir.file("lut.csv")) << "0\n0.3\n0.4\n1\n";
    for (const std::string text :
         {"gamma 2.2:1.8:1, add 0.1 @rg, saturation @b, hsv 30", "average, log 10 0.5, invert 2",
          "curve 0 0, 0.5 0.6, 1 1, huecurve sat=0:0.5;0.5:0.9;1:0.5", "vector 1:0:0;0:2:0;0:0:1",
          "lut LUT, max @a"}) {
        std::string words = text;
        if (const size_t at = words.find("LUT"); at != std::string::npos)
            words.replace(at, 3, dir.file("lut.csv"));
        const host::Chain chain = host::Chain::fromText(words);
        const host::Chain::Built built = chain.build();
        std::vector<float> in(values), out(values), expected(values);
        for (size_t i = 0; i < in.size(); ++i)
            in[i] = static_cast<float>(i * 7 % 256) / 200.0f;
        const auto run = [&](const std::string& functions, const std::string& statements,
                             RE_OGLComputeGPU& gpu, std::vector<float>& to) {
            const int four = 4;
            gpu.setConstant("num_comps", RE_GPU_INT32, 1, &four, 1, false);
            gpu.setArray2D("colour", RE_GPU_FLOAT32, 4, count, 1, in.data());
            gpu.setOutputArray2D("colour", RE_GPU_FLOAT32, 4, count, 1, to.data());
            UT_String program("VEC4 value;\n");
            program.append(functions)
                .append("\nvalue = IN_colour;\n")
                .append(statements)
                .append("OUT_colour(value);\n");
            UT_String error;
            ASSERT_TRUE(gpu.setProgram("test", program.buffer(), true));
            ASSERT_TRUE(gpu.compute(error, true)) << error.buffer() << program.buffer();
            gpu.getResults();
        };
        std::string function = host::shaderFunction(chain, "look", 4);
        for (const auto& [word, other] : {std::pair("uniform ", "const "), {"RE_", "X_"}, {"precise ", ""}})
            for (size_t at = function.find(word); at != std::string::npos; at = function.find(word, at))
                function.replace(at, std::strlen(word), other);
        run(function, "value = look(value);\n", *RE_OGLComputeGPU::create(), out);
        UT_String functions, statements;
        const auto gpu = RE_OGLComputeGPU::create();
        built.head->buildShader(gpu.get(), 4, functions, statements);
        run(functions.buffer(), statements.buffer(), *gpu, expected);
        for (size_t i = 0; i < in.size(); ++i)
            EXPECT_NEAR(out[i], expected[i], 2e-6 * std::max(1.0f, std::abs(expected[i])))
                << text << " at " << i;
    }
}
