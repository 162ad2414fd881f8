#include <host/operation/BlendNode.h>

#include <host/file/Format.h>
#include <host/text/Error.h>
#include <host/text/Names.h>

#include <RU/composite/RU_ChromaAdjust.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <span>

namespace host {

namespace {

void checkFinite(const char* what, std::span<const float> numbers)
{
    for (const float number : numbers)
        if (!std::isfinite(number))
            refuse(std::string(what) + ": " + std::to_string(number) + " is not finite");
}

size_t mainPlane(const Planes& planes)
{
    for (bool Plane::*const what : {&Plane::colour, &Plane::alpha})
        for (size_t p = 0; p < planes.size(); ++p)
            if (planes[p].*what)
                return p;
    return 0;
}

} // namespace

Matte::Matte(const Picture& picture, std::optional<int> wanted, bool one)
{
    const Planes planes(picture);
    plane = mainPlane(planes);
    const Plane& main = planes[plane];
    mapping = mappingOf(main.present());
    if (!one && !wanted)
        return;
    const std::optional<size_t> alpha = picture.alphaOf(plane);
    if (alpha && wanted.value_or(3) == 3) {
        plane = *alpha;
        mapping = {3, -1, -1, -1};
        return;
    }
    for (int c = 0; c < 4; ++c) {
        const int source = main.luminance && c < 3 ? 0 : c;
        if (!main.present()[static_cast<size_t>(source)] || wanted.value_or(c) != c)
            continue;
        mapping = {source, -1, -1, -1};
        return;
    }
    refuse("'" + picture.path + "': the matte has no component " +
           componentLetters[static_cast<size_t>(*wanted)] + "; its channels are " +
           joined(main.channelNames(planes.image(plane).channels)));
}

BlendNode::BlendNode(const Settings& settings, const PlaneSettings& planes)
    : settings_(settings), planeSettings_(planes), blend_(std::make_unique<RU_Blend>()),
      matteCodes_(PXL_FORMAT_float32, 4)
{
    checkFinite("mix", {&settings_.mix, 1});
    blend_->blendFactor = settings_.mix;
    blend_->swapMaskedInputs = settings_.swap;
    blend_->useBlendFactor = !settings_.weights;
    if (!settings_.weights)
        return;
    checkFinite("weights", *settings_.weights);
    blend_->firstWeight = settings_.weights->at(0);
    blend_->secondWeight = settings_.weights->at(1);
}

Picture BlendNode::plan(const std::vector<const Picture*>& inputs)
{
    const Pairing pair(*inputs.front(), settings_.hasSecond ? inputs[1] : nullptr, planeSettings_, false);
    if (settings_.hasMatte)
        matte_.emplace(*inputs[matteInput()], settings_.matteComponent, false);
    notes_ = pair.notes;
    planes_ = pair.names;
    Picture output = pair.first.picture.withFormats(pair.formats(planeSettings_));
    const Planes out(output);
    for (size_t p = 0; p < out.size(); ++p)
        works_.push_back(workOf(pair, p, out[p].format));
    return output;
}

BlendNode::PlaneWork BlendNode::workOf(const Pairing& pair, size_t p, unsigned char stored)
{
    const Plane& plane = pair.first[p];
    const std::string& path = pair.first.picture.path;
    PlaneWork work;
    work.present = plane.present();
    work.recipe = {{{0, p}}, !pair.chosen[p] && stored == plane.format};
    unsigned char format = widerFormat(plane.format, stored);
    work.codes = codesOf(format, {});
    if (!pair.chosen[p])
        return work;
    work.isCopy = false;
    checkPoints(plane, path, planeSettings_);
    if (const std::optional<size_t> partner = pair.partners[p]) {
        const Picture& second = pair.second.picture;
        const unsigned char other = pair.second[*partner].format;
        if (planeSettings_.hasPoints() && other != plane.format)
            refuse("black and white points are codes of one format, and plane '" + plane.name + "' is " +
                   formatName(plane.format) + " in '" + path + "' and " + formatName(other) + " in '" +
                   second.path + "'");
        format = widerFormat(format, other);
        work.mapping = pair.mapping(p);
        work.recipe.uses.push_back({1, *partner});
        const std::optional<size_t> alpha = second.alphaOf(*partner);
        const bool straight = pair.first.picture.isStraight(p), otherStraight = second.isStraight(*partner);
        if (straight != otherStraight && alpha && pair.first.picture.alphaOf(p) && plane.colour &&
            !planeSettings_.asIs) {
            work.adapt = straight ? divideByAlpha : multiplyByAlpha;
            work.alpha = *alpha;
            work.recipe.uses.push_back({1, *alpha});
            notes_.push_back("'" + second.path + "': colours are " + (straight ? "divided" : "multiplied") +
                             " by their alpha, to go with '" + path + "'");
        }
    }
    work.codes = codesOf(format, planeSettings_);
    if (matte_)
        work.recipe.uses.push_back({matteInput(), matte_->plane});
    return work;
}

/// The second picture's part, in the codes of the blend.
Block BlendNode::second(const PlaneWork& work, const Window& rect, Feed& feed) const
{
    const size_t plane = work.recipe.uses[1].plane;
    if (work.adapt == nullptr)
        return feed.take({1, plane, rect, work.codes.formatCode, work.mapping, Outside::Zero});
    Block colours = feed.load({1, plane, rect, PXL_FORMAT_float32, work.mapping, Outside::Zero});
    Block alpha = feed.load({1, work.alpha, rect, PXL_FORMAT_float32, {3, -1, -1, -1}, Outside::Zero});
    for (size_t c = 0; c < 3; ++c)
        if (colours.has(c))
            work.adapt(colours.values<float>(c), alpha.values<float>(0), colours.count());
    feed.give(std::move(alpha));
    return feed.converted(std::move(colours), work.codes.formatCode);
}

Block BlendNode::pixels(size_t plane, const Window& rect, Feed& feed) const
{
    const PlaneWork& work = works_[plane];
    const unsigned char format = work.codes.formatCode;
    Block first = feed.take({0, plane, rect, format, mappingOf(work.present), Outside::Zero});
    if (work.isCopy)
        return first;
    Block other, matte;
    if (settings_.hasSecond)
        other = second(work, rect, feed);
    if (matte_)
        matte = feed.load(
            {matteInput(), matte_->plane, rect, PXL_FORMAT_float32, matte_->mapping, Outside::Zero});
    {
        LentTiles tiles(first, work.codes);
        const LentRegion otherRegion(other, work.codes), matteRegion(matte, matteCodes_);
        const TIL_Region* const in = settings_.hasSecond ? &otherRegion.region : nullptr;
        const TIL_Region* const mask = matte_ ? &matteRegion.region : nullptr;
        feed.run([&](void* token, int thread) {
            return settings_.weights ? blend_->filter(&tiles.list, in, 0.0f, token, thread, nullptr)
                                     : blend_->binary(&tiles.list, in, mask, 0.0f, token, thread, nullptr);
        });
    }
    feed.give(std::move(other));
    feed.give(std::move(matte));
    return first;
}

Picture ChromaNode::plan(const std::vector<const Picture*>& inputs)
{
    checkFinite("backing", backing_);
    const Planes in(*inputs[0]);
    const std::vector<bool> chosen = choosePlanes(in, settings_);
    matte_.emplace(*inputs[1], matteComponent_, true);
    const std::vector<unsigned char> formats = formatsOf(in, settings_);
    for (size_t p = 0; p < in.size(); ++p) {
        PlaneWork& work = works_.emplace_back();
        work.present = in[p].present();
        work.recipe = {{{0, p}}, !chosen[p] && formats[p] == in[p].format};
        const unsigned char format = widerFormat(in[p].format, formats[p]);
        work.codes = codesOf(format, chosen[p] ? settings_ : PlaneSettings());
        if (!chosen[p])
            continue;
        work.isCopy = false;
        work.recipe.uses.push_back({1, matte_->plane});
        checkPoints(in[p], in.picture.path, settings_);
        if (!in[p].colour || in[p].luminance)
            refuse("'" + in.picture.path + "': plane " + in[p].name +
                   " has no red, green and blue to take a colour out of");
        planes_.push_back(in[p].name);
    }
    return in.picture.withFormats(formats);
}

Block ChromaNode::pixels(size_t plane, const Window& rect, Feed& feed) const
{
    const PlaneWork& work = works_[plane];
    Block block = feed.take({0, plane, rect, work.codes.formatCode, mappingOf(work.present), Outside::Zero});
    if (work.isCopy)
        return block;
    Block matte = feed.load({1, matte_->plane, rect, PXL_FORMAT_float32, matte_->mapping, Outside::Zero});
    {
        RU_ChromaAdjust adjust; // one for each call, for it holds the matte
        adjust.matte = matte.values<float>(0);
        adjust.backingRed = backing_[0];
        adjust.backingGreen = backing_[1];
        adjust.backingBlue = backing_[2];
        LentTiles tiles(block, work.codes);
        feed.run([&](void* token, int thread) {
            return adjust.pixelAdjust(&tiles.list, &tiles.list, 0.0f, token, thread, nullptr);
        });
    }
    feed.give(std::move(matte));
    return block;
}

} // namespace host
