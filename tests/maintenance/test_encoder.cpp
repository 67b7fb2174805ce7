#include "DialogFixture.h"
#include "PrintQString.h"
#include "maintenance/frmEncoder.h"
#include "resources/StringTable.h"

#include <QLabel>
#include <QPushButton>

namespace kx {
namespace {

constexpr int Period = frmEncoder::PollIntervalMs;

class Encoder : public test::DialogFixture<frmEncoder> {
protected:
    void SetUp() override {
        plate = addPlate(QStringLiteral("KX2001"));
        openPlates();
        QObject::connect(plate, &PlateDevice::EncoderIn, [this](qint32 v) { answers << v; });
    }
    SimPlate* plate = nullptr;
    QList<qint32> answers;
};

TEST_F(Encoder, PollsShowsEachAnswerAsAPlainIntegerAndStopsWhenClosed) {
    auto& d = openDialog(plate);
    EXPECT_EQ(d.windowTitle(), QStringLiteral("KX Force Platforms Control Panel - Encoder Read"));
    EXPECT_EQ(d.Label2->text(), QStringLiteral("Encoder value:"));
    EXPECT_EQ(d.cmdOK->text(), QStringLiteral("&OK"));
    clock.advance(10 * Period);
    ASSERT_EQ(answers.size(), 10) << "one request per tick";
    EXPECT_NE(answers.first(), answers.last());
    EXPECT_EQ(d.Label1->text(), QString::number(answers.last()));
    d.cmdOK->click();
    clock.advance(10 * Period);
    EXPECT_EQ(answers.size(), 10);
}

TEST_F(Encoder, WithoutAPlateNothingIsAsked) {
    const auto& d = openDialog(nullptr);
    EXPECT_FALSE(d.Timer1->isEnabled()) << "the poll timer runs only with a plate";
    clock.advance(20 * Period);
    EXPECT_TRUE(d.Label1->text().isEmpty());
    EXPECT_TRUE(prompt.messages.isEmpty());
}

TEST_F(Encoder, UnpluggingWhilePollingShowsOneMessageAndClosesHalfASecondLater) {
    auto& d = openDialog(plate);
    clock.advance(3 * Period);
    driver.unplug(QStringLiteral("KX2001"));
    EXPECT_EQ(prompt.messages, QStringList{strings::text(6920)});
    // Polling ticks in the meantime must not ask the unplugged plate and fail again.
    clock.advance(499);
    EXPECT_TRUE(d.isVisible());
    clock.advance(1);
    EXPECT_FALSE(d.isVisible());
    EXPECT_EQ(prompt.messages.size(), 1);
}

} // namespace
} // namespace kx
