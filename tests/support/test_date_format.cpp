#include "PrintQString.h"
#include "support/DateFormat.h"

#include <QLocale>
#include <gtest/gtest.h>

namespace {

struct LocaleGuard {
    explicit LocaleGuard(const QLocale& locale) { QLocale::setDefault(locale); }
    ~LocaleGuard() { QLocale::setDefault(saved); }
    QLocale saved;
};

TEST(DateFormat, FollowsTheUserLocale) {
    {
        LocaleGuard us(QLocale(QLocale::English, QLocale::UnitedStates));
        EXPECT_EQ(kx::formatShortDate(QDate(2024, 1, 31)), "1/31/2024");
        EXPECT_EQ(kx::formatLongDate(QDate(2024, 1, 31)), "Wednesday, January 31, 2024");
        EXPECT_EQ(kx::formatLongTime(QTime(15, 4, 5)), "3:04:05 PM");
    }
    LocaleGuard german(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_EQ(kx::formatShortDate(QDate(2024, 1, 31)), "31.01.2024");
    EXPECT_EQ(kx::formatLongTime(QTime(15, 4, 5)), "15:04:05");
}

TEST(DateFormat, ShortDatesReadBackWithTheirCentury) {
    LocaleGuard us(QLocale(QLocale::English, QLocale::UnitedStates));
    for (const QDate date : {QDate(1999, 12, 31), QDate(2024, 2, 29), QDate(2031, 7, 4)})
        EXPECT_EQ(kx::parseShortDate(kx::formatShortDate(date)), date);
    EXPECT_EQ(kx::parseShortDate(" 3/9/2025 "), QDate(2025, 3, 9));
    EXPECT_FALSE(kx::parseShortDate("not a date").isValid());
}

} // namespace
