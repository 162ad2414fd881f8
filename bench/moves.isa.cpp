#include <bench/moves.h>

namespace bench::RU_ISA {

/// Block by block, so that all words lie in the order in which vectors take them.
template <int Third>
void move(Word* __restrict to, const Word* __restrict from, const Word* __restrict third, int64_t count)
{
    constexpr int block = 8;
    for (int64_t i = 0; i < count; i += block)
        for (int j = 0; j < block; ++j) {
            Word word = from[i + j];
            for (int k = 0; k < Third; ++k)
                word ^= third[i * Third + k * block + j];
            to[i + j] ^= word;
        }
}

const MoveKernels moveKernels = {{RU_COMPILED_FOR}, {move<0>, move<1>, move<2>, nullptr, move<4>}};

} // namespace bench::RU_ISA
