#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_OneComponent;

/// One component's value in all components, alpha included; 0 where it is absent.
class RU_API RU_ComponentFunc : public RU_PixelFunction
{
public:
    /// 0 to 3: red, green, blue, alpha.
    explicit RU_ComponentFunc(int component) : component_(component) {}

    bool needAllComponents() const override { return true; }
    RU_VectorForm getVectorFunction() const override;
    RU_VectorRowForm getVectorRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class, class>
    friend struct ru_VectorForms;
    void fill(ru_OneComponent& expression, unsigned present) const;

    int component_;
};
