#include <RU/framework/ru_Convert.h>
#include <reference/Formats.h>
#include <reference/Random.h>

#include <cstring>

using namespace reference;

namespace {

/// Codes to test: all of 8 and 16 bits, samples with the ends of 32 bits.
template <class T>
std::vector<T> codes()
{
    std::vector<T> all;
    if constexpr (sizeof(T) <= 2) {
        for (int i = 0; i < 1 << (8 * sizeof(T)); ++i)
            all.push_back(
                std::bit_cast<T>(static_cast<std::conditional_t<sizeof(T) == 1, uint8_t, uint16_t>>(i)));
    } else {
        for (uint64_t i = 0; i < uint64_t(1) << 32; i += 65521)
            all.push_back(static_cast<T>(i));
        for (const int64_t end : {0, 1, 2, 0x7FFFFFFE, 0x7FFFFFFF})
            all.insert(all.end(), {static_cast<T>(end), static_cast<T>(0xFFFFFFFF - end)});
    }
    return all;
}

/// The full range, or points in every position to each other.
template <class T, bool FullRange>
std::vector<Range> ranges()
{
    constexpr unsigned int top = PXL_FormatOf<T>::white;
    if constexpr (FullRange || !isInteger<T>)
        return {fullRange<T>};
    else
        return {somePoints<T>, {0, top},  {0, 1},   {top - 1, top}, {100, 100},       {0, 0},
                {top, top},    {200, 10}, {top, 0}, {1, top},       {50, 4294967295u}};
}

/// Values between and beyond the codes of a range.
template <class T, class Value>
std::vector<Value> values(Range range)
{
    std::vector<Value> all;
    const double step = range.white == range.black ? 1.0 : 1.0 / range.span();
    for (const T code : codes<T>())
        for (const double part : {-0.49, -0.25, 0.0, 0.25, 0.49})
            all.push_back(static_cast<Value>(valueOf(code, range) + part * step));
    for (const float special : specialFloats())
        all.push_back(special);
    return all;
}

/// A format with a range, and the type of the values that it is converted to.
template <class V, class ValueType>
struct Conversion : V
{
    using Value = ValueType;
};

template <class T>
using Work = ru_Work<T>;
#define CONVERSIONS(CODE, T, WHITE, NAME)                                                                    \
    , Conversion<Variant<T, true>, Work<T>>, Conversion<Variant<T, false>, Work<T>>
using EachConversion =
    VariantList<void PXL_FOR_EACH_FORMAT(CONVERSIONS), Conversion<Variant<unsigned int, true>, float>,
                Conversion<Variant<unsigned int, false>, float>>;
#undef CONVERSIONS
static_assert(EachConversion::count == 12);

struct ConversionNames
{
    template <class C>
    static std::string GetName(int index)
    {
        const bool rough = !std::is_same_v<typename C::Value, Work<typename C::Type>>;
        return VariantNames::GetName<C>(index) + (rough ? "AsFloat" : "");
    }
};

} // namespace

template <class C>
class Convert : public ::testing::Test
{
public:
    using Code = typename C::Type;
    using Number = typename C::Value;
    using Converter = ru_RowConverter<Code, C::full, Number>;
    static constexpr bool inPlace = std::is_same_v<Code, Number>;

    static Converter converter(Range range)
    {
        TIL_TileList list;
        list.blackPoint = range.black;
        list.whitePoint = range.white;
        return Converter(list);
    }
    static std::vector<Number> read(const std::vector<Code>& codes, Range range)
    {
        std::vector<Number> values(codes.size()), scratch(codes.size());
        const Number* read = converter(range).read(codes.data(), scratch.data(), std::ssize(codes));
        EXPECT_EQ(static_cast<const void*>(read),
                  inPlace ? static_cast<const void*>(codes.data()) : scratch.data());
        converter(range).load(codes.data(), values.data(), std::ssize(codes));
        EXPECT_EQ(std::memcmp(values.data(), read, values.size() * sizeof(Number)), 0);
        return values;
    }
    static std::vector<Code> write(std::vector<Number> values, Range range)
    {
        std::vector<Code> codes(values.size());
        Number* target = converter(range).target(codes.data(), values.data());
        EXPECT_EQ(static_cast<void*>(target), inPlace ? static_cast<void*>(codes.data()) : values.data());
        converter(range).write(values.data(), codes.data(), std::ssize(codes));
        return codes;
    }
    static std::string name(Range range)
    {
        return std::to_string(range.black) + " to " + std::to_string(range.white);
    }
};
TYPED_TEST_SUITE(Convert, EachConversion::Types, ConversionNames);

