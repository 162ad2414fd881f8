#include <RE/RE_OpenGL.h>
#include <RU/pixelfunc/RU_AddFunc.h>
#include <RU/pixelfunc/RU_GPUPixelEngine.h>
#include <RU/pixelfunc/RU_MultFunc.h>
#include <RU/pixelfunc/RU_PixelEngine.h>
#include <TIL/TIL_TileList.h>
#include <reference/Functions.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <thread>

using namespace reference;

namespace {

/// Four tiles of a format, made from and compared as bytes.
struct Tiles
{
    Tiles(unsigned char format, int width, int height)
        : plane(format, 4), list(plane, 0, 0, width - 1, height - 1)
    {
        bytes = static_cast<size_t>(width) * static_cast<size_t>(height) *
                static_cast<size_t>(PXLbytesPerElement(format));
        for (size_t c = 0; c < 4; ++c)
            tiles.emplace_back(format, width, height);
        for (size_t c = 0; c < 4; ++c)
            list.tiles[c] = &tiles[c];
    }
    Tiles(const Tiles&) = delete;

    template <class T>
    T* data(size_t c)
    {
        T* pixels = nullptr;
        tiles[c].getImageData(pixels);
        return pixels;
    }

    TIL_Plane plane;
    TIL_TileList list;
    std::vector<TIL_Tile> tiles;
    size_t bytes = 0;
};

/// Skipped, and why, where there is no OpenGL.
class GPUParity : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!REfindGPU().found)
            GTEST_SKIP() << REfindGPU().refused.buffer();
        RecordProperty("renderer", REfindGPU().name.buffer());
    }

    /// What the engine prints.
    template <class Engine>
    static std::string run(RU_PixelFunction* chain, Tiles& out, const Tiles& in)
    {
        testing::internal::CaptureStderr();
        Engine engine(chain);
        EXPECT_EQ(engine.pixelAdjust(&out.list, &in.list, 0.0f, nullptr, -1, nullptr), 1);
        return testing::internal::GetCapturedStderr();
    }
};

/// How far both engines are apart at most, relative to values above 1; the others are equal to the bit. Of
/// those that do something else on the GPU, by docs/numerics.md, nothing is expected.
double threshold(const std::string& name)
{
    constexpr double other = std::numeric_limits<double>::infinity();
    static const std::map<std::string, double> thresholds = {
        {"Gamma", 2e-6},      {"Power", 2e-6},          {"Raise", other},      {"Log", 1e-6},
        {"Sin", 1e-6},        {"Atan", other},          {"Tan", 1e-6},         {"Asin", other},
        {"Acos", other},      {"Sinh", 2e-6},           {"Cosh", 2e-6},        {"Tanh", other},
        {"Levels", 3e-6},     {"LookupTable", 1e-6},    {"LookupClip", other}, {"ColorCurve", other},
        {"Luminance", 5e-7},  {"NTSCLuminance", other}, {"Vector", 5e-7},      {"Length", 5e-7},
        {"Normalize", 5e-7},  {"Average", 2e-6},        {"Component5", other}, {"Component0", other},
        {"HueCurve26", 1e-5}, {"HueCurve27", 1e-5},     {"HueCurve28", 1e-5},  {"Replace29", 1e-6},
        {"Replace30", 1e-6},  {"Replace31", 1e-6},      {"Replace32", 1e-6}};
    const auto found = thresholds.find(name);
    return found != thresholds.end() ? found->second : 0.0;
}

/// Codes, and the bytes of an element.
const std::map<unsigned char, size_t> formats = {{PXL_FORMAT_uint8, 1},
                                                 {PXL_FORMAT_uint16, 2},
                                                 {PXL_FORMAT_uint32, 4},
                                                 {PXL_FORMAT_float32, 4},
                                                 {PXL_FORMAT_half, 2}};

