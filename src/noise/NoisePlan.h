#pragma once

#include <QList>
#include <QtGlobal>

namespace kx {

class IniFile;

// The noise test's plan, kept in the shared INI file under "Noise". Times in seconds,
// frequencies in hertz, excitations in volts.
struct NoisePlan {
    // Bounds that keep a damaged INI file from asking for absurd runs or arrays.
    static constexpr int MaxFrequencies = 64;
    static constexpr int MaxExcitations = 256;
    static constexpr int MaxChannels = 4;

    qint32 channels = 3;
    float testDuration = 60;
    float frequencySettling = 10;
    float excitationSettling = 300;
    float initialDelay = 3600;
    QList<float> frequencies; // "Frequency 0" ...: 32, 64, 128, 256, 512 by default
    QList<float> excitations; // "Excitation 0" ...: 0.25, 0.5, ... 5 by default

    static NoisePlan defaults();
    // Every missing, malformed or out-of-range value is replaced by its default; counts are
    // clamped to 1 .. the bounds above.
    static NoisePlan read(const IniFile& ini);
    // Writes every value as text, first making the file's folder.
    void write(const IniFile& ini) const;

    qsizetype frequencyCount() const { return frequencies.size(); }
    qsizetype excitationCount() const { return excitations.size(); }
};

} // namespace kx
