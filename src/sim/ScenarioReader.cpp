#include "sim/ScenarioReader.h"

#include "sim/PlateTop.h"

#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QTextStream>
#include <cmath>
#include <limits>

namespace kx {

namespace {

using Event = Scenario::Event;

constexpr double MaxMatrixCell = 1e6;
constexpr double MaxKilograms = 5000; // far beyond what clips a plate
constexpr double MaxNoiseCodes = 1e6; // the converter spans ±8388608
constexpr double MaxExcitation = 10;  // V, the bridge supply's range
constexpr double MinModulatorRate = 1000;
constexpr double MaxModulatorRate = 200000;

// A line that does not parse: its message, without the line number.
struct LineError {
    QString message;
};

QRegularExpression pattern(const char* text) {
    return QRegularExpression(QLatin1String("^") + QLatin1String(text) + QLatin1String("$"),
                              QRegularExpression::CaseInsensitiveOption);
}

double number(const QString& text) {
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value))
        throw LineError{QStringLiteral("\"%1\" is not a number.").arg(text.trimmed())};
    return value;
}

// A number within what the simulator can make sense of, [low, high].
double within(const QString& text, double low, double high, const QString& what) {
    const double value = number(text);
    if (value < low || value > high)
        throw LineError{QStringLiteral("%1 must be between %2 and %3.")
                            .arg(what, QString::number(low), QString::number(high))};
    return value;
}

bool yesNo(const QString& text) {
    const QString t = text.trimmed().toLower();
    if (t == QLatin1String("yes") || t == QLatin1String("true") || t == QLatin1String("1"))
        return true;
    if (t == QLatin1String("no") || t == QLatin1String("false") || t == QLatin1String("0"))
        return false;
    throw LineError{QStringLiteral("\"%1\" is neither yes nor no.").arg(text.trimmed())};
}

// "90 s", "1.5 min", "1 min 30 s", "250 ms", "2 h".
qint64 duration(const QString& text) {
    static const QRegularExpression part(
        QStringLiteral("\\s*(\\d+(?:\\.\\d+)?)\\s*(ms|s|min|h)\\b"),
        QRegularExpression::CaseInsensitiveOption);
    double ms = 0;
    qsizetype at = 0;
    const QString t = text.trimmed();
    while (at < t.size()) {
        const auto m = part.match(t, at, QRegularExpression::NormalMatch,
                                  QRegularExpression::AnchorAtOffsetMatchOption);
        if (!m.hasMatch())
            throw LineError{QStringLiteral("\"%1\" is not a time such as 90 s, 1 min 30 s or "
                                           "250 ms.")
                                .arg(t)};
        const QString unit = m.captured(2).toLower();
        const double scale = unit == QLatin1String("ms")    ? 1
                             : unit == QLatin1String("s")   ? 1000
                             : unit == QLatin1String("min") ? 60000
                                                            : 3600000;
        ms += m.captured(1).toDouble() * scale;
        at = m.capturedEnd();
    }
    if (t.isEmpty() || ms > std::numeric_limits<int>::max())
        throw LineError{QStringLiteral("\"%1\" is not a time of at most 24 days.").arg(t)};
    return std::llround(ms);
}

Matrix3 matrix(const QString& text) {
    const QStringList rows = text.split(QLatin1Char(';'));
    Matrix3 m{};
    bool shaped = rows.size() == 3;
    for (int r = 0; shaped && r < 3; ++r) {
        const QStringList cells =
            rows[r].split(QRegularExpression(QStringLiteral("[\\s,]+")), Qt::SkipEmptyParts);
        shaped = cells.size() == 3;
        for (int c = 0; shaped && c < 3; ++c)
            m[r][c] = number(cells[c]);
    }
    if (!shaped)
        throw LineError{QStringLiteral("A matrix is three rows of three numbers, the rows "
                                       "separated by \";\".")};
    for (const Vector3& row : m)
        for (double cell : row)
            if (std::abs(cell) > MaxMatrixCell)
                throw LineError{QStringLiteral("A matrix element beyond ±%1 N per V is no plate's.")
                                    .arg(MaxMatrixCell)};
    if (!inverse(m))
        throw LineError{QStringLiteral("The matrix is singular: no plate could have it.")};
    return m;
}

