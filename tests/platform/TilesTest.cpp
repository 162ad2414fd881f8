#include <reference/Picture.h>

using namespace reference;

TEST(TileList, TakesShapeAndRangeFromItsPlane)
{
    TIL_Plane plane(PXL_FORMAT_uint16, 4);
    EXPECT_EQ(plane.whitePoint, 65535u);
    plane.blackWhitePoints = true;
    plane.blackPoint = 9;
    const TIL_TileList list(plane, -2, 5, 4, 7);
    EXPECT_EQ(list.plane, &plane);
    EXPECT_TRUE(list.width() == 7 && list.height() == 3 && list.itemCount == 21);
    EXPECT_TRUE(list.blackWhitePoints && list.blackPoint == 9 && list.whitePoint == 65535);
}

class Tiles : public ::testing::TestWithParam<Format>
{
};
INSTANTIATE_TEST_SUITE_P(, Tiles, ::testing::ValuesIn(formats()), nameOfParameter);

TEST_P(Tiles, ClearToBlackFillsWhatIsThereAndNotDone)
{
    for (const bool useBlackPoint : {false, true}) {
        Picture picture(GetParam(), 5, 4);
        Random random(7);
        picture.randomize(random);
        picture.list.tiles[1] = nullptr;
        picture.tiles[2].setConstantTile(true);
        picture.tiles[3].setDone(true);
        const Bytes absent = picture.bytes(1), done = picture.bytes(3);
        if (GetParam().full)
            picture.list.blackPoint = 9; // means nothing while the list uses the full range
        picture.list.clearToBlack(useBlackPoint);

        const double black = GetParam().isInteger() && useBlackPoint ? GetParam().range().black : 0;
        for (int i = 0; i < 20; ++i) {
            EXPECT_EQ(GetParam().codeAt(picture.data(0), i), black);
            EXPECT_EQ(GetParam().codeAt(picture.data(2), i), black);
        }
        EXPECT_FALSE(picture.tiles[2].isConstant());
        EXPECT_TRUE(picture.bytes(1) == absent && picture.bytes(3) == done && picture.guardsIntact());
    }
}

TEST_P(Tiles, RegionHasZeroedDataForThePlanesComponentsOnly)
{
    for (unsigned char components = 1; components <= 4; ++components) {
        const TIL_Plane plane(GetParam().code, components);
        TIL_Region region(plane, -1, -1, 5, 3);
        EXPECT_TRUE(region.plane == &plane && region.width() == 7 && region.height() == 5);
        for (int c = 0; c < 4; ++c) {
            const auto* data = static_cast<const unsigned char*>(region.getImageData(c));
            ASSERT_EQ(data != nullptr, c < components);
            EXPECT_TRUE(data == nullptr ||
                        std::count(data, data + 35 * GetParam().size(), 0) == 35 * GetParam().size());
        }
    }
}
