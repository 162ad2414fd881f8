#include <host/graph/Combine.h>

#include <host/file/Format.h>
#include <host/file/Writer.h>
#include <host/graph/CombinePlanes.h>
#include <host/text/Error.h>
#include <host/text/Names.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

namespace host {

namespace {

using Composite = Combination::CompositeSettings;
using Blend = Combination::BlendSettings;
using Chroma = Combination::ChromaSettings;

/// Luminance stands for red, green and blue.
Plane asColour(Plane plane)
{
    plane.channel[1] = plane.channel[2] = plane.channel[0];
    return plane;
}

/// Throws when a plane with luminance alone were to take in colour.
void checkColours(const Image& first, const Plane& a, const Image& second, const Plane& b)
{
    if (a.luminance && b.colour && !b.luminance)
        refuse("'" + first.path + "': plane " + a.name + " is luminance and cannot take in the colours of '" +
               second.path + "'");
}

Window enclosing(const Image& a, const Image& b)
{
    const auto end = [](int at, int size) { return static_cast<int64_t>(at) + size; };
    const int x = std::min(a.data.x, b.data.x), y = std::min(a.data.y, b.data.y);
    const int64_t width = std::max(end(a.data.x, a.data.width), end(b.data.x, b.data.width)) - x;
    const int64_t height = std::max(end(a.data.y, a.data.height), end(b.data.y, b.data.height)) - y;
    if (std::max(width, height) > std::numeric_limits<int>::max())
        refuse("'" + a.path + "' and '" + b.path + "' lie too far apart: " + describe(a.data) + " and " +
               describe(b.data));
    return {x, y, static_cast<int>(width), static_cast<int>(height)};
}

/// Makes the plan of a combination.
class Planner
{
public:
    Planner(const std::vector<Image>& images, const CombineInputs& inputs, const std::string& output,
            const CookSettings& settings);

    Plan plan(const Combination& combination);

private:
    void choose(bool withAlphas);
    const Plane* partnerOf(const Plane& plane) const;
    const Plane* colourOf(const Plane& alpha) const;
    void noteOthers(bool withAlphas);
    void setWindow();

    std::unique_ptr<PlaneWork> work(size_t plane, const Composite& composite);
    std::unique_ptr<PlaneWork> work(size_t plane, const Blend& blend);
    std::unique_ptr<PlaneWork> work(size_t plane, const Chroma& chroma);
    PlaneInput matte(bool one) const;
    TIL_Plane workCodes(size_t plane) const;