class Parser {
public:
    Scenario scenario;
    int lineNumber = 0;
    // Set when an error belongs to an earlier line than the one being read.
    int errorLine = 0;

    void line(const QString& raw) {
        QString text = raw;
        if (const qsizetype hash = text.indexOf(QLatin1Char('#')); hash >= 0)
            text.truncate(hash);
        text = text.trimmed();
        if (text.isEmpty() || text.startsWith(QLatin1Char(';')))
            return;
        if (text.startsWith(QLatin1Char('[')))
            section(text);
        else if (m_section == Section::Events)
            event(text);
        else
            setting(text);
    }

    void finish() {
        finishPlate();
        if (m_ambient)
            for (SimPlateConfig& p : scenario.plates)
                p.ambientTemperature = *m_ambient;
    }

private:
    enum class Section { None, Site, Plate, Events };

    void section(const QString& text) {
        static const QRegularExpression header = pattern("\\[\\s*(site|events|plate\\b[^\\]]*)\\]");
        const auto m = header.match(text);
        if (!m.hasMatch())
            throw LineError{QStringLiteral("Unknown section %1: expected [site], [plate ...] or "
                                           "[events].")
                                .arg(text)};
        finishPlate();
        const QString name = m.captured(1).toLower();
        if (name == QLatin1String("site")) {
            m_section = Section::Site;
        } else if (name == QLatin1String("events")) {
            m_section = Section::Events;
        } else {
            m_section = Section::Plate;
            m_plate = SimPlateConfig();
            m_plateHeader = text;
            m_plateStart = lineNumber;
            m_frequencyLine = 0;
            m_seedGiven = false;
        }
    }

    void setting(const QString& text) {
        const qsizetype equals = text.indexOf(QLatin1Char('='));
        if (equals < 0)
            throw LineError{QStringLiteral("Expected \"key = value\".")};
        if (m_section == Section::None)
            throw LineError{QStringLiteral("A setting before any section.")};
        const QString key = text.left(equals).simplified().toLower();
        const QString value = text.mid(equals + 1).trimmed();
        if (m_section == Section::Site)
            siteSetting(key, value);
        else
            plateSetting(key, value);
    }

    void siteSetting(const QString& key, const QString& value) {
        if (key == QLatin1String("gravity")) {
            scenario.gravity = within(value, 1, 30, QStringLiteral("Gravity (m/s^2)"));
        } else if (key == QLatin1String("ambient")) {
            m_ambient = within(value, -40, 85, QStringLiteral("The ambient temperature (C)"));
        } else {
            throw LineError{QStringLiteral("Unknown key \"%1\" in [site].").arg(key)};
        }
    }

    void plateSetting(const QString& key, const QString& value) {
        SimPlateConfig& p = m_plate;
        if (key == QLatin1String("serial")) {
            if (value.isEmpty() || value.contains(QLatin1Char(' ')))
                throw LineError{QStringLiteral("A serial number is one word.")};
            p.serial = value;
        } else if (key == QLatin1String("firmware")) {
            static const QRegularExpression version = pattern("(\\d{1,3})\\.(\\d{1,3})");
            const auto m = version.match(value);
            if (!m.hasMatch() || m.captured(1).toInt() > 255 || m.captured(2).toInt() > 255)
                throw LineError{QStringLiteral("A firmware version is major.minor, such as 2.3.")};
            p.firmwareMajor = quint8(m.captured(1).toInt());
            p.firmwareMinor = quint8(m.captured(2).toInt());
        } else if (key == QLatin1String("seed")) {
            bool ok = false;
            p.seed = value.toULongLong(&ok);
            if (!ok)
                throw LineError{QStringLiteral("A seed is a whole number.")};
            m_seedGiven = true;
        } else if (key == QLatin1String("noise")) {
            p.noiseCodes = within(value, 0, MaxNoiseCodes, QStringLiteral("Noise (codes)"));
        } else if (key == QLatin1String("matrix")) {
            p.trueMatrix = matrix(value);
        } else if (key == QLatin1String("gage voltage")) {
            p.gageVoltage = within(value, -MaxExcitation, MaxExcitation,
                                   QStringLiteral("The gage voltage (V)"));
        } else if (key == QLatin1String("sampling frequency")) {
            p.sampleFrequency = number(value);
            m_frequencyLine = lineNumber;
        } else if (key == QLatin1String("modulator rate")) {
            p.modulatorRate = within(value, MinModulatorRate, MaxModulatorRate,
                                     QStringLiteral("A modulator rate (Hz)"));
            m_frequencyLine = lineNumber;
        } else if (imperfection(key, value, p.imperfections)) {
        } else if (key == QLatin1String("calibrated")) {
            p.calibrated = yesNo(value);
        } else if (key == QLatin1String("plugged")) {
            p.plugged = yesNo(value);
        } else {
            throw LineError{QStringLiteral("Unknown key \"%1\" in %2.").arg(key, m_plateHeader)};
        }
    }

