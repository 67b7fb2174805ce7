#include "measure/CaptureTable.h"

#include "measure/CentreOfPressure.h"

#include <algorithm>

namespace kx {

void CaptureTable::clear() {
    m_rows.clear();
    m_rows.shrink_to_fit();
}

void CaptureTable::appendBlock(const QList<Float3>& forces, const QList<Float3>& volts,
                               float minFz) {
    const qsizetype count = std::min(forces.size(), volts.size());
    appendSeparator();
    for (qsizetype i = 0; i < count; ++i)
        m_rows.push_back(CaptureRow{volts[i], forces[i], posturalOf(forces[i], minFz)});
}

Float3 posturalOf(const Float3& forces, float minFz) {
    if (const auto cop = centreOfPressure(forces, minFz))
        return {forces[0], cop->x, cop->y};
    return {};
}

} // namespace kx
