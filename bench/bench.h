#pragma once

#include <PXL/PXL_Format.h>
#include <RU/framework/RU_Algorithm.h>
#include <RU/pixelfunc/RU_ColorCurve.h>
#include <TIL/TIL_Region.h>
#include <TIL/TIL_Tile.h>
#include <TIL/TIL_TileList.h>

#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace bench {

struct Size
{
    const char* name;
    int width, height;
};
constexpr Size hd = {"1080p", 1920, 1080};
constexpr Size uhd = {"4K", 3840, 2160};
constexpr Size small = {"256", 256, 256}; ///< stays in the cache

/// The pixels that whoever works piece by piece takes at once: those of a tile of the host.
constexpr int pieceLength = 200 * 200;

/// What all contenders of a row work on: a picture in tiles and once more in a region with a border of one
/// pixel, and tiles for the result. Peers take the bare memory, in which the components of a pixel lie side
/// by side; of a single component it is the tiles' own. Four components are premultiplied RGBA.
class Planes
{
public:
    /// What operations of two pictures take beside the output, which they overwrite. No value is near 0, so
    /// that none becomes subnormal however often it is blended in.
    struct Second
    {
        TIL_Region region; ///< without a border
        TIL_Region mask;   ///< a float for each pixel, from 0 to 1 in steps of 1 / 255
        TIL_Buffer memory; ///< what `pixels` points at when there are several components
        void* pixels;      ///< bare
    };

    Planes(PXL_Format format, unsigned char components, const Size& size);
    Planes(const Planes&) = delete;
    Planes& operator=(const Planes&) = delete;

    int components() const { return plane.componentCount; }
    int64_t values() const { return int64_t(components()) * out.itemCount; }
    size_t bytes() const { return static_cast<size_t>(values() * PXLbytesPerElement(plane.formatCode)); }
    /// The values in the output, pixel by pixel, white as 1.
    std::vector<double> tileResult() const;
    std::vector<double> bareResult() const;
    Second& second(); ///< made at the first call
    /// The input with a border, in which its edges are repeated.
    std::shared_ptr<TIL_Region> around(const RU_Border& border) const;
    /// Makes the output what the input is.
    void refill();

    TIL_Plane plane;
    TIL_TileList in, out;
    TIL_Region region;
    void* input;
    void* output;

private:
    std::vector<TIL_Tile> tiles_;
    TIL_Buffer pixels_[2];
    std::unique_ptr<Second> second_;
};

/// Work to be timed: from the input of some planes to their output, or from the output, which holds the input
/// at first, and the second picture to the output.
using Work = std::function<void()>;
/// Makes the work and, once and untimed, all that it needs.
using Maker = std::function<Work(Planes&)>;

// What rows are held against: loops that move the bytes and compute next to nothing.
Work copy(Planes& planes);          ///< from the input to the output, with memcpy
Work movePair(Planes& planes);      ///< the second picture into the output
Work moveWithAlpha(Planes& planes); ///< the same, with its alpha beside each of its colours
Work moveWithMask(Planes& planes);  ///< the same, with the mask beside each component

/// Lines of the table: what the library does to planes of a format.
struct Row
{
    const char* name;
    PXL_Format format;
    Maker ours;
    std::vector<Size> sizes = {hd};
    unsigned char components = 1;
    Maker plain = copy;
    /// What would be right, from black on; then the errors of all are told.
    std::vector<double> (*exact)(const TIL_TileList& image) = nullptr;
    bool onTheClock = false; ///< timed by the clock, not by what all threads take together
};
extern const std::vector<Row> rows;

/// How far a peer gives what we give.
enum class Agreement {
    all,
    allButAlpha, ///< it takes the values for RGBA and leaves every fourth as it is
    none         ///< the same kind of work, to another end
};

/// Somebody else's way to do what the row of that name does.
struct Peer
{
    const char* row;
    const char* name;
    Maker make;
    Agreement agreement = Agreement::all;
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
constexpr float hueShift = 30.0f; // degrees
constexpr float satScale = 1.2f;
constexpr float valScale = 0.9f;
constexpr float levelsBlack = 0.05f;
constexpr float levelsWhite = 0.9f;
constexpr float shiftX = 0.25f; // pixels
constexpr float shiftY = 0.5f;
constexpr float mixWeight = 0.8f; // of the first picture; 1 / 255 goes into it, as some take weights
constexpr int noiseCell = 32;     // pixels
constexpr float curveKeys[5][2] = {{0.0f, 0.02f}, {0.2f, 0.12f}, {0.5f, 0.55f}, {0.8f, 0.9f}, {1.2f, 1.1f}};

/// A formula that a row computes, on every value by itself.
using Formula = double (*)(double value);

inline double gammaAdd(double value)
{
    return std::pow(value, 1.0 / gammaValue) + addValue;
}

/// The line of levels with a gamma: levelsBlack to 0, levelsWhite to 1.
struct LevelsLine
{
    double factor, addend;
};
inline LevelsLine levelsLine()
{
    const double black = std::pow(levelsBlack, 1.0 / gammaValue);
    const double factor = 1.0 / (std::pow(levelsWhite, 1.0 / gammaValue) - black);
    return {factor, -black * factor};
}

inline double levelsValue(double value)
{
    static const LevelsLine line = levelsLine();
    return std::pow(value, 1.0 / gammaValue) * line.factor + line.addend;
}

inline RU_ColorCurve fiveKeyCurve()
{
    RU_ColorCurve curve;
    for (const auto& [x, y] : curveKeys)
        curve.addPoint(x, y, 0.0f);
    curve.create(false);
    return curve;
}

inline double curveValue(double value)
{
    static const RU_ColorCurve curve = fiveKeyCurve();
    return curve.evaluate(static_cast<float>(value));
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
