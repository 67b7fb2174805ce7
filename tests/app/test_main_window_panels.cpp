#include "MainWindowBench.h"
#include "app/ConverterPanel.h"
#include "support/DateFormat.h"
#include "support/NumberFormat.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QCheckBox>
#include <QPushButton>
#include <QStyle>
#include <QStyleOptionFrame>
#include <QTableWidget>
#include <QTest>
#include <functional>

namespace kx::test {
namespace {

using MainWindowPanels = MainWindowBench;

// Each box shows what the plate read back after the write, and the plate derives the other
// rates from the one written: sampling = 72 kHz × turbo / decimation, from turbo 1 and
// decimation 720 (100 Hz).
TEST_F(MainWindowPanels, EditsAreClampedWrittenAndReadBack) {
    const struct {
        bool firmware1;
        const char* box;
        const char* typed;
        const char* shown;
        QList<std::pair<const char*, const char*>> derived = {}; // other boxes read back
    } edits[] = {
        // The plate's excitation DAC sets 0.01 V as two steps of 5/1024 V.
        {false, "txtAVoltageCurr", "0", "0.010"},
        {false, "txtAVoltageCurr", "5.5", "5.000"},
        {false,
         "txtSampFreqCurr",
         "20000",
         "1000.000",
         {{"txt3dBFreqCurr", "262.000"}, {"txtTurboCurr", "1"}, {"txtDecimationCurr", "72"}}},
        {false, "txtSampFreqCurr", "1", "9.000"},
        {false, "txt3dBFreqCurr", "1", "2.358", {{"txtSampFreqCurr", "9.000"}}},
        {false, "txt3dBFreqCurr", "300", "262.000", {{"txtSampFreqCurr", "1000.000"}}},
        {false, "txtDecimationCurr", "5", "20", {{"txtSampFreqCurr", "3600.000"}}},
        {false, "txtTurboCurr", "0", "1"},
        {false, "txtTurboCurr", "65537", "16", {{"txtSampFreqCurr", "1600.000"}}},
        // Zero values: unsigned 24-bit codes before firmware 2, signed from it on.
        {true, "txtZeroCurr1", "-5", "0"},
        {true, "txtZeroDef2", "9000000", "9000000"},
        {false, "txtZeroDef2", "-5", "-5"},
        {false, "txtZeroCurr1", "9000000", "8388607"},
        {false, "txtZeroCurr1", "-9000000", "-8388608"},
        {false, "txtZeroCurr1", "4294967295", "8388607"},
    };
    for (const auto& e : edits) {
        SCOPED_TRACE(std::string(e.box) + " " + e.typed);
        start();
        if (e.firmware1)
            select(Fw1Plate);
        type(QLatin1String(e.box), QLatin1String(e.typed));
        EXPECT_EQ(text(QLatin1String(e.box)), QLatin1String(e.shown));
        for (const auto& [name, expected] : e.derived)
            EXPECT_EQ(text(QLatin1String(name)), QLatin1String(expected)) << name;
        EXPECT_TRUE(prompt.messages.isEmpty());
    }
}

qint32 storedResolutionSetting() {
    return GetSettingLong(SettingsRoot::CurrentUser, QLatin1String(kAcquisitionKey),
                          QStringLiteral("AD Resolution"), -1);
}

TEST_F(MainWindowPanels, ResolutionIsClampedAndKeptAsTheSetting) {
    start();
    for (const auto& [typed, bits] :
         {std::pair{"30", 24}, std::pair{"3", 6}, std::pair{"18", 18}}) {
        type(QStringLiteral("txtResolutionCurr"), QLatin1String(typed));
        EXPECT_EQ(text(QStringLiteral("txtResolutionCurr")), QString::number(bits)) << typed;
        EXPECT_EQ(storedResolutionSetting(), bits) << typed;
    }
}

TEST_F(MainWindowPanels, TextThatIsNoNumberWritesNothingAndBeeps) {
    start();
    SimPlate& plate = *selectedPlate();
    for (const char* typed : {"12abc", "1,500"}) {
        for (const char* name : {"txtSampFreqCurr", "txtZeroCurr0", "txtResolutionCurr"}) {
            const QString before = text(QLatin1String(name));
            const int beeps = prompt.beeps;
            type(QLatin1String(name), QLatin1String(typed));
            EXPECT_EQ(prompt.beeps, beeps + 1) << name << " " << typed;
            EXPECT_EQ(text(QLatin1String(name)), before) << name << " " << typed;
        }
    }
    EXPECT_EQ(storedResolutionSetting(), -1);
    // An emptied box writes nothing either.
    const int zero = plate.ZeroValue(1, Which::Current);
    type(QStringLiteral("txtZeroCurr1"), QString());
    EXPECT_EQ(plate.ZeroValue(1, Which::Current), zero);
    EXPECT_TRUE(prompt.messages.isEmpty());
}

TEST_F(MainWindowPanels, GageVoltageZeroIsRepairedOnSelection) {
    start();
    plate(Fw1Plate)->SetGageVoltage(Which::Default, 0);
    plate(Fw1Plate)->SetGageVoltage(Which::Current, -1);
    select(Fw1Plate);
    EXPECT_EQ(text(QStringLiteral("txtAVoltageDef")), QStringLiteral("0.010"));
    EXPECT_FLOAT_EQ(plate(Fw1Plate)->GageVoltage(Which::Default), 0.01f);
    // The current value is what the excitation DAC sets: two steps of 5/1024 V.
    EXPECT_FLOAT_EQ(plate(Fw1Plate)->GageVoltage(Which::Current), 2 * 5.0f / 1024);
}

TEST_F(MainWindowPanels, MatrixEditorWritesTheTypedNumberOrZeroAndNothingElse) {
    start();
    selectedPlate()->SetMatrixElement(0, 1, 1.23456f);
    select(Fw2Plate);
    auto* grid = control<QTableWidget>(QStringLiteral("flxgrdCalibrationMat"));
    const auto clickCell = [grid](int row, int column) {
        const QRect cell = grid->visualRect(grid->model()->index(row, column));
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, cell.center());
    };
    const auto edit = [&](int row, int column, const QString& typed) {
        clickCell(row, column);
        ASSERT_TRUE(box(QStringLiteral("txtEditCalMat"))->isVisible());
        type(QStringLiteral("txtEditCalMat"), typed);
        EXPECT_FALSE(box(QStringLiteral("txtEditCalMat"))->isVisible());
    };
    edit(1, 2, QString());
    EXPECT_FLOAT_EQ(selectedPlate()->MatrixElement(1, 2), 0.0f);
    EXPECT_EQ(grid->item(1, 2)->text(), QStringLiteral("0"));
    edit(0, 0, QStringLiteral("-1234.56789"));
    EXPECT_FLOAT_EQ(selectedPlate()->MatrixElement(0, 0), -1234.56789f);
    EXPECT_EQ(grid->item(0, 0)->text(), QStringLiteral("-1234.56789"));

