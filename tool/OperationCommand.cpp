#include "OperationCommand.h"

#include "Commands.h"
#include "Progress.h"
#include "Signals.h"

#include <host/command/OperationWords.h>
#include <host/file/Format.h>
#include <host/file/Frames.h>
#include <host/text/Error.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <RE/RE_OpenGL.h>
#include <RU/pixelfunc/RU_GPUTiming.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <set>

namespace tool {

namespace {

using host::Error;
using Frame = std::optional<int64_t>;

host::RunSettings settingsOf(const RunOptions& o)
{
    host::RunSettings settings;
    settings.threads = static_cast<int>(host::readWhole("--threads", o.threads, 1, host::maxThreads));
    settings.tile = static_cast<int>(host::readWhole("--tile", o.tile, 1, 4096));
    settings.cancel = &cancelSwitch();
    return settings;
}

/// Several frames need a place for the number in all outputs and in an input; other inputs may be stills.
void checkPlaces(const host::Script& script)
{
    const auto stills = [](const std::vector<std::string>& paths) {
        std::vector<std::string> without;
        for (const std::string& path : paths)
            if (!host::hasFramePlace(path))
                without.push_back("'" + path + "'");
        return without;
    };
    std::vector<std::string> wrong = stills(script.outputFiles());
    const std::vector<std::string> inputs = script.inputFiles();
    const bool moves = std::any_of(script.statements.begin(), script.statements.end(),
                                   [](const auto& statement) { return statement.call.operation().moves; });
    if (wrong.empty() && !moves && !inputs.empty() && stills(inputs).size() == inputs.size())
        wrong = stills(inputs);
    if (!wrong.empty())
        host::refuse("--frames: there is no place for the frame number in " + host::joined(wrong) +
                     "; write #### or %04d there");
}

/// Without frames a name with a place for a number is no file, unless it is.
void checkSingle(const host::Script& script)
{
    std::error_code ignored;
    for (const std::string& path : script.inputFiles())
        if (host::hasFramePlace(path) && !std::filesystem::exists(path, ignored))
            host::refuse("'" + path +
                         "' has a place for a frame number; say which frames with --frames, or "
                         "--frames all for those that exist");
}

/// The frames that exist of the first input with a place for the number.
std::vector<int64_t> framesThatExist(const host::Script& script)
{
    for (const std::string& path : script.inputFiles()) {
        if (!host::hasFramePlace(path))
            continue;
        std::vector<int64_t> frames = host::existingFrames(path);
        if (frames.empty())
            throw Error(Error::Kind::NoInput, "--frames all: there is no frame of '" + path + "'");
        return frames;
    }
    host::refuse("--frames all: no input has a place for the frame number; write #### or %04d there");
}

/// What the GPU did since the command began; null where it was not asked.
nlohmann::ordered_json gpuJson()
{
    const RE_GPUTimes times = REgpuTimes();
    if (times.computations == 0)
        return nullptr;
    return {{"name", REfindGPU().name.buffer()},
            {"computations", times.computations},
            {"programs", times.programs},
            {"build", RU_GPUTiming::buildShader().total()},
            {"compile", times.compile},
            {"upload", times.upload},
            {"run", times.run},
            {"read", times.readBack}};
}

void printGPU()
{
    const RE_GPUTimes times = REgpuTimes();
    if (times.computations > 0)
        std::printf(
            "  GPU so far: %lld computations, %lld programs; text %.3f s, compile %.3f s, upload %.3f s, "
            "run %.3f s, read back %.3f s (%s)\n",
            static_cast<long long>(times.computations), static_cast<long long>(times.programs),
            RU_GPUTiming::buildShader().total(), times.compile, times.upload, times.run, times.readBack,
            REfindGPU().name.buffer());
}

nlohmann::ordered_json statsJson(const host::FrameReport& report)
{
    int64_t pixels = 0;
    for (const host::Picture& output : report.outputs)
        pixels += output.first().pixels();
    return {{"pixels", pixels},
            {"planes", report.planes},
            {"seconds", report.seconds},
            {"read", report.readSeconds},
            {"work", report.workSeconds},
            {"write", report.writeSeconds},
            {"instructions", host::instructionSet()},
            {"gpu", gpuJson()}};
}

void printStats(const host::FrameReport& report)
{
    int64_t pixels = 0;
    for (const host::Picture& output : report.outputs) {
        const host::Window& window = output.first().data;
        std::printf("%s: %d x %d, planes %s\n", output.path.c_str(), window.width, window.height,
                    host::joined(report.planes).c_str());
        pixels += output.first().pixels();
    }
    std::printf(
        "  %.3f s, %.1f megapixels a second; read %.3f s, work %.3f s over all threads (%s), write %.3f s\n",
        report.seconds, static_cast<double>(pixels) * 1e-6 / report.seconds, report.readSeconds,
        report.workSeconds, host::instructionSet(), report.writeSeconds);
    printGPU();
}

/// Notes that were told of a frame before are not told again.
void tellDone(const host::FrameReport& report, const RunOptions& o, Progress& progress,
              std::set<std::string>& told)
{
    progress.done(o.stats ? statsJson(report) : nullptr);
    for (const std::string& note : report.notes)
        if (told.insert(note).second)
            std::fprintf(stderr, "kreiluge: note: %s\n", host::printable(note).c_str());
    if (o.stats && !progress.isJson())
        printStats(report);
    std::fflush(stdout);
}

/// True when the other frames of a sequence would fail alike.
bool endsSequence(const Error& error)
{
    using Kind = Error::Kind;
    return error.kind() == Kind::Usage || error.kind() == Kind::Output || error.kind() == Kind::Device ||
           error.kind() == Kind::Cancelled;
}

std::string outputOf(const host::Script& script, const Frame& frame)
{
    const std::string& path = script.outputs.front().settings.path;
    return frame && host::hasFramePlace(path) ? host::framePath(path, *frame) : path;
}

struct OperationOptions : RunOptions
{
    explicit OperationOptions(const host::Operation& operation) : words(operation) {}