    // Fractions and lengths are written in the units a technician reads them in.
    static bool imperfection(const QString& key, const QString& value, SimImperfections& im) {
        const auto percent = [&](const char* what) {
            return within(value, 0, 5, QString::fromLatin1(what) + QStringLiteral(" (%)")) / 100;
        };
        if (key == QLatin1String("imperfections")) {
            const QString v = value.toLower();
            if (v != QLatin1String("none") && v != QLatin1String("real"))
                throw LineError{QStringLiteral("Imperfections are \"none\" or \"real\".")};
            im = v == QLatin1String("none") ? SimImperfections::none() : SimImperfections{};
        } else if (key == QLatin1String("placement scatter")) {
            im.placementScatter =
                within(value, 0, 50, QStringLiteral("The placement scatter (mm)")) / 1000;
        } else if (key == QLatin1String("nonlinearity")) {
            im.nonlinearity = percent("The nonlinearity");
        } else if (key == QLatin1String("hysteresis")) {
            im.hysteresis = percent("The hysteresis");
        } else if (key == QLatin1String("creep")) {
            im.creep = percent("The creep");
        } else if (key == QLatin1String("top error")) {
            im.topError = within(value, 0, 20, QStringLiteral("The top error (mm)")) / 1000;
        } else if (key == QLatin1String("flicker corner")) {
            im.flickerCorner = within(value, 0, 100, QStringLiteral("The flicker corner (Hz)"));
        } else if (key == QLatin1String("channel noise")) {
            const QStringList levels =
                value.split(QRegularExpression(QStringLiteral("[\\s,]+")), Qt::SkipEmptyParts);
            if (levels.size() != 4)
                throw LineError{QStringLiteral("Channel noise is four levels, one per channel.")};
            for (int c = 0; c < 4; ++c)
                im.channelNoise[size_t(c)] =
                    within(levels[c], 0, 100, QStringLiteral("A channel's noise level"));
        } else if (key == QLatin1String("hum")) {
            im.humCodes = within(value, 0, MaxNoiseCodes, QStringLiteral("Hum (codes)"));
        } else if (key == QLatin1String("thermal zero")) {
            im.thermalZero =
                within(value, 0, 1000, QStringLiteral("The thermal zero (uV/V per C)")) * 1e-6;
        } else if (key == QLatin1String("self-heating")) {
            im.selfHeating = within(value, 0, 1, QStringLiteral("Self-heating (C per V^2)"));
        } else if (key == QLatin1String("excitation settling")) {
            im.excitationSettling =
                within(value, 0, 86400, QStringLiteral("The excitation settling (s)"));
        } else if (key == QLatin1String("frequency transient")) {
            im.frequencyTransientCodes =
                within(value, 0, MaxNoiseCodes, QStringLiteral("The frequency transient (codes)"));
        } else if (key == QLatin1String("frequency settling")) {
            im.frequencySettling =
                within(value, 0, 3600, QStringLiteral("The frequency settling (s)"));
        } else if (key == QLatin1String("gage dac step")) {
            im.gageDacStep =
                within(value, 0, 1000, QStringLiteral("The gage DAC step (mV)")) / 1000;
        } else {
            return false;
        }
        return true;
    }

