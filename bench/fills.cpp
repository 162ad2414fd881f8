#include <bench/fills.h>

#include <GU/GU_Detail.h>
#include <GU/GU_PrimPoly.h>
#include <RU/shape/RU_PolyFill.h>

#include <atomic>
#include <barrier>
#include <cstring>
#include <numbers>
#include <random>
#include <thread>

namespace bench {

namespace {

constexpr int bucketSide = 128;

/// Around the middle of the image, at `radius(i)` of its height.
Outline around(const TIL_TileList& image, int count, auto radius)
{
    Outline outline;
    const double width = image.width(), height = image.height();
    for (int i = 0; i < count; ++i) {
        const double angle = 2.0 * std::numbers::pi * i / count;
        const auto [across, down] = radius(i, angle);
        outline.push_back({static_cast<float>(0.5 * width + across * height * std::cos(angle)),
                           static_cast<float>(0.5 * height + down * height * std::sin(angle))});
    }
    return outline;
}

std::vector<Outline> randomTriangles(const TIL_TileList& image)
{
    std::minstd_rand random(1);
    const auto between = [&](double low, double high) {
        return std::uniform_real_distribution<>(low, high)(random);
    };
    std::vector<Outline> triangles(2000);
    for (Outline& triangle : triangles) {
        const double x = between(0.0, image.width()), y = between(0.0, image.height()),
                     turn = between(0.0, 7.0);
        for (int i = 0; i < 3; ++i) {
            const double angle = turn + 2.0 * std::numbers::pi / 3.0 * (i + between(-0.3, 0.3));
            triangle.push_back({static_cast<float>(x + 37.0 * std::cos(angle)),
                                static_cast<float>(y + 37.0 * std::sin(angle))});
        }
    }
    return triangles;
}

/// The outlines in an image that is 1 wide and 1 high.
std::shared_ptr<GU_Detail> detailOf(Shape shape, const TIL_TileList& image)
{
    auto detail = std::make_shared<GU_Detail>();
    for (const Outline& outline : outlinesOf(shape, image)) {
        const GU_PrimPoly* polygon = GU_PrimPoly::build(detail.get(), std::ssize(outline));
        int64_t vertex = 0;
        for (const UT_Vector2& p : outline)
            detail->setPosition(polygon->vertexPoint(vertex++),
                                {p.x / static_cast<float>(image.width()),
                                 p.y / static_cast<float>(image.height()), 0.0f, 1.0f});
    }
    return detail;
}

void prepare(RU_PolyFill& fill, const GU_Detail& detail, const TIL_TileList& image)
{
    fill.initialize(&detail);
    fill.setResolution(image.width(), image.height(), bucketSide, bucketSide);
}

/// A fill with its buckets and the threads that draw them; they wait between pictures.
class Scene
{
public:
    Scene(const TIL_TileList& image, Shape shape, int samples, int threads)
        : fill_(RU_POLYFILL_NORMAL, threads), start_(threads), end_(threads)
    {
        fill_.setSampling(samples, samples);
        prepare(fill_, *detailOf(shape, image), image);
        for (int y = 0; y < image.height(); y += bucketSide)
            for (int x = 0; x < image.width(); x += bucketSide)
                buckets_.push_back(std::make_unique<Bucket>(image, x, y));
        for (int thread = 1; thread < threads; ++thread)
            others_.emplace_back([this, thread] {
                for (start_.arrive_and_wait(); !done_; start_.arrive_and_wait()) {
                    drawBuckets(thread);
                    end_.arrive_and_wait();
                }
            });
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
    ~Scene()
    {
        done_ = true;
        start_.arrive_and_wait();
    }

    void draw()
    {
        next_ = 0;
        start_.arrive_and_wait();
        drawBuckets(0);
        end_.arrive_and_wait();
    }

    void copyTo(const TIL_TileList& image)
    {
        const int64_t size = PXLbytesPerElement(image.plane->formatCode);
        char* to = nullptr;
        image.tiles[0]->getImageData(to);
        for (const auto& bucket : buckets_) {
            const char* from = nullptr;
            std::as_const(bucket->tile).getImageData(from);
            const TIL_TileList& list = bucket->list;
            for (int y = 0; y < list.height(); ++y)
                std::memcpy(to + ((int64_t{list.y1} + y) * image.width() + list.x1) * size,
                            from + int64_t{y} * list.width() * size,
                            static_cast<size_t>(list.width() * size));
        }
    }

private:
    struct Bucket
    {
        Bucket(const TIL_TileList& image, int x, int y)
            : list(*image.plane, x, y, std::min(x + bucketSide - 1, image.x2),
                   std::min(y + bucketSide - 1, image.y2)),
              tile(image.plane->formatCode, list.width(), list.height())
        {
            list.tiles[0] = &tile;
        }
        TIL_TileList list;
        TIL_Tile tile;
    };

    void drawBuckets(int thread)
    {
        for (size_t i = next_++; i < buckets_.size(); i = next_++) {
            TIL_TileList& list = buckets_[i]->list;
            fill_.scanConvert(&list, list.x1 / bucketSide, list.y1 / bucketSide, {1.0f, 1.0f, 1.0f, 1.0f},
                              thread);
        }
    }

    RU_PolyFill fill_;
    std::vector<std::unique_ptr<Bucket>> buckets_;
    std::atomic<size_t> next_ = 0;
    std::atomic<bool> done_ = false;
    std::barrier<> start_, end_;
    std::vector<std::jthread> others_;
};

/// Adds the area to the right of an edge within a row, `top` and `bottom` being its ends there: to each pixel its
/// part, to all behind the height.
void addEdgeInRow(double* row, int width, UT_Vector2 from, UT_Vector2 to, double top, double bottom,
                  double sign)
{
    const double slope = (double(to.x) - from.x) / (double(to.y) - from.y);
    double x0 = from.x + slope * (top - from.y), x1 = from.x + slope * (bottom - from.y);
    if (x0 > x1)
        std::swap(x0, x1);
    const double height = sign * (bottom - top);
    const int first = std::clamp(static_cast<int>(x0), 0, width),
              last = std::clamp(static_cast<int>(x1), first, width);
    double before = 0.0;
    for (int x = first; x <= last && x < width; ++x) {
        // The mean over the edge of how much of the pixel lies to its right.
        const double l = std::clamp<double>(x, x0, x1), r = std::clamp<double>(x + 1, x0, x1);
        const double part = x1 > x0 ? (r - l) / (x1 - x0) : 1.0;
        const double left = x1 > x0 ? (l - x0) / (x1 - x0) : 0.0;
        const double area = height * (left + part * (x + 1 - 0.5 * (l + r)));
        row[x] += area - before;
        before = area;
    }
    if (last + 1 <= width)
        row[last + 1] += height - before;
}

} // namespace

std::vector<Outline> outlinesOf(Shape shape, const TIL_TileList& image)
{
    if (shape == Shape::triangles)
        return randomTriangles(image);
    if (shape == Shape::star)
        return {around(image, 5000, [](int i, double) {
            const double radius = i % 2 == 0 ? 0.48 : 0.048;
            return std::pair(radius, radius);
        })};
    return {around(image, 5000, [](int, double angle) {
        const double wave = 1.0 + 0.08 * std::sin(3.0 * angle) + 0.04 * std::cos(7.0 * angle);
        return std::pair(0.58 * wave, 0.39 * wave);
    })};
}

std::vector<double> coverageOf(Shape shape, const TIL_TileList& image)
{
    const int width = image.width();
    const int64_t stride = width + 2; // differences along a row, then their sums
    std::vector<double> sums(static_cast<size_t>(stride * image.height()));
    const Outline outline = outlinesOf(shape, image).front();
    for (size_t i = 0; i < outline.size(); ++i) {
        const UT_Vector2 a = outline[i], b = outline[(i + 1) % outline.size()];
        const double low = std::min(a.y, b.y), high = std::max(a.y, b.y);
        for (int y = static_cast<int>(low); y < high; ++y)
            addEdgeInRow(&sums[static_cast<size_t>(y * stride)], width, a, b, std::max<double>(y, low),
                         std::min<double>(y + 1, high), a.y < b.y ? -1.0 : 1.0);
    }
    std::vector<double> result;
    for (int y = 0; y < image.height(); ++y) {
        double sum = 0.0;
        for (int x = 0; x < width; ++x) {
            sum += sums[static_cast<size_t>(y * stride + x)];
            result.push_back(std::clamp(sum, 0.0, 1.0));
        }
    }
    return result;
}

/// The first call, which is not timed, shows the picture in the output.
Work fill(Planes& planes, Shape shape, int samples, int threads)
{
    return [&planes, isShown = false,
            scene = std::make_shared<Scene>(planes.out, shape, samples, threads)]() mutable {
        scene->draw();
        if (!std::exchange(isShown, true))
            scene->copyTo(planes.out);
    };
}

Work prepareFill(Planes& planes, Shape shape)
{
    const auto fill = std::make_shared<RU_PolyFill>(RU_POLYFILL_NORMAL, 1);
    fill->setSampling(8, 8); // or the first bucket sorts
    return [&planes, fill, detail = detailOf(shape, planes.out)] { prepare(*fill, *detail, planes.out); };
}

namespace {

/// The same on one thread.
template <Shape Of>
Work alone(Planes& planes)
{
    return fill(planes, Of, 8, 1);
}

const bool added = addPeers({
    {"fill_blob_2_threads/uint8", "one thread", alone<Shape::blob>},
    {"fill_blob_2_threads/float", "one thread", alone<Shape::blob>},
    {"fill_star_2_threads/uint8", "one thread", alone<Shape::star>},
    {"fill_star_2_threads/float", "one thread", alone<Shape::star>},
    {"fill_triangles_2_threads/uint8", "one thread", alone<Shape::triangles>},
    {"fill_triangles_2_threads/float", "one thread", alone<Shape::triangles>},
});

} // namespace

} // namespace bench
