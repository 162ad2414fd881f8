#include "images.h"

#include <host/file/Frames.h>
#include <host/file/Image.h>
#include <host/graph/Interleaving.h>
#include <host/graph/Pipeline.h>
#include <host/text/Error.h>
#include <host/text/Names.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <fstream>
#include <numeric>

namespace {

std::string planesOf(std::vector<host::Channel> channels)
{
    host::Image image;
    image.channels = std::move(channels);
    image.arrange();
    std::string text;
    for (const host::Plane& plane : image.planes) {
        text += plane.name + (plane.colour ? "*" : "") + "(";
        for (const int channel : plane.channel)
            text += channel < 0 ? "-" : std::to_string(channel);
        text += ") ";
    }
    return text;
}

std::vector<host::Channel> halves(std::initializer_list<const char*> names)
{
    std::vector<host::Channel> channels;
    for (const char* name : names)
        channels.push_back({name, PXL_FORMAT_half});
    return channels;
}

TEST(Planes, ChannelsAreGroupedByLayerAndName)
{
    EXPECT_EQ(planesOf(halves({"R", "G", "B", "A", "Z"})), "color*(0123) depth(4---) ");
    EXPECT_EQ(planesOf(halves({"A", "B", "G", "R"})), "color*(3210) ");
    EXPECT_EQ(planesOf(halves({"Y", "A"})), "color*(0--1) ");
    EXPECT_EQ(planesOf(halves({"A"})), "alpha(---0) ");
    EXPECT_EQ(planesOf(halves({"left.R", "left.G", "left.Z", "R"})),
              "left*(01--) left.depth(2---) color*(3---) ");
    EXPECT_EQ(planesOf(halves({"forward.left.u", "forward.left.v", "m.x", "m.y", "m.z"})),
              "forward.left(01--) m(234-) ");
    EXPECT_EQ(planesOf(halves({"N.X", "N.Y", "N.Z"})), "N(012-) ");
    EXPECT_EQ(planesOf(halves({"a.1", "a.2", "a.3", "a.4", "a.5"})), "a(0123) a-2(4---) ");
    EXPECT_EQ(planesOf(halves({"mask", "id"})), "mask(0---) id(1---) ");
    EXPECT_EQ(planesOf(halves({"R", "red"})), "color*(0---) color-2*(1---) ");
}

TEST(Planes, APlaneHasOneFormat)
{
    EXPECT_EQ(planesOf({{"R", PXL_FORMAT_half}, {"G", PXL_FORMAT_half}, {"A", PXL_FORMAT_float32}}),
              "color*(01--) color-2(---2) ");
}

TEST(Interleaving, SplitAndJoinMoveEveryBit)
{
    for (const unsigned char format : {PXL_FORMAT_uint8, PXL_FORMAT_half, PXL_FORMAT_float32}) {
        for (int channels = 1; channels <= 6; ++channels) { // the first four in a plane, packed up to four
            host::Image image;
            if (channels == 6) // what follows is not aligned to its size
                image.channels.push_back({"first", PXL_FORMAT_uint8});
            const std::string names = "RGBAXY";
            for (int c = 0; c < channels; ++c)
                image.channels.push_back({names.substr(static_cast<size_t>(c), 1), format});
            image.arrange();
            const host::Plane& plane = image.planes[channels == 6 ? 1 : 0];
            const host::Interleaving layout(image, plane);
            constexpr int64_t count = 37;
            std::vector<unsigned char> pixels(static_cast<size_t>(count * image.pixelBytes));
            std::iota(pixels.begin(), pixels.end(), static_cast<unsigned char>(1));
            uint32_t buffers[4][count];
            void* planes[4];
            for (size_t c = 0; c < 4; ++c)
                planes[c] = plane.channel[c] < 0 ? nullptr : buffers[c];
            layout.split(pixels.data(), planes, count);
            std::vector<unsigned char> back = pixels; // without what is to be joined
            const auto size = static_cast<size_t>(PXLbytesPerElement(format));
            for (size_t c = 0; c < 4; ++c)
                for (int64_t i = 0; i < count && planes[c] != nullptr; ++i) {
                    const int64_t offset = image.channels[static_cast<size_t>(plane.channel[c])].offset;
                    unsigned char* element = back.data() + i * image.pixelBytes + offset;
                    EXPECT_EQ(std::memcmp(static_cast<char*>(planes[c]) + static_cast<size_t>(i) * size,
                                          element, size),
                              0);
                    std::memset(element, 0, size);
                }
            layout.join(planes, back.data(), count);
            EXPECT_EQ(back, pixels) << int(format) << " x " << channels;
        }
    }
}

TEST(Frames, RangesStepsAndLists)
{
    EXPECT_EQ(host::parseFrames("7"), (std::vector<int64_t>{7}));
    EXPECT_EQ(host::parseFrames("1-7x3,20,4-5"), (std::vector<int64_t>{1, 4, 7, 20, 5}));
    EXPECT_EQ(host::parseFrames("-2-0"), (std::vector<int64_t>{-2, -1, 0}));
    for (const char* bad : {"", "a", "1-", "5-1", "1-5x0", "1,,2", "1-99999999", "1.5"})
        EXPECT_THROW(host::parseFrames(bad), host::Error) << bad;
}

TEST(Frames, NumbersTakeTheirPlaceInTheName)
{
    EXPECT_EQ(host::framePath("d/a.####.exr", 12), "d/a.0012.exr");
    EXPECT_EQ(host::framePath("a.%04d.exr", 12), "a.0012.exr");
    EXPECT_EQ(host::framePath("a_%d.exr", 12), "a_12.exr");
    EXPECT_EQ(host::framePath("#1/v#/a.##.exr", 123), "#1/v#/a.123.exr");
    EXPECT_EQ(host::framePath("a.####.exr", -5), "a.-005.exr");
    EXPECT_FALSE(host::hasFramePlace("shot#1/a.exr"));
}

TEST(Frames, ThoseOnDiskAreFound)
{
    const TempDirectory dir;
    for (const char* name : {"a.0012.exr", "a.0003.exr", "a.00003.exr", "a.-005.exr", "a.12345.exr",
                             "a.12.exr", "a.0004.tif", "ba.0005.exr", "a.1e+3.exr", "a..exr"})
        std::ofstream(dir.file(name)) << name;
    const std::vector<int64_t> padded = {-5, 3, 12, 12345};
    EXPECT_EQ(host::existingFrames(dir.file("a.####.exr")), padded);
    EXPECT_EQ(host::existingFrames(dir.file("a.%04d.exr")), padded);
    EXPECT_EQ(host::existingFrames(dir.file("a.%d.exr")), (std::vector<int64_t>{12, 12345}));
    EXPECT_TRUE(host::existingFrames(dir.file("none/a.####.exr")).empty());
}

TEST(Names, TheNearestIsSuggested)
{
    EXPECT_EQ(host::suggestion("Color", {"color", "depth"}), "; did you mean 'color'?");
    EXPECT_EQ(host::suggestion("forward", {"color", "forward.left"}), "; did you mean 'forward.left'?");
    EXPECT_EQ(host::suggestion("xyzzy", {"color", "depth"}), "; known: color, depth");
}

TEST(Pipeline, EveryPieceIsDoneOnceAndInOrderOfBands)
{
    constexpr int64_t bands = 50;
    std::atomic<int> done[bands] = {};
    int64_t drained = 0;
    host::Pipeline pipeline;
    pipeline.bands = bands;
    pipeline.threads = 4;
    pipeline.fill = [](int64_t band, int) { return static_cast<int>(band % 7); }; // some bands have no work
    pipeline.work = [&](int64_t band, int, int, int) { ++done[band]; };
    pipeline.drain = [&](int64_t band, int) {
        EXPECT_EQ(band, drained++);
        EXPECT_EQ(done[band], static_cast<int>(band % 7));
    };
    pipeline.run();
    EXPECT_EQ(drained, bands);
}

TEST(Pipeline, AFailureInAnyStageStopsTheOthers)
{
    for (int failing = 0; failing < 3; ++failing) {
        const auto stage = [failing](int which, int64_t band) {
            if (which == failing && band == 5)
                throw std::runtime_error("stage " + std::to_string(which));
        };
        host::Pipeline pipeline;
        pipeline.bands = 1000;
        pipeline.threads = 3;
        pipeline.fill = [&](int64_t band, int) { return stage(0, band), 4; };
        pipeline.work = [&](int64_t band, int, int, int) { stage(1, band); };
        pipeline.drain = [&](int64_t band, int) { stage(2, band); };
        EXPECT_THROW(pipeline.run(), std::runtime_error);
    }
}

} // namespace
