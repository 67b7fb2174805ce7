#include "PrintQString.h"
#include "SimBench.h"
#include "maintenance/frmProgramID.h"
#include "resources/StringTable.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <memory>

namespace kx {
namespace {

class ProgramID : public test::SimBench {
protected:
    void SetUp() override {
        plate2 = addPlate(QStringLiteral("KX2001"), 2);
        plate1 = addPlate(QStringLiteral("KX1001"), 1);
        open();
    }

    frmProgramID& openDialog(PlateDevice* device) {
        dialog = std::make_unique<frmProgramID>(context());
        QObject::connect(dialog.get(), &ToolDialog::unloaded, [this] { ++unloads; });
        dialog->setDevice(device);
        dialog->show();
        return *dialog;
    }

    static QList<QLineEdit*> boxes(const frmProgramID& d) {
        return {d.txtEEPROM, d.txtVID[0], d.txtVID[1], d.txtPID[0],
                d.txtPID[1], d.txtDID[0], d.txtDID[1]};
    }
    static QStringList texts(const frmProgramID& d) {
        QStringList result;
        for (const QLineEdit* box : boxes(d))
            result << box->text();
        return result;
    }
    // What a user types over a box's text.
    static void retype(QLineEdit* box, const QString& keys) {
        box->setFocus();
        box->selectAll();
        QTest::keyClicks(box, keys);
    }

    SimPlate* plate2 = nullptr;
    SimPlate* plate1 = nullptr;
    std::unique_ptr<frmProgramID> dialog;
    int unloads = 0;
};

TEST_F(ProgramID, GetShowsEveryByteAsTwoUpperCaseDigits) {
    plate2->SetUsbIdentity({0x00, 0x0B, 0xB0, 0xFF, 0x10, 0x05, 0xAB});
    auto& d = openDialog(plate2);
    EXPECT_EQ(d.windowTitle(), "Program Device VID/PID/DID");
    EXPECT_EQ(texts(d), (QStringList{"", "", "", "", "", "", ""}));
    d.cmdGet->click();
    EXPECT_EQ(texts(d), (QStringList{"00", "0B", "B0", "FF", "10", "05", "AB"}));
}

TEST_F(ProgramID, SetWritesTheBoxesInRecordOrder) {
    auto& d = openDialog(plate2);
    d.cmdGet->click();
    retype(d.txtDID[1], QStringLiteral("FF"));
    retype(d.txtVID[0], QStringLiteral("7"));
    d.cmdSet->click();
    EXPECT_EQ(plate2->GetUsbIdentity(), (UsbIdentity{0xB0, 0x07, 0x0D, 0x02, 0x03, 0x01, 0xFF}));
    EXPECT_TRUE(prompt.messages.isEmpty());
}

TEST_F(ProgramID, AValueAboveFFIsRefusedAndNothingIsWritten) {
    const UsbIdentity before = plate2->GetUsbIdentity();
    auto& d = openDialog(plate2);
    d.cmdGet->click();
    retype(d.txtPID[0], QStringLiteral("AA"));
    retype(d.txtDID[1], QStringLiteral("100"));
    ASSERT_EQ(d.txtDID[1]->text(), "100");
    d.cmdSet->click();

    // Not even the valid boxes before the bad one reach the plate.
    EXPECT_EQ(plate2->GetUsbIdentity(), before);
    ASSERT_EQ(prompt.messages.size(), 1);
    EXPECT_TRUE(prompt.messages[0].contains(QStringLiteral("Device ID, second byte")));
    EXPECT_TRUE(prompt.messages[0].contains(QStringLiteral("100")));
    EXPECT_TRUE(prompt.messages[0].contains(QStringLiteral("FF")));
    EXPECT_EQ(d.txtDID[1]->selectedText(), "100");
    EXPECT_EQ(unloads, 0);
}

TEST_F(ProgramID, AnEmptyBoxIsRefusedToo) {
    const UsbIdentity before = plate2->GetUsbIdentity();
    auto& d = openDialog(plate2);
    d.cmdGet->click();
    d.txtEEPROM->clear();
    d.cmdSet->click();
    EXPECT_EQ(plate2->GetUsbIdentity(), before);
    ASSERT_EQ(prompt.messages.size(), 1);
    EXPECT_TRUE(prompt.messages[0].contains(QStringLiteral("EEPROM Flag")));
}

TEST_F(ProgramID, BoxesTakeOnlyHexadecimalDigitsInUpperCase) {
    auto& d = openDialog(plate2);
    QLineEdit* box = d.txtVID[0];
    retype(box, QStringLiteral("g1 z-x.aH&"));
    EXPECT_EQ(box->text(), "1A");
    QTest::keyClick(box, Qt::Key_Backspace);
    EXPECT_EQ(box->text(), "1");
    QTest::keyClick(box, Qt::Key_Home);
    QTest::keyClick(box, Qt::Key_Delete);
    QTest::keyClicks(box, QStringLiteral("c"));
    EXPECT_EQ(box->text(), "C");
}

struct PresetCase {
    const char* name;
    quint8 firmwareMajor;
    bool forcePlatform;
    QStringList expected;
};

class Presets : public ProgramID, public testing::WithParamInterface<PresetCase> {};

TEST_P(Presets, FillTheBoxesWithoutWriting) {
    const PresetCase& c = GetParam();
    SimPlate* plate = c.firmwareMajor < 2 ? plate1 : plate2;
    plate->SetUsbIdentity({1, 2, 3, 4, 5, 6, 7});
    auto& d = openDialog(plate);
    (c.forcePlatform ? d.cmdFPDefaults : d.cmdBPDefaults)->click();
    EXPECT_EQ(texts(d), c.expected);
    EXPECT_EQ(plate->GetUsbIdentity(), (UsbIdentity{1, 2, 3, 4, 5, 6, 7}));
}

INSTANTIATE_TEST_SUITE_P(
    Firmware, Presets,
    testing::Values(
        PresetCase{"ForcePlatformOnFirmware1", 1, true, {"B0", "02", "0D", "01", "03", "01", "00"}},
        PresetCase{"ForcePlatformOnFirmware2", 2, true, {"B0", "02", "0D", "02", "03", "01", "00"}},
        PresetCase{"SecondTypeOnFirmware1", 1, false, {"B0", "02", "0D", "01", "04", "01", "00"}},
        PresetCase{"SecondTypeOnFirmware2", 2, false, {"B0", "02", "0D", "01", "04", "01", "00"}}),
    [](const testing::TestParamInfo<PresetCase>& param) { return std::string(param.param.name); });

TEST_F(ProgramID, WithoutAPlateOnlyTheSecondPresetDoesAnything) {
    auto& d = openDialog(nullptr);
    d.cmdGet->click();
    d.cmdFPDefaults->click();
    EXPECT_EQ(texts(d), (QStringList{"", "", "", "", "", "", ""}));
    retype(d.txtEEPROM, QStringLiteral("100"));
    d.cmdSet->click();
    EXPECT_TRUE(prompt.messages.isEmpty());
    d.cmdBPDefaults->click();
    EXPECT_EQ(texts(d), (QStringList{"B0", "02", "0D", "01", "04", "01", "00"}));
}

TEST_F(ProgramID, UnpluggingClosesAtOnceAfterTheMessage) {
    openDialog(plate2);
    driver.unplug(QStringLiteral("KX2001"));
    EXPECT_EQ(prompt.messages, QStringList{strings::text(5920)});
    EXPECT_EQ(unloads, 1);
}

} // namespace
} // namespace kx
