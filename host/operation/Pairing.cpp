#include <host/operation/Pairing.h>

#include <host/file/Format.h>
#include <host/text/Error.h>
#include <host/text/Names.h>

#include <algorithm>

namespace host {

Pairing::Pairing(const Picture& a, const Picture* b, const PlaneSettings& settings, bool withAlphas)
    : first(a), hasSecond_(b != nullptr)
{
    if (hasSecond_)
        second = Planes(*b);
    for (size_t p = 0; p < first.size(); ++p)
        alphas_.push_back(first.picture.alphaOf(p));
    choose(settings, withAlphas);
    noteOthers(withAlphas);
}

/// Chooses the planes to work on, of those that both images have.
void Pairing::choose(const PlaneSettings& settings, bool withAlphas)
{
    chosen = choosePlanes(first, settings);
    const bool named = !settings.planes.empty() && settings.planes.front() != "all";
    std::vector<std::string> copied;
    for (size_t p = 0; p < first.size(); ++p)
        if (withAlphas && chosen[p] && first[p].colour && alphas_[p])
            chosen[*alphas_[p]] = true;
    for (size_t p = 0; p < first.size(); ++p) {
        partners.push_back(hasSecond_ ? partnerOf(p) : std::nullopt);
        if (chosen[p] && hasSecond_ && !partners[p]) {
            if (named)
                refuseName("'" + second.picture.path + "' has no plane", first[p].name,
                           second.picture.planeNames());
            chosen[p] = false;
            copied.push_back(first[p].name);
        }
        if (chosen[p] && partners[p])
            checkColours(p);
        if (chosen[p])
            names.push_back(first[p].name);
    }
    if (names.empty())
        refuse("'" + first.picture.path + "' and '" + second.picture.path +
               "' have no plane of the same name: " + joined(first.picture.planeNames()) + " and " +
               joined(second.picture.planeNames()));
    if (!copied.empty())
        notes.push_back("'" + first.picture.path + "': copied are planes that '" + second.picture.path +
                        "' does not have: " + joined(copied));
}

/// The plane of the second image that goes with one of the first.
std::optional<size_t> Pairing::partnerOf(size_t plane) const
{
    const Plane& wanted = first[plane];
    if (wanted.alpha && !wanted.colour)
        if (const auto colour = colourOf(plane)) // stored in another format
            return partnerOf(*colour);
    std::optional<size_t> sameLayer;
    for (size_t p = 0; p < second.size(); ++p) {
        if (second[p].colour != wanted.colour)
            continue;
        if (second[p].name == wanted.name)
            return p;
        if (wanted.colour && !sameLayer && second.layer(p) == first.layer(plane))
            sameLayer = p;
    }
    return sameLayer;
}

/// The colour that an alpha of the first image belongs to.
std::optional<size_t> Pairing::colourOf(size_t alpha) const
{
    for (size_t p = 0; p < first.size(); ++p)
        if (first[p].colour && alphas_[p] == alpha)
            return p;
    return {};
}

/// Throws when a plane with luminance alone were to take in colour.
void Pairing::checkColours(size_t plane) const
{
    const Plane& partner = second[*partners[plane]];
    if (first[plane].luminance && partner.colour && !partner.luminance)
        refuse("'" + first.picture.path + "': plane " + first[plane].name +
               " is luminance and cannot take in the colours of '" + second.picture.path + "'");
}

/// Notes the planes of the second image that go nowhere.
void Pairing::noteOthers(bool withAlphas)
{
    std::vector<bool> used(second.size());
    for (const std::optional<size_t>& partner : partners) {
        if (partner)
            used[*partner] = true;
        if (const auto alpha = partner && withAlphas ? second.picture.alphaOf(*partner) : std::nullopt)
            used[*alpha] = true;
    }
    std::vector<std::string> others;
    for (size_t p = 0; p < second.size(); ++p)
        if (!used[p])
            others.push_back(second[p].name);
    if (!others.empty())
        notes.push_back("'" + second.picture.path + "': left out are planes that '" + first.picture.path +
                        "' does not have: " + joined(others));
}

Mapping Pairing::mapping(size_t plane) const
{
    const Plane& partner = second[*partners[plane]];
    Mapping mapping = mappingOf(partner.present());
    if (partner.luminance && !first[plane].luminance)
        mapping[1] = mapping[2] = mapping[0];
    const Components wanted = first[plane].present();
    for (size_t c = 0; c < 4; ++c)
        mapping[c] = wanted[c] ? mapping[c] : -1;
    return mapping;
}

std::vector<unsigned char> Pairing::formats(const PlaneSettings& settings) const
{
    std::vector<unsigned char> formats;
    for (size_t p = 0; p < first.size(); ++p) {
        const bool pairs = chosen[p] && partners[p];
        const unsigned char own = first[p].format;
        formats.push_back(
            storedFormat(pairs ? widerFormat(own, second[*partners[p]].format) : own, settings));
    }
    return formats;
}

} // namespace host
