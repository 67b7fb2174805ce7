#include "cli/ListCommand.h"

#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "cli/JsonOutput.h"
#include "cli/PlateFinder.h"
#include "cli/PlateInfo.h"
#include "cli/TextOutput.h"
#include "device/PlateDevice.h"
#include "device/PlateError.h"
#include "support/NumberFormat.h"

#include <QJsonArray>
#include <QJsonObject>

namespace kx::cli {

namespace {
// The main window's captions.
constexpr int SerialCaption = 310;
constexpr int FirmwareCaption = 320;
constexpr int GageCaption = 710;
constexpr int FrequencyCaption = 740;
} // namespace

ListCommand::ListCommand(Console& console, Clock& clock, PlateDriver& driver, bool json,
                         QObject* parent)
    : Command(console, parent)
    , m_finder(new PlateFinder(clock, driver, this))
    , m_json(json) {
    connect(m_finder, &PlateFinder::ready, this, &ListCommand::found);
}

void ListCommand::start() {
    m_finder->open();
}

void ListCommand::found() {
    if (isFinished())
        return;
    if (!m_finder->error().isEmpty()) {
        fail(DeviceError, QStringLiteral("plates: ") + m_finder->error());
        return;
    }
    int status = Success;
    for (const QString& id : m_finder->notResponding()) {
        console().error(QStringLiteral("a connected plate does not respond (%1)").arg(id));
        status = DeviceError;
    }
    std::vector<PlateInfo> plates;
    for (const QString& serial : m_finder->serials()) {
        try {
            PlateDevice* plate = m_finder->plate(serial);
            if (!plate)
                throw PlateError(QStringLiteral("gone from the driver's collection"));
            plates.push_back(PlateInfo::read(*plate));
        } catch (const PlateError& error) {
            console().error(QStringLiteral("plate %1: %2").arg(serial, error.message()));
            status = DeviceError;
        }
    }
    if (m_json) {
        QJsonArray array;
        for (const PlateInfo& p : plates)
            array.append(QJsonObject{
                {QStringLiteral("serial"), p.serial},
                {QStringLiteral("firmware"), p.firmware()},
                {QStringLiteral("calibrated"), p.calibrated()},
                {QStringLiteral("samplingFrequency"), jsonSingle(p.current.sampleFrequency)},
                {QStringLiteral("excitation"), jsonSingle(p.current.gageVoltage)}});
        console().print(
            jsonText(QJsonObject{{QStringLiteral("plates"), array},
                                 {QStringLiteral("notResponding"),
                                  QJsonArray::fromStringList(m_finder->notResponding())}}));
    } else if (!plates.empty()) {
        std::vector<QStringList> rows{{caption(SerialCaption), caption(FirmwareCaption),
                                       QStringLiteral("Calibrated"), caption(FrequencyCaption),
                                       caption(GageCaption)}};
        for (const PlateInfo& p : plates)
            rows.push_back({p.serial, p.firmware(), yesNo(p.calibrated()),
                            formatNumber(p.current.sampleFrequency, u"0.000"),
                            formatNumber(p.current.gageVoltage, u"0.000")});
        console().print(textTable(rows));
    }
    finish(status);
}

} // namespace kx::cli
