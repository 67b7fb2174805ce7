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
using Shown = QList<std::pair<const char*, const char*>>;

// What the plate holds for the converter box of that name.
float stored(SimPlate& p, const QString& box) {
    const Which w = box.endsWith(u"Def") ? Which::Default : Which::Current;
    if (box.startsWith(u"txtAVoltage"))
        return p.GageVoltage(w);
    if (box.startsWith(u"txtSampFreq"))
        return p.SampleFrequency(w);
    if (box.startsWith(u"txt3dBFreq"))
        return p.CutoffFrequency(w);
    return static_cast<float>(box.startsWith(u"txtTurbo") ? p.TurboRate(w) : p.DecimationRate(w));
}

struct ConverterEdit {
    const char* name;
    const char* box;
    const char* typed;
    float stored;
    Shown shown; // boxes and what they show afterwards
};

class ConverterEdits : public MainWindowBench,
                       public ::testing::WithParamInterface<ConverterEdit> {};

TEST_P(ConverterEdits, AreClampedWrittenAndReadBack) {
    start();
    const ConverterEdit& e = GetParam();
    type(QLatin1String(e.box), QLatin1String(e.typed));
    for (const auto& [name, expected] : e.shown)
        EXPECT_EQ(text(QLatin1String(name)), QLatin1String(expected)) << name;
    EXPECT_FLOAT_EQ(stored(*selectedPlate(), QLatin1String(e.box)), e.stored);
    EXPECT_TRUE(prompt.messages.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    MainWindow, ConverterEdits,
    ::testing::Values(
        // The plate's excitation DAC sets 0.01 V as two steps of 5/1024 V.
        ConverterEdit{
            "GageZero", "txtAVoltageCurr", "0", 2 * 5.0f / 1024, {{"txtAVoltageCurr", "0.010"}}},
        ConverterEdit{"GageAboveFive", "txtAVoltageCurr", "5.5", 5, {{"txtAVoltageCurr", "5.000"}}},
        ConverterEdit{"SamplingTooHigh",
                      "txtSampFreqCurr",
                      "20000",
                      1000,
                      {{"txtSampFreqCurr", "1000.000"},
                       {"txt3dBFreqCurr", "262.000"},
                       {"txtTurboCurr", "1"},
                       {"txtDecimationCurr", "72"}}},
        ConverterEdit{"CutoffTooLow",
                      "txt3dBFreqCurr",
                      "1",
                      2.358f,
                      {{"txt3dBFreqCurr", "2.358"}, {"txtSampFreqCurr", "9.000"}}},
        ConverterEdit{"SamplingTooLow", "txtSampFreqCurr", "1", 9, {{"txtSampFreqCurr", "9.000"}}},
        ConverterEdit{"CutoffTooHigh",
                      "txt3dBFreqCurr",
                      "300",
                      262,
                      {{"txt3dBFreqCurr", "262.000"}, {"txtSampFreqCurr", "1000.000"}}},
        ConverterEdit{
            "DecimationTooLow", "txtDecimationCurr", "5", 20, {{"txtDecimationCurr", "20"}}},
        ConverterEdit{"TurboZero", "txtTurboCurr", "0", 1, {{"txtTurboCurr", "1"}}},
        ConverterEdit{"TurboNotWrapped", "txtTurboCurr", "65537", 16, {{"txtTurboCurr", "16"}}}),
    [](const auto& param) { return std::string(param.param.name); });

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
        EXPECT_EQ(selectedPlate()->Resolution(), bits) << typed;
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
    EXPECT_FLOAT_EQ(plate.SampleFrequency(Which::Current), 100.0f);
    EXPECT_EQ(plate.Resolution(), 24);
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

struct ZeroEdit {
    const char* name;
    bool firmware2;
    const char* typed;
    qint32 stored;
};

class ZeroRange : public MainWindowBench, public ::testing::WithParamInterface<ZeroEdit> {};

TEST_P(ZeroRange, FollowsTheFirmware) {
    start();
    const ZeroEdit& e = GetParam();
    select(e.firmware2 ? Fw2Plate : Fw1Plate);
    type(QStringLiteral("txtZeroCurr1"), QLatin1String(e.typed));
    type(QStringLiteral("txtZeroDef2"), QLatin1String(e.typed));
    EXPECT_EQ(selectedPlate()->ZeroValue(1, Which::Current), e.stored);
    EXPECT_EQ(selectedPlate()->ZeroValue(2, Which::Default), e.stored);
    EXPECT_EQ(text(QStringLiteral("txtZeroCurr1")), QString::number(e.stored));
}

INSTANTIATE_TEST_SUITE_P(MainWindow, ZeroRange,
                         ::testing::Values(ZeroEdit{"NegativeOnFirmware1", false, "-5", 0},
                                           ZeroEdit{"NegativeOnFirmware2", true, "-5", -5},
                                           ZeroEdit{"LargeOnFirmware2", true, "9000000", 8388607},
                                           ZeroEdit{"BelowS24", true, "-9000000", -8388608},
                                           ZeroEdit{"NotWrapped", true, "4294967295", 8388607}),
                         [](const auto& param) { return std::string(param.param.name); });

class MatrixEditor : public MainWindowBench {
protected:
    void SetUp() override {
        start();
        grid = control<QTableWidget>(QStringLiteral("flxgrdCalibrationMat"));
    }
    void clickCell(int row, int column) {
        const QRect cell = grid->visualRect(grid->model()->index(row, column));
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, cell.center());
    }
    void edit(int row, int column, const QString& typed) {
        clickCell(row, column);
        ASSERT_TRUE(box(QStringLiteral("txtEditCalMat"))->isVisible());
        type(QStringLiteral("txtEditCalMat"), typed);
        EXPECT_FALSE(box(QStringLiteral("txtEditCalMat"))->isVisible());
    }
    QTableWidget* grid = nullptr;
};

