#include "MainWindowFixture.h"
#include "app/MatrixPanel.h"
#include "support/DateFormat.h"
#include "support/NumberFormat.h"
#include "support/Settings.h"
#include "support/SettingsKeys.h"

#include <QApplication>
#include <QCheckBox>
#include <QPushButton>
#include <QTableWidget>
#include <functional>

namespace kx::test {
namespace {

using MainWindowPanels = MainWindowFixture;
using Shown = QList<std::pair<const char*, const char*>>;

struct ConverterEdit {
    const char* name;
    const char* box;
    const char* typed;
    Shown shown; // boxes and what they show afterwards
    std::function<double(SimPlate&)> stored;
    double expected;
};

class ConverterEdits : public MainWindowFixture,
                       public ::testing::WithParamInterface<ConverterEdit> {};

TEST_P(ConverterEdits, AreClampedWrittenAndReadBack) {
    start();
    const ConverterEdit& e = GetParam();
    type(QLatin1String(e.box), QLatin1String(e.typed));
    for (const auto& [name, expected] : e.shown)
        EXPECT_EQ(text(QLatin1String(name)), QLatin1String(expected)) << name;
    EXPECT_FLOAT_EQ(static_cast<float>(e.stored(*selectedPlate())), static_cast<float>(e.expected));
    EXPECT_TRUE(prompt.messages.isEmpty());
}

double gage(SimPlate& p, Which w) {
    return p.GageVoltage(w);
}
double frequency(SimPlate& p, Which w) {
    return p.SampleFrequency(w);
}
double cutoff(SimPlate& p, Which w) {
    return p.CutoffFrequency(w);
}

constexpr auto Curr = Which::Current;
constexpr auto Def = Which::Default;

INSTANTIATE_TEST_SUITE_P(
    MainWindow, ConverterEdits,
    ::testing::Values(ConverterEdit{"GageZeroBecomesAHundredth",
                                    "txtAVoltageCurr",
                                    "0",
                                    {{"txtAVoltageCurr", "0.010"}},
                                    [](SimPlate& p) { return gage(p, Curr); },
                                    0.01},
                      ConverterEdit{"NegativeGageDefault",
                                    "txtAVoltageDef",
                                    "-3",
                                    {{"txtAVoltageDef", "0.010"}},
                                    [](SimPlate& p) { return gage(p, Def); },
                                    0.01},
                      ConverterEdit{"SmallGageStaysAsTyped",
                                    "txtAVoltageCurr",
                                    "0.005",
                                    {{"txtAVoltageCurr", "0.005"}},
                                    [](SimPlate& p) { return gage(p, Curr); },
                                    0.005},
                      ConverterEdit{"GageAboveFive",
                                    "txtAVoltageCurr",
                                    "5.5",
                                    {{"txtAVoltageCurr", "5.000"}},
                                    [](SimPlate& p) { return gage(p, Curr); },
                                    5.0},
                      ConverterEdit{"SamplingTooHigh",
                                    "txtSampFreqCurr",
                                    "20000",
                                    {{"txtSampFreqCurr", "1000.000"},
                                     {"txt3dBFreqCurr", "262.000"},
                                     {"txtTurboCurr", "1"},
                                     {"txtDecimationCurr", "72"}},
                                    [](SimPlate& p) { return frequency(p, Curr); },
                                    1000},
                      ConverterEdit{"SamplingTooLow",
                                    "txtSampFreqCurr",
                                    "1",
                                    {{"txtSampFreqCurr", "9.000"}, {"txt3dBFreqCurr", "2.358"}},
                                    [](SimPlate& p) { return frequency(p, Curr); },
                                    9},
                      ConverterEdit{"SamplingDefaultLeavesCurrent",
                                    "txtSampFreqDef",
                                    "20000",
                                    {{"txtSampFreqDef", "1000.000"},
                                     {"txt3dBFreqDef", "262.000"},
                                     {"txtSampFreqCurr", "100.000"}},
                                    [](SimPlate& p) { return frequency(p, Def); },
                                    1000},
                      ConverterEdit{"CutoffTooLow",
                                    "txt3dBFreqCurr",
                                    "1",
                                    {{"txt3dBFreqCurr", "2.358"}, {"txtSampFreqCurr", "9.000"}},
                                    [](SimPlate& p) { return cutoff(p, Curr); },
                                    2.358},
                      ConverterEdit{
                          "CutoffTooHigh",
                          "txt3dBFreqCurr",
                          "500",
                          {{"txt3dBFreqCurr", "262.000"}, {"txtSampFreqCurr", "1000.000"}},
                          [](SimPlate& p) { return cutoff(p, Curr); },
                          262},
                      ConverterEdit{"TurboAboveSixteen",
                                    "txtTurboCurr",
                                    "99",
                                    {{"txtTurboCurr", "16"}, {"txtSampFreqCurr", "1600.000"}},
                                    [](SimPlate& p) { return p.TurboRate(Curr); },
                                    16},
                      ConverterEdit{"TurboBeyondItsTypeIsNotWrapped",
                                    "txtTurboCurr",
                                    "65537",
                                    {{"txtTurboCurr", "16"}},
                                    [](SimPlate& p) { return p.TurboRate(Curr); },
                                    16},
                      ConverterEdit{"DecimationBelowTwenty",
                                    "txtDecimationDef",
                                    "3",
                                    {{"txtDecimationDef", "20"}},
                                    [](SimPlate& p) { return p.DecimationRate(Def); },
                                    20}),
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
    EXPECT_EQ(text(QStringLiteral("txtResolutionDef")), QStringLiteral("20"));
}

TEST_F(MainWindowPanels, TextThatIsNoNumberWritesNothingAndBeeps) {
    start();
    SimPlate& plate = *selectedPlate();
    const Shown before = {{"txtSampFreqCurr", "100.000"},
                          {"txtTurboDef", nullptr},
                          {"txtZeroCurr0", nullptr},
                          {"txtResolutionCurr", "24"}};
    QStringList expected;
    for (const auto& [name, shown] : before)
        expected << (shown ? QLatin1String(shown) : text(QLatin1String(name)));
    for (const auto& [name, shown] : before) {
        const int beeps = prompt.beeps;
        type(QLatin1String(name), QStringLiteral("12abc"));
        EXPECT_EQ(prompt.beeps, beeps + 1) << name;
    }
    for (int i = 0; i < before.size(); ++i)
        EXPECT_EQ(text(QLatin1String(before[i].first)), expected[i]) << before[i].first;
    EXPECT_FLOAT_EQ(plate.SampleFrequency(Which::Current), 100.0f);
    EXPECT_EQ(plate.Resolution(), 24);
    EXPECT_EQ(storedResolutionSetting(), -1);
    EXPECT_TRUE(prompt.messages.isEmpty());
}

TEST_F(MainWindowPanels, EmptyBoxWritesNothing) {
    start();
    const int before = selectedPlate()->ZeroValue(1, Which::Current);
    type(QStringLiteral("txtZeroCurr1"), QString());
    EXPECT_EQ(selectedPlate()->ZeroValue(1, Which::Current), before);
    EXPECT_EQ(text(QStringLiteral("txtZeroCurr1")), QString());
}

TEST_F(MainWindowPanels, GageVoltageZeroIsRepairedOnSelection) {
    start();
    plate(Fw1Plate)->SetGageVoltage(Which::Default, 0);
    plate(Fw1Plate)->SetGageVoltage(Which::Current, -1);
    select(Fw1Plate);
    EXPECT_EQ(text(QStringLiteral("txtAVoltageDef")), QStringLiteral("0.010"));
    EXPECT_EQ(text(QStringLiteral("txtAVoltageCurr")), QStringLiteral("0.010"));
    EXPECT_FLOAT_EQ(plate(Fw1Plate)->GageVoltage(Which::Default), 0.01f);
    EXPECT_FLOAT_EQ(plate(Fw1Plate)->GageVoltage(Which::Current), 0.01f);
}

TEST_F(MainWindowPanels, StoringConverterDefaultsLetsThePlateDeriveTheFrequencies) {
    start();
    type(QStringLiteral("txtSampFreqCurr"), QStringLiteral("200"));
    type(QStringLiteral("txtAVoltageCurr"), QStringLiteral("3.3"));
    control<QPushButton>(QStringLiteral("cmdStoreDefParam"))->click();
    SimPlate& plate = *selectedPlate();
    EXPECT_FLOAT_EQ(plate.GageVoltage(Which::Default), 3.3f);
    EXPECT_EQ(plate.TurboRate(Which::Default), plate.TurboRate(Which::Current));
    EXPECT_EQ(plate.DecimationRate(Which::Default), plate.DecimationRate(Which::Current));
    EXPECT_EQ(text(QStringLiteral("txtSampFreqDef")), QStringLiteral("200.000"));
    EXPECT_EQ(text(QStringLiteral("txt3dBFreqDef")), QStringLiteral("52.400"));
}

struct ZeroEdit {
    const char* name;
    bool firmware2;
    const char* typed;
    qint32 stored;
};

class ZeroRange : public MainWindowFixture, public ::testing::WithParamInterface<ZeroEdit> {};

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

INSTANTIATE_TEST_SUITE_P(
    MainWindow, ZeroRange,
    ::testing::Values(ZeroEdit{"NegativeOnFirmware1", false, "-5", 0},
                      ZeroEdit{"NegativeOnFirmware2", true, "-5", -5},
                      ZeroEdit{"LargeOnFirmware1", false, "9000000", 9000000},
                      ZeroEdit{"LargeOnFirmware2", true, "9000000", 8388607},
                      ZeroEdit{"AboveUnsigned24Bits", false, "16777216", 16777215},
                      ZeroEdit{"BelowSigned24Bits", true, "-9000000", -8388608},
                      ZeroEdit{"BeyondItsTypeIsNotWrapped", true, "4294967295", 8388607}),
    [](const auto& param) { return std::string(param.param.name); });

TEST_F(MainWindowPanels, StoringZeroDefaultsCopiesTheCurrentValues) {
    start();
    type(QStringLiteral("txtZeroCurr0"), QStringLiteral("1234"));
    box(QStringLiteral("txtZeroCurr1"))->clear();
    control<QPushButton>(QStringLiteral("cmdStoreDefZero"))->click();
    SimPlate& plate = *selectedPlate();
    EXPECT_EQ(plate.ZeroValue(0, Which::Default), 1234);
    EXPECT_EQ(text(QStringLiteral("txtZeroCurr1")), QStringLiteral("0"));
    EXPECT_EQ(plate.ZeroValue(1, Which::Default), 0);
    EXPECT_EQ(plate.ZeroValue(2, Which::Default), plate.ZeroValue(2, Which::Current));
    EXPECT_FALSE(control(QStringLiteral("txtZeroDef3"))->isVisibleTo(window.get()));
}

class MatrixEditor : public MainWindowFixture {
protected:
    void SetUp() override {
        start();
        grid = control<QTableWidget>(QStringLiteral("flxgrdCalibrationMat"));
        editor = box(QStringLiteral("txtEditCalMat"));
    }
    void clickCell(int row, int column) {
        const QRect cell = grid->visualRect(grid->model()->index(row, column));
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, cell.center());
    }
    QTableWidget* grid = nullptr;
    QLineEdit* editor = nullptr;
};

TEST_F(MatrixEditor, OpensOverTheCellWithItsText) {
    EXPECT_FALSE(editor->isVisible());
    clickCell(1, 2);
    EXPECT_TRUE(editor->isVisible());
    EXPECT_EQ(editor->geometry(), grid->visualRect(grid->model()->index(1, 2)));
    EXPECT_EQ(editor->text(), grid->item(1, 2)->text());
    EXPECT_EQ(editor->text(), formatNumber(selectedPlate()->MatrixElement(1, 2), u"0.000"));
}

TEST_F(MatrixEditor, ClearedEditorWritesZero) {
    clickCell(1, 2);
    type(QStringLiteral("txtEditCalMat"), QString());
    EXPECT_FLOAT_EQ(selectedPlate()->MatrixElement(1, 2), 0.0f);
    EXPECT_EQ(grid->item(1, 2)->text(), QStringLiteral("0"));
    EXPECT_FALSE(editor->isVisible());
    EXPECT_TRUE(grid->hasFocus() || !QApplication::focusWidget());
}

TEST_F(MatrixEditor, TypedTextStaysInTheCellUntilTheNextSelection) {
    clickCell(0, 0);
    type(QStringLiteral("txtEditCalMat"), QStringLiteral("-1234.56789"));
    EXPECT_FLOAT_EQ(selectedPlate()->MatrixElement(0, 0), -1234.56789f);
    EXPECT_EQ(grid->item(0, 0)->text(), QStringLiteral("-1234.56789"));
    select(Fw2Plate);
    EXPECT_EQ(grid->item(0, 0)->text(), QStringLiteral("-1234.568"));
}

TEST_F(MatrixEditor, NoNumberPutsThePlateValueBack) {
    const float before = selectedPlate()->MatrixElement(2, 1);
    clickCell(2, 1);
    type(QStringLiteral("txtEditCalMat"), QStringLiteral("one"));
    EXPECT_FLOAT_EQ(selectedPlate()->MatrixElement(2, 1), before);
    EXPECT_EQ(grid->item(2, 1)->text(), formatNumber(before, u"0.000"));
    EXPECT_EQ(prompt.beeps, 2); // the list update's and this one
    EXPECT_FALSE(editor->isVisible());
}

TEST_F(MatrixEditor, LeavingUntouchedWritesNothing) {
    selectedPlate()->SetMatrixElement(0, 1, 1.23456f);
    select(Fw2Plate);
    clickCell(0, 1);
    clickCell(2, 2);
    EXPECT_FLOAT_EQ(selectedPlate()->MatrixElement(0, 1), 1.23456f)
        << "the cell's rounded text was not written back";
}

class ServiceLayout : public MainWindowFixture {
protected:
    void SetUp() override {
        start();
        QTest::mouseClick(window->centralWidget(), Qt::MiddleButton,
                          Qt::ShiftModifier | Qt::ControlModifier, QPoint(2, 2));
        ASSERT_TRUE(window->servicePanels());
    }
    QPushButton* button(const char* name) const {
        return control<QPushButton>(QLatin1String(name));
    }
};

TEST_F(ServiceLayout, EmptyCountersAndDateAreFilledWhenSet) {
    const QDate today = QDate::currentDate();
    box(QStringLiteral("txtAppCounter0"))->setText(QStringLiteral("17"));
    box(QStringLiteral("txtAppCounter2"))->setText(QStringLiteral("  "));
    box(QStringLiteral("txtAppLastDate"))->clear();
    button("cmdSetCounters")->click();
    SimPlate& plate = *selectedPlate();
    EXPECT_EQ(text(QStringLiteral("txtAppCounter2")), QStringLiteral("0"));
    EXPECT_FLOAT_EQ(plate.MatrixElement(3, 2), 0.0f);
    EXPECT_FLOAT_EQ(plate.MatrixElement(3, 0), 17.0f);
    EXPECT_EQ(text(QStringLiteral("txtAppLastDate")), formatShortDate(today));
    EXPECT_FLOAT_EQ(plate.MatrixElement(0, 3),
                    static_cast<float>(QDate(1899, 12, 30).daysTo(today)));

    // The next selection shows what the plate holds.
    select(Fw2Plate);
    EXPECT_EQ(text(QStringLiteral("txtAppCounter0")), QStringLiteral("17"));
    EXPECT_EQ(text(QStringLiteral("txtAppLastDate")), formatShortDate(today));
}

TEST_F(ServiceLayout, DateOfTheCountersIsShownAndWritten) {
    box(QStringLiteral("txtAppLastDate"))->setText(formatShortDate(QDate(2024, 2, 29)));
    button("cmdSetCounters")->click();
    EXPECT_FLOAT_EQ(selectedPlate()->MatrixElement(0, 3), 45351.0f);
    box(QStringLiteral("txtAppLastDate"))->setText(QStringLiteral("not a date"));
    button("cmdSetCounters")->click();
    EXPECT_FLOAT_EQ(selectedPlate()->MatrixElement(0, 3), 45351.0f);
    EXPECT_EQ(text(QStringLiteral("txtAppLastDate")), formatShortDate(QDate(2024, 2, 29)));
}

TEST_F(ServiceLayout, SwitchClickWritesAtOnce) {
    for (const char* name : {"chkPolled", "chkADSleep", "chkBkgCal", "chkPowerON"}) {
        auto* box = control<QCheckBox>(QLatin1String(name));
        const bool before = box->isChecked();
        box->click();
        SimPlate& plate = *selectedPlate();
        const bool stored =
            QLatin1String(name) == QLatin1String("chkPolled")    ? plate.Polled(0)
            : QLatin1String(name) == QLatin1String("chkADSleep") ? plate.ConverterSleep(0)
            : QLatin1String(name) == QLatin1String("chkBkgCal")  ? plate.BackgroundCalibration()
                                                                 : plate.PowerOn(0);
        EXPECT_EQ(stored, !before) << name;
    }
}

TEST_F(ServiceLayout, ConverterCommandsReachThePlate) {
    const std::pair<const char*, const char*> commands[] = {
        {"cmdCalSelf", "CalibrateSelf"},
        {"cmdCalOffset", "CalibrateOffset"},
        {"cmdCalFullScale", "CalibrateFullScale"},
        {"cmdPseudo", "CalibratePseudo"}};
    for (const auto& [name, operation] : commands) {
        selectedPlate()->failures().failEveryCall(QLatin1String(operation),
                                                  QLatin1String(operation));
        button(name)->click();
    }
    EXPECT_EQ(
        prompt.messages,
        (QStringList{QStringLiteral("CalibrateSelf"), QStringLiteral("CalibrateOffset"),
                     QStringLiteral("CalibrateFullScale"), QStringLiteral("CalibratePseudo")}));
}

TEST_F(ServiceLayout, AFailedSwitchWriteLeavesTheBoxAsThePlateIs) {
    auto* polled = control<QCheckBox>(QStringLiteral("chkPolled"));
    const bool before = polled->isChecked();
    selectedPlate()->failures().failNextCall(QStringLiteral("Polled refused"));
    polled->click();
    EXPECT_EQ(prompt.messages, QStringList{QStringLiteral("Polled refused")});
    EXPECT_EQ(polled->isChecked(), before);
}

TEST_F(MainWindowPanels, AFailedPlateCallIsReportedAndTheWindowStaysUsable) {
    start();
    selectedPlate()->failures().failNextCall(QStringLiteral("Write to plate failed"));
    type(QStringLiteral("txtSampFreqCurr"), QStringLiteral("200"));
    EXPECT_EQ(prompt.messages, QStringList{QStringLiteral("Write to plate failed")});
    EXPECT_TRUE(window->isEnabled());
    type(QStringLiteral("txtSampFreqCurr"), QStringLiteral("200"));
    EXPECT_EQ(text(QStringLiteral("txtSampFreqCurr")), QStringLiteral("200.000"));
    EXPECT_EQ(prompt.messages.size(), 1);
}

TEST_F(MainWindowPanels, AFailingSelectionIsReported) {
    start();
    plate(Fw1Plate)->failures().failEveryCall(QStringLiteral("ZeroValue"),
                                              QStringLiteral("No zero"));
    select(Fw1Plate);
    EXPECT_EQ(prompt.messages, QStringList{QStringLiteral("No zero")});
    select(Fw2Plate);
    EXPECT_EQ(text(QStringLiteral("txtSerialNumber")), Fw2Plate);
}

TEST_F(MainWindowPanels, LeavingTheSerialNumberUnchangedDoesNotEnumerate) {
    start();
    const int beeps = prompt.beeps;
    type(QStringLiteral("txtSerialNumber"), Fw2Plate);
    clock.settle();
    EXPECT_EQ(prompt.beeps, beeps);
    EXPECT_EQ(window->selectedDevice(), plate(Fw2Plate));
}

TEST_F(MainWindowPanels, ANewSerialNumberIsTakenUpByTheDriver) {
    start();
    type(QStringLiteral("txtSerialNumber"), QStringLiteral("  30001 "));
    clock.settle();
    EXPECT_EQ(entries(), (QStringList{QStringLiteral("30001"), Fw1Plate}));
    EXPECT_EQ(text(QStringLiteral("txtSerialNumber")), QStringLiteral("30001"));
    EXPECT_EQ(window->selectedDevice(), sim->Item(QStringLiteral("30001")));
}

} // namespace
} // namespace kx::test
