// A technician's program in the middle of a calibration, for the test that kills it: walks
// the number of points given on the simulated calibration plate and prints, after each
// accepted point, "accepted <point>" with the point's zero averages and data means in full
// precision; then starts the next point's zero, prints "running" and waits to be killed.

#include "RecordingPrompt.h"
#include "SessionBench.h"
#include "calibration/CalibrationSettings.h"
#include "support/IniFile.h"

#include <QCoreApplication>
#include <csignal>
#include <cstdio>
#include <unistd.h>

int main(int argc, char** argv) {
    using namespace kx;
    QCoreApplication app(argc, argv);
    const int points = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 0;
    ManualClock clock{1000};
    test::RecordingPrompt prompt;
    SimDriver driver{clock};
    SimPlate& plate = test::openCalibrationPlate(driver, clock);
    CalibrationSession session(clock, prompt);
    session.setDuration(QStringLiteral("2"));
    session.begin(CalibrationSettings::load(IniFile::sharedProfile()), &plate);
    test::SessionHands hands(clock, plate, session);
    for (int point = 0; point < points; ++point) {
        hands.goTo(point);
        hands.takeZero();
        hands.takeData();
        const CalPoint& taken = session.calibration().record.points[std::size_t(point)];
        std::printf("accepted %d", point);
        for (const double value : taken.zeroAverage)
            std::printf(" %.17g", value);
        for (const double value : taken.dataMean)
            std::printf(" %.17g", value);
        std::printf("\n");
    }
    hands.goTo(points);
    hands.unload();
    session.takeZero();
    clock.advance(500);
    std::printf("running\n");
    std::fflush(stdout);
    for (;;)
        pause();
}
