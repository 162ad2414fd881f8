#pragma once

#include <host/file/Library.h>

/// The module's entries, as FileLibrary has them.
namespace host::openimageio {

std::unique_ptr<Reader> openReader(const std::string& path);
std::unique_ptr<Writer> createWriter(const std::string& path, const Picture& picture);
std::string fileFormatName(const std::string& path);
Image newImage(int width, int height, int channels, unsigned char format, const std::string& description);
void setColourSpace(Image& image, const std::string& name);
std::vector<std::pair<std::string, std::string>> metadata(const Image& image);
nlohmann::ordered_json metadataJson(const Image& image);
void setFileThreads(int count);

} // namespace host::openimageio