double distance(float a, float b)
{
    if (a == b || (std::isnan(a) && std::isnan(b)))
        return 0.0;
    const double apart = std::abs(double(a) - b) / std::max(1.0, std::abs(double(a)));
    return std::isnan(apart) ? std::numeric_limits<double>::max() : apart;
}

/// A chain of one function whose text is given.
struct Written : RU_PixelFunction
{
    explicit Written(const char* text) : text_(text) {}
    void getPixelShader(UT_String& body) override { body = text_; }

private:
    const char* text_;
};

} // namespace

TEST_F(GPUParity, CopiesKeepEveryCode)
{
    for (const auto& [format, bytes] : formats)
        for (const auto& [width, height] : {std::pair(1, 1), {3, 1}, {5, 3}, {257, 255}}) {
            Tiles in(format, width, height), out(format, width, height), exact(format, width, height);
            for (size_t c = 0; c < 4; ++c)
                for (size_t i = 0; i < in.bytes; i += bytes) {
                    uint32_t code = static_cast<uint32_t>(i / bytes + c * 13);
                    code *= bytes == 4 ? 2654435761u : 1u;
                    if (format == PXL_FORMAT_float32 && std::isnan(std::bit_cast<float>(code)))
                        code = 0x7FC00000u;
                    std::memcpy(in.data<char>(c) + i, &code, bytes);
                    const bool isNaN = format == PXL_FORMAT_half && (code & 0x7FFFu) > 0x7C00u;
                    code |= isNaN ? 0x0200u : 0u;
                    std::memcpy(exact.data<char>(c) + i, &code, bytes);
                }
            RU_PixelFunction unchanged;
            if (format == PXL_FORMAT_uint32) // as far as floats carry them
                run<RU_PixelEngine>(&unchanged, exact, in);
            EXPECT_EQ(run<RU_GPUPixelEngine>(nullptr, out, in), "");
            for (size_t c = 0; c < 4; ++c)
                EXPECT_EQ(std::memcmp(out.data<char>(c), exact.data<char>(c), in.bytes), 0)
                    << "format " << int(format) << ", " << width << " x " << height << ", component " << c;
        }
}

TEST_F(GPUParity, FunctionsComeCloseToTheProcessor)
{
    constexpr int width = 67, height = 31;
    for (const Function& function : allFunctions())
        for (const size_t components : {3u, 4u}) {
            if (components == 4 && function.name == "Vector") // alpha takes part on the GPU
                continue;
            Tiles in(PXL_FORMAT_float32, width, height), cpu(PXL_FORMAT_float32, width, height),
                gpu(PXL_FORMAT_float32, width, height);
            uint32_t random = 1;
            for (size_t c = 0; c < 4; ++c)
                for (size_t i = 0; i < width * height; ++i) {
                    random = random * 1664525u + 1013904223u;
                    in.data<float>(c)[i] = static_cast<float>(random >> 8) * 0x1p-22f - 2.0f;
                }
            for (Tiles* tiles : {&in, &cpu, &gpu})
                tiles->list.tiles[3] = components == 4 ? tiles->list.tiles[3] : nullptr;
            run<RU_PixelEngine>(function.object.get(), cpu, in);
            ASSERT_EQ(run<RU_GPUPixelEngine>(function.object.get(), gpu, in), "") << function.name;
            double worst = 0.0;
            for (size_t c = 0; c < components; ++c)
                for (size_t i = 0; i < width * height; ++i)
                    worst = std::max(worst, distance(cpu.data<float>(c)[i], gpu.data<float>(c)[i]));
            EXPECT_LE(worst, threshold(function.name)) << function.name << ", " << components;
        }
}