    // The power-on sampling frequency must be one the converter reaches at its modulator rate.
    void checkFrequency() {
        const SimPlateConfig& p = m_plate;
        const double lowest =
            p.modulatorRate * ConverterModel::MinTurbo / ConverterModel::MaxDecimation;
        const double highest =
            p.modulatorRate * ConverterModel::MaxTurbo / ConverterModel::MinDecimation;
        if (p.sampleFrequency < lowest || p.sampleFrequency > highest) {
            errorLine = m_frequencyLine > 0 ? m_frequencyLine : m_plateStart;
            throw LineError{QStringLiteral("A converter with a %1 Hz modulator samples at %2 to "
                                           "%3 Hz, not at %4 Hz.")
                                .arg(p.modulatorRate)
                                .arg(lowest)
                                .arg(highest)
                                .arg(p.sampleFrequency)};
        }
    }

    void finishPlate() {
        if (m_section != Section::Plate)
            return;
        m_section = Section::None;
        checkFrequency();
        if (m_plate.serial.isEmpty()) {
            errorLine = m_plateStart;
            throw LineError{QStringLiteral("%1 has no serial.").arg(m_plateHeader)};
        }
        for (const SimPlateConfig& other : std::as_const(scenario.plates)) {
            if (other.serial.compare(m_plate.serial, Qt::CaseInsensitive) == 0) {
                errorLine = m_plateStart;
                throw LineError{
                    QStringLiteral("A second plate with serial %1.").arg(m_plate.serial)};
            }
        }
        if (!m_seedGiven)
            m_plate.seed = SimPlateConfig::seedFor(m_plate.serial);
        scenario.plates.append(m_plate);
    }

    void event(const QString& text) {
        static const QRegularExpression at = pattern("at\\s+([^:]+):\\s*(.*)");
        const auto m = at.match(text);
        if (!m.hasMatch())
            throw LineError{QStringLiteral("An event is \"at <time>: <what happens>\".")};
        Event e;
        e.line = lineNumber;
        e.atMs = duration(m.captured(1));
        action(m.captured(2).trimmed(), e);
        const bool known = std::any_of(
            scenario.plates.cbegin(), scenario.plates.cend(), [&e](const SimPlateConfig& p) {
                return p.serial.compare(e.serial, Qt::CaseInsensitive) == 0;
            });
        if (!known)
            throw LineError{QStringLiteral("No plate with serial %1 above.").arg(e.serial)};
        for (const SimPlateConfig& p : std::as_const(scenario.plates))
            if (p.serial.compare(e.serial, Qt::CaseInsensitive) == 0)
                e.serial = p.serial;
        scenario.events.append(e);
    }

    // Loads stand on the plate's top.
    static void position(const QString& x, const QString& y, Event& e) {
        e.x = number(x);
        e.y = number(y);
        const PlateTop top;
        if (!top.contains(e.x, e.y))
            throw LineError{QStringLiteral("(%1, %2) is off the plate's top, which spans x %3 to "
                                           "%4 m and y %5 to %6 m.")
                                .arg(e.x)
                                .arg(e.y)
                                .arg(top.left)
                                .arg(top.right)
                                .arg(top.bottom)
                                .arg(top.top)};
    }

