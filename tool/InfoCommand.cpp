#include "Commands.h"

#include <host/file/Format.h>
#include <host/file/Metadata.h>
#include <host/file/Reader.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

namespace tool {

namespace {

using Json = nlohmann::ordered_json;

struct InfoOptions
{
    std::vector<std::string> files;
    bool json = false;
};

Json windowJson(const host::Window& window)
{
    return {{"x", window.x}, {"y", window.y}, {"width", window.width}, {"height", window.height}};
}

Json imageJson(const host::Image& image)
{
    Json planes = Json::array();
    for (const host::Plane& plane : image.planes)
        planes.push_back({{"name", plane.name},
                          {"format", host::formatName(plane.format)},
                          {"channels", plane.channelNames(image.channels)}});
    return {{"file", image.path},
            {"fileFormat", image.fileFormat},
            {"dataWindow", windowJson(image.data)},
            {"displayWindow", windowJson(image.display)},
            {"planes", planes},
            {"metadata", host::metadataJson(image)}};
}

/// Of a file with several parts the first one, and a list of all.
Json pictureJson(const host::Picture& picture)
{
    Json json = imageJson(picture.first());
    if (picture.parts.size() == 1)
        return json;
    for (const host::Image& part : picture.parts) {
        Json item = imageJson(part);
        item["name"] = part.part;
        json["parts"].push_back(item);
    }
    return json;
}

void printText(const host::Image& image, bool isPart)
{
    using host::printable;
    std::printf("%s%s: %s, %d x %d\n", printable(image.path).c_str(),
                isPart ? (", part '" + printable(image.part) + "'").c_str() : "", image.fileFormat.c_str(),
                image.display.width, image.display.height);
    std::printf("  data window     %s\n", describe(image.data).c_str());
    std::printf("  display window  %s\n", describe(image.display).c_str());
    std::printf("  planes\n");
    size_t width = 0;
    for (const host::Plane& plane : image.planes)
        width = std::max(width, printable(plane.name).size());
    for (const host::Plane& plane : image.planes)
        std::printf("    %-*s  %-6s  %s\n", static_cast<int>(width), printable(plane.name).c_str(),
                    host::formatName(plane.format),
                    printable(host::joined(plane.channelNames(image.channels), " ")).c_str());
    const auto rows = host::metadata(image);
    if (!rows.empty())
        std::printf("  metadata\n");
    for (const auto& [name, value] : rows)
        std::printf("    %s: %s\n", printable(name).c_str(), printable(value).c_str());
}

/// A file that cannot be read does not keep those before it from being shown.
int show(const InfoOptions& o)
{
    Json all = Json::array();
    for (const std::string& file : o.files) {
        const std::unique_ptr<host::Reader> reader = host::openReader(file);
        if (o.json)
            all.push_back(pictureJson(reader->picture()));
        else
            for (const host::Image& part : reader->picture().parts)
                printText(part, reader->picture().parts.size() > 1);
    }
    if (o.json) {
        const Json& root = o.files.size() == 1 ? all.front() : all;
        std::printf("%s\n", root.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
    }
    return exitDone;
}

} // namespace

Command infoCommand()
{
    Command command{"info", "Show the size, windows, planes and metadata of images", nullptr};
    auto o = std::make_shared<InfoOptions>();
    command.add({{"FILE", &o->files, "image files", required},
                 {"--json", &o->json, "as JSON: an object, of several files a list of them"}});
    command.run = [o] { return show(*o); };
    return command;
}

} // namespace tool
