#include <RU/generate/RU_Noise.h>
#include <reference/Contract.h>

using namespace reference;

namespace {

uint32_t mix(uint32_t h)
{
    h = (h ^ h >> 16) * 0x7feb352du;
    h = (h ^ h >> 15) * 0x846ca68bu;
    return h ^ h >> 16;
}

/// Noise by its definition, at a place that is displaced already.
class Lattice
{
public:
    Lattice(double x, double y, double z, uint32_t key) : place_{x, y, z}, key_(key)
    {
        for (int axis = 0; axis < 3; ++axis) {
            const double v = place_[axis] + mix(key + 1 + static_cast<uint32_t>(axis)) * 0x1p-32;
            const double inside = std::isnan(v) ? -0x1p50 : std::clamp(v, -0x1p50, 0x1p50);
            cell_[axis] = static_cast<int64_t>(std::floor(inside));
            place_[axis] = inside - std::floor(inside);
        }
    }

    double noise(UT_NoiseType type) const
    {
        double sum = 0.0, nearest = 1.0;
        for (int i = -1; i <= 1; ++i)
            for (int j = -1; j <= 1; ++j)
                for (int k = -1; k <= 1; ++k) {
                    const int offset[3] = {i, j, k};
                    const uint32_t h = hash(offset);
                    double squared = 0.0, product = 0.0, length = 0.0, weight = 1.0;
                    for (int axis = 0; axis < 3; ++axis) {
                        const double bits = h >> 10 * axis & 1023, way = place_[axis] - offset[axis];
                        const double dx = (bits + 0.5) / 1024 - way, slope = 2 * bits - 1023;
                        squared += dx * dx;
                        product += slope * way;
                        length += slope * slope;
                        const double t = 1.0 - std::abs(way);
                        weight *= t <= 0 ? 0.0 : t * t * t * (t * (t * 6 - 15) + 10);
                    }
                    if (type == UT_NOISE_SPARSE)
                        sum += static_cast<int32_t>(mix(h)) * 0x1p-31 *
                               std::pow(std::max(1 - squared, 0.0), 3) * 1.08;
                    else
                        sum += weight * product / std::sqrt(length) * 1.745;
                    nearest = std::min(nearest, squared);
                }
        return type == UT_NOISE_CELLULAR ? (std::sqrt(nearest) - 0.52) * 1.9 : sum;
    }

private:
    uint32_t hash(const int (&offset)[3]) const
    {
        uint32_t h = key_;
        for (int axis = 2; axis >= 0; --axis)
            h = mix(static_cast<uint32_t>(cell_[axis] + offset[axis]) ^ h);
        return h;
    }

    double place_[3];
    int64_t cell_[3];
    uint32_t key_;
};

float oneOf(Random& random, std::initializer_list<float> list)
{
    return list.begin()[random.between(0, static_cast<int>(list.size()) - 1)];
}

class Noise : public Subject
{
public:
    using Subject::Subject;

    void choose(Random& random) override
    {
        algorithm = {};
        algorithm.type = static_cast<UT_NoiseType>(random.between(0, 3));
        algorithm.seed = static_cast<unsigned int>(random.bits());
        algorithm.turbulence = random.between(-1, 4);
        algorithm.roughness = oneOf(random, {0.5f, 0.5f, 0.7f, 1.0f, 0.0f, -1.0f, 9.0f, std::nanf("")});
        algorithm.monochrome = random.oneIn(4);
        algorithm.periodX = oneOf(random, {32.0f, 5.5f, 3.0f, 1.0f, 0.3f, -7.0f, 100.0f, 0.0f, HUGE_VALF});
        algorithm.periodY = oneOf(random, {32.0f, 5.5f, 3.0f, 0.1f, -2.0f, 1e-38f, 1e30f, std::nanf("")});
        algorithm.periodTime = oneOf(random, {10.0f, 0.7f, 0.0f});
        algorithm.offsetX = oneOf(random, {0.0f, 0.25f, -1000.5f, 100000.0f, 1e30f, std::nanf("")});
        algorithm.offsetY = oneOf(random, {0.0f, 12.5f, -1e8f});
        algorithm.offsetZ = oneOf(random, {0.0f, 0.5f, HUGE_VALF});
        for (int c = 0; c < 4; ++c) {
            algorithm.mean[c] = oneOf(random, {0.5f, 0.5f, 0.0f, 2.0f, std::nanf("")});
            algorithm.amplitude[c] = oneOf(random, {0.5f, 0.5f, 1.0f, -2.0f, 0.0f, 1e30f, HUGE_VALF});
        }
        time_ = oneOf(random, {0.0f, 1.0f, 3.75f, -100.0f, 1e30f});
        verticalScale_ = oneOf(random, {1.0f, 2.0f, -0.5f, 0.0f, std::nanf("")});
        verticalOffset_ = oneOf(random, {0.0f, 0.5f});
    }