    const int beeps = prompt.beeps;
    edit(0, 1, QStringLiteral("one"));
    EXPECT_EQ(prompt.beeps, beeps + 1);
    EXPECT_EQ(grid->item(0, 1)->text(), formatNumber(1.23456f, u"0.000"));
    // Passing through a cell without typing must not write its rounded text back.
    clickCell(0, 1);
    clickCell(2, 2);
    EXPECT_FLOAT_EQ(selectedPlate()->MatrixElement(0, 1), 1.23456f);
    // The typed text stays until the next selection reads the matrix again.
    select(Fw2Plate);
    EXPECT_EQ(grid->item(0, 0)->text(), QStringLiteral("-1234.568"));
}

class ServiceLayout : public MainWindowBench {
protected:
    void SetUp() override {
        start();
        enterServiceMode();
    }
    void click(const char* name) { control<QAbstractButton>(QLatin1String(name))->click(); }
};

TEST_F(ServiceLayout, EmptyCountersAndDateAreFilledWhenSet) {
    // The bench's clock starts on 14 March 2024, day 45365 counted from 30 December 1899.
    const QDate today(2024, 3, 14);
    box(QStringLiteral("txtAppCounter0"))->setText(QStringLiteral("17"));
    box(QStringLiteral("txtAppCounter2"))->setText(QStringLiteral("  "));
    box(QStringLiteral("txtAppLastDate"))->clear();
    click("cmdSetCounters");
    SimPlate& plate = *selectedPlate();
    EXPECT_EQ(text(QStringLiteral("txtAppCounter2")), QStringLiteral("0"));
    EXPECT_FLOAT_EQ(plate.MatrixElement(3, 2), 0.0f);
    EXPECT_FLOAT_EQ(plate.MatrixElement(3, 0), 17.0f);
    EXPECT_EQ(text(QStringLiteral("txtAppLastDate")), formatShortDate(today));
    EXPECT_FLOAT_EQ(plate.MatrixElement(0, 3), 45365.0f);

    box(QStringLiteral("txtAppLastDate"))->setText(QStringLiteral("2024-02-29"));
    click("cmdSetCounters");
    EXPECT_FLOAT_EQ(plate.MatrixElement(0, 3), 45351.0f) << "an ISO date is taken too";
    box(QStringLiteral("txtAppLastDate"))->setText(QStringLiteral("not a date"));
    click("cmdSetCounters");
    EXPECT_FLOAT_EQ(plate.MatrixElement(0, 3), 45351.0f);
    EXPECT_EQ(text(QStringLiteral("txtAppLastDate")), formatShortDate(QDate(2024, 2, 29)));
}

// A plate whose date was never set holds day 0: the box stays empty rather than showing
// 30 December 1899, while day 1 is a real date.
TEST_F(MainWindowPanels, ACounterDateNeverSetShowsEmpty) {
    Scenario scenario = Scenario::defaults();
    scenario.plates[0].calibrated = false;
    start(scenario);
    enterServiceMode();
    ASSERT_FLOAT_EQ(selectedPlate()->MatrixElement(0, 3), 0.0f);
    EXPECT_EQ(text(QStringLiteral("txtAppLastDate")), QString());
    selectedPlate()->SetMatrixElement(0, 3, 1);
    select(Fw2Plate);
    EXPECT_EQ(text(QStringLiteral("txtAppLastDate")), formatShortDate(QDate(1899, 12, 31)));
}

// Each switch writes the state it shows, and a refused write leaves it as the plate has it.
TEST_F(ServiceLayout, StatusSwitchesWriteWhatTheyShow) {
    SimPlate& plate = *selectedPlate();
    const struct {
        const char* name;
        const char* operation;
        std::function<bool()> state;
    } switches[] = {
        {"chkPolled", "SetPolled", [&] { return plate.Polled(0); }},
        {"chkADSleep", "SetConverterSleep", [&] { return plate.ConverterSleep(0); }},
        {"chkBkgCal", "SetBackgroundCalibration", [&] { return plate.BackgroundCalibration(); }},
        {"chkPowerON", "SetPowerOn", [&] { return plate.PowerOn(0); }},
    };
    for (const auto& s : switches) {
        auto* box = control<QCheckBox>(QLatin1String(s.name));
        const bool before = s.state();
        ASSERT_EQ(box->isChecked(), before) << s.name;
        box->click();
        EXPECT_EQ(s.state(), !before) << s.name;
        EXPECT_EQ(box->isChecked(), !before) << s.name;
        plate.failures().failEveryCall(QLatin1String(s.operation), QStringLiteral("refused"));
        box->click();
        EXPECT_EQ(s.state(), !before) << s.name;
        EXPECT_EQ(box->isChecked(), !before) << s.name << ": the plate kept its state";
        plate.failures().clear();
        box->click();
        EXPECT_EQ(s.state(), before) << s.name;
    }
}

TEST_F(ServiceLayout, EachConverterCommandCallsItsOwnOperation) {
    SimPlate& plate = *selectedPlate();
    for (const char* operation :
         {"CalibrateSelf", "CalibrateOffset", "CalibrateFullScale", "CalibratePseudo"}) {
        plate.failures().failEveryCall(QLatin1String(operation), QLatin1String(operation));
        prompt.messages.clear();
        for (const char* button : {"cmdCalSelf", "cmdCalOffset", "cmdCalFullScale", "cmdPseudo"})
            click(button);
        EXPECT_EQ(prompt.messages, QStringList{QLatin1String(operation)});
        plate.failures().clear();
    }
}

TEST_F(ServiceLayout, StoreDefaultsMakesTheCurrentValuesThePowerOnOnes) {
    SimPlate& plate = *selectedPlate();
    type(QStringLiteral("txtAVoltageCurr"), QStringLiteral("2.5"));
    type(QStringLiteral("txtTurboCurr"), QStringLiteral("4"));
    type(QStringLiteral("txtDecimationCurr"), QStringLiteral("100"));
    click("cmdStoreDefParam");
    EXPECT_FLOAT_EQ(plate.GageVoltage(Which::Default), 2.5f);
    EXPECT_EQ(plate.TurboRate(Which::Default), 4);
    EXPECT_EQ(plate.DecimationRate(Which::Default), 100);
    EXPECT_EQ(text(QStringLiteral("txtDecimationDef")), QStringLiteral("100"));

    // An emptied current zero box stores 0; the others store what they show.
    type(QStringLiteral("txtZeroCurr0"), QStringLiteral("1234"));
    box(QStringLiteral("txtZeroCurr1"))->setText(QStringLiteral(" "));
    click("cmdStoreDefZero");
    EXPECT_EQ(plate.ZeroValue(0, Which::Default), 1234);
    EXPECT_EQ(plate.ZeroValue(1, Which::Default), 0);
    EXPECT_EQ(text(QStringLiteral("txtZeroCurr1")), QStringLiteral("0"));
    EXPECT_EQ(text(QStringLiteral("txtZeroDef1")), QStringLiteral("0"));
}

// Pixels a line edit has for its text: its contents less the text margins and its own
// margin of 2 pixels each side, less a pixel for the cursor.
int textRoom(QLineEdit& box) {
    QStyleOptionFrame option;
    option.initFrom(&box);
    option.lineWidth = box.style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, &box);
    const QMargins margins = box.textMargins();
    return box.style()->subElementRect(QStyle::SE_LineEditContents, &option, &box).width() -
           margins.left() - margins.right() - 2 * 2 - 1;
}

