#include <host/file/Picture.h>

namespace host {

std::vector<Picture::Place> Picture::places() const
{
    std::vector<Place> all;
    for (size_t part = 0; part < parts.size(); ++part)
        for (size_t plane = 0; plane < parts[part].planes.size(); ++plane)
            all.push_back({part, plane});
    return all;
}

std::vector<std::string> Picture::planeNames() const
{
    std::vector<std::string> names;
    for (const Place& place : places())
        names.push_back(plane(place).name);
    return names;
}

std::optional<size_t> Picture::alphaOf(size_t plane) const
{
    const std::vector<Place> all = places();
    const Image& image = parts[all[plane].part];
    const Plane& wanted = this->plane(all[plane]);
    const Plane* const near = image.alphaOf(wanted);
    for (size_t p = 0; p < all.size(); ++p)
        if (near != nullptr ? &this->plane(all[p]) == near : !wanted.colour && this->plane(all[p]).alpha)
            return p;
    return {};
}

bool Picture::isStraight(size_t plane) const
{
    const Place place = places()[plane];
    return parts[place.part].straight && this->plane(place).colour && alphaOf(plane);
}

Picture Picture::withFormats(const std::vector<unsigned char>& formats) const
{
    Picture other{path, {}};
    auto next = formats.begin();
    for (const Image& part : parts) {
        const auto end = next + static_cast<std::ptrdiff_t>(part.planes.size());
        other.parts.push_back(part.withFormats({next, end}));
        next = end;
    }
    return other;
}

} // namespace host
