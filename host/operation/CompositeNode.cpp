#include <host/operation/CompositeNode.h>

#include <host/file/Format.h>

#include <algorithm>
#include <cstring>

namespace host {

namespace {

/// Full inside of a window, 0 elsewhere.
template <class T>
void fillWindow(T* alpha, const Window& rect, const Window& window)
{
    constexpr T full = PXL_FormatOf<T>::white;
    const Window inside = intersection(rect, window);
    std::fill_n(alpha, rect.pixels(), T{0});
    for (int y = inside.y; y < inside.y + inside.height; ++y)
        std::fill_n(alpha + static_cast<int64_t>(y - rect.y) * rect.width + (inside.x - rect.x), inside.width,
                    full);
}

} // namespace

/// One side in a rectangle.
template <class T>
struct CompositeNode::Loaded
{
    Block values; ///< the wanted components, the own alpha among them
    Block other;  ///< the alpha where it is none of them
    T* value[4] = {};
    T* alpha = nullptr;

    void eachColour(void (*work)(float*, const float*, int64_t))
    {
        if constexpr (std::is_same_v<T, float>)
            for (size_t c = 0; c < 3 && alpha != nullptr; ++c)
                if (value[c] != nullptr)
                    work(value[c], alpha, values.count());
    }
};

Picture CompositeNode::plan(const std::vector<const Picture*>& inputs)
{
    const Pairing pair(*inputs[background], inputs[foreground], settings_, true);
    notes_ = pair.notes;
    planes_ = pair.names;
    Picture output = pair.first.picture.withFormats(pair.formats(settings_));
    for (size_t p = 0; p < pair.first.size(); ++p)
        if (pair.chosen[p]) {
            Window& window = output.parts[pair.first.part(p)].data;
            window = enclosing(window, pair.second.window(*pair.partners[p]));
        }
    for (size_t p = 0; p < pair.first.size(); ++p)
        works_.push_back(workOf(pair, p, output));
    for (size_t p = 0; p < pair.first.size(); ++p)
        if (works_[p].divides)
            output.parts[pair.first.part(p)].straight = true;
    return output;
}

CompositeNode::Side CompositeNode::sideOf(const Planes& planes, size_t input, size_t plane,
                                          const Window& output) const
{
    Side side;
    side.input = input;
    side.plane = plane;
    side.mapping = mappingOf(planes[plane].present());
    side.window = planes.window(plane);
    const std::optional<size_t> alpha = planes.picture.alphaOf(plane);
    side.other = alpha.value_or(plane);
    if (!alpha)
        side.alpha = intersection(side.window, output) == output ? Side::Alpha::Full : Side::Alpha::Window;
    else
        side.alpha = side.other == plane ? Side::Alpha::Own : Side::Alpha::Other;
    side.isStraight = type_.premultiply || (!settings_.asIs && planes.picture.isStraight(plane));
    return side;
}

CompositeNode::PlaneWork CompositeNode::workOf(const Pairing& pair, size_t p, const Picture& output)
{
    const Planes out(output);
    PlaneWork work;
    work.present = pair.first[p].present();
    work.format = widerFormat(pair.first[p].format, out[p].format);
    work.recipe = {{{background, p}},
                   !pair.chosen[p] && out[p].format == pair.first[p].format &&
                       out.window(p) == pair.first.window(p)};
    if (!pair.chosen[p])
        return work;
    work.isCopy = false;
    work.colour = pair.isColour(p);
    work.behind = sideOf(pair.first, background, p, out.window(p));
    work.front = sideOf(pair.second, foreground, *pair.partners[p], out.window(p));
    work.front.mapping = pair.mapping(p);
    work.recipe.uses.push_back({foreground, work.front.plane});
    for (const Side* side : {&work.behind, &work.front})
        if (side->alpha == Side::Alpha::Other)
            work.recipe.uses.push_back({side->input, side->other});
    const bool straight = !settings_.asIs && pair.first.picture.isStraight(p);
    work.divides =
        work.colour && (type_.unpremultiply || straight) && work.behind.alpha != Side::Alpha::Window;
    work.alphaFormat = out[work.behind.other].format;
    for (const auto& [side, path] :
         {std::pair(&work.front, &pair.second.picture.path), {&work.behind, &pair.first.picture.path}})
        if (side->isStraight && work.colour && !type_.premultiply)
            notes_.push_back("'" + *path + "': colours are multiplied by their alpha");
    const unsigned char stored = out[p].format;
    work.format = workFormat(pair, work, stored);
    if (work.format == PXL_FORMAT_float32 && stored == PXL_FORMAT_uint32)
        notes_.push_back("'" + output.path + "': plane " + pair.first[p].name +
                         " is composited in float, which keeps 24 of the 32 bits");
    return work;
}

unsigned char CompositeNode::workFormat(const Pairing& pair, const PlaneWork& work,
                                        unsigned char stored) const
{
    unsigned char format = widerFormat(work.format, stored);
    bool fills = false; // 65535 is not quite full for the 16-bit loops, absent is
    for (const auto& [side, planes] : {std::pair(&work.behind, &pair.first), {&work.front, &pair.second}}) {
        format = widerFormat(format, (*planes)[side->plane].format);
        format = widerFormat(format, (*planes)[side->other].format);
        fills = fills || side->alpha == Side::Alpha::Window;
    }
    const bool multiplies = work.behind.isStraight || work.front.isStraight || work.divides;
    if (format > PXL_FORMAT_uint16 || (format == PXL_FORMAT_uint16 && fills) || !work.colour || multiplies)
        return PXL_FORMAT_float32;
    return format;
}

Block CompositeNode::pixels(size_t plane, const Window& rect, Feed& feed) const
{
    const PlaneWork& work = works_[plane];
    if (work.isCopy)
        return feed.take({background, plane, rect, work.format, mappingOf(work.present), Outside::Zero});
    switch (work.format) {
    case PXL_FORMAT_uint8:
        return composite<unsigned char>(work, rect, feed);
    case PXL_FORMAT_uint16:
        return composite<unsigned short>(work, rect, feed);
    default:
        return composite<float>(work, rect, feed);
    }
}

/// Loads the wanted components; those that the plane lacks are 0.
template <class T>
CompositeNode::Loaded<T> CompositeNode::load(const Side& side, const Components& wanted, const Window& rect,
                                             Feed& feed) const
{
    constexpr unsigned char format = PXL_FormatOf<T>::code;
    const bool own = side.alpha == Side::Alpha::Own;
    Mapping mapping = side.mapping;
    for (size_t c = 0; c < 4; ++c)
        mapping[c] = wanted[c] || (own && c == 3) ? mapping[c] : -1;
    if (own)
        mapping[3] = 3;
    Loaded<T> result;
    result.values = feed.take({side.input, side.plane, rect, format, mapping, Outside::Zero});
    for (size_t c = 0; c < 4; ++c) {
        if (wanted[c] && !result.values.has(c)) {
            result.values.data[c] = std::move(feed.blank(rect, format, {true}).data[0]);
            std::memset(result.values.data[c].data(), 0, static_cast<size_t>(result.values.bytes()));
        }
        result.value[c] = result.values.template values<T>(c);
    }
    if (own)
        result.alpha = result.value[3];
    if (own || side.alpha == Side::Alpha::Full)
        return result;
    if (side.alpha == Side::Alpha::Other)
        result.other = feed.load({side.input, side.other, rect, format, {3, -1, -1, -1}, Outside::Zero});
    else
        result.other = feed.blank(rect, format, {true});
    result.alpha = result.other.template values<T>(0);
    if (side.alpha == Side::Alpha::Window)
        fillWindow(result.alpha, rect, side.window);
    return result;
}

template <class T>
Block CompositeNode::composite(const PlaneWork& work, const Window& rect, Feed& feed) const
{
    const RU_CompositeType type = type_.type;
    const bool ownAlpha = work.behind.alpha == Side::Alpha::Own;
    Loaded<T> d = load<T>(work.behind, work.present, rect, feed);
    Loaded<T> s = load<T>(work.front, work.present, rect, feed);
    if (work.behind.isStraight && work.colour)
        d.eachColour(multiplyByAlpha);
    if (work.front.isStraight && work.colour)
        s.eachColour(multiplyByAlpha);
    for (size_t c = 0; c < (ownAlpha ? 3 : 4); ++c) {
        if (d.value[c] == nullptr)
            continue;
        if constexpr (std::is_same_v<T, float>)
            if (!work.colour) {
                const float* const geometry[4] = {s.value[0], s.value[1], s.value[2],
                                                  ownAlpha ? nullptr : s.value[3]};
                RU_Composite::compositeGeo(type, rect.width, rect.height, d.value[c], d.alpha, s.value[c],
                                           s.alpha, geometry);
                continue;
            }
        RU_Composite::composite(type, rect.width, rect.height, d.value[c], d.alpha, s.value[c], s.alpha);
    }
    if (ownAlpha || (work.divides && work.behind.alpha == Side::Alpha::Other)) // the colours took the old one
        RU_Composite::compositeAlpha(type, rect.width, rect.height, d.alpha, s.alpha);
    if (work.divides) {
        if constexpr (std::is_same_v<T, float>)
            limitAlpha(d.alpha, d.values.count(), work.alphaFormat);
        d.eachColour(divideByAlpha);
    }
    feed.give(std::move(d.other));
    feed.give(std::move(s.values));
    feed.give(std::move(s.other));
    return std::move(d.values);
}

} // namespace host
