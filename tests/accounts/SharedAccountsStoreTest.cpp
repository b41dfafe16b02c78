#include "accounts/SharedAccountsStore.h"

#include "base/Json.h"
#include "support/FailingFileCalls.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace vellumor::sharedAccountsStoreTest {
namespace {

using Outcome = FileStore::UpdateOutcome;

const SharedIdentities mine = {{"/a", {"abc123", "Work", 1, {}}}};

struct SharedAccountsStoreTest : testing::Test {
    test::TempFolder folder;
    FileStore files;
    std::string path = folder.file("Quorle/accounts.json");

    [[nodiscard]] SharedAccountsStore store() const { return {files, path}; }
    void put(const std::string& bytes) const { folder.put("Quorle/accounts.json", bytes); }
    [[nodiscard]] Json json() const { return parseJson(test::contentsOf(path)).value(); }
};

TEST_F(SharedAccountsStoreTest, itsFolderIsMadePrivate)
{
    EXPECT_TRUE(store().load().empty());
    EXPECT_EQ(test::modeOf(folder.file("Quorle")), 0700U);
    EXPECT_EQ(test::namesIn(folder.file("Quorle")), std::vector<std::string>());
}

TEST_F(SharedAccountsStoreTest, whatIsSavedIsLoadedAndReadableByPeople)
{
    const SharedIdentities both = {{"/a", {"abc123", "Work", 1, "Mine"}},
                                   {"/\u00E9", {"def456", " \"x\" ", -2, {}}}};
    EXPECT_EQ(store().save(both), Outcome::written);
    EXPECT_EQ(store().load(), both);
    EXPECT_EQ(test::modeOf(path), 0600U);
    EXPECT_EQ(store().save(mine), Outcome::written);
    EXPECT_EQ(store().save({{"/a", {"abc123", "Work", 1, {}}}}), Outcome::written);
    EXPECT_EQ(test::contentsOf(path).find(
                  "{\n  \"accounts\": {\n    \"\\/a\": {\n      \"id\": \"abc123\",\n"
                  "      \"name\": \"Work\",\n      \"order\": 1\n    },"),
              0U)
        << test::contentsOf(path);
    EXPECT_EQ(json()["schemaVersion"], 1);
}

TEST_F(SharedAccountsStoreTest, anOrderThatIsATextLoadsAsZero)
{
    put(R"({"schemaVersion": 1, "accounts": {"/a": {"id": "i", "name": "n", "order": "3"}}})");
    EXPECT_EQ(store().load(), (SharedIdentities{{"/a", {"i", "n", 0, {}}}}));
}

TEST_F(SharedAccountsStoreTest, aNewerFileLoadsAsEmptyAndIsLeftByteForByte)
{
    for (const char* version : {"2", "2.0", "3", "1e300", "18446744073709551615"}) {
        SCOPED_TRACE(version);
        const std::string bytes = std::string(R"({ "schemaVersion" :)") + version +
                                  R"(, "accounts":{"/b":{"id":"i","name":"n"}} } )";
        put(bytes);
        testing::internal::CaptureStderr();
        EXPECT_TRUE(store().load().empty());
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        testing::internal::CaptureStderr();
        EXPECT_EQ(store().save(mine), Outcome::refusedNewerSchema);
        EXPECT_NE(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(test::contentsOf(path), bytes);
    }
}

TEST_F(SharedAccountsStoreTest, aSaveThatIsOvertakenStandsOnTheLatestFile)
{
    put("{}");
    const auto sibling = [&](int time) {
        put(R"({"schemaVersion": 1, "accounts": {"/b": {"id": "i", "name": "n)" +
            std::to_string(time) + R"("}}})");
    };
    const std::pair<int, Outcome> rows[] = {{1, Outcome::written}, {3, Outcome::lastWriterWins}};
    for (const auto& [most, outcome] : rows) {
        test::FailingFileCalls calls;
        calls.onCreated([&, times = 0](const std::string&) mutable {
            if (++times <= most)
                sibling(times);
        });
        const FileStore overtaken(calls);
        testing::internal::CaptureStderr();
        EXPECT_EQ(SharedAccountsStore(overtaken, path).save(mine), outcome);
        testing::internal::GetCapturedStderr();
        EXPECT_EQ(calls.created().size(), static_cast<std::size_t>(most) + 1);
        EXPECT_EQ(store().load().at("/b").name, "n" + std::to_string(most));
        EXPECT_EQ(store().load().at("/a"), mine.at("/a"));
    }
}

TEST_F(SharedAccountsStoreTest, aVersionBelowTwoOrOfAnotherTypeIsNoObstacle)
{
    for (const char* version : {"1", "0", "-7", "1.0", "\"2\"", "null", "true", "[2]"}) {
        SCOPED_TRACE(version);
        put(std::string(R"({"schemaVersion": )") + version +
            R"(, "accounts": {"/b": {"id": "i", "name": "n"}}})");
        EXPECT_EQ(store().load().size(), 1U);
        EXPECT_EQ(store().save(mine), Outcome::written);
        EXPECT_EQ(json()["schemaVersion"], 1);
        EXPECT_EQ(store().load().size(), 2U);
    }
    put(R"({"accounts": {"/b": {"id": "i", "name": "n"}}})");
    EXPECT_EQ(store().load().size(), 1U);
}

