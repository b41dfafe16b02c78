#include "store/FileStore.h"

#include "base/Json.h"
#include "store/SharedFileTest.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>

namespace vellumor::fileStoreUpdateTest {

using test::Names;
using test::ofVersion;
using test::Outcome;
using test::setting;

using FileStoreUpdate = test::SharedFileTest;

TEST_F(FileStoreUpdate, aMissingFileIsMadeForTheOwnerAlone)
{
    EXPECT_EQ(files.fingerprint(path), FileStore::Fingerprint{});
    EXPECT_EQ(files.updateJSONObject(path, ofVersion(1), setting("a", 1)), Outcome::written);
    EXPECT_EQ(test::contentsOf(path), "{\n  \"a\": 1\n}");
    EXPECT_EQ(test::modeOf(path), 0600U);
    EXPECT_EQ(test::modeOf(folder.file("shared")), 0700U);
    EXPECT_EQ(test::namesIn(folder.file("shared")), Names{"file.json"});
}

TEST_F(FileStoreUpdate, aFileThatIsNoJsonObjectCountsAsEmpty)
{
    for (const char* bytes : {"", "{", "[]", "[{\"schemaVersion\":9}]", "null", "3", "\"x\"",
                              "{\"a\":\"\xFF\"}", "{} {}"}) {
        SCOPED_TRACE(bytes);
        folder.put("shared/file.json", bytes);
        Json seen;
        EXPECT_EQ(files.updateJSONObject(path, ofVersion(1),
                                         [&](const Json& object) {
                                             seen = object;
                                             return Json{{"a", 1}};
                                         }),
                  Outcome::written);
        EXPECT_EQ(seen, Json::object());
        EXPECT_EQ(test::contentsOf(path), "{\n  \"a\": 1\n}");
    }
}

TEST_F(FileStoreUpdate, aFileOfANewerVersionIsLeftByteForByte)
{
    const std::string bytes = "{ \"schemaVersion\":3,\"z\":1, \"a\":2 }\n";
    folder.put("shared/file.json", bytes);
    int deltas = 0;
    const auto counting = [&](const Json& object) {
        ++deltas;
        return object;
    };
    EXPECT_EQ(logged(ofVersion(2), counting, Outcome::refusedNewerSchema),
              "[FileStore] file.json is schemaVersion 3 (we know 2) — reading only, not writing\n");
    EXPECT_EQ(deltas, 0);
    EXPECT_EQ(test::contentsOf(path), bytes);
    EXPECT_EQ(test::namesIn(folder.file("shared")), Names{"file.json"});
}

TEST_F(FileStoreUpdate, onlyANumberThatIsGreaterThanTheKnownVersionRefuses)
{
    struct Row {
        const char* version;
        bool refused;
    };
    const Row rows[] = {
        {"1", false},    {"2", false},   {"2.0", false},   {"3", true},
        {"2.5", true},   {"-1", false},  {"\"3\"", false}, {"null", false},
        {"true", false}, {"[3]", false}, {"1e300", true},  {"18446744073709551615", true},
    };
    for (const auto& [version, refused] : rows) {
        SCOPED_TRACE(version);
        folder.put("shared/file.json", "{\"schemaVersion\":" + std::string(version) + "}");
        EXPECT_EQ(files.updateJSONObject(path, ofVersion(2), setting("a", 1)),
                  refused ? Outcome::refusedNewerSchema : Outcome::written);
    }
}

TEST_F(FileStoreUpdate, theVersionStandsUnderTheKeyThatIsAskedFor)
{
    folder.put("shared/file.json", R"({"schemaVersion":9,"format":1})");
    auto update = ofVersion(1);
    update.schemaVersionKey = "format";
    EXPECT_EQ(files.updateJSONObject(path, update, setting("format", 2)), Outcome::written);
    EXPECT_EQ(files.updateJSONObject(path, update, setting("format", 3)),
              Outcome::refusedNewerSchema);
}

TEST_F(FileStoreUpdate, withoutAKnownVersionNothingIsRefused)
{
    folder.put("shared/file.json", R"({"schemaVersion":9})");
    EXPECT_EQ(files.updateJSONObject(path, {}, setting("a", 1)), Outcome::written);
    EXPECT_EQ(Json::parse(test::contentsOf(path)), (Json{{"a", 1}, {"schemaVersion", 9}}));
}

TEST_F(FileStoreUpdate, aDeltaThatGivesNothingWritesNothing)
{
    EXPECT_EQ(files.updateJSONObject(path, {}, [](const Json&) { return std::nullopt; }),
              Outcome::noChange);
    EXPECT_TRUE(test::namesIn(folder.path()).empty());
}

TEST_F(FileStoreUpdate, textThatIsNotUtf8CannotBeWritten)
{
    folder.put("shared/file.json", R"({"a":1})");
    EXPECT_EQ(files.updateJSONObject(path, {}, setting("b", "\xFF")), Outcome::failed);
    EXPECT_EQ(test::contentsOf(path), R"({"a":1})");
    EXPECT_EQ(test::namesIn(folder.file("shared")), Names{"file.json"});
}

TEST_F(FileStoreUpdate, keysThatNobodyKnowsSurviveBitForBit)
{
    folder.put("shared/file.json",
               R"({"max":18446744073709551615,"min":-9223372036854775808,"tenth":0.1,)"
               R"("tiny":5e-324,"huge":1.7976931348623157e308,"zero":-0.0,)"
               R"("deep":{"list":[1,{"x":null}],"url":"https://example.org/a"},"":{}})");
    Json expected = Json::parse(test::contentsOf(path));
    EXPECT_EQ(files.updateJSONObject(path, ofVersion(1), setting("ours", true)), Outcome::written);
    expected["ours"] = true;
    const Json found = Json::parse(test::contentsOf(path));
    EXPECT_EQ(found, expected);
    EXPECT_EQ(found["max"].get<std::uint64_t>(), 18446744073709551615U);
    EXPECT_TRUE(std::signbit(found["zero"].get<double>()));
    EXPECT_NE(test::contentsOf(path).find("https:\\/\\/example.org\\/a"), std::string::npos);
}

TEST_F(FileStoreUpdate, doublesOfAnyBitsSurvive)
{
    std::mt19937_64 random(20260302);
    std::vector<double> numbers;
    while (numbers.size() < 2000) {
        const auto number = std::bit_cast<double>(std::uint64_t{random()});
        if (std::isfinite(number))
            numbers.push_back(number);
    }
    folder.put("shared/file.json", Json{{"numbers", numbers}}.dump());
    EXPECT_EQ(files.updateJSONObject(path, {}, setting("ours", 1)), Outcome::written);
    const auto found = Json::parse(test::contentsOf(path))["numbers"].get<std::vector<double>>();
    ASSERT_EQ(found.size(), numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i)
        EXPECT_EQ(std::bit_cast<std::uint64_t>(found[i]), std::bit_cast<std::uint64_t>(numbers[i]));
}

} // namespace vellumor::fileStoreUpdateTest
