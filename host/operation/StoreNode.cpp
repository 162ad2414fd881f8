#include <host/operation/StoreNode.h>

#include <host/file/Format.h>

#include <algorithm>

namespace host {

namespace {

/// An alpha above 1 becomes 1: the colours take what is lost of it.
void multiplyByExcess(float* values, const float* alpha, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
        values[i] *= std::max(alpha[i], 1.0f);
}

} // namespace

Picture StoreNode::plan(const std::vector<const Picture*>& inputs)
{
    const Planes in(*inputs.front());
    PlaneSettings formats;
    formats.depth = settings_.depth;
    Picture output = in.picture.withFormats(formatsOf(in, formats));
    for (Image& part : output.parts) {
        setWindow(part);
        part.straight = settings_.straight.value_or(part.straight);
    }
    const Planes out(output);
    bool adapts = false;
    for (size_t p = 0; p < in.size(); ++p) {
        PlaneWork& work = works_.emplace_back();
        work.present = in[p].present();
        work.format = widerFormat(in[p].format, out[p].format);
        work.recipe = {{{0, p}}, out[p].format == in[p].format && out.window(p) == in.window(p)};
        const std::optional<size_t> alpha = in.picture.alphaOf(p);
        if (!in[p].colour || !alpha || !settings_.straight)
            continue;
        const bool changes = in.picture.isStraight(p) != output.isStraight(p);
        const bool limits =
            output.isStraight(p) && isFloat(in[*alpha].format) && !isFloat(out[*alpha].format);
        if (!changes && !limits)
            continue;
        work.format = PXL_FORMAT_float32;
        work.alpha = *alpha;
        work.alphaFormat = out[*alpha].format;
        work.adapt = !changes ? multiplyByExcess : output.isStraight(p) ? divideByAlpha : multiplyByAlpha;
        work.recipe = {{{0, *alpha}}, false};
        if (*alpha != p)
            work.recipe.uses.push_back({0, p});
        adapts = adapts || changes;
    }
    if (adapts)
        notes_.push_back("'" + in.picture.path + "': colours are " +
                         (output.first().straight ? "divided" : "multiplied") +
                         " by their alpha, as the file format of the output has them");
    return output;
}

void StoreNode::setWindow(Image& image)
{
    if (!settings_.displayWindow || image.display.isEmpty() || image.data == image.display)
        return;
    if (intersection(image.data, image.display) != image.data)
        notes_.push_back("'" + image.path + "': what lies outside of the display window, " +
                         describe(image.display) + ", is left out");
    image.data = image.display;
}

Block StoreNode::pixels(size_t plane, const Window& rect, Feed& feed) const
{
    const PlaneWork& work = works_[plane];
    if (work.adapt == nullptr)
        return feed.take({0, plane, rect, work.format, mappingOf(work.present), Outside::Zero});
    Block alpha = feed.load({0, work.alpha, rect, work.format, {3, -1, -1, -1}, Outside::Zero});
    if (work.adapt == divideByAlpha)
        limitAlpha(alpha.values<float>(0), alpha.count(), work.alphaFormat);
    Block block = feed.take({0, plane, rect, work.format, mappingOf(work.present), Outside::Zero});
    for (size_t c = 0; c < 3; ++c)
        if (block.has(c))
            work.adapt(block.values<float>(c), alpha.values<float>(0), block.count());
    feed.give(std::move(alpha));
    return block;
}

} // namespace host
