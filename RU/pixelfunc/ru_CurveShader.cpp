#include <RU/pixelfunc/ru_CurveShader.h>

namespace {

// Roots within 0.0005 of 0..1 count as inside. The largest one there is taken, as on the CPU; the roots of
// the trigonometric form ascend in the order A, A - 6.2832, A + 6.2832.
constexpr std::string_view text = R"(
FLOAT quadratic%d(FLOAT b, FLOAT c, FLOAT d)
{
    if (abs(b) < 0.00005)
        return abs(c) < 0.00005 ? 0.0 : -d / c;
    FLOAT q = c*c - 4.0*b*d;
    if (q < 0.0)
        return 0.0;
    q = -0.5 * (c < 0.0 ? c - sqrt(q) : c + sqrt(q));
    FLOAT low = q / b;
    FLOAT high = q == 0.0 ? low : d / q;
    if (low > high) {
        q = low;
        low = high;
        high = q;
    }
    if (high >= -0.0005 && high <= 1.0005)
        return high;
    return low >= -0.0005 && low <= 1.0005 ? low : 0.0;
}

FLOAT CCevalCurve%d(FLOAT x, INT coffset, INT numsplines, INT extend, FLOAT preslope, FLOAT postslope,
                    out INT i, out VEC4 splx, out VEC4 sply,
                    out FLOAT a, out FLOAT b, out FLOAT c, out FLOAT d, out FLOAT Q, out FLOAT R,
                    out FLOAT Q3, out FLOAT A, out FLOAT B, out FLOAT r)
{
    if (numsplines < 4)
        return 0.0;
    a = ABS_points%d(0, coffset);
    b = ABS_points%d(0, coffset + 1);
    if (x <= a)
        return extend != 0 ? (x - a) * preslope + b : b;
    a = ABS_points%d(numsplines - 1, coffset);
    b = ABS_points%d(numsplines - 1, coffset + 1);
    if (x >= a)
        return extend != 0 ? (x - a) * postslope + b : b;

    for (i = 0; i < numsplines - 4; i += 3)
        if (ABS_points%d(i, coffset) <= x && x < ABS_points%d(i + 3, coffset))
            break;
    splx = VEC4(ABS_points%d(i, coffset), ABS_points%d(i + 1, coffset),
                ABS_points%d(i + 2, coffset), ABS_points%d(i + 3, coffset));
    sply = VEC4(ABS_points%d(i, coffset + 1), ABS_points%d(i + 1, coffset + 1),
                ABS_points%d(i + 2, coffset + 1), ABS_points%d(i + 3, coffset + 1));

    a = 3.0 * (splx.y - splx.z) + (splx.w - splx.x);
    b = 3.0 * ((splx.x - splx.y) + (splx.z - splx.y));
    c = 3.0 * (splx.y - splx.x);
    d = splx.x - x;
    if (abs(a) < 0.00005) {
        r = quadratic%d(b, c, d);
    } else {
        b /= a;
        c /= a;
        d /= a;
        Q = (b*b - 3.0*c) / 9.0;
        R = (2.0*b*b*b - 9.0*b*c + 27.0*d) / 54.0;
        Q3 = Q*Q*Q;
        b /= 3.0;
        if (R*R < Q3) {
            A = acos(clamp(R / sqrt(Q3), -1.0, 1.0));
            B = -2.0 * sqrt(Q);
            r = B * cos((A + 6.2832) / 3.0) - b;
            if (r < -0.0005 || r > 1.0005)
                r = B * cos((A - 6.2832) / 3.0) - b;
            if (r < -0.0005 || r > 1.0005)
                r = B * cos(A / 3.0) - b;
            if (r < -0.0005 || r > 1.0005)
                r = 0.0;
        } else {
            A = pow(abs(R) + sqrt(R*R - Q3), 1.0 / 3.0);
            if (R > 0.0)
                A = -A;
            B = abs(A) < 0.00005 ? 0.0 : Q / A;
            r = A + B - b;
        }
    }
    a = 1.0 - r;
    return a*a*a * sply.x + 3.0 * a*a*r * sply.y + 3.0 * a*r*r * sply.z + r*r*r*r * sply.w;
}
)";

} // namespace

UT_String ru_curveShader(std::string_view index)
{
    UT_String result;
    size_t start = 0;
    for (size_t mark = 0; (mark = text.find("%d", start)) != std::string_view::npos; start = mark + 2)
        result.append(text.substr(start, mark - start)).append(index);
    return result.append(text.substr(start));
}
