#include <RE/RE_OpenGL.h>
#include <RU/pixelfunc/RU_GPUPixelEngine.h>
#include <RU/pixelfunc/RU_PixelEngine.h>
#include <reference/Parity.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>
#include <sstream>

namespace reference {

namespace {

constexpr int width = 97, height = 5;
constexpr size_t pixels = size_t{width} * height;
constexpr double unknown = HUGE_VAL;
constexpr float largest = std::numeric_limits<float>::max();

/// A value of a component on its way into a function.
struct Place
{
    const std::array<float, 4>& pixel;
    size_t count; ///< components that are there
    size_t component;
    bool first; ///< of the chain

    float v() const { return pixel[component]; }
    bool exceeds(float most) const { return !(std::abs(v()) <= most); } // NaN does
    bool anyExceeds(float most) const
    {
        return std::any_of(pixel.begin(), pixel.end(), [most](float v) { return !(std::abs(v) <= most); });
    }
};

/// Where a shader does something else on purpose.
struct Departure
{
    const char* name;
    const char* functions; ///< each with spaces around it
    bool (*holds)(const Place& at);
};

#define WHERE(...) [](const Place& at) -> bool { return __VA_ARGS__; }
const Departure departures[] = {
    {"`RU_InvertFunc`", " Invert ", WHERE(at.v() == 0)},
    {"`RU_LimitFunc`, NaN and infinities", " Limit ", WHERE(at.exceeds(largest))},
    {"`RU_GammaFunc`, gamma 0", " GammaZero ", WHERE(std::abs(at.v()) == 1)},
    {"`RU_GammaFunc`, `RU_PowerFunc`, NaN and values beyond 1e38", " Gamma GammaZero Power ",
     WHERE(at.exceeds(1e38f))},
    {"`RU_LevelsFunc`, NaN and values beyond 1e18", " Levels ", WHERE(at.exceeds(1e18f))},
    {"`RU_PowerFunc`, 0", " Power ", WHERE(at.v() == 0)},
    {"`RU_RaiseFunc`, base 0", " RaiseZero ", WHERE(!(at.v() > 0))},
    {"`RU_RaiseFunc`, base 1", " RaiseOne ", WHERE(at.exceeds(largest))},
    {"`RU_SinFunc`, `RU_TanFunc`, angles beyond 1000", " Sin Tan ", WHERE(at.exceeds(1000))},
    {"`RU_AtanFunc`", " Atan ", WHERE(at.v() != 0)},
    {"`RU_AsinFunc`, `RU_AcosFunc`", " Asin Acos ", WHERE(at.exceeds(1))},
    {"`RU_TanhFunc`", " Tanh ", WHERE(at.v() != 0)},
    {"`RU_LookupClipFunc`", " LookupClip ", WHERE(at.component % 3 != 0)},
    {"`RU_ColorCurveFunc`", " ColorCurve ", WHERE(at.v() > 0 && at.v() < 2)},
    {"`RU_ColorCurveFunc`, NaN", " ColorCurve ", WHERE(at.v() != at.v())},
    {"`RU_ComponentFunc`, no such component", " Component0 Component5 ", WHERE(at.count > 0)},
    {"`RU_NTSCLuminanceFunc`", " NTSCLuminance ", WHERE(at.count >= 3)},
    {"`RU_VectorFunc`", " Vector ", WHERE(at.count == 4)},
    {"`RU_HueFunc`, `RU_SaturationFunc`, fewer than three components", " Hue Saturation ",
     WHERE(at.count < 3)},
    {"functions of several components, NaN and infinities",
     " Max Min Hue Saturation ToHSV Adjust HueCurve Replace ", WHERE(at.anyExceeds(largest))},
    {"`RU_HSVConvertFunc`, hues beyond 1e5", " FromHSV ", WHERE(!(std::abs(at.pixel[0]) <= 1e5f))},
    {"`RU_HueCurveFunc`, `RU_ColorReplace`, values beyond 1e5", " HueCurve Replace ",
     WHERE(at.anyExceeds(1e5f))},
    {"`RU_GPUPixelEngine`, absent components", " Length Normalize Component Vector Adjust ",
     WHERE(at.count < 4 && !at.first)}};

std::vector<const Departure*> departuresOf(const Function& function)
{
    std::vector<const Departure*> all;
    for (const Departure& departure : departures)
        for (const std::string& name : std::set{kindOf(function), function.name})
            if (std::string(departure.functions).find(" " + name + " ") != std::string::npos)
                all.push_back(&departure);
    return all;
}

float anyValue(Values values, Random& random)
{
    const auto wide = static_cast<float>(random.between(-2.0, 2.0)), even = std::round(wide * 4) / 4;
    const float large[] = {55.0f, 1e3f, 1e6f, 1e30f, largest};
    const float odd[] = {NAN, INFINITY, -INFINITY};
    const float value = random.oneIn(2) ? wide : even;
    switch (values) {
    case Values::unit:
        return std::abs(value) / 2;
    case Values::wide:
        return value;
    case Values::large:
        return random.oneIn(4) ? value : std::copysign(large[random.between(0, 4)], wide);
    default:
        return random.oneIn(3) ? value : odd[random.between(0, 2)];
    }
}

double apart(double a, double b)
{
    if (a == b || (std::isnan(a) && std::isnan(b)))
        return 0.0;
    return std::isnan(a - b) ? unknown : std::abs(a - b);
}

using Rows = std::array<std::vector<float>, 4>;

/// A picture on the processor on its way through a chain, and by how much the GPU's may differ.
struct Picture
{
    Rows values;
    std::array<std::vector<double>, 4> errors;
    std::array<std::vector<const Departure*>, 4> departures; ///< of the last function
    size_t count;                                            ///< components

