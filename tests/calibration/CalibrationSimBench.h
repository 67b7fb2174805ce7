#pragma once

#include "calibration/AcquisitionPlan.h"
#include "calibration/Calibration.h"
#include "calibration/CalibrationSettings.h"
#include "calibration/LinearityScaling.h"
#include "calibration/PointTable.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"

#include <QObject>
#include <stdexcept>

namespace kx::test {

// The simulated plate every calibration proof runs on: uncalibrated (zeros and matrix empty)
// with its hidden matrix drawn from the seed. `imperfect` keeps the simulator's default
// imperfections (placement scatter, nonlinearity, hysteresis, creep, the top's error, 1/f
// noise); otherwise the plate is ideal apart from white converter noise.
inline SimPlateConfig proofPlateConfig(quint64 seed, bool imperfect) {
    SimPlateConfig config;
    config.serial = QStringLiteral("30177");
    config.seed = seed;
    config.calibrated = false;
    if (!imperfect)
        config.imperfections = SimImperfections::none();
    return config;
}

// The calibration procedure without its dialog, through the real plate calls on a manual
// clock: what cmdZero, cmdData, cmdScaleZero and cmdScaleLoad do and what their completions
// do with the results.
class CalibrationSimBench {
public:
    static constexpr double WeightKg = 25;
    static constexpr int SettleMs = 1000; // a weight settles within 0.2 s

    CalibrationSimBench(quint64 seed, bool imperfect, QString duration = QStringLiteral("2"))
        : CalibrationSimBench(proofPlateConfig(seed, imperfect), std::move(duration)) {}

    explicit CalibrationSimBench(const SimPlateConfig& plateConfig,
                                 QString duration = QStringLiteral("2"))
        : m_duration(std::move(duration)) {
        settings.Points = CalibrationSettings::defaultPoints();
        settings.Load = static_cast<float>(WeightKg * settings.Gravity);
        settings.LinearityLoads = CalibrationSettings::defaultLinearityLoads(settings.Gravity);
        calibration = Calibration::fromSettings(settings);
        // The plate stands where the profile's gravity was measured.
        driver.setGravity(settings.Gravity);
        plate = driver.addPlate(plateConfig);
        driver.AddDeviceId(PlateVendorId, PlateProductId1, 0);
        driver.AddDeviceId(PlateVendorId, PlateProductId2, 0);
        driver.OpenDevices(PlateVendorId, PlateProductId1, PlateProductId2);
        clock.settle();
        QObject::connect(
            plate, &PlateDevice::ZeroDone, &m_context,
            [this](qint32, const ChannelValues& a, const ChannelValues& d, const ChannelValues&) {
                m_zero = ZeroReading::fromZeroDone(a, d);
                m_done = true;
            });
        QObject::connect(plate, &PlateDevice::TestDone, &m_context,
                         [this](qint32 n, const QList<Float3>&, const QList<Float3>& volts) {
                             m_data = DataReading::fromSamples(n, volts);
                             m_done = true;
                         });
    }

    // Every point in turn: zero unloaded, the weight on its mark (moved by the offset of that
    // point, if any), data, the weight off.
    void walkThePoints(const std::vector<std::pair<double, double>>& offsets = {}) {
        PointTable table(calibration);
        for (std::size_t i = 0; i < calibration.record.points.size(); ++i) {
            calibration.currentPoint = static_cast<int>(i);
            const auto [dx, dy] = i < offsets.size() ? offsets[i] : std::pair{0.0, 0.0};
            if (table.completeZero(takeZero(), settings.MaxZeroStdDev, now(),
                                   plate->Temperature()) != AcquisitionOutcome::Accepted)
                throw std::runtime_error("zero rejected");
            writeZero(calibration.record.points[i].zeroAverage);
            const CalPoint& p = calibration.record.points[i];
            place(WeightKg, p.x + dx, p.y + dy);
            writeZero(p.zeroAverage);
            if (table.completeData(takeData(), settings.MaxDataStdDev, now(),
                                   plate->Temperature()) != AcquisitionOutcome::Accepted)
                throw std::runtime_error("data rejected");
            unload();
        }
    }

    // The scaling zero, then the weights stacked one by one on (x, y) and taken off again.
    void runLinearity(double x, double y) {
        if (LinearityScaling::completeZero(calibration, takeZero(), settings.MaxZeroStdDev, now(),
                                           plate->Temperature()) != AcquisitionOutcome::Accepted)
            throw std::runtime_error("scaling zero rejected");
        writeZero(calibration.record.scalingZero.average);
        const auto steps = static_cast<int>(calibration.record.steps.size());
        for (int step = 0; step < steps; ++step) {
            // Steps 1..4 hold 25, 50, 75, 100 kg, steps 5..8 100, 75, 50, 25 kg.
            const int weights = step < steps / 2 ? step + 1 : steps - step;
            unload();
            place(WeightKg * weights, x, y);
            if (LinearityScaling::completeStep(
                    calibration, step, takeData(), settings.MaxDataStdDev, now(),
                    plate->Temperature()) != AcquisitionOutcome::Accepted)
                throw std::runtime_error("step rejected");
        }
        unload();
    }

    ManualClock clock{1000};
    SimDriver driver{clock};
    SimPlate* plate = nullptr;
    CalibrationSettings settings;
    Calibration calibration;

private:
    QDateTime now() const {
        return QDateTime(QDate(2026, 6, 1), QTime(8, 0)).addMSecs(clock.tickCount());
    }

    qint32 samples() {
        return AcquisitionPlan::from(m_duration, plate->SampleFrequency(Which::Current)).samples;
    }

    void waitForCompletion() {
        for (int i = 0; i < 10000 && !m_done; ++i)
            clock.advance(100);
        if (!m_done)
            throw std::runtime_error("acquisition never completed");
        m_done = false;
    }

    void prepare() {
        plate->StopAcquisition();
        plate->FlushData();
        plate->CalibrateSelf();
    }

    ZeroReading takeZero() {
        prepare();
        plate->StartZero(samples(), true, 0);
        waitForCompletion();
        return m_zero;
    }

    DataReading takeData() {
        prepare();
        plate->StartTest(samples(), true, true, true, 0, true);
        waitForCompletion();
        return m_data;
    }

    void writeZero(const std::array<double, 4>& average) {
        const auto zero = PointTable::deviceZero(average);
        for (int c = 0; c < 3; ++c)
            plate->SetZeroValue(c, Which::Current, zero[static_cast<std::size_t>(c)]);
    }

    void place(double kilograms, double x, double y) {
        plate->loads().placeWeight(kilograms, x, y, plate->now());
        clock.advance(SettleMs);
    }

    void unload() {
        plate->loads().removeAll(plate->now());
        clock.advance(SettleMs);
    }

    QString m_duration;
    QObject m_context;
    bool m_done = false;
    ZeroReading m_zero;
    DataReading m_data;
};

} // namespace kx::test
