#pragma once

#include <SYS/SYS_API.h>
#include <TIL/TIL_Buffer.h>
#include <TIL/TIL_Plane.h>

#include <utility>

/// A rectangle of one plane, larger than a tile: what filters and binary operations read, and may write.
/// Each component is width x height elements, x fastest, rows without a gap. Does not own the plane.
class PLATFORM_API TIL_Region
{
public:
    TIL_Region() = default;
    /// Over an inclusive rectangle, with zeroed data for the plane's components.
    TIL_Region(const TIL_Plane& plane, int x1, int y1, int x2, int y2);

    int width() const { return x2 - x1 + 1; }
    int height() const { return y2 - y1 + 1; }

    /// The first element of component 0 to 3; null when the region lacks it.
    void* getImageData(int component) { return data_[component].data(); }
    const void* getImageData(int component) const { return data_[component].data(); }

    /// Leaves the region without a component.
    void removeImageData(int component) { data_[component] = TIL_Buffer(); }

    /// Gives a component memory that holds its pixels already, or takes it away again.
    void setImageData(int component, TIL_Buffer&& data) { data_[component] = std::move(data); }
    TIL_Buffer takeImageData(int component) { return std::move(data_[component]); }

    const TIL_Plane* plane = nullptr;
    int x1 = 0, y1 = 0, x2 = -1, y2 = -1;

private:
    TIL_Buffer data_[4];
};
