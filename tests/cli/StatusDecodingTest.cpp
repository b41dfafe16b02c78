#include "cli/StatusDecoding.h"

#include "platform/linux/GioCall.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace vellumor::statusDecodingTest {
namespace {

using Variant = std::unique_ptr<GVariant, Releases<g_variant_unref>>;

std::optional<StatusReport> decoded(const std::string& text)
{
    GError* error = nullptr;
    const Variant answer(g_variant_parse(nullptr, text.c_str(), nullptr, nullptr, &error));
    if (error != nullptr)
        throw std::runtime_error(error->message);
    return StatusDecoding::report(answer.get());
}

TEST(StatusDecoding, everythingThatTheBusCarriesIsRead)
{
    const auto report = decoded(
        "({'Version': <uint32 1>, 'LastUpdate': <int64 1774785600000000>, 'Accounts': <[{"
        "'id': <'a1'>, 'name': <'Work'>, 'state': <'ok'>, 'credits': <'c'>,"
        "'creditsExhausted': <true>, 'forecast': <'f'>, 'updatedAt': <int64 1000000>,"
        "'notes': <['n', 'm']>, 'windows': <[{'kind': <'session'>, 'title': <'Session'>,"
        "'percent': <62.5>, 'percentText': <'63%'>, 'resetsAt': <int64 2000000>,"
        "'resetText': <'2h'>, 'active': <true>, 'scope': <'Opus'>, 'stale': <true>}]>}]>},)");
    StatusWindow window{"session", "Session", 62.5,   "63%", Instant(std::chrono::seconds(2)),
                        "2h",      true,      "Opus", true};
    const StatusAccount account{
        "a1", "Work", "ok", {window}, "c", true, "f", Instant(std::chrono::seconds(1)), {"n", "m"}};
    ASSERT_TRUE(report);
    EXPECT_EQ(*report, (StatusReport{{account}, Instant(std::chrono::seconds(1774785600))}));
}

TEST(StatusDecoding, whatIsMissingOrOfAnotherTypeCountsAsEmpty)
{
    const auto report =
        decoded("({'LastUpdate': <'soon'>, 'Accounts': <[{'id': <5>, 'notes': <'n'>, 'windows': "
                "<[{'percent': <'many'>, 'resetsAt': <int64 0>}]>, 'more': <true>}]>},)");
    StatusAccount account;
    account.windows.emplace_back();
    ASSERT_TRUE(report);
    EXPECT_EQ(*report, (StatusReport{{account}, std::nullopt}));
}

TEST(StatusDecoding, whatIsNoAnswerOfThisInterfaceIsNone)
{
    for (const char* text : {"({'LastUpdate': <int64 5>},)", "('text',)", "()",
                             "({'Accounts': <['a']>},)", "({'Accounts': <5>},)"})
        EXPECT_FALSE(decoded(text)) << text;
}

TEST(StatusDecoding, anAbsurdMomentStaysWithinTheCalendar)
{
    const auto report =
        decoded("({'LastUpdate': <int64 9223372036854775807>, 'Accounts': <@aa{sv} []>},)");
    ASSERT_TRUE(report);
    EXPECT_EQ(report->updatedAt, instantFromSeconds(1e18));
}

} // namespace
} // namespace vellumor::statusDecodingTest
