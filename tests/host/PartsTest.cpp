#include "images.h"
#include "pictures.h"

#include <gtest/gtest.h>

namespace {

using Kind = host::Error::Kind;
using Names = std::vector<std::string>;

OIIO::ImageSpec partSpec(const std::string& name, const Names& channels, int x, int y,
                         const OIIO::TypeDesc& type)
{
    OIIO::ImageSpec spec(40 + x, 30 + y, static_cast<int>(channels.size()), type);
    spec.x = x;
    spec.y = y;
    spec.full_x = spec.full_y = 0;
    spec.full_width = 64;
    spec.full_height = 48;
    spec.channelnames = channels;
    spec.attribute("oiio:subimagename", name);
    return spec;
}

/// Writes files of several images, as other applications do.
void writeImages(const std::string& path, const std::vector<OIIO::ImageSpec>& specs)
{
    const auto out = OIIO::ImageOutput::create(path);
    const bool declared = out->supports("multiimage") && !out->supports("appendsubimage");
    for (size_t i = 0; i < specs.size(); ++i) {
        const bool opened = i > 0      ? out->open(path, specs[i], OIIO::ImageOutput::AppendSubimage)
                            : declared ? out->open(path, static_cast<int>(specs.size()), specs.data())
                                       : out->open(path, specs[i]);
        ASSERT_TRUE(opened) << out->geterror();
        ASSERT_TRUE(out->write_image(specs[i].format, TestImage(specs[i]).bytes.data()));
    }
    ASSERT_TRUE(out->close());
}

TEST(Parts, AreLayersAndComeOutAsTheyWere)
{
    const TempDirectory dir;
    const std::vector<OIIO::ImageSpec> specs = {
        partSpec("RGBA", {"R", "G", "B", "A"}, 0, 0, OIIO::TypeDesc::HALF),
        partSpec("depth", {"Z"}, -3, 5, OIIO::TypeDesc::FLOAT),
        partSpec("left", {"R", "G", "B", "mask"}, 7, 2, OIIO::TypeDesc::HALF),
        partSpec("diffuse.left", {"diffuse.R", "diffuse.G", "diffuse.B"}, 0, 0, OIIO::TypeDesc::HALF),
        partSpec("diffuse.right", {"diffuse.R", "diffuse.G", "diffuse.B"}, 1, 1, OIIO::TypeDesc::HALF),
        partSpec("motion", {"X", "Y"}, 0, 0, OIIO::TypeDesc::FLOAT)};
    writeImages(dir.file("in.exr"), specs);
    copyPicture(dir.file("in.exr"), dir.file("out.exr"));
    for (const char* name : {"in.exr", "out.exr"}) {
        host::Reader reader(dir.file(name));
        const host::Picture& picture = reader.picture();
        EXPECT_EQ(picture.planeNames(),
                  (Names{"color", "depth", "left", "left.mask", "diffuse", "diffuse.right", "motion"}));
        ASSERT_EQ(picture.parts.size(), specs.size());
        for (const size_t part : {5, 1, 0, 2, 4, 3, 1}) { // parts and rows in any order
            const host::Image& image = picture.parts[part];
            EXPECT_EQ(image.part, specs[part].get_string_attribute("oiio:subimagename"));
            EXPECT_EQ(image.data,
                      (host::Window{specs[part].x, specs[part].y, specs[part].width, specs[part].height}));
            EXPECT_EQ(image.display, (host::Window{0, 0, 64, 48}));
            EXPECT_EQ(pixelsOf(reader, part), TestImage(specs[part]).bytes) << name << " " << part;
        }
        EXPECT_EQ(picture.parts[2].layerOf(picture.parts[2].planes[0]), "left");
    }
    host::Reader one(dir.file("in.exr[2]"));
    EXPECT_EQ(one.picture().planeNames(), (Names{"color", "mask"}));
    EXPECT_EQ(pixelsOf(one, 0), TestImage(specs[2]).bytes);
    const host::Error error = errorOf([&] { copyPicture(dir.file("in.exr"), dir.file("out.tif")); });
    EXPECT_EQ(error.kind(), Kind::Output);
    EXPECT_TRUE(
        says(error, "tiff holds one image and these are 6 parts; choose the planes of one with --planes"));
    EXPECT_EQ(dir.names(), (Names{"in.exr", "out.exr"}));
}

TEST(Parts, APageIsChosenInThePath)
{
    const TempDirectory dir;
    const OIIO::ImageSpec specs[] = {OIIO::ImageSpec(20, 10, 3, OIIO::TypeDesc::UINT8),
                                     OIIO::ImageSpec(30, 12, 4, OIIO::TypeDesc::UINT16)};
    writeImages(dir.file("two.tif"), {specs[0], specs[1], specs[0]});
    const host::Error several = errorOf([&] { host::Reader(dir.file("two.tif")); });
    EXPECT_TRUE(says(several, "two.tif' holds 3 images; choose one as in '"));
    EXPECT_TRUE(says(several, "two.tif[0]'"));
    EXPECT_TRUE(says(errorOf([&] { host::Reader(dir.file("two.tif[3]")); }), "there is no [3]"));
    EXPECT_EQ(errorOf([&] { host::Reader(dir.file("none.tif[0]")); }).kind(), Kind::NoInput);
    host::Reader page(dir.file("two.tif[1]"));
    EXPECT_EQ(pixelsOf(page, 0), TestImage(specs[1]).bytes);
    EXPECT_EQ(pixelsOf(page, 0), TestImage(specs[1]).bytes);
    EXPECT_EQ(host::inputFile(dir.file("two.tif[1]")), dir.file("two.tif"));
    TestImage(specs[0]).write(dir.file("real.tif"));
    std::filesystem::rename(dir.file("real.tif"), dir.file("two.tif[1]"));
    EXPECT_EQ(host::Reader(dir.file("two.tif[1]")).image().data.width, 20);
    copyPicture(dir.file("two.tif[1]"), dir.file("out.tif"));
}

} // namespace
