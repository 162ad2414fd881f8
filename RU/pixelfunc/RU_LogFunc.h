#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

struct ru_Log;

/// The logarithm of v to a base: ln(v) * k with k = 1 / ln(|base|), for v above 0. Other values become the
/// replacement if there is one, and stay otherwise. Bases 0 and 1 give an infinite k; nothing guards against
/// it.
class RU_API RU_LogFunc : public RU_PixelFunction
{
public:
    RU_LogFunc(float base, bool useReplacement, float replacement);

    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    template <class>
    friend struct ru_Forms;
    ru_Log expression(int component) const; ///< the arithmetic for one component

    float factor_; ///< k
    bool useReplacement_;
    float replacement_;
};
