#include "accounts/StoredAccount.h"

#include "base/Json.h"
#include "support/FakeClock.h"

#include <gtest/gtest.h>

#include <limits>

namespace vellumor::storedAccountTest {
namespace {

using test::instant;

const char* const wholeRecord =
    R"({"id": "abc123", "name": "Work", "order": 3, "tracked": true, "pinned": false,
        "serviceOverride": "Mine",
        "removal": {"at": "2026-03-01T09:30:00Z", "email": "a@b", "org": "O"}})";

Json recordJson()
{
    return parseJson(wholeRecord).value();
}

std::string fileWith(const Json& record)
{
    return Json{{"schemaVersion", 1}, {"accounts", {{"/a", record}}}}.dump();
}

const StoredAccount whole = {
    "abc123", "Work", 3, true, false, "Mine", Removal{instant("2026-03-01T09:30:00Z"), "a@b", "O"}};

TEST(StoredAccount, aWholeRecordIsRead)
{
    EXPECT_EQ(decodeStoredAccounts(fileWith(recordJson())), (StoredAccounts{{"/a", whole}}));
    EXPECT_TRUE(whole.isRemoved());
}

TEST(StoredAccount, optionalKeysMayBeAbsentOrNull)
{
    Json record = recordJson();
    record["serviceOverride"] = nullptr;
    record["removal"]["email"] = nullptr;
    record["removal"].erase("org");
    StoredAccount account = whole;
    account.serviceOverride.reset();
    account.removal = Removal{whole.removal->at, {}, {}};
    EXPECT_EQ(decodeStoredAccounts(fileWith(record)), (StoredAccounts{{"/a", account}}));
    record["removal"] = nullptr;
    account.removal.reset();
    EXPECT_EQ(decodeStoredAccounts(fileWith(record)), (StoredAccounts{{"/a", account}}));
    EXPECT_FALSE(account.isRemoved());
    record.erase("removal");
    EXPECT_EQ(decodeStoredAccounts(fileWith(record)), (StoredAccounts{{"/a", account}}));
}

TEST(StoredAccount, oneMissingKeyEmptiesTheWholeFile)
{
    for (const char* key : {"id", "name", "order", "tracked", "pinned"}) {
        SCOPED_TRACE(key);
        Json file = {{"schemaVersion", 1},
                     {"accounts", {{"/a", recordJson()}, {"/b", recordJson()}}}};
        file["accounts"]["/b"][key] = nullptr;
        EXPECT_EQ(decodeStoredAccounts(file.dump()), StoredAccounts());
        file["accounts"]["/b"].erase(key);
        EXPECT_EQ(decodeStoredAccounts(file.dump()), StoredAccounts());
        file["accounts"].erase("/b");
        EXPECT_EQ(decodeStoredAccounts(file.dump()).size(), 1U);
    }
}

TEST(StoredAccount, oneValueOfAnotherTypeEmptiesTheWholeFile)
{
    const struct {
        const char* pointer;
        Json value;
    } rows[] = {
        {"/id", 1},
        {"/name", Json::array()},
        {"/order", "3"},
        {"/order", 1e308},
        {"/order", 2147483648LL},
        {"/order", 1.5},
        {"/order", true},
        {"/tracked", 1},
        {"/tracked", "true"},
        {"/pinned", 0},
        {"/serviceOverride", 5},
        {"/removal", "2026-03-01T09:30:00Z"},
        {"/removal", true},
        {"/removal", Json::object()},
        {"/removal/at", 1772357400},
        {"/removal/at", nullptr},
        {"/removal/at", "2026-03-01"},
        {"/removal/at", "2026-02-30T09:30:00Z"},
        {"/removal/at", "2026-03-01T09:30:00.125Z"},
        {"/removal/email", 1},
        {"/removal/org", Json::object()},
        {"", Json::array()},
        {"", nullptr},
    };
    for (const auto& [pointer, value] : rows) {
        SCOPED_TRACE(pointer + (": " + value.dump()));
        Json record = recordJson();
        record[Json::json_pointer(pointer)] = value;
        EXPECT_EQ(decodeStoredAccounts(fileWith(record)), StoredAccounts());
    }
}

