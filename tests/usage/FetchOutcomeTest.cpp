#include "usage/FetchOutcome.h"

#include <gtest/gtest.h>

namespace vellumor::fetchOutcomeTest {
namespace {

TEST(FetchOutcome, eachSourceHasItsOwnWord)
{
    const std::pair<UsageSource, std::string_view> rows[] = {
        {UsageSource::endpoint, "endpoint"},       {UsageSource::cli, "cli"},
        {UsageSource::sharedCache, "sharedCache"}, {UsageSource::vscodeCache, "vscodeCache"},
        {UsageSource::snapshot, "snapshot"},
    };
    for (const auto& [source, word] : rows)
        EXPECT_EQ(name(source), word);
}

TEST(FetchOutcome, saysNothingUntilSomethingWasFoundOut)
{
    const FetchOutcome outcome;
    EXPECT_EQ(outcome.usage, std::nullopt);
    EXPECT_EQ(outcome.source, std::nullopt);
    EXPECT_EQ(outcome.error, std::nullopt);
    EXPECT_FALSE(outcome.isOffline);
    EXPECT_EQ(outcome.backoffUntil, std::nullopt);
    EXPECT_EQ(outcome.revival, std::nullopt);
}

} // namespace
} // namespace vellumor::fetchOutcomeTest
