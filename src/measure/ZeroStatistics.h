#pragma once

namespace kx {

// The device zero dialog's read-outs of a zero acquisition, from converter codes.

// Codes as volts: codes × 10 / 2^24, whatever the converter's resolution.
double zeroCodesToVolts(double codes);

// The signal-to-noise ratio in dB of a channel whose RMS noise is `deviation` codes: against
// 2^24 codes on firmware 2 and later, 2^23 before. A channel without noise shows the full
// dynamic range of a `resolutionBits` converter (144.5 dB for 24 bits).
double zeroSnrDb(double deviation, int firmwareMajor, int resolutionBits);

} // namespace kx
