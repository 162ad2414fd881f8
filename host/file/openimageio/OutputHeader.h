#pragma once

#include <host/file/FileFormats.h>
#include <host/file/Picture.h>
#include <host/file/openimageio/Header.h>

#include <vector>

namespace host::openimageio {

/// The headers of an output's parts: the input's, less what would convert values, speaks of the old pixels or
/// cannot be written from top to bottom. Parts of several get names of their own.
std::vector<OIIO::ImageSpec> outputSpecs(const Picture& picture, const FileFormat& format);

} // namespace host::openimageio
