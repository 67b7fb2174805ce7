#include "DialogFixture.h"
#include "PrintQString.h"
#include "maintenance/frmProgramID.h"
#include "resources/StringTable.h"

#include <QLineEdit>
#include <QPushButton>

namespace kx {
namespace {

class ProgramID : public test::DialogFixture<frmProgramID> {
protected:
    void SetUp() override {
        plate2 = addPlate(QStringLiteral("KX2001"), 2);
        plate1 = addPlate(QStringLiteral("KX1001"), 1);
        openPlates();
    }
    static QStringList texts(const frmProgramID& d) {
        QStringList result;
        for (const QLineEdit* box : {d.txtEEPROM, d.txtVID[0], d.txtVID[1], d.txtPID[0],
                                     d.txtPID[1], d.txtDID[0], d.txtDID[1]})
            result << box->text();
        return result;
    }

    SimPlate* plate2 = nullptr;
    SimPlate* plate1 = nullptr;
};

TEST_F(ProgramID, GetShowsTheBytesAndSetWritesThemInRecordOrderOrNothingUntilUnplugged) {
    plate2->SetUsbIdentity({0x00, 0x0B, 0xB0, 0xFF, 0x10, 0x05, 0xAB});
    auto& d = openDialog(plate2);
    EXPECT_EQ(d.cmdGet->text(), QStringLiteral("&Get"));
    EXPECT_EQ(d.cmdSet->text(), QStringLiteral("&Set"));
    d.cmdGet->click();
    EXPECT_EQ(texts(d), (QStringList{"00", "0B", "B0", "FF", "10", "05", "AB"}));
    test::retype(d.txtDID[1], QStringLiteral("7"));
    d.cmdSet->click();
    const UsbIdentity written{0x00, 0x0B, 0xB0, 0xFF, 0x10, 0x05, 0x07};
    EXPECT_EQ(plate2->GetUsbIdentity(), written);
    EXPECT_TRUE(prompt.messages.isEmpty());

    // A value above FF is refused, and not even the valid box before it reaches the plate.
    test::retype(d.txtPID[0], QStringLiteral("AA"));
    test::retype(d.txtDID[1], QStringLiteral("100"));
    d.cmdSet->click();
    EXPECT_EQ(plate2->GetUsbIdentity(), written);
    ASSERT_EQ(prompt.messages.size(), 1);
    EXPECT_TRUE(prompt.messages[0].contains(QStringLiteral("Device ID, second byte")));
    EXPECT_EQ(d.txtDID[1]->selectedText(), "100");

    // Unplugged, the dialog closes at once after the message.
    driver.unplug(QStringLiteral("KX2001"));
    EXPECT_EQ(prompt.messages.mid(1), QStringList{strings::text(5920)});
    EXPECT_EQ(unloads, 1);
}

TEST_F(ProgramID, PresetsFollowTheFirmwareAndWriteNothing) {
    struct Case {
        SimPlate* plate;
        bool forcePlatform;
        QStringList expected;
    };
    for (const Case& c : {Case{plate1, true, {"B0", "02", "0D", "01", "03", "01", "00"}},
                          Case{plate2, true, {"B0", "02", "0D", "02", "03", "01", "00"}},
                          Case{plate1, false, {"B0", "02", "0D", "01", "04", "01", "00"}},
                          Case{plate2, false, {"B0", "02", "0D", "01", "04", "01", "00"}}}) {
        c.plate->SetUsbIdentity({1, 2, 3, 4, 5, 6, 7});
        auto& d = openDialog(c.plate);
        (c.forcePlatform ? d.cmdFPDefaults : d.cmdBPDefaults)->click();
        EXPECT_EQ(texts(d), c.expected) << c.plate->SerialNumber().toStdString();
        EXPECT_EQ(c.plate->GetUsbIdentity(), (UsbIdentity{1, 2, 3, 4, 5, 6, 7}));
    }
}

TEST_F(ProgramID, WithoutAPlateOnlyTheSecondPresetDoesAnything) {
    auto& d = openDialog(nullptr);
    d.cmdGet->click();
    d.cmdFPDefaults->click();
    test::retype(d.txtEEPROM, QStringLiteral("100"));
    d.cmdSet->click();
    EXPECT_TRUE(prompt.messages.isEmpty());
    d.cmdBPDefaults->click();
    EXPECT_EQ(texts(d), (QStringList{"B0", "02", "0D", "01", "04", "01", "00"}));
}

} // namespace
} // namespace kx
