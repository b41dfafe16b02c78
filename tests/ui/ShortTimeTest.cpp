#include "ui/ShortTime.h"

#include "support/FakeClock.h"
#include "support/ScopedZone.h"

#include <QTime>

#include <gtest/gtest.h>

namespace vellumor::shortTimeTest {
namespace {

using test::instant;

TEST(ShortTime, itIsWrittenAsTheLocaleWritesIt)
{
    const test::ScopedZone utc("UTC");
    const struct {
        const char* moment;
        const char* english;
        const char* german;
        const char* c;
    } rows[] = {
        {"2026-03-29T15:05:59Z", "3:05 PM", "15:05", "15:05"},
        {"2026-03-29T00:00:00Z", "12:00 AM", "00:00", "00:00"},
        {"2026-03-29T09:07:00Z", "9:07 AM", "09:07", "09:07"},
        {"2026-03-29T12:30:00Z", "12:30 PM", "12:30", "12:30"},
    };
    for (const auto& [moment, english, german, c] : rows) {
        const auto in = [moment = moment](const QLocale& locale) {
            return QString::fromStdString(shortTimeText(instant(moment), locale))
                .replace(QChar(0x202f), ' ') // which some data have before the marker
                .toStdString();
        };
        EXPECT_EQ(in(QLocale(QLocale::English, QLocale::UnitedStates)), english);
        EXPECT_EQ(in(QLocale(QLocale::German, QLocale::Germany)), german);
        EXPECT_EQ(in(QLocale::c()), c);
    }
}

TEST(ShortTime, itIsThatOfTheUsersZone)
{
    const Instant moment = instant("2026-03-29T15:05:00Z");
    const test::ScopedZone kolkata("Asia/Kolkata");
    EXPECT_EQ(shortTimeText(moment, QLocale::c()), "20:35");
    const test::ScopedZone newYork("America/New_York");
    EXPECT_EQ(shortTimeText(moment, QLocale::c()), "11:05");
}

TEST(ShortTime, noLocaleWritesSeconds)
{
    const test::ScopedZone utc("UTC");
    const Instant moment = instant("2026-03-29T15:05:00Z");
    int withSeconds = 0;
    for (const QLocale& locale : QLocale::matchingLocales(QLocale::AnyLanguage, QLocale::AnyScript,
                                                          QLocale::AnyTerritory)) {
        const QString format = locale.timeFormat(QLocale::ShortFormat);
        withSeconds += format.contains('s') ? 1 : 0;
        const QString text = QString::fromStdString(shortTimeText(moment, locale));
        EXPECT_FALSE(text.contains(locale.toString(0).repeated(2))) << locale.name().toStdString();
        EXPECT_EQ(text, text.trimmed());
        EXPECT_GE(text.size(), 4) << locale.name().toStdString();
    }
    EXPECT_GT(withSeconds, 0);
}

// What the reading of a format must not break.
TEST(ShortTime, theRestOfALocalesFormatStays)
{
    const test::ScopedZone utc("UTC");
    const Instant moment = instant("2026-03-29T15:05:00Z");
    for (const QLocale& locale : QLocale::matchingLocales(QLocale::AnyLanguage, QLocale::AnyScript,
                                                          QLocale::AnyTerritory)) {
        const QString format = locale.timeFormat(QLocale::ShortFormat);
        if (format.contains('s') || locale.language() == QLocale::C)
            continue;
        EXPECT_EQ(shortTimeText(moment, locale),
                  locale.toString(QTime(15, 5), QLocale::ShortFormat).trimmed().toStdString())
            << locale.name().toStdString() << " " << format.toStdString();
    }
}

} // namespace
} // namespace vellumor::shortTimeTest
