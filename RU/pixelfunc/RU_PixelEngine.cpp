#include <RU/pixelfunc/RU_PixelEngine.h>

#include <RU/pixelfunc/ru_PixelEngineOp.h>
#include <RU/pixelfunc/ru_RowSteps.h>

#include <algorithm>
#include <memory>
#include <mutex>

namespace {

/// White of a full-range 16-bit table whose components differ. Kept as it stands: such a table tops out
/// below 65535.
constexpr unsigned short dependentWhite16 = 65355;

template <class T>
constexpr int64_t entryCount = int64_t(1) << (8 * sizeof(T));

template <class T>
T codeOf(int64_t index)
{
    if constexpr (std::is_same_v<T, fpreal16>)
        return fpreal16::fromBits(static_cast<uint16_t>(index));
    else
        return static_cast<T>(index);
}

/// Fills a table with what the chain makes of all codes.
template <class T, bool FullRange>
void fillTable(T* table, const ru_ChainRows<T, FullRange>& rows, int component)
{
    for (int64_t start = 0; start < entryCount<T>; start += ru_chunk) {
        const int64_t length = std::min(ru_chunk, entryCount<T> - start);
        for (int64_t i = 0; i < length; ++i)
            table[start + i] = codeOf<T>(start + i);
        rows.evaluate(table + start, table + start, length, component);
    }
}

/// One table of entries of T, by codes of Code, or four when the components differ.
template <class Code, class T>
void allocateTables(ru_tables<T>& tables, bool different)
{
    constexpr int64_t spare = 1; // see ru_LookUpKernels
    for (int c = 0; c < 4; ++c)
        tables.table[c] = c == 0 || different ? new T[entryCount<Code> + spare] : tables.table[0];
}

template <class T, class Fill>
void fillTables(const ru_tables<T>& tables, Fill fill)
{
    fill(tables.table[0], 0);
    for (int c = 1; c < 4 && tables.table[c] != tables.table[0]; ++c)
        fill(tables.table[c], c);
}

/// The record for a pair of points. A new one is filled by fill(table, component), and everybody waits for
/// it.
template <class T, class Record, class Fill>
Record* findOrBuild(UT_Lock& lock, UT_PtrArray<Record*>& records, RU_PixelFunction& chain, unsigned int black,
                    unsigned int white, Fill fill)
{
    chain.buildPixelEngine();
    const std::lock_guard guard(lock);
    for (Record* record : records)
        if (record->black == black && record->white == white)
            return record;
    auto made = std::make_unique<Record>();
    made->black = black;
    made->white = white;
    allocateTables<T>(*made, chain.isComponentDependent());
    records.append(made.get());
    Record* record = made.release();
    fillTables(*record, fill);
    return record;
}

void fillFullRange16(unsigned short* table, const RU_PixelFunction& chain, int component)
{
    ru_Range<unsigned short> range = ru_engineRange<unsigned short, true>(0, 65535);
    const bool dependent = chain.isComponentDependent();
    if (dependent)
        range.span = dependentWhite16;
    fillTable(table, ru_ChainRows<unsigned short, true>(chain, range), component);
    if (dependent)
        std::transform(table, table + entryCount<unsigned short>, table,
                       [](unsigned short code) { return std::min(code, dependentWhite16); });
}

void fillHalves(fpreal16* table, const ru_ChainRows<fpreal16, true>& rows, int component)
{
    fillTable(table, rows, component);
    for (int64_t bits = 0; bits < entryCount<fpreal16>; ++bits)
        if ((bits & 0x7C00) == 0x7C00) // infinities and NaN
            table[bits] = fpreal16(0.0f);
}

/// Allocates the tables of the leading functions and fills them.
template <class T>
void fillLeading(ru_leadingTables& tables, const ru_ComponentSteps& steps)
{
    const ru_FloatRows<T, false> rows(ru_engineRange<T, false>(tables.black, tables.white));
    allocateTables<T>(tables, !steps.alike);
    fillTables(tables, [&](float* table, int c) {
        for (int64_t start = 0; start < entryCount<T>; start += ru_chunk) {
            const int64_t length = std::min(ru_chunk, entryCount<T> - start);
            T codes[ru_chunk];
            for (int64_t i = 0; i < length; ++i)
                codes[i] = codeOf<T>(start + i);
            steps.of[c].run(rows.read(codes, table + start, length), table + start, length);
        }
    });
}

} // namespace