TEST(StoredAccount, aBrokenFileCountsAsEmpty)
{
    for (const char* bytes :
         {"", "[]", "null", "{", R"({"schemaVersion": 1})", R"({"accounts": {}})",
          R"({"schemaVersion": null, "accounts": {}})", R"({"schemaVersion": 1, "accounts": []})",
          R"({"schemaVersion": 1, "accounts": null})"}) {
        SCOPED_TRACE(bytes);
        EXPECT_EQ(decodeStoredAccounts(bytes), StoredAccounts());
    }
    Json file = {{"schemaVersion", "1"}, {"accounts", {{"/a", recordJson()}}}};
    EXPECT_EQ(decodeStoredAccounts(file.dump()), StoredAccounts());
    file.erase("schemaVersion");
    EXPECT_EQ(decodeStoredAccounts(file.dump()), StoredAccounts());
}

TEST(StoredAccount, anyVersionOfTheFileIsRead)
{
    for (const int version : {-1, 0, 1, 2, 99}) {
        SCOPED_TRACE(version);
        const Json file = {{"schemaVersion", version}, {"accounts", {{"/a", recordJson()}}}};
        EXPECT_EQ(decodeStoredAccounts(file.dump()).size(), 1U);
    }
}

TEST(StoredAccount, theLargestOrderIsReadAndSoIsOneWrittenWithAFraction)
{
    Json record = recordJson();
    record["order"] = std::numeric_limits<int>::max();
    EXPECT_EQ(decodeStoredAccounts(fileWith(record)).at("/a").order, 2147483647);
    record["order"] = 2.0;
    EXPECT_EQ(decodeStoredAccounts(fileWith(record)).at("/a").order, 2);
}

TEST(StoredAccount, theFileIsCompactAndLeavesAbsentKeysOut)
{
    const StoredAccount bare = {"abc123", "Work", 3, true, false, {}, {}};
    EXPECT_EQ(
        encodeStoredAccounts({{"/a", bare}}),
        R"({"accounts":{"\/a":{"id":"abc123","name":"Work","order":3,"pinned":false,"tracked":true}},)"
        R"("schemaVersion":1})");
    StoredAccount hidden = bare;
    hidden.removal = Removal{instant("2026-03-01T09:30:00.999Z"), {}, {}};
    const auto bytes = encodeStoredAccounts({{"/a", hidden}});
    EXPECT_NE(bytes->find(R"("removal":{"at":"2026-03-01T09:30:00Z"})"), std::string::npos)
        << *bytes;
}

TEST(StoredAccount, whatIsWrittenIsReadBack)
{
    StoredAccount odd = whole;
    odd.name = "  \"\\/\n\u00E9\u4E00 ";
    odd.order = std::numeric_limits<int>::min();
    odd.removal.reset();
    odd.pinned = true;
    const StoredAccounts records = {{"/a", whole}, {"/b\u00E9", odd}};
    EXPECT_EQ(decodeStoredAccounts(encodeStoredAccounts(records).value()), records);
    EXPECT_EQ(decodeStoredAccounts(encodeStoredAccounts({}).value()), StoredAccounts());
}

TEST(StoredAccount, aTextThatIsNotUtf8CannotBeWritten)
{
    StoredAccount account = whole;
    account.name = "\xFF";
    EXPECT_EQ(encodeStoredAccounts({{"/a", account}}), std::nullopt);
}

TEST(StoredAccount, theKnownDirectoriesAreThoseThatAreNotHidden)
{
    StoredAccount shown = whole;
    shown.removal.reset();
    shown.tracked = false;
    EXPECT_EQ(knownDirs({{"/a", shown}, {"/b", whole}, {"/c", shown}}),
              (std::vector<std::string>{"/a", "/c"}));
}

TEST(StoredAccount, theOverridesAreThoseOfHiddenRecordsToo)
{
    StoredAccount free = whole;
    free.serviceOverride.reset();
    EXPECT_EQ(serviceOverrides({{"/a", free}, {"/b", whole}}),
              (std::map<std::string, std::string>{{"/b", "Mine"}}));
}

} // namespace
} // namespace vellumor::storedAccountTest
