#include "images.h"

#include <host/file/Diff.h>
#include <host/graph/MemoryImages.h>
#include <host/script/ScriptText.h>

#include <random>
#include <thread>

namespace {

using Words = std::vector<std::string>;

std::string textOf(const Words& words)
{
    std::string text;
    for (const std::string& word : words)
        text.append("'").append(word).append("' ");
    return text;
}

std::string numbered(const char* name, size_t number)
{
    return std::string(name).append(std::to_string(number));
}

/// Random operations on a few files, and on the pictures of those before.
class RandomScript
{
public:
    RandomScript(const TempDirectory& dir, unsigned int seed) : random_(seed)
    {
        constexpr OIIO::TypeDesc::BASETYPE types[] = {OIIO::TypeDesc::UINT8, OIIO::TypeDesc::UINT16,
                                                      OIIO::TypeDesc::FLOAT};
        for (size_t i = 0; i < 3; ++i) {
            // Inside the display window: TIFF holds no more.
            const int width = 1 + pick(34), height = 1 + pick(34), channels = 3 + pick(2);
            OIIO::ImageSpec spec(width, height, channels, types[pick(3)]);
            spec.x = pick(30);
            spec.y = pick(30);
            spec.full_width = spec.full_height = 64;
            spec.attribute("oiio:UnassociatedAlpha", pick(2));
            const std::string name = numbered("in", i) + ".tif";
            TestImage image(spec);
            if (spec.format == OIIO::TypeDesc::FLOAT)
                for (int64_t k = 0; k < static_cast<int64_t>(spec.image_pixels()) * spec.nchannels; ++k)
                    image.values<float>()[k] = static_cast<float>(image.values<int>()[k]) * 4e-10f;
            image.write(dir.file(name));
            names_.push_back(dir.file(name));
        }
        for (size_t i = 0; i < 6; ++i) {
            lines.push_back(operation());
            // TIFF cuts what is shifted out of the display window.
            names_.push_back(lines.back()[0] == "shift" ? names_.front() : numbered("s", i));
        }
    }

    std::vector<Words> lines; ///< the result of line i is called "si"

    int pick(size_t count) { return static_cast<int>(random_() % count); }

private:
    std::string image() { return names_[static_cast<size_t>(pick(names_.size()))]; }

    Words operation()
    {
        // Display windows do not shrink: TIFF would cut what lies beyond.
        const Words choices[] = {
            {"grade", image(), "mult 0.9:1.1:1, add 0.01"},
            {"edge", image(), "--gain", "0.7"},
            {"comp", "over", image(), image()},
            {"comp", "screen", image(), image(), "--depth", "float"},
            {"blend", image(), image(), "--mix", "0.4"},
            {"blend", image(), "--mask", image(), "--mask-channel", "g"},
            {"resize", image(), "90x80", "--fit", "fill", "--filter", "box"},
            {"resize", image(), "130%", "--wrap", "repeat"},
            {"transform", image(), "--rotate", "20", "--translate", "3.5,-8", "--scale", "0.7,1.3"},
            {"transform", image(), "--scale", "0.3", "--rotate", "-7", "--wrap", "repeat", "--depth",
             "float"},
            {"corners", image(), "5,-3", "50,10", "60,70", "1,55", "--filter", "lanczos3", "--wrap", "clamp"},
            {"warp", image(), "--map", image(), "--filter", "triangle"},
            {"shift", image(), "2.25", "-7.5"},
            {"dilate", image(), "--size", "5x2"},
            {"open", image(), "--scope", "ra"},
            {"degrain", image(), "--size", "2", "--depth", "float"},
            {"feather", image(), "--radius", "4,9", "--drop-off", "smooth"},
        };
        return choices[pick(std::size(choices))];
    }

