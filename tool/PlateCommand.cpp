#include "Commands.h"
#include "Progress.h"
#include "Signals.h"

#include <host/file/Format.h>
#include <host/picture/Plate.h>
#include <host/text/Error.h>

#include <cstdio>
#include <memory>
#include <optional>

namespace tool {

namespace {

struct PlateOptions
{
    std::string output;
    std::string size = "1920x1080";
    std::optional<std::string> depth;
    std::string progress = "auto";
    bool alpha = false;
    std::string threads = std::to_string(host::defaultThreads());
};

int draw(const PlateOptions& o)
{
    host::PlateSettings settings;
    int end = 0;
    if (std::sscanf(o.size.c_str(), "%9dx%9d%n", &settings.width, &settings.height, &end) != 2 ||
        static_cast<size_t>(end) != o.size.size())
        host::refuse("--size: '" + o.size + "' is no size; expected something like 1920x1080");
    settings.format = o.depth ? host::formatOfName(*o.depth) : host::usualFormat(o.output);
    settings.alpha = o.alpha;
    settings.threads = readThreads(o.threads);
    settings.cancel = &cancelSwitch();
    Progress progress(o.progress);
    settings.progress = progress.begin(o.output, 0, 1);
    host::setFileThreads(settings.threads);
    host::drawPlate(o.output, settings);
    return exitDone;
}

} // namespace

Command plateCommand()
{
    Command command{
        "plate", "Draw a test plate",
        "Float and half hold linear light, with highlights up to 16; integers hold it with the sRGB curve."};
    auto o = std::make_shared<PlateOptions>();
    command.add({{"-o,--output", &o->output, "image file to write", required},
                 {"--size", &o->size, "width and height in pixels"},
                 {"--depth", &o->depth,
                  "uint8, uint16, uint32, half or float (default: what is usual for the file format)"},
                 {"--alpha", &o->alpha, "add an alpha channel that fades out in the corners"},
                 {"--threads", &o->threads, "threads, 1 to 8"},
                 {"--progress", &o->progress, "auto, none, bar or json"}});
    command.run = [o] { return draw(*o); };
    return command;
}

} // namespace tool
