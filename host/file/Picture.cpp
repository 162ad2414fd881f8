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

} // namespace host
