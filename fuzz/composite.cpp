// Compositing over random arrays.
#include "Bytes.h"

#include <RU/composite/RU_Composite.h>

namespace {

template <class T, class U>
void colours(Bytes& bytes, RU_CompositeType type, int count)
{
    Row<T> source(bytes, count);
    Row<U> alphas[2] = {{bytes, count}, {bytes, count}};
    const int kind =
        bytes.below(16); // each alpha may be missing, both the same, and the source the destination
    checkSingles(Row<T>(bytes, count), count, [&](T* to, int i, int n) {
        const U* dstAlpha = (kind & 1) != 0 ? alphas[0].data() + i : nullptr;
        const U* srcAlpha = (kind & 2) != 0 ? alphas[kind >> 2 & 1].data() + i : nullptr;
        RU_Composite::composite(type, n, 1, to, dstAlpha, (kind & 8) != 0 ? to : source.data() + i, srcAlpha);
    });
}

template <class T>
void alphas(Bytes& bytes, RU_CompositeType type, int count)
{
    Row<T> source(bytes, count);
    const int kind = bytes.below(3);
    checkSingles(Row<T>(bytes, count), count, [&](T* to, int i, int n) {
        const T* srcAlpha[] = {nullptr, to, source.data() + i};
        RU_Composite::compositeAlpha(type, 1, n, to, srcAlpha[kind]);
    });
}

void geometry(Bytes& bytes, RU_CompositeType type, int count)
{
    Row<float> rows[3] = {{bytes, count}, {bytes, count}, {bytes, count}};
    const int kind = bytes.below(64);
    checkSingles(Row<float>(bytes, count), count, [&](float* to, int i, int n) {
        const float* in[6];
        for (int k = 0; k < 6; ++k)
            in[k] = (kind >> k & 1) != 0 ? rows[k % 3].data() + i : nullptr;
        const float* source = rows[0].data() + i;
        RU_Composite::compositeGeo(type, n, 1, to, in[1], source, in[2],
                                   (const float*[]){in[0], in[3], in[4], in[5]});
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    constexpr void (*works[])(Bytes&, RU_CompositeType, int) = {
#define RU_COLOURS(T, U) colours<T, U>,
#define RU_ALPHAS(T) alphas<T>,
        RU_FOR_EACH_COMPOSITE_PAIR(RU_COLOURS) RU_FOR_EACH_COMPOSITE_FORMAT(RU_ALPHAS) geometry};
#define RU_COUNT(...) +1
    constexpr int types = RU_FOR_EACH_COMPOSITE_TYPE(RU_COUNT);
    Bytes bytes(data, size);
    const auto work = works[bytes.below(std::size(works))];
    const auto type = static_cast<RU_CompositeType>(bytes.below(types + 2) - 1); // one too low, one too high
    work(bytes, type, bytes.below(8) == 0 ? 129 + bytes.below(64) : bytes.below(65));
    return 0;
}