    int run(Scene& scene, void* token, int thread) override
    {
        scene.out.list.verticalScale = verticalScale_;
        scene.out.list.verticalOffset = verticalOffset_;
        return algorithm.generate(&scene.out.list, time_, token, thread, nullptr);
    }

    std::optional<Exact> expected(const Scene& scene, int c, int x, int y) const override
    {
        const TIL_TileList& list = scene.out.list;
        if (!scene.out.mayWrite(c) || y < list.firstRow ||
            (y - std::max<int>(list.firstRow, 0)) % std::max<int>(list.rowStep, 1) != 0)
            return {};
        const bool unscaled = verticalScale_ == 0.0f || std::isnan(verticalScale_);
        const double row = (list.y1 + y + double(verticalOffset_)) / (unscaled ? 1.0 : verticalScale_);
        const auto along = [](double at, double offset, double period, int octave) {
            const double frequency = std::isfinite(1.0 / period) ? std::ldexp(1.0 / period, octave) : 0.0;
            return (at + offset) * frequency;
        };
        const double r = std::clamp(std::isnan(algorithm.roughness) ? 0.0 : algorithm.roughness, 0.0, 1.0);
        double sum = 0.0, squares = 0.0;
        for (int k = 0; k < std::max(algorithm.turbulence, 1); ++k) {
            const double weight = std::pow(r, k);
            const uint32_t of = algorithm.monochrome ? 0 : static_cast<uint32_t>(c);
            sum += weight * Lattice(along(list.x1 + x, algorithm.offsetX, algorithm.periodX, k),
                                    along(row, algorithm.offsetY, algorithm.periodY, k),
                                    along(time_, algorithm.offsetZ, algorithm.periodTime, k),
                                    mix(static_cast<uint32_t>(k) ^ mix(of ^ mix(algorithm.seed))))
                                .noise(algorithm.type);
            squares += weight * weight;
        }
        const double amplitude = algorithm.amplitude[c], mean = algorithm.mean[c];
        const double n = std::clamp(sum / std::sqrt(squares), -1.0, 1.0);
        return Exact{mean + amplitude * n,
                     std::isfinite(amplitude) ? 4e-6 * std::abs(amplitude) + 1e-6 * std::abs(mean) : 0.0};
    }

    RU_Noise algorithm;

private:
    float time_ = 0.0f, verticalScale_ = 1.0f, verticalOffset_ = 0.0f;
};

const Registered<Noise> registered("Noise");

/// Of 256 x 256 pixels.
std::vector<float> imageOf(RU_Noise& noise, float time, int component = 0, int x1 = 0, float scale = 1.0f)
{
    Picture picture({PXL_FORMAT_float32, true}, 256, 256, x1, -100);
    picture.list.verticalScale = scale;
    EXPECT_EQ(noise.generate(&picture.list, time, nullptr, 0, nullptr), 1);
    const auto* values = reinterpret_cast<const float*>(picture.data(component));
    return {values, values + 65536};
}

double product(const std::vector<float>& a, const std::vector<float>& b)
{
    double sum = 0.0;
    for (size_t i = 0; i < a.size(); ++i)
        sum += (a[i] - 0.5) * (b[i] - 0.5);
    return sum / static_cast<double>(a.size());
}

} // namespace

