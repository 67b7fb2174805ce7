#pragma once

#include "cli/PlateCommand.h"
#include "device/PlateTypes.h"

namespace kx::cli {

// `kxplate zero SERIAL [--seconds N] [--write] [--json]`: the device zero of the unloaded
// plate as the zero dialog takes it, with per channel the average in converter codes and
// volts, the RMS noise in codes and the signal-to-noise ratio. With --write the averages
// become the plate's current zero values, as the dialog's OK writes them.
class ZeroCommand final : public PlateCommand {
    Q_OBJECT
public:
    struct Options {
        QString serial;
        double seconds = 5; // the main window opens the zero dialog with 5 s
        bool write = false;
        bool json = false;
    };

    ZeroCommand(Console& console, Clock& clock, PlateDriver& driver, Options options,
                QObject* parent = nullptr);

private:
    void run(PlateDevice& plate) override;
    void end(int exitCode) override;
    void ZeroDone(const ChannelValues& average, const ChannelValues& deviation);

    Options m_options;
    float m_frequency = 0;
    qint32 m_samples = 0;
    bool m_acquiring = false;
};

} // namespace kx::cli
