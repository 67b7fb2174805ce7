#include "measure/Crc32.h"

#include <array>

namespace kx {
namespace {

constexpr std::array<quint32, 256> makeTable() {
    std::array<quint32, 256> table{};
    for (quint32 i = 0; i < 256; ++i) {
        quint32 c = i;
        for (int bit = 0; bit < 8; ++bit)
            c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
        table[i] = c;
    }
    return table;
}

constexpr std::array<quint32, 256> Table = makeTable();

} // namespace

quint32 crc32(const void* data, std::size_t size, quint32 crc) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    crc = ~crc;
    for (std::size_t i = 0; i < size; ++i)
        crc = Table[(crc ^ bytes[i]) & 0xFFu] ^ (crc >> 8);
    return ~crc;
}

} // namespace kx