    const Image& first_;
    const Image* second_;
    const Image* matte_;
    std::optional<int> matteComponent_;
    const std::string& path_;
    const CookSettings& settings_;
    std::vector<bool> chosen_;
    std::vector<const Plane*> partners_; ///< by plane of the first image, that of the second; null for none
    Plan plan_;
};

Planner::Planner(const std::vector<Image>& images, const CombineInputs& inputs, const std::string& output,
                 const CookSettings& settings)
    : first_(images.front()), second_(inputs.second ? &images[1] : nullptr),
      matte_(inputs.matte ? &images.back() : nullptr), matteComponent_(inputs.matteComponent), path_(output),
      settings_(settings)
{
}

Plan Planner::plan(const Combination& combination)
{
    const bool composites = std::holds_alternative<Composite>(combination.settings);
    choose(composites);
    noteOthers(composites);
    std::vector<unsigned char> formats;
    for (size_t p = 0; p < first_.planes.size(); ++p) {
        const Plane* partner = chosen_[p] ? partners_[p] : nullptr;
        const unsigned char own = first_.planes[p].format;
        formats.push_back(settings_.depth.value_or(partner ? widerFormat(own, partner->format) : own));
    }
    plan_.output = first_.withFormats(formats);
    if (composites)
        setWindow();
    plan_.inPlace = plan_.output.data == first_.data;
    for (size_t p = 0; p < first_.planes.size(); ++p)
        plan_.inPlace = plan_.inPlace && formats[p] == first_.planes[p].format &&
                        (!composites || !chosen_[p] || first_.planes[p].alpha ||
                         first_.alphaOf(first_.planes[p]) == nullptr); // which another work may have changed
    for (size_t p = 0; p < first_.planes.size(); ++p) {
        if (chosen_[p])
            plan_.works.push_back(
                std::visit([&](const auto& settings) { return work(p, settings); }, combination.settings));
        else if (!plan_.inPlace)
            plan_.works.push_back(std::make_unique<PlaneCopy>(first_, plan_.output, p));
    }
    return std::move(plan_);
}

/// Chooses the planes to work on, of those that both images have.
void Planner::choose(bool withAlphas)
{
    chosen_ = choosePlanes(first_, settings_);
    const bool named = !settings_.planes.empty() && settings_.planes.front() != "all";
    std::vector<std::string> copied;
    for (size_t p = 0; p < first_.planes.size(); ++p)
        if (withAlphas && chosen_[p] && first_.planes[p].colour)
            if (const Plane* alpha = first_.alphaOf(first_.planes[p]); alpha != nullptr)
                chosen_[static_cast<size_t>(alpha - first_.planes.data())] = true;
    for (size_t p = 0; p < first_.planes.size(); ++p) {
        const Plane& plane = first_.planes[p];
        partners_.push_back(second_ != nullptr ? partnerOf(plane) : nullptr);
        if (chosen_[p] && second_ != nullptr && partners_[p] == nullptr) {
            if (named)
                refuseName("'" + second_->path + "' has no plane", plane.name, second_->planeNames());
            chosen_[p] = false;
            copied.push_back(plane.name);
        }
        if (chosen_[p] && partners_[p] != nullptr)
            checkColours(first_, plane, *second_, *partners_[p]);
        if (chosen_[p])
            plan_.planes.push_back(plane.name);
    }
    if (plan_.planes.empty())
        refuse("'" + first_.path + "' and '" + second_->path + "' have no plane of the same name: " +
               joined(first_.planeNames()) + " and " + joined(second_->planeNames()));
    if (!copied.empty())
        plan_.notes.push_back("'" + first_.path + "': copied are planes that '" + second_->path +
                              "' does not have: " + joined(copied));
}

/// The plane of the second image that goes with one of the first.
const Plane* Planner::partnerOf(const Plane& plane) const
{
    const Plane* colour = plane.alpha && !plane.colour ? colourOf(plane) : nullptr;
    if (colour != nullptr) // an alpha that is stored in another format than its colour
        return partnerOf(*colour);
    const Plane* sameLayer = nullptr;
    for (const Plane& other : second_->planes) {
        if (other.colour != plane.colour)
            continue;
        if (other.name == plane.name)
            return &other;
        if (plane.colour && sameLayer == nullptr && second_->layerOf(other) == first_.layerOf(plane))
            sameLayer = &other;
    }
    return sameLayer;
}

/// The colour that an alpha of the first image belongs to.
const Plane* Planner::colourOf(const Plane& alpha) const
{
    for (const Plane& plane : first_.planes)
        if (plane.colour && first_.alphaOf(plane) == &alpha)
            return &plane;
    return nullptr;
}

/// Notes the planes of the second image that go nowhere; alphas go with their colours where `withAlphas`.
void Planner::noteOthers(bool withAlphas)
{
    std::vector<std::string> others;
    for (size_t p = 0; second_ != nullptr && p < second_->planes.size(); ++p) {
        const Plane& plane = second_->planes[p];
        const bool used = std::any_of(partners_.begin(), partners_.end(), [&](const Plane* partner) {
            return partner != nullptr &&
                   (partner == &plane || (withAlphas && second_->alphaOf(*partner) == &plane));
        });
        if (!used)
            others.push_back(plane.name);
    }
    if (!others.empty())
        plan_.notes.push_back("'" + second_->path + "': left out are planes that '" + first_.path +
                              "' does not have: " + joined(others));
}

/// The output of a composite covers both images, where its file format has windows.
void Planner::setWindow()
{
    const Window whole = enclosing(first_, *second_);
    plan_.output.data = holdsWindow(path_, whole) ? whole : first_.display;
    if (intersection(plan_.output.data, whole) != whole)
        plan_.notes.push_back("'" + path_ + "': what lies outside of the picture of '" + first_.path + "', " +
                              describe(first_.display) + ", is left out");
}

std::unique_ptr<PlaneWork> Planner::work(size_t p, const Composite& composite)
{
    const Plane& plane = first_.planes[p];
    const Plane& partner = *partners_[p];
    const bool spread = partner.luminance && !plane.luminance;
    const CompositePlane::Sides sides{{first_, plane, 0, plan_.output.data},
                                      {*second_, spread ? asColour(partner) : partner, 1, plan_.output.data}};
    const bool colour = plane.colour || colourOf(plane) != nullptr;
    unsigned char format = widerFormat(plan_.output.planes[p].format, plane.format);
    bool fills = false; // 65535 is not quite full for the 16-bit loops, absent is
    for (const CompositeInput* side : {&sides.first, &sides.second}) {
        format = widerFormat(format, side->plane.pixels.format());
        if (side->other)
            format = widerFormat(format, side->other->pixels.format());
        fills = fills || side->alpha == CompositeInput::Alpha::Window;
    }
    if (format == PXL_FORMAT_uint32)
        plan_.notes.push_back("'" + path_ + "': plane " + plane.name +
                              " is composited in float, which keeps 24 of the 32 bits");
    if (format > PXL_FORMAT_uint16 || (format == PXL_FORMAT_uint16 && fills) || !colour ||
        composite.premultiply || composite.unpremultiply)
        format = PXL_FORMAT_float32;
    return std::make_unique<CompositePlane>(sides, PlanePixels(plan_.output, plan_.output.planes[p]), colour,
                                            format, composite);
}

std::unique_ptr<PlaneWork> Planner::work(size_t p, const Blend& blend)
{
    const Plane& plane = first_.planes[p];
    checkPoints(plane, first_.path, settings_);
    std::optional<PlaneInput> second, matte;
    if (second_ != nullptr) {
        const Plane& partner = *partners_[p];
        if ((settings_.black || settings_.white) && partner.format != plane.format)
            refuse("black and white points are codes of one format, and plane '" + plane.name + "' is " +
                   formatName(plane.format) + " in '" + first_.path + "' and " + formatName(partner.format) +
                   " in '" + second_->path + "'");
        const bool spread = partner.luminance && !plane.luminance;
        second.emplace(*second_, spread ? asColour(partner) : partner, 1);
    }
    if (matte_ != nullptr)
        matte = this->matte(false);
    return std::make_unique<BlendPlane>(PlaneInput(first_, plane, 0), second, matte,
                                        PlanePixels(plan_.output, plan_.output.planes[p]), workCodes(p),
                                        blend);
}

std::unique_ptr<PlaneWork> Planner::work(size_t p, const Chroma& chroma)
{
    const Plane& plane = first_.planes[p];
    checkPoints(plane, first_.path, settings_);
    if (!plane.colour || plane.luminance)
        refuse("'" + first_.path + "': plane " + plane.name +
               " has no red, green and blue to take a colour out of");
    return std::make_unique<ChromaPlane>(PlaneInput(first_, plane, 0), matte(true),
                                         PlanePixels(plan_.output, plan_.output.planes[p]), workCodes(p),
                                         chroma);
}

/// The codes to compute with: those of the widest format around.
TIL_Plane Planner::workCodes(size_t p) const
{
    const unsigned char format = widerFormat(first_.planes[p].format, plan_.output.planes[p].format);
    return codesOf(partners_[p] != nullptr ? widerFormat(format, partners_[p]->format) : format, settings_);
}

/// The matte's colours and alpha, or one component of them as component 0: the one that is asked for, else
/// the alpha, else the first.
PlaneInput Planner::matte(bool one) const
{
    const std::vector<Plane>& planes = matte_->planes;
    const auto find = [&](bool Plane::*what) {
        return std::find_if(planes.begin(), planes.end(), std::mem_fn(what));
    };
    auto main = find(&Plane::colour);
    main = main != planes.end() ? main : find(&Plane::alpha);
    main = main != planes.end() ? main : planes.begin();
    const size_t band = second_ != nullptr ? 2 : 1;
    if (!one && !matteComponent_)
        return {*matte_, *main, band};
    const Plane colours = main->luminance ? asColour(*main) : *main;
    const Plane* alpha = matte_->alphaOf(*main);
    const auto single = [&](const Plane& plane, size_t component) {
        Plane result = plane;
        result.channel = {plane.channel[component], -1, -1, -1};
        return PlaneInput(*matte_, result, band);
    };
    if (alpha != nullptr && matteComponent_.value_or(3) == 3)
        return single(*alpha, 3);
    for (size_t c = 0; c < 4; ++c)
        if (colours.channel[c] >= 0 &&
            static_cast<size_t>(matteComponent_.value_or(static_cast<int>(c))) == c)
            return single(colours, c);
    refuse("'" + matte_->path + "': the matte has no component " +
           componentLetters[static_cast<size_t>(*matteComponent_)] + "; its channels are " +
           joined(main->channelNames(matte_->channels)));
}

void checkFinite(const char* what, std::span<const float> numbers)
{
    for (const float number : numbers)
        if (!std::isfinite(number))
            refuse(std::string(what) + ": " + std::to_string(number) + " is not finite");
}

void checkNumbers(const Combination& combination)
{
    if (const auto* chroma = std::get_if<Chroma>(&combination.settings))
        checkFinite("backing", chroma->backing);
    const auto* blend = std::get_if<Blend>(&combination.settings);
    if (blend != nullptr && blend->weights)
        checkFinite("weights", *blend->weights);
    else if (blend != nullptr)
        checkFinite("mix", {&blend->mix, 1});
}

void checkInputs(const CombineInputs& inputs, const Combination& combination, const CookSettings& settings)
{
    const auto* blend = std::get_if<Blend>(&combination.settings);
    const bool composites = std::holds_alternative<Composite>(combination.settings);
    if (composites && !inputs.second)
        refuse("a composite takes two images, and there is one, '" + inputs.first + "'");
    if (composites && inputs.matte)
        refuse("a composite takes no matte, '" + *inputs.matte + "'");
    if (composites && (settings.black || settings.white))
        refuse("--black, --white: a composite works on whole codes; leave out the points");
    if (blend != nullptr && blend->weights && !inputs.second)
        refuse("weights are for two images, and there is one, '" + inputs.first + "'");
    if (blend != nullptr && blend->weights && inputs.matte)
        refuse("weights are for whole images; leave out the matte, '" + *inputs.matte + "'");
    if (std::holds_alternative<Chroma>(combination.settings)) {
        if (inputs.second)
            refuse("a backing colour is taken out of one image; leave out '" + *inputs.second + "'");
        if (!inputs.matte)
            refuse("'" + inputs.first + "': a backing colour is taken out by a matte, and there is none");
    }
    if (inputs.matteComponent && (*inputs.matteComponent < 0 || *inputs.matteComponent > 3))
        refuse("matte component: " + std::to_string(*inputs.matteComponent) + " is not from 0 to 3");
}

} // namespace

const std::vector<CompositeName>& compositeNames()
{
    static const std::vector<CompositeName> names = {
#define HOST_ROW(TYPE, NAME, FORMULA, ...) {RU_COMP_##TYPE, NAME, #FORMULA},
        RU_FOR_EACH_COMPOSITE_TYPE(HOST_ROW)
#undef HOST_ROW
    };
    return names;
}

RU_CompositeType compositeOfName(const std::string& text)
{
    std::vector<std::string> known;
    for (const CompositeName& entry : compositeNames()) {
        if (text == entry.name || text == std::to_string(entry.type))
            return entry.type;
        known.emplace_back(entry.name);
    }
    refuseName("unknown operation", text, known);
}

CookReport combine(const CombineInputs& inputs, const std::string& output, const Combination& combination,
                   const CookSettings& settings)
{
    checkNumbers(combination);
    checkInputs(inputs, combination, settings);
    std::vector<std::string> paths{inputs.first};
    for (const std::optional<std::string>* other : {&inputs.second, &inputs.matte})
        if (*other)
            paths.push_back(**other);
    return runJob(paths, output, settings, [&](const std::vector<Image>& images) {
        return Planner(images, inputs, output, settings).plan(combination);
    });
}

} // namespace host
