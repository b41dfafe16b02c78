#include "store/PresenceMarker.h"

#include "base/Json.h"
#include "support/FakeClock.h"
#include "support/FileState.h"
#include "support/HostileFiles.h"

#include <gtest/gtest.h>

namespace vellumor::presenceMarkerWriteTest {

using test::instant;

namespace {

const Instant first = instant("2026-03-01T09:30:00.125Z");
const Instant sameDay = instant("2026-03-01T23:59:59.999Z");
const Instant nextDay = instant("2026-03-02T00:00:00Z");

struct PresenceMarkerWriteTest : testing::Test {
    test::TempFolder folder;
    FileStore files;
    std::string base = folder.file("Quorle");
    std::string path = base + "/presence/vellumor.json";

    bool write(Instant now, const std::string& version = "1.0.0") const
    {
        return PresenceMarker::writeOwn(files, version, now, base);
    }
    void put(const std::string& bytes) const { folder.put("Quorle/presence/vellumor.json", bytes); }
    [[nodiscard]] Json found() const { return Json::parse(test::contentsOf(path)); }
};

} // namespace

TEST_F(PresenceMarkerWriteTest, theFirstMarkIsTheseFiveKeys)
{
    EXPECT_TRUE(write(first));
    EXPECT_EQ(test::contentsOf(path), R"({
  "firstSeenAt": "2026-03-01T09:30:00.125Z",
  "schemaVersion": 1,
  "source": "vellumor",
  "updatedAt": "2026-03-01T09:30:00.125Z",
  "version": "1.0.0"
})");
    EXPECT_EQ(test::modeOf(base + "/presence"), 0700U);
    EXPECT_EQ(test::modeOf(path), 0600U);
    EXPECT_EQ(test::namesIn(base + "/presence"), std::vector<std::string>{"vellumor.json"});
}

TEST_F(PresenceMarkerWriteTest, whatIsWrittenIsRead)
{
    EXPECT_TRUE(write(first, "1.2/\"3\""));
    EXPECT_EQ(PresenceMarker::read("vellumor", base),
              (PresenceMarker::Presence{"vellumor", "1.2/\"3\"", "2026-03-01T09:30:00.125Z",
                                        "2026-03-01T09:30:00.125Z"}));
    EXPECT_TRUE(PresenceMarker::siblingInstalled("vellumor", base));
}

TEST_F(PresenceMarkerWriteTest, twoCallsOnOneDayWriteOnce)
{
    ASSERT_TRUE(write(first));
    const test::FileState before = test::stateOf(path);
    EXPECT_TRUE(write(first));
    EXPECT_TRUE(write(sameDay, "2.0.0"));
    EXPECT_TRUE(write(instant("2026-03-01T00:00:00Z")));
    EXPECT_EQ(test::stateOf(path), before);
}

TEST_F(PresenceMarkerWriteTest, onTheNextDayTheMarkMovesAndTheFirstSightStays)
{
    ASSERT_TRUE(write(first));
    ASSERT_TRUE(write(sameDay));
    EXPECT_TRUE(write(nextDay, "1.0.1"));
    EXPECT_EQ(PresenceMarker::read("vellumor", base),
              (PresenceMarker::Presence{"vellumor", "1.0.1", "2026-03-01T09:30:00.125Z",
                                        "2026-03-02T00:00:00.000Z"}));
}

// The tests' zone is five and a half hours ahead, where the day begins at 18:30 in UTC.
TEST_F(PresenceMarkerWriteTest, theDayIsThatOfUtc)
{
    ASSERT_TRUE(write(instant("2026-03-01T18:29:00Z")));
    const test::FileState before = test::stateOf(path);
    EXPECT_TRUE(write(instant("2026-03-01T18:31:00Z")));
    EXPECT_EQ(test::stateOf(path), before);
    EXPECT_TRUE(write(nextDay));
    EXPECT_NE(test::stateOf(path), before);
}

TEST_F(PresenceMarkerWriteTest, aDayThatWentBackIsAnotherDay)
{
    ASSERT_TRUE(write(nextDay));
    EXPECT_TRUE(write(first));
    EXPECT_EQ(found()["updatedAt"], "2026-03-01T09:30:00.125Z");
    EXPECT_EQ(found()["firstSeenAt"], "2026-03-02T00:00:00.000Z");
}

