#pragma once

#include <reference/Picture.h>

#include <functional>
#include <optional>

/// What holds for every algorithm, whatever it computes: tests/framework/ContractTest.cpp holds those to it that
/// are registered here, and the digest compares their bytes between instruction sets.
namespace reference {

/// The images of a call over one rectangle, and what the output held before.
class Scene
{
    TIL_Plane floats_{PXL_FORMAT_float32, 4}; // before the mask, which is made of it

public:
    Scene(Format format, RU_Border border, int width, int height, int x1 = 0, int y1 = 0);

    /// Any pixels; see Format::randomize().
    void fill(Random& random, int oddOneIn, int kinds = 5);
    /// Tiles and components of every state, and now and then a range without width.
    void scatter(Random& random);
    /// The pixels of a scene that covers this one.
    void copyFrom(const Scene& whole);
    /// Remembers what a call may change.
    void hold();

    const TIL_TileList* inList() const { return !hasIn ? nullptr : shared ? &out.list : &in.list; }
    const TIL_Region* aroundGiven() const { return hasAround ? &around : nullptr; }
    const TIL_Region* maskGiven() const { return hasMask ? &mask : nullptr; }

    int64_t index(int x, int y) const { return int64_t(y) * out.list.width() + x; }
    Range points() const { return {out.plane.blackPoint, out.plane.whitePoint}; }
    /// The code of the input tiles, also where the output was written over them; `first`: the row that constant
    /// ones are read in.
    double input(int c, int x, int y, int first = 0) const
    {
        return out.format.codeAt(shared ? held[c].data() : in.data(c),
                                 inputIsConstant[c] ? index(0, first) : index(x, y));
    }
    double value(const void* data, int64_t at) const
    {
        return out.format.valueOf(out.format.codeAt(data, at), points());
    }

    Picture out, in;
    TIL_Region around; ///< in the output's format, with a border
    TIL_Region mask;   ///< of floats
    bool hasIn = true, hasAround = true, hasMask = true;
    bool shared = false; ///< the input tiles are the output's
    Bytes held[4];       ///< what the output's tiles held
    bool inputIsConstant[4] = {};
};

/// What a pixel becomes, and how far rounding may have led from there.
struct Exact
{
    double value;
    double slack;
    std::optional<Range> points = {}; ///< if not those of the scene
    bool copied = false;              ///< a NaN is not the one that is computed
};

/// An algorithm, with parameters, and its formula.
class Subject
{
public:
    explicit Subject(std::string of) : name(std::move(of)) {}
    virtual ~Subject() = default;

    virtual RU_Border border() const { return {}; }
    /// Takes any parameters.
    virtual void choose(Random&) {}
    virtual int run(Scene& scene, void* token, int thread) = 0;
    /// The same into a region; 0 where regions are not written.
    virtual int runOnRegion(Scene&, TIL_Region&) { return 0; }
    /// Nothing where the output stays as it is.
    virtual std::optional<Exact> expected(const Scene& scene, int c, int x, int y) const = 0;

    const std::string name;
};

/// The part of a plane over the rectangle of `from` that `to` covers.
template <class From, class To>
Bytes part(const void* data, const From& from, const To& to, int size)
{
    Bytes bytes;
    for (int y = to.y1; y <= to.y2; ++y) {
        const auto* row = static_cast<const unsigned char*>(data) +
                          (int64_t(y - from.y1) * from.width() + to.x1 - from.x1) * size;
        bytes.insert(bytes.end(), row, row + to.width() * size);
    }
    return bytes;
}

/// Every pixel of a scene that has been run is what the subject says.
void expectFormula(const Subject& subject, const Scene& scene);

std::vector<Subject*>& subjects();

/// Says in the source of a test that there is a subject.
template <class S>
struct Registered
{
    template <class... Parameters>
    explicit Registered(Parameters... parameters) : subject(parameters...)
    {
        subjects().push_back(&subject);
    }
    S subject;
};

/// A filter, of which result() computes a pixel from its neighbourhood.
template <class Algorithm>
class FilterSubject : public Subject
{
public:
    using Subject::Subject;
    /// The value at an offset.
    using Neighbours = std::function<double(int dx, int dy)>;

    RU_Border border() const override { return algorithm.border(); }
    int run(Scene& scene, void* token, int thread) override
    {
        return algorithm.filter(&scene.out.list, scene.aroundGiven(), 0.0f, token, thread, nullptr);
    }
    int runOnRegion(Scene& scene, TIL_Region& region) override
    {
        return algorithm.filter(&region, scene.aroundGiven(), 0.0f, nullptr, 1, nullptr);
    }
    std::optional<Exact> expected(const Scene& scene, int c, int x, int y) const override
    {
        const void* data = scene.hasAround ? scene.around.getImageData(c) : nullptr;
        if (!scene.out.mayWrite(c) || data == nullptr)
            return {};
        const RU_Border size = border();
        const auto at = [&](int dx, int dy) {
            return scene.value(data,
                               int64_t(y + size.bottom + dy) * scene.around.width() + x + size.left + dx);
        };
        Exact exact = result(at);
        exact.slack *= scene.out.format.roundOff();
        return exact;
    }

protected:
    /// The slack in roundings of 1.
    virtual Exact result(const Neighbours& at) const = 0;

    Algorithm algorithm;
};

} // namespace reference
