#include <bench/fills.h>

#include <agg_pixfmt_gray.h>
#include <agg_rasterizer_scanline_aa.h>
#include <agg_renderer_base.h>
#include <agg_renderer_scanline.h>
#include <agg_rendering_buffer.h>
#include <agg_scanline_u.h>

namespace bench::agg {

using Rasterizer = ::agg::rasterizer_scanline_aa<>;

void addPath(Rasterizer& rasterizer, const Outline& outline)
{
    rasterizer.move_to_d(outline[0].x, outline[0].y);
    for (const UT_Vector2& p : outline)
        rasterizer.line_to_d(p.x, p.y);
    rasterizer.close_polygon();
}

/// All outlines as one path, or one after another.
template <class Pixels, Shape Of, bool AtOnce>
Work fill(Planes& planes)
{
    return [&planes, outlines = outlinesOf(Of, planes.out)] {
        const int width = planes.out.width(), height = planes.out.height();
        ::agg::rendering_buffer buffer(static_cast<unsigned char*>(planes.output),
                                       static_cast<unsigned>(width), static_cast<unsigned>(height),
                                       width * Pixels::pix_width);
        Pixels pixels(buffer);
        ::agg::renderer_base<Pixels> target(pixels);
        Rasterizer rasterizer(1 << 14); // blocks of cells; it drops what exceeds them
        ::agg::scanline_u8 scanline;
        const auto render = [&] {
            ::agg::render_scanlines_aa_solid(rasterizer, scanline, target,
                                             typename Pixels::color_type(Pixels::color_type::full_value()));
            rasterizer.reset();
        };
        for (const Outline& outline : outlines) {
            addPath(rasterizer, outline);
            if (!AtOnce)
                render();
        }
        if (AtOnce)
            render();
    };
}

using Bytes = ::agg::pixfmt_gray8;
using Floats = ::agg::pixfmt_gray32;
constexpr Agreement none = Agreement::none;

const bool added = addPeers({
    {"fill_blob/uint8", "AGG", fill<Bytes, Shape::blob, true>, none},
    {"fill_blob/float", "AGG", fill<Floats, Shape::blob, true>, none},
    {"fill_blob_4x4/uint8", "AGG", fill<Bytes, Shape::blob, true>, none},
    {"fill_blob_4x4/float", "AGG", fill<Floats, Shape::blob, true>, none},
    {"fill_star/uint8", "AGG", fill<Bytes, Shape::star, true>, none},
    {"fill_star/float", "AGG", fill<Floats, Shape::star, true>, none},
    {"fill_star_4x4/uint8", "AGG", fill<Bytes, Shape::star, true>, none},
    {"fill_star_4x4/float", "AGG", fill<Floats, Shape::star, true>, none},
    {"fill_triangles/uint8", "AGG, one by one", fill<Bytes, Shape::triangles, false>, none},
    {"fill_triangles/uint8", "AGG, one path", fill<Bytes, Shape::triangles, true>, none},
    {"fill_triangles/float", "AGG, one by one", fill<Floats, Shape::triangles, false>, none},
    {"fill_triangles/float", "AGG, one path", fill<Floats, Shape::triangles, true>, none},
    {"fill_triangles_4x4/uint8", "AGG, one by one", fill<Bytes, Shape::triangles, false>, none},
    {"fill_triangles_4x4/float", "AGG, one by one", fill<Floats, Shape::triangles, false>, none},
});

} // namespace bench::agg
