#include "Commands.h"
#include "Progress.h"
#include "Signals.h"

#include <host/Cook.h>
#include <host/Error.h>
#include <host/Format.h>
#include <host/Frames.h>
#include <host/Names.h>

#include <nlohmann/json.hpp>

#include <cstdio>
#include <memory>
#include <optional>

// The two commands that turn images into others, grade and edge, and what they share.

namespace tool {

namespace {

using host::Error;

struct CookOptions
{
    std::string input, output;
    std::optional<std::string> frames, depth, black, white;
    std::string progress = "auto";
    std::vector<std::string> planes;
    std::string threads = std::to_string(host::defaultThreads());
    std::string tile = "200";
    bool stats = false;
};

struct GradeOptions : CookOptions
{
    std::optional<std::string> chain, chainFile;
};

struct EdgeOptions : CookOptions
{
    host::Operation::EdgeSettings edge;
    std::string scope = "rgb";
};

void addCommon(CLI::App& command, CookOptions& o)
{
    command.add_option("INPUT", o.input, "image file; #### or %04d stands for the frame number")->required();
    command.add_option("-o,--output", o.output, "image file to write; its extension picks the file format")
        ->required();
    command.add_option("--frames", o.frames, "frames of a sequence: 1001-1100, 1001-1100x2 or 1,5,9");
    command
        .add_option("--planes", o.planes,
                    "planes to work on, or all; the others are copied (default: those with colour)")
        ->delimiter(',')
        ->allow_extra_args(false);
    command.add_option("--depth", o.depth,
                       "store the output as uint8, uint16, uint32, half or float (default: as the input)");
    command.add_option("--black", o.black, "integer code of 0.0 (default: 0)");
    command.add_option("--white", o.white, "integer code of 1.0 (default: the last code)");
    command.add_option("--threads", o.threads, "threads, 1 to 8")->capture_default_str();
    command.add_option("--tile", o.tile, "side of a tile in pixels")->capture_default_str();
    command.add_option("--progress", o.progress, "auto, none, bar or json")->capture_default_str();
    command.add_flag("--stats", o.stats, "tell where the time went");
}

host::CookSettings settingsOf(const CookOptions& o)
{
    host::CookSettings settings;
    settings.threads = readThreads(o.threads);
    settings.tile = static_cast<int>(readWhole("--tile", o.tile, 1, 4096));
    if (o.depth)
        settings.depth = host::formatOfName(*o.depth);
    constexpr unsigned int lastCode = 0xFFFFFFFFu;
    if (o.black)
        settings.black = readWhole("--black", *o.black, 0, lastCode);
    if (o.white)
        settings.white = readWhole("--white", *o.white, 0, lastCode);
    settings.planes = o.planes;
    settings.cancel = &cancelSwitch();
    return settings;
}

struct Task
{
    std::string input, output;
};

std::vector<Task> tasksOf(const CookOptions& o)
{
    if (!o.frames)
        return {{o.input, o.output}};
    const std::vector<int64_t> frames = host::parseFrames(*o.frames);
    for (const std::string& path : {o.input, o.output})
        if (frames.size() > 1 && !host::hasFramePlace(path))
            host::refuse("--frames: '" + path +
                         "' has no place for the frame number; write #### or %04d there");
    std::vector<Task> tasks;
    const auto pathOf = [](const std::string& path, int64_t frame) {
        return host::hasFramePlace(path) ? host::framePath(path, frame) : path;
    };
    for (const int64_t frame : frames)
        tasks.push_back({pathOf(o.input, frame), pathOf(o.output, frame)});
    return tasks;
}

nlohmann::ordered_json statsJson(const host::CookReport& report)
{
    return {{"pixels", report.output.pixels()},
            {"planes", report.planes},
            {"seconds", report.seconds},
            {"read", report.readSeconds},
            {"work", report.workSeconds},
            {"write", report.writeSeconds},
            {"instructions", host::instructionSet()}};
}

void printStats(const host::CookReport& report)
{
    const double megapixels = static_cast<double>(report.output.pixels()) * 1e-6;
    std::printf("%s: %d x %d, planes %s\n", report.output.path.c_str(), report.output.data.width,
                report.output.data.height, host::joined(report.planes).c_str());
    std::printf(
        "  %.3f s, %.1f megapixels a second; read %.3f s, work %.3f s over all threads (%s), write %.3f s\n",
        report.seconds, megapixels / report.seconds, report.readSeconds, report.workSeconds,
        host::instructionSet(), report.writeSeconds);
}

void tellDone(const host::CookReport& report, const CookOptions& o, Progress& progress)
{
    progress.clear();
    for (const std::string& note : report.notes)
        std::fprintf(stderr, "kreiluge: note: %s\n", note.c_str());
    if (progress.isJson()) {
        nlohmann::ordered_json line = {{"event", "done"}, {"output", report.output.path}};
        if (o.stats)
            line["stats"] = statsJson(report);
        std::printf("%s\n", line.dump().c_str());
    } else if (o.stats) {
        printStats(report);
    }
    std::fflush(stdout);
}

/// True when the other frames of a sequence would fail alike.
bool endsSequence(const Error& error)
{
    using Kind = Error::Kind;
    return error.kind() == Kind::Usage || error.kind() == Kind::Output || error.kind() == Kind::Cancelled;
}

/// Runs an operation over all frames. One that fails does not keep the others from being done.
int cookAll(const CookOptions& o, const host::Operation& operation)
{
    host::CookSettings settings = settingsOf(o);
    const std::vector<Task> tasks = tasksOf(o);
    Progress progress(o.progress);
    host::setFileThreads(settings.threads);
    size_t failed = 0, missing = 0;
    for (size_t i = 0; i < tasks.size(); ++i) {
        try {
            settings.progress = progress.begin(tasks[i].output, i, tasks.size());
            tellDone(host::cook(tasks[i].input, tasks[i].output, operation, settings), o, progress);
        } catch (const Error& error) {
            progress.clear();
            if (tasks.size() == 1 || endsSequence(error))
                throw;
            std::fprintf(stderr, "kreiluge: %s\n", error.what());
            ++failed;
            missing += error.kind() == Error::Kind::NoInput;
        }
    }
    if (failed > 0)
        std::fprintf(stderr, "kreiluge: %zu of %zu frames failed\n", failed, tasks.size());
    if (missing == tasks.size())
        return exitUsage;
    return failed > 0 ? exitSomeFailed : exitDone;
}

host::Chain chainOf(const GradeOptions& o)
{
    if (o.chain && o.chainFile)
        host::refuse("--chain: there is a chain in the arguments already, '" + *o.chain + "'");
    if (o.chain)
        return host::Chain::fromText(*o.chain);
    if (!o.chainFile)
        host::refuse("no chain; write one such as \"gamma 2.2, add 0.1\", or name a file with --chain");
    return host::Chain::fromJsonFile(*o.chainFile);
}

} // namespace

void addGrade(CLI::App& app, int& exitCode)
{
    CLI::App* command = app.add_subcommand("grade", "Apply a chain of functions to an image or a sequence");
    auto o = std::make_shared<GradeOptions>();
    addCommon(*command, *o);
    command->add_option("CHAIN", o->chain,
                        "functions with their arguments, separated by commas; \"\" copies");
    command->add_option("--chain", o->chainFile, "read the chain from a JSON file instead");
    command->footer(
        "Examples:\n"
        "  kreiluge grade in.exr -o out.exr \"gamma 2.2, add 0.1\"\n"
        "  kreiluge grade in.png -o out.png \"mult 1.1:1:0.9, limit 0 1 @rgb\"\n"
        "  kreiluge grade shot.####.exr -o graded.####.exr --frames 1001-1100 --chain look.json\n"
        "A scope after @ says which of r, g, b and a a function applies to: all without it, alpha too.\n"
        "`kreiluge functions` lists the functions.");
    command->callback([o, &exitCode] { exitCode = cookAll(*o, host::Operation::grade(chainOf(*o))); });
}

void addEdge(CLI::App& app, int& exitCode)
{
    CLI::App* command = app.add_subcommand("edge", "Turn an image or a sequence into its edges");
    auto o = std::make_shared<EdgeOptions>();
    addCommon(*command, *o);
    command->add_flag("--prewitt", o->edge.prewitt, "weigh the nine pixels alike (default: Sobel weights)");
    command->add_option("--gain", o->edge.gain, "gain of the differences")->capture_default_str();
    command->add_option("--corner", o->edge.corner, "share of the corner pixels")->capture_default_str();
    command->add_option("--scope", o->scope, "components to work on; the others are copied")
        ->capture_default_str();
    command->footer("Examples:\n"
                    "  kreiluge edge in.exr -o edges.exr\n"
                    "  kreiluge edge in.png -o edges.png --prewitt --gain 2");
    command->callback([o, &exitCode] {
        exitCode = cookAll(*o, host::Operation::edge(o->edge, host::componentsOfLetters(o->scope)));
    });
}

} // namespace tool
