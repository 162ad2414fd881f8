#include <host/file/Format.h>

#include <host/text/Error.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <RU/framework/RU_ConvertRow.h>

#include <algorithm>
#include <map>

namespace host {

namespace {

struct FormatName
{
    unsigned char format;
    const char* name;
};

/// From the narrowest to the widest.
constexpr FormatName formatNames[] = {{PXL_FORMAT_uint8, "uint8"},
                                      {PXL_FORMAT_uint16, "uint16"},
                                      {PXL_FORMAT_uint32, "uint32"},
                                      {PXL_FORMAT_half, "half"},
                                      {PXL_FORMAT_float32, "float"}};

const FormatName* entryOf(unsigned char format)
{
    return std::find_if(std::begin(formatNames), std::end(formatNames),
                        [&](const FormatName& entry) { return entry.format == format; });
}

} // namespace

const char* formatName(unsigned char format)
{
    return entryOf(format)->name;
}

unsigned char formatOfName(const std::string& name)
{
    std::vector<std::string> known;
    for (const FormatName& entry : formatNames) {
        if (name == entry.name)
            return entry.format;
        known.emplace_back(entry.name);
    }
    static const std::map<std::string, const char*> others = {
        {"float16", "half"}, {"fp16", "half"},    {"16f", "half"},   {"float32", "float"}, {"fp32", "float"},
        {"32f", "float"},    {"double", "float"}, {"8", "uint8"},    {"8i", "uint8"},      {"byte", "uint8"},
        {"16", "uint16"},    {"short", "uint16"}, {"16i", "uint16"}, {"32", "uint32"},     {"int", "uint32"}};
    if (const auto other = others.find(name); other != others.end())
        refuse("unknown depth '" + name + "'; did you mean '" + other->second + "'?");
    refuseName("unknown depth", name, known);
}

unsigned char widerFormat(unsigned char a, unsigned char b)
{
    return std::max(entryOf(a), entryOf(b))->format;
}

unsigned char usualFormat(const std::string& path)
{
    const std::string extension = extensionOf(path);
    if (extension == ".exr")
        return PXL_FORMAT_half;
    if (extension == ".hdr")
        return PXL_FORMAT_float32;
    return extension == ".png" || extension == ".tif" || extension == ".tiff" ? PXL_FORMAT_uint16
                                                                              : PXL_FORMAT_uint8;
}

void convertFormat(unsigned char from, const void* in, unsigned char to, void* out, int64_t count)
{
    RUconvertRow(TIL_Plane(from, 1), in, TIL_Plane(to, 1), out, count);
}

} // namespace host
