#pragma once

#include <host/graph/Node.h>

#include <TIL/TIL_Region.h>
#include <TIL/TIL_TileList.h>

#include <optional>
#include <string>
#include <vector>

// What nodes that work on planes share.

namespace host {

/// What any operation on images may be told.
struct PlaneSettings
{
    std::optional<unsigned char> depth;       ///< storage format of the output; that of the inputs without
    std::optional<unsigned int> black, white; ///< integer codes of 0.0 and 1.0; the full range without
    std::vector<std::string> planes;          ///< to work on; empty: those with colour; "all": all
    bool widens = false; ///< stores in the wider of the inputs' formats and `depth`: it is converted later
    bool asIs = false;   ///< takes alpha as it stands, and converts nothing for it

    bool hasPoints() const { return black || white; }
};

/// A picture and its planes by number.
class Planes
{
public:
    Planes() = default;
    explicit Planes(const Picture& of) : picture(of), places_(of.places()) {}

    size_t size() const { return places_.size(); }
    const Plane& operator[](size_t p) const { return picture.plane(places_[p]); }
    const Image& image(size_t p) const { return picture.parts[places_[p].part]; }
    const Window& window(size_t p) const { return picture.window(places_[p]); }
    size_t part(size_t p) const { return places_[p].part; }
    std::string layer(size_t p) const { return image(p).layerOf((*this)[p]); }

    Picture picture;

private:
    std::vector<Picture::Place> places_;
};

/// For each plane whether the settings want it worked on.
std::vector<bool> choosePlanes(const Planes& planes, const PlaneSettings& settings);

/// Throws unless the black and white points suit a plane.
void checkPoints(const Plane& plane, const std::string& path, const PlaneSettings& settings);

/// How the library is to read the codes of a plane.
TIL_Plane codesOf(unsigned char format, const PlaneSettings& settings);

/// The format to store a plane in that has one of its own.
unsigned char storedFormat(unsigned char own, const PlaneSettings& settings);
std::vector<unsigned char> formatsOf(const Planes& planes, const PlaneSettings& settings);

/// A block as tiles of the library's, for as long as this object is there; components may be left out.
class LentTiles
{
public:
    LentTiles(Block& block, const TIL_Plane& codes, const Components& components = {true, true, true, true});
    ~LentTiles();
    LentTiles(const LentTiles&) = delete;
    LentTiles& operator=(const LentTiles&) = delete;

    TIL_TileList list;

private:
    Block& block_;
    TIL_Tile tiles_[4];
};

/// A block as a region of the library's.
class LentRegion
{
public:
    LentRegion(Block& block, const TIL_Plane& codes);
    ~LentRegion();
    LentRegion(const LentRegion&) = delete;
    LentRegion& operator=(const LentRegion&) = delete;

    TIL_Region region;

private:
    Block& block_;
};

/// Colours multiplied or divided by alpha; what has no alpha stays.
void multiplyByAlpha(float* values, const float* alpha, int64_t count);
void divideByAlpha(float* values, const float* alpha, int64_t count);

/// Alpha as a format stores it: integers hold 0 to 1. Colours are divided by what is stored.
void limitAlpha(float* alpha, int64_t count, unsigned char format);

} // namespace host
