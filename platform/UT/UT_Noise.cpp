#include <UT/UT_Noise.h>

using namespace UT_noise;

namespace {

float perlinAt(Place x, Place y, Place z, uint32_t key)
{
    const PerlinRow row = perlinRow(y, z, key);
    float slope[2] = {}, level[2] = {};
    for (uint32_t column = 0; column < 2; ++column)
        for (int k = 0; k < perlinPoints; ++k)
            addPerlinVector(row, k, perlinVector(x.cell + column, row.keys[k]), slope[column], level[column]);
    return perlin(x.fraction, slope[0], level[0], slope[1], level[1]);
}

/// Calls visit(squared distance, strength) for the points in reach.
template <class Visit>
void eachPoint(Place x, Place y, Place z, uint32_t key, Visit visit)
{
    const PointRow row = pointRow(y, z, key);
    for (int k = 0; k < points; ++k)
        for (int column = -1; column <= 1; ++column) {
            float px, rest, strength;
            pointColumn(row.keys[k], row.y[k], row.z[k], x.cell + static_cast<uint32_t>(column), px, rest,
                        strength);
            visit(squaredDistance(x.fraction, static_cast<float>(column), px, rest), strength);
        }
}

} // namespace

float UTnoise(UT_NoiseType type, double x, double y, double z, uint32_t key)
{
    const Place px = placeOf(limited(x + displacement(key, 0)));
    const Place py = placeOf(limited(y + displacement(key, 1)));
    const Place pz = placeOf(limited(z + displacement(key, 2)));
    float sum = 0.0f, nearest = 1.0f;
    switch (type) {
    case UT_NOISE_SPARSE:
        eachPoint(px, py, pz, key,
                  [&](float squared, float strength) { sum += sparseSpot(squared, strength); });
        return sum * sparseGain;
    case UT_NOISE_CELLULAR:
        eachPoint(px, py, pz, key,
                  [&](float squared, float) { nearest = squared < nearest ? squared : nearest; });
        return cellular(nearest);
    case UT_NOISE_PERLIN:
        break;
    }
    return perlinAt(px, py, pz, key);
}