TEST_F(PresenceMarkerWriteTest, onlyTheDayOfTheLastMarkDecides)
{
    struct Row {
        const char* updatedAt;
        bool isToday;
    };
    const Row rows[] = {
        {R"("2026-03-01")", true},
        {R"("2026-03-01 or so")", true},
        {R"("2026-03-0")", false},
        {R"("2026-03-010")", true},
        {R"("2025-03-01T09:30:00.125Z")", false},
        {R"(" 2026-03-01")", false},
        {R"("")", false},
        {"20260301", false},
        {"null", false},
        {R"(["2026-03-01"])", false},
    };
    for (const auto& [updatedAt, isToday] : rows) {
        SCOPED_TRACE(updatedAt);
        put(std::string(R"({"firstSeenAt":"long ago","updatedAt":)") + updatedAt + "}");
        const test::FileState before = test::stateOf(path);
        EXPECT_TRUE(write(first));
        EXPECT_EQ(test::stateOf(path) == before, isToday);
        EXPECT_EQ(found()["firstSeenAt"], "long ago");
        EXPECT_EQ(found().contains("version"), !isToday);
    }
}

TEST_F(PresenceMarkerWriteTest, aFirstSightThatIsNoneIsToday)
{
    for (const char* firstSeenAt : {R"("")", "null", "1", "true", "[]", "{}"}) {
        SCOPED_TRACE(firstSeenAt);
        put(std::string(R"({"firstSeenAt":)") + firstSeenAt + "}");
        EXPECT_TRUE(write(first));
        EXPECT_EQ(found()["firstSeenAt"], "2026-03-01T09:30:00.125Z");
    }
}

TEST_F(PresenceMarkerWriteTest, whatOthersHaveAddedStays)
{
    put(R"({"schemaVersion":0,"source":"x","version":7,"updatedAt":"2026-02-28T00:00:00.000Z",
        "firstSeenAt":"2026-01-01T00:00:00.000Z",
        "most":18446744073709551615,"least":-9223372036854775808,"tenth":0.1,"tiny":5e-324,
        "nested":{"a":[1,{"b":null}],"/":"\u00E9"},"none":null,"yes":true})");
    Json expected = found();
    expected["schemaVersion"] = 1;
    expected["source"] = "vellumor";
    expected["version"] = "1.0.0";
    expected["updatedAt"] = "2026-03-01T09:30:00.125Z";
    EXPECT_TRUE(write(first));
    EXPECT_EQ(found(), expected);
    const std::string bytes = test::contentsOf(path);
    for (const char* number : {"18446744073709551615", "-9223372036854775808", "0.1,", "e-324"})
        EXPECT_NE(bytes.find(number), std::string::npos) << number << " in " << bytes;
}

TEST_F(PresenceMarkerWriteTest, aMarkOfANewerVersionIsLeftAloneAndThatIsNoFailure)
{
    for (const char* version : {"2", "1.5", "99", "1e300"}) {
        SCOPED_TRACE(version);
        put(std::string(R"({"schemaVersion":)") + version + "}");
        const test::FileState before = test::stateOf(path);
        testing::internal::CaptureStderr();
        EXPECT_TRUE(write(first));
        EXPECT_NE(testing::internal::GetCapturedStderr().find("not writing"), std::string::npos);
        EXPECT_EQ(test::stateOf(path), before);
    }
}

TEST_F(PresenceMarkerWriteTest, anOlderMarkBecomesOneOfThisVersion)
{
    for (const char* version : {"1", "0", "-5", "null", R"("2")", "[]"}) {
        SCOPED_TRACE(version);
        put(std::string(R"({"schemaVersion":)") + version + "}");
        EXPECT_TRUE(write(first));
        EXPECT_EQ(found()["schemaVersion"], 1);
        EXPECT_EQ(found()["source"], "vellumor");
    }
}

TEST_F(PresenceMarkerWriteTest, aBrokenMarkIsReplacedByANewOne)
{
    const std::string valid =
        R"({"updatedAt":"2026-03-01T00:00:00.000Z","firstSeenAt":"x","source":"vellumor"})";
    for (const auto& [what, bytes] : test::hostileTexts(valid)) {
        SCOPED_TRACE(what);
        put(bytes);
        EXPECT_TRUE(write(first));
        EXPECT_EQ(found()["firstSeenAt"], "2026-03-01T09:30:00.125Z");
    }
}

TEST_F(PresenceMarkerWriteTest, aMarkThatCannotBeWrittenIsAFailureAndTheOldOneStays)
{
    ASSERT_TRUE(write(first));
    test::expectTheOldFileStays(path, [&](const FileStore& failing) {
        EXPECT_FALSE(PresenceMarker::writeOwn(failing, "1.0.1", nextDay, base));
    });
    EXPECT_FALSE(write(nextDay, "\xFF"));
    EXPECT_EQ(found()["version"], "1.0.0");
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    EXPECT_FALSE(write(first));
}

} // namespace vellumor::presenceMarkerWriteTest
