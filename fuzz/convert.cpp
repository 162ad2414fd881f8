// Rows between all formats, one of them unknown, and any points.
#include "Bytes.h"

#include <RU/framework/RU_ConvertRow.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Bytes bytes(data, size);
    TIL_Plane planes[2];
    for (TIL_Plane& plane : planes) {
        plane = TIL_Plane(static_cast<unsigned char>(bytes.below(6)), 1);
        plane.blackWhitePoints = bytes.flag();
        plane.blackPoint = bytes.bits<unsigned int>();
        plane.whitePoint = bytes.bits<unsigned int>();
    }
    const int inSize = PXLbytesPerElement(planes[0].formatCode),
              outSize = PXLbytesPerElement(planes[1].formatCode);
    const int count = bytes.below(65);
    Row<unsigned char> in(bytes, count * inSize, 4);
    Row<unsigned char> whole(bytes, count * outSize, 4), single = whole;
    const int done = RUconvertRow(planes[0], in.data(), planes[1], whole.data(), count);
    check(done == (inSize > 0 && outSize > 0 ? 1 : 0), "known formats are converted");
    for (int i = 0; i < count; ++i)
        RUconvertRow(planes[0], in.data() + i * inSize, planes[1], single.data() + i * outSize, 1);
    check(whole.same(single), "a row is its elements");
    return 0;
}
