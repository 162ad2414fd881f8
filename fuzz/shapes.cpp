// Files of shapes, as JSON or as a drawing: what can be read can be made ready to be drawn.
#include "Bytes.h"

#include <host/shape/ShapeFill.h>
#include <host/shape/ShapesJson.h>
#include <host/shape/ShapesSvg.h>
#include <host/text/Error.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
try {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const host::Shapes shapes =
        text.starts_with("<") ? host::shapesOfSvg(text, "fuzz") : host::shapesOfJson(text, "fuzz");
    host::Canvas canvas;
    canvas.window = {0, 0, 70, 60};
    for (const host::Shape& shape : shapes.shapes) {
        const host::ShapePoints points = shape.at(3.5);
        check(points.size() == shape.keys.front().points.size(), "points stay as many");
        const host::ShapeFill fill(shape, points, canvas);
    }
    return 0;
} catch (const host::Error&) {
    return 0;
}
