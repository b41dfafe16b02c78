#include "usage/model/UsageCacheFile.h"

#include "base/Json.h"
#include "base/Sha256.h"
#include "support/ChangedJson.h"
#include "support/FakeClock.h"

#include <gtest/gtest.h>

namespace vellumor::usageCacheFileTest {

using test::instant;

namespace {

constexpr std::string_view wholeFile = R"({
  "backoffUntil": "2026-03-01T09:35:00.000Z",
  "extraUsage": {
    "creditsEverEnabled": true,
    "currency": "EUR",
    "decimalPlaces": 2,
    "isEnabled": true,
    "monthlyLimit": 5000,
    "spendLimitReached": false,
    "usedCredits": 1250.5,
    "userDisabled": false,
    "utilization": 25
  },
  "fetchedAt": "2026-03-01T09:30:00.125Z",
  "schemaVersion": 2,
  "source": "vellumor",
  "sourceVersion": "1.0.0",
  "windows": [
    {
      "group": "session",
      "isActive": true,
      "kind": "session",
      "percent": 42,
      "resetsAt": "2026-03-01T12:00:00.000Z"
    },
    {
      "group": "weekly",
      "isActive": false,
      "kind": "weekly_scoped",
      "percent": 0.5,
      "scope": "Opus"
    }
  ]
})";

Usage reading()
{
    Usage usage;
    usage.fetchedAt = instant("2026-03-01T09:30:00.125Z");
    usage.windows = {
        {"session", "session", 42, "critical", instant("2026-03-01T12:00:00Z"), true, std::nullopt},
        {"weekly_scoped", "weekly", 0.5, "normal", std::nullopt, false, "Opus"}};
    usage.extraUsage = ExtraUsage{true, 1250.5, "EUR", 2, 5000, 25, false, false, true};
    return usage;
}

std::optional<UsageCacheFile> decoded(const Json& json)
{
    const auto result = UsageCacheFile::decode(json);
    const auto* file = std::get_if<UsageCacheFile>(&result);
    return file != nullptr ? std::optional(*file) : std::nullopt;
}

std::string errorOf(const Json& json)
{
    const auto result = UsageCacheFile::decode(json);
    const auto* error = std::get_if<UsageCacheFile::DecodeError>(&result);
    return error != nullptr ? error->description : "";
}

// The whole file with `value` at `path`; without a value the key is taken away.
Json changed(const std::string& path, const std::optional<Json>& value)
{
    return test::changed(Json::parse(wholeFile), path, value);
}

} // namespace

TEST(UsageCacheFile, theFileIsTheOneThatTheSiblingReads)
{
    const UsageCacheFile file = UsageCacheFile::of(reading(), instant("2026-03-01T09:35:00Z"));
    EXPECT_EQ(writeJson(file.encode(), JsonLayout::pretty), wholeFile);
}

TEST(UsageCacheFile, whatIsAbsentIsLeftOut)
{
    Usage usage;
    usage.fetchedAt = instant("2026-03-01T09:30:00Z");
    usage.extraUsage = ExtraUsage();
    const Json json = UsageCacheFile::of(usage, std::nullopt).encode();
    EXPECT_EQ(json, Json::parse(R"({"schemaVersion":2,"fetchedAt":"2026-03-01T09:30:00.000Z",
        "windows":[],"extraUsage":{"isEnabled":false},"source":"vellumor",
        "sourceVersion":"1.0.0"})"));
    usage.extraUsage.reset();
    EXPECT_FALSE(UsageCacheFile::of(usage, std::nullopt).encode().contains("extraUsage"));
}

TEST(UsageCacheFile, theReadingComesBackWithoutItsSeverity)
{
    const auto result = UsageCacheFile::decode(wholeFile);
    ASSERT_TRUE(std::holds_alternative<UsageCacheFile>(result));
    const auto& file = std::get<UsageCacheFile>(result);
    EXPECT_EQ(file, UsageCacheFile::of(reading(), instant("2026-03-01T09:35:00Z")));
    Usage expected = reading();
    expected.windows[0].severity = "normal";
    EXPECT_EQ(file.usage(), expected);
}

TEST(UsageCacheFile, datesAreCutToMillisecondsOnDiskAndComeBackAsWritten)
{
    Usage usage = reading();
    usage.windows[0].resetsAt = instant("2026-03-01T12:00:00.123999Z");
    const auto file = decoded(UsageCacheFile::of(usage, std::nullopt).encode());
    ASSERT_TRUE(file);
    EXPECT_EQ(file->windows[0].resetsAt, instant("2026-03-01T12:00:00.123Z"));
    EXPECT_EQ(decoded(file->encode()), file);
}

TEST(UsageCacheFile, datesOfEveryFormThatTheServerSendsAreRead)
{
    for (const char* text : {"2026-03-01T12:00:00Z", "2026-03-01T14:00:00+02:00",
                             "2026-03-01T12:00:00.000000+00:00", "2026-03-01T12:00:00.1234567Z"}) {
        SCOPED_TRACE(text);
        const auto file = decoded(changed("/windows/0/resetsAt", text));
        ASSERT_TRUE(file);
        EXPECT_EQ(file->windows[0].resetsAt, instant("2026-03-01T12:00:00Z"));
    }
}