    std::array<float, 4> pixel(const Rows& of, size_t i) const
    {
        std::array<float, 4> all = {};
        for (size_t c = 0; c < count; ++c)
            all[c] = of[c][i];
        return all;
    }

    Rows through(const Function& function, const Rows& from) const
    {
        Rows result = from;
        const float* in[4] = {};
        float* out[4] = {};
        for (size_t c = 0; c < count; ++c) {
            in[c] = from[c].data();
            out[c] = result[c].data();
        }
        function.object->buildVectorEngine();
        function.object->processRows(in, out, pixels);
        return result;
    }

    /// Within the errors: to one end by the bit of each component; by 16 to values where functions turn.
    Rows moved(unsigned ends) const
    {
        Rows result = values;
        for (size_t c = 0; c < count; ++c)
            for (size_t i = 0; i < pixels; ++i) {
                const double error = errors[c][i];
                float& v = result[c][i];
                const float even = std::round(v * 4) / 4;
                if (error == 0.0 || error == unknown || (ends == 16 && std::abs(v - even) > error))
                    continue;
                v = ends == 16 ? even : static_cast<float>(v + ((ends >> c & 1) != 0 ? error : -error));
            }
        return result;
    }

    /// The largest error that a function sees at a value.
    double errorInto(const Function& function, size_t c, size_t i) const
    {
        double most = errors[c][i];
        for (size_t other = 0; function.object->needAllComponents() && other < count; ++other)
            most = std::max(most, errors[other][i]);
        return most;
    }

    /// What a function makes of the errors.
    void spread(const Function& function, const std::array<bool, 4>& scope, bool first, const Rows& exact)
    {
        const auto departing = departuresOf(function);
        auto grown = errors;
        for (unsigned ends = 0; ends <= (first ? 0 : 16); ++ends) {
            const Rows from = moved(ends), result = through(function, from);
            for (size_t i = 0; i < pixels; ++i) {
                const auto in = pixel(from, i);
                for (size_t c = 0; c < count; ++c) {
                    const double into = errorInto(function, c, i);
                    if (!scope[c])
                        continue;
                    if (ends == 0)
                        grown[c][i] = into == unknown ? unknown : 0.0;
                    grown[c][i] = std::max(grown[c][i], apart(exact[c][i], result[c][i]));
                    for (const Departure* departure : departing)
                        if (departure->holds({in, count, c, first})) {
                            grown[c][i] = unknown;
                            departures[c][i] = into == 0.0 ? departure : nullptr;
                        }
                }
            }
        }
        errors = grown;
    }

