#pragma once

#include <GEO/GB_PrimitiveGroup.h>
#include <GEO/GEO_Primitive.h>
#include <SYS/SYS_API.h>
#include <UT/UT_Vector4.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

/// Geometry: points with their attributes, primitives that connect them, and groups of primitives. It owns them
/// all; a copy has its own. Points, attributes and primitives go by number, counted from 0; primitives and groups
/// stay where they are in memory as long as they exist.
class PLATFORM_API GEO_Detail
{
public:
    GEO_Detail() = default;
    GEO_Detail(const GEO_Detail& other);
    GEO_Detail(GEO_Detail&&) = default;
    GEO_Detail& operator=(const GEO_Detail& other);
    GEO_Detail& operator=(GEO_Detail&&) = default;
    virtual ~GEO_Detail() = default;

    /// Leaves nothing, no attribute either.
    void clear();

    int64_t pointCount() const { return static_cast<int64_t>(positions_.size()); }
    /// Result: the new point's number. Its attributes have their defaults.
    int64_t appendPoint(const UT_Vector4& position = {0.0f, 0.0f, 0.0f, 1.0f});
    const UT_Vector4& position(int64_t point) const { return positions_[static_cast<size_t>(point)]; }
    void setPosition(int64_t point, const UT_Vector4& p) { positions_[static_cast<size_t>(point)] = p; }

    /// Adds floats to every point: `bytes` / 4 of them, at least one. Result: the attribute's number; that of the
    /// one that has the name already, which stays as it is.
    int64_t addFloatAttribute(const std::string& name, int64_t bytes = 4, float initial = 0.0f);
    /// The attribute "Alpha", which is 1 by default.
    int64_t addAlphaAttribute();
    int64_t findAttribute(const std::string& name) const; ///< -1 when there is none
    float value(int64_t attribute, int64_t point, int64_t component = 0) const;
    void setValue(int64_t attribute, int64_t point, float value, int64_t component = 0);
    float alpha(int64_t point) const; ///< 1 without the attribute
    /// Does nothing without the attribute.
    void setAlpha(int64_t point, float alpha);

    /// All that a point has: x, y, z, w and its attributes in the order in which they were added.
    using Values = std::vector<double>;
    Values pointValues(int64_t point) const;
    void setPointValues(int64_t point, const Values& values);
    int64_t appendPoint(const Values& values);

    int64_t primitiveCount() const { return static_cast<int64_t>(primitives_.size()); }
    const GEO_Primitive* primitive(int64_t index) const
    {
        return primitives_[static_cast<size_t>(index)].get();
    }
    GEO_Primitive* primitive(int64_t index) { return primitives_[static_cast<size_t>(index)].get(); }
    void appendPrimitive(std::unique_ptr<GEO_Primitive> primitive);

    /// A new group, or the one that has the name already.
    GB_PrimitiveGroup* addPrimitiveGroup(const std::string& name);
    GB_PrimitiveGroup* findPrimitiveGroup(const std::string& name); ///< null when there is none
    const std::deque<GB_PrimitiveGroup>& primitiveGroups() const { return groups_; }

protected:
    using Primitives = std::vector<std::unique_ptr<GEO_Primitive>>;

    /// Puts `primitives` in the place of all; `from` tells for each the number of the one that it comes from.
    /// Groups then have those that come from theirs. Points that only the old ones used go.
    void replacePrimitives(Primitives primitives, const std::vector<int64_t>& from);
    void dropUnusedPoints() { keepPoints(usedPoints()); }

private:
    struct Attribute
    {
        std::string name;
        int64_t size; ///< floats for each point
        float initial;
        std::vector<float> values;
    };

    float& valueAt(int64_t attribute, int64_t point, int64_t component);
    std::vector<char> usedPoints() const;
    void keepPoints(const std::vector<char>& keep);

    std::vector<UT_Vector4> positions_;
    std::vector<Attribute> attributes_;
    Primitives primitives_;
    std::deque<GB_PrimitiveGroup> groups_;
};