TEST_F(GPUParity, CodesAreThoseOfTheProcessor)
{
    RU_AddFunc chain(-0.3f);
    chain.setNext(new RU_MultFunc(1.7f));
    for (const auto& [format, bytes] : formats) {
        Tiles in(format, 301, 7), cpu(format, 301, 7), gpu(format, 301, 7);
        for (size_t c = 0; c < 4; ++c)
            for (size_t i = 0; i + bytes <= in.bytes; i += bytes) { // halves below 2
                const uint32_t code = static_cast<uint32_t>(i * 40503u + c * 977u) & 0x3F7F3FFFu;
                std::memcpy(in.data<char>(c) + i, &code, bytes);
            }
        run<RU_PixelEngine>(&chain, cpu, in);
        run<RU_GPUPixelEngine>(&chain, gpu, in);
        for (size_t c = 0; c < 4; ++c)
            EXPECT_EQ(std::memcmp(cpu.data<char>(c), gpu.data<char>(c), in.bytes), 0) << int(format);
    }
}

TEST_F(GPUParity, WhatIsOutOfScopeOrConstantIsTakenAsItIs)
{
    Written nothing("value = VEC4(0.0) / VEC4(0.0);"),
        shadows("FLOAT a = value.r; value.rgb = a; value.a = 2.0;");
    const bool red[] = {true, false, false, false};
    nothing.setScope(red);
    Tiles in(PXL_FORMAT_float32, 5, 3), out(PXL_FORMAT_float32, 5, 3);
    std::fill_n(in.data<float>(1), 15, std::numeric_limits<float>::infinity());
    in.data<float>(2)[0] = 0.5f;
    in.tiles[2].setConstantTile(true);
    out.tiles[1].setConstantTile(true);
    EXPECT_EQ(run<RU_GPUPixelEngine>(&nothing, out, in), "");
    EXPECT_TRUE(std::isnan(out.data<float>(0)[14]));
    EXPECT_EQ(out.data<float>(1)[14], std::numeric_limits<float>::infinity());
    EXPECT_EQ(out.data<float>(2)[14], 0.5f);
    EXPECT_FALSE(out.tiles[1].isConstant());
    EXPECT_EQ(run<RU_GPUPixelEngine>(&shadows, out, in), "");
    EXPECT_EQ(out.data<float>(2)[14] + out.data<float>(3)[14], 2.0f);
}

TEST_F(GPUParity, ErrorsNameTheLine)
{
    Written broken("value = nonsense;");
    Tiles in(PXL_FORMAT_uint8, 5, 3), out(PXL_FORMAT_uint8, 5, 3);
    std::fill_n(out.data<char>(0), 15, 'x');
    const std::string error = run<RU_GPUPixelEngine>(&broken, out, in);
    EXPECT_TRUE(error.starts_with("RU_GPUPixelEngine: ") && error.find("nonsense") != error.npos) << error;
    EXPECT_TRUE(!REfindGPU().software || error.find(":6(") != error.npos) << error;
    EXPECT_EQ(out.data<char>(0)[14], 'x');
}

TEST_F(GPUParity, ThreadsShareContexts)
{
    RU_AddFunc shared(0.25f);
    Tiles in(PXL_FORMAT_uint16, 33, 9);
    std::fill_n(in.data<uint16_t>(2), 33 * 9, uint16_t(1000));
    std::vector<std::jthread> running;
    for (int t = 0; t < 8; ++t)
        running.emplace_back([&, t] {
            RU_AddFunc own(static_cast<float>(t) * 0.0625f);
            for (int i = 0; i < 20; ++i) {
                Tiles out(PXL_FORMAT_uint16, 33, 9);
                RU_GPUPixelEngine engine(i % 2 == 0 ? &shared : &own);
                engine.pixelAdjust(&out.list, &in.list, 0.0f, nullptr, t, nullptr);
                const float added = i % 2 == 0 ? 0.25f : static_cast<float>(t) * 0.0625f;
                EXPECT_EQ(out.data<uint16_t>(2)[33 * 9 - 1],
                          static_cast<uint16_t>(std::floor((1000.0f / 65535 + added) * 65535 + 0.5f)));
            }
        });
}
