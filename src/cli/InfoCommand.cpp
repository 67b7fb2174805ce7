#include "cli/InfoCommand.h"

#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "cli/JsonOutput.h"
#include "cli/PlateInfo.h"
#include "cli/TextOutput.h"
#include "maintenance/ServiceRecordText.h"
#include "resources/StringTable.h"
#include "support/DateFormat.h"
#include "support/NumberFormat.h"

#include <QJsonArray>
#include <QJsonObject>

namespace kx::cli {

namespace {

// The captions of the main window and of the extended device information.
constexpr int GeneralInfo = 300;
constexpr int SerialNumber = 310;
constexpr int FirmwareVersion = 320;
constexpr int MatrixFrame = 350;
constexpr int MatrixUnits = 360;
constexpr int StatusFrame = 500;
constexpr int Polled = 510;
constexpr int Sleep = 520;
constexpr int BackgroundCalibration = 530;
constexpr int Powered = 540;
constexpr int CountersFrame = 600;
constexpr int CounterNames[] = {610, 620, 630, 635};
constexpr int CountersDate = 640;
constexpr int ConverterFrame = 700;
constexpr int GageVoltage = 710;
constexpr int TurboDecimation = 720;
constexpr int Resolution = 730;
constexpr int SamplingFrequency = 740;
constexpr int CutoffFrequency = 750;
constexpr int DefaultColumn = 760;
constexpr int CurrentColumn = 770;
constexpr int ZeroFrame = 800;
constexpr int ChannelNames = 810; // then one number per channel, 10 apart
constexpr int RecordFrame = 9200;
// The extended device information's button, its dots dropped.
const QString ExtendedInfo = caption(330).remove(QStringLiteral("...")) + u':';
constexpr int MaxTemperature = 9130;
constexpr int Temperature = 9140;
constexpr int MinTemperature = 9150;
constexpr int Enumerations = 9160;
constexpr int TimeInService = 9170;
constexpr int CalibrationDate = 9210;
constexpr int InspectionDate = 9220;
constexpr int Operator = 9211;

QString section(const QString& heading, const std::vector<QStringList>& rows) {
    return heading + u'\n' + textTable(rows) + u'\n';
}

QString section(int captionId, const std::vector<QStringList>& rows) {
    return section(strings::text(captionId), rows);
}

QStringList converterRow(int captionId, const PlateInfo& info,
                         const std::function<QString(const PlateInfo::Converter&)>& value) {
    return {caption(captionId), value(info.current), value(info.defaults)};
}

QString converterText(const PlateInfo& info) {
    using C = PlateInfo::Converter;
    const auto three = [](float v) { return formatNumber(v, u"0.000"); };
    return section(
        ConverterFrame,
        {{QString(), caption(CurrentColumn), caption(DefaultColumn)},
         converterRow(GageVoltage, info, [&](const C& c) { return three(c.gageVoltage); }),
         converterRow(TurboDecimation, info,
                      [](const C& c) {
                          return QString::number(c.turboRate) + u'/' +
                                 QString::number(c.decimationRate);
                      }),
         {caption(Resolution), formatNumber(info.resolution, u"0")},
         converterRow(SamplingFrequency, info,
                      [&](const C& c) { return three(c.sampleFrequency); }),
         converterRow(CutoffFrequency, info,
                      [&](const C& c) { return three(c.cutoffFrequency); })});
}

QString text(const PlateInfo& info) {
    QString out = section(GeneralInfo, {{caption(SerialNumber), info.serial},
                                        {caption(FirmwareVersion), info.firmware()}});
    out += converterText(info);

    std::vector<QStringList> zero{{QString(), caption(CurrentColumn), caption(DefaultColumn)}};
    for (std::size_t c = 0; c < PlateInfo::Channels; ++c)
        zero.push_back({caption(ChannelNames + 10 * static_cast<int>(c)),
                        QString::number(info.zeroCurrent[c]),
                        QString::number(info.zeroDefault[c])});
    out += section(ZeroFrame, zero);

    std::vector<QStringList> matrix{
        {QString(), QStringLiteral("V1"), QStringLiteral("V2"), QStringLiteral("V3")}};
    const char* rowNames[] = {"Fz", "Mx", "My"};
    for (std::size_t r = 0; r < 3; ++r) {
        QStringList row{QLatin1String(rowNames[r])};
        for (const float cell : info.matrix[r])
            row << formatNumber(cell, u"0.000");
        matrix.push_back(row);
    }
    out += strings::text(MatrixFrame) + u' ' + strings::text(MatrixUnits) + u'\n' +
           textTable(matrix) + u'\n';

    out +=
        section(StatusFrame, {{caption(Polled), yesNo(info.polled)},
                              {caption(Powered), yesNo(info.powerOn)},
                              {caption(Sleep), yesNo(info.converterSleep)},
                              {caption(BackgroundCalibration), yesNo(info.backgroundCalibration)}});

    std::vector<QStringList> counters;
    for (std::size_t i = 0; i < info.counters.size(); ++i)
        counters.push_back({caption(CounterNames[i]), formatGeneral(info.counters[i])});
    const QDate date = info.countersDate();
    counters.push_back({caption(CountersDate), date.isValid() ? formatShortDate(date) : QString()});
    out += section(CountersFrame, counters);

    if (const auto& r = info.record) {
        out +=
            section(ExtendedInfo,
                    {{caption(MaxTemperature), formatTemperature(r->maxTemperature)},
                     {caption(Temperature), formatTemperature(r->temperature)},
                     {caption(MinTemperature), formatTemperature(r->minTemperature)},
                     {caption(Enumerations), formatGeneral(r->enumerations)},
                     {caption(TimeInService), formatTimeInService(r->secondsInService).trimmed()}});
        out +=
            section(RecordFrame, {{caption(CalibrationDate), formatRecordDate(r->calibrationDate)},
                                  {caption(Operator), r->calibrationOperator},
                                  {caption(InspectionDate), formatRecordDate(r->inspectionDate)},
                                  {caption(Operator), r->inspectionOperator}});
    }
    return out;
}

QJsonObject json(const PlateInfo::Converter& c) {
    return {{QStringLiteral("gageVoltage"), jsonSingle(c.gageVoltage)},
            {QStringLiteral("samplingFrequency"), jsonSingle(c.sampleFrequency)},
            {QStringLiteral("cutoffFrequency"), jsonSingle(c.cutoffFrequency)},
            {QStringLiteral("turboRate"), c.turboRate},
            {QStringLiteral("decimationRate"), c.decimationRate}};
}

QJsonValue jsonDate(const QDateTime& date) {
    return date.isValid() ? QJsonValue(date.toString(Qt::ISODate)) : QJsonValue();
}

QJsonObject json(const PlateInfo& info) {
    QJsonObject current = json(info.current);
    current.insert(QStringLiteral("resolution"), info.resolution);
    QJsonArray zeroCurrent;
    QJsonArray zeroDefault;
    for (std::size_t c = 0; c < PlateInfo::Channels; ++c) {
        zeroCurrent.append(info.zeroCurrent[c]);
        zeroDefault.append(info.zeroDefault[c]);
    }
    QJsonArray matrix;
    for (const Float3& row : info.matrix)
        matrix.append(QJsonArray{jsonSingle(row[0]), jsonSingle(row[1]), jsonSingle(row[2])});
    QJsonArray counters;
    for (const float counter : info.counters)
        counters.append(jsonSingle(counter));
    const QDate date = info.countersDate();
    QJsonObject object{
        {QStringLiteral("serial"), info.serial},
        {QStringLiteral("firmware"), info.firmware()},
        {QStringLiteral("calibrated"), info.calibrated()},
        {QStringLiteral("converter"),
         QJsonObject{{QStringLiteral("current"), current},
                     {QStringLiteral("default"), json(info.defaults)}}},
        {QStringLiteral("zeroValues"), QJsonObject{{QStringLiteral("current"), zeroCurrent},
                                                   {QStringLiteral("default"), zeroDefault}}},
        {QStringLiteral("matrix"), matrix},
        {QStringLiteral("switches"),
         QJsonObject{{QStringLiteral("polled"), info.polled},
                     {QStringLiteral("powerOn"), info.powerOn},
                     {QStringLiteral("converterSleep"), info.converterSleep},
                     {QStringLiteral("backgroundCalibration"), info.backgroundCalibration}}},
        {QStringLiteral("counters"),
         QJsonObject{{QStringLiteral("values"), counters},
                     {QStringLiteral("date"),
                      date.isValid() ? QJsonValue(date.toString(Qt::ISODate)) : QJsonValue()}}},
    };
    if (const auto& r = info.record) {
        object.insert(
            QStringLiteral("serviceRecord"),
            QJsonObject{{QStringLiteral("maxTemperature"), jsonSingle(r->maxTemperature)},
                        {QStringLiteral("temperature"), jsonSingle(r->temperature)},
                        {QStringLiteral("minTemperature"), jsonSingle(r->minTemperature)},
                        {QStringLiteral("enumerations"), r->enumerations},
                        {QStringLiteral("secondsInService"), r->secondsInService},
                        {QStringLiteral("calibration"),
                         QJsonObject{{QStringLiteral("date"), jsonDate(r->calibrationDate)},
                                     {QStringLiteral("operator"), r->calibrationOperator}}},
                        {QStringLiteral("inspection"),
                         QJsonObject{{QStringLiteral("date"), jsonDate(r->inspectionDate)},
                                     {QStringLiteral("operator"), r->inspectionOperator}}}});
    }
    return object;
}

} // namespace

InfoCommand::InfoCommand(Console& console, Clock& clock, PlateDriver& driver, QString serial,
                         bool json, QObject* parent)
    : PlateCommand(console, clock, driver, std::move(serial), strings::MainBlock, parent)
    , m_json(json) {}

void InfoCommand::run(PlateDevice& plate) {
    PlateInfo info;
    if (!call([&] { info = PlateInfo::read(plate); }))
        return;
    console().print(m_json ? jsonText(json(info)) : text(info));
    finish(Success);
}

} // namespace kx::cli
