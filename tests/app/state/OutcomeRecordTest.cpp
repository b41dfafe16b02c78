#include "app/state/OutcomeRecord.h"

#include "support/RecordingTelemetry.h"

#include <gtest/gtest.h>

namespace vellumor::outcomeRecordTest {
namespace {

using Steps = std::vector<std::string>;
using Kind = UsageFetchError::Kind;

Steps recorded(const FetchOutcome& outcome)
{
    Steps steps;
    test::RecordingTelemetry telemetry(steps);
    recordOutcome(telemetry, outcome);
    return steps;
}

FetchOutcome read(UsageSource source)
{
    FetchOutcome outcome;
    outcome.usage = Usage();
    outcome.source = source;
    return outcome;
}

FetchOutcome failed(Kind kind)
{
    FetchOutcome outcome;
    outcome.error.emplace().kind = kind;
    return outcome;
}

TEST(OutcomeRecord, aReadingCountsForTheLayerThatItCameFrom)
{
    const std::pair<UsageSource, const char*> rows[] = {{UsageSource::endpoint, "endpoint"},
                                                        {UsageSource::cli, "cli"},
                                                        {UsageSource::sharedCache, "sharedCache"},
                                                        {UsageSource::vscodeCache, "vscodeCache"},
                                                        {UsageSource::snapshot, "snapshot"}};
    for (const auto& [source, layer] : rows)
        EXPECT_EQ(recorded(read(source)), Steps{std::string("served ") + layer});
}

TEST(OutcomeRecord, aFailureHasItsCategoryAndLayer)
{
    const std::pair<Kind, const char*> rows[] = {{Kind::keychain, "keychain_read_fail in keychain"},
                                                 {Kind::noService, "no_service in keychain"},
                                                 {Kind::rateLimited, "usage_429 in endpoint"},
                                                 {Kind::http, "usage_http_error in endpoint"},
                                                 {Kind::decode, "parse_fail in endpoint"},
                                                 {Kind::transport, "transport_fail in endpoint"},
                                                 {Kind::unauthorized, "usage_401 in endpoint"},
                                                 {Kind::forbidden, "usage_403 in endpoint"}};
    for (const auto& [kind, words] : rows)
        EXPECT_EQ(recorded(failed(kind)), Steps{std::string("failed ") + words});
}

TEST(OutcomeRecord, anOldReadingBesideAFailureIsNotServed)
{
    FetchOutcome outcome = read(UsageSource::snapshot);
    outcome.error.emplace().kind = Kind::transport;
    EXPECT_EQ(recorded(outcome), Steps{"failed transport_fail in endpoint"});
}

TEST(OutcomeRecord, aMissingProgramIsCountedWhateverElseCame)
{
    FetchOutcome outcome = read(UsageSource::sharedCache);
    outcome.revival = RevivalStatus::unavailable;
    EXPECT_EQ(recorded(outcome), (Steps{"revive unavailable", "served sharedCache"}));
    outcome.revival = RevivalStatus::retrying;
    EXPECT_EQ(recorded(outcome), Steps{"served sharedCache"});
}

TEST(OutcomeRecord, nothingComesOfNothing)
{
    EXPECT_EQ(recorded(FetchOutcome()), Steps{});
}

} // namespace
} // namespace vellumor::outcomeRecordTest
