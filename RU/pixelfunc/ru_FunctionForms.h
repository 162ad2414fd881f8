#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>
#include <RU/pixelfunc/ru_Expressions.h>

/// The scalar and the row form of a function class, from its expression(component).
template <class Function>
float ru_scalarForm(RU_PixelFunction* function, float value, int component)
{
    return static_cast<const Function*>(function)->expression(component)(value);
}

template <class Function>
void ru_rowForm(RU_PixelFunction* function, float* values, int64_t count, int component)
{
    const auto expression = static_cast<const Function*>(function)->expression(component);
    const ru_RowKernel<std::remove_const_t<decltype(expression)>>& kernel = ru_expressionRows();
    kernel.run(expression, values, count);
}

/// Defines the two getters of a function class.
#define RU_FUNCTION_FORMS(FUNCTION)                                                                          \
    RU_ScalarForm FUNCTION::getPixelFunction() const                                                         \
    {                                                                                                        \
        return ru_scalarForm<FUNCTION>;                                                                      \
    }                                                                                                        \
    RU_RowForm FUNCTION::getRowFunction() const                                                              \
    {                                                                                                        \
        return ru_rowForm<FUNCTION>;                                                                         \
    }