TEST(UsageCacheFile, aMissingRequiredKeyOrANullThereIsAnError)
{
    for (const char* path :
         {"/schemaVersion", "/fetchedAt", "/windows", "/windows/0/kind", "/windows/0/group",
          "/windows/0/percent", "/windows/1/isActive", "/extraUsage/isEnabled"}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(decoded(changed(path, std::nullopt)), std::nullopt);
        EXPECT_EQ(decoded(changed(path, Json())), std::nullopt);
        EXPECT_FALSE(errorOf(changed(path, std::nullopt)).empty());
    }
}

TEST(UsageCacheFile, aMissingOptionalKeyOrANullThereIsAbsent)
{
    for (const char* path :
         {"/backoffUntil", "/extraUsage", "/source", "/sourceVersion", "/windows/0/resetsAt",
          "/windows/1/scope", "/extraUsage/usedCredits", "/extraUsage/currency",
          "/extraUsage/decimalPlaces", "/extraUsage/monthlyLimit", "/extraUsage/utilization",
          "/extraUsage/userDisabled", "/extraUsage/spendLimitReached",
          "/extraUsage/creditsEverEnabled"}) {
        SCOPED_TRACE(path);
        const auto missing = decoded(changed(path, std::nullopt));
        ASSERT_TRUE(missing);
        EXPECT_EQ(decoded(changed(path, Json())), missing);
        EXPECT_EQ(missing->encode(), changed(path, std::nullopt));
    }
}

TEST(UsageCacheFile, aWrongTypeAnywhereIsAnErrorForTheWholeFile)
{
    const Json leaves = Json::parse(wholeFile).flatten();
    for (const auto& [path, value] : leaves.items()) {
        const Json wrong = value.is_string() ? Json(5) : Json("5");
        SCOPED_TRACE(path + " " + wrong.dump());
        EXPECT_EQ(decoded(changed(path.c_str(), wrong)), std::nullopt);
    }
    for (const char* path : {"/windows", "/windows/0", "/extraUsage", ""}) {
        SCOPED_TRACE(path);
        const bool isRoot = *path == '\0';
        EXPECT_EQ(decoded(isRoot ? Json::array() : changed(path, "text")), std::nullopt);
        EXPECT_EQ(decoded(isRoot ? Json() : changed(path, 7)), std::nullopt);
    }
    EXPECT_EQ(decoded(changed("/schemaVersion", 2.5)), std::nullopt);
    EXPECT_EQ(decoded(changed("/windows/0/isActive", 1)), std::nullopt);
    EXPECT_EQ(decoded(changed("/windows/0/percent", true)), std::nullopt);
}

TEST(UsageCacheFile, aBadDateIsAnErrorThatNamesIt)
{
    for (const char* path : {"/fetchedAt", "/backoffUntil", "/windows/0/resetsAt"}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(errorOf(changed(path, "yesterday")), "bad ISO-8601 date: yesterday");
        EXPECT_EQ(errorOf(changed(path, "")), "bad ISO-8601 date: ");
    }
}

TEST(UsageCacheFile, anyVersionIsDecodedForItsReaderToJudge)
{
    for (const int version : {0, 1, 2, 3, 99})
        EXPECT_EQ(decoded(changed("/schemaVersion", version))->schemaVersion, version);
    EXPECT_EQ(decoded(changed("/schemaVersion", 2.0))->schemaVersion, 2);
}

TEST(UsageCacheFile, unknownKeysAndForeignWordsAreNoFault)
{
    Json json = changed("/source", "sibling");
    json["new"] = {{"x", 1}};
    json["windows"][0]["new"] = 1;
    const auto file = decoded(json);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->source, "sibling");
}

TEST(UsageCacheFile, bytesThatAreNoJsonAreAnError)
{
    for (const char* bytes : {"", "{", "{\"a\":\"\xFF\"}"}) {
        SCOPED_TRACE(bytes);
        EXPECT_TRUE(std::holds_alternative<UsageCacheFile::DecodeError>(
            UsageCacheFile::decode(std::string_view(bytes))));
    }
}

// A sibling that does not know the list may have written such a row.
TEST(UsageCacheFile, aRowOfASuppressedKindIsNotRestored)
{
    const std::string digest = Sha256::hex("weekly_scoped");
    const std::string_view suppressed[] = {digest};
    const auto file = decoded(Json::parse(wholeFile));
    ASSERT_TRUE(file);
    const Usage usage = file->usage(suppressed);
    ASSERT_EQ(usage.windows.size(), 1U);
    EXPECT_EQ(usage.windows[0].kind, "session");
    EXPECT_EQ(file->usage().windows.size(), 2U);
}

} // namespace vellumor::usageCacheFileTest
