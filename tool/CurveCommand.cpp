#include "Commands.h"

#include <host/chain/Curves.h>
#include <host/picture/CurvePicture.h>

#include <memory>
#include <optional>

namespace tool {

namespace {

struct CurveOptions
{
    std::string keys, output;
    std::optional<std::string> size;
    bool extend = false;
};

int draw(const CurveOptions& o)
{
    host::CurvePictureSettings settings;
    if (o.size)
        settings.size = static_cast<int>(host::readWhole("--size", *o.size, 64, 4096));
    settings.extend = o.extend;
    host::drawCurves(o.output, host::curvesOfText(o.keys), settings);
    return exitDone;
}

} // namespace

Command curveCommand()
{
    Command command{"curve", "Draw curves of colour as a picture",
                    "Examples:\n"
                    "  kreiluge curve \"0 0, 0.5 0.6, 1 1\" -o curve.png\n"
                    "  kreiluge curve \"0 0, 1 1 | 0 0, 0.5 0.4, 1 1 | 0 0, 1 1\" -o curves.png"};
    auto o = std::make_shared<CurveOptions>();
    command.add({{"KEYS", &o->keys, "keys as the function curve takes them", required},
                 {"-o,--output", &o->output, "image file to write", {.required = true, .words = "FILE"}},
                 {"--size", &o->size, "sides of the picture in pixels", {.words = "N", .preset = "512"}},
                 {"--extend", &o->extend, "straight on outside the keys, and not level"}});
    command.run = [o] { return draw(*o); };
    return command;
}

} // namespace tool
