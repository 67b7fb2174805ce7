#include "sim/SimPlateConfig.h"

namespace kx {

quint64 SimPlateConfig::seedFor(const QString& serial) {
    bool number = false;
    const quint64 value = serial.toULongLong(&number);
    if (number)
        return value;
    // FNV-1a: stable across runs and Qt versions, unlike qHash.
    quint64 hash = 0xCBF29CE484222325ull;
    for (const char byte : serial.toUtf8()) {
        hash ^= quint8(byte);
        hash *= 0x100000001B3ull;
    }
    return hash;
}

} // namespace kx
