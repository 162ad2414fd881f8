#include <host/file/Library.h>

#include <host/file/FileFormats.h>
#include <host/text/Error.h>

#include <RU/framework/RU_ConvertRow.h>

#include <dlfcn.h>
#include <filesystem>

namespace host {

namespace {

/// Opens the module, which lies where the library does, for good: pictures hold what it has made.
const FileLibrary& openLibrary()
{
    Dl_info library = {};
    ::dladdr(reinterpret_cast<const void*>(&RUconvertRow), &library);
    std::error_code error;
    const std::string directory = std::filesystem::canonical(library.dli_fname, error).parent_path().string();
    const std::string path = directory + "/" KREILUGE_FILE_MODULE;
    void* const module = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
    const void* const entries = module != nullptr ? ::dlsym(module, "kreilugeFileLibrary") : nullptr;
    if (entries == nullptr)
        throw Error(Error::Kind::Read,
                    "cannot load '" + path + "', which reads and writes images: " + ::dlerror());
    return *static_cast<const FileLibrary*>(entries);
}

const FileLibrary& library()
{
    static const FileLibrary& opened = openLibrary();
    return opened;
}

} // namespace

std::unique_ptr<Reader> openReader(const std::string& path)
{
    return library().openReader(path);
}

std::unique_ptr<Writer> createWriter(const std::string& path, const Picture& picture)
{
    return library().createWriter(path, picture);
}

const FileFormat* fileFormatOf(const std::string& path)
{
    return fileFormatNamed(library().fileFormatName(path));
}

bool holdsWindow(const std::string& path, const Window& data, const Window& display)
{
    const FileFormat* format = fileFormatOf(path);
    return format == nullptr || format->holdsWindow(data, display);
}

bool holdsWindow(const std::string& path, const Window&)
{
    const FileFormat* format = fileFormatOf(path);
    return format == nullptr || format->windows == FileFormat::Windows::All;
}

std::optional<bool> straightIn(const std::string& path)
{
    const FileFormat* format = fileFormatOf(path);
    if (format == nullptr || format->alpha == FileFormat::Alpha::Both)
        return std::nullopt;
    return format->alpha == FileFormat::Alpha::Straight;
}

Image newImage(int width, int height, int channels, unsigned char format, const std::string& description)
{
    return library().newImage(width, height, channels, format, description);
}

void setColourSpace(Image& image, const std::string& name)
{
    library().setColourSpace(image, name);
}

std::vector<std::pair<std::string, std::string>> metadata(const Image& image)
{
    return library().metadata(image);
}

nlohmann::ordered_json metadataJson(const Image& image)
{
    return library().metadataJson(image);
}

void setFileThreads(int count)
{
    library().setFileThreads(count);
}

} // namespace host
