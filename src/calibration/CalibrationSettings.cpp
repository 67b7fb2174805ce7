#include "calibration/CalibrationSettings.h"

#include "support/Folders.h"
#include "support/IniFile.h"
#include "support/NumberFormat.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QDebug>
#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <utility>

namespace kx {

namespace {

constexpr auto User = SettingsRoot::CurrentUser;
constexpr char Local[] = "Local";
constexpr char Section[] = "Calibration";
constexpr char Linearity[] = "Linearity";
constexpr char16_t Metres[] = u"0.000000";
constexpr char16_t Coarse[] = u"0.000";
constexpr double MetresPerInch = 0.0254;
constexpr double CalibrationKilograms = 25;

QString pointKey(int index, char axis) {
    return QStringLiteral("Point %1%2").arg(index + 1).arg(QLatin1Char(axis));
}

void complain(const QString& where, const QString& text, const QString& defaultText) {
    qWarning().noquote() << QStringLiteral("%1 = \"%2\" is not a usable number; using %3")
                                .arg(where, text, defaultText);
}

// Reads each profile value with its default and writes them all back at the end, in one save,
// so that a missing key appears with its default and a malformed one is replaced by it. A
// quiet reader only reads.
class ProfileReader {
public:
    enum class Mode { WriteBack, Quiet };

    explicit ProfileReader(const IniFile& profile, Mode mode = Mode::WriteBack)
        : m_profile(profile)
        , m_writeBack(mode == Mode::WriteBack) {
        if (m_writeBack)
            CreateFolderPath(QFileInfo(profile.path()).absolutePath());
    }

    double real(const char* section, const QString& key, double defaultValue, QStringView format) {
        const QString defaultText = formatNumber(defaultValue, format);
        const QString text = m_profile.value(QLatin1String(section), key, defaultText);
        bool ok = false;
        double value = text.toDouble(&ok);
        if (!ok || !std::isfinite(value)) {
            complain(QStringLiteral("[%1] %2").arg(QLatin1String(section), key), text, defaultText);
            value = defaultText.toDouble();
            write(section, key, defaultText);
        } else {
            write(section, key, text);
        }
        return value;
    }

    int count(const char* section, const char* key, int defaultValue, int maximum) {
        const QString defaultText = QString::number(defaultValue);
        const QString text =
            m_profile.value(QLatin1String(section), QLatin1String(key), defaultText);
        bool ok = false;
        int value = text.toInt(&ok);
        if (!ok || value < 1 || value > maximum) {
            complain(QStringLiteral("[%1] %2").arg(QLatin1String(section), QLatin1String(key)),
                     text, defaultText);
            value = defaultValue;
            write(section, QLatin1String(key), defaultText);
        } else {
            write(section, QLatin1String(key), text);
        }
        return value;
    }

    // Every value read, as read or mended, back into the profile.
    void writeBack() {
        if (m_writeBack)
            m_profile.setValues(std::exchange(m_read, {}));
    }

private:
    void complain(const QString& where, const QString& text, const QString& defaultText) const {
        if (m_writeBack)
            kx::complain(where, text, defaultText);
    }
    void write(const char* section, const QString& key, const QString& text) {
        if (m_writeBack)
            m_read.push_back({QLatin1String(section), key, text});
    }

