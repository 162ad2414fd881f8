#pragma once

#include <host/graph/Node.h>

#include <RU/generate/RU_Noise.h>

namespace host {

/// A picture of noise, of a size or with the windows of another picture.
class NoiseNode : public Node
{
public:
    struct Settings
    {
        int width = 1920, height = 1080;     ///< without an input
        std::optional<unsigned char> format; ///< that of the input, or half, without
        double time = 0.0;
    };

    NoiseNode(const RU_Noise& noise, const Settings& settings) : noise_(noise), settings_(settings) {}

    Picture plan(const std::vector<const Picture*>& inputs) override;
    Recipe recipe(size_t) const override { return {}; }
    Block pixels(size_t plane, const Window& rect, Feed& feed) const override;

private:
    mutable RU_Noise
        noise_; ///< the library calls algorithms that change nothing in themselves, but not const
    Settings settings_;
    unsigned char format_ = 0;
};

} // namespace host
