#pragma once

#include <RU/filter/ru_AreaRows.h>

#include <memory>
#include <vector>

/// Windows of taps, one behind the other: those of window k lie from start[k] to start[k + 1]. Taps count from
/// the first pixel of their axis.
struct ru_AreaTaps
{
    std::vector<float> weight;
    std::vector<int32_t> tap;
    std::vector<int64_t> start;

    void clear();
};

/// Appends the window of the interval u0 <= u1, tap by tap as RU_FilterArea describes it; with NaN, none.
void ru_areaWindow(const ru_AreaAxis& axis, float u0, float u1, ru_AreaTaps& out);

/// Sums the pixels under samples. Every sum keeps its order (the taps of a row, times the row's weight, row
/// after row), so results are the same bits in each of three ways:
/// - where columns share u and rows v, input rows are summed along x first, once for all output rows;
/// - else samples that follow one another are summed side by side, in lanes;
/// - what these leave over (windows at the edges, a caller's own filter) is summed alone.
class ru_AreaSampler
{
public:
    /// Samples whose mask is 0 hold anything afterwards.
    void sample(const ru_AreaGrid& grid, const ru_AreaAxis& x, const ru_AreaAxis& y,
                const ru_AreaPlanes& planes, const char* mask);

private:
    void sampleShared(const ru_AreaGrid& grid, const ru_AreaAxis& x, const ru_AreaAxis& y,
                      const ru_AreaPlanes& planes);
    void sumBand(const ru_AreaPlanes& planes, int plane, int64_t k0, int64_t k1, int32_t top, int32_t rows);
    void sampleEach(const ru_AreaGrid& grid, const ru_AreaAxis& x, const ru_AreaAxis& y,
                    const ru_AreaPlanes& planes, const char* mask);
    void sampleOne(const ru_AreaPlanes& planes, int64_t k);
    void windowsAlong(const ru_AreaAxis& axis, const float* u, const float* du, int64_t step, int64_t count,
                      ru_AreaTaps& out);
    ru_AreaWindows* work();

    std::unique_ptr<ru_AreaWindows[]> work_;
    ru_AreaTaps x_, y_;
    std::vector<float> turned_, sums_;
    std::vector<unsigned char> left_;
};
