#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Replace;

/// Replaces a key colour, and what is near it, by another colour and keeps the shading.
///
/// Near is measured in hue, saturation and value, as RU_HSVConvertFunc has them: with the key's hk, sk, vk
///
///     distance = sqrt((2 dh min(s, sk))^2 + (s - sk)^2 + (v - vk)^2)
///
/// where dh is the distance of the hues on the circle, at most 1/2: hue counts as much as the colours are
/// saturated. A pixel within `inner` is replaced wholly, one beyond `outer` not at all, and the weight falls
/// smoothly (3 t^2 - 2 t^3) in between. An outer tolerance below the inner one counts as equal to it.
///
/// What it is replaced by differs from the replacement colour as the pixel differs from the key: its hue by
/// the same angle, less so for keys with a saturation below 1/8, and its saturation (then at most 1) and
/// value by the same factor. Where that factor, replacement / key, is above 4, it is 4 and the rest is added,
/// so that dark and greyish keys do not blow up their neighbours.
///
/// Units: colours and tolerances as the pixels have them, in [0, 1] for display images.
/// NaN and infinite pixels stay as they are.
/// Components: nothing happens unless red, green and blue are all there; alpha stays.
class RU_API RU_ColorReplace : public RU_PixelFunction
{
public:
    /// `key` and `replacement`: red, green, blue.
    RU_ColorReplace(const float* key, const float* replacement, float inner, float outer);

    bool needAllComponents() const override { return true; }
    RU_VectorForm getVectorFunction() const override;
    RU_VectorRowForm getVectorRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class, class>
    friend struct ru_VectorForms;
    void fill(ru_Replace& expression, unsigned present) const;

    // Of hue, saturation, value.
    float key_[3];
    float inner_, outer_;
    float scale_[3], shift_[3]; ///< from a pixel, its hue as the distance from the key, to its replacement
};
