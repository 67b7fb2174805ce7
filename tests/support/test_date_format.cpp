#include "PrintQString.h"
#include "support/DateFormat.h"

#include <QLocale>
#include <gtest/gtest.h>

namespace {

class DateFormat : public testing::Test {
protected:
    void use(QLocale::Language language, QLocale::Territory territory) {
        QLocale::setDefault(QLocale(language, territory));
    }
    void TearDown() override { QLocale::setDefault(m_saved); }

private:
    QLocale m_saved;
};

TEST_F(DateFormat, UnitedStatesForms) {
    use(QLocale::English, QLocale::UnitedStates);
    EXPECT_EQ(kx::formatShortDate(QDate(2024, 1, 31)), "1/31/2024");
    EXPECT_EQ(kx::formatLongDate(QDate(2024, 1, 31)), "Wednesday, January 31, 2024");
    EXPECT_EQ(kx::formatLongTime(QTime(15, 4, 5)), "3:04:05 PM");
}

TEST_F(DateFormat, GermanForms) {
    use(QLocale::German, QLocale::Germany);
    EXPECT_EQ(kx::formatShortDate(QDate(2024, 1, 31)), "31.01.2024");
    EXPECT_EQ(kx::formatLongTime(QTime(15, 4, 5)), "15:04:05");
}

TEST_F(DateFormat, ShortDatesReadBackWithTheirCentury) {
    use(QLocale::English, QLocale::UnitedStates);
    for (const QDate date : {QDate(1999, 12, 31), QDate(2024, 2, 29), QDate(2031, 7, 4)})
        EXPECT_EQ(kx::parseShortDate(kx::formatShortDate(date)), date);
    EXPECT_EQ(kx::parseShortDate(" 3/9/2025 "), QDate(2025, 3, 9));
    EXPECT_FALSE(kx::parseShortDate("not a date").isValid());
    EXPECT_FALSE(kx::parseShortDate("").isValid());
}

} // namespace
