#include "resources/ResourceFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>
#include <gtest/gtest.h>

namespace {

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

quint32 le32(const QByteArray& data, qsizetype at) {
    return qFromLittleEndian<quint32>(data.constData() + at);
}
quint16 le16(const QByteArray& data, qsizetype at) {
    return qFromLittleEndian<quint16>(data.constData() + at);
}

// The icons are linked in without any initialisation call in the program.
TEST(ResourceFiles, EveryIconSizeIsASquarePngOfThatSize) {
    for (int size : kx::resources::IconSizes) {
        const QByteArray png = readAll(kx::resources::iconFile(size));
        ASSERT_GE(png.size(), 24) << size;
        EXPECT_TRUE(png.startsWith("\x89PNG\r\n\x1a\n")) << size;
        EXPECT_EQ(qFromBigEndian<quint32>(png.constData() + 16), quint32(size)) << "width";
        EXPECT_EQ(qFromBigEndian<quint32>(png.constData() + 20), quint32(size)) << "height";
    }
}

// Installed beside the program, and what any player accepts: canonical 44-byte header, mono
// 16-bit PCM at 22050 Hz, short enough to end before the next list update or acquisition.
TEST(ResourceFiles, SoundBesideTheProgramIsAShortMonoPcmWave) {
    const QByteArray wav = readAll(QStringLiteral(KX_SOUND_SOURCE));
    EXPECT_EQ(readAll(QStringLiteral(KX_SOUND_BESIDE_PROGRAM)), wav);
    EXPECT_TRUE(QStringLiteral(KX_SOUND_BESIDE_PROGRAM).endsWith(kx::resources::SoundFileName));
    ASSERT_GE(wav.size(), 44);
    EXPECT_EQ(wav.left(4) + wav.mid(8, 8) + wav.mid(36, 4), "RIFFWAVEfmt data");
    EXPECT_EQ(le32(wav, 4), quint32(wav.size() - 8));
    EXPECT_EQ(le16(wav, 20), 1) << "PCM";
    EXPECT_EQ(le16(wav, 22), 1) << "channels";
    EXPECT_EQ(le32(wav, 24), 22050u) << "sample rate";
    EXPECT_EQ(le16(wav, 34), 16) << "bits per sample";
    EXPECT_EQ(le32(wav, 40), quint32(wav.size() - 44));
    const double seconds = double(le32(wav, 40)) / (2 * 22050);
    EXPECT_GT(seconds, 0.1);
    EXPECT_LT(seconds, 0.4);
}

void touch(const QString& path) {
    QFile(path).open(QIODevice::WriteOnly);
}

// Run from the build, the sound is beside the program; installed, it is in share/kxcpl beside
// bin, unless someone put one beside the program, which then wins.
TEST(ResourceFiles, TheSoundIsFoundBesideTheProgramOrInTheInstalledDataFolder) {
    QTemporaryDir prefix;
    QDir(prefix.path()).mkpath("bin");
    QDir(prefix.path()).mkpath("share/kxcpl");
    const QString bin = prefix.filePath("bin");
    const QString beside = prefix.filePath("bin/PSND_XX.sts");
    const QString installed = prefix.filePath("share/kxcpl/PSND_XX.sts");

    EXPECT_EQ(kx::resources::soundFile(bin), beside) << "neither: the place it belongs";
    touch(installed);
    EXPECT_EQ(kx::resources::soundFile(bin), installed);
    touch(beside);
    EXPECT_EQ(kx::resources::soundFile(bin), beside);
    // A folder of that name is no sound.
    QFile::remove(beside);
    QDir(bin).mkdir("PSND_XX.sts");
    EXPECT_EQ(kx::resources::soundFile(bin), installed);
}

} // namespace
