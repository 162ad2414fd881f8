#include <host/picture/PlateNode.h>

#include <host/text/Error.h>

#include <cmath>

namespace host {

namespace {

float displayValue(float linear)
{
    return linear <= 0.0031308f ? linear * 12.92f : 1.055f * std::pow(linear, 1.0f / 2.4f) - 0.055f;
}

} // namespace

PlateNode::PlateNode(const Settings& settings)
    : settings_(settings), picture_(settings.width, settings.height)
{
    constexpr int64_t mostPixels = int64_t{1} << 32;
    if (settings.width < 16 || settings.height < 16 || settings.width * int64_t{settings.height} > mostPixels)
        refuse("size " + std::to_string(settings.width) + "x" + std::to_string(settings.height) +
               " is not from 16x16 to 4 gigapixels");
}

Picture PlateNode::plan(const std::vector<const Picture*>&)
{
    return {"plate",
            {newImage(settings_.width, settings_.height, settings_.alpha ? 4 : 3, settings_.format,
                      "kreiluge test plate")}};
}

Block PlateNode::pixels(size_t, const Window& rect, Feed& feed) const
{
    Block block = feed.blank(rect, PXL_FORMAT_float32, {true, true, true, settings_.alpha});
    float* values[4] = {};
    for (size_t c = 0; c < 4; ++c)
        values[c] = block.values<float>(c);
    const bool linear = settings_.format >= PXL_FORMAT_float32;
    int64_t i = 0;
    for (int y = rect.y; y < rect.y + rect.height; ++y) {
        for (int x = rect.x; x < rect.x + rect.width; ++x, ++i) {
            const Colour colour = picture_.colour(x, y);
            const float light[] = {colour.r, colour.g, colour.b};
            for (int c = 0; c < 3; ++c)
                values[c][i] = linear ? light[c] : displayValue(light[c]);
            if (settings_.alpha)
                values[3][i] = picture_.alpha(x, y);
        }
        feed.check();
    }
    return block;
}

} // namespace host
