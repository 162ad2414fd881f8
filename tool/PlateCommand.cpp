#include "Commands.h"
#include "Progress.h"
#include "Signals.h"

#include <host/Error.h>
#include <host/Format.h>
#include <host/Plate.h>

#include <cstdio>
#include <memory>

namespace tool {

namespace {

struct PlateOptions
{
    std::string output;
    std::string size = "1920x1080";
    std::string depth;
    std::string progress = "auto";
    bool alpha = false;
    int threads = host::defaultThreads();
};

void draw(const PlateOptions& o)
{
    host::PlateSettings settings;
    int end = 0;
    if (std::sscanf(o.size.c_str(), "%9dx%9d%n", &settings.width, &settings.height, &end) != 2 ||
        static_cast<size_t>(end) != o.size.size())
        throw host::Error(host::Error::Kind::Usage,
                          "--size: '" + o.size + "' is no size; expected something like 1920x1080");
    if (o.threads < 1 || o.threads > host::maxThreads)
        throw host::Error(host::Error::Kind::Usage,
                          "--threads: " + std::to_string(o.threads) + " is not from 1 to 8");
    settings.format = o.depth.empty() ? host::usualFormat(o.output) : host::formatOfName(o.depth);
    settings.alpha = o.alpha;
    settings.threads = o.threads;
    settings.cancel = &cancelSwitch();
    Progress progress(o.progress);
    settings.progress = progress.begin(o.output, 0, 1);
    host::setFileThreads(o.threads);
    host::drawPlate(o.output, settings);
}

} // namespace

void addPlate(CLI::App& app)
{
    CLI::App* command = app.add_subcommand("plate", "Draw a test plate");
    auto o = std::make_shared<PlateOptions>();
    command->add_option("-o,--output", o->output, "image file to write")->required();
    command->add_option("--size", o->size, "width and height in pixels")->capture_default_str();
    command->add_option("--depth", o->depth,
                        "uint8, uint16, uint32, half or float (default: what is usual for the file format)");
    command->add_flag("--alpha", o->alpha, "add an alpha channel that fades out in the corners");
    command->add_option("--threads", o->threads, "threads, 1 to 8")->capture_default_str();
    command->add_option("--progress", o->progress, "auto, none, bar or json")->capture_default_str();
    command->footer(
        "Float and half hold linear light, with highlights up to 16; integers hold it with the sRGB curve.");
    command->callback([o] { draw(*o); });
}

} // namespace tool
