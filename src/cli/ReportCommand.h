#pragma once

#include "cli/Command.h"

namespace kx::cli {

// `kxplate report FILE.cal -o FILE.pdf [--operator CODE]`: the calibration's certificate, the
// same two pages the calibration dialog's Report writes for the file once its matrix is
// computed (the built-in fit), drawn offscreen. The profile's calibration settings give the
// acceptance limits, as in the dialog; the serial number is the file name's part before its
// running number; the operator is CODE when given.
class ReportCommand final : public Command {
    Q_OBJECT
public:
    ReportCommand(Console& console, QString file, QString output, QString operatorCode,
                  QObject* parent = nullptr);
    void start() override;

private:
    QString m_file;
    QString m_output;
    QString m_operator;
};

} // namespace kx::cli
