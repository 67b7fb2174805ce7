#pragma once

#include "cli/CalFileFit.h"
#include "cli/Command.h"

namespace kx::cli {

// `kxplate fit FILE.cal [--engine builtin|octave] [--json]`: the calibration matrix fitted to
// the file's points, each element with its expanded uncertainty (± at about 95 %), the condition
// number, the error table with the points that do not fit, and the fit's findings in words. A file
// that cannot be read, or whose points determine no matrix, is a file error naming the file.
class FitCommand final : public Command {
    Q_OBJECT
public:
    FitCommand(Console& console, QString file, FitEngineChoice engine, bool json,
               QObject* parent = nullptr);
    void start() override;

private:
    QString m_file;
    FitEngineChoice m_engine;
    bool m_json;
};

} // namespace kx::cli
