#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_WeightedSum;

/// The luminance of television's primaries in red, green and blue: 0.299 r + 0.587 g + 0.114 b. Nothing
/// unless all three are there; alpha stays. The shader weighs blue with 0.144, on purpose.
class RU_API RU_NTSCLuminanceFunc : public RU_PixelFunction
{
public:
    bool needAllComponents() const override { return true; }
    RU_VectorForm getVectorFunction() const override;
    RU_VectorRowForm getVectorRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class, class>
    friend struct ru_VectorForms;
    void fill(ru_WeightedSum& expression, unsigned present) const;
};
