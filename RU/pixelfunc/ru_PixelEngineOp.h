#pragma once

#include <RU/framework/ru_Tiles.h>
#include <RU/pixelfunc/RU_PixelEngine.h>
#include <RU/pixelfunc/ru_ChainRows.h>
#include <RU/pixelfunc/ru_LookUpRows.h>

/// Rows of one component through the engine's tables.
template <class T>
class ru_TableRows
{
public:
    using Code = T;

    explicit ru_TableRows(T* const* tables) : tables_(tables) {}

    void evaluate(const T* in, T* out, int64_t count, int component) const
    {
        const ru_LookUpKernels& kernels = ru_lookUpRows();
        if constexpr (sizeof(T) == 1)
            kernels.bytes(tables_[component], in, out, count);
        else
            kernels.words(reinterpret_cast<const uint16_t*>(tables_[component]),
                          reinterpret_cast<const uint16_t*>(in), reinterpret_cast<uint16_t*>(out), count);
    }

private:
    T* const* tables_;
};

/// Rows of codes as what a chain's leading functions make of them.
template <class T>
void ru_lookUpFloats(const float* table, const T* in, float* out, int64_t count)
{
    const ru_LookUpKernels& kernels = ru_lookUpRows();
    if constexpr (sizeof(T) == 1)
        kernels.floatsOfBytes(table, in, out, count);
    else
        kernels.floatsOfWords(table, reinterpret_cast<const uint16_t*>(in), out, count);
}

/// Rows as they are.
template <class T>
class ru_CopiedRows
{
public:
    using Code = T;

    void evaluate(const T* in, T* out, int64_t count, int) const
    {
        if (in != out)
            std::copy_n(in, count, out);
    }
};

/// The engine's operation: one component at a time where the chain allows it, else pixel by pixel.
template <class T, bool FullRange>
class RU_PixelEngineOp : public RU_PixelOp<T, FullRange>
{
public:
    using RU_PixelOp<T, FullRange>::RU_PixelOp;

    int pixelAdjust(TIL_TileList* out, const TIL_TileList* in, float time, int thread,
                    void* context) override;

private:
    RU_PixelEngine& engine() const { return static_cast<RU_PixelEngine&>(*this->algorithm_); }

    /// The chain, as it is given.
    ru_ChainRows<T, FullRange> chainRows(const TIL_TileList& out) const;
    /// How rows of this format pass through a chain that needs one component at a time.
    auto componentRows(const TIL_TileList& out) const;

    /// Those of this format, if the chain has any.
    const ru_leadingTables* leadingTables(const TIL_TileList& out) const;

    void adjustConstants(const TIL_TileList& out, const TIL_TileList& in) const;
    void adjustPixels(const TIL_TileList& out, const TIL_TileList& in, int thread) const;
};
