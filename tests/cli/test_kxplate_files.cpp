// kxplate run as a process on calibration files: the fit and the certificate.

#include "CalibrationSimBench.h"
#include "KxplateProcess.h"
#include "calibration/CalFileWriter.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace kx::test {
namespace {

// A calibration of a simulated plate walked point by point, saved as its file; the plate's
// hidden matrix is what the fit should find.
class KxplateCalibration : public KxplateProcess {
protected:
    KxplateCalibration() {
        bench.walkThePoints();
        calFile = path(QStringLiteral("30177_1.cal"));
        EXPECT_TRUE(saveCalFile(calFile, bench.calibration.record).ok());
    }

    CalibrationSimBench bench{7, false};
    QString calFile;
};

TEST_F(KxplateCalibration, FitFindsTheHiddenMatrixWithinItsOwnUncertainty) {
    const Run r = run({QStringLiteral("fit"), calFile, QStringLiteral("--json")});
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    const QJsonObject fit = QJsonDocument::fromJson(r.out.toUtf8()).object();
    EXPECT_EQ(fit[QStringLiteral("engine")].toString(), QStringLiteral("builtin"));
    EXPECT_EQ(fit[QStringLiteral("points")].toArray().size(), 10);
    EXPECT_TRUE(fit[QStringLiteral("flagged")].toArray().isEmpty());
    const QJsonArray matrix = fit[QStringLiteral("matrix")].toArray();
    const QJsonArray uncertainty = fit[QStringLiteral("uncertainty")].toArray();
    ASSERT_EQ(uncertainty.size(), 3);
    const Matrix3& truth = bench.plate->truth().trueMatrix;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            const double found = matrix[row].toArray()[column].toDouble();
            const double u = uncertainty[row].toArray()[column].toDouble();
            const double hidden = truth[std::size_t(row)][std::size_t(column)];
            EXPECT_GT(u, 0);
            // The ± is an expanded uncertainty at about 95 % coverage: this seed's plate lies
            // within it on every element.
            EXPECT_LE(std::abs(found - hidden), u)
                << "row " << row << " column " << column << ": " << found << " against " << hidden;
        }
    }

    const Run text = run({QStringLiteral("fit"), calFile});
    EXPECT_EQ(text.exitCode, 0);
    // Each of the nine elements with its ±, and the line that says what a ± is.
    EXPECT_EQ(text.out.count(QStringLiteral("±")), 10);
    EXPECT_TRUE(text.out.contains(QLatin1String("expanded uncertainty at about 95 % coverage")));
    EXPECT_TRUE(text.out.contains(QLatin1String("condition number")));
    EXPECT_TRUE(text.out.contains(QLatin1String("Every point agrees with the fit.")));
}

TEST_F(KxplateCalibration, ADamagedFileIsAFileErrorNamingTheField) {
    QFile file(calFile);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray whole = file.readAll();
    QByteArray badArray = whole;
    badArray[24] = 2; // field 7, the first array, claims two dimensions
    const struct {
        QByteArray bytes;
        const char* field;
    } cases[] = {{whole.chopped(3), "field 39"}, {badArray, "field 7"}};
    for (const auto& c : cases) {
        const QString damaged = write(QStringLiteral("damaged.cal"), c.bytes);
        const Run r = run({QStringLiteral("fit"), damaged, QStringLiteral("--json")});
        EXPECT_EQ(r.exitCode, 4);
        EXPECT_TRUE(r.out.isEmpty());
        ASSERT_EQ(r.errorLines().size(), 1) << r.err.toStdString();
        EXPECT_TRUE(r.errorLines()[0].startsWith(QStringLiteral("kxplate: ") + damaged + u':'));
        EXPECT_TRUE(r.errorLines()[0].contains(QLatin1String(c.field))) << r.err.toStdString();
    }
}

TEST_F(KxplateCalibration, ReportWritesTheCertificate) {
    const QString pdf = path(QStringLiteral("30177_1.pdf"));
    const Run r = run({QStringLiteral("report"), calFile, QStringLiteral("-o"), pdf,
                       QStringLiteral("--operator"), QStringLiteral("QC-11")});
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    QProcess reader;
    reader.start(QStringLiteral("pdftotext"),
                 {QStringLiteral("-layout"), pdf, QStringLiteral("-")});
    ASSERT_TRUE(reader.waitForFinished(30000));
    const QString certificate = QString::fromUtf8(reader.readAllStandardOutput());
    for (const char* expected : {"Serial Number", "30177", "30177_1.cal", "QC-11"})
        EXPECT_TRUE(certificate.contains(QLatin1String(expected))) << expected;
    // The fitted matrix, as the fit command gives it.
    const QJsonObject fit =
        QJsonDocument::fromJson(
            run({QStringLiteral("fit"), calFile, QStringLiteral("--json")}).out.toUtf8())
            .object();
    const double fz1 = fit[QStringLiteral("matrix")].toArray()[0].toArray()[0].toDouble();
    EXPECT_TRUE(certificate.contains(QString::number(fz1, 'f', 3))) << fz1;

    const Run nowhere = run({QStringLiteral("report"), calFile, QStringLiteral("-o"),
                             path(QStringLiteral("no/such/folder/out.pdf"))});
    EXPECT_EQ(nowhere.exitCode, 4);
    EXPECT_EQ(nowhere.errorLines().size(), 1);
}

} // namespace
} // namespace kx::test
