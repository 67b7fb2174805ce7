#pragma once

#include "cli/PlateCommand.h"

namespace kx::cli {

// `kxplate info SERIAL`: the plate's identity, converter parameters (current and default),
// zero values, calibration matrix, status switches, application counters and, from firmware
// 2 on, its service record with the calibration and inspection records. Reads only.
class InfoCommand final : public PlateCommand {
    Q_OBJECT
public:
    InfoCommand(Console& console, Clock& clock, PlateDriver& driver, QString serial, bool json,
                QObject* parent = nullptr);

private:
    void run(PlateDevice& plate) override;

    bool m_json;
};

} // namespace kx::cli