template class RU_PixelFactories<RU_PixelEngineOp>;

RU_PixelEngine::~RU_PixelEngine()
{
    for (const ru_lut8* record : lut8s_)
        delete record;
    for (const ru_lut16* record : lut16s_)
        delete record;
    for (const ru_leadingTables* record : leading_)
        delete record;
    delete lut16fp_.load();
}

RU_PixelFunction& RU_PixelEngine::chain() const
{
    static RU_PixelFunction unchanged;
    return function != nullptr ? *function : unchanged;
}

ru_lut8* RU_PixelEngine::buildLUT8(unsigned int black, unsigned int white)
{
    // Over the full range whatever the points are.
    const ru_ChainRows<unsigned char, true> rows(chain(), ru_engineRange<unsigned char, true>(0, 255));
    return findOrBuild<unsigned char>(lut8Lock_, lut8s_, chain(), black, white,
                                      [&](unsigned char* table, int c) { fillTable(table, rows, c); });
}

ru_lut16* RU_PixelEngine::buildLUT16(unsigned int black, unsigned int white)
{
    if (black == 0 && white == 65535)
        return findOrBuild<unsigned short>(
            lut16Lock_, lut16s_, chain(), black, white,
            [&](unsigned short* table, int c) { fillFullRange16(table, chain(), c); });
    PXLdetermineProcCaps();
    const ru_ChainRows<unsigned short, false> rows(chain(),
                                                   ru_engineRange<unsigned short, false>(black, white));
    return findOrBuild<unsigned short>(lut16Lock_, lut16s_, chain(), black, white,
                                       [&](unsigned short* table, int c) { fillTable(table, rows, c); });
}

ru_lut16fp* RU_PixelEngine::buildLUT16FP()
{
    if (ru_lut16fp* record = lut16fp_.load(); record != nullptr && record->ready.load())
        return record;
    chain().buildPixelEngine();
    const std::lock_guard guard(lut16fpLock_);
    if (ru_lut16fp* record = lut16fp_.load())
        return record;
    auto made = std::make_unique<ru_lut16fp>();
    allocateTables<fpreal16>(*made, chain().isComponentDependent());
    ru_lut16fp* record = made.release();
    lut16fp_.store(record); // threads that see it before it is ready wait at the lock
    const ru_ChainRows<fpreal16, true> rows(chain(), ru_engineRange<fpreal16, true>(0, 1));
    fillTables(*record, [&](fpreal16* table, int c) { fillHalves(table, rows, c); });
    record->ready.store(true);
    return record;
}

const ru_leadingTables* RU_PixelEngine::buildLeadingTables(unsigned char format, unsigned int black,
                                                           unsigned int white)
{
    chain().buildVectorEngine();
    const ru_ComponentSteps& steps = chain().pixelSteps().leading();
    if (steps.onlyLines())
        return nullptr;
    const std::lock_guard guard(leadingLock_);
    for (const ru_leadingTables* record : leading_)
        if (record->format == format && record->black == black && record->white == white)
            return record;
    auto made = std::make_unique<ru_leadingTables>();
    made->format = format;
    made->black = black;
    made->white = white;
    if (format == PXL_FORMAT_uint8)
        fillLeading<unsigned char>(*made, steps);
    else if (format == PXL_FORMAT_uint16)
        fillLeading<unsigned short>(*made, steps);
    else
        fillLeading<fpreal16>(*made, steps);
    leading_.append(made.get());
    return made.release();
}
