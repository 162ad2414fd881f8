#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>
#include <UT/UT_Matrix4.h>

struct ru_Transform;

/// The point (red, green, blue, 1), as a row, times a matrix; absent components count as 0. Alpha stays.
class RU_API RU_VectorFunc : public RU_PixelFunction
{
public:
    explicit RU_VectorFunc(const UT_Matrix4& xform) : xform_(xform) {}

    bool needAllComponents() const override { return true; }
    RU_VectorForm getVectorFunction() const override;
    RU_VectorRowForm getVectorRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class, class>
    friend struct ru_VectorForms;
    void fill(ru_Transform& expression, unsigned present) const;

    UT_Matrix4 xform_;
};