TEST_F(ServiceLayout, EveryBoxShowsItsWidestValueWhole) {
    const std::pair<const char*, const char*> widest[] = {
        {"txtDecimationCurr", "8000"},       {"txtTurboCurr", "16"},
        {"txtSampFreqCurr", "1000.000"},     {"txt3dBFreqDef", "262.000"},
        {"txtZeroCurr0", "-8388608"},        {"txtResolutionCurr", "24"},
        {"txtAppCounter0", "-1.677722E+07"}, {"txtAppLastDate", "12/31/2029"},
        {"txtSerialNumber", "123456789012"},
    };
    for (const auto& [name, value] : widest) {
        QLineEdit& shown = *box(QLatin1String(name));
        EXPECT_LE(shown.fontMetrics().horizontalAdvance(QLatin1String(value)), textRoom(shown))
            << name << " " << value;
    }
}

TEST_F(MainWindowPanels, AFailedPlateCallIsReportedAndTheWindowStaysUsable) {
    start();
    selectedPlate()->failures().failNextCall(QStringLiteral("Write to plate failed"));
    type(QStringLiteral("txtSampFreqCurr"), QStringLiteral("200"));
    EXPECT_EQ(prompt.messages, QStringList{QStringLiteral("Write to plate failed")});
    type(QStringLiteral("txtSampFreqCurr"), QStringLiteral("200"));
    EXPECT_EQ(text(QStringLiteral("txtSampFreqCurr")), QStringLiteral("200.000"));

    plate(Fw1Plate)->failures().failEveryCall(QStringLiteral("ZeroValue"),
                                              QStringLiteral("No zero"));
    select(Fw1Plate);
    EXPECT_EQ(prompt.messages.last(), QStringLiteral("No zero"));
    select(Fw2Plate);
    EXPECT_EQ(text(QStringLiteral("txtSerialNumber")), Fw2Plate);
    EXPECT_EQ(prompt.messages.size(), 2);
}

