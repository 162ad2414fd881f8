#pragma once

#include <host/operation/MultipliedNode.h>

namespace host {

/// Moves a picture: by whole pixels its data window, by the fraction its pixels, with RU_SubPixel.
class ShiftNode : public MultipliedNode
{
public:
    /// Pixels to the right and down.
    ShiftNode(double x, double y, const PlaneSettings& settings);

    Picture plan(const std::vector<const Picture*>& inputs) override;
    Window needs(size_t input, const Window& window) const override;
    Block pixels(size_t plane, const Window& rect, Feed& feed) const override;

private:
    PlaneSettings settings_;
    int x_, y_;                   ///< where the first of the 2 x 2 pixels lies that a pixel is made of
    float fractionX_, fractionY_; ///< of the others
};

} // namespace host
