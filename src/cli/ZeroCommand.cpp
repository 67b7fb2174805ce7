#include "cli/ZeroCommand.h"

#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "cli/JsonOutput.h"
#include "cli/TextOutput.h"
#include "device/PlateDevice.h"
#include "device/PlateError.h"
#include "measure/ZeroStatistics.h"
#include "resources/StringTable.h"
#include "support/NumberFormat.h"
#include "support/Rounding.h"

#include <QJsonArray>
#include <QJsonObject>
#include <algorithm>

namespace kx::cli {

namespace {

// The library's settling option of a zero acquisition, passed as the plate expects it.
constexpr qint32 ZeroOption = 30;
constexpr qsizetype Channels = 4;
// The zero dialog's captions.
constexpr int ChannelCaptions = strings::ZeroBlock + 230; // then one number per channel

} // namespace

ZeroCommand::ZeroCommand(Console& console, Clock& clock, PlateDriver& driver, Options options,
                         QObject* parent)
    : PlateCommand(console, clock, driver, options.serial, strings::ZeroBlock, parent)
    , m_options(std::move(options)) {}

void ZeroCommand::run(PlateDevice& plate) {
    connect(&plate, &PlateDevice::ZeroProgress, this, [this](qint32 samples) {
        console().transient(
            aboutPlate(QStringLiteral("zero, %1 of %2 samples").arg(samples).arg(m_samples)));
    });
    connect(&plate, &PlateDevice::ZeroDone, this,
            [this](qint32, const ChannelValues& average, const ChannelValues& deviation,
                   const ChannelValues&) { ZeroDone(average, deviation); });
    if (!call([&] { m_frequency = plate.SampleFrequency(Which::Current); }))
        return;
    m_samples = roundHalfEven(m_options.seconds * static_cast<double>(m_frequency));
    if (m_samples < 1) {
        fail(UsageError, aboutPlate(QStringLiteral("%1 s at %2 Hz is not one sample")
                                        .arg(formatGeneral(m_options.seconds),
                                             formatNumber(m_frequency, u"0.000"))));
        return;
    }
    m_acquiring = call([&] {
        plate.FlushData();
        plate.CalibrateSelf();
        plate.StartZero(m_samples, true, ZeroOption,
                        roundHalfEven(0.5 * static_cast<double>(m_frequency)));
    });
}

void ZeroCommand::end(int exitCode) {
    if (m_acquiring)
        stopAcquisition();
    m_acquiring = false;
    finish(exitCode);
}

void ZeroCommand::ZeroDone(const ChannelValues& average, const ChannelValues& deviation) {
    if (!m_acquiring)
        return;
    m_acquiring = false;
    int firmware = 0;
    int resolution = 0;
    if (!call([&] {
            firmware = plate()->FirmwareMajor();
            resolution = plate()->Resolution();
        }))
        return;
    const QList<ZeroReadout> channels =
        zeroReadouts(average, deviation, firmware, resolution, Channels);
    // The plate takes the averages as the dialog shows them, in whole codes.
    if (m_options.write && !call([&] {
            for (int c = 0; c < channels.size(); ++c)
                plate()->SetZeroValue(c, Which::Current, channels[c].averageText.toInt());
        }))
        return;

    if (m_options.json) {
        QJsonArray array;
        for (int c = 0; c < channels.size(); ++c) {
            const ZeroReadout& z = channels[c];
            array.append(QJsonObject{{QStringLiteral("channel"), c + 1},
                                     {QStringLiteral("averageCodes"), z.average},
                                     {QStringLiteral("averageVolts"), z.volts},
                                     {QStringLiteral("rmsNoiseCodes"), z.deviation},
                                     {QStringLiteral("snrDb"), z.snrDb}});
        }
        console().print(
            jsonText(QJsonObject{{QStringLiteral("serial"), serial()},
                                 {QStringLiteral("samplingFrequency"), jsonSingle(m_frequency)},
                                 {QStringLiteral("samples"), m_samples},
                                 {QStringLiteral("channels"), array},
                                 {QStringLiteral("written"), m_options.write}}));
    } else {
        std::vector<QStringList> rows{
            {QString(), QStringLiteral("Average (A/D Code)"), QStringLiteral("Average (V)"),
             QStringLiteral("RMS Noise (A/D Codes)"), caption(strings::ZeroBlock + 222)}};
        for (int c = 0; c < channels.size(); ++c) {
            const ZeroReadout& z = channels[c];
            rows.push_back({caption(ChannelCaptions + c), z.averageText, z.voltsText,
                            z.deviationText, z.snrText});
        }
        QString text = aboutPlate(QStringLiteral("%1 samples at %2 Hz\n")
                                      .arg(m_samples)
                                      .arg(formatNumber(m_frequency, u"0.000"))) +
                       textTable(rows);
        if (m_options.write)
            text += QStringLiteral("The averages are the plate's current zero values now.\n");
        console().print(text);
    }
    finish(Success);
}

} // namespace kx::cli
