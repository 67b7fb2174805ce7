#include "../support/PrintQString.h"
#include "SyntheticPlate.h"
#include "calibration/BuiltInFitEngine.h"
#include "calibration/MatrixFit.h"
#include "calibration/OctaveFitEngine.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace kx {
namespace {

using test::SyntheticPlate;
using test::TenPoints;

// The ten points with signals a few microvolts off the ideal plate's, so the fit leaves
// residuals.
std::vector<CalPoint> tenPoints() {
    std::vector<CalPoint> points = SyntheticPlate().grid(TenPoints);
    for (std::size_t k = 0; k < points.size(); ++k)
        for (std::size_t c = 0; c < 3; ++c)
            points[k].dataMean[c] += 1e-5 * double(int((3 * k + c) % 5) - 2);
    return points;
}

// C = L·Sᵀ·(S·Sᵀ)⁻¹ by a QR decomposition of Sᵀ rather than the normal equations, and F = C·S.
std::pair<Eigen::MatrixXd, Eigen::MatrixXd> leastSquares(const std::vector<CalPoint>& points) {
    Eigen::MatrixXd L(3, Eigen::Index(points.size())), S(3, Eigen::Index(points.size()));
    for (Eigen::Index k = 0; k < L.cols(); ++k)
        for (Eigen::Index i = 0; i < 3; ++i) {
            L(i, k) = points[std::size_t(k)].expectedLoad[std::size_t(i)];
            S(i, k) = points[std::size_t(k)].dataMean[std::size_t(i)];
        }
    const Eigen::MatrixXd C = S.transpose().colPivHouseholderQr().solve(L.transpose()).transpose();
    return {C, C * S};
}

// Stand-ins for octave-cli that read the script and print an answer after the result marker:
// C, then F, column by column, as Octave's printf would.
class FitEngineCheck : public ::testing::Test {
protected:
    QString standIn(const QString& name, const Eigen::MatrixXd& C, const Eigen::MatrixXd& F,
                    const QByteArray& lineEnd = "\n") {
        QByteArray answer = "warning: a banner line" + lineEnd + "KX-FIT-RESULT" + lineEnd;
        for (const Eigen::MatrixXd* m : {&C, &F})
            for (Eigen::Index j = 0; j < m->cols(); ++j)
                for (Eigen::Index i = 0; i < m->rows(); ++i)
                    answer += QByteArray::number((*m)(i, j), 'g', 17) + lineEnd;
        QFile out(folder.filePath(name + ".out"));
        EXPECT_TRUE(out.open(QIODevice::WriteOnly) && out.write(answer) == answer.size());
        const QString path = folder.filePath(name);
        QFile script(path);
        EXPECT_TRUE(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\ncat > /dev/null\ncat '" + QFile::encodeName(out.fileName()) +
                     "'\n");
        script.close();
        script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path;
    }

    QTemporaryDir folder;
};

// The engine's matrix is taken only when it is the fit of the points: to rounding, whatever
// its line ends. Otherwise the built-in one is, and the result says why.
TEST_F(FitEngineCheck, AnOutsideMatrixIsTakenOnlyWhenItIsTheFitOfThePoints) {
    const std::vector<CalPoint> points = tenPoints();
    const auto [C, F] = leastSquares(points);
    const double rowScale = C.row(1).cwiseAbs().maxCoeff();
    const auto off = [&, C = C](double share) {
        Eigen::MatrixXd changed = C;
        changed(1, 2) += share * rowScale;
        return changed;
    };
    BuiltInFitEngine builtIn;
    const std::vector<double> own = MatrixFit::compute(points, builtIn).result.value().C;

    const Eigen::MatrixXd ones = Eigen::MatrixXd::Ones(3, 10);
    struct Case {
        const char* name;
        Eigen::MatrixXd C;
        Eigen::MatrixXd F;
        QByteArray lineEnd;
        QString differsBy; // percent of a row, when the matrix is not taken
    } cases[] = {
        {"as Octave prints it", C, F, "\n", {}},
        {"with CR LF line ends", C, F, "\r\n", {}},
        {"off by rounding", off(1e-9), F, "\n", {}},
        {"one element off by two hundred-thousandths of its row", off(2e-5), F, "\n", "0.0020"},
        // Furthest off: F's Mx row, 1 against about −113 N·m at the top row of points.
        {"all ones", ones.leftCols(3), ones, "\n", "101"},
    };
    for (const Case& k : cases) {
        const QString program =
            standIn(QString::fromLatin1(k.name).replace(u' ', u'-'), k.C, k.F, k.lineEnd);
        OctaveFitEngine engine(program);
        const FitOutcome out = MatrixFit::compute(points, engine);
        ASSERT_TRUE(out.result) << k.name;
        const FitResult& r = *out.result;
        if (k.differsBy.isEmpty()) {
            EXPECT_EQ(r.engineError, QString()) << k.name;
            EXPECT_FALSE(r.engineRefused) << k.name;
            EXPECT_EQ(r.C[5], k.C(1, 2)) << k.name << ": the engine's own value";
        } else {
            EXPECT_EQ(r.engineError,
                      program +
                          " gave a matrix that is not the fit of these points: it differs "
                          "from the program's own fit of the same data by up to " +
                          k.differsBy + " % of a row's largest element.");
            EXPECT_EQ(r.C, own) << k.name;
            EXPECT_TRUE(r.engineRefused) << k.name;
        }
    }
}

} // namespace
} // namespace kx