    std::mt19937 random_;
    Words names_;
};

TEST(Graph, AScriptGivesWhatItsLinesGiveOneByOne)
{
    for (unsigned int seed = 0; seed < 20; ++seed) {
        SCOPED_TRACE(seed);
        const TempDirectory dir;
        RandomScript random(dir, seed);
        std::string text;
        for (size_t i = 0; i < random.lines.size(); ++i) {
            const std::string name = numbered("s", i);
            text += name + " = " + textOf(random.lines[i]) + "\n";
            text += "write " + name + " '" + dir.file(name + ".tif") + "'\n";
        }
        host::RunSettings settings;
        settings.threads = 3;
        settings.tile = 1 + random.pick(30);
        host::ScriptGraph(host::readScript(text, "random", {}, ""), {}).run(settings);
        for (size_t i = 0; i < random.lines.size(); ++i) {
            Words words = random.lines[i];
            for (std::string& word : words)
                if (word.size() == 2 && word[0] == 's')
                    word = dir.file("one_" + word + ".tif");
            const std::string name = numbered("s", i) + ".tif";
            runOperation(words, dir.file("one_" + name));
            const host::DiffReport report = host::diff(dir.file(name), dir.file("one_" + name));
            EXPECT_TRUE(report.same()) << textOf(words);
        }
    }
}

TEST(Graph, MemoryIsReadAndWrittenInPlaceByGraphsThatRunAtOnce)
{
    constexpr int width = 90, height = 70;
    std::vector<float> in(width * height * 3);
    std::mt19937 random(1);
    for (float& value : in)
        value = static_cast<float>(random()) * 1e-9f;
    const auto run = [&](std::vector<float>& out) {
        host::MemoryImage source{{5, -3, width, height}, {}, false, {}}, target = source;
        for (int c = 0; c < 3; ++c) { // interleaved, and planar from the bottom up
            const std::string name(1, "RGB"[c]);
            source.channels.push_back({name, PXL_FORMAT_float32, in.data() + c, 12, width * 12});
            target.channels.push_back(
                {name, PXL_FORMAT_float32, out.data() + (c + 1) * width * height - width, 4, -width * 4});
        }
        host::Graph graph;
        const size_t node = graph.add(std::make_unique<host::MemorySource>(source, "memory"));
        host::Call call(host::operationOfName("grade"));
        call.set(*call.operation().find("chain"), {"mult 2"});
        const size_t graded = graph.add("graded", call.node(), {node});
        graph.write(graded, std::make_unique<host::MemorySink>(target, graph.picture(graded)));
        host::RunSettings settings;
        settings.threads = 6;
        settings.tile = 7;
        graph.run(settings);
    };
    std::vector<std::vector<float>> outs(4, std::vector<float>(in.size()));
    {
        std::vector<std::jthread> threads;
        for (std::vector<float>& out : outs)
            threads.emplace_back([&] { run(out); });
    }
    for (const std::vector<float>& out : outs) {
        int64_t wrong = 0;
        for (int y = 0; y < height; ++y)
            for (int i = 0; i < width * 3; ++i)
                wrong += out[static_cast<size_t>((i % 3 * height + height - 1 - y) * width + i / 3)] !=
                         2.0f * in[static_cast<size_t>(y * width * 3 + i)];
        EXPECT_EQ(wrong, 0);
    }
}

/// Turns a picture upside down, so that its last rows are needed first, at half its size.
class Upturned : public host::Node
{
public:
    host::Picture plan(const std::vector<const host::Picture*>& inputs) override
    {
        host::Picture output = *inputs.front();
        host::Image& image = output.parts.front();
        in_ = image.data;
        image.data.width /= 2;
        image.data.height /= 2;
        image.display = image.data;
        return output;
    }
    host::Recipe recipe(size_t plane) const override { return {{{0, plane}}, false}; }
    host::Window needs(size_t, const host::Window& window) const override
    {
        return {in_.x + 2 * (window.x - in_.x), in_.y + in_.height - 2 * (window.y - in_.y + window.height),
                2 * window.width, 2 * window.height};
    }
    host::Block pixels(size_t plane, const host::Window& rect, host::Feed& feed) const override
    {
        host::Block in =
            feed.load({0, plane, needs(0, rect), PXL_FORMAT_float32, {0, 1, 2, -1}, host::Outside::Edge});
        host::Block out = feed.blank(rect, PXL_FORMAT_float32, {true, true, true, false});
        for (size_t c = 0; c < 3; ++c)
            for (int y = 0; y < rect.height; ++y)
                for (int x = 0; x < rect.width; ++x)
                    out.values<float>(c)[y * rect.width + x] =
                        in.values<float>(c)[(in.rect.height - 1 - 2 * y) * in.rect.width + 2 * x];
        return out;
    }

private:
    host::Window in_;
};

TEST(Graph, OutputsOfOtherSizesAndOrdersAreComputedTogether)
{
    constexpr int width = 64, height = 700;
    std::vector<float> in(width * height * 3), whole(in.size()), half(in.size() / 4);
    for (size_t i = 0; i < in.size(); ++i)
        in[i] = static_cast<float>(i);
    const auto image = [](std::vector<float>& memory, int w, int h) {
        host::MemoryImage result{{0, 0, w, h}, {}, false, {}};
        for (int c = 0; c < 3; ++c)
            result.channels.push_back(
                {std::string(1, "RGB"[c]), PXL_FORMAT_float32, memory.data() + c, 12, w * 12});
        return result;
    };
    host::Graph graph;
    const size_t source = graph.add(std::make_unique<host::MemorySource>(image(in, width, height), "memory"));
    const size_t upturned = graph.add("upturned", std::make_unique<Upturned>(), {source});
    graph.write(source,
                std::make_unique<host::MemorySink>(image(whole, width, height), graph.picture(source)));
    graph.write(upturned, std::make_unique<host::MemorySink>(image(half, width / 2, height / 2),
                                                             graph.picture(upturned)));
    host::RunSettings settings;
    settings.threads = 4;
    settings.tile = 19;
    graph.run(settings);
    EXPECT_EQ(whole, in);
    int64_t wrong = 0;
    for (int i = 0; i < width / 2 * (height / 2) * 3; ++i) {
        const int c = i % 3, x = i / 3 % (width / 2), y = i / 3 / (width / 2);
        wrong += half[static_cast<size_t>(i)] !=
                 in[static_cast<size_t>(((height - 1 - 2 * y) * width + 2 * x) * 3 + c)];
    }
    EXPECT_EQ(wrong, 0);
}

TEST(Script, ErrorsNameLineAndColumn)
{
    const std::pair<const char*, const char*> cases[] = {
        {"", "look: there is no operation"},
        {"a = grade x.exr 'abs", "look:1:17: the quote is not closed"},
        {"\n  a = grad x.exr abs", "look:2:7: unknown operation 'grad'; did you mean 'grade'?"},
        {"a = edge x.exr --gian 2", "look:1:16: unknown option '--gian'; did you mean '--gain'?"},
        {"a = edge x.exr --gain two\nwrite a b.exr", "look:1:5: 'two' is no value for '--gain'"},
        {"a = edge", "look:1:5: edge: INPUT is required"},
        {"1a = edge x.exr", "look:1:1: '1a' is no name"},
        {"edge x.exr | | edge", "look:1:14: an operation is missing beside |"},
        {"edge $FILE", "look:1:6: $FILE has no value; give it one with --set FILE=..."},
        {"a = edge x.exr", "look: nothing is written; end with a line such as `write a out.exr`"},
        {"a = edge x.exr\nwrite a b.exr --depth hlf", "look:2:1: unknown depth 'hlf'; did you mean 'half'?"},
        {"x = grade p.exr abs | plate", "look:1:23: plate takes no picture"},
        {"x = write a b.exr", "look:1:1: write makes no picture that could be called 'x'"},
        {"{\"statements\": [{\"operation\": \"blend\", \"a\": \"x.exr\", \"weights\": [1, 2]}]}",
         "look: statements: entry 1: --weights requires B"},
        {"{\"statements\": [{\"operation\": \"edge\", \"inputs\": \"x.exr\"}]}",
         "look: statements: entry 1: edge: unknown parameter 'inputs'; did you mean 'input'?"},
    };
    for (const auto& [text, wanted] : cases) {
        const auto read = [text = text] {
            *text == '{' ? host::readScriptJson(text, "look", {}, "")
                         : host::readScript(text, "look", {}, "");
        };
        EXPECT_TRUE(says(errorOf(read), wanted, wanted));
    }
}

TEST(Script, BothFormsSayTheSame)
{
    const char* const text =
        "\xEF\xBB\xBFin=grade \"$FILE\" \"add 1, mult 2\" | edge --gain 2 \\\r\n --prewitt # x\r\n"
        "b = blend in $FILE --weights 1 -0.5\nwrite b b.exr --depth half --alpha as-is\n"
        "z = comp over in b | write c$$.png --window data\nwrite z d.exr";
    const host::ScriptValues values{{"FILE", "a b.exr"}};
    const host::Script script = host::readScript(text, "look", values, "");
    ASSERT_EQ(script.statements.size(), 4u);
    EXPECT_EQ(script.statements[1].name, "in");
    EXPECT_EQ(script.inputFiles(), Words{"a b.exr"});
    EXPECT_EQ(script.outputFiles(), (Words{"b.exr", "c$.png", "d.exr"}));
    const std::string json = host::scriptJson(script);
    EXPECT_EQ(host::scriptJson(host::readScriptJson(json, "json", {}, "")), json);
    EXPECT_NE(json.find("\"gain\": 2"), std::string::npos) << json;
    EXPECT_NE(json.find("\"window\": \"data\""), std::string::npos) << json;
}

} // namespace