    const IniFile& m_profile;
    bool m_writeBack;
    std::vector<IniFile::Value> m_read;
};

int readPointCount(ProfileReader& read) {
    return read.count(Section, "Points", 10, CalibrationSettings::MaxPoints);
}

std::vector<PointXY> readPoints(ProfileReader& read, int points) {
    const std::vector<PointXY> defaults = CalibrationSettings::defaultPoints();
    std::vector<PointXY> coordinates;
    for (int i = 0; i < points; ++i) {
        // Points beyond the built-in ten start at the plate's middle.
        const PointXY fallback = i < static_cast<int>(defaults.size())
                                     ? defaults[static_cast<std::size_t>(i)]
                                     : PointXY{0.0, 0.18};
        const auto x = static_cast<float>(read.real(Section, pointKey(i, 'X'), fallback.x, Metres));
        const auto y = static_cast<float>(read.real(Section, pointKey(i, 'Y'), fallback.y, Metres));
        coordinates.push_back({x, y});
    }
    return coordinates;
}

float userReal(const char* name, const QString& defaultText) {
    const QString text =
        GetSettingString(User, QLatin1String(kCalibrationKey), QLatin1String(name), defaultText);
    bool ok = false;
    const float value = text.toFloat(&ok);
    if (ok && std::isfinite(value) && value > 0)
        return value;
    complain(QLatin1String(name), text, defaultText);
    return defaultText.toFloat();
}

} // namespace

std::vector<PointXY> CalibrationSettings::defaultPoints() {
    // Rows 0.28 m apart, columns 0.30 m apart, around the middle of the plate top; the walk
    // snakes through the rows so the weight never crosses the plate.
    return {{-0.30, 0.46}, {0.00, 0.46},   {0.30, 0.46},  {0.30, 0.18},  {0.00, 0.18},
            {-0.30, 0.18}, {-0.30, -0.10}, {0.00, -0.10}, {0.30, -0.10}, {0.15, 0.32}};
}

std::vector<float> CalibrationSettings::defaultLinearityLoads(double gravity) {
    std::vector<float> loads;
    for (const double kilograms : {25.0, 50.0, 75.0, 100.0, 100.0, 75.0, 50.0, 25.0})
        loads.push_back(formatNumber(kilograms * gravity, Coarse).toFloat());
    return loads;
}

std::vector<PointXY> CalibrationSettings::profilePoints(const IniFile& profile) {
    ProfileReader read(profile, ProfileReader::Mode::Quiet);
    return readPoints(read, readPointCount(read));
}

CalibrationSettings CalibrationSettings::load(const IniFile& profile) {
    const CalibrationSettings d;
    CalibrationSettings s;
    ProfileReader read(profile);
    s.Gravity = read.real(Local, QStringLiteral("Gravity"), d.Gravity, Metres);
    s.PressureCorrection =
        read.real(Local, QStringLiteral("Pressure Correction"), d.PressureCorrection, Metres);
    s.Load = static_cast<float>(
        read.real(Section, QStringLiteral("Load"), CalibrationKilograms * s.Gravity, Coarse));
    s.MaxZeroStdDev =
        static_cast<float>(read.real(Section, QStringLiteral("Max Zero StdDev"), 1024, Coarse));
    s.MaxDataStdDev =
        static_cast<float>(read.real(Section, QStringLiteral("Max Data StdDev"), 0.002, Metres));
    const int points = readPointCount(read);
    s.PlateXLeft = static_cast<float>(
        read.real(Section, QStringLiteral("Plate X Left"), -16 * MetresPerInch, Coarse));
    s.PlateXRight = static_cast<float>(
        read.real(Section, QStringLiteral("Plate X Right"), 16 * MetresPerInch, Coarse));
    s.PlateYTop = static_cast<float>(
        read.real(Section, QStringLiteral("Plate Y Top"), 22 * MetresPerInch, Coarse));
    s.PlateYBottom = static_cast<float>(
        read.real(Section, QStringLiteral("Plate Y Bottom"), -8 * MetresPerInch, Coarse));
    s.Points = readPoints(read, points);

    const int loads = read.count(Linearity, "Loads", 8, MaxLoads);
    const std::vector<float> defaultLoads = defaultLinearityLoads(s.Gravity);
    for (int n = 1; n <= loads; ++n) {
        const double fallback = n <= static_cast<int>(defaultLoads.size())
                                    ? defaultLoads[static_cast<std::size_t>(n - 1)]
                                    : 0.0;
        s.LinearityLoads.push_back(static_cast<float>(
            read.real(Linearity, QStringLiteral("Load %1").arg(n), fallback, Coarse)));
    }
    read.writeBack();

    s.DisplayPointRadius = userReal("Display Point Radius (m)", QStringLiteral("0.025"));
    s.LastFilePath = GetSettingString(User, QLatin1String(kCalibrationKey),
                                      QStringLiteral("Last File Path"), DocumentsFolder());
    s.ChartSpanSeconds =
        std::max(0.0f, GetSettingString(User, QLatin1String(kCalibrationKey),
                                        QStringLiteral("Chart Span (s)"), QStringLiteral("0"))
                           .toFloat());
    return s;
}

void CalibrationSettings::save(const IniFile& profile) const {
    CreateFolderPath(QFileInfo(profile.path()).absolutePath());
    std::vector<IniFile::Value> values;
    const auto put = [&values](const char* section, const QString& key, const QString& text) {
        values.push_back({QLatin1String(section), key, text});
    };
    put(Local, QStringLiteral("Gravity"), formatNumber(Gravity, Metres));
    put(Local, QStringLiteral("Pressure Correction"), formatNumber(PressureCorrection, Metres));
    put(Section, QStringLiteral("Load"), formatNumber(Load, Coarse));
    put(Section, QStringLiteral("Max Zero StdDev"), formatNumber(MaxZeroStdDev, Coarse));
    put(Section, QStringLiteral("Max Data StdDev"), formatNumber(MaxDataStdDev, Metres));
    put(Section, QStringLiteral("Points"), QString::number(Points.size()));
    put(Section, QStringLiteral("Plate X Left"), formatNumber(PlateXLeft, Coarse));
    put(Section, QStringLiteral("Plate X Right"), formatNumber(PlateXRight, Coarse));
    put(Section, QStringLiteral("Plate Y Top"), formatNumber(PlateYTop, Coarse));
    put(Section, QStringLiteral("Plate Y Bottom"), formatNumber(PlateYBottom, Coarse));
    for (std::size_t i = 0; i < Points.size(); ++i) {
        put(Section, pointKey(static_cast<int>(i), 'X'), formatNumber(Points[i].x, Metres));
        put(Section, pointKey(static_cast<int>(i), 'Y'), formatNumber(Points[i].y, Metres));
    }
    profile.setValues(values);
    const QString radius = formatNumber(DisplayPointRadius, Metres);
    SaveSettingString(User, QLatin1String(kCalibrationKey),
                      QStringLiteral("Display Point Radius (m)"), radius);
    SaveSettingString(User, QLatin1String(kCalibrationKey), QStringLiteral("Cal Point Radius"),
                      radius);
    SaveSettingString(User, QLatin1String(kCalibrationKey), QStringLiteral("Last File Path"),
                      LastFilePath);
    SaveSettingString(User, QLatin1String(kCalibrationKey), QStringLiteral("Chart Span (s)"),
                      formatGeneral(ChartSpanSeconds));
}

} // namespace kx
