#include "ui/model/AccountNotes.h"

#include "ui/model/Readings.h"

#include <gtest/gtest.h>

namespace vellumor::accountNotesTest {
namespace {

using Kind = UsageFetchError::Kind;

constexpr const char* blocked = "Blocked while updating usage numbers (HTTP 403)";

TEST(RevivalNote, everyStatusHasItsWords)
{
    const std::pair<RevivalStatus, const char*> rows[] = {
        {RevivalStatus::reviving, "Refreshing your sign-in…"},
        {RevivalStatus::succeeded, "Sign-in refreshed"},
        {RevivalStatus::disabled, "Sign-in expired — sign in to this account in Claude Code"},
        {RevivalStatus::retrying, "Couldn’t refresh your sign-in — will retry"},
        {RevivalStatus::needsSignIn, "Sign in to this account in Claude Code"},
        {RevivalStatus::unavailable,
         "Couldn’t find Claude Code on this Mac — set its location in Settings"},
    };
    for (const auto& [revival, text] : rows)
        EXPECT_EQ(RevivalNote::text(revival), text);
}

TEST(StatusNote, theFirstThatFitsIsSaidOfAReading)
{
    const struct {
        std::optional<Kind> kind;
        bool isOffline;
        bool isStale;
        const char* text; // null pointer: nothing
    } rows[] = {
        {Kind::forbidden, false, false, blocked},
        {Kind::forbidden, true, true, blocked},
        {Kind::rateLimited, false, false, "Rate limited — showing last update"},
        {Kind::rateLimited, true, true, "Rate limited — showing last update"},
        {std::nullopt, true, false, "Offline — showing last update"},
        {std::nullopt, true, true, "Offline — showing last update"},
        {Kind::transport, true, true, "Offline — showing last update"},
        {Kind::transport, false, true, "Couldn’t refresh — showing last update"},
        {Kind::http, false, false, "Couldn’t refresh — showing last update"},
        {Kind::decode, false, false, "Couldn’t refresh — showing last update"},
        {Kind::keychain, false, false, "Couldn’t refresh — showing last update"},
        {Kind::noService, false, false, "Couldn’t refresh — showing last update"},
        {Kind::unauthorized, false, false, "Couldn’t refresh — showing last update"},
        {std::nullopt, false, true, "Showing last update"},
        {std::nullopt, false, false, nullptr},
    };
    for (const auto& [kind, isOffline, isStale, text] : rows) {
        SCOPED_TRACE(text == nullptr ? "nothing" : text);
        AccountUsageState state = test::read({});
        state.isOffline = isOffline;
        if (kind)
            state.lastError = test::error(*kind);
        const auto expected = text == nullptr ? std::nullopt : std::optional<std::string>(text);
        EXPECT_EQ(StatusNote::text(state, isStale), expected);
        EXPECT_EQ(StatusNote::reason(state), std::nullopt); // that is for one without a reading
        state.isLoading = true;
        EXPECT_EQ(StatusNote::text(state, isStale), expected);
        state.revival = RevivalStatus::retrying;
        EXPECT_EQ(StatusNote::text(state, isStale), std::nullopt);
        state.revival.reset();
        state.usage.reset();
        EXPECT_EQ(StatusNote::text(state, isStale), std::nullopt);
    }
}

TEST(StatusNote, theReasonStandsForAMissingReading)
{
    const struct {
        std::optional<Kind> kind;
        int status;
        const char* text;
    } rows[] = {
        {Kind::keychain, 0, "Sign in to this account in Claude Code"},
        {Kind::noService, 0, "Sign in to this account in Claude Code"},
        {Kind::forbidden, 0, blocked},
        {Kind::rateLimited, 0, "Rate limited — waiting before the next refresh"},
        {Kind::http, 500, "Couldn’t update usage numbers (HTTP 500)"},
        {Kind::http, 302, "Couldn’t update usage numbers (HTTP 302)"},
        {Kind::decode, 0, "Couldn’t update usage numbers"},
        {Kind::transport, 0, "Couldn’t update usage numbers"},
        {Kind::unauthorized, 0, "Couldn’t update usage numbers"},
        {std::nullopt, 0, nullptr},
    };
    for (const auto& [kind, status, text] : rows) {
        SCOPED_TRACE(text == nullptr ? "nothing" : text);
        AccountUsageState state;
        if (kind)
            state.lastError = test::error(*kind, status);
        const auto expected = text == nullptr ? std::nullopt : std::optional<std::string>(text);
        for (const bool isOffline : {false, true}) {
            state.isOffline = isOffline;
            EXPECT_EQ(StatusNote::reason(state), expected);
        }
        EXPECT_EQ(StatusNote::text(state, true), std::nullopt);
    }
}

TEST(StatusNote, theDetailsOfAnErrorAreNotShown)
{
    AccountUsageState state = test::failed(Kind::transport);
    state.lastError->detail = "connection to host.example.org refused";
    EXPECT_EQ(StatusNote::reason(state), "Couldn’t update usage numbers");
}

} // namespace
} // namespace vellumor::accountNotesTest
