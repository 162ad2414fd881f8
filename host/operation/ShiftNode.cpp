#include <host/operation/ShiftNode.h>

#include <host/file/Format.h>

#include <RU/filter/RU_SubPixel.h>

#include <cmath>

namespace host {

ShiftNode::ShiftNode(double x, double y, const PlaneSettings& settings)
    : settings_(settings), x_(static_cast<int>(std::floor(-x))), y_(static_cast<int>(std::floor(-y))),
      fractionX_(static_cast<float>(-x - x_)), fractionY_(static_cast<float>(-y - y_))
{
    if (fractionX_ == 1.0f) { // rounded up
        fractionX_ = 0.0f;
        ++x_;
    }
    if (fractionY_ == 1.0f) {
        fractionY_ = 0.0f;
        ++y_;
    }
}

Picture ShiftNode::plan(const std::vector<const Picture*>& inputs)
{
    const Planes in(*inputs.front());
    Picture output = planPlanes(in, 0, settings_);
    for (Image& part : output.parts) {
        if (part.display.isEmpty())
            part.display = part.data;
        const int moreX = fractionX_ != 0.0f ? 1 : 0, moreY = fractionY_ != 0.0f ? 1 : 0; // pixels touched
        part.data = {part.data.x - x_ - moreX, part.data.y - y_ - moreY, part.data.width + moreX,
                     part.data.height + moreY};
    }
    return output;
}

Window ShiftNode::needs(size_t, const Window& window) const
{
    return {window.x + x_, window.y + y_, window.width + 1, window.height + 1};
}

Block ShiftNode::pixels(size_t plane, const Window& rect, Feed& feed) const
{
    const PlaneWork& work = works_[plane];
    const bool multiplies = work.multiplies && (fractionX_ != 0.0f || fractionY_ != 0.0f);
    const Window from = needs(0, rect);
    Block in = multiplies ? loadMultiplied(plane, from, Outside::Edge,
                                           [&](const Feed::Wish& wish) { return feed.load(wish); })
                          : feed.load({0, plane, from, work.format, mappingOf(work.present), Outside::Edge});
    in.rect = {rect.x, rect.y, from.width, from.height}; // the library moves by the fraction alone
    Block out = feed.blank(rect, in.format, {in.has(0), in.has(1), in.has(2), in.has(3)});
    {
        RU_SubPixel shift;
        shift.setWeights(fractionX_, fractionY_);
        const TIL_Plane codes = codesOf(in.format, settings_);
        const LentRegion region(in, codes);
        const LentTiles tiles(out, codes);
        TIL_TileList list = tiles.list;
        feed.run([&](void* token, int thread) {
            return shift.filter(&list, &region.region, 0.0f, token, thread, nullptr);
        });
    }
    feed.give(std::move(in));
    if (!multiplies)
        return out;
    for (size_t c = 0; c < 3; ++c)
        if (out.has(c))
            divideByAlpha(out.values<float>(c), out.values<float>(3), out.count());
    if (!work.present[3])
        out.data[3] = TIL_Buffer();
    return out;
}

} // namespace host
