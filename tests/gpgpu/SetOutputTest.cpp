#include <RE/RE_OpenGL.h>
#include <RU/gpgpu/RU_SetOutput.h>
#include <TIL/TIL_TileList.h>
#include <reference/Recorder.h>

#include <gtest/gtest.h>

namespace {

/// Tiles of a plane, 5 x 3 pixels that do not begin at 0; green is constant and blue done.
struct Tiles
{
    Tiles(unsigned char format, unsigned char components) : plane(format, components), list(plane, 2, 1, 6, 3)
    {
        for (int c = 0; c < components; ++c)
            *(list.tiles[c] = &tiles[c]) = TIL_Tile(format, 5, 3);
        tiles[1].setConstantTile(true);
        tiles[2].setDone(true);
    }

    TIL_Plane plane;
    TIL_TileList list;
    TIL_Tile tiles[4];
};

} // namespace

TEST(SetOutput, BindsTheTilesToWriteAndAppendsTheirStatements)
{
    reference::Log log;
    UT_String code("before;\n");
    Tiles four(PXL_FORMAT_uint16, 4), two(PXL_FORMAT_float32, 2), one(PXL_FORMAT_half, 1);
    two.list.tiles[0] = nullptr;
    for (const auto& [list, variable] :
         {std::pair(&four.list, "colour"), {&two.list, "pair"}, {&one.list, "value"}})
        RUsetOutput(*std::make_unique<reference::Recorder>(log), *list, variable, code);
    const std::vector<std::string> arrays = {"out red 3 1 5x3\nout green 3 1 5x3\nout alpha 3 1 5x3\nend",
                                             "out green 10 1 5x3\nend", "out red 8 1 5x3\nend"};
    EXPECT_EQ(log.computations, arrays);
    EXPECT_STREQ(code.buffer(), "before;\nOUT_red(colour.r);\nOUT_green(colour.g);\nOUT_alpha(colour.a);\n"
                                "OUT_green(pair.g);\nOUT_red(value);\n");
}

TEST(SetOutput, WritesTilesOnOpenGL)
{
    if (!REfindGPU().found)
        GTEST_SKIP() << REfindGPU().refused.buffer();
    Tiles out(PXL_FORMAT_uint8, 4);
    const auto compute = RE_OGLComputeGPU::create();
    UT_String code("VEC4 colour = VEC4(0.2, 0.4, 0.6, 0.8);\n"), error;
    RUsetOutput(*compute, out.list, "colour", code);
    ASSERT_TRUE(compute->setProgram("colours", code.buffer(), true) && compute->compute(error, true))
        << error.buffer();
    compute->getResults();
    for (int c = 0; c < 4; ++c) {
        unsigned char* codes = nullptr;
        out.tiles[c].getImageData(codes);
        EXPECT_EQ(codes[14], c == 2 ? 0 : 51 * (c + 1)) << c;
    }
}