    static void action(const QString& text, Event& e) {
        static const QRegularExpression load =
            pattern("load\\s+(\\d+(?:\\.\\d+)?)\\s*kg\\s+at\\s*\\(\\s*(-?[\\d.]+)\\s*,\\s*(-?[\\d.]"
                    "+)\\s*\\)"
                    "\\s+on\\s+(\\S+)");
        static const QRegularExpression person =
            pattern("person\\s+(\\d+(?:\\.\\d+)?)\\s*kg(?:\\s+(standing|swaying))?"
                    "(?:\\s+at\\s*\\(\\s*(-?[\\d.]+)\\s*,\\s*(-?[\\d.]+)\\s*\\))?\\s+on\\s+(\\S+)");
        static const QRegularExpression simple =
            pattern("(unload|unplug|plug in|plug|recover)\\s+(\\S+)");
        static const QRegularExpression fault =
            pattern("(read time-out|write time-out|buffer overrun|clipping|not responding)\\s+"
                    "on\\s+(\\S+)(?:\\s+after\\s+(\\d+)\\s+samples?)?");
        static const QRegularExpression fail = pattern(
            "fail\\s+(next call|[A-Za-z]\\w*)\\s+on\\s+(\\S+)(?:\\s+with\\s+\"([^\"]*)\")?");

        if (const auto m = load.match(text); m.hasMatch()) {
            e.action = Event::Action::PlaceWeight;
            e.kilograms = within(m.captured(1), 0, MaxKilograms, QStringLiteral("A load (kg)"));
            position(m.captured(2), m.captured(3), e);
            e.serial = m.captured(4);
            return;
        }
        if (const auto m = person.match(text); m.hasMatch()) {
            e.action = Event::Action::PlacePerson;
            e.kilograms = within(m.captured(1), 1, 500, QStringLiteral("A person (kg)"));
            e.stance = m.captured(2).compare(QLatin1String("swaying"), Qt::CaseInsensitive) == 0
                           ? PlateLoads::Stance::Swaying
                           : PlateLoads::Stance::Standing;
            // Without a position a person stands in the middle of the top.
            e.x = 0.0;
            e.y = 0.178;
            if (m.hasCaptured(3))
                position(m.captured(3), m.captured(4), e);
            e.serial = m.captured(5);
            return;
        }
        if (const auto m = simple.match(text); m.hasMatch()) {
            const QString verb = m.captured(1).toLower();
            e.action = verb == QLatin1String("unload")    ? Event::Action::Unload
                       : verb == QLatin1String("unplug")  ? Event::Action::Unplug
                       : verb == QLatin1String("recover") ? Event::Action::Recover
                                                          : Event::Action::PlugIn;
            e.serial = m.captured(2);
            return;
        }
        if (const auto m = fault.match(text); m.hasMatch()) {
            static const QHash<QString, PlateFault> faults{
                {QStringLiteral("read time-out"), PlateFault::ReadTimeout},
                {QStringLiteral("write time-out"), PlateFault::WriteTimeout},
                {QStringLiteral("buffer overrun"), PlateFault::BufferOverRun},
                {QStringLiteral("clipping"), PlateFault::DataClipped},
                {QStringLiteral("not responding"), PlateFault::NotResponding}};
            e.action = Event::Action::Fault;
            e.fault = faults.value(m.captured(1).toLower());
            e.serial = m.captured(2);
            e.afterSamples = 0;
            if (m.hasCaptured(3)) {
                bool ok = false;
                e.afterSamples = m.captured(3).toLongLong(&ok);
                if (!ok)
                    throw LineError{QStringLiteral("%1 samples is more than a count holds.")
                                        .arg(m.captured(3))};
            }
            return;
        }
        if (const auto m = fail.match(text); m.hasMatch()) {
            const bool next =
                m.captured(1).compare(QLatin1String("next call"), Qt::CaseInsensitive) == 0;
            e.action = next ? Event::Action::FailNextCall : Event::Action::FailOperation;
            e.operation = next ? QString() : m.captured(1);
            e.serial = m.captured(2);
            e.message = m.hasCaptured(3)
                            ? m.captured(3)
                            : QStringLiteral("The force platform did not accept the command.");
            return;
        }
        throw LineError{QStringLiteral("Cannot understand \"%1\".").arg(text)};
    }

    Section m_section = Section::None;
    SimPlateConfig m_plate;
    QString m_plateHeader;
    int m_plateStart = 0;
    int m_frequencyLine = 0; // where the sampling frequency or modulator rate was last set
    bool m_seedGiven = false;
    std::optional<double> m_ambient;
};

} // namespace

std::optional<Scenario> ScenarioReader::read(QIODevice& device) {
    m_error.clear();
    QTextStream in(&device);
    Parser parser;
    try {
        while (!in.atEnd()) {
            ++parser.lineNumber;
            parser.line(in.readLine());
        }
        parser.finish();
    } catch (const LineError& error) {
        const int line = parser.errorLine > 0 ? parser.errorLine : parser.lineNumber;
        m_error = QStringLiteral("Line %1: %2").arg(line).arg(error.message);
        return std::nullopt;
    }
    return parser.scenario;
}

