#include <reference/Digest.h>

#include <RU/composite/RU_Composite.h>
#include <RU/filter/RU_Morphology.h>
#include <RU/pixelfunc/RU_PixelEngine.h>
#include <reference/Contract.h>
#include <reference/Curves.h>
#include <reference/Functions.h>

#include <cstdio>

namespace reference {

namespace {

constexpr int oddOneIn = 4, kinds = 6;

/// The number of one name, which prints itself at the end.
class Digest
{
public:
    explicit Digest(std::string name) : name_(std::move(name)) {}
    Digest(const Digest&) = delete;
    Digest& operator=(const Digest&) = delete;
    ~Digest() { std::printf("%s %016llx\n", name_.c_str(), static_cast<unsigned long long>(number_)); }

    void add(const void* data, size_t size)
    {
        for (size_t i = 0; i < size; ++i)
            number_ = (number_ ^ static_cast<const unsigned char*>(data)[i]) * 0x100000001B3u;
    }
    template <class T>
    void add(const std::vector<T>& values)
    {
        add(values.data(), values.size() * sizeof(T));
    }

private:
    std::string name_;
    uint64_t number_ = 0xCBF29CE484222325u;
};

template <class T>
std::vector<T> wildValues(int64_t count, Random& random)
{
    std::vector<T> values(static_cast<size_t>(count));
    Format{PXL_FormatOf<T>::code, true}.randomize(values.data(), count, random, oddOneIn, kinds);
    return values;
}

/// All lengths up to several vectors, and one beyond what goes at once.
std::vector<int> lengths()
{
    std::vector<int> all = {127, 129, 1027, 2051};
    for (int length = 0; length <= 70; ++length)
        all.push_back(length);
    return all;
}

/// Scenes of an algorithm, which run(scene, random) runs.
template <class Run>
void addScenes(const std::string& name, RU_Border border, int count, const Run& run)
{
    for (const Format& format : formats()) {
        Digest digest(name + " " + nameOf(format));
        for (int seed = 1; seed <= count; ++seed) {
            Random random(static_cast<uint64_t>(seed));
            Scene scene(format, border, seed < count ? 1 + 80 * seed / count : 2117, 2);
            scene.fill(random, oddOneIn, kinds);
            scene.scatter(random);
            scene.hold();
            run(scene, random);
            for (int c = 0; c < 4; ++c)
                digest.add(scene.out.bytes(c));
        }
    }
}

/// All forms, each instruction set's rows among them, the engine and its tables.
void addFunction(const std::string& name, RU_PixelFunction& function)
{
    Random random(1);
    function.buildPixelEngine();
    function.buildVectorEngine();
    Digest forms(name + " rows");
    for (const int length : lengths())
        for (const int absent : {0, 1, 6, 8}) {
            std::vector<float> rows[4];
            float* pointers[4] = {};
            for (int c = 0; c < 4; ++c) {
                rows[c] = wildValues<float>(length, random);
                std::vector<float> row(rows[c].size());
                function.processRow(rows[c].data(), row.data(), length, c);
                forms.add(row);
                pointers[c] = (absent >> c & 1) != 0 ? nullptr : rows[c].data();
            }
            function.processRows(pointers, pointers, length);
            for (const auto& row : rows)
                forms.add(row);
        }
    RU_PixelEngine engine(&function);
    addScenes(name, {}, 16, [&](Scene& scene, Random&) {
        engine.pixelAdjust(&scene.out.list, &scene.in.list, 0.0f, nullptr, 0, nullptr);
    });
    if (function.areAllComponentsNeeded())
        return;
    Digest tables(name + " tables");
    const Range points = Format{PXL_FORMAT_uint16, false}.range();
    for (int c = 0; c < 4; ++c) {
        tables.add(engine.buildLUT8(0, 255)->table[c], 256);
        tables.add(engine.buildLUT16(0, 65535)->table[c], 65536 * 2);
        tables.add(engine.buildLUT16(points.black, points.white)->table[c], 65536 * 2);
        tables.add(engine.buildLUT16FP()->table[c], 65536 * 2);
    }
}

template <class T, class U, class Call>
void addComposite(const std::string& name, const Call& call)
{
    static constexpr const char* types[] = {
#define NAME(TYPE, TEXT, ...) TEXT,
        RU_FOR_EACH_COMPOSITE_TYPE(NAME)
#undef NAME
    };
    for (size_t type = 0; type < std::size(types); ++type) {
        Random random(2);
        Digest digest(name + " " + types[type]);
        for (const int length : lengths())
            for (int given = 0; given < 4; ++given) {
                std::vector<T> dst = wildValues<T>(length, random), src = wildValues<T>(length, random);
                const std::vector<U> dstAlpha = wildValues<U>(length, random),
                                     srcAlpha = wildValues<U>(length, random);
                call(static_cast<RU_CompositeType>(type), length, 1, dst.data(),
                     given & 1 ? dstAlpha.data() : nullptr, src.data(),
                     given & 2 ? srcAlpha.data() : nullptr);
                digest.add(dst);
            }
    }
}

void addComposites()
{
#define ADD(T, U)                                                                                            \
    addComposite<T, U>("composite " #T " " #U, [](auto... all) { RU_Composite::composite(all...); });
    RU_FOR_EACH_COMPOSITE_PAIR(ADD)
#undef ADD
#define ADD(T)                                                                                               \
    addComposite<T, T>("alpha " #T,                                                                          \
                       [](auto type, int n, int m, T* dst, const T*, const T* src, const T* given) {         \
                           RU_Composite::compositeAlpha(type, n, m, dst, given ? src : nullptr);             \
                       });
    RU_FOR_EACH_COMPOSITE_FORMAT(ADD)
#undef ADD
    Random random(3);
    addComposite<float, float>("geometry", [&](auto type, int count, auto... all) {
        const std::vector<float> plane = wildValues<float>(count, random),
                                 other = wildValues<float>(count, random);
        const float* const geometry[4] = {plane.data(), nullptr, other.data(), nullptr};
        RU_Composite::compositeGeo(type, count, all..., geometry);
    });
}

template <class T>
void addMorphology(const std::string& name)
{
    Digest digest(name);
    for (const int width : lengths()) {
        Random random(static_cast<uint64_t>(width));
        const int height = random.between(1, 40);
        const std::vector<T> src = wildValues<T>(width * height, random);
        std::vector<T> dst(src.size()), tmp(src.size());
        const int xsize = random.between(-40, 40), ysize = random.between(-9, 9);
        RU_Morphology::dilateErode(src.data(), dst.data(), tmp.data(), width, height, xsize, ysize);
        digest.add(dst);
    }
}

void addCurves()
{
    Digest digest("curves");
    for (uint64_t seed = 0; seed < 100; ++seed) {
        Random random(seed);
        const std::vector<Key> keys = randomKeys(random);
        const RU_ColorCurve curve = curveOf(keys, random.oneIn(2));
        std::vector<float> values = wildValues<float>(static_cast<int64_t>(500 + seed), random);
        curve.evaluate(values.data(), values.data(), std::ssize(values));
        digest.add(values);
    }
}

} // namespace

void printDigests()
{
    int number = 0;
    for (const Function& function : allFunctions())
        addFunction(function.name + std::to_string(number++), *function.object);
    for (Subject* subject : subjects())
        addScenes(subject->name, subject->border(), 81, [&](Scene& scene, Random& random) {
            subject->choose(random);
            subject->run(scene, nullptr, 0);
        });
    addComposites();
#define ADD(CODE, T, WHITE, NAME) addMorphology<T>("morphology " #NAME);
    PXL_FOR_EACH_FORMAT(ADD)
#undef ADD
    addCurves();
}

} // namespace reference
