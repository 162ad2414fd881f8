#include "CookCommand.h"

#include "Commands.h"
#include "Progress.h"
#include "Signals.h"

#include <host/file/Format.h>
#include <host/file/Frames.h>
#include <host/text/Error.h>
#include <host/text/Names.h>

#include <nlohmann/json.hpp>

#include <cstdio>

namespace tool {

namespace {

using host::Error;

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

/// The names of all files, the output's last.
std::vector<std::string*> pathsOf(CookFiles& files)
{
    std::vector<std::string*> paths{&files.inputs.first};
    for (std::optional<std::string>* input : {&files.inputs.second, &files.inputs.matte})
        if (*input)
            paths.push_back(&**input);
    paths.push_back(&files.output);
    return paths;
}

/// Several frames need a place for the number in the output and in an input; other inputs may be stills.
void checkPlaces(CookFiles files)
{
    std::vector<std::string> stills;
    const std::vector<std::string*> paths = pathsOf(files);
    for (const std::string* path : paths)
        if (!host::hasFramePlace(*path))
            stills.push_back("'" + *path + "'");
    if (!host::hasFramePlace(files.output))
        stills = {stills.back()};
    else if (stills.size() < paths.size() - 1)
        return;
    host::refuse("--frames: there is no place for the frame number in " + host::joined(stills) +
                 "; write #### or %04d there");
}

std::vector<CookFiles> framesOf(const CookFiles& files, const std::optional<std::string>& numbers)
{
    if (!numbers)
        return {files};
    const std::vector<int64_t> frames = host::parseFrames(*numbers);
    if (frames.size() > 1)
        checkPlaces(files);
    std::vector<CookFiles> all(frames.size(), files);
    for (size_t i = 0; i < frames.size(); ++i)
        for (std::string* path : pathsOf(all[i]))
            if (host::hasFramePlace(*path))
                *path = host::framePath(*path, frames[i]);
    return all;
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

} // namespace

std::string inputHelp(const std::string& what)
{
    return what + "; #### or %04d stands for the frame number";
}

void addCookOptions(Command& command, CookOptions& o)
{
    command.add(
        {{"-o,--output", &o.output, "image file to write; its extension picks the file format", required},
         {"--frames", &o.frames, "frames of a sequence: 1001-1100, 1001-1100x2 or 1,5,9"},
         {"--planes", &o.planes,
          "planes to work on, or all; the others are copied (default: those with colour)"},
         {"--depth", &o.depth,
          "store the output as uint8, uint16, uint32, half or float (default: as the inputs)"},
         {"--threads", &o.threads, "threads, 1 to 8"},
         {"--tile", &o.tile, "side of a tile in pixels"},
         {"--progress", &o.progress, "auto, none, bar or json"},
         {"--stats", &o.stats, "tell where the time went"}});
}

void addPoints(Command& command, CookOptions& o)
{
    command.add({{"--black", &o.black, "integer code of 0.0 (default: 0)"},
                 {"--white", &o.white, "integer code of 1.0 (default: the last code)"}});
}

int cookAll(const CookOptions& o, const CookJob& job)
{
    host::CookSettings settings = settingsOf(o);
    const std::vector<CookFiles> frames = framesOf(o, o.frames);
    Progress progress(o.progress);
    host::setFileThreads(settings.threads);
    size_t failed = 0, missing = 0;
    for (size_t i = 0; i < frames.size(); ++i) {
        try {
            settings.progress = progress.begin(frames[i].output, i, frames.size());
            tellDone(job(frames[i], settings), o, progress);
        } catch (const Error& error) {
            progress.clear();
            if (frames.size() == 1 || endsSequence(error))
                throw;
            std::fprintf(stderr, "kreiluge: %s\n", error.what());
            ++failed;
            missing += error.kind() == Error::Kind::NoInput;
        }
    }
    if (failed > 0)
        std::fprintf(stderr, "kreiluge: %zu of %zu frames failed\n", failed, frames.size());
    if (missing == frames.size())
        return exitUsage;
    return failed > 0 ? exitSomeFailed : exitDone;
}

int cookAll(const CookOptions& o, const host::Operation& operation)
{
    return cookAll(o, [&](const CookFiles& files, const host::CookSettings& settings) {
        return host::cook(files.inputs.first, files.output, operation, settings);
    });
}

} // namespace tool
