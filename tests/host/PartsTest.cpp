#include "pictures.h"

namespace {

using OIIO::TypeDesc;

OIIO::ImageSpec partSpec(const std::string& name, const Names& channels, int x, int y, const TypeDesc& type)
{
    OIIO::ImageSpec spec(40 + x, 30 + y, static_cast<int>(channels.size()), type);
    spec.x = x;
    spec.y = y;
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
    const bool declared = !out->supports("appendsubimage");
    for (size_t i = 0; i < specs.size(); ++i) {
        const bool opened = i > 0      ? out->open(path, specs[i], OIIO::ImageOutput::AppendSubimage)
                            : declared ? out->open(path, static_cast<int>(specs.size()), specs.data())
                                       : out->open(path, specs[i]);
        ASSERT_TRUE(opened && out->write_image(specs[i].format, TestImage(specs[i]).bytes.data()));
    }
    ASSERT_TRUE(out->close());
}

TEST(Parts, AreLayersAndComeOutAsTheyWere)
{
    const TempDirectory dir;
    const std::vector<OIIO::ImageSpec> specs = {
        partSpec("RGBA", {"R", "G", "B", "A"}, 0, 0, TypeDesc::HALF),
        partSpec("depth", {"Z"}, -3, 5, TypeDesc::FLOAT),
        partSpec("left", {"R", "G", "B", "mask"}, 7, 2, TypeDesc::HALF),
        partSpec("diffuse.left", {"diffuse.R", "diffuse.G", "diffuse.B"}, 0, 0, TypeDesc::HALF),
        partSpec("diffuse.right", {"diffuse.R", "diffuse.G", "diffuse.B"}, 1, 1, TypeDesc::HALF),
        partSpec("motion", {"X", "Y"}, 0, 0, TypeDesc::FLOAT)};
    writeImages(dir.file("in.exr"), specs);
    copyPicture(dir.file("in.exr"), dir.file("out.exr"));
    for (const char* name : {"in.exr", "out.exr"}) {
        const auto reader = host::openReader(dir.file(name));
        const host::Picture& picture = reader->picture();
        EXPECT_EQ(picture.planeNames(),
                  (Names{"color", "depth", "left", "left.mask", "diffuse", "diffuse.right", "motion"}));
        ASSERT_EQ(picture.parts.size(), specs.size());
        for (const size_t part : {5u, 1u, 0u, 2u, 4u, 3u, 1u}) { // in any order, and again
            const OIIO::ImageSpec& spec = specs[part];
            EXPECT_EQ(picture.parts[part].part, spec.get_string_attribute("oiio:subimagename"));
            EXPECT_EQ(picture.parts[part].data, (host::Window{spec.x, spec.y, spec.width, spec.height}));
            EXPECT_EQ(picture.parts[part].display, (host::Window{0, 0, 64, 48}));
            EXPECT_EQ(pixelsOf(*reader, part), TestImage(spec).bytes) << name << " " << part;
        }
    }
    const auto one = host::openReader(dir.file("in.exr[2]"));
    EXPECT_EQ(one->picture().planeNames(), (Names{"color", "mask"}));
    EXPECT_EQ(pixelsOf(*one), TestImage(specs[2]).bytes);
    const host::Error error = errorOf([&] { copyPicture(dir.file("in.exr"), dir.file("out.tif")); });
    EXPECT_TRUE(says(error, "tiff holds one image and these are 6 parts; read one, as in"));
    EXPECT_EQ(dir.names(), (Names{"in.exr", "out.exr"}));
}

TEST(Parts, APageIsChosenInThePath)
{
    const TempDirectory dir;
    const std::string path = dir.file("a.tif");
    const OIIO::ImageSpec wide(30, 12, 4, TypeDesc::UINT16), narrow(20, 10, 3, TypeDesc::UINT8);
    writeImages(path, {narrow, wide, narrow});
    const auto errorOfReading = [](const std::string& name) {
        return errorOf([&] { host::openReader(name); });
    };
    EXPECT_TRUE(says(errorOfReading(path), "a.tif' holds 3 images; choose one as in '" + path + "[0]'"));
    EXPECT_TRUE(says(errorOfReading(path + "[3]"), "there is no [3]"));
    EXPECT_TRUE(says(errorOfReading(dir.file("b.tif[0]")), "no such file"));
    const auto page = host::openReader(path + "[1]");
    EXPECT_EQ(pixelsOf(*page), TestImage(wide).bytes);
    EXPECT_EQ(pixelsOf(*page), TestImage(wide).bytes) << "read again";
    copyPicture(path + "[1]", dir.file("b.tif"));
    std::filesystem::rename(dir.file("b.tif"), path + "[0]");
    EXPECT_EQ(host::openReader(path + "[0]")->picture().first().data.width, 30) << "a file of that very name";
}

} // namespace