TYPED_TEST(Convert, ReadsEveryCodeWithinItsRoundings)
{
    using T = typename TypeParam::Type;
    using Value = typename TypeParam::Value;
    constexpr double rounding = std::is_same_v<Value, double> ? 0x1p-53 : 0x1p-24;
    const std::vector<T> codes = ::codes<T>();
    for (const Range range : ranges<T, TypeParam::full>()) {
        SCOPED_TRACE(this->name(range));
        const auto read = this->read(codes, range);
        for (size_t i = 0; i < codes.size(); ++i) {
            const double exact = valueOf(codes[i], range);
            // Of the scale, of the product, and of a 32-bit code as a float.
            const double roundings = !isInteger<T> ? 0.0 : sizeof(T) > sizeof(Value) / 2 ? 3.1 : 2.1;
            ASSERT_TRUE(std::abs(read[i] - exact) <= std::abs(exact) * roundings * rounding ||
                        (std::isnan(exact) && std::isnan(read[i])) || read[i] == exact)
                << i << ": " << read[i] << ", exact " << exact;
        }
    }
}

TYPED_TEST(Convert, BlackReadsAsZeroAndFullWhiteAsOne)
{
    using T = typename TypeParam::Type;
    const Range range = rangeOf<TypeParam>;
    if constexpr (isInteger<T>) {
        const auto ends = this->read({static_cast<T>(range.black), static_cast<T>(range.white)}, range);
        EXPECT_EQ(ends[0], 0.0);
        EXPECT_TRUE(ends[1] == 1.0 || !TypeParam::full); // between points, x * (1 / x) may miss 1 by an ulp
    }
}

TYPED_TEST(Convert, WritesEveryValueToItsNearestCode)
{
    using T = typename TypeParam::Type;
    for (const Range range : ranges<T, TypeParam::full>()) {
        SCOPED_TRACE(this->name(range));
        const auto values = ::values<T, typename TypeParam::Value>(range);
        const auto codes = this->write(values, range);
        for (size_t i = 0; i < values.size(); ++i)
            ASSERT_TRUE(isStored(codes[i], values[i], range)) << i;
    }
}

TYPED_TEST(Convert, CodesSurviveTheRoundTrip)
{
    using T = typename TypeParam::Type;
    constexpr bool rough = sizeof(typename TypeParam::Value) < sizeof(Work<T>); // a float has too few digits
    std::vector<T> codes = ::codes<T>();
    if constexpr (!isInteger<T>)
        std::erase_if(codes, [](T code) { return std::isnan(static_cast<float>(code)); });
    int ranges = 0;
    for (const Range range : ::ranges<T, TypeParam::full>()) {
        if (range.black == range.white)
            continue;
        SCOPED_TRACE(this->name(range));
        const auto returned = this->write(this->read(codes, range), range);
        for (size_t i = 0; i < codes.size(); ++i) {
            const double distance = static_cast<double>(returned[i]) - static_cast<double>(codes[i]);
            ASSERT_TRUE(std::memcmp(&returned[i], &codes[i], sizeof(T)) == 0 ||
                        (rough && std::abs(distance) <= 0x1p32 * 0x1p-22))
                << i;
        }
        ++ranges;
    }
    EXPECT_EQ(ranges, isInteger<T> && !TypeParam::full ? 8 : 1);
}

TYPED_TEST(Convert, EveryInstructionSetGivesTheSameBytesAtEveryLength)
{
    using T = typename TypeParam::Type;
    using Value = typename TypeParam::Value;
    if constexpr (!std::is_same_v<T, Value>) {
        const Range points = rangeOf<TypeParam>;
        const auto range = ru_rangeOf<T, TypeParam::full>(points.black, points.white);
        const std::vector<T> codes = ::codes<T>();
        const std::vector<Value> values = ::values<T, Value>(points);
        const auto run = [&](PXL_InstructionSet set, size_t fromCode, size_t fromValue, size_t count) {
            const ru_RowConversion<T, TypeParam::full, Value>& rows = ru_convertRows(set);
            std::vector<Value> read(count + 1, Value(-7));
            std::vector<T> written(count + 1, T(77));
            rows.read(codes.data() + fromCode, read.data(), static_cast<int64_t>(count), range);
            rows.write(values.data() + fromValue, written.data(), static_cast<int64_t>(count), range);
            EXPECT_EQ(read.back(), Value(-7));
            EXPECT_EQ(written.back(), T(77));
            return std::pair(read, written);
        };
        const auto expectSame = [&](PXL_InstructionSet set, size_t fromCode, size_t fromValue, size_t count) {
            const auto expected = run(PXL_InstructionSet::baseline, fromCode, fromValue, count);
            const auto got = run(set, fromCode, fromValue, count);
            ASSERT_EQ(std::memcmp(got.first.data(), expected.first.data(), count * sizeof(Value)), 0);
            ASSERT_EQ(std::memcmp(got.second.data(), expected.second.data(), count * sizeof(T)), 0);
        };
        for (const PXL_InstructionSet set : runnableSets()) {
            SCOPED_TRACE(PXLinstructionSetName(set));
            for (size_t count = 0; count <= 80; ++count)
                ASSERT_NO_FATAL_FAILURE(expectSame(set, count, values.size() - count, count)) << count;
            for (size_t from = 0; from < values.size(); from += codes.size())
                ASSERT_NO_FATAL_FAILURE(
                    expectSame(set, 0, from, std::min(codes.size(), values.size() - from)));
        }
    }
}
