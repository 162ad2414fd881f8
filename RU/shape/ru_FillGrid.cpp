#include <RU/shape/ru_FillGrid.h>

#include <RU/shape/ru_FillRows.h>
#include <UT/UT_Lock.h>

#include <algorithm>
#include <array>
#include <map>
#include <mutex>

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

ru_FillGrid makeSamples(int64_t width, int64_t height, int nx, int ny)
{
    ru_FillGrid grid{
        width, height, nx, ny, 0.5, driftOf(nx * width), centres(width, nx), centres(height, ny)};
    pad(grid.y);
    return grid;
}

ru_FillGrid makeCorners(int64_t width, int64_t height)
{
    ru_FillGrid grid{width, height, 1, 1, 0.0, driftOf(width), borders(width), borders(height)};
    pad(grid.y);
    return grid;
}

/// The grid of a key, made when nobody has it: many shapes of a picture need the same.
template <class Make>
std::shared_ptr<const ru_FillGrid> shared(const std::array<int64_t, 4>& key, Make make)
{
    static UT_Lock lock;
    static std::map<std::array<int64_t, 4>, std::weak_ptr<const ru_FillGrid>> grids;
    const std::lock_guard guard(lock);
    std::erase_if(grids, [](const auto& entry) { return entry.second.expired(); });
    std::weak_ptr<const ru_FillGrid>& known = grids[key];
    std::shared_ptr<const ru_FillGrid> grid = known.lock();
    if (!grid) {
        grid = std::make_shared<const ru_FillGrid>(make());
        known = grid;
    }
    return grid;
}

} // namespace

std::shared_ptr<const ru_FillGrid> ru_FillGrid::samples(int64_t width, int64_t height, int nx, int ny)
{
    return shared({width, height, nx, ny}, [=] { return makeSamples(width, height, nx, ny); });
}

std::shared_ptr<const ru_FillGrid> ru_FillGrid::corners(int64_t width, int64_t height)
{
    return shared({width, height, 0, 0}, [=] { return makeCorners(width, height); });
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
