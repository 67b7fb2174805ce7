#include "calibration/CalibrationRecovery.h"

#include "calibration/CalFileReader.h"
#include "calibration/CalFileWriter.h"
#include "support/Folders.h"

#include <QBuffer>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtEndian>

namespace kx {

namespace {

constexpr char Magic[] = "KXCALWORK";
constexpr qsizetype MagicSize = sizeof(Magic) - 1;
constexpr quint32 Version = 1;
// Kept work is a few kilobytes; anything far larger is not ours.
constexpr qint64 MaxBytes = 64 * 1024 * 1024;

// A serial number as part of a file name: anything but letters, digits, "-", "_" and "."
// becomes "_", so that no serial can reach outside the folder.
QString fileNameOf(const QString& serial) {
    QString name = serial;
    name.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9._-]")), QStringLiteral("_"));
    if (name.isEmpty() || name.startsWith(u'.'))
        name.prepend(u'_');
    return name + QStringLiteral(".calwork");
}

} // namespace

CalibrationRecovery::CalibrationRecovery(const QString& serial)
    : m_path(QDir(UserDataFolder() + QStringLiteral("/Recovery")).filePath(fileNameOf(serial))) {}

bool CalibrationRecovery::exists() const {
    return QFileInfo::exists(m_path);
}

SaveResult CalibrationRecovery::write(const KeptWork& work) const {
    return saveAtomically(m_path, encode(work));
}

std::optional<KeptWork> CalibrationRecovery::read(QString& error) const {
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = file.errorString();
        return std::nullopt;
    }
    return decode(file.read(MaxBytes), error);
}

bool CalibrationRecovery::remove() const {
    return !exists() || QFile::remove(m_path);
}

QString CalibrationRecovery::setAside() const {
    const QString aside =
        m_path + QStringLiteral(".unreadable-") + QString::number(QFileInfo(m_path).size());
    QFile::remove(aside);
    return QFile::rename(m_path, aside) ? aside : QString();
}

QByteArray CalibrationRecovery::encode(const KeptWork& work) {
    const Calibration& c = work.calibration;
    QByteArray bytes(Magic, MagicSize);
    char version[4];
    qToLittleEndian(Version, version);
    bytes.append(version, 4);
    QDataStream out(&bytes, QIODevice::Append);
    out.setVersion(QDataStream::Qt_6_0);
    out << work.serial << work.keptAt << work.openFile << c.serialOnFile << c.operatorOnFile
        << c.operatorNow << work.temperature << work.humidity << work.pressure
        << qint32(c.currentPoint) << c.load << c.dataExcitation.has_value()
        << c.dataExcitation.value_or(0.0f) << c.record.scalingZero.temperature
        << writeCalFile(c.record);
    return bytes;
}

std::optional<KeptWork> CalibrationRecovery::decode(const QByteArray& bytes, QString& error) {
    if (!bytes.startsWith(QByteArray(Magic, MagicSize)) || bytes.size() < MagicSize + 4) {
        error = QStringLiteral("it is not a file of kept calibration work");
        return std::nullopt;
    }
    const auto version = qFromLittleEndian<quint32>(bytes.constData() + MagicSize);
    if (version != Version) {
        error = QStringLiteral("it was kept by another version of the program (%1)").arg(version);
        return std::nullopt;
    }
    QDataStream in(bytes.sliced(MagicSize + 4));
    in.setVersion(QDataStream::Qt_6_0);
    KeptWork work;
    Calibration& c = work.calibration;
    qint32 current = 0;
    bool hasExcitation = false;
    float excitation = 0;
    float scalingZeroTemperature = 0;
    QByteArray record;
    in >> work.serial >> work.keptAt >> work.openFile >> c.serialOnFile >> c.operatorOnFile >>
        c.operatorNow >> work.temperature >> work.humidity >> work.pressure >> current >> c.load >>
        hasExcitation >> excitation >> scalingZeroTemperature >> record;
    if (in.status() != QDataStream::Ok || !in.atEnd()) {
        error = QStringLiteral("it is cut short or damaged");
        return std::nullopt;
    }
    QBuffer buffer(&record);
    buffer.open(QIODevice::ReadOnly);
    CalFileReader reader({}, {});
    std::optional<CalibrationRecord> read = reader.read(buffer);
    if (!read) {
        error = reader.errorString();
        return std::nullopt;
    }
    c.record = std::move(*read);
    c.record.scalingZero.temperature = scalingZeroTemperature;
    c.currentPoint = current >= 0 && current < qint32(c.record.points.size()) ? current : 0;
    if (hasExcitation)
        c.dataExcitation = excitation;
    c.unsavedChanges = true;
    return work;
}

} // namespace kx
