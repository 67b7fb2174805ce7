#include "noise/LoadChanges.h"

#include "noise/NoiseResults.h"

#include <algorithm>
#include <vector>

namespace kx {

QList<LoadChange> markLoadChanges(NoiseResults& results, qsizetype frequency) {
    QList<LoadChange> found;
    std::vector<double> others;
    for (qsizetype e = 0; e < results.excitations(); ++e) {
        if (!results.measured(frequency, e) ||
            results.marks(frequency, e) & NoiseResults::LoadChange)
            continue;
        for (qsizetype c = 0; c < results.channels(); ++c) {
            others.clear();
            for (qsizetype other = 0; other < results.excitations(); ++other) {
                if (other != e && results.measured(frequency, other))
                    others.push_back(results.value(NoiseResults::R2, c, frequency, other));
            }
            if (others.empty())
                break; // nothing to compare with on any channel
            const auto lowerMedian = others.begin() + (std::ssize(others) - 1) / 2;
            std::ranges::nth_element(others, lowerMedian);
            const double usual = std::max(*lowerMedian, QuietDeviation);
            if (results.value(NoiseResults::R2, c, frequency, e) > LoadChangeFactor * usual) {
                results.mark(frequency, e, NoiseResults::LoadChange);
                found << LoadChange{frequency, e, c};
                break;
            }
        }
    }
    return found;
}

} // namespace kx