    host::OperationWords words;
    std::string output;
};

int run(const host::Operation& operation, const OperationOptions& o)
{
    host::Call call = o.words.call();
    if (operation.usualDepth && !call.has("depth"))
        call.set(*operation.find("depth"), {host::formatName(host::usualFormat(o.output))});
    host::OutputSettings settings;
    settings.path = o.output;
    host::setOutput(settings, {}, o.window, "auto");
    return runAll(host::Script::single(std::move(call), settings), o);
}

} // namespace

std::vector<std::optional<int64_t>> framesOf(const host::Script& script,
                                             const std::optional<std::string>& numbers)
{
    if (!numbers) {
        checkSingle(script);
        return {Frame()};
    }
    const std::vector<int64_t> frames =
        *numbers == "all" ? framesThatExist(script) : host::parseFrames(*numbers);
    if (frames.size() > 1)
        checkPlaces(script);
    return {frames.begin(), frames.end()};
}

void addRunOptions(Command& command, RunOptions& o)
{
    command.add({{"--frames",
                  &o.frames,
                  "frames of a sequence: 1001-1100, 1001-1100x2 or 1,5,9, or all that exist",
                  {.words = "FRAMES"}},
                 {"--window",
                  &o.window,
                  "what a file format without a data window gets: the display window, padded or cut, or the "
                  "data window",
                  {.words = "WHICH", .preset = "display", .choices = {"display", "data"}}},
                 {"--threads", &o.threads, "threads, 1 to 64", {.words = "N", .preset = "as many as cores"}},
                 {"--tile", &o.tile, "side of a tile in pixels", {.words = "N", .preset = "200"}},
                 {"--progress",
                  &o.progress,
                  "how to tell of it",
                  {.words = "MODE", .preset = "auto", .choices = {"auto", "none", "bar", "json"}}},
                 {"--stats", &o.stats, "tell where the time went"}});
}

int runAll(const host::Script& script, const RunOptions& o)
{
    host::RunSettings settings = settingsOf(o);
    const std::vector<Frame> frames = framesOf(script, o.frames);
    Progress progress(o.progress);
    host::setFileThreads(settings.threads);
    size_t failed = 0, missing = 0;
    std::set<std::string> told;
    for (size_t i = 0; i < frames.size(); ++i) {
        try {
            settings.progress = progress.begin(outputOf(script, frames[i]), i, frames.size(), frames[i]);
            tellDone(host::ScriptGraph(script, frames[i]).run(settings), o, progress, told);
        } catch (const Error& error) {
            progress.failed(error.what());
            if (frames.size() == 1 || endsSequence(error)) {
                progress.end();
                throw;
            }
            std::fprintf(stderr, "kreiluge: %s\n", host::printable(error.what()).c_str());
            ++failed;
            missing += error.kind() == Error::Kind::NoInput;
        }
    }
    progress.end();
    if (failed > 0)
        std::fprintf(stderr, "kreiluge: %zu of %zu frames failed\n", failed, frames.size());
    if (missing == frames.size())
        return exitUsage;
    return failed > 0 ? exitSomeFailed : exitDone;
}

Command operationCommand(const host::Operation& operation)
{
    auto o = std::make_shared<OperationOptions>(operation);
    Command command{operation.name.c_str(), operation.summary.c_str(), operation.examples.c_str()};
    command.options = o->words.options();
    const auto firstOption = std::find_if(command.options.begin(), command.options.end(),
                                          [](const host::Option& option) { return option.name[0] == '-'; });
    command.options.insert(
        firstOption,
        {"-o,--output", &o->output, "image file to write; its extension picks the file format", required});
    addRunOptions(command, *o);
    if (operation.list != nullptr)
        command.add({{"--list",
                      [&operation] {
                          for (const std::string& line : operation.list())
                              std::printf("%s\n", line.c_str());
                      },
                      "list them, and do no more"}});
    command.run = [o, &operation] { return run(operation, *o); };
    return command;
}

} // namespace tool
