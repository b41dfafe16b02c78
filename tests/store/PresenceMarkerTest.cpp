#include "store/PresenceMarker.h"

#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace vellumor::presenceMarkerTest {

namespace {

const std::string whole = R"({"schemaVersion":1,"source":"sibling","version":"2.1.0",)"
                          R"("firstSeenAt":"2026-01-02T03:04:05.678Z",)"
                          R"("updatedAt":"2026-03-01T09:30:00.125Z"})";

} // namespace

TEST(PresenceMarker, theMarksLieInAFolderOfTheirOwn)
{
    EXPECT_EQ(PresenceMarker::directory("/data/Quorle"), "/data/Quorle/presence");
}

TEST(PresenceMarker, allFourTextsAreReadAsTheyStand)
{
    const test::TempFolder base;
    base.put("presence/sibling.json", whole);
    const auto presence = PresenceMarker::read("sibling", base.path());
    ASSERT_TRUE(presence);
    EXPECT_EQ(*presence, (PresenceMarker::Presence{"sibling", "2.1.0", "2026-01-02T03:04:05.678Z",
                                                   "2026-03-01T09:30:00.125Z"}));
}

TEST(PresenceMarker, aMarkLacksNothingWhenAllFourAreTexts)
{
    struct Row {
        const char* bytes;
        bool isRead;
    };
    const Row rows[] = {
        {R"({"source":"s","version":"","firstSeenAt":"","updatedAt":""})", true},
        {R"({"source":"other","version":"1","firstSeenAt":"x","updatedAt":"y","n":1})", true},
        {R"({"version":"1","firstSeenAt":"x","updatedAt":"y"})", false},
        {R"({"source":"s","firstSeenAt":"x","updatedAt":"y"})", false},
        {R"({"source":"s","version":"1","updatedAt":"y"})", false},
        {R"({"source":"s","version":"1","firstSeenAt":"x"})", false},
        {R"({"source":"s","version":1,"firstSeenAt":"x","updatedAt":"y"})", false},
        {R"({"source":"s","version":"1","firstSeenAt":null,"updatedAt":"y"})", false},
        {R"({"source":"s","version":"1","firstSeenAt":"x","updatedAt":17})", false},
        {"{}", false},
        {"[]", false},
        {"", false},
    };
    for (const auto& [bytes, isRead] : rows) {
        SCOPED_TRACE(bytes);
        const test::TempFolder base;
        base.put("presence/s.json", bytes);
        EXPECT_EQ(PresenceMarker::read("s", base.path()).has_value(), isRead);
    }
}

TEST(PresenceMarker, theSiblingIsInstalledWhenItNamesItselfAndHasBeenSeen)
{
    struct Row {
        const char* bytes;
        bool isInstalled;
    };
    const Row rows[] = {
        {R"({"source":"s","firstSeenAt":"x"})", true},
        {R"({"source":"s","firstSeenAt":"x","version":7})", true},
        {R"({"source":"s","firstSeenAt":""})", false},
        {R"({"source":"s"})", false},
        {R"({"source":"S","firstSeenAt":"x"})", false},
        {R"({"source":"other","firstSeenAt":"x"})", false},
        {R"({"source":1,"firstSeenAt":"x"})", false},
        {R"({"source":"s","firstSeenAt":1})", false},
        {R"({"firstSeenAt":"x"})", false},
        {"[]", false},
        {"{", false},
    };
    for (const auto& [bytes, isInstalled] : rows) {
        SCOPED_TRACE(bytes);
        const test::TempFolder base;
        base.put("presence/s.json", bytes);
        EXPECT_EQ(PresenceMarker::siblingInstalled("s", base.path()), isInstalled);
    }
}

TEST(PresenceMarker, readingWhereNothingIsMakesNothing)
{
    const test::TempFolder base;
    EXPECT_EQ(PresenceMarker::read("sibling", base.path()), std::nullopt);
    EXPECT_FALSE(PresenceMarker::siblingInstalled("sibling", base.path()));
    EXPECT_TRUE(test::namesIn(base.path()).empty());
}

TEST(PresenceMarker, aFolderInPlaceOfTheMarkIsNobody)
{
    const test::TempFolder base;
    base.makeFolder("presence/sibling.json");
    EXPECT_EQ(PresenceMarker::read("sibling", base.path()), std::nullopt);
    EXPECT_FALSE(PresenceMarker::siblingInstalled("sibling", base.path()));
}

} // namespace vellumor::presenceMarkerTest
