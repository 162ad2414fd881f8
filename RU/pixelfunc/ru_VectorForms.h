#pragma once

#include <RU/pixelfunc/ru_ChainRows.h>
#include <RU/pixelfunc/ru_VectorExpressions.h>

#include <algorithm>
#include <type_traits>

struct ru_VectorFormPair
{
    RU_VectorForm pixel;
    RU_VectorRowForm rows;
};

/// The vector form of a function class and its rows, from one of its expressions: the function's
/// `fill(expression, present)` sets the parameters, if there are any, for pixels that have certain
/// components.
template <class Function, class Expression>
struct ru_VectorForms
{
    static constexpr ru_VectorFormPair both() { return {pixel, rows}; }

    static void pixel(RU_PixelFunction* function, float** components, const bool* scope)
    {
        rows(function, components, components, 1, scope);
    }

    static void rows(RU_PixelFunction* function, const float* const* in, float* const* out, int64_t count,
                     const bool* scope)
    {
        ru_Present present = 0, written = 0;
        for (int c = 0; c < 4; ++c) {
            present |= in[c] != nullptr ? 1u << c : 0u;
            written |= in[c] != nullptr && scope[c] && c < Expression::width ? 1u << c : 0u;
        }
        if ((present & Expression::needed) != Expression::needed)
            written = 0;
        for (int c = 0; c < 4; ++c)
            if ((written >> c & 1) == 0)
                ru_copyRow(in[c], out[c], count);
        if (written == 0)
            return;
        Expression expression{};
        if constexpr (!std::is_empty_v<Expression>)
            static_cast<const Function&>(*function).fill(expression, present);
        run(expression, present, written, in, out, count);
    }

private:
    static void run(const Expression& expression, ru_Present present, ru_Present written,
                    const float* const* in, float* const* out, int64_t count)
    {
        const ru_PixelKernel<Expression>& kernel = ru_vectorRows();
        static constexpr float zeros[ru_chunk] = {};
        float spare[ru_chunk]; // takes what is not to be written
        for (int64_t start = 0; start < count; start += ru_chunk) {
            const float* from[4];
            float* to[4];
            for (int c = 0; c < 4; ++c) {
                const int source = expression.source(c, present);
                const float* const values = source < 4 ? in[source] : nullptr;
                from[c] = values != nullptr ? values + start : zeros;
                to[c] = (written >> c & 1) != 0 ? out[c] + start : spare;
            }
            kernel.run(expression, from, to, std::min(ru_chunk, count - start));
        }
    }
};

/// Defines the two getters of a function class that has one expression.
#define RU_VECTOR_FORMS(FUNCTION, EXPRESSION)                                                                \
    RU_VectorForm FUNCTION::getVectorFunction() const                                                        \
    {                                                                                                        \
        return ru_VectorForms<FUNCTION, EXPRESSION>::pixel;                                                  \
    }                                                                                                        \
    RU_VectorRowForm FUNCTION::getVectorRowFunction() const                                                  \
    {                                                                                                        \
        return ru_VectorForms<FUNCTION, EXPRESSION>::rows;                                                   \
    }
