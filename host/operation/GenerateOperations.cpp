#include <host/operation/OperationRows.h>

#include <host/file/Format.h>
#include <host/picture/NoiseNode.h>
#include <host/picture/PlateNode.h>

#include <algorithm>
#include <tuple>

namespace host {

namespace {

std::unique_ptr<Node> plate(const Call& call)
{
    PlateNode::Settings settings;
    std::tie(settings.width, settings.height) = readSize("--size", call.text("size"));
    if (call.has("depth"))
        settings.format = formatOfName(call.text("depth"));
    settings.alpha = call.isOn("alpha");
    return std::make_unique<PlateNode>(settings);
}

std::unique_ptr<Node> noise(const Call& call)
{
    RU_Noise noise;
    noise.type = static_cast<UT_NoiseType>(choiceOf(call, "type"));
    noise.seed = readWhole("--seed", call.text("seed"), 0, 0xFFFFFFFFu);
    noise.turbulence =
        static_cast<int>(readWhole("--octaves", call.text("octaves"), 1, RU_Noise::maxTurbulence));
    noise.roughness = call.value("roughness");
    noise.monochrome = call.isOn("monochrome");
    const auto [periodX, periodY] = readPair("--period", call.text("period"));
    noise.periodX = static_cast<float>(periodX);
    noise.periodY = static_cast<float>(periodY);
    noise.periodTime = call.value("frames-per-period");
    const auto [offsetX, offsetY] = readPair("--offset", call.text("offset"));
    noise.offsetX = static_cast<float>(offsetX);
    noise.offsetY = static_cast<float>(offsetY);
    std::copy_n(call.value("amplitude").four(), 4, noise.amplitude);
    std::copy_n(call.value("mean").four(), 4, noise.mean);
    NoiseNode::Settings settings;
    std::tie(settings.width, settings.height) = readSize("--size", call.text("size"));
    if (call.has("depth"))
        settings.format = formatOfName(call.text("depth"));
    settings.time = static_cast<double>(call.frame());
    return std::make_unique<NoiseNode>(noise, settings);
}

Operation noiseRow()
{
    Parameter type = text("--type", "what it is made of", "TYPE", "perlin");
#define UT_CHOICE(VALUE, NAME, MEANING)                                                                      \
    type.argument.choices.emplace_back(NAME);                                                                \
    type.argument.meanings.emplace_back(MEANING);
    UT_FOR_EACH_NOISE_TYPE(UT_CHOICE)
#undef UT_CHOICE
    Parameter size = text("--size", "width and height in pixels", "WxH", "1920x1080");
    Parameter like = image("--like", "image whose windows it gets instead", false);
    like.excludes = {"--size"};
    const auto perComponent = [](const char* name, const char* help) {
        Parameter parameter = number(name, help, "0.5");
        parameter.argument.type = Argument::Type::PerComponent;
        parameter.words = "N|R:G:B";
        return parameter;
    };
    return {
        "noise",
        "Make a picture of noise, still or moving",
        "Examples:\n"
        "  kreiluge noise -o clouds.exr --octaves 6 --period 400\n"
        "  kreiluge noise -o grain.####.exr --like shot.####.exr --period 2.5 --mean 0 --amplitude 0.02 \\\n"
        "           --frames-per-period 0.7 --frames 1-100\n"
        "The frame number is the time.",
        {size, like, type, text("--seed", "another one gives other noise", "N", "0"),
         text("--octaves", "each of half the period and less amplitude, up to 16", "N", "1"),
         number("--roughness", "amplitude of an octave over the one before, 0 to 1", "0.5"),
         text("--period", "size of the coarsest features in pixels, or one for each axis", "N|X,Y", "32"),
         number("--frames-per-period", "how fast it changes", "10"),
         text("--offset", "what lies so many pixels to the right and down", "X,Y", "0,0"),
         perComponent("--amplitude", "how far values go from their mean"),
         perComponent("--mean", "their mean"), onOff("--monochrome", "the same for all components"),
         depth(
             "storage format (default: what is usual for the file format of the output; half in a script)")},
        noise,
        nullptr,
        true,
        true};
}

} // namespace

std::vector<Operation> generateOperations()
{
    return {
        {"plate",
         "Draw a test plate",
         "Float and half hold linear light, with highlights up to 16; integers hold it with the sRGB curve.",
         {text("--size", "width and height in pixels", "WxH", "1920x1080"),
          depth("storage format (default: what is usual for the file format of the output; half in a "
                "script)"),
          onOff("--alpha", "add an alpha channel that fades out in the corners")},
         plate,
         nullptr,
         false,
         true},
        noiseRow()};
}

} // namespace host
