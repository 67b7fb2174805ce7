#pragma once

#include "cli/Command.h"

namespace kx {
class Clock;
class PlateDriver;
} // namespace kx

namespace kx::cli {

class PlateFinder;

// `kxplate list`: every plate found, with its serial number, firmware version, whether it
// holds a calibration matrix, and its sampling frequency and excitation in force. A plate
// that does not answer, or fails a read, is named on standard error and the command ends with
// a device error after listing the others.
class ListCommand final : public Command {
    Q_OBJECT
public:
    ListCommand(Console& console, Clock& clock, PlateDriver& driver, bool json,
                QObject* parent = nullptr);
    void start() override;

private:
    void found();

    PlateFinder* m_finder;
    bool m_json;
};

} // namespace kx::cli
