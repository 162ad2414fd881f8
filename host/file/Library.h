#pragma once

#include <host/file/Metadata.h>
#include <host/file/Reader.h>
#include <host/file/Writer.h>

namespace host {

/// What knows image files: a module of its own, as it takes longer to load than most commands run. Each entry does
/// what the function of the host that has its name says.
struct FileLibrary
{
    std::unique_ptr<Reader> (*openReader)(const std::string& path);
    std::unique_ptr<Writer> (*createWriter)(const std::string& path, const Picture& picture);
    std::string (*fileFormatName)(const std::string& path); ///< by the extension; empty for an unknown one
    Image (*newImage)(int width, int height, int channels, unsigned char format,
                      const std::string& description);
    void (*setColourSpace)(Image& image, const std::string& name);
    std::vector<std::pair<std::string, std::string>> (*metadata)(const Image& image);
    nlohmann::ordered_json (*metadataJson)(const Image& image);
    void (*setFileThreads)(int count);
};

} // namespace host

/// What the host looks for in the module.
extern "C" __attribute__((visibility("default"))) const host::FileLibrary kreilugeFileLibrary;
