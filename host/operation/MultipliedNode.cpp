#include <host/operation/MultipliedNode.h>

#include <host/file/Format.h>

namespace host {

Picture MultipliedNode::planPlanes(const Planes& in, size_t input, const PlaneSettings& settings)
{
    Picture output = in.picture.withFormats(formatsOf(in, settings));
    const Planes out(output);
    bool multiplies = false;
    for (size_t p = 0; p < in.size(); ++p) {
        PlaneWork& work = works_.emplace_back();
        work.recipe.uses = {{input, p}};
        work.present = in[p].present();
        work.window = in.window(p);
        work.format = widerFormat(in[p].format, out[p].format);
        work.input = input;
        const std::optional<size_t> alpha = in.picture.alphaOf(p);
        work.multiplies = !settings.asIs && in[p].colour && alpha && in.picture.isStraight(p);
        work.alpha = alpha.value_or(p);
        if (work.multiplies && work.alpha != p)
            work.recipe.uses.push_back({input, work.alpha});
        multiplies = multiplies || work.multiplies;
    }
    if (multiplies)
        notes_.push_back("'" + in.picture.path + "': colours are multiplied by their alpha to be filtered");
    return output;
}

Block MultipliedNode::loadMultiplied(size_t plane, const Window& rect, Outside outside,
                                     const Load& load) const
{
    const PlaneWork& work = works_[plane];
    Block block = load({work.input, plane, rect, PXL_FORMAT_float32, mappingOf(work.present), outside});
    if (!work.multiplies)
        return block;
    if (work.alpha != plane)
        block.data[3] = std::move(
            load({work.input, work.alpha, rect, PXL_FORMAT_float32, {3, -1, -1, -1}, outside}).data[0]);
    for (size_t c = 0; c < 3; ++c)
        if (block.has(c))
            multiplyByAlpha(block.values<float>(c), block.values<float>(3), block.count());
    return block;
}

} // namespace host
