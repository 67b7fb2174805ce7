#pragma once

#include <QtGlobal>
#include <cstddef>

namespace kx {

// The CRC-32 of zip and PNG over `size` bytes, continuing from `crc` (0 to begin): what the
// capture journal stamps on each of its records to find a damaged one.
quint32 crc32(const void* data, std::size_t size, quint32 crc = 0);

} // namespace kx
