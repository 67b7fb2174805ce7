#pragma once

#include <QtGlobal>

namespace kx {

// Timing of the plate's sigma-delta converter. The modulator runs at 72 kHz (slower on some
// converters); the output (sampling) rate is modulator rate × turbo / decimation, and the -3 dB frequency of the digital
// filter is 0.262 × the sampling rate. Writing any one of the four values derives the others.
// A written frequency is met by the nearest representable turbo / decimation pair, keeping
// the present turbo rate among equally near pairs, so a value read back and written again
// reads back unchanged.
class ConverterModel {
public:
    static constexpr double StandardModulatorRate = 72000.0; // Hz
    static constexpr double CutoffRatio = 0.262;
    static constexpr qint16 MinTurbo = 1;
    static constexpr qint16 MaxTurbo = 16;
    static constexpr qint16 MinDecimation = 20;
    static constexpr qint16 MaxDecimation = 8000;

    ConverterModel() = default;
    ConverterModel(qint16 turbo, qint16 decimation);
    explicit ConverterModel(double modulatorRate) : m_modulatorRate(modulatorRate) {}

    qint16 turboRate() const { return m_turbo; }
    qint16 decimationRate() const { return m_decimation; }
    double modulatorRate() const { return m_modulatorRate; }
    double sampleFrequency() const { return m_modulatorRate * m_turbo / m_decimation; }
    double cutoffFrequency() const { return CutoffRatio * sampleFrequency(); }

    // Out-of-range rates are clamped to the converter's limits.
    void setTurboRate(qint16 turbo);
    void setDecimationRate(qint16 decimation);
    void setSampleFrequency(double hertz);
    void setCutoffFrequency(double hertz);

    friend bool operator==(const ConverterModel&, const ConverterModel&) = default;

private:
    double m_modulatorRate = StandardModulatorRate;
    qint16 m_turbo = 1;
    qint16 m_decimation = 720; // 100 Hz at the standard rate
};

} // namespace kx
