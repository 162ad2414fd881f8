#include <RU/shape/ru_FillGrid.h>

#include <RU/shape/ru_FillRows.h>

#include <algorithm>

namespace {

std::vector<double> centres(int64_t pixels, int samples)
{
    const float size = 1.0f / static_cast<float>(pixels), step = size / static_cast<float>(samples);
    std::vector<double> places;
    places.reserve(static_cast<size_t>(pixels * samples + ru_rowGroup));
    for (int64_t p = 0; p < pixels; ++p)
        for (int i = 0; i < samples; ++i)
            places.push_back(double{static_cast<float>(p) * size} +
                             double{(static_cast<float>(i) + 0.5f) * step});
    return places;
}

std::vector<double> borders(int64_t pixels)
{
    const float size = 1.0f / static_cast<float>(pixels);
    std::vector<double> places;
    places.reserve(static_cast<size_t>(pixels + 1 + ru_rowGroup));
    for (int64_t p = 0; p <= pixels; ++p)
        places.push_back(double{static_cast<float>(p) * size});
    return places;
}

/// Places are at most a few float roundings off: each is at most 2^-24.
double driftOf(int64_t columns)
{
    return static_cast<double>(columns) * 1.3e-7;
}

void pad(std::vector<double>& rows)
{
    rows.resize(rows.size() + static_cast<size_t>(ru_rowGroup), 2.0);
}

} // namespace

ru_FillGrid ru_FillGrid::samples(int64_t width, int64_t height, int nx, int ny)
{
    ru_FillGrid grid{
        width, height, nx, ny, 0.5, driftOf(nx * width), centres(width, nx), centres(height, ny)};
    pad(grid.y);
    return grid;
}

ru_FillGrid ru_FillGrid::corners(int64_t width, int64_t height)
{
    ru_FillGrid grid{width, height, 1, 1, 0.0, driftOf(width), borders(width), borders(height)};
    pad(grid.y);
    return grid;
}

int64_t ru_FillGrid::firstRowFrom(double place) const
{
    const double about =
        std::clamp(place * static_cast<double>(ny * height), 0.0, static_cast<double>(rows()));
    int64_t row = static_cast<int64_t>(about);
    while (row > 0 && y[static_cast<size_t>(row - 1)] >= place)
        --row;
    while (row < rows() && y[static_cast<size_t>(row)] < place)
        ++row;
    return row;
}
