#include "sim/ConverterModel.h"

#include <algorithm>
#include <cmath>

namespace kx {

ConverterModel::ConverterModel(qint16 turbo, qint16 decimation) {
    setTurboRate(turbo);
    setDecimationRate(decimation);
}

void ConverterModel::setTurboRate(qint16 turbo) {
    m_turbo = std::clamp(turbo, MinTurbo, MaxTurbo);
}

void ConverterModel::setDecimationRate(qint16 decimation) {
    m_decimation = std::clamp(decimation, MinDecimation, MaxDecimation);
}

void ConverterModel::setSampleFrequency(double hertz) {
    if (std::isnan(hertz))
        return;
    const double wanted = std::clamp(hertz, 1e-3, 1e6);
    // Equal errors up to rounding count as a tie, so that exact pairs of the same ratio
    // (1/720, 2/1440, ...) keep the present turbo rate.
    const double tolerance = wanted * 1e-9;
    bool found = false;
    double bestError = 0;
    qint16 bestTurbo = m_turbo;
    qint16 bestDecimation = m_decimation;
    for (qint16 turbo = MinTurbo; turbo <= MaxTurbo; ++turbo) {
        const double exact = m_modulatorRate * turbo / wanted;
        for (double candidate : {std::floor(exact), std::ceil(exact)}) {
            const auto decimation = static_cast<qint16>(
                std::clamp(candidate, double(MinDecimation), double(MaxDecimation)));
            const double error = std::abs(m_modulatorRate * turbo / decimation - wanted);
            const bool better =
                !found || error < bestError - tolerance ||
                (error <= bestError + tolerance && turbo == m_turbo && bestTurbo != m_turbo);
            if (better) {
                found = true;
                bestError = error;
                bestTurbo = turbo;
                bestDecimation = decimation;
            }
        }
    }
    m_turbo = bestTurbo;
    m_decimation = bestDecimation;
}

void ConverterModel::setCutoffFrequency(double hertz) {
    setSampleFrequency(hertz / CutoffRatio);
}

} // namespace kx
