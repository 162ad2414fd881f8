#pragma once

#include <host/operation/Planes.h>

#include <optional>

namespace host {

/// Two pictures whose planes go together by name, colours by layer. Planes of the first that are not worked on
/// are copied.
class Pairing
{
public:
    /// Without a second picture all chosen planes are worked on alone. `withAlphas`: an alpha that is stored
    /// apart from its colours goes with them.
    Pairing(const Picture& first, const Picture* second, const PlaneSettings& settings, bool withAlphas);

    Planes first, second;
    std::vector<bool> chosen;                    ///< planes of the first to work on
    std::vector<std::optional<size_t>> partners; ///< by plane of the first, that of the second
    std::vector<std::string> names;              ///< of the chosen planes
    std::vector<std::string> notes;

    /// Whether a plane of the first holds colours, or an alpha that belongs to some.
    bool isColour(size_t plane) const { return first[plane].colour || colourOf(plane); }

    /// How the components of the partner stand for those of a plane: luminance is red, green and blue.
    Mapping mapping(size_t plane) const;

    /// The formats of the output.
    std::vector<unsigned char> formats(const PlaneSettings& settings) const;

private:
    void choose(const PlaneSettings& settings, bool withAlphas);
    std::optional<size_t> partnerOf(size_t plane) const;
    std::optional<size_t> colourOf(size_t alpha) const;
    void checkColours(size_t plane) const;
    void noteOthers(bool withAlphas);

    bool hasSecond_;
    std::vector<std::optional<size_t>> alphas_; ///< by plane of the first, its alpha
};

} // namespace host
