#include <GEO/GEO_Detail.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

const char* const alphaName = "Alpha";

}

GEO_Detail::GEO_Detail(const GEO_Detail& other)
    : positions_(other.positions_), attributes_(other.attributes_), groups_(other.groups_)
{
    primitives_.reserve(other.primitives_.size());
    for (const auto& primitive : other.primitives_)
        primitives_.push_back(primitive->clone());
}

GEO_Detail& GEO_Detail::operator=(const GEO_Detail& other)
{
    if (this != &other)
        *this = GEO_Detail(other);
    return *this;
}

void GEO_Detail::clear()
{
    *this = GEO_Detail();
}

int64_t GEO_Detail::appendPoint(const UT_Vector4& position)
{
    positions_.push_back(position);
    for (Attribute& attribute : attributes_)
        attribute.values.resize(positions_.size() * static_cast<size_t>(attribute.size), attribute.initial);
    return pointCount() - 1;
}

int64_t GEO_Detail::addFloatAttribute(const std::string& name, int64_t bytes, float initial)
{
    const int64_t found = findAttribute(name);
    if (found >= 0)
        return found;
    const int64_t size = std::max<int64_t>(bytes / int64_t(sizeof(float)), 1);
    std::vector<float> values(positions_.size() * static_cast<size_t>(size), initial);
    attributes_.push_back({name, size, initial, std::move(values)});
    return static_cast<int64_t>(attributes_.size()) - 1;
}

int64_t GEO_Detail::addAlphaAttribute()
{
    return addFloatAttribute(alphaName, sizeof(float), 1.0f);
}

int64_t GEO_Detail::findAttribute(const std::string& name) const
{
    const auto found = std::find_if(attributes_.begin(), attributes_.end(),
                                    [&name](const Attribute& attribute) { return attribute.name == name; });
    return found == attributes_.end() ? -1 : found - attributes_.begin();
}

float& GEO_Detail::valueAt(int64_t attribute, int64_t point, int64_t component)
{
    Attribute& found = attributes_[static_cast<size_t>(attribute)];
    return found.values[static_cast<size_t>(point * found.size + component)];
}

float GEO_Detail::value(int64_t attribute, int64_t point, int64_t component) const
{
    return const_cast<GEO_Detail*>(this)->valueAt(attribute, point, component);
}

void GEO_Detail::setValue(int64_t attribute, int64_t point, float value, int64_t component)
{
    valueAt(attribute, point, component) = value;
}

float GEO_Detail::alpha(int64_t point) const
{
    const int64_t attribute = findAttribute(alphaName);
    return attribute < 0 ? 1.0f : value(attribute, point);
}

void GEO_Detail::setAlpha(int64_t point, float alpha)
{
    const int64_t attribute = findAttribute(alphaName);
    if (attribute >= 0)
        setValue(attribute, point, alpha);
}

GEO_Detail::Values GEO_Detail::pointValues(int64_t point) const
{
    const UT_Vector4& p = position(point);
    Values values = {p.x, p.y, p.z, p.w};
    for (const Attribute& attribute : attributes_) {
        const auto first = attribute.values.begin() + point * attribute.size;
        values.insert(values.end(), first, first + attribute.size);
    }
    return values;
}

void GEO_Detail::setPointValues(int64_t point, const Values& values)
{
    const auto f = [&values](size_t i) { return static_cast<float>(values[i]); };
    setPosition(point, {f(0), f(1), f(2), f(3)});
    size_t at = 4;
    for (Attribute& attribute : attributes_)
        for (int64_t i = 0; i < attribute.size; ++i, ++at)
            attribute.values[static_cast<size_t>(point * attribute.size + i)] = f(at);
}

int64_t GEO_Detail::appendPoint(const Values& values)
{
    const int64_t point = appendPoint();
    setPointValues(point, values);
    return point;
}

void GEO_Detail::appendPrimitive(std::unique_ptr<GEO_Primitive> primitive)
{
    primitives_.push_back(std::move(primitive));
}

GB_PrimitiveGroup* GEO_Detail::findPrimitiveGroup(const std::string& name)
{
    const auto found = std::find_if(groups_.begin(), groups_.end(),
                                    [&name](const GB_PrimitiveGroup& group) { return group.name() == name; });
    return found == groups_.end() ? nullptr : &*found;
}

GB_PrimitiveGroup* GEO_Detail::addPrimitiveGroup(const std::string& name)
{
    if (GB_PrimitiveGroup* found = findPrimitiveGroup(name))
        return found;
    groups_.emplace_back(name);
    return &groups_.back();
}

std::vector<char> GEO_Detail::usedPoints() const
{
    std::vector<char> used(positions_.size(), 0);
    for (const auto& primitive : primitives_)
        for (int64_t i = 0; i < primitive->vertexCount(); ++i)
            if (primitive->vertexPoint(i) >= 0)
                used[static_cast<size_t>(primitive->vertexPoint(i))] = 1;
    return used;
}

void GEO_Detail::keepPoints(const std::vector<char>& keep)
{
    std::vector<int64_t> number(keep.size(), -1);
    int64_t kept = 0;
    for (size_t i = 0; i < keep.size(); ++i) {
        if (!keep[i])
            continue;
        const auto to = static_cast<size_t>(kept);
        number[i] = kept++;
        positions_[to] = positions_[i];
        for (Attribute& attribute : attributes_) {
            const auto size = static_cast<size_t>(attribute.size);
            for (size_t k = 0; k < size; ++k)
                attribute.values[to * size + k] = attribute.values[i * size + k];
        }
    }
    positions_.resize(static_cast<size_t>(kept));
    for (Attribute& attribute : attributes_)
        attribute.values.resize(static_cast<size_t>(kept * attribute.size));
    for (const auto& primitive : primitives_)
        for (int64_t i = 0; i < primitive->vertexCount(); ++i)
            if (primitive->vertexPoint(i) >= 0)
                primitive->setVertexPoint(i, number[static_cast<size_t>(primitive->vertexPoint(i))]);
}

void GEO_Detail::replacePrimitives(Primitives primitives, const std::vector<int64_t>& from)
{
    const std::vector<char> before = usedPoints();
    std::vector<std::vector<int64_t>> successors(primitives_.size());
    for (size_t i = 0; i < from.size(); ++i)
        successors[static_cast<size_t>(from[i])].push_back(static_cast<int64_t>(i));
    for (GB_PrimitiveGroup& group : groups_) {
        GB_PrimitiveGroup next(group.name());
        for (const int64_t old : group)
            for (const int64_t successor : successors[static_cast<size_t>(old)])
                next.append(successor);
        group = std::move(next);
    }
    primitives_ = std::move(primitives);

    std::vector<char> keep = usedPoints();
    for (size_t i = 0; i < keep.size(); ++i)
        keep[i] = keep[i] || !before[i];
    keepPoints(keep);
}
