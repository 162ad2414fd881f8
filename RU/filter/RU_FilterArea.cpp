#include <RU/filter/RU_FilterArea.h>

#include <RU/filter/ru_AreaSampler.h>
#include <RU/kernel/ru_OneNaN.h>

#include <algorithm>
#include <cmath>
#include <new>

namespace {

/// The largest whole number not above v, as a place 0 .. n - 1.
int pixelOf(float v, int n)
{
    return static_cast<int>(std::clamp(std::floor(v), 0.0f, static_cast<float>(n - 1)));
}

int atMostLast(int pixel, int n)
{
    return std::min(pixel, n - 1); // a float may have rounded n - 1 up
}

} // namespace

void RU_FilterArea::Axis::setFilter(UT_Filter* to, float size)
{
    filter = to;
    half = size * 0.5f;
}

/// The range of pixels under the footprints.
void RU_FilterArea::Axis::findRange()
{
    float low = 10000000.0f, high = -10000000.0f;
    ru_areaRows().bounds(place, extent.data(), static_cast<int64_t>(extent.size()), half,
                         filter->getSupport(), low, high);
    const int n = resolution;
    first = 0;
    last = n - 1;
    if (n < 1)
        return;
    const auto width = static_cast<float>(n);
    if (wrap == RU_FILTER_REPEAT) {
        const float a = low / width, b = high / width;
        if (std::floor(a) == std::floor(b)) {
            first = atMostLast(pixelOf((a - std::floor(a)) * width, n), n);
            last = atMostLast(pixelOf((b - std::floor(b)) * width, n), n);
        }
        return;
    }
    if (wrap == RU_FILTER_BORDER && !(low <= width && high >= 0.0f)) {
        first = last = -1;
        return;
    }
    // Footprints that start at n exactly read nothing: the range is empty then, n .. n - 1.
    first = wrap == RU_FILTER_BORDER && low == width ? n : atMostLast(pixelOf(low, n), n);
    last = atMostLast(pixelOf(high < width ? high : width - 1.0f, n), n);
}

ru_AreaAxis RU_FilterArea::Axis::forSampling() const
{
    ru_AreaAxis axis;
    axis.filter = filter;
    axis.pieces = filter->getPieces();
    axis.box = type == UT_FILTER_BOX || filter == UT_Filter::getFilter(UT_FILTER_POINT);
    axis.half = half;
    axis.support = filter->getSupport();
    axis.wrap = wrap;
    axis.resolution = resolution;
    axis.first = std::max(first, 0);
    axis.last = last;
    return axis;
}

RU_FilterArea::RU_FilterArea()
{
    setFilter(UT_FILTER_BOX, 1.0f, UT_FILTER_BOX, 1.0f);
}

RU_FilterArea::RU_FilterArea(const RU_FilterArea& other)
    : x_(other.x_), y_(other.y_), mask_(other.mask_), rows_(other.rows_), columns_(other.columns_)
{
    std::copy_n(other.border_, 4, border_);
}

RU_FilterArea& RU_FilterArea::operator=(const RU_FilterArea& other)
{
    if (this == &other)
        return *this;
    x_ = other.x_;
    y_ = other.y_;
    std::copy_n(other.border_, 4, border_);
    mask_ = other.mask_;
    rows_ = other.rows_;
    columns_ = other.columns_;
    return *this;
}

RU_FilterArea::~RU_FilterArea()
{
    UT_Filter::releaseFilter(x_.filter);
    UT_Filter::releaseFilter(y_.filter);
}

void RU_FilterArea::setFilter(UT_FilterType xtype, float xsize, UT_FilterType ytype, float ysize)
{
    UT_Filter::releaseFilter(x_.filter);
    UT_Filter::releaseFilter(y_.filter);
    x_.type = xtype;
    y_.type = ytype;
    setFilter(UT_Filter::getFilter(xtype), xsize, UT_Filter::getFilter(ytype), ysize);
}

void RU_FilterArea::setFilter(UT_Filter* xfilter, float xsize, UT_Filter* yfilter, float ysize)
{
    x_.setFilter(xfilter, xsize);
    y_.setFilter(yfilter, ysize);
}

void RU_FilterArea::setWrap(int xwrap, int ywrap)
{
    const auto known = [](int wrap) {
        return wrap < RU_FILTER_REPEAT || wrap > RU_FILTER_BORDER ? +RU_FILTER_CLAMP : wrap;
    };
    x_.wrap = known(xwrap);
    y_.wrap = known(ywrap);
}

