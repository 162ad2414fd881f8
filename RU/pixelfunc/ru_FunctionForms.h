#pragma once

#include <RU/kernel/ru_OneNaN.h>
#include <RU/pixelfunc/ru_RowSteps.h>

#include <concepts>

// What takes an expression over a row.

template <class Expression>
const Expression& ru_rowOf(const Expression& expression)
{
    return expression;
}
inline ru_Lines ru_rowOf(const ru_Line& line)
{
    return {&line, 1};
}
inline ru_Lines ru_rowOf(const ru_Scale& scale)
{
    return {scale.lines, 2};
}
inline ru_LinesAfterGamma ru_rowOf(const ru_Gamma& gamma)
{
    return {gamma, {}};
}
inline ru_LinesAfterPower ru_rowOf(const ru_Power& power)
{
    return {power, {}};
}

template <class Kernels, class Expression>
concept ru_RunsRow = std::derived_from<Kernels, ru_RowKernel<Expression>>;

/// An expression over a row, by the kernels of an instruction set.
template <class Expression>
void ru_runRow(const Expression& expression, const float* in, float* out, int64_t count,
               PXL_InstructionSet set = PXLinstructionSet())
{
    const auto& row = ru_rowOf(expression);
    using Row = std::remove_cvref_t<decltype(row)>;
    if constexpr (ru_RunsRow<ru_LineKernels, Row>)
        static_cast<const ru_RowKernel<Row>&>(ru_lineRows(set)).run(row, in, out, count);
    else
        static_cast<const ru_RowKernel<Row>&>(ru_expressionRows(set)).run(row, in, out, count);
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

    static void row(RU_PixelFunction* function, const float* in, float* out, int64_t count, int component)
    {
        ru_runRow(expression(*function, component), in, out, count);
    }

    static RU_RowForm rowForm()
    {
        using Expression = decltype(expression(std::declval<const RU_PixelFunction&>(), 0));
        if constexpr (requires(ru_RowSteps & steps, Expression e) { steps.add(e); })
            return {row, [](const RU_PixelFunction& function, int component, ru_RowSteps& steps) {
                        steps.add(expression(function, component));
                    }};
        else
            return {row};
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
        return ru_Forms<FUNCTION>::rowForm();                                                                \
    }
