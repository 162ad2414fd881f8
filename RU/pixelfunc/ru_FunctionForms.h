#pragma once

#include <RU/kernel/ru_OneNaN.h>
#include <RU/pixelfunc/RU_PixelFunction.h>
#include <RU/pixelfunc/ru_Expressions.h>

/// An expression over a row in place.
template <class Expression>
void ru_runRow(const Expression& expression, float* values, int64_t count)
{
    const ru_RowKernel<Expression>& kernel = ru_expressionRows();
    kernel.run(expression, values, count);
}

/// The scalar and the row form of a function class, from its expression(component).
template <class Function>
struct ru_Forms
{
    static auto expression(const RU_PixelFunction& function, int component)
    {
        return static_cast<const Function&>(function).expression(component);
    }

    static float scalar(RU_PixelFunction* function, float value, int component)
    {
        return ru_oneNaN(expression(*function, component)(value));
    }

    static void row(RU_PixelFunction* function, float* values, int64_t count, int component)
    {
        ru_runRow(expression(*function, component), values, count);
    }
};

/// Defines the two getters of a function class.
#define RU_FUNCTION_FORMS(FUNCTION)                                                                          \
    RU_ScalarForm FUNCTION::getPixelFunction() const                                                         \
    {                                                                                                        \
        return ru_Forms<FUNCTION>::scalar;                                                                   \
    }                                                                                                        \
    RU_RowForm FUNCTION::getRowFunction() const                                                              \
    {                                                                                                        \
        return ru_Forms<FUNCTION>::row;                                                                      \
    }
