#pragma once

#include "CalibrationPlate.h"
#include "calibration/CalibrationSession.h"
#include "sim/SimDriver.h"
#include "sim/SimPlate.h"
#include "support/ManualClock.h"

#include <stdexcept>

namespace kx::test {

// The calibration plate at the profile's gravity, opened as the main window opens plates.
inline SimPlate& openCalibrationPlate(SimDriver& driver, ManualClock& clock) {
    SimPlate* plate = driver.addPlate(calibrationPlateConfig());
    plate->loads().setGravity(ProfileGravity);
    driver.OpenDevices(PlateVendorId, PlateProductId1, PlateProductId2);
    clock.settle();
    return *plate;
}

// Weights put on the simulated plate and taken off, each given half a second to settle.
class WeightHands {
public:
    WeightHands(ManualClock& clock, SimPlate& plate)
        : m_clock(clock)
        , m_plate(plate) {}

    void unload() {
        m_plate.loads().removeAll(m_plate.now());
        m_clock.advance(500);
    }
    void place(double kilograms, double x, double y) {
        m_plate.loads().placeWeight(kilograms, x, y, m_plate.now());
        m_clock.advance(500);
    }

protected:
    ManualClock& m_clock;
    SimPlate& m_plate;
};

// A technician working through a calibration session on the simulated plate: weights on and
// off, the session's commands, and the clock moved on until the session is idle again.
class SessionHands : public WeightHands {
public:
    SessionHands(ManualClock& clock, SimPlate& plate, CalibrationSession& session)
        : WeightHands(clock, plate)
        , m_session(session) {}

    bool idle() const { return m_session.activity() == CalibrationSession::Activity::Idle; }
    void waitIdle() {
        for (int ms = 0; ms < 10000 && !idle(); ms += 10)
            m_clock.advance(10);
        if (!idle())
            throw std::runtime_error("the acquisition never ended");
    }

    void goTo(int point) {
        while (m_session.calibration().currentPoint != point)
            m_session.next();
    }
    void takeZero() {
        unload();
        m_session.takeZero();
        waitIdle();
    }
    // The weight on the current point's mark, or `offMark` metres to its right.
    void takeData(double offMark = 0) {
        const CalPoint& at = m_session.calibration()
                                 .record.points[std::size_t(m_session.calibration().currentPoint)];
        place(CalibrationKilograms, at.x + offMark, at.y);
        m_session.takeData();
        waitIdle();
    }
    // Zero and data at each point from `from` up to `to`, reached with Next.
    void walk(int from, int to) {
        for (int point = from; point < to; ++point) {
            goTo(point);
            takeZero();
            takeData();
        }
        unload();
    }
    // The scaling zero, then `kilograms` at the plate's origin for each of `steps`.
    void takeScalingZero() {
        unload();
        m_session.takeScalingZero();
        waitIdle();
    }
    void takeStep(int step, double kilograms) {
        unload();
        place(kilograms, 0, 0);
        m_session.takeStep(step);
        waitIdle();
    }

private:
    CalibrationSession& m_session;
};

} // namespace kx::test
