#include <bench/fills.h>

#include <cairo.h>

#include <algorithm>
#include <iterator>
#include <memory>

namespace bench::cairo {

/// The components as pixels of four; which is red does not matter, the last is the alpha or, of RGB24, left.
std::shared_ptr<cairo_surface_t> surface(const Planes& planes, void* data, cairo_format_t format)
{
    const int width =
        format == CAIRO_FORMAT_A8 ? planes.in.width() : planes.in.width() * planes.components() / 4;
    return {cairo_image_surface_create_for_data(static_cast<unsigned char*>(data), format, width,
                                                planes.in.height(),
                                                cairo_format_stride_for_width(format, width)),
            cairo_surface_destroy};
}

/// Draws the second picture onto the output.
template <cairo_operator_t Operator, cairo_format_t Format>
std::shared_ptr<cairo_t> drawing(Planes& planes)
{
    const std::shared_ptr<cairo_t> context(cairo_create(surface(planes, planes.output, Format).get()),
                                           cairo_destroy);
    cairo_set_operator(context.get(), Operator);
    cairo_set_source_surface(context.get(), surface(planes, planes.second().pixels, Format).get(), 0.0, 0.0);
    return context;
}

template <cairo_operator_t Operator>
Work paint(Planes& planes)
{
    return [context = drawing<Operator, CAIRO_FORMAT_ARGB32>(planes)] { cairo_paint(context.get()); };
}

Work paintWithAlpha(Planes& planes)
{
    return [context = drawing<CAIRO_OPERATOR_OVER, CAIRO_FORMAT_RGB24>(planes)] {
        cairo_paint_with_alpha(context.get(), 1.0 - mixWeight);
    };
}

/// With the mask in 8 bits.
Work mask(Planes& planes)
{
    const auto codes = std::make_shared<std::vector<uint8_t>>();
    const auto* values = static_cast<const float*>(planes.second().mask.getImageData(0));
    std::transform(values, values + planes.in.itemCount, std::back_inserter(*codes), encode<uint8_t>);
    return [context = drawing<CAIRO_OPERATOR_OVER, CAIRO_FORMAT_RGB24>(planes), codes,
            mask = surface(planes, codes->data(), CAIRO_FORMAT_A8)] {
        cairo_mask_surface(context.get(), mask.get(), 0.0, 0.0);
    };
}

/// All outlines as one path, which is built each time.
template <Shape Of, cairo_antialias_t Antialias>
Work fill(Planes& planes)
{
    const std::shared_ptr<cairo_t> context(
        cairo_create(surface(planes, planes.output, CAIRO_FORMAT_A8).get()), cairo_destroy);
    cairo_set_antialias(context.get(), Antialias);
    cairo_set_source_rgba(context.get(), 1.0, 1.0, 1.0, 1.0);
    return [context, outlines = outlinesOf(Of, planes.out)] {
        for (const Outline& outline : outlines) {
            for (const UT_Vector2& p : outline) // the first one moves there
                cairo_line_to(context.get(), p.x, p.y);
            cairo_close_path(context.get());
            cairo_new_sub_path(context.get());
        }
        cairo_fill(context.get());
    };
}

constexpr Agreement none = Agreement::none;

const bool added = addPeers({
    {"over/uint8", "cairo OVER", paint<CAIRO_OPERATOR_OVER>},
    {"screen/uint8", "cairo SCREEN", paint<CAIRO_OPERATOR_SCREEN>},
    {"add/uint8", "cairo ADD", paint<CAIRO_OPERATOR_ADD>},
    {"blend_mask/uint8", "cairo OVER, mask", mask, Agreement::allButAlpha},
    {"blend/uint8", "cairo OVER, alpha", paintWithAlpha, Agreement::allButAlpha},
    {"fill_blob/uint8", "cairo fast", fill<Shape::blob, CAIRO_ANTIALIAS_FAST>, none},
    {"fill_blob/uint8", "cairo default", fill<Shape::blob, CAIRO_ANTIALIAS_DEFAULT>, none},
    {"fill_blob/uint8", "cairo best", fill<Shape::blob, CAIRO_ANTIALIAS_BEST>, none},
    {"fill_star/uint8", "cairo fast", fill<Shape::star, CAIRO_ANTIALIAS_FAST>, none},
    {"fill_star/uint8", "cairo default", fill<Shape::star, CAIRO_ANTIALIAS_DEFAULT>, none},
    {"fill_star/uint8", "cairo best", fill<Shape::star, CAIRO_ANTIALIAS_BEST>, none},
    {"fill_triangles/uint8", "cairo fast", fill<Shape::triangles, CAIRO_ANTIALIAS_FAST>, none},
    {"fill_triangles/uint8", "cairo default", fill<Shape::triangles, CAIRO_ANTIALIAS_DEFAULT>, none},
    {"fill_triangles/uint8", "cairo best", fill<Shape::triangles, CAIRO_ANTIALIAS_BEST>, none},
});

} // namespace bench::cairo
