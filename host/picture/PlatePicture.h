#pragma once

namespace host {

struct Colour
{
    float r = 0.0f, g = 0.0f, b = 0.0f;
};

/// The test plate as a function of the pixel, in linear light.
class PlatePicture
{
public:
    PlatePicture(int width, int height);

    Colour colour(int x, int y) const;
    float alpha(int x, int y) const;

private:
    Colour backdrop(float u, float v) const;
    Colour bars(float u, float v) const;
    Colour patches(float u, float v, const Colour& behind) const;
    Colour sphere(float dx, float dy, const Colour& behind) const;
    Colour zonePlate(float dx, float dy, const Colour& behind) const;
    Colour lines(int x, int y) const;

    float width_, height_;
    float radius_; ///< of the zone plate and the sphere, in pixels
};

} // namespace host
