#pragma once

#include <OpenImageIO/imageio.h>

#include <string>

namespace host {

/// What the file layer knows of an image.
struct Header
{
    OIIO::ImageSpec spec;
};

namespace openimageio {

/// How many rows to read or write in one call: few, so that a cancelled job stops soon, but enough for the
/// file format's own threads to share.
int rowsPerCall(const std::string& fileFormat, const OIIO::ImageSpec& spec);

} // namespace openimageio
} // namespace host
