#include <TIL/TIL_Region.h>

TIL_Region::TIL_Region(const TIL_Plane& of, int left, int bottom, int right, int top)
    : plane(&of), x1(left), y1(bottom), x2(right), y2(top)
{
    const int64_t bytes = static_cast<int64_t>(width()) * height() * PXLbytesPerElement(of.formatCode);
    for (int c = 0; c < of.componentCount && c < 4; ++c)
        data_[c] = TIL_Buffer(bytes);
}