    void pass(const Function& function, const std::array<bool, 4>& scope, bool first)
    {
        const Rows exact = through(function, values);
        for (auto& of : departures)
            of.assign(pixels, nullptr);
        spread(function, scope, first, exact);
        for (size_t c = 0; c < count; ++c) {
            if (!scope[c])
                continue;
            for (size_t i = 0; i < pixels; ++i)
                if (const double v = std::abs(double(exact[c][i])); std::isfinite(v))
                    errors[c][i] += threshold(function) * std::max(1.0, v);
            values[c] = exact[c];
        }
    }
};

Picture pictureOf(Tiles& in, Format format, size_t components, bool clearsInfinities)
{
    Picture picture;
    picture.count = components;
    for (size_t c = 0; c < components; ++c)
        for (int64_t i = 0; i < int64_t{pixels}; ++i) {
            const double code = format.codeAt(in.data<char>(c), i);
            picture.values[c].push_back(static_cast<float>(format.valueOf(code, format.range())));
            picture.errors[c].push_back(clearsInfinities && !std::isfinite(code) ? unknown : 0.0);
        }
    return picture;
}

/// By how much codes, or values, may be apart.
double allowed(Format format, double stored, double error)
{
    if (error == 0.0 || error == unknown)
        return error;
    if (format.isInteger())
        return format.white() * error + 1.0;
    return error + (format.isHalf() ? halfSpacing(std::min(std::abs(stored), 0x1p15)) : 0.0);
}

} // namespace

Tiles::Tiles(unsigned char format, int columns, int rows, size_t components)
    : plane(format, 4), list(plane, 0, 0, columns - 1, rows - 1),
      bytes(static_cast<size_t>(columns * rows * PXLbytesPerElement(format)))
{
    for (size_t c = 0; c < components; ++c)
        tiles.emplace_back(format, columns, rows);
    for (size_t c = 0; c < components; ++c)
        list.tiles[c] = &tiles[c];
}

void Comparison::add(const Comparison& other)
{
    values += other.values;
    compared += other.compared;
    worst = std::max(worst, other.worst);
    departures.insert(other.departures.begin(), other.departures.end());
}

std::vector<size_t> componentCounts(size_t function)
{
    if (allFunctions()[function].object->needAllComponents())
        return {1, 2, 3, 4};
    return {4, function % 3 + 1};
}

std::string kindOf(const Function& function)
{
    return function.name.substr(0, function.name.find_first_of("0123456789"));
}

double threshold(const Function& function)
{
    static const std::map<std::string, double> thresholds = {
        {"Gamma", 2e-6},     {"Power", 3e-6},    {"Raise", 5e-6},       {"Log", 1e-6},
        {"Sin", 1e-6},       {"Tan", 1e-6},      {"Asin", 3e-4},        {"Acos", 3e-4},
        {"Sinh", 5e-6},      {"Cosh", 5e-6},     {"LookupTable", 1e-6}, {"LookupClip", 1e-6},
        {"Levels", 3e-6},    {"Vector", 5e-7},   {"Luminance", 5e-7},   {"Length", 5e-7},
        {"Normalize", 5e-7}, {"HueCurve", 5e-6}, {"Average", 2e-6},     {"Replace", 1e-6}};
    const auto found = thresholds.find(kindOf(function));
    return found != thresholds.end() ? found->second : 0.0;
}

std::set<std::string> departureNames()
{
    std::set<std::string> names;
    std::ranges::transform(departures, std::inserter(names, names.end()), &Departure::name);
    return names;
}

ParityChain::ParityChain(std::vector<Link> links) : links_(std::move(links)), functions_(newFunctions())
{
    for (size_t i = 0; i + 1 < links_.size(); ++i)
        at(i).setNext(&at(i + 1));
}

ParityChain::~ParityChain()
{
    for (size_t i = 0; i < links_.size(); ++i)
        at(i).setNext(nullptr);
}

std::string ParityChain::name() const
{
    std::string text;
    for (const Link& link : links_) {
        text += allFunctions()[link.function].name + " (" + std::to_string(link.function) + ") on ";
        for (size_t c = 0; c < 4; ++c)
            text += link.scope[c] ? "rgba"[c] : '-';
        text += ", ";
    }
    return text;
}

std::array<bool, 4> Link::scopeOnGPU() const
{
    return scope == std::array<bool, 4>{} ? std::array{true, true, true, true} : scope;
}

template <class Engine>
void ParityChain::run(Tiles& out, const Tiles& in, bool asGiven)
{
    for (size_t i = 0; i < links_.size(); ++i)
        at(i).setScope((asGiven ? links_[i].scope : links_[i].scopeOnGPU()).data());
    Engine(&at(0)).pixelAdjust(&out.list, &in.list, 0.0f, nullptr, -1, nullptr);
}

Comparison ParityChain::compare(Format format, size_t components, Values values, uint64_t seed)
{
    Random random(seed);
    Tiles in(format.code, width, height, components), cpu(format.code, width, height, components),
        gpu(format.code, width, height, components);
    for (size_t c = 0; c < components; ++c)
        for (int64_t i = 0; i < int64_t{pixels}; ++i)
            if (format.isInteger())
                format.putBits(in.data<char>(c), i, static_cast<uint32_t>(random.bits()));
            else
                format.put(in.data<char>(c), i, anyValue(values, random));
    gpu.tiles[0].setConstantTile(true);
    run<RU_PixelEngine>(cpu, in, false);
    run<RU_GPUPixelEngine>(gpu, in, true);

    const bool byTable = !at(0).areAllComponentsNeeded();
    const bool isShort = format.code == PXL_FORMAT_uint16 && byTable && at(0).isComponentDependent();
    Picture picture = pictureOf(in, format, components, byTable && format.isHalf());
    const Rows given = picture.values;
    for (size_t i = 0; i < links_.size(); ++i)
        picture.pass(allFunctions()[links_[i].function], links_[i].scopeOnGPU(), i == 0);

    Comparison all;
    if (gpu.tiles[0].isConstant())
        all.failure = name() + "did not run";
    const double own = threshold(allFunctions()[links_.back().function]);
    for (size_t c = 0; c < components; ++c)
        for (size_t i = 0; i < pixels; ++i) {
            const auto place = static_cast<int64_t>(i);
            const double wanted = format.codeAt(cpu.data<char>(c), place);
            const double got = format.codeAt(gpu.data<char>(c), place) * (isShort ? 65355.0 / 65535.0 : 1.0);
            const double most = allowed(format, wanted, picture.errors[c][i]) + (isShort ? 1.0 : 0.0);
            const double distance = apart(wanted, got);
            ++all.values;
            if (most == unknown) {
                if (picture.departures[c][i] && distance > allowed(format, wanted, own))
                    all.departures.insert(picture.departures[c][i]->name);
                continue;
            }
            ++all.compared;
            all.worst =
                std::max(all.worst, distance == 0.0 ? 0.0 : distance / std::max(1.0, std::abs(wanted)));
            if (distance > most && all.failure.empty()) {
                std::ostringstream text;
                text.precision(9);
                text << name() << nameOf(format) << ", seed " << seed << ": component " << c << " of";
                for (size_t k = 0; k < components; ++k)
                    text << " " << given[k][i];
                text << " gives " << wanted << ", on the GPU " << got << ", allowed " << most;
                all.failure = text.str();
            }
        }
    return all;
}

int printParity()
{
    if (!REfindGPU().found) {
        std::fprintf(stderr, "%s\n", REfindGPU().refused.buffer());
        return 77;
    }
    std::vector<std::string> kinds;
    std::map<std::string, std::vector<size_t>> members;
    for (size_t f = 0; f < allFunctions().size(); ++f) {
        const std::string kind = kindOf(allFunctions()[f]);
        if (!members.contains(kind))
            kinds.push_back(kind);
        members[kind].push_back(f);
    }
    std::printf("| %s | 0 to 1 | -2 to 2 | large | NaN, infinities | at most | but for |\n"
                "| --- | ---: | ---: | ---: | ---: | ---: | --- |\n",
                REfindGPU().name.buffer());
    for (const std::string& kind : kinds) {
        std::printf("| %s |", kind.c_str());
        std::set<std::string> departing;
        for (const Values values : {Values::unit, Values::wide, Values::large, Values::odd}) {
            Comparison all;
            for (const size_t f : members[kind])
                for (const size_t components : componentCounts(f))
                    all.add(
                        ParityChain({Link{f}}).compare({PXL_FORMAT_float32, true}, components, values, f));
            std::printf(all.compared * 4 < all.values ? " |"
                        : all.worst == 0.0            ? " equal |"
                                                      : " %.0e |",
                        all.worst);
            departing.merge(all.departures);
        }
        const double most = threshold(allFunctions()[members[kind][0]]);
        std::printf(most == 0.0 ? " equal |" : " %.0e |", most);
        for (const std::string& name : departing)
            std::printf("%s %s", name == *departing.begin() ? "" : ";", name.c_str());
        std::printf(" |\n");
    }
    return 0;
}

} // namespace reference
