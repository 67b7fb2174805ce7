#include "PrintQString.h"
#include "SimBench.h"
#include "maintenance/frmEncoder.h"
#include "resources/StringTable.h"

#include <QLabel>
#include <QPushButton>
#include <memory>

namespace kx {
namespace {

constexpr int Period = frmEncoder::PollIntervalMs;

class Encoder : public test::SimBench {
protected:
    void SetUp() override {
        plate = addPlate(QStringLiteral("KX2001"));
        open();
        QObject::connect(plate, &PlateDevice::EncoderIn,
                         [this](qint32 value) { answers << value; });
    }

    frmEncoder& openDialog(PlateDevice* device) {
        dialog = std::make_unique<frmEncoder>(context());
        QObject::connect(dialog.get(), &ToolDialog::unloaded, [this] { ++unloads; });
        dialog->setDevice(device);
        dialog->show();
        return *dialog;
    }

    SimPlate* plate = nullptr;
    QList<qint32> answers;
    std::unique_ptr<frmEncoder> dialog;
    int unloads = 0;
};

TEST_F(Encoder, PollsAndShowsEachAnswerAsAPlainInteger) {
    auto& d = openDialog(plate);
    EXPECT_EQ(d.windowTitle(), "KX Force Platforms Control Panel - Encoder Read");
    EXPECT_EQ(d.Label2->text(), "Encoder value:");
    EXPECT_EQ(d.Label1->text(), QString());

    clock.advance(Period);
    ASSERT_EQ(answers.size(), 1);
    EXPECT_EQ(d.Label1->text(), QString::number(answers.last()));

    // One request per tick; the value moves with the encoder.
    clock.advance(9 * Period);
    ASSERT_EQ(answers.size(), 10);
    EXPECT_NE(answers.first(), answers.last());
    EXPECT_EQ(d.Label1->text(), QString::number(answers.last()));
}

TEST_F(Encoder, WithoutAPlateNothingIsAskedAndTheValueStaysEmpty) {
    auto& d = openDialog(nullptr);
    EXPECT_FALSE(d.Timer1->isEnabled());
    clock.advance(20 * Period);
    EXPECT_TRUE(answers.isEmpty());
    EXPECT_EQ(d.Label1->text(), QString());
    EXPECT_TRUE(prompt.messages.isEmpty());
}

TEST_F(Encoder, UnpluggingWhilePollingShowsOneMessageAndClosesHalfASecondLater) {
    auto& d = openDialog(plate);
    clock.advance(3 * Period);
    driver.unplug(QStringLiteral("KX2001"));
    EXPECT_EQ(prompt.messages, QStringList{strings::text(6920)});
    EXPECT_TRUE(d.isVisible());

    // Polling ticks in the meantime must not ask the unplugged plate and fail again.
    clock.advance(499);
    EXPECT_EQ(unloads, 0);
    clock.advance(1);
    EXPECT_EQ(unloads, 1);
    EXPECT_FALSE(d.isVisible());
    EXPECT_FALSE(d.Timer1->isEnabled());
    EXPECT_EQ(prompt.messages.size(), 1);
}

TEST_F(Encoder, AFailingRequestIsReportedOnceAndPollingStops) {
    auto& d = openDialog(plate);
    plate->failures().failEveryCall(QStringLiteral("RequestEncoder"), QStringLiteral("No answer."));
    clock.advance(10 * Period);
    EXPECT_EQ(prompt.messages, QStringList{QStringLiteral("No answer.")});
    EXPECT_FALSE(d.Timer1->isEnabled());
}

TEST_F(Encoder, ClosingStopsPolling) {
    auto& d = openDialog(plate);
    clock.advance(Period);
    d.cmdOK->click();
    EXPECT_EQ(unloads, 1);
    EXPECT_FALSE(d.Timer1->isEnabled());
    clock.advance(10 * Period);
    EXPECT_EQ(answers.size(), 1);
}

} // namespace
} // namespace kx
