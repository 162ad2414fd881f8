#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Average;

/// The mean of the components that are there, alpha included, in all of them.
class RU_API RU_AverageFunc : public RU_PixelFunction
{
public:
    bool needAllComponents() const override { return true; }
    RU_VectorForm getVectorFunction() const override;
    RU_VectorRowForm getVectorRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class, class>
    friend struct ru_VectorForms;
    void fill(ru_Average& expression, unsigned present) const;
};