std::optional<Scenario> ScenarioReader::readFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        m_error = QStringLiteral("%1: %2").arg(path, file.errorString());
        return std::nullopt;
    }
    std::optional<Scenario> scenario = read(file);
    if (!scenario)
        m_error = QStringLiteral("%1: %2").arg(path, m_error);
    return scenario;
}

QString ScenarioReader::formatHelp() {
    return QStringLiteral(
        "Scenario files describe the simulated plates and what happens to them.\n"
        "Lines starting with # or ; are comments; # also ends a line early.\n"
        "\n"
        "[site]                       optional\n"
        "  gravity = 9.796878         m/s^2, for the weights and people below (1 to 30)\n"
        "  ambient = 22               room temperature, C (-40 to 85)\n"
        "\n"
        "[plate <name>]               one section per plate, in enumeration order\n"
        "  serial = 20418             required, one word\n"
        "  firmware = 2.3             1.x: unsigned converter codes, 2.x: signed\n"
        "  seed = 7                   draws the hidden matrix, offsets, drift, noise;\n"
        "                             without it the serial number gives the seed\n"
        "  noise = 120                RMS converter codes at 100 Hz (grows as sqrt(f)),\n"
        "                             at most 1000000\n"
        "  matrix = a b c; d e f; g h i   hidden true matrix, rows Fz, Mx, My,\n"
        "                             N or N.m per volt at 1 V excitation\n"
        "  gage voltage = 5           power-on default excitation, V (-10 to 10)\n"
        "  sampling frequency = 100   power-on default, Hz, from modulator rate / 8000\n"
        "                             to modulator rate x 16 / 20\n"
        "  modulator rate = 72000     converter clock, Hz, 1000 to 200000\n"
        "                             (3200 samples at 0.4 Hz)\n"
        "  calibrated = yes           no: matrix and zero values cleared, no record\n"
        "  plugged = yes              no: plug it in later with an event\n"
        "  The imperfections of a real plate, each with its default:\n"
        "  imperfections = real       none: an ideal plate with white noise (give it\n"
        "                             first, then any of the keys below)\n"
        "  placement scatter = 0.5    mm, standard deviation of where a weight lands\n"
        "  nonlinearity = 0.02        % of a load cell's full scale (1 kN)\n"
        "  hysteresis = 0.02          % of full scale, unloading above loading\n"
        "  creep = 0.03               % of a steady load, over 30 minutes\n"
        "  top error = 0.6            mm at the top's corners: a fixed pattern\n"
        "  flicker corner = 2         Hz, the noise rises as 1/f below it\n"
        "  channel noise = 1, 1.12, 0.9, 0.3   each channel's share of the noise\n"
        "  hum = 40                   codes of 50 Hz mains hum on the bridges\n"
        "  thermal zero = 10          uV/V per C: the zero follows the warm-up\n"
        "  self-heating = 0.06        C per V^2 of excitation in the gauges\n"
        "  excitation settling = 90   s, time constant after an excitation change\n"
        "  frequency transient = 400  codes the zero jumps at a new sampling frequency\n"
        "  frequency settling = 1.5   s, its time constant\n"
        "  gage dac step = 4.8828125  mV, the excitation is set in such steps\n"
        "\n"
        "[events]                     times count from the program's start\n"
        "  at 5 s: load 25 kg at (0.1, 0.2) on 20418       x, y in metres, on the top:\n"
        "           x -0.4064 to 0.4064, y -0.2032 to 0.5588; up to 5000 kg\n"
        "  at 30 s: person 70 kg swaying on 20418         or standing; at (x, y)\n"
        "  at 45 s: unload 20418                          everything off\n"
        "  at 1 min: unplug 20418\n"
        "  at 1 min 10 s: plug in 20418\n"
        "  at 2 min: read time-out on 20418               also write time-out,\n"
        "           buffer overrun, clipping, not responding\n"
        "  at 3 min: clipping on 20418 after 500 samples  into the next acquisition\n"
        "  at 4 min: fail next call on 20418 with \"USB transfer failed\"\n"
        "  at 4 min: fail SetSampleFrequency on 20418     every call, until:\n"
        "  at 5 min: recover 20418\n"
        "Times: 250 ms, 90 s, 1.5 min, 1 min 30 s, 2 h.\n");
}

} // namespace kx