void RU_FilterArea::setBorder(float* const colour)
{
    std::copy_n(colour, 4, border_);
}

bool RU_FilterArea::startBlock(const float* u, const float* v, int rows, int columns, int xres, int yres,
                               const char* mask)
{
    rows_ = std::max(rows, 0);
    columns_ = std::max(columns, 0);
    x_.place = u;
    y_.place = v;
    x_.resolution = xres;
    y_.resolution = yres;
    mask_ = mask;
    try {
        x_.extent.resize(static_cast<size_t>(rows_ * columns_));
        y_.extent.resize(static_cast<size_t>(rows_ * columns_));
        return true;
    } catch (const std::bad_alloc&) {
        rows_ = columns_ = 0; // no samples
        x_.extent.clear();
        y_.extent.clear();
        return false;
    }
}

void RU_FilterArea::setTextureCoords(const float* u, const float* v, int rows, int columns, int xres,
                                     int yres, const char* mask)
{
    if (!startBlock(u, v, rows, columns, xres, yres, mask))
        return;
    float *du = x_.extent.data(), *dv = y_.extent.data();
    for (int64_t r = 0; r < rows_; ++r)
        for (int64_t c = 0; c < columns_; ++c) {
            const int64_t k = r * columns_ + c;
            const int64_t across = c + 1 < columns_ ? k : k - 1, down = r + 1 < rows_ ? k : k - columns_;
            du[k] = columns_ < 2 ? 1.0f : u[across + 1] - u[across];
            dv[k] = rows_ < 2 ? 1.0f : v[down + columns_] - v[down];
        }
    x_.findRange();
    y_.findRange();
}

void RU_FilterArea::setFourCornerCoords(const float* u0, const float* v0, const float* u1, const float* v1,
                                        int rows, int columns, int xres, int yres, const char* mask)
{
    if (!startBlock(u0, v0, rows, columns, xres, yres, mask))
        return;
    for (size_t k = 0; k < x_.extent.size(); ++k) {
        x_.extent[k] = u1[k] - u0[k];
        y_.extent[k] = v1[k] - v0[k];
    }
    x_.findRange();
    y_.findRange();
}

void RU_FilterArea::getInputRegion(int& x0, int& x1, int& y0, int& y1) const
{
    x0 = x_.first;
    x1 = x_.last;
    y0 = y_.first;
    y1 = y_.last;
}

void RU_FilterArea::sample1(float* out, const float* in)
{
    sample(out, &in, 1);
}

void RU_FilterArea::sample3(UT_Vector3* out, const float* r, const float* g, const float* b)
{
    const float* in[] = {r, g, b};
    sample(&out->x, in, 3);
}

void RU_FilterArea::sample4(UT_Vector4* out, const float* r, const float* g, const float* b, const float* a)
{
    const float* in[] = {r, g, b, a};
    sample(&out->x, in, 4);
}

void RU_FilterArea::sample(float* out, const float* const* in, int components)
{
    if (rows_ == 0 || columns_ == 0)
        return;
    try {
        sampleComponents(out, in, components);
    } catch (const std::bad_alloc&) {
        return; // nothing was written yet
    }
}

/// Samples to planes, then puts those that are not masked beside each other.
void RU_FilterArea::sampleComponents(float* out, const float* const* in, int components)
{
    const int64_t total = rows_ * columns_;
    const ru_AreaAxis x = x_.forSampling(), y = y_.forSampling();
    ru_AreaPlanes planes = {};
    planes.stride = std::max<int64_t>(int64_t{x.last} - x.first + 1, 0);
    planes.size = planes.stride * std::max<int64_t>(int64_t{y.last} - y.first + 1, 0);
    scratch_.resize(static_cast<size_t>(total * components));
    const float* from[4] = {};
    for (int c = 0; c < components; ++c) {
        if (in[c] == nullptr)
            continue;
        float* samples = scratch_.data() + planes.count * total;
        planes.in[planes.count] = in[c];
        planes.out[planes.count++] = samples;
        from[c] = samples;
    }
    if (sampler_ == nullptr)
        sampler_ = std::make_unique<ru_AreaSampler>();
    if (planes.count > 0)
        sampler_->sample({x_.place, x_.extent.data(), y_.place, y_.extent.data(), rows_, columns_}, x, y,
                         planes, mask_);
    for (int64_t k = 0; k < total; ++k)
        if (mask_ == nullptr || mask_[k] != 0)
            for (int c = 0; c < components; ++c)
                out[k * components + c] = from[c] != nullptr ? ru_oneNaN(from[c][k]) : 0.0f;
}
