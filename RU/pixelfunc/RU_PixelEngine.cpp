#include <RU/pixelfunc/RU_PixelEngine.h>

#include <RU/pixelfunc/ru_PixelEngineOp.h>

#include <mutex>
#include <vector>

namespace {

/// White of a full-range 16-bit table whose components differ. Kept as it stands: such a table tops out below
/// 65535.
constexpr unsigned short dependentWhite16 = 65355;

constexpr bool isFinite(fpreal16 half)
{
    return (half.bits() & 0x7C00) != 0x7C00;
}

template <class T>
constexpr int64_t entryCount = int64_t(1) << (8 * sizeof(T));

/// Every code of T, in order.
template <class T>
std::vector<T> allCodes()
{
    std::vector<T> codes(entryCount<T>);
    for (size_t i = 0; i < codes.size(); ++i) {
        if constexpr (std::is_same_v<T, fpreal16>)
            codes[i] = fpreal16::fromBits(static_cast<uint16_t>(i));
        else
            codes[i] = static_cast<T>(i);
    }
    return codes;
}

/// Gives a record one table, or four when the chain treats components differently, each filled by
/// fill(table, component).
template <class T, class Fill>
void makeTables(T* (&tables)[4], const RU_PixelFunction& chain, Fill fill)
{
    const int count = chain.isComponentDependent() ? 4 : 1;
    for (int c = 0; c < 4; ++c) {
        if (c >= count) {
            tables[c] = tables[0];
            continue;
        }
        tables[c] = new T[entryCount<T> + 1]; // one spare entry: see ru_LookUpKernels
        fill(tables[c], c);
    }
}

template <class T>
void deleteTables(T* const (&tables)[4])
{
    const bool shared = tables[1] == tables[0] && tables[2] == tables[0] && tables[3] == tables[0];
    for (int c = 0; c < (shared ? 1 : 4); ++c)
        delete[] tables[c];
}

/// The record for a pair of points; a new one, not yet filled, when `cache` has none. `found` tells which.
template <class Record>
Record* findOrAppend(UT_PtrArray<Record*>& cache, unsigned int black, unsigned int white, bool& found)
{
    for (Record* record : cache)
        if (record->black == black && record->white == white) {
            found = true;
            return record;
        }
    auto* record = new Record;
    record->black = black;
    record->white = white;
    cache.append(record);
    found = false;
    return record;
}

void fillFullRange16(unsigned short* table, const RU_PixelFunction& chain, int component, bool dependent)
{
    ru_Range<unsigned short> range = ru_engineRange<unsigned short, true>(0, 65535);
    if (dependent)
        range.span = dependentWhite16;
    const ru_ChainRows<unsigned short, true> rows(chain, range);
    rows.evaluate(allCodes<unsigned short>().data(), table, entryCount<unsigned short>, component);
    if (dependent)
        for (int64_t i = 0; i < entryCount<unsigned short>; ++i)
            table[i] = std::min(table[i], dependentWhite16);
}

} // namespace

template class RU_PixelFactories<RU_PixelEngineOp>;

RU_PixelEngine::~RU_PixelEngine()
{
    for (ru_lut8* record : lut8s_) {
        deleteTables(record->table);
        delete record;
    }
    for (ru_lut16* record : lut16s_) {
        deleteTables(record->table);
        delete record;
    }
    if (ru_lut16fp* record = lut16fp_.load()) {
        deleteTables(record->table);
        delete record;
    }
}

ru_lut8* RU_PixelEngine::buildLUT8(unsigned int black, unsigned int white)
{
    function->buildPixelEngine();
    const std::lock_guard guard(lut8Lock_);
    bool found = false;
    ru_lut8* record = findOrAppend(lut8s_, black, white, found);
    if (found)
        return record;
    // Over the full range whatever the points are.
    const ru_ChainRows<unsigned char, true> rows(*function, ru_engineRange<unsigned char, true>(0, 255));
    makeTables(record->table, *function, [&](unsigned char* table, int c) {
        rows.evaluate(allCodes<unsigned char>().data(), table, entryCount<unsigned char>, c);
    });
    return record;
}

ru_lut16* RU_PixelEngine::buildLUT16(unsigned int black, unsigned int white)
{
    function->buildPixelEngine();
    const std::lock_guard guard(lut16Lock_);
    bool found = false;
    ru_lut16* record = findOrAppend(lut16s_, black, white, found);
    if (found)
        return record;
    if (black == 0 && white == 65535) {
        const bool dependent = function->isComponentDependent();
        makeTables(record->table, *function,
                   [&](unsigned short* table, int c) { fillFullRange16(table, *function, c, dependent); });
        return record;
    }
    PXLdetermineProcCaps();
    const ru_ChainRows<unsigned short, false> rows(*function,
                                                   ru_engineRange<unsigned short, false>(black, white));
    makeTables(record->table, *function, [&](unsigned short* table, int c) {
        rows.evaluate(allCodes<unsigned short>().data(), table, entryCount<unsigned short>, c);
    });
    return record;
}

ru_lut16fp* RU_PixelEngine::buildLUT16FP()
{
    if (ru_lut16fp* record = lut16fp_.load(); record != nullptr && record->ready.load())
        return record;
    function->buildPixelEngine();
    const std::lock_guard guard(lut16fpLock_);
    if (ru_lut16fp* record = lut16fp_.load())
        return record;
    auto* record = new ru_lut16fp;
    lut16fp_.store(record); // threads that see it before it is ready wait at the lock
    const ru_ChainRows<fpreal16, true> rows(*function, ru_engineRange<fpreal16, true>(0, 1));
    makeTables(record->table, *function, [&](fpreal16* table, int c) {
        const std::vector<fpreal16> codes = allCodes<fpreal16>();
        rows.evaluate(codes.data(), table, entryCount<fpreal16>, c);
        for (size_t i = 0; i < codes.size(); ++i)
            if (!isFinite(codes[i]))
                table[i] = fpreal16(0.0f);
    });
    record->ready.store(true);
    return record;
}
