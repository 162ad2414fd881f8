// A program outside the source tree: an algorithm of its own and one of the library's, on tiles of its own.
#include <RU/filter/RU_EdgeDetect.h>
#include <RU/gpgpu/RU_ShaderSources.h>
#include <TIL/TIL_Region.h>

#include <algorithm>
#include <cstdio>
#include <type_traits>

namespace {

/// 0.0 left of x = 0, 1.0 from there on.
template <class T, bool FullRange>
class StepOp : public RU_GeneratorOp<T, FullRange>
{
public:
    using RU_GeneratorOp<T, FullRange>::RU_GeneratorOp;

    int generate(TIL_TileList* out, float, int, void*) override
    {
        T black = static_cast<T>(0), white = static_cast<T>(PXL_FormatOf<T>::white);
        if constexpr (!FullRange && std::is_integral_v<T>) {
            black = static_cast<T>(out->blackPoint);
            white = static_cast<T>(out->whitePoint);
        }
        T* data;
        out->tiles[0]->getImageData(data);
        for (int i = 0; i < out->itemCount; i++)
            data[i] = out->x1 + i % out->width() < 0 ? black : white;
        return 1;
    }
};

class Step : public RU_GeneratorFactories<StepOp>
{
};

int failures = 0;

void expect(bool holds, const char* what)
{
    if (!holds) {
        std::printf("failed: %s\n", what);
        failures++;
    }
}

/// A step generated on pixels -2 to 1 of one row.
template <class T>
void checkOwnAlgorithm(const TIL_Plane& plane, T black, T white, const char* what)
{
    TIL_TileList list(plane, -2, 0, 1, 0);
    TIL_Tile tile(plane.formatCode, list.width(), list.height());
    list.tiles[0] = &tile;

    Step step;
    expect(step.initialize(0) == 1, what);
    T* data;
    tile.getImageData(data);

    const T generated[] = {black, black, white, white};
    expect(step.generate(&list, 0, nullptr, 0, nullptr) == 1, what);
    expect(std::equal(generated, generated + 4, data), what);
}

/// A step of 1/8 between columns 1 and 2 of four, around which the Sobel operator gives 4/8.
void checkEdgeDetect()
{
    const TIL_Plane plane(PXL_FORMAT_float32, 1);
    TIL_Region in(plane, -1, -1, 4, 1);
    auto* from = static_cast<float*>(in.getImageData(0));
    for (int i = 0; i < in.width() * in.height(); i++)
        from[i] = in.x1 + i % in.width() >= 2 ? 0.125f : 0.0f;

    TIL_TileList out(plane, 0, 0, 3, 0);
    TIL_Tile tile(plane.formatCode, out.width(), out.height());
    out.tiles[0] = &tile;

    RU_EdgeDetect edge;
    expect(edge.initialize(0) == 1, "edge detect initializes");
    expect(edge.filter(&out, &in, 0, nullptr, 0, nullptr) == 1, "edge detect works");
    const float* data;
    tile.getImageData(data);
    const float strengths[] = {0.0f, 0.5f, 0.5f, 0.0f};
    expect(std::equal(strengths, strengths + 4, data), "edge strengths of a step");
}

/// The installed libraries find the installed files.
void checkShaderSources()
{
    UT_String text;
    RUgetToHSVConvertGPU(text);
    expect(text.view().find("VEC3 toHSV(") != std::string_view::npos, "text of toHSV");
    RUgetFromHSVConvertGPU(text);
    expect(text.view().find("VEC3 fromHSV(") != std::string_view::npos, "text of fromHSV");
}

} // namespace

int main()
{
    checkOwnAlgorithm<float>(TIL_Plane(PXL_FORMAT_float32, 1), 0, 1, "step in float");

    TIL_Plane points(PXL_FORMAT_uint16, 1);
    points.blackWhitePoints = true;
    points.blackPoint = 1000;
    points.whitePoint = 60000;
    checkOwnAlgorithm<unsigned short>(points, 1000, 60000, "step between points");

    checkEdgeDetect();
    checkShaderSources();
    if (failures == 0)
        std::printf("all checks passed\n");
    return failures == 0 ? 0 : 1;
}
