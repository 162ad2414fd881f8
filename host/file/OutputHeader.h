#pragma once

#include <host/file/FileFormats.h>
#include <host/file/Header.h>
#include <host/file/Picture.h>

#include <vector>

namespace host {

/// The header of an output: the input's, less what would convert values, speaks of the old pixels or cannot
/// be written from top to bottom.
OIIO::ImageSpec outputSpec(const Image& image, const FileFormat& format);

/// The headers of all parts, with names of their own and what the file format wants to be the same in all.
std::vector<OIIO::ImageSpec> outputSpecs(const Picture& picture, const FileFormat& format);

} // namespace host
