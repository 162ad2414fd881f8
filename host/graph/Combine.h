#pragma once

#include <host/graph/Cook.h>

#include <RU/composite/RU_Composite.h>

#include <array>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace host {

/// A compositing operation as people name it.
struct CompositeName
{
    RU_CompositeType type;
    const char* name;
    const char* formula;
};
const std::vector<CompositeName>& compositeNames();

/// The operation of a name or a number; throws a usage error for anything else.
RU_CompositeType compositeOfName(const std::string& text);

/// The files that are combined. Pixels lie where their data windows place them; outside of its data window an
/// image is 0, and inside of it one without an alpha channel is full.
struct CombineInputs
{
    std::string first;                      ///< composite: the background; its header is the output's
    std::optional<std::string> second = {}; ///< composite: the foreground
    std::optional<std::string> matte = {};
    std::optional<int> matteComponent = {}; ///< the one of 0 to 3 to use for all components
};

/// What is done to two images and a matte. All numbers are finite.
struct Combination
{
    /// Alpha is taken as the files have it, unless asked for: `premultiply` multiplies the colours of both
    /// images by their alpha first, `unpremultiply` divides those of the result by its alpha.
    struct CompositeSettings
    {
        RU_CompositeType type = RU_COMP_OVER;
        bool premultiply = false;
        bool unpremultiply = false;
    };
    /// With weights both images are multiplied by theirs and added, without a matte; else `mix` is the share
    /// of the second one, times the matte.
    struct BlendSettings
    {
        float mix = 1.0f;
        std::optional<std::array<float, 2>> weights = {};
        bool swap = false;
    };
    /// Takes the backing colour out of the first image, where the matte is below 1.
    struct ChromaSettings
    {
        std::array<float, 3> backing{};
    };

    std::variant<CompositeSettings, BlendSettings, ChromaSettings> settings;
};

/// Combines image files into another one, as cook() works on a single one.
///
/// Header, channels and display window are those of the first image, and so is the data window; that of a
/// composite covers both images, or is the display window where the file format of the output has no other.
/// Planes go together by name, colours by layer; those that only one image has are copied, or left out with a
/// note. The luminance of a second image stands for red, green and blue. Components that it lacks are faded by
/// a blend and 0 to a composite.
///
/// The output is stored, and a blend computed, in the wider of both formats. A composite is computed in uint8
/// or uint16 where all of it is, else, and to (un)premultiply, in float. It selects planes without colour by
/// their geometry. Black and white points are for blends and chroma.
CookReport combine(const CombineInputs& inputs, const std::string& output, const Combination& combination,
                   const CookSettings& settings);

} // namespace host
