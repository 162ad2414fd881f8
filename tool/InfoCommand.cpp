#include "Commands.h"

#include <host/file/Format.h>
#include <host/file/Reader.h>
#include <host/text/Names.h>

#include <nlohmann/json.hpp>

#include <cstdio>
#include <memory>

namespace tool {

namespace {

using Json = nlohmann::ordered_json;

struct InfoOptions
{
    std::string file;
    bool json = false;
};

Json windowJson(const host::Window& window)
{
    return {{"x", window.x}, {"y", window.y}, {"width", window.width}, {"height", window.height}};
}

void printJson(const host::Image& image)
{
    Json planes = Json::array();
    for (const host::Plane& plane : image.planes)
        planes.push_back({{"name", plane.name},
                          {"format", host::formatName(plane.format)},
                          {"channels", plane.channelNames(image.channels)}});
    Json metadata = Json::object();
    for (const auto& [name, value] : host::metadata(image))
        metadata[name] = value;
    const Json root = {{"file", image.path},
                       {"fileFormat", image.fileFormat},
                       {"dataWindow", windowJson(image.data)},
                       {"displayWindow", windowJson(image.display)},
                       {"planes", planes},
                       {"metadata", metadata}};
    std::printf("%s\n", root.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
}

void printText(const host::Image& image)
{
    std::printf("%s: %s, %d x %d\n", image.path.c_str(), image.fileFormat.c_str(), image.display.width,
                image.display.height);
    std::printf("  data window     %s\n", describe(image.data).c_str());
    std::printf("  display window  %s\n", describe(image.display).c_str());
    std::printf("  planes\n");
    size_t width = 0;
    for (const host::Plane& plane : image.planes)
        width = std::max(width, plane.name.size());
    for (const host::Plane& plane : image.planes)
        std::printf("    %-*s  %-6s  %s\n", static_cast<int>(width), plane.name.c_str(),
                    host::formatName(plane.format),
                    host::joined(plane.channelNames(image.channels), " ").c_str());
    const auto rows = host::metadata(image);
    if (!rows.empty())
        std::printf("  metadata\n");
    for (const auto& [name, value] : rows)
        std::printf("    %s: %s\n", name.c_str(), value.c_str());
}

} // namespace

Command infoCommand()
{
    Command command{"info", "Show the size, windows, planes and metadata of an image", nullptr};
    auto o = std::make_shared<InfoOptions>();
    command.add({{"FILE", &o->file, "image file", required}, {"--json", &o->json, "as JSON"}});
    command.run = [o] {
        const host::Reader reader(o->file);
        o->json ? printJson(reader.image()) : printText(reader.image());
        return exitDone;
    };
    return command;
}

} // namespace tool
