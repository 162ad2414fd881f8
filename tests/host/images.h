#pragma once

#include <host/command/OperationWords.h>
#include <host/script/Script.h>
#include <host/text/Error.h>

#include <OpenImageIO/imageio.h>

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

/// A directory that goes away with the test, and image files in it.
class TempDirectory
{
public:
    TempDirectory()
    {
        std::string name = (std::filesystem::temp_directory_path() / "kreiluge-test-XXXXXX").string();
        path_ = ::mkdtemp(name.data());
    }
    ~TempDirectory() { std::filesystem::remove_all(path_); }
    TempDirectory(const TempDirectory&) = delete;
    TempDirectory& operator=(const TempDirectory&) = delete;

    std::string file(const std::string& name) const { return (path_ / name).string(); }

    /// The names of all files, hidden ones too.
    std::vector<std::string> names() const
    {
        std::vector<std::string> all;
        for (const auto& entry : std::filesystem::directory_iterator(path_))
            all.push_back(entry.path().filename().string());
        std::sort(all.begin(), all.end());
        return all;
    }

private:
    std::filesystem::path path_;
};

/// An image in memory as a file stores it.
struct TestImage
{
    OIIO::ImageSpec spec;
    std::vector<char> bytes;

    /// Filled with bytes that look random, so that floats hold NaN, infinities and subnormals too.
    explicit TestImage(const OIIO::ImageSpec& header) : spec(header), bytes(spec.image_bytes(true))
    {
        std::mt19937 random;
        for (char& byte : bytes)
            byte = static_cast<char>(random());
    }

    template <class T>
    T* values()
    {
        return reinterpret_cast<T*>(bytes.data());
    }

    void write(const std::string& path) const
    {
        const auto out = OIIO::ImageOutput::create(path);
        ASSERT_NE(out, nullptr) << path;
        ASSERT_TRUE(out->open(path, spec)) << out->geterror();
        ASSERT_TRUE(out->write_image(OIIO::TypeUnknown, bytes.data())) << out->geterror();
        ASSERT_TRUE(out->close());
    }

    static TestImage read(const std::string& path)
    {
        OIIO::ImageSpec keep;
        keep.attribute("oiio:UnassociatedAlpha", 1);
        const auto in = OIIO::ImageInput::open(path, &keep);
        if (in == nullptr)
            throw std::runtime_error(OIIO::geterror());
        TestImage image(in->spec());
        if (!in->read_image(0, 0, 0, image.spec.nchannels, OIIO::TypeUnknown, image.bytes.data()))
            throw std::runtime_error(in->geterror());
        return image;
    }
};

/// The error that some work has to throw; its text is empty when it throws none.
template <class Work>
host::Error errorOf(const Work& work)
{
    try {
        work();
    } catch (const host::Error& error) {
        return error;
    }
    return {host::Error::Kind::Usage, {}};
}

/// Does an error say `text`, or at its start `start`?
inline ::testing::AssertionResult says(const host::Error& error, const std::string& text,
                                       const std::string& start = {})
{
    const std::string all = error.what();
    return ::testing::AssertionResult(all.starts_with(start) && all.find(text) != all.npos) << all;
}

/// Runs an operation on files as its command does: its name and words, and the file to write.
inline host::FrameReport runOperation(const std::vector<std::string>& words, const std::string& output,
                                      const host::RunSettings& settings = {})
{
    host::OperationWords given(host::operationOfName(words.front()));
    host::Command command{words.front().c_str(), "", nullptr, given.options()};
    std::optional<size_t> at;
    host::readWords(command, {words.begin() + 1, words.end()}, at);
    return host::ScriptGraph(host::Script::single(given.call(), {output, {}, false, false}), {})
        .run(settings);
}

/// The same bytes come out whatever the number of threads and the side of tiles is; `run` takes settings and
/// returns the path of what it wrote.
template <class Run>
void expectSameForEverySplit(const Run& run)
{
    std::vector<char> first;
    for (const auto& [threads, tile] : {std::pair{1, 4096}, {2, 64}, {4, 200}, {16, 5}, {3, 17}}) {
        host::RunSettings settings;
        settings.threads = threads;
        settings.tile = tile;
        const std::vector<char> bytes = TestImage::read(run(settings)).bytes;
        first = first.empty() ? bytes : first;
        EXPECT_EQ(bytes, first) << threads << " threads, tiles of " << tile;
    }
}

inline OIIO::TypeDesc typeOfFormat(unsigned char format)
{
    static_assert(PXL_FORMAT_uint8 == 0 && PXL_FORMAT_half == 4);
    using OIIO::TypeDesc;
    constexpr TypeDesc::BASETYPE types[] = {TypeDesc::UINT8, TypeDesc::UINT16, TypeDesc::UINT32,
                                            TypeDesc::FLOAT, TypeDesc::HALF};
    return types[format];
}
