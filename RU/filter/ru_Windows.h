#pragma once

#include <RU/filter/ru_ExtremeRows.h>
#include <TIL/TIL_Buffer.h>

#include <algorithm>
#include <limits>

template <class T>
const ru_ExtremeRow<T>& ru_extremes(bool maxima)
{
    const ru_ExtremesOf<T>& kinds = ru_extremeRows();
    return maxima ? kinds.maxima : kinds.minima;
}

/// Rows of memory, each beginning where vectors like to.
template <class T>
class ru_ScratchRows
{
public:
    ru_ScratchRows(int64_t rows, int64_t width)
        : stride((width + wanted - 1) / wanted * wanted),
          memory_(rows * stride * static_cast<int64_t>(sizeof(T)))
    {
    }

    T* operator[](int64_t row) { return static_cast<T*>(memory_.data()) + row * stride; }

    const int64_t stride;

private:
    static constexpr int64_t wanted = 64 / sizeof(T);

    TIL_Buffer memory_;
};

/// Extremes of `size` neighbours each along a row: windows are joined to wider ones until they are that wide.
template <class T>
class ru_RowWindow
{
public:
    /// For rows of up to `width` pixels.
    ru_RowWindow(bool maxima, int64_t size, int64_t width)
        : kind_(ru_extremes<T>(maxima)), size_(size), steps_(1, size > most ? width : 0)
    {
    }

    /// to[i]: of from[i] up to from[i + size - 1], for `count` of them.
    void run(const T* from, T* to, int64_t count)
    {
        int64_t wide = 1;
        for (; wide * most < size_; wide *= 4) {
            kind_.along(from, wide, 3 * wide, steps_[0], count + size_ - 4 * wide);
            from = steps_[0];
        }
        kind_.along(from, wide, size_ - wide, to, count);
    }

private:
    static constexpr int64_t most = 5; ///< windows that along() joins

    const ru_ExtremeRow<T>& kind_;
    int64_t size_;
    ru_ScratchRows<T> steps_;
};

/// Extremes of `size` rows each, for rows that come one after the other (van Herk, Gil and Werman). Rows are
/// taken in blocks of `size`: a window is the end of one block, whose extremes are made when it is full, and
/// the beginning of the next, whose extremes grow row by row.
template <class T>
class ru_ColumnWindow
{
    using Limits = std::numeric_limits<ru_Key<T>>;

public:
    ru_ColumnWindow(bool maxima, int64_t size, int64_t width)
        : kind_(ru_extremes<T>(maxima)),
          keys_(size + 2, width), blocks_{keys_[0], keys_[1], keys_[size + 1], size, width, keys_.stride}
    {
        std::fill_n(blocks_.none, width, maxima ? Limits::min() : Limits::max());
        restart();
    }

    /// The first size - 1 rows give no windows yet: they are taken as a block that lacks its first row.
    void restart()
    {
        at_ = 1 % blocks_.size;
        std::copy_n(blocks_.none, blocks_.width, blocks_.beginning);
    }

    /// How many rows the block still takes.
    int64_t room() const { return blocks_.size - at_; }

    /// Takes that many rows or fewer and gives the windows that end with them, of which the first size - 1
    /// mean nothing.
    void push(ru_Rows<const T> from, ru_Rows<T> to, int64_t rows)
    {
        kind_.down(blocks_, at_, from, to, rows);
        at_ = (at_ + rows) % blocks_.size;
    }

private:
    const ru_ExtremeRow<T>& kind_;
    ru_ScratchRows<ru_Key<T>> keys_;
    ru_ColumnBlocks<T> blocks_;
    int64_t at_ = 0;
};
