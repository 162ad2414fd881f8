#pragma once

#include <PXL/PXL_Format.h>

#include <cstdint>
#include <string>

namespace host {

/// "uint8", "uint16", "uint32", "half" or "float".
const char* formatName(unsigned char format);

/// The format of a name; throws a usage error for an unknown one.
unsigned char formatOfName(const std::string& name);

/// Float or half: values are not limited to 0 to 1.
inline bool isFloat(unsigned char format)
{
    return format == PXL_FORMAT_float32 || format == PXL_FORMAT_half;
}

/// The one of two formats to compute in: uint8, uint16, uint32, half, float, the later the better.
unsigned char widerFormat(unsigned char a, unsigned char b);

/// The usual format of a file's extension: half for EXR, float for HDR, uint16 for TIFF and PNG, uint8 for
/// others.
unsigned char usualFormat(const std::string& path);

/// `count` elements from one format to another, over the full range of both, by the library's rule.
void convertFormat(unsigned char from, const void* in, unsigned char to, void* out, int64_t count);

} // namespace host
