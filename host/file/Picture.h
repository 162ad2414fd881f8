#pragma once

#include <host/file/Image.h>

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

    std::vector<std::string> planeNames() const;
};

} // namespace host
