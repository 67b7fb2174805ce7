// Scenario files: any bytes either read as a scenario that holds together and runs, or fail
// with an error naming a line of the file.

#include "FuzzCheck.h"
#include "device/PlateError.h"
#include "device/PlateTypes.h"
#include "sim/ScenarioReader.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"

#include <QBuffer>
#include <QRegularExpression>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

using kx::fuzz::check;

namespace {

bool finite(std::initializer_list<double> values) {
    return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
}

void checkError(const QString& error, qsizetype lineCount) {
    static const QRegularExpression form(QStringLiteral("^Line (\\d+): ."),
                                         QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = form.match(error);
    check(match.hasMatch(), "an error starts with its line");
    const qlonglong line = match.captured(1).toLongLong();
    check(line >= 1 && line <= lineCount, "an error names a line of the file");
}

void checkScenario(const kx::Scenario& scenario, qsizetype lineCount) {
    check(finite({scenario.gravity}) && scenario.gravity > 0, "gravity is positive");
    for (qsizetype i = 0; i < scenario.plates.size(); ++i) {
        const kx::SimPlateConfig& p = scenario.plates[i];
        check(!p.serial.isEmpty() && !p.serial.contains(u' '), "a serial is one word");
        for (qsizetype j = 0; j < i; ++j)
            check(scenario.plates[j].serial.compare(p.serial, Qt::CaseInsensitive) != 0,
                  "serials are unique");
        check(finite({p.noiseCodes, p.gageVoltage, p.sampleFrequency, p.modulatorRate,
                      p.ambientTemperature}),
              "plate numbers are finite");
        check(p.noiseCodes >= 0 && p.sampleFrequency > 0 && p.modulatorRate > 0 &&
                  std::abs(p.gageVoltage) <= 10,
              "plate numbers are in range");
        check(!p.trueMatrix || kx::inverse(*p.trueMatrix), "a given matrix is invertible");
    }
    for (const kx::Scenario::Event& e : scenario.events) {
        check(e.line >= 1 && e.line <= lineCount, "an event knows its line");
        check(e.atMs >= 0 && e.atMs <= std::numeric_limits<int>::max(),
              "an event time fits a timer");
        check(std::any_of(scenario.plates.cbegin(), scenario.plates.cend(),
                          [&e](const kx::SimPlateConfig& p) { return p.serial == e.serial; }),
              "an event names a plate, spelled as above");
        check(finite({e.kilograms, e.x, e.y}) && e.kilograms >= 0, "event numbers are in range");
        if (e.action == kx::Scenario::Event::Action::PlaceWeight ||
            e.action == kx::Scenario::Event::Action::PlacePerson)
            check(kx::PlateTop{}.contains(e.x, e.y), "a load stands on the top");
        check(e.afterSamples >= 0, "a sample count is not negative");
    }
}

constexpr int SamplesPerPlate = 300;

// Every plate that answers streams a few hundred samples after the events, one plate at a
// time: a value that read well but hangs, overflows or poisons the sampling shows here.
void stream(kx::ManualClock& clock, kx::SimPlate& plate) {
    QObject context;
    qint64 count = 0;
    QObject::connect(
        &plate, &kx::PlateDevice::ForcesIn, &context,
        [&count](qint32, const kx::Float3& forces, const kx::Float3& volts) {
            ++count;
            check(finite({forces[0], forces[1], forces[2], volts[0], volts[1], volts[2]}),
                  "a sample is finite");
        });
    double hertz = 0;
    try {
        hertz = plate.SampleFrequency(kx::Which::Current);
        check(std::isfinite(hertz) && hertz > 0, "a sampling frequency is positive");
        plate.StartAcquisition(true, false, true, false, true);
    } catch (const kx::PlateError&) {
        return; // unplugged, not answering or told to fail: nothing to stream
    }
    const auto ms = qint64(std::ceil(SamplesPerPlate * 1000 / hertz));
    clock.advance(ms);
    // Sample k falls due at floor(k * 1000 / f) ms: those due by `ms` are fewer than
    // (ms + 1) * f / 1000, and above 500 Hz two may share a millisecond. One more for the
    // plate's frequency being read as a single.
    check(double(count) <= double(ms + 1) * hertz / 1000 + 1, "samples come at their rate");
    try {
        plate.StopAcquisition();
    } catch (const kx::PlateError&) {
    }
}

// A scenario that reads must also run: its plates are built, listed and every event happens.
void run(const kx::Scenario& scenario) {
    kx::ManualClock clock;
    kx::SimDriver driver(clock);
    scenario.applyTo(driver);
    driver.AddDeviceId(kx::PlateVendorId, kx::PlateProductId1, 0);
    driver.AddDeviceId(kx::PlateVendorId, kx::PlateProductId2, 0);
    driver.OpenDevices(kx::PlateVendorId, kx::PlateProductId1, kx::PlateProductId2);
    qint64 last = 0;
    for (const kx::Scenario::Event& e : scenario.events)
        last = std::max(last, e.atMs);
    clock.advance(last + 1);
    for (const kx::SimPlateConfig& config : scenario.plates)
        if (kx::SimPlate* plate = driver.plate(config.serial))
            stream(clock, *plate);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    const qsizetype lineCount = bytes.count('\n') + 1;

    kx::ScenarioReader reader;
    const std::optional<kx::Scenario> scenario = reader.read(buffer);
    if (!scenario) {
        checkError(reader.errorString(), lineCount);
        return 0;
    }
    check(reader.errorString().isEmpty(), "a scenario that reads has no error");
    checkScenario(*scenario, lineCount);
    run(*scenario);
    return 0;
}
