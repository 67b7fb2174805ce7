#include "sim/NoiseGenerator.h"

namespace kx {

NoiseGenerator::NoiseGenerator(quint64 seed) {
    // splitmix64 spreads any seed, 0 included, over the whole state.
    for (quint64& word : m_s) {
        seed += 0x9E3779B97F4A7C15ull;
        quint64 z = seed;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        word = z ^ (z >> 31);
    }
}

} // namespace kx
