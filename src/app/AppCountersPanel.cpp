#include "app/AppCountersPanel.h"

#include "app/PlateInput.h"
#include "resources/StringTable.h"
#include "support/Clock.h"
#include "support/DateFormat.h"
#include "support/NumberFormat.h"
#include "support/Prompt.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <cmath>

namespace kx {

namespace {

constexpr int CounterCaptions[] = {610, 620, 630, 635};
constexpr int DateRow = 0;
constexpr int DateColumn = 3;
constexpr int CounterRow = 3;

// Dates are stored as day numbers counted from 30 December 1899; the fraction would be the
// time of day. A plate whose date was never set holds day 0, which is no date at all.
const QDate DayZero(1899, 12, 30);

QDate dateOfDayNumber(float dayNumber) {
    if (dayNumber == 0.0f || !std::isfinite(dayNumber) || std::abs(dayNumber) > 3e6f)
        return {};
    return DayZero.addDays(static_cast<qint64>(std::trunc(dayNumber)));
}

float dayNumberOf(QDate date) {
    return static_cast<float>(DayZero.daysTo(date));
}

} // namespace

AppCountersPanel::AppCountersPanel(Clock& clock, Prompt& prompt, const SelectedPlate& plate,
                                   QWidget* parent)
    : PlatePanel("frmAppCounters", 600, prompt, plate, parent)
    , lblAppLastDate(makeLabel("lblAppLastDate", 640))
    , txtAppLastDate(makeBox(QStringLiteral("txtAppLastDate"), plainCaption(640), 12, [] {}))
    , cmdSetCounters(new QPushButton(strings::text(650), this))
    , m_clock(clock) {
    auto* grid = new QGridLayout;
    for (int i = 0; i < Counters; ++i) {
        const QString index = QString::number(i);
        lblAppCounter[i] =
            makeLabel(qPrintable(QStringLiteral("lblAppCounter") + index), CounterCaptions[i]);
        txtAppCounter[i] = makeBox(QStringLiteral("txtAppCounter") + index,
                                   plainCaption(CounterCaptions[i]), 13, [] {});
        grid->addWidget(lblAppCounter[i], i / 2, (i % 2) * 2);
        grid->addWidget(txtAppCounter[i], i / 2, (i % 2) * 2 + 1);
    }
    grid->addWidget(lblAppLastDate, 2, 0);
    grid->addWidget(txtAppLastDate, 2, 1);
    cmdSetCounters->setObjectName(QStringLiteral("cmdSetCounters"));
    grid->addWidget(cmdSetCounters, 2, 3);
    connect(cmdSetCounters, &QPushButton::clicked, this, &AppCountersPanel::setCounters);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
}

void AppCountersPanel::fill(PlateDevice& plate) {
    for (int i = 0; i < Counters; ++i)
        showCounter(plate, i);
    showDate(plate);
}

void AppCountersPanel::showCounter(PlateDevice& plate, int index) {
    txtAppCounter[index]->setText(formatGeneral(plate.MatrixElement(CounterRow, index)));
}

void AppCountersPanel::showDate(PlateDevice& plate) {
    const QDate date = dateOfDayNumber(plate.MatrixElement(DateRow, DateColumn));
    txtAppLastDate->setText(date.isValid() ? formatShortDate(date) : QString());
}

void AppCountersPanel::setCounters() {
    if (!hasPlate())
        return;
    if (txtAppLastDate->text().trimmed().isEmpty())
        txtAppLastDate->setText(formatShortDate(m_clock.currentDateTime().date()));
    withPlate([this](PlateDevice& plate) {
        const QDate date = parseShortDate(txtAppLastDate->text().trimmed());
        if (date.isValid()) {
            plate.SetMatrixElement(DateRow, DateColumn, dayNumberOf(date));
        } else {
            showDate(plate);
            prompt().beep();
        }
        for (int i = 0; i < Counters; ++i) {
            if (txtAppCounter[i]->text().trimmed().isEmpty())
                txtAppCounter[i]->setText(QStringLiteral("0"));
            const std::optional<double> value = parseNumber(txtAppCounter[i]->text());
            if (value) {
                plate.SetMatrixElement(CounterRow, i, toSingle(*value));
            } else {
                showCounter(plate, i);
                prompt().beep();
            }
        }
    });
}

} // namespace kx
