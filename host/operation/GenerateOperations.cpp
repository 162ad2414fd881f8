#include <host/operation/OperationRows.h>

#include <host/file/Format.h>
#include <host/picture/PlateNode.h>

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
         true}};
}

} // namespace host
