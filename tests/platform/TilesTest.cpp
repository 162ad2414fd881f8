#include <reference/Picture.h>

using namespace reference;

template <class V>
class Tiles : public ::testing::Test
{
};
TYPED_TEST_SUITE(Tiles, Variants, VariantNames);

TYPED_TEST(Tiles, ListTakesShapeAndRangeFromItsPlane)
{
    using T = typename TypeParam::Type;
    Picture<TypeParam> picture(7, 3, -2, 5);
    EXPECT_EQ(PXLbytesPerElement(picture.plane.formatCode), int(sizeof(T)));
    EXPECT_EQ(PXLfullWhite(picture.plane.formatCode), PXL_FormatOf<T>::white);
    EXPECT_EQ(TIL_Plane(picture.plane.formatCode, 1).whitePoint, PXL_FormatOf<T>::white);
    EXPECT_EQ(picture.list.plane, &picture.plane);
    EXPECT_EQ(picture.list.width(), 7);
    EXPECT_EQ(picture.list.height(), 3);
    EXPECT_EQ(picture.list.itemCount, 21);
    EXPECT_EQ(picture.list.blackWhitePoints, !TypeParam::full);
    EXPECT_EQ(picture.list.blackPoint, rangeOf<TypeParam>.black);
    EXPECT_EQ(picture.list.whitePoint, rangeOf<TypeParam>.white);
}

TYPED_TEST(Tiles, ClearToBlackFillsWhatIsThereAndNotDone)
{
    using T = typename TypeParam::Type;
    for (const bool useBlackPoint : {false, true}) {
        Picture<TypeParam> picture(5, 4);
        Random random(7);
        picture.randomize(random);
        picture.list.tiles[1] = nullptr;
        picture.tiles[2].setConstantTile(true);
        picture.tiles[3].setDone(true);
        const std::vector<T> absent = picture.pixels(1), done = picture.pixels(3);
        if (TypeParam::full)
            picture.list.blackPoint = 9; // means nothing while the list uses the full range
        picture.list.clearToBlack(useBlackPoint);

        const bool atBlackPoint = isInteger<T> && !TypeParam::full && useBlackPoint;
        const T black = atBlackPoint ? static_cast<T>(rangeOf<TypeParam>.black) : T(0);
        const std::vector<T> cleared(20, black);
        EXPECT_TRUE(sameBytes(picture.pixels(0), cleared));
        EXPECT_TRUE(sameBytes(picture.pixels(2), cleared));
        EXPECT_FALSE(picture.tiles[2].isConstant());
        EXPECT_TRUE(sameBytes(picture.pixels(1), absent));
        EXPECT_TRUE(sameBytes(picture.pixels(3), done));
        EXPECT_TRUE(picture.guardsIntact());
    }
}

TYPED_TEST(Tiles, RegionHasZeroedDataForThePlanesComponentsOnly)
{
    using T = typename TypeParam::Type;
    for (unsigned char components = 1; components <= 4; ++components) {
        const TIL_Plane plane(PXL_FormatOf<T>::code, components);
        TIL_Region region(plane, -1, -1, 5, 3);
        EXPECT_EQ(region.plane, &plane);
        EXPECT_EQ(region.width(), 7);
        EXPECT_EQ(region.height(), 5);
        for (int c = 0; c < 4; ++c) {
            const void* data = std::as_const(region).getImageData(c);
            EXPECT_EQ(region.getImageData(c), data);
            ASSERT_EQ(data != nullptr, c < components);
            const std::vector<T> zeros(35, T(0));
            EXPECT_TRUE(data == nullptr || std::memcmp(data, zeros.data(), 35 * sizeof(T)) == 0);
        }
    }
}

TEST(Tile, FlagsAreIndependent)
{
    EXPECT_EQ(TIL_Tile::constantFlag, 8u);
    TIL_Tile tile(0, 1, 1);
    EXPECT_FALSE(tile.isConstant() || tile.isDone());
    tile.setConstantTile(true);
    tile.setDone(true);
    tile.setConstantTile(false);
    EXPECT_TRUE(!tile.isConstant() && tile.isDone());
    EXPECT_EQ(PXLbytesPerElement(5), 0);
}
