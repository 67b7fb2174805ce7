#include "DialogFixture.h"
#include "PrintQString.h"
#include "maintenance/frmPlateInfoEx.h"
#include "resources/StringTable.h"

#include <QLabel>
#include <QLocale>
#include <QPushButton>

namespace kx {
namespace {

class PlateInfoEx : public test::DialogFixture<frmPlateInfoEx> {
protected:
    void SetUp() override {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        plate = addPlate(QStringLiteral("KX2001"));
        uncalibrated = addPlate(QStringLiteral("KX1002"), 1, false);
        openPlates();
    }
    void TearDown() override { QLocale::setDefault(m_savedLocale); }

    // As the main window opens it: the service flag first, then the plate.
    frmPlateInfoEx& open(PlateDevice* device, bool service) {
        return openDialog(device, [service](frmPlateInfoEx& d) { d.setServicePanels(service); });
    }
    static QList<QPushButton*> resets(const frmPlateInfoEx& d) {
        return {d.cmdResetTemp, d.cmdResetEnum, d.cmdResetTime};
    }

    SimPlate* plate = nullptr;
    SimPlate* uncalibrated = nullptr;

private:
    QLocale m_savedLocale;
};

TEST_F(PlateInfoEx, ShowsTheRecordAndForgetsItForAPlateWithoutValidDates) {
    plate->SetOperatorRecord2(QStringLiteral("J. Doe"),
                              QDateTime(QDate(2024, 1, 31), QTime(15, 4, 5)));
    auto& d = open(plate, false);
    // Each caption from its own resource: a neighbour's number would show a neighbour's text.
    EXPECT_EQ(d.lblTMax->text(), "Max Device Temperature:");
    EXPECT_EQ(d.cmdResetTemp->text(), "Reset &Temp");
    EXPECT_EQ(d.cmdResetEnum->text(), "Reset &Enum");
    EXPECT_EQ(d.cmdResetTime->text(), "Reset &Time");
    EXPECT_EQ(d.lblSerialNumberTxt->text(), "KX2001");
    EXPECT_TRUE(d.lblTactTxt->text().endsWith(QString::fromUtf8(" °C")));
    // A plain number: no group separator even in a locale that has one.
    EXPECT_EQ(d.lblNUsesTxt->text(), QString::number(plate->EnumerationCount()));
    EXPECT_EQ(d.lblCalDateTxt->text(), "Wednesday, January 31, 2024 - 3:04:05 PM");
    EXPECT_EQ(d.lblCalOperTxt->text(), "J. Doe");

    d.setDevice(uncalibrated);
    for (QLabel* field : {d.lblCalDateTxt, d.lblCalOperTxt, d.lblInspDateTxt, d.lblInspOperTxt})
        EXPECT_EQ(field->text(), QString()) << field->objectName().toStdString();
    EXPECT_TRUE(prompt.messages.isEmpty());
}

TEST_F(PlateInfoEx, ResetsNeedTheServiceFlagEvenAfterATimeOut) {
    auto& d = open(plate, false);
    driver.inject(QStringLiteral("KX2001"), PlateFault::ReadTimeout);
    EXPECT_EQ(prompt.messages, QStringList{strings::text(9930)});
    for (QPushButton* button : resets(d))
        EXPECT_FALSE(button->isEnabled()) << button->objectName().toStdString();

    auto& none = open(nullptr, true);
    EXPECT_EQ(none.lblSerialNumberTxt->text(), "No Platform");
    for (QPushButton* button : resets(none))
        EXPECT_FALSE(button->isEnabled()) << button->objectName().toStdString();
}

TEST_F(PlateInfoEx, EachResetCommandsThePlateAndReadsTheRecordAgainUntilUnplugged) {
    clock.advance(7200 * 1000);
    auto& d = open(plate, true);
    d.cmdResetEnum->click();
    EXPECT_EQ(d.lblNUsesTxt->text(), "0");
    d.cmdResetTime->click();
    EXPECT_EQ(d.lblTimeOnTxt->text(), "0h 0m 0s ");
    // The extremes restart from the present temperature.
    d.cmdResetTemp->click();
    EXPECT_EQ(d.lblTMaxTxt->text(), d.lblTactTxt->text());
    EXPECT_EQ(d.lblTMinTxt->text(), d.lblTactTxt->text());
    EXPECT_TRUE(prompt.messages.isEmpty());

    // A read that fails leaves the fields after it as they were.
    clock.advance(7200 * 1000);
    plate->failures().failEveryCall(QStringLiteral("EnumerationCount"),
                                    QStringLiteral("No answer."));
    d.cmdResetTemp->click();
    EXPECT_EQ(prompt.messages, QStringList{QStringLiteral("No answer.")});
    EXPECT_EQ(d.lblNUsesTxt->text(), "0");
    EXPECT_EQ(d.lblTimeOnTxt->text(), "0h 0m 0s ");

    // Unplugged, the dialog closes at once after the message.
    driver.unplug(QStringLiteral("KX2001"));
    EXPECT_EQ(prompt.messages, (QStringList{QStringLiteral("No answer."), strings::text(9920)}));
    EXPECT_EQ(unloads, 1);
}

} // namespace
} // namespace kx