TEST_F(MatrixEditor, ClearedEditorWritesZeroAndTypedTextStaysUntilTheNextSelection) {
    edit(1, 2, QString());
    EXPECT_FLOAT_EQ(selectedPlate()->MatrixElement(1, 2), 0.0f);
    EXPECT_EQ(grid->item(1, 2)->text(), QStringLiteral("0"));

    edit(0, 0, QStringLiteral("-1234.56789"));
    EXPECT_FLOAT_EQ(selectedPlate()->MatrixElement(0, 0), -1234.56789f);
    EXPECT_EQ(grid->item(0, 0)->text(), QStringLiteral("-1234.56789"));
    select(Fw2Plate);
    EXPECT_EQ(grid->item(0, 0)->text(), QStringLiteral("-1234.568"));
}

TEST_F(MatrixEditor, NoNumberOrNoEditWritesNothing) {
    selectedPlate()->SetMatrixElement(0, 1, 1.23456f);
    select(Fw2Plate);
    const int beeps = prompt.beeps;
    edit(0, 1, QStringLiteral("one"));
    EXPECT_EQ(prompt.beeps, beeps + 1);
    EXPECT_EQ(grid->item(0, 1)->text(), formatNumber(1.23456f, u"0.000"));
    // Passing through a cell without typing must not write its rounded text back.
    clickCell(0, 1);
    clickCell(2, 2);
    EXPECT_FLOAT_EQ(selectedPlate()->MatrixElement(0, 1), 1.23456f);
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
    // Today is read on both sides of the click, so a run across midnight passes too.
    const QDate before = QDate::currentDate();
    box(QStringLiteral("txtAppCounter0"))->setText(QStringLiteral("17"));
    box(QStringLiteral("txtAppCounter2"))->setText(QStringLiteral("  "));
    box(QStringLiteral("txtAppLastDate"))->clear();
    click("cmdSetCounters");
    const QDate after = QDate::currentDate();
    const QDate today =
        text(QStringLiteral("txtAppLastDate")) == formatShortDate(before) ? before : after;
    SimPlate& plate = *selectedPlate();
    EXPECT_EQ(text(QStringLiteral("txtAppCounter2")), QStringLiteral("0"));
    EXPECT_FLOAT_EQ(plate.MatrixElement(3, 2), 0.0f);
    EXPECT_FLOAT_EQ(plate.MatrixElement(3, 0), 17.0f);
    EXPECT_EQ(text(QStringLiteral("txtAppLastDate")), formatShortDate(today));
    EXPECT_FLOAT_EQ(plate.MatrixElement(0, 3),
                    static_cast<float>(QDate(1899, 12, 30).daysTo(today)));

    box(QStringLiteral("txtAppLastDate"))->setText(QStringLiteral("2024-02-29"));
    click("cmdSetCounters");
    EXPECT_FLOAT_EQ(plate.MatrixElement(0, 3), 45351.0f) << "an ISO date is taken too";
    box(QStringLiteral("txtAppLastDate"))->setText(QStringLiteral("not a date"));
    click("cmdSetCounters");
    EXPECT_FLOAT_EQ(plate.MatrixElement(0, 3), 45351.0f);
    EXPECT_EQ(text(QStringLiteral("txtAppLastDate")), formatShortDate(QDate(2024, 2, 29)));
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

TEST_F(MainWindowPanels, OnlyANewSerialNumberIsTakenUpByTheDriver) {
    start();
    const int beeps = prompt.beeps;
    type(QStringLiteral("txtSerialNumber"), Fw2Plate);
    clock.settle();
    EXPECT_EQ(prompt.beeps, beeps) << "no enumeration";
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

// A number that would make a plate unreachable is refused by the plate, and the main window
// shows the refusal as it shows every failed plate call.
TEST_F(MainWindowPanels, AnEmptyOrTakenSerialNumberIsRefusedWithAMessage) {
    start();
    const struct {
        const char* typed;
        const char* message;
    } cases[] = {
        {"  ", "The serial number of the force platform 20418 cannot be empty."},
        {"11093", "The serial number 11093 is already used by another connected force platform."},
    };
    for (const auto& c : cases) {
        prompt.messages.clear();
        type(QStringLiteral("txtSerialNumber"), QLatin1String(c.typed));
        clock.settle();
        EXPECT_EQ(prompt.messages, QStringList{QLatin1String(c.message)});
        EXPECT_EQ(text(QStringLiteral("txtSerialNumber")), Fw2Plate) << c.typed;
        EXPECT_EQ(entries(), (QStringList{Fw2Plate, Fw1Plate})) << c.typed;
        EXPECT_EQ(window->selectedDevice(), plate(Fw2Plate)) << c.typed;
    }
}

} // namespace
} // namespace kx::test
