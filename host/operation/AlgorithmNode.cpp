#include <host/operation/AlgorithmNode.h>

#include <host/file/Format.h>
#include <host/text/Error.h>
#include <host/text/Names.h>

#include <RE/RE_OpenGL.h>
#include <RU/pixelfunc/RU_GPUPixelEngine.h>
#include <RU/pixelfunc/RU_PixelEngine.h>

#include <algorithm>

namespace host {

namespace {

Components both(const Components& a, const Components& b)
{
    return {a[0] && b[0], a[1] && b[1], a[2] && b[2], a[3] && b[3]};
}

Components without(const Components& a, const Components& b)
{
    return {a[0] && !b[0], a[1] && !b[1], a[2] && !b[2], a[3] && !b[3]};
}

} // namespace

Picture AlgorithmNode::plan(const std::vector<const Picture*>& inputs)
{
    const Planes in(*inputs.front());
    const std::vector<bool> chosen = choosePlanes(in, settings_);
    const std::vector<unsigned char> formats = formatsOf(in, settings_);
    Picture output = in.picture.withFormats(formats);
    bool writes = work_.algorithm == nullptr;
    for (size_t p = 0; p < in.size(); ++p) {
        planWork(in, p, formats[p], chosen[p]);
        writes = writes || !planeWorks_[p].isCopy;
        if (!planeWorks_[p].isCopy && in[p].colour && work_.colourSpace)
            setColourSpace(output.parts[in.part(p)], *work_.colourSpace);
    }
    if (!writes)
        refuse("'" + in.picture.path + "': the scope names no component of " + joined(planes_));
    if (work_.algorithm != nullptr)
        work_.algorithm->initialize(0.0f);
    return output;
}

void AlgorithmNode::planWork(const Planes& in, size_t p, unsigned char stored, bool chosen)
{
    PlaneWork& work = planeWorks_.emplace_back();
    work.present = in[p].present();
    work.written = both(work.present, work_.written);
    work.format = widerFormat(in[p].format, stored);
    work.isCopy = !chosen || work.written == Components{} || work_.algorithm == nullptr;
    asIs_.push_back(work.isCopy && stored == in[p].format);
    if (!chosen)
        return;
    checkPoints(in[p], in.picture.path, settings_);
    work.codes = codesOf(work.format, settings_);
    work.codes.alpha = !in[p].colour && work.present[3];
    planes_.push_back(in[p].name);
    planDevice(in, p);
    // The library's tables for 8-bit codes span the full range on purpose.
    if (settings_.hasPoints() && in[p].format == PXL_FORMAT_uint8 && work_.algorithm != nullptr &&
        !work_.isFilter && !work_.readsAll)
        notes_.push_back("'" + in.picture.path + "': plane " + in[p].name +
                         " is uint8 and graded over the full range, whatever the points are");
}

/// The GPU takes the components that are there for the first ones, and has hues of fewer than three.
void AlgorithmNode::planDevice(const Planes& in, size_t p)
{
    PlaneWork& work = planeWorks_[p];
    const auto absent = std::find(work.present.begin(), work.present.end(), false);
    const bool isUsual = absent - work.present.begin() >= 3 &&
                         std::find(absent, work.present.end(), true) == work.present.end();
    work.isOnGPU = work_.onGPU != nullptr && (isUsual || !work_.readsAll);
    if (work_.onGPU != nullptr && !work.isOnGPU && !work.isCopy)
        notes_.push_back("'" + in.picture.path + "': plane " + in[p].name +
                         " lacks colours that the chain looks at together, and is computed on the CPU");
}

Recipe AlgorithmNode::recipe(size_t plane) const
{
    return {{{0, plane}}, asIs_[plane]};
}

Window AlgorithmNode::needs(size_t, const Window& window) const
{
    return work_.isFilter ? around(window) : window;
}

/// The library's bottom is at the lowest y, where our rows begin.
Window AlgorithmNode::around(const Window& window) const
{
    const RU_Border border = work_.algorithm->border();
    return {window.x - border.left, window.y - border.bottom, window.width + border.left + border.right,
            window.height + border.bottom + border.top};
}

// Tiles are never marked constant, not even flat ones: the library evaluates the chain itself for a constant
// tile and looks others up in its tables, which differ for infinities and for 16-bit white. The result must
// not depend on where the cuts between tiles fall.
Block AlgorithmNode::pixels(size_t plane, const Window& rect, Feed& feed) const
{
    const PlaneWork& work = planeWorks_[plane];
    if (!work.isCopy && work_.isFilter)
        return filter(work, plane, rect, feed);
    if (!work.isCopy && work.isOnGPU)
        return adjustOnGPU(work, plane, rect, feed);
    if (!work.isCopy)
        return adjust(work, plane, rect, feed);
    return feed.take({0, plane, rect, work.format, mappingOf(work.present), Outside::Edge});
}

Block AlgorithmNode::adjust(const PlaneWork& work, size_t plane, const Window& rect, Feed& feed) const
{
    Block block = feed.take({0, plane, rect, work.format, mappingOf(work.present), Outside::Edge});
    const LentTiles all(block, work.codes, work_.readsAll ? work.present : work.written);
    TIL_TileList out = all.list;
    for (size_t c = 0; c < 4; ++c)
        if (!work.written[c])
            out.tiles[c] = nullptr;
    feed.run([&](void* token, int thread) {
        return work_.algorithm->pixelAdjust(&out, &all.list, 0.0f, token, thread, nullptr);
    });
    return block;
}

/// Its outputs take the components one after the other: those that are not to be written go elsewhere.
Block AlgorithmNode::adjustOnGPU(const PlaneWork& work, size_t plane, const Window& rect, Feed& feed) const
{
    Block block = feed.take({0, plane, rect, work.format, mappingOf(work.present), Outside::Edge});
    Block unused;
    const auto last = std::find(work.written.rbegin(), work.written.rend(), true).base();
    if (std::find(work.written.begin(), last, false) != last)
        unused = feed.blank(rect, work.format, {true, false, false, false});
    {
        const LentTiles all(block, work.codes, work.present), spare(unused, work.codes);
        TIL_TileList out = all.list;
        for (size_t c = 0; c < 4; ++c)
            if (!work.written[c])
                out.tiles[c] = work.written.begin() + static_cast<std::ptrdiff_t>(c) < last
                                   ? spare.list.tiles[0]
                                   : nullptr;
        feed.run([&](void* token, int thread) {
            return work_.onGPU->pixelAdjust(&out, &all.list, 0.0f, token, thread, nullptr);
        });
    }
    if (!RElastGPUError().isEmpty())
        throw Error(Error::Kind::Device, "the GPU failed: " + firstLine(RElastGPUError().buffer()));
    feed.give(std::move(unused));
    return block;
}

Block AlgorithmNode::filter(const PlaneWork& work, size_t plane, const Window& rect, Feed& feed) const
{
    const Components copied = without(work.present, work.written);
    Block out = feed.blank(rect, work.format, work.written);
    Block rest;
    if (copied != Components{})
        rest = feed.load({0, plane, rect, work.format, mappingOf(copied), Outside::Edge});
    Block in = feed.take({0, plane, around(rect), work.format, mappingOf(work.written), Outside::Edge});
    {
        const LentRegion from(in, work.codes);
        const LentTiles to(out, work.codes);
        TIL_TileList list = to.list;
        feed.run([&](void* token, int thread) {
            return work_.algorithm->filter(&list, &from.region, 0.0f, token, thread, nullptr);
        });
    }
    feed.give(std::move(in));
    for (size_t c = 0; c < 4; ++c)
        if (copied[c])
            out.data[c] = std::move(rest.data[c]);
    return out;
}

AlgorithmNode::Work gradeWork(const Chain& chain, bool onGPU)
{
    AlgorithmNode::Work work;
    if (chain.isEmpty())
        return work;
    auto built = std::make_shared<Chain::Built>(chain.build());
    work.colourSpace = chain.colourSpace();
    work.written = built->components;
    work.readsAll = built->head->areAllComponentsNeeded();
    work.algorithm = std::make_unique<RU_PixelEngine>(built->head.get());
    if (onGPU)
        work.onGPU = std::make_unique<RU_GPUPixelEngine>(built->head.get());
    work.parts = std::move(built);
    return work;
}

} // namespace host
