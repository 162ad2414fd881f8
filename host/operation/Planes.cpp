#include <host/operation/Planes.h>

#include <host/file/Format.h>
#include <host/text/Error.h>
#include <host/text/Names.h>

#include <algorithm>

namespace host {

std::vector<bool> choosePlanes(const Planes& planes, const PlaneSettings& settings)
{
    const std::vector<std::string>& wanted = settings.planes;
    const std::string file = "'" + planes.picture.path + "'";
    const bool all = wanted == std::vector<std::string>{"all"};
    std::vector<bool> chosen;
    for (size_t p = 0; p < planes.size(); ++p)
        chosen.push_back(all || (wanted.empty() ? planes[p].colour
                                                : std::find(wanted.begin(), wanted.end(), planes[p].name) !=
                                                      wanted.end()));
    const std::vector<std::string> names = planes.picture.planeNames();
    for (const std::string& name : wanted)
        if (!all && std::find(names.begin(), names.end(), name) == names.end())
            refuseName(file + " has no plane", name, names);
    if (std::find(chosen.begin(), chosen.end(), true) == chosen.end())
        refuse(file + " has no plane with colour; choose from its planes with --planes: " + joined(names));
    return chosen;
}

void checkPoints(const Plane& plane, const std::string& path, const PlaneSettings& settings)
{
    if (!settings.hasPoints())
        return;
    const std::string format = formatName(plane.format);
    if (plane.format > PXL_FORMAT_uint32)
        refuse("'" + path + "': black and white points are codes of integer formats, and plane '" +
               plane.name + "' is " + format);
    if (settings.depth && *settings.depth != plane.format)
        refuse("black and white points are codes of one format; leave out the conversion from " + format +
               " to " + formatName(*settings.depth));
    const unsigned int full = PXLfullWhite(plane.format);
    const unsigned int black = settings.black.value_or(0);
    const unsigned int white = settings.white.value_or(full);
    if (white > full)
        refuse("white point " + std::to_string(white) + " is above " + std::to_string(full) +
               ", the last code of " + format);
    if (black >= white)
        refuse("black point " + std::to_string(black) + " is not below the white point " +
               std::to_string(white));
}

TIL_Plane codesOf(unsigned char format, const PlaneSettings& settings)
{
    TIL_Plane plane(format, 4);
    if (settings.hasPoints()) {
        plane.blackWhitePoints = true;
        plane.blackPoint = settings.black.value_or(0);
        plane.whitePoint = settings.white.value_or(PXLfullWhite(format));
    }
    return plane;
}

unsigned char storedFormat(unsigned char own, const PlaneSettings& settings)
{
    if (!settings.depth)
        return own;
    return settings.widens ? widerFormat(own, *settings.depth) : *settings.depth;
}

std::vector<unsigned char> formatsOf(const Planes& planes, const PlaneSettings& settings)
{
    std::vector<unsigned char> formats;
    for (size_t p = 0; p < planes.size(); ++p)
        formats.push_back(storedFormat(planes[p].format, settings));
    return formats;
}

LentTiles::LentTiles(Block& block, const TIL_Plane& codes, const Components& components)
    : list(codes, block.rect.x, block.rect.y, block.rect.x + block.rect.width - 1,
           block.rect.y + block.rect.height - 1),
      block_(block)
{
    for (size_t c = 0; c < 4; ++c) {
        if (!components[c] || !block.has(c))
            continue;
        tiles_[c] = TIL_Tile(std::move(block.data[c]));
        list.tiles[c] = &tiles_[c];
    }
}

LentTiles::~LentTiles()
{
    for (size_t c = 0; c < 4; ++c)
        if (list.tiles[c] != nullptr)
            block_.data[c] = tiles_[c].takeData();
}

LentRegion::LentRegion(Block& block, const TIL_Plane& codes) : block_(block)
{
    region.plane = &codes;
    region.x1 = block.rect.x;
    region.y1 = block.rect.y;
    region.x2 = block.rect.x + block.rect.width - 1;
    region.y2 = block.rect.y + block.rect.height - 1;
    for (int c = 0; c < 4; ++c)
        region.setImageData(c, std::move(block.data[static_cast<size_t>(c)]));
}

LentRegion::~LentRegion()
{
    for (int c = 0; c < 4; ++c)
        block_.data[static_cast<size_t>(c)] = region.takeImageData(c);
}

void multiplyByAlpha(float* values, const float* alpha, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
        values[i] *= alpha[i];
}

void divideByAlpha(float* values, const float* alpha, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
        values[i] = alpha[i] != 0.0f ? values[i] / alpha[i] : values[i];
}

void limitAlpha(float* alpha, int64_t count, unsigned char format)
{
    if (!isFloat(format))
        for (int64_t i = 0; i < count; ++i)
            alpha[i] = alpha[i] > 0.0f ? std::min(alpha[i], 1.0f) : 0.0f;
}

} // namespace host