// The plate refuses a number that would make it unreachable, and the main window shows the
// refusal as it shows every failed plate call; only a new number re-enumerates the plates.
TEST_F(MainWindowPanels, OnlyANewSerialNumberIsTakenUpByTheDriver) {
    start();
    const struct {
        QString typed;
        const char* message;
    } refused[] = {
        {Fw2Plate, nullptr},
        {QStringLiteral("  "), "The serial number of the force platform 20418 cannot be empty."},
        {Fw1Plate, "The serial number 11093 is already used by another connected force platform."},
    };
    for (const auto& r : refused) {
        SCOPED_TRACE(r.typed.toStdString());
        prompt.messages.clear();
        const int beeps = prompt.beeps;
        type(QStringLiteral("txtSerialNumber"), r.typed);
        clock.settle();
        EXPECT_EQ(prompt.beeps, beeps) << "no enumeration";
        EXPECT_EQ(prompt.messages,
                  r.message ? QStringList{QLatin1String(r.message)} : QStringList());
        EXPECT_EQ(text(QStringLiteral("txtSerialNumber")), Fw2Plate);
        EXPECT_EQ(entries(), (QStringList{Fw2Plate, Fw1Plate}));
        EXPECT_EQ(window->selectedDevice(), plate(Fw2Plate));
    }
    type(QStringLiteral("txtSerialNumber"), QStringLiteral("  30001 "));
    // Re-enumerating: no plate is selected, so no tool opens on a released plate.
    EXPECT_EQ(window->selectedDevice(), nullptr);
    EXPECT_FALSE(window->cmdMeter->isEnabled());
    EXPECT_FALSE(window->frmConverter->isEnabled());
    clock.settle();
    EXPECT_EQ(entries(), (QStringList{QStringLiteral("30001"), Fw1Plate}));
    EXPECT_EQ(window->selectedDevice(), sim->Item(QStringLiteral("30001")));
    EXPECT_TRUE(window->cmdMeter->isEnabled());
}

} // namespace
} // namespace kx::test
