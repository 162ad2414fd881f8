#include <host/graph/Cook.h>

#include <host/graph/PlaneCook.h>
#include <host/text/Error.h>
#include <host/text/Names.h>

namespace host {

namespace {

/// The library's tables for 8-bit codes span the full range on purpose.
bool ignoresPoints(const Plane& plane, const Operation& operation, const CookSettings& settings)
{
    return (settings.black || settings.white) && plane.format == PXL_FORMAT_uint8 && !operation.isCopy() &&
           !operation.isFilter && !operation.readsAllComponents;
}

Plan planOf(const Image& image, const Operation& operation, const CookSettings& settings)
{
    Plan plan;
    plan.output = settings.depth ? image.withFormat(*settings.depth) : image;
    plan.border = operation.border();
    const std::vector<bool> chosen = choosePlanes(image, settings);
    std::vector<std::unique_ptr<PlaneCook>> cooks;
    bool converts = false, writes = false;
    for (size_t p = 0; p < image.planes.size(); ++p) {
        const Plane& plane = image.planes[p];
        converts = converts || plane.format != plan.output.planes[p].format;
        cooks.push_back(nullptr);
        if (!chosen[p])
            continue;
        checkPoints(plane, image.path, settings);
        plan.planes.push_back(plane.name);
        if (ignoresPoints(plane, operation, settings))
            plan.notes.push_back("'" + image.path + "': plane " + plane.name +
                                 " is uint8 and graded over the full range, whatever the points are");
        if (!operation.isCopy())
            cooks.back() = std::make_unique<PlaneCook>(image, plan.output, p, operation, settings);
        writes = writes || (cooks.back() != nullptr && cooks.back()->writes());
    }
    if (!writes && !operation.isCopy())
        refuse("'" + image.path + "': the scope names no component of " + joined(plan.planes));
    plan.inPlace = !converts && !operation.isFilter;
    for (size_t p = 0; p < cooks.size(); ++p) {
        if (cooks[p] != nullptr)
            plan.works.push_back(std::move(cooks[p]));
        else if (!plan.inPlace)
            plan.works.push_back(std::make_unique<PlaneCopy>(image, plan.output, p));
    }
    if (!operation.isCopy())
        operation.algorithm->initialize(0.0f);
    return plan;
}

} // namespace

CookReport cook(const std::string& input, const std::string& output, const Operation& operation,
                const CookSettings& settings)
{
    return runJob({input}, output, settings, [&](const std::vector<Image>& images) {
        return planOf(images.front(), operation, settings);
    });
}

} // namespace host
