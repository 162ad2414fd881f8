#pragma once

#include <host/graph/Node.h>
#include <host/picture/PlatePicture.h>

#include <memory>
#include <string>

namespace host {

/// A test plate: colour bars, a zone plate up to the finest line, a lit sphere, patches, a ramp, exposure steps
/// of six stops either side of middle grey, and line pairs. Float and half hold linear light with values up to
/// 16; integers hold it with the sRGB curve, clamped.
class PlateNode : public Node
{
public:
    struct Settings
    {
        int width = 1920;
        int height = 1080;
        unsigned char format = PXL_FORMAT_half;
        bool alpha = false; ///< with an alpha channel that fades out towards the corners
    };

    explicit PlateNode(const Settings& settings);

    Picture plan(const std::vector<const Picture*>& inputs) override;
    Recipe recipe(size_t) const override { return {}; }
    Block pixels(size_t plane, const Window& rect, Feed& feed) const override;

private:
    Settings settings_;
    PlatePicture picture_;
};

} // namespace host
