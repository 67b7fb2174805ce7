#include "PrintQString.h"
#include "SimBench.h"
#include "maintenance/frmPlateInfoEx.h"
#include "resources/StringTable.h"

#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QRegularExpression>
#include <memory>

namespace kx {
namespace {

constexpr qint64 Hour = 3600 * 1000;

class PlateInfoEx : public test::SimBench {
protected:
    void SetUp() override {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        plate = addPlate(QStringLiteral("KX2001"));
        uncalibrated = addPlate(QStringLiteral("KX1002"), 1, false);
        open();
    }
    void TearDown() override { QLocale::setDefault(m_savedLocale); }

    // As the main window opens it: the service flag first, then the plate.
    frmPlateInfoEx& openDialog(PlateDevice* device, bool servicePanels) {
        dialog = std::make_unique<frmPlateInfoEx>(context());
        QObject::connect(dialog.get(), &ToolDialog::unloaded, [this] { ++unloads; });
        dialog->setServicePanels(servicePanels);
        dialog->setDevice(device);
        dialog->show();
        return *dialog;
    }

    static QList<QLabel*> valueFields(const frmPlateInfoEx& d) {
        return {d.lblSerialNumberTxt, d.lblFrimwareTxt, d.lblTMaxTxt,    d.lblTactTxt,
                d.lblTMinTxt,         d.lblNUsesTxt,    d.lblTimeOnTxt,  d.lblCalDateTxt,
                d.lblCalOperTxt,      d.lblInspDateTxt, d.lblInspOperTxt};
    }
    static QList<QPushButton*> resetButtons(const frmPlateInfoEx& d) {
        return {d.cmdResetTemp, d.cmdResetEnum, d.cmdResetTime};
    }

