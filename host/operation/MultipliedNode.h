#pragma once

#include <host/operation/Planes.h>

#include <functional>

namespace host {

/// A node that mixes pixels of all planes of one input. Colours that are not multiplied by their alpha are
/// for the time: else what is transparent would shine through.
class MultipliedNode : public Node
{
public:
    Recipe recipe(size_t plane) const override { return works_[plane].recipe; }

protected:
    struct PlaneWork
    {
        Recipe recipe;
        Components present{};
        Window window;            ///< of the input
        unsigned char format = 0; ///< the wider of the input's and the output's
        bool multiplies = false;
        size_t input = 0, alpha = 0; ///< a plane
    };

    /// Prepares for all planes of an input and returns the picture with the formats of the output; windows
    /// are the caller's.
    Picture planPlanes(const Planes& in, size_t input, const PlaneSettings& settings);

    /// Loads a rectangle in float. Where colours are multiplied, their alpha is the fourth component.
    using Load = std::function<Block(const Feed::Wish& wish)>;
    Block loadMultiplied(size_t plane, const Window& rect, Outside outside, const Load& load) const;

    std::vector<PlaneWork> works_;
};

} // namespace host