TEST(Noise, SpreadsAsItSaysWithinItsBounds)
{
    for (int type = 0; type < 3; ++type)
        for (const int octaves : {1, 4}) {
            SCOPED_TRACE(type * 10 + octaves);
            RU_Noise noise;
            noise.type = static_cast<UT_NoiseType>(type);
            noise.turbulence = octaves;
            noise.periodX = noise.periodY = 2.9f;
            noise.periodTime = 0.01f;
            double mean = 0.0, square = 0.0, limited = 0.0;
            for (const float time : {0.0f, 1.0f, 2.0f, 3.0f})
                for (const float v : imageOf(noise, time)) {
                    ASSERT_TRUE(v >= 0.0f && v <= 1.0f) << v;
                    mean += (2 * v - 1) / 262144.0;
                    square += (2 * v - 1) * (2 * v - 1) / 262144.0;
                    limited += v == 0.0f || v == 1.0f ? 1.0 / 262144.0 : 0.0;
                }
            EXPECT_NEAR(mean, 0.0, 0.02);
            EXPECT_NEAR(std::sqrt(square - mean * mean), 1.0 / 3, 0.02);
            EXPECT_LT(limited, 0.02);
        }
}

// From pixel to pixel and frame to frame, over many cells, also far to the right: no step is larger than slopes allow.
TEST(Noise, IsContinuousInSpaceAndTime)
{
    for (int type = 0; type < 3; ++type)
        for (const int x1 : {0, 100000, 2000000000}) {
            SCOPED_TRACE(std::to_string(type) + " at " + std::to_string(x1));
            RU_Noise noise;
            noise.type = static_cast<UT_NoiseType>(type);
            const std::vector<float> now = imageOf(noise, 7.0f, 0, x1), later = imageOf(noise, 7.3f, 0, x1);
            const std::vector<float> stretched = imageOf(noise, 7.0f, 0, x1, 8.0f);
            for (size_t i = 256; i < now.size(); ++i) {
                ASSERT_NEAR(now[i], now[i % 256 == 0 ? i : i - 1], 0.09);
                ASSERT_NEAR(now[i], now[i - 256], 0.09);
                ASSERT_NEAR(now[i], later[i], 0.09);
                ASSERT_NEAR(stretched[i], stretched[i - 256], 0.012);
            }
        }
}

TEST(Noise, SeedsComponentsFramesAndOctavesAreIndependent)
{
    for (int type = 0; type < 3; ++type) {
        RU_Noise noise;
        noise.type = static_cast<UT_NoiseType>(type);
        noise.periodX = noise.periodY = 4.0f;
        const std::vector<float> first = imageOf(noise, 0.0f);
        EXPECT_GT(product(first, first), 0.02);
        const std::vector<float> others[] = {imageOf(noise, 0.0f, 1), imageOf(noise, 50.0f),
                                             imageOf(noise, 0.0f, 0, 256), [&] {
                                                 RU_Noise other = noise;
                                                 other.seed = 1;
                                                 return imageOf(other, 0.0f);
                                             }()};
        for (const auto& other : others)
            EXPECT_NEAR(product(first, other), 0.0, 0.002) << type << ' ' << &other - others;
        noise.monochrome = true;
        EXPECT_EQ(imageOf(noise, 0.0f, 3), first);
    }
}

// The rows of the library and single places agree bit for bit.
TEST(Noise, OfSinglePlacesIsTheSame)
{
    RU_Noise noise;
    noise.mean[0] = 0.0f;
    noise.amplitude[0] = 1.0f;
    for (int type = 0; type < 3; ++type)
        for (const float period : {32.0f, 3.3f, 0.4f}) {
            noise.type = static_cast<UT_NoiseType>(type);
            noise.periodX = period;
            const std::vector<float> image = imageOf(noise, 2.5f);
            for (int i = 0; i < 65536; i += 7) {
                const float exact = UTnoise(noise.type, (i % 256) * (1.0 / period),
                                            (i / 256 - 100) * (1.0 / 32), 0.25, mix(0 ^ mix(0 ^ mix(0))));
                ASSERT_EQ(image[static_cast<size_t>(i)], std::clamp(exact, -1.0f, 1.0f)) << type << ' ' << i;
            }
        }
}
