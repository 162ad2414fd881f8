#pragma once

#include <TIL/TIL_TileList.h>
#include <reference/Formats.h>
#include <reference/Functions.h>

#include <set>

/// Chains on the GPU beside the same on the processor.
namespace reference {

/// A tile of a format for each of the first components of a plane.
struct Tiles
{
    Tiles(unsigned char format, int columns, int rows, size_t components = 4);
    Tiles(const Tiles&) = delete;
    Tiles& operator=(const Tiles&) = delete;

    template <class T>
    T* data(size_t c)
    {
        T* pixels = nullptr;
        tiles[c].getImageData(pixels);
        return pixels;
    }

    TIL_Plane plane;
    TIL_TileList list;
    std::vector<TIL_Tile> tiles;
    size_t bytes; ///< of a tile
};

/// A function of allFunctions(), by its place there, and what it applies to.
struct Link
{
    size_t function;
    std::array<bool, 4> scope = {true, true, true, true};

    /// Without any component the shader applies to all.
    std::array<bool, 4> scopeOnGPU() const;
};

/// What floats and halves are compared on; of integers there are always codes of all kinds.
enum class Values { unit, wide, large, odd };

struct Comparison
{
    int64_t values = 0, compared = 0; ///< compared: those of which something is expected
    double worst = 0.0;               ///< difference of those, relative above 1; of integers in codes
    std::set<std::string> departures; ///< of the last function, by which others differ
    std::string failure;              ///< the first one too far apart

    /// All but the failure.
    void add(const Comparison& other);
};

/// A chain, to be run on both.
///
/// How far both may be apart is followed through the chain: what comes into a function as uncertain is tried at
/// the ends of its range, and what the function itself may differ by is added. Chains of functions that are exact have
/// to agree to the bit.
class ParityChain
{
public:
    explicit ParityChain(std::vector<Link> links);
    ParityChain(const ParityChain&) = delete;
    ParityChain& operator=(const ParityChain&) = delete;
    ~ParityChain();

    /// On the first components of a picture.
    Comparison compare(Format format, size_t components, Values values, uint64_t seed);
    std::string name() const;

private:
    RU_PixelFunction& at(size_t i) { return *functions_[links_[i].function].object; }
    template <class Engine>
    void run(Tiles& out, const Tiles& in, bool asGiven);

    std::vector<Link> links_;
    std::vector<Function> functions_;
};

/// The numbers of components that tell: all where a function looks at several, else 4 and a lower one.
std::vector<size_t> componentCounts(size_t function);

/// A function's name without what numbers its parameters.
std::string kindOf(const Function& function);

/// By how much the GPU may differ, relative above 1; 0: equal, where 0 equals -0, and NaN NaN.
double threshold(const Function& function);

/// The names in docs/numerics.md of what functions do differently on purpose.
std::set<std::string> departureNames();

/// Prints the table of all functions, and returns the exit code: 77 without OpenGL.
int printParity();

} // namespace reference
