#include <host/operation/OperationRows.h>

#include <host/file/Format.h>
#include <host/picture/RotoNode.h>
#include <host/shape/Freehand.h>
#include <host/text/Error.h>
#include <host/text/Text.h>

namespace host {

namespace {

/// A number within limits; throws a usage error for another one.
double numberOf(const Call& call, const char* key, double least, double most)
{
    const double number = call.value(key);
    if (number < least || number > most)
        refuse(std::string("--") + key + ": expected a number from " + numberText(static_cast<float>(least)) +
               " to " + numberText(static_cast<float>(most)));
    return number;
}

Shapes shapesOf(const Call& call)
{
    if (call.has("shapes"))
        return readShapes(call.text("shapes"));
    if (!call.has("freehand"))
        refuse("roto: nothing to draw; name a file of shapes, or one of a stroke with --freehand");
    FreehandSettings settings;
    settings.tolerance = numberOf(call, "tolerance", 0.01, 1000.0);
    settings.open = call.isOn("open");
    settings.width = numberOf(call, "width", 0.0, 10000.0);
    return readFreehand(call.text("freehand"), settings);
}

std::unique_ptr<Node> roto(const Call& call)
{
    RotoNode::Settings settings;
    if (call.has("size"))
        settings.size = readSize("--size", call.text("size"));
    settings.channels = static_cast<RotoNode::Channels>(choiceOf(call, "channels"));
    if (const PlaneSettings planes = call.planeSettings();
        planes.depth) // colours of integers divide badly by alpha
        settings.format = settings.channels == RotoNode::Channels::RGBA
                              ? storedFormat(PXL_FORMAT_float32, planes)
                              : *planes.depth;
    settings.feather = numberOf(call, "feather", -1000.0, 1000.0);
    if (call.has("drop-off"))
        settings.dropoff = static_cast<RU_FeatherDropoff>(choiceOf(call, "drop-off"));
    settings.frame = static_cast<double>(call.frame());
    settings.moments = static_cast<int>(readWhole("--motion", call.text("motion"), 1, 256));
    settings.shutter = numberOf(call, "shutter", 0.0, 720.0) / 360.0;
    return std::make_unique<RotoNode>(shapesOf(call), settings);
}

Operation rotoRow()
{
    Parameter shapes = text("SHAPES", "file of shapes, .json or .svg");
    Parameter freehand = text("--freehand", "text file of a stroke instead, x, y in pixels a line", "FILE");
    freehand.excludes = {"SHAPES"};
    Parameter tolerance = number("--tolerance", "pixels that the shape may pass a stroke by", "1");
    Parameter open = onOff("--open", "draw along the stroke, instead of what it surrounds");
    Parameter width = number("--width", "pixels that the line along an open stroke is wide", "1");
    tolerance.needs = open.needs = {"--freehand"};
    width.needs = {"--open"};
    Parameter size =
        text("--size", "width and height in pixels (default: those that the shapes' file has, or 1920x1080)",
             "WxH");
    Parameter like = image("--like", "image whose windows it gets instead", false);
    like.excludes = {"--size"};
    Parameter channels = text("--channels", "what the picture has", "WHICH", "rgba");
    channels.argument.choices = {"rgba", "rgb", "matte"};
    channels.argument.meanings = {"colours that are multiplied by their alpha, and alpha",
                                  "the same without alpha", "one channel, which is alpha"};
    return {
        "roto",
        "Draw shapes with soft edges, still or moving",
        "Examples:\n"
        "  kreiluge roto head.json -o matte.####.exr --like shot.####.exr --channels matte --frames 1-48 "
        "--motion 8\n"
        "  kreiluge roto logo.svg -o logo.png --size 640x360 --depth uint8\n"
        "  kreiluge roto --freehand stroke.csv -o blob.png --tolerance 2 --feather 10\n"
        "Where shapes overlap, the largest value counts.",
        {shapes, freehand, tolerance, open, width, size, like, channels,
         number("--feather", "pixels that soft edges reach further than the shapes say; below 0 inwards",
                "0"),
         dropOff("curve of soft edges (default: that of each shape)", ""),
         text("--motion", "moments of a frame that the picture is the mean of, up to 256: motion blur", "N",
              "1"),
         number("--shutter", "degrees of a turn that the moments are spread over; 360 is from frame to frame",
                "180"),
         depth(
             "storage format (default: what is usual for the file format of the output; half in a script)")},
        roto,
        nullptr,
        true,
        true};
}

} // namespace

std::vector<Operation> shapeOperations()
{
    return {rotoRow()};
}

} // namespace host
