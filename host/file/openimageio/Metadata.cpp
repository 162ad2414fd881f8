#include <host/file/openimageio/Entries.h>
#include <host/file/openimageio/Header.h>
#include <host/text/Text.h>

#include <algorithm>
#include <cmath>

namespace host::openimageio {

namespace {

using Json = nlohmann::ordered_json;

template <class T>
Json numbersJson(const OIIO::ParamValue& value)
{
    const auto count = static_cast<size_t>(value.nvalues()) * value.type().basevalues();
    const T* numbers = static_cast<const T*>(value.data());
    Json list = Json::array();
    for (size_t i = 0; i < count; ++i)
        if constexpr (std::is_same_v<T, float>)
            list.push_back(std::isfinite(numbers[i]) ? Json(doubleOf(numbers[i])) : Json());
        else
            list.push_back(numbers[i]);
    return count == 1 ? list.front() : list;
}

Json stringsJson(const OIIO::ParamValue& value)
{
    const auto count = static_cast<int>(static_cast<size_t>(value.nvalues()) * value.type().basevalues());
    Json list = Json::array();
    for (int i = 0; i < count; ++i)
        list.push_back(value.get_string_indexed(i));
    return count == 1 ? list.front() : list;
}

Json valueJson(const OIIO::ParamValue& value)
{
    if (value.type() == OIIO::TypeTimeCode || value.type() == OIIO::TypeKeyCode)
        return OIIO::ImageSpec::metadata_val(value, false);
    switch (value.type().basetype) {
    case OIIO::TypeDesc::STRING:
        return stringsJson(value);
    case OIIO::TypeDesc::INT8:
        return numbersJson<int8_t>(value);
    case OIIO::TypeDesc::UINT8:
        return numbersJson<uint8_t>(value);
    case OIIO::TypeDesc::INT16:
        return numbersJson<int16_t>(value);
    case OIIO::TypeDesc::UINT16:
        return numbersJson<uint16_t>(value);
    case OIIO::TypeDesc::INT32:
        return numbersJson<int32_t>(value);
    case OIIO::TypeDesc::UINT32:
        return numbersJson<uint32_t>(value);
    case OIIO::TypeDesc::INT64:
        return numbersJson<int64_t>(value);
    case OIIO::TypeDesc::UINT64:
        return numbersJson<uint64_t>(value);
    case OIIO::TypeDesc::FLOAT:
        return numbersJson<float>(value);
    case OIIO::TypeDesc::DOUBLE:
        return numbersJson<double>(value);
    default:
        return OIIO::ImageSpec::metadata_val(value, false);
    }
}

} // namespace

std::vector<std::pair<std::string, std::string>> metadata(const Image& image)
{
    std::vector<std::pair<std::string, std::string>> rows;
    for (const OIIO::ParamValue& value : image.header->spec.extra_attribs) {
        const std::string name = value.name().string();
        if (name != "ICCProfile" && !name.starts_with("ICCProfile:"))
            rows.emplace_back(name, OIIO::ImageSpec::metadata_val(value, true));
    }
    return rows;
}

Json metadataJson(const Image& image)
{
    Json all = Json::object();
    const auto shown = openimageio::metadata(image);
    for (const OIIO::ParamValue& value : image.header->spec.extra_attribs) {
        const std::string name = value.name().string();
        if (std::any_of(shown.begin(), shown.end(), [&](const auto& row) { return row.first == name; }))
            all[name] = valueJson(value);
    }
    return all;
}

} // namespace host::openimageio
