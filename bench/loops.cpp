// What one writes without a library: plain loops, in float but for codes, which need double.
#include <bench/bench.h>

#include <algorithm>

namespace bench::loops {

/// A formula, value by value.
template <class T, class Compute>
Work values(Planes& planes, auto formula)
{
    return [&planes, formula] {
        const T* from = static_cast<const T*>(planes.input);
        T* to = static_cast<T*>(planes.output);
        for (int64_t i = 0; i < planes.values(); ++i) {
            constexpr Compute white = PXL_FormatOf<T>::white;
            to[i] = encode<T>(formula(static_cast<Compute>(from[i]) / white));
        }
    };
}

template <class T, class Compute>
Work gammaAdd(Planes& planes)
{
    return values<T, Compute>(planes, [](Compute value) {
        return std::pow(value, Compute{1} / Compute{gammaValue}) + Compute{addValue};
    });
}

Work sine(Planes& planes)
{
    return values<float, float>(planes, [](float value) { return std::sin(value * sinScale + sinShift); });
}

Work gamma(Planes& planes)
{
    return values<float, float>(planes, [](float value) { return std::pow(value, 1.0f / gammaValue); });
}

template <class T>
Work levels(Planes& planes)
{
    const auto factor = static_cast<float>(levelsLine().factor);
    const auto addend = static_cast<float>(levelsLine().addend);
    return values<T, float>(planes, [factor, addend](float value) {
        return std::pow(value, 1.0f / gammaValue) * factor + addend;
    });
}

/// Finds the stretch, then the place in it by Newton's method.
template <class T>
Work curve(Planes& planes)
{
    return values<T, float>(planes, [points = fiveKeyCurve().controlPoints()](float value) {
        const int64_t last = points.entries() - 1;
        if (value <= points(0).x || value >= points(last).x)
            return value <= points(0).x ? points(0).y : points(last).y;
        int64_t i = 0;
        while (value >= points(i + 3).x)
            i += 3;
        const auto bezier = [](float p0, float p1, float p2, float p3, float t) {
            const float u = 1.0f - t;
            return u * u * u * p0 + 3.0f * u * u * t * p1 + 3.0f * u * t * t * p2 + t * t * t * p3;
        };
        const float x0 = points(i).x, x1 = points(i + 1).x, x2 = points(i + 2).x, x3 = points(i + 3).x;
        float t = (value - x0) / (x3 - x0);
        for (int step = 0; step < 8; ++step) {
            const float off = bezier(x0, x1, x2, x3, t) - value;
            if (std::abs(off) < 1e-6f)
                break;
            const float u = 1.0f - t;
            t -= off / (3.0f * (u * u * (x1 - x0) + 2.0f * u * t * (x2 - x1) + t * t * (x3 - x2)));
        }
        return bezier(points(i).y, points(i + 1).y, points(i + 2).y, points(i + 3).y, t);
    });
}

/// A function of red, green and blue, pixel by pixel.
template <class T>
Work pixels(Planes& planes, auto change)
{
    return [&planes, change] {
        const T* from = static_cast<const T*>(planes.input);
        T* to = static_cast<T*>(planes.output);
        for (int64_t i = 0; i < planes.values(); i += 3) {
            constexpr float white = PXL_FormatOf<T>::white;
            float r = from[i] / white, g = from[i + 1] / white, b = from[i + 2] / white;
            change(r, g, b);
            to[i] = encode<T>(r);
            to[i + 1] = encode<T>(g);
            to[i + 2] = encode<T>(b);
        }
    };
}

template <class T>
Work saturation(Planes& planes)
{
    return pixels<T>(planes, [](float& r, float& g, float& b) {
        const float most = std::max({r, g, b});
        r = g = b = most > 0.0f ? (most - std::min({r, g, b})) / most : 0.0f;
    });
}

template <class T, bool Bent = false>
Work adjustHSV(Planes& planes)
{
    return pixels<T>(planes, [](float& r, float& g, float& b) {
        if constexpr (Bent) {
            r = std::pow(r, 1.0f / gammaValue);
            g = std::pow(g, 1.0f / gammaValue);
            b = std::pow(b, 1.0f / gammaValue);
        }
        const float most = std::max({r, g, b}), range = most - std::min({r, g, b});
        float hue = 0.0f; // in sixths of a turn
        if (range > 0.0f)
            hue = most == r ? (g - b) / range : most == g ? (b - r) / range + 2.0f : (r - g) / range + 4.0f;
        const float sixfold = std::fmod(hue + hueShift / 60.0f + 6.0f, 6.0f);
        const float s = std::clamp(most > 0.0f ? range / most * satScale : 0.0f, 0.0f, 1.0f);
        const float v = most * valScale;
        const int sector = static_cast<int>(sixfold);
        const float part = sixfold - static_cast<float>(sector);
        const float low = v * (1.0f - s), falling = v * (1.0f - s * part);
        const float rising = v * (1.0f - s * (1.0f - part));
        switch (sector) {
        case 0:
            r = v, g = rising, b = low;
            break;
        case 1:
            r = falling, g = v, b = low;
            break;
        case 2:
            r = low, g = v, b = rising;
            break;
        case 3:
            r = low, g = falling, b = v;
            break;
        case 4:
            r = rising, g = low, b = v;
            break;
        default:
            r = v, g = low, b = falling;
        }
    });
}

const bool added = addPeers({
    {"gamma_add/float", "loop over std::pow", gammaAdd<float, float>},
    {"gamma_add/uint32", "loop over std::pow", gammaAdd<uint32_t, double>},
    {"sin/float", "loop over std::sin", sine},
    {"gamma/float", "loop over std::pow", gamma},
    {"levels/float", "loop over std::pow", levels<float>},
    {"levels/half", "loop over std::pow", levels<fpreal16>},
    {"curve/float", "loop, Newton", curve<float>},
    {"curve/half", "loop, Newton", curve<fpreal16>},
    {"saturation/float", "loop over std::max, min", saturation<float>},
    {"saturation/half", "loop over std::max, min", saturation<fpreal16>},
    {"hsv_adjust/float", "loop over std::fmod", adjustHSV<float>},
    {"hsv_adjust/half", "loop over std::fmod", adjustHSV<fpreal16>},
    {"gamma_hsv/uint16", "loop over std::pow, fmod", adjustHSV<uint16_t, true>},
});

} // namespace bench::loops
