#pragma once

#include <PXL/PXL_Format.h>
#include <TIL/TIL_Region.h>
#include <TIL/TIL_Tile.h>
#include <TIL/TIL_TileList.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace bench {

/// What all contenders of a row work on: one component of a picture, in a tile and once more in a region with
/// a border of one pixel, and a tile for the result. Peers take the bare memory.
class Planes
{
public:
    Planes(PXL_Format format, int width, int height);
    Planes(const Planes&) = delete;
    Planes& operator=(const Planes&) = delete;

    int64_t components() const { return out.itemCount; }
    size_t bytes() const { return static_cast<size_t>(components() * PXLbytesPerElement(plane.formatCode)); }
    /// The values in the output, white as 1.
    std::vector<double> result() const;

    TIL_Plane plane;
    TIL_TileList in, out;
    TIL_Region region;
    void* input;
    void* output;

private:
    TIL_Tile tiles_[2];
};

/// Work to be timed: from the input of some planes to their output.
using Work = std::function<void()>;
/// Makes the work and, once and untimed, all that it needs.
using Maker = std::function<Work(Planes&)>;

/// A line of the table: what the library does to planes of a format.
struct Row
{
    const char* name;
    PXL_Format format;
    Maker ours;
    bool alsoSmall = false; ///< also on a 256 x 256 tile, which stays in the cache
};
extern const std::vector<Row> rows;

/// Somebody else's way to do what the row of that name does.
struct Peer
{
    const char* row;
    const char* name;
    Maker make;
    bool skipsAlpha = false; ///< takes the components for RGBA and leaves every fourth as it is
};

/// All peers; each source file adds its own: const bool added = addPeers({...});
std::vector<Peer>& peers();
bool addPeers(const std::vector<Peer>& list);

// The parameters of the operations.
constexpr float gammaValue = 2.2f;
constexpr float addValue = 0.1f;
constexpr float multValue = 0.8f;
constexpr float sinScale = 12.0f; // several periods
constexpr float sinShift = 0.5f;

inline double gammaAdd(double value)
{
    return std::pow(value, 1.0 / gammaValue) + addValue;
}

/// The code of a value over the full range of T.
template <class T>
T encode(double value)
{
    const double white = PXL_FormatOf<T>::white;
    if constexpr (std::is_integral_v<T>)
        return static_cast<T>(std::fmin(std::fmax(value * white + 0.5, 0.0), white));
    else
        return T(static_cast<float>(value));
}

} // namespace bench
