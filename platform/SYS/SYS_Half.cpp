#include <SYS/SYS_Half.h>

namespace {

constexpr std::array<float, 65536> makeTable()
{
    std::array<float, 65536> table{};
    for (uint32_t bits = 0; bits < 65536; ++bits)
        table[bits] = SYShalfValue(static_cast<uint16_t>(bits));
    return table;
}

} // namespace

constinit const std::array<float, 65536> fpreal16::_toFloat = makeTable();