TEST_F(SharedAccountsStoreTest, aBrokenFileLoadsAsEmptyAndHealsAtTheNextSave)
{
    for (const char* bytes :
         {"", "{", "[]", "null", "{}", R"({"schemaVersion": 1, "accounts": []})",
          R"({"schemaVersion": 1, "accounts": null})", R"({"accounts": "x"})"}) {
        SCOPED_TRACE(bytes);
        put(bytes);
        EXPECT_TRUE(store().load().empty());
        EXPECT_EQ(store().save(mine), Outcome::written);
        EXPECT_EQ(store().load(), mine);
    }
}

TEST_F(SharedAccountsStoreTest, aDirectoryOfTheSiblingAloneStaysBesideOurs)
{
    put(R"({"schemaVersion": 1, "accounts": {"/sib": {"id": "s", "name": "Sib", "order": 4}}})");
    EXPECT_EQ(store().save(mine), Outcome::written);
    EXPECT_EQ(store().load(),
              (SharedIdentities{{"/a", mine.at("/a")}, {"/sib", {"s", "Sib", 4, {}}}}));
    EXPECT_EQ(store().save({}), Outcome::written);
    EXPECT_EQ(store().load().size(), 2U); // a save never deletes
}

TEST_F(SharedAccountsStoreTest, anAbsentOverrideRemovesTheKeyAndKeepsTheOneBesideIt)
{
    put(R"({"accounts": {"/a": {"id": "old", "name": "old", "serviceOverride": "S", "extra": 7}}})");
    EXPECT_EQ(store().save(mine), Outcome::written);
    EXPECT_EQ(json()["accounts"]["/a"],
              (Json{{"id", "abc123"}, {"name", "Work"}, {"order", 1}, {"extra", 7}}));
}

TEST_F(SharedAccountsStoreTest, aNewRecordHasNoNullForAnAbsentOverride)
{
    EXPECT_EQ(store().save(mine), Outcome::written);
    EXPECT_FALSE(json()["accounts"]["/a"].contains("serviceOverride"));
}

TEST_F(SharedAccountsStoreTest, whatOnlyTheSiblingKnowsSurvivesWholeAtEveryLevel)
{
    const char* const foreign = R"({"big": 18446744073709551615, "low": -9223372036854775808,
        "exact": 0.1, "tiny": 5e-324, "zero": -0.0, "nested": {"a": {"b": [null, 1, "x"]}}})";
    const Json expected = parseJson(foreign).value();
    put(std::string(R"({"schemaVersion": 1, "theirs": )") + foreign + R"(, "accounts": {
        "/a": {"id": "i", "name": "n", "order": 0, "theirs": )" +
        foreign + R"(}, "/sib": {"id": "s", "name": "S", "theirs": )" + foreign + "}}}");
    EXPECT_EQ(store().save(mine), Outcome::written);
    const Json after = json();
    for (const Json& kept : {after.at("theirs"), after.at("accounts").at("/a").at("theirs"),
                             after.at("accounts").at("/sib").at("theirs")}) {
        EXPECT_EQ(kept.dump(), expected.dump());
        EXPECT_EQ(kept.at("big").get<std::uint64_t>(), 18446744073709551615U);
    }
}

TEST_F(SharedAccountsStoreTest, malformedRecordsAreSkippedCountedAndKept)
{
    put(R"({"accounts": {"/1": 5, "/2": [], "/3": {"id": "x"}, "/good": {"id": "g", "name": "G"}}})");
    testing::internal::CaptureStderr();
    EXPECT_EQ(store().load(), (SharedIdentities{{"/good", {"g", "G", 0, {}}}}));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "[SharedAccountsStore] skipped 3 malformed account record(s)\n");
    EXPECT_EQ(store().save(mine), Outcome::written);
    EXPECT_EQ(json()["accounts"]["/1"], 5);
    EXPECT_EQ(json()["accounts"]["/2"], Json::array());
    EXPECT_EQ(json()["accounts"]["/3"], (Json{{"id", "x"}}));
}

TEST_F(SharedAccountsStoreTest, aDirectoryKeyThatIsNoObjectIsMalformedAndMayBeReplaced)
{
    put(R"({"accounts": {"/a": "text"}})");
    const auto decoded = SharedAccountsStore::decode(test::contentsOf(path));
    EXPECT_EQ(decoded.malformed, 1);
    EXPECT_TRUE(decoded.identities.empty());
    EXPECT_EQ(store().save(mine), Outcome::written);
    EXPECT_EQ(store().load(), mine);
}

TEST_F(SharedAccountsStoreTest, goodRecordsAloneAreNotWorthALine)
{
    put(R"({"accounts": {"/good": {"id": "g", "name": "G"}}})");
    testing::internal::CaptureStderr();
    EXPECT_EQ(store().load().size(), 1U);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(SharedAccountsStoreTest, aFailedWriteLeavesTheFileAsItWas)
{
    struct FullDisk : FileCalls {
        ssize_t write(int, const void*, std::size_t) const override
        {
            errno = ENOSPC;
            return -1;
        }
    } fullDisk;
    const std::string bytes = R"({"accounts": {"/good": {"id": "g", "name": "G"}}})";
    put(bytes);
    const FileStore failing(fullDisk);
    EXPECT_EQ(SharedAccountsStore(failing, path).save(mine), Outcome::failed);
    EXPECT_EQ(test::contentsOf(path), bytes);
    EXPECT_EQ(test::namesIn(folder.file("Quorle")), (std::vector<std::string>{"accounts.json"}));
}

} // namespace
} // namespace vellumor::sharedAccountsStoreTest
