#pragma once

#include <host/file/Image.h>

#include <optional>
#include <string>
#include <vector>

namespace host {

/// All images that belong together: the parts of a file of several, else just one. Each part has windows,
/// channels and a header of its own; a plane is known by its place among those of all parts.
struct Picture
{
    std::string path;
    std::vector<Image> parts; ///< one at the least

    const Image& first() const { return parts.front(); }

    struct Place
    {
        size_t part, plane;
    };
    /// The planes of all parts, in order.
    std::vector<Place> places() const;

    const Plane& plane(const Place& place) const { return parts[place.part].planes[place.plane]; }
    const Window& window(const Place& place) const { return parts[place.part].data; }

    /// The place of the plane that has the alpha of another one, as Image::alphaOf(); for planes without colour
    /// also in another part.
    std::optional<size_t> alphaOf(size_t plane) const;

    /// Whether a plane's colours are not multiplied by their alpha.
    bool isStraight(size_t plane) const;

    std::vector<std::string> planeNames() const;

    /// The same picture with the planes in formats of their own.
    Picture withFormats(const std::vector<unsigned char>& formats) const;
};

} // namespace host
