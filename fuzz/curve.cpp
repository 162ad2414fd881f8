// Colour curves through random keys.
#include "Bytes.h"

#include <RU/pixelfunc/RU_ColorCurve.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Bytes bytes(data, size);
    RU_ColorCurve curve;
    for (int key = bytes.below(8); key > 0; --key) {
        const auto [x, y, weight] = bytes.numbers<3>();
        curve.addPoint(x, y, weight);
    }
    curve.create(bytes.flag());
    const int count = bytes.below(65);
    checkSingles(Row<float>(bytes, count), count, [&](float* to, int, int n) {
        n == 1 ? void(*to = curve.evaluate(*to)) : curve.evaluate(to, to, n);
    });
    return 0;
}
