#include <RU/framework/ru_Convert.h>
#include <reference/Formats.h>
#include <reference/Random.h>

using namespace reference;

namespace {

/// All codes of 8 and 16 bits, samples with the ends of 32 bits.
template <class T>
std::vector<T> allCodes()
{
    constexpr uint64_t count = uint64_t(1) << (8 * sizeof(T));
    std::vector<T> all;
    const auto append = [&](uint64_t bits) {
        std::memcpy(static_cast<void*>(&all.emplace_back()), &bits, sizeof(T));
    };
    for (uint64_t bits = 0; bits < count; bits += sizeof(T) <= 2 ? 1 : 65521)
        append(bits);
    for (const uint64_t end : {0u, 1u, 2u, 0x7FFFFFFEu, 0x7FFFFFFFu}) {
        append(end);
        append(~end);
    }
    return all;
}

/// Rows of T to and from Value: exact, the same with every instruction set, and at every length.
template <class T, bool Full, class Value = ru_Work<T>>
class Conversion
{
public:
    /// Over the full range, or points in every position to each other.
    static void test()
    {
        const unsigned int top = format.white();
        std::vector<Range> ranges = {format.range()};
        if (!Full && format.isInteger())
            ranges.insert(ranges.end(), {{0, top},
                                         {0, 1},
                                         {top - 1, top},
                                         {100, 100},
                                         {0, 0},
                                         {top, top},
                                         {200, 10},
                                         {top, 0},
                                         {1, top},
                                         {50, 4294967295u}});
        for (const Range range : ranges) {
            SCOPED_TRACE(std::to_string(range.black) + " to " + std::to_string(range.white));
            Conversion(range).testAll();
        }
    }

private:
    static constexpr Format format{PXL_FormatOf<T>::code, Full};
    static constexpr bool inPlace = std::is_same_v<T, Value>;

    explicit Conversion(Range range) : range_(range)
    {
        const double step = range.white == range.black ? 1.0 : 1.0 / range.span();
        for (int64_t i = 0; i < std::ssize(codes_); ++i)
            for (const double part : {-0.49, -0.25, 0.0, 0.25, 0.49})
                values_.push_back(
                    static_cast<Value>(format.valueOf(format.codeAt(codes_.data(), i), range) + part * step));
        for (const float special : specialFloats())
            values_.push_back(special);
    }

    void testAll()
    {
        const ru_RowConverter<T, Full, Value> converter(ru_rangeOf<T, Full>(range_.black, range_.white));
        std::vector<Value> scratch(codes_.size()), loaded(codes_.size());
        const Value* read = converter.read(codes_.data(), scratch.data(), std::ssize(codes_));
        converter.load(codes_.data(), loaded.data(), std::ssize(codes_));
        ASSERT_EQ(std::memcmp(loaded.data(), read, loaded.size() * sizeof(Value)), 0);
        ASSERT_EQ(static_cast<const void*>(read),
                  inPlace ? static_cast<const void*>(codes_.data()) : scratch.data());
        std::vector<T> written(values_.size());
        ASSERT_EQ(static_cast<void*>(converter.target(written.data(), values_.data())),
                  inPlace ? static_cast<void*>(written.data()) : values_.data());
        converter.write(values_.data(), written.data(), std::ssize(values_));

        for (int64_t i = 0; i < std::ssize(values_); ++i)
            ASSERT_TRUE(
                format.holds(format.codeAt(written.data(), i), values_[static_cast<size_t>(i)], range_))
                << i;
        for (size_t i = 0; i < codes_.size(); ++i)
            ASSERT_NO_FATAL_FAILURE(testCode(codes_[i], loaded[i])) << i;
        if constexpr (!inPlace)
            for (const PXL_InstructionSet set : runnableSets())
                testSet(set);
    }

    void testCode(T code, double read)
    {
        const double exact = format.valueOf(format.codeAt(&code, 0), range_);
        // Of the scale, of the product, and of a 32-bit code as a float.
        const double roundings = !format.isInteger() ? 0.0 : sizeof(T) > sizeof(Value) / 2 ? 3.1 : 2.1;
        const double bound = std::abs(exact) * roundings * (sizeof(Value) == 8 ? 0x1p-53 : 0x1p-24);
        ASSERT_TRUE(read == exact || std::abs(read - exact) <= bound ||
                    (std::isnan(exact) && std::isnan(read)))
            << read << ", exact " << exact;
        const bool white = Full && format.isInteger() && format.codeAt(&code, 0) == format.white();
        ASSERT_TRUE(!white || read == 1.0);
    }

    /// The kernels of a set against the baseline's: every short length, then all codes and values.
    void testSet(PXL_InstructionSet set)
    {
        for (size_t count = 0; count <= 80; ++count)
            ASSERT_EQ(run(set, count, count), run(PXL_InstructionSet::baseline, count, count)) << count;
        ASSERT_EQ(run(set, codes_.size(), values_.size()),
                  run(PXL_InstructionSet::baseline, codes_.size(), values_.size()));
    }

    /// Reads the last codes and writes the last values, in bytes; nothing behind the end changes.
    std::pair<Bytes, Bytes> run(PXL_InstructionSet set, size_t codes, size_t values)
    {
        const ru_RowConversion<T, Full, Value>& rows = ru_convertRows(set);
        const auto range = ru_rangeOf<T, Full>(range_.black, range_.white);
        std::vector<Value> read(codes + 1, Value(-7));
        std::vector<T> written(values + 1, T(77));
        rows.read(codes_.data() + codes_.size() - codes, read.data(), static_cast<int64_t>(codes), range);
        rows.write(values_.data() + values_.size() - values, written.data(), static_cast<int64_t>(values),
                   range);
        EXPECT_TRUE(read.back() == Value(-7) && written.back() == T(77));
        const auto bytes = [](const auto& row) {
            const auto* begin = reinterpret_cast<const unsigned char*>(row.data());
            return Bytes(begin, begin + row.size() * sizeof(row[0]));
        };
        return {bytes(read), bytes(written)};
    }

    Range range_;
    std::vector<T> codes_ = allCodes<T>();
    std::vector<Value> values_;
};

} // namespace

#define TEST_BOTH_RANGES(CODE, T, WHITE, NAME)                                                               \
    TEST(Convert, NAME)                                                                                      \
    {                                                                                                        \
        Conversion<T, true>::test();                                                                         \
        Conversion<T, false>::test();                                                                        \
    }
PXL_FOR_EACH_FORMAT(TEST_BOTH_RANGES)
#undef TEST_BOTH_RANGES

TEST(Convert, uint32AsFloat)
{
    Conversion<unsigned int, true, float>::test();
    Conversion<unsigned int, false, float>::test();
}
