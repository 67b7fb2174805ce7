#pragma once

#include "measure/CaptureJournalFormat.h"

#include <QByteArray>
#include <random>

// The journal of an hour's capture at 1000 Hz (3.6 million rows): a segment a minute, a person
// of about 70 kg on the plate, stepped off for one minute in ten.
inline QByteArray hourOfCapture(float minFz) {
    constexpr int RowsPerMinute = 60'000;
    std::mt19937 random(5);
    std::normal_distribution<float> noise(0.0f, 1.0f);
    const kx::CaptureJournalHeader header{QStringLiteral("1"),
                                          kx::DisplayType::Forces,
                                          false,
                                          1000.0f,
                                          minFz,
                                          QDateTime(QDate(2024, 3, 14), QTime(9, 30))};
    QByteArray journal = kx::journal::encodeHeader(header);
    journal.reserve(journal.size() + 60 * (RowsPerMinute + 1) * kx::journal::RecordSize);
    const auto append = [&journal](const kx::CaptureRow& row) {
        journal.resize(journal.size() + kx::journal::RecordSize);
        kx::journal::encodeRow(row, journal.data() + journal.size() - kx::journal::RecordSize);
    };
    for (int minute = 0; minute < 60; ++minute) {
        const float load = minute % 10 == 9 ? 0.0f : -700.0f;
        append(kx::CaptureRow{});
        for (int i = 0; i < RowsPerMinute; ++i) {
            const float fz = load + 0.5f * noise(random);
            const kx::Float3 forces{fz, 0.03f * load + 0.01f * noise(random),
                                    0.05f * load + 0.01f * noise(random)};
            const kx::Float3 volts{0.002f * fz / 700 + 1e-6f * noise(random),
                                   1e-4f + 1e-6f * noise(random), -1e-4f + 1e-6f * noise(random)};
            append(kx::captureRowOf(forces, volts, minFz));
        }
    }
    return journal;
}