    SimPlate* plate = nullptr;
    SimPlate* uncalibrated = nullptr;
    std::unique_ptr<frmPlateInfoEx> dialog;
    int unloads = 0;

private:
    QLocale m_savedLocale;
};

QString celsius(float degrees) {
    return QString::asprintf("%.2f", double(degrees)) + QString::fromUtf8(" °C");
}

TEST_F(PlateInfoEx, ShowsTheWholeRecordInItsFormats) {
    plate->SetOperatorRecord2(QStringLiteral("J. Doe"),
                              QDateTime(QDate(2024, 1, 31), QTime(15, 4, 5)));
    plate->SetOperatorRecord3(QStringLiteral("R. Roe"), QDateTime(QDate(2023, 7, 4), QTime(9, 30)));
    auto& d = openDialog(plate, false);

    EXPECT_EQ(d.windowTitle(), "KX Force Platforms Control Panel - Extended Device Info");
    EXPECT_EQ(d.lblSerialNumberTxt->text(), "KX2001");
    EXPECT_EQ(d.lblFrimwareTxt->text(), "2.0");
    EXPECT_EQ(d.lblTMaxTxt->text(), celsius(plate->MaxTemperature()));
    EXPECT_EQ(d.lblTactTxt->text(), celsius(plate->Temperature()));
    EXPECT_EQ(d.lblTMinTxt->text(), celsius(plate->MinTemperature()));
    // A plain number: no group separator even in a locale that has one.
    EXPECT_EQ(d.lblNUsesTxt->text(), QString::number(plate->EnumerationCount()));
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^\\d+h \\d{1,2}m \\d{1,2}s $"))
                    .match(d.lblTimeOnTxt->text())
                    .hasMatch())
        << d.lblTimeOnTxt->text().toStdString();
    EXPECT_EQ(d.lblCalDateTxt->text(), "Wednesday, January 31, 2024 - 3:04:05 PM");
    EXPECT_EQ(d.lblCalOperTxt->text(), "J. Doe");
    EXPECT_EQ(d.lblInspDateTxt->text(), "Tuesday, July 4, 2023 - 9:30:00 AM");
    EXPECT_EQ(d.lblInspOperTxt->text(), "R. Roe");
    EXPECT_TRUE(prompt.messages.isEmpty());
}

TEST_F(PlateInfoEx, RecordsWithoutAValidDateShowNothing) {
    // A dialog that showed a calibrated plate first must not keep its record.
    auto& d = openDialog(plate, false);
    ASSERT_FALSE(d.lblCalOperTxt->text().isEmpty());
    d.setDevice(uncalibrated);

    EXPECT_EQ(d.lblSerialNumberTxt->text(), "KX1002");
    EXPECT_EQ(d.lblFrimwareTxt->text(), "1.0");
    for (QLabel* field : {d.lblCalDateTxt, d.lblCalOperTxt, d.lblInspDateTxt, d.lblInspOperTxt})
        EXPECT_EQ(field->text(), QString()) << field->objectName().toStdString();
}

struct TimeCase {
    qint64 milliseconds;
    const char* expected;
};

class TimeInService : public PlateInfoEx, public testing::WithParamInterface<TimeCase> {};

TEST_P(TimeInService, SplitIntoHoursMinutesSeconds) {
    plate->ExecuteCommand(-1, 158);
    clock.advance(GetParam().milliseconds);
    EXPECT_EQ(openDialog(plate, false).lblTimeOnTxt->text(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Hours, TimeInService,
                         testing::Values(TimeCase{3599 * 1000, "0h 59m 59s "},
                                         TimeCase{3600 * 1000, "1h 0m 0s "},
                                         TimeCase{25 * Hour + 61 * 1000, "25h 1m 1s "}));

TEST_F(PlateInfoEx, ResetsAreUnusableWithoutTheServiceFlagThoughTheRecordIsShown) {
    auto& d = openDialog(plate, false);
    for (QLabel* field : valueFields(d))
        EXPECT_FALSE(field->text().isEmpty()) << field->objectName().toStdString();
    for (QPushButton* button : resetButtons(d)) {
        EXPECT_TRUE(button->isVisible());
        EXPECT_FALSE(button->isEnabled()) << button->objectName().toStdString();
    }
    EXPECT_TRUE(d.cmdOK->isEnabled());
}

TEST_F(PlateInfoEx, ATimeOutDoesNotMakeTheResetsUsableOutsideServiceMode) {
    auto& d = openDialog(plate, false);
    driver.inject(QStringLiteral("KX2001"), PlateFault::ReadTimeout);
    ASSERT_EQ(prompt.messages, QStringList{strings::text(9930)});
    for (QPushButton* button : resetButtons(d))
        EXPECT_FALSE(button->isEnabled()) << button->objectName().toStdString();
    EXPECT_TRUE(d.cmdOK->isEnabled());
    EXPECT_EQ(unloads, 0);
}

TEST_F(PlateInfoEx, WithoutAPlate) {
    auto& d = openDialog(nullptr, true);
    EXPECT_EQ(d.lblSerialNumberTxt->text(), "No Platform");
    EXPECT_EQ(d.lblFrimwareTxt->text(), QString());
    for (QPushButton* button : resetButtons(d))
        EXPECT_FALSE(button->isEnabled());
    EXPECT_TRUE(prompt.messages.isEmpty());
}

TEST_F(PlateInfoEx, EachResetCommandsThePlateAndReadsTheRecordAgain) {
    clock.advance(2 * Hour);
    auto& d = openDialog(plate, true);
    for (QPushButton* button : resetButtons(d))
        EXPECT_TRUE(button->isEnabled());
    ASSERT_NE(d.lblNUsesTxt->text(), "0");

    d.cmdResetEnum->click();
    EXPECT_EQ(d.lblNUsesTxt->text(), "0");
    EXPECT_EQ(plate->EnumerationCount(), 0);

    d.cmdResetTime->click();
    EXPECT_EQ(d.lblTimeOnTxt->text(), "0h 0m 0s ");

    // The extremes restart from the present temperature.
    ASSERT_NE(d.lblTMaxTxt->text(), d.lblTMinTxt->text());
    d.cmdResetTemp->click();
    EXPECT_EQ(d.lblTMaxTxt->text(), d.lblTactTxt->text());
    EXPECT_EQ(d.lblTMinTxt->text(), d.lblTactTxt->text());
    EXPECT_TRUE(prompt.messages.isEmpty());
}

TEST_F(PlateInfoEx, AFailingReadLeavesTheRemainingFieldsAsTheyWere) {
    auto& d = openDialog(plate, true);
    const QString enumerations = d.lblNUsesTxt->text();
    const QString timeOn = d.lblTimeOnTxt->text();
    const QString calibration = d.lblCalDateTxt->text();

    clock.advance(2 * Hour);
    plate->failures().failEveryCall(QStringLiteral("EnumerationCount"),
                                    QStringLiteral("No answer."));
    d.cmdResetTemp->click();

    EXPECT_EQ(prompt.messages, QStringList{QStringLiteral("No answer.")});
    // Read before the failure: the reset extremes.
    EXPECT_EQ(d.lblTMaxTxt->text(), d.lblTactTxt->text());
    // The failing field and every one after it keep what they showed.
    EXPECT_EQ(d.lblNUsesTxt->text(), enumerations);
    EXPECT_EQ(d.lblTimeOnTxt->text(), timeOn);
    EXPECT_EQ(d.lblCalDateTxt->text(), calibration);
    EXPECT_EQ(unloads, 0);
}

TEST_F(PlateInfoEx, UnpluggingClosesAtOnceAfterTheMessage) {
    auto& d = openDialog(plate, true);
    driver.unplug(QStringLiteral("KX2001"));
    EXPECT_EQ(prompt.messages, QStringList{strings::text(9920)});
    EXPECT_EQ(unloads, 1);
    EXPECT_FALSE(d.isVisible());
    EXPECT_EQ(d.device(), nullptr);
}

} // namespace
} // namespace kx
