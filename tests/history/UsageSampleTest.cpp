#include "history/UsageSample.h"

#include "base/Format.h"
#include "base/Json.h"
#include "support/FakeClock.h"
#include "support/HostileFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace vellumor::usageSampleTest {

using test::instant;

namespace {

using namespace std::string_literals;
using limits = std::numeric_limits<double>;

const Instant at = instant("2026-03-01T09:30:00.125Z");

const std::string valid = R"([
  {
    "at": "2026-03-01T09:30:00.125Z",
    "percents": {
      "session": 42.5,
      "weekly_all": 7
    }
  },
  {
    "at": "2026-03-01T09:35:00.000Z",
    "percents": {}
  }
])";

const UsageSamples twoSamples = {{at, {{"session", 42.5}, {"weekly_all", 7}}},
                                 {instant("2026-03-01T09:35:00Z"), {}}};

const double oddNumbers[] = {0.0,
                             -0.0,
                             1,
                             100,
                             0.1,
                             1.0 / 3,
                             -2.5,
                             1e-7,
                             1e-5,
                             123456.789,
                             1e15,
                             9007199254740992.0,
                             9007199254740994.0,
                             -9007199254740994.0,
                             1e16,
                             1e21,
                             1e22,
                             limits::max(),
                             limits::lowest(),
                             limits::min(),
                             limits::denorm_min(),
                             limits::epsilon()};

const std::string oddKinds[] = {
    "",           "session",      "a/b",   "\"quoted\"", "back\\slash", "\\/",
    "\t\r\n\b\f", "\x01\x1f\x7f", "a\0b"s, "\u00E9",     "e\u0301",     "\U0001F600",
    "\u2028",     "{}",           "at",    "percents",   " ",           "sess"};

// The same text by way of a tree.
std::optional<std::string> writtenAsTree(const UsageSamples& samples)
{
    Json tree = Json::array();
    for (const UsageSample& sample : samples) {
        Json percents = Json::object();
        for (const auto& [kind, percent] : sample.percents)
            percents[kind] = percent;
        tree.push_back({{"at", Format::isoFractional(sample.at)}, {"percents", percents}});
    }
    return writeJson(tree, JsonLayout::pretty);
}

void expectTheTextOfATree(const UsageSamples& samples)
{
    const auto text = encodeSamples(samples);
    ASSERT_TRUE(text);
    EXPECT_EQ(text, writtenAsTree(samples));
    EXPECT_EQ(decodeSamples(*text), samples);
}

// One sample whose percents are this text.
std::optional<UsageSamples> decodedPercents(const std::string& percents)
{
    return decodeSamples(R"([{"at":"2026-03-01T09:30:00Z","percents":)" + percents + "}]");
}

} // namespace

TEST(UsageSample, aReadingGivesItsMomentAndAPercentAKind)
{
    Usage usage;
    usage.fetchedAt = at;
    usage.windows = {{"weekly_all", "weekly", 107.25, "critical", at, true, "Opus"},
                     {"session", "session", -0.5, "normal", std::nullopt, false, std::nullopt},
                     {"", "", 0, "normal", std::nullopt, false, std::nullopt}};
    EXPECT_EQ(UsageSample::of(usage),
              (UsageSample{at, {{"", 0}, {"session", -0.5}, {"weekly_all", 107.25}}}));
    EXPECT_EQ(UsageSample::of(Usage{{}, std::nullopt, at}), (UsageSample{at, {}}));
}

TEST(UsageSample, ofTwoWindowsOfOneKindTheLaterCounts)
{
    Usage usage;
    usage.windows.resize(3);
    usage.windows[0].kind = "a";
    usage.windows[0].percent = 90;
    usage.windows[1].kind = "b";
    usage.windows[2].kind = "a";
    usage.windows[2].percent = 10;
    EXPECT_EQ(UsageSample::of(usage).percents, (Percents{{"a", 10}, {"b", 0}}));
}

TEST(UsageSample, theFileIsAnArrayInPrettyJson)
{
    EXPECT_EQ(encodeSamples(twoSamples), valid);
    EXPECT_EQ(decodeSamples(valid), twoSamples);
    EXPECT_EQ(encodeSamples({}), "[]");
    EXPECT_EQ(decodeSamples("[]"), UsageSamples());
    EXPECT_EQ(encodeSamples({{at, {{"a/b", 1}}}}), R"([
  {
    "at": "2026-03-01T09:30:00.125Z",
    "percents": {
      "a\/b": 1
    }
  }
])");
}

TEST(UsageSample, everyNumberIsWrittenAsInATreeAndReadsBackBitForBit)
{
    UsageSamples together(1);
    for (const double number : oddNumbers) {
        SCOPED_TRACE(number);
        expectTheTextOfATree({{at, {{"a", number}}}});
        const auto again = decodeSamples(encodeSamples({{at, {{"a", number}}}}).value());
        EXPECT_EQ(std::bit_cast<std::uint64_t>(*again->at(0).percents.find("a")),
                  std::bit_cast<std::uint64_t>(number));
        together[0].percents.set(std::to_string(number), number);
    }
    expectTheTextOfATree(together);
}

TEST(UsageSample, numbersAreWrittenAtTheirShortest)
{
    struct Row {
        double number;
        const char* text;
    };
    const Row rows[] = {{0, "0"},        {-0.0, "-0.0"},  {100, "100"},
                        {0.1, "0.1"},    {1e-7, "1e-07"}, {-42.5, "-42.5"},
                        {1e16, "1e+16"}, {1e22, "1e+22"}, {1e15, "1000000000000000"}};
    for (const auto& [number, text] : rows) {
        SCOPED_TRACE(text);
        const auto written = encodeSamples({{instant("2026-03-01T09:30:00Z"), {{"a", number}}}});
        EXPECT_EQ(written, R"([
  {
    "at": "2026-03-01T09:30:00.000Z",
    "percents": {
      "a": )" + std::string(text) +
                               "\n    }\n  }\n]");
    }
}

TEST(UsageSample, everyKindIsWrittenAsInATree)
{
    UsageSamples together(3);
    for (const std::string& kind : oddKinds) {
        SCOPED_TRACE(kind);
        expectTheTextOfATree({{at, {{kind, 1}}}});
        expectTheTextOfATree({{at, {{kind, 1}}}, {at, {}}, {at, {{kind, 2}, {kind + "x", 3}}}});
        for (UsageSample& sample : together)
            sample.percents.set(kind, 0.5);
    }
    expectTheTextOfATree(together);
}

TEST(UsageSample, manySamplesAreWrittenAsInATree)
{
    std::mt19937_64 random(4711); // NOLINT: the same numbers in every run
    UsageSamples samples;
    for (int i = 0; i < 2000; ++i) {
        UsageSample sample;
        sample.at = at + std::chrono::milliseconds(random() % 1'000'000'000);
        for (auto left = random() % 6; left > 0; --left) {
            const auto number = std::bit_cast<double>(random());
            const double percent = random() % 2 == 0 ? static_cast<double>(random() % 101) : number;
            sample.percents.set(oddKinds[random() % std::size(oddKinds)],
                                std::isfinite(percent) ? percent : 0.25);
        }
        samples.push_back(std::move(sample));
    }
    expectTheTextOfATree(samples);
}

TEST(UsageSample, percentsToTheHundredthAreWrittenAsInATree)
{
    for (int hundredths = -500; hundredths <= 20'000; ++hundredths) {
        const UsageSamples samples = {{at, {{"a", hundredths / 100.0}}}};
        ASSERT_EQ(encodeSamples(samples), writtenAsTree(samples));
    }
}

// Where sixteen digits and more are needed, the libraries need not agree upon the last one.
TEST(UsageSample, percentsOfEverySizeReadBackFromNoMoreDigitsThanInATree)
{
    std::mt19937_64 random(17); // NOLINT: the same numbers in every run
    std::uniform_real_distribution<double> fraction(-1, 1);
    for (int exponent = -8; exponent < 18; ++exponent) {
        for (int i = 0; i < 500; ++i) {
            const UsageSamples samples = {{at, {{"a", fraction(random) * std::pow(10, exponent)}}}};
            const auto text = encodeSamples(samples);
            ASSERT_TRUE(text);
            ASSERT_LE(text->size(), writtenAsTree(samples)->size()) << *text;
            ASSERT_EQ(parseJson(*text), parseJson(*writtenAsTree(samples)));
            ASSERT_EQ(decodeSamples(*text), samples) << *text;
        }
    }
    for (const double edge : {1e-4, 1e15, 0.1, 100.0})
        expectTheTextOfATree({{at, {{"a", std::nextafter(edge, 0)}, {"b", edge}}}});
}

TEST(UsageSample, aPercentThatIsNoFiniteNumberGivesNothing)
{
    for (const double number : {limits::quiet_NaN(), limits::infinity(), -limits::infinity()}) {
        EXPECT_EQ(encodeSamples({{at, {{"a", number}}}}), std::nullopt);
        EXPECT_EQ(encodeSamples({{at, {{"a", 1}, {"b", number}, {"c", 1e300}}}, {at, {{"a", 1}}}}),
                  std::nullopt);
    }
}

TEST(UsageSample, aKindThatIsNoUtf8GivesNothing)
{
    for (const char* kind : {"\xFF", "a\xC3", "\xED\xA0\x80"}) {
        EXPECT_EQ(encodeSamples({{at, {{kind, 1}}}}), std::nullopt);
        EXPECT_EQ(encodeSamples({{at, {{"a", 1}, {kind, 1}}}, {at, {{kind, 1}}}, {at, {{"a", 1}}}}),
                  std::nullopt);
    }
}

TEST(UsageSample, theMomentIsCutToMilliseconds)
{
    const UsageSamples samples = {{at + std::chrono::microseconds(999), {}},
                                  {instant("1969-12-31T23:59:59.999999Z"), {}},
                                  {instant("0001-01-01T00:00:00Z"), {}},
                                  {instant("9999-12-31T23:59:59.999Z"), {}}};
    const UsageSamples kept = {{at, {}},
                               {instant("1969-12-31T23:59:59.999Z"), {}},
                               {instant("0001-01-01T00:00:00Z"), {}},
                               {instant("9999-12-31T23:59:59.999Z"), {}}};
    EXPECT_EQ(decodeSamples(encodeSamples(samples).value()), kept);
}

TEST(UsageSample, datesOfEveryFormAreRead)
{
    for (const char* date : {"2026-03-01T09:30:00Z", "2026-03-01T15:00:00+05:30",
                             "2026-03-01T09:30:00.000000+00:00", "2026-03-01T09:30:00.1234567Z"}) {
        SCOPED_TRACE(date);
        const auto samples =
            decodeSamples(R"([{"percents":{"a":1},"at":")" + std::string(date) + "\"}]");
        EXPECT_EQ(samples, (UsageSamples{{instant("2026-03-01T09:30:00Z"), {{"a", 1}}}}));
    }
}

TEST(UsageSample, numbersOfEveryFormAreRead)
{
    struct Row {
        const char* text;
        double number;
    };
    const Row rows[] = {{"0", 0},
                        {"-0", 0},
                        {"5.0", 5},
                        {"1E2", 100},
                        {"12e-1", 1.2},
                        {"0.30000000000000004", 0.1 + 0.2},
                        {"18446744073709551615", 18446744073709551615.0},
                        {"-9223372036854775808", -9223372036854775808.0},
                        {"1e-400", 0}};
    for (const auto& [text, number] : rows) {
        SCOPED_TRACE(text);
        const auto samples = decodedPercents(R"({"a":)" + std::string(text) + "}");
        ASSERT_TRUE(samples);
        EXPECT_EQ(*samples->at(0).percents.find("a"), number);
    }
}

TEST(UsageSample, theKindsOfAFileNeedNotBeSortedAndTheLastOfOneKindCounts)
{
    const auto samples = decodedPercents(R"({"b":1,"a":2,"c":3,"b":4,"\u0061":5})");
    EXPECT_EQ(samples->at(0).percents, (Percents{{"a", 5}, {"b", 4}, {"c", 3}}));
    EXPECT_EQ(decodeSamples(R"([{"at":5,"percents":[],"at":"2026-03-01T09:30:00.125Z",
                                "percents":{"a":1},"percents":{"b":2}}])"),
              (UsageSamples{{at, {{"b", 2}}}}));
    EXPECT_EQ(decodeSamples(R"([{"at":"2026-03-01T09:30:00.125Z","percents":{},"at":5}])"),
              std::nullopt);
}

TEST(UsageSample, neighboursMayHaveTheSameKindsOrOthers)
{
    const char* const texts[] = {
        R"({})",
        R"({"a":1,"b":2,"c":3})",
        R"({"a":4,"b":5,"c":6})",
        R"({"a":7,"c":8,"b":9})",
        R"({"a":7,"b":8,"d":9})",
        R"({"a":7,"b":8,"b":9})",
        R"({"a":1,"b":2,"c":3,"d":4,"e":5,"f":6})",
        R"({"a":6,"b":5,"c":4,"d":3,"e":2,"f":1})",
        R"({"a":6,"b":5,"c":4,"d":3,"e":2,"F":1})",
    };
    const Percents percents[] = {
        {},
        {{"a", 1}, {"b", 2}, {"c", 3}},
        {{"a", 4}, {"b", 5}, {"c", 6}},
        {{"a", 7}, {"b", 9}, {"c", 8}},
        {{"a", 7}, {"b", 8}, {"d", 9}},
        {{"a", 7}, {"b", 9}},
        {{"a", 1}, {"b", 2}, {"c", 3}, {"d", 4}, {"e", 5}, {"f", 6}},
        {{"a", 6}, {"b", 5}, {"c", 4}, {"d", 3}, {"e", 2}, {"f", 1}},
        {{"F", 1}, {"a", 6}, {"b", 5}, {"c", 4}, {"d", 3}, {"e", 2}},
    };
    for (std::size_t first = 0; first < std::size(texts); ++first) {
        for (std::size_t second = 0; second < std::size(texts); ++second) {
            SCOPED_TRACE(std::string(texts[first]) + texts[second]);
            const std::string one = R"({"at":"2026-03-01T09:30:00.125Z","percents":)";
            const auto samples = decodeSamples("[" + one + texts[first] + "}," + one +
                                               texts[second] + "}," + one + texts[first] + "}]");
            EXPECT_EQ(samples,
                      (UsageSamples{
                          {at, percents[first]}, {at, percents[second]}, {at, percents[first]}}));
        }
    }
    EXPECT_EQ(decodedPercents(
                  R"({"a":1,"b":2}},{"at":"2026-03-01T09:30:00Z","percents":{"a":1,"b":"2"})"),
              std::nullopt);
}

// A tree of tiny values would take far more memory than their text.
TEST(UsageSample, aFileOfTooManyValuesIsNothing)
{
    constexpr std::ptrdiff_t most = 4'000'000;
    const auto isSeparator = [](char c) { return c == ',' || c == '[' || c == '{'; };
    const std::string few = test::withKey(valid, "[1]");
    std::string values = "[1";
    for (auto left = most - std::count_if(few.begin(), few.end(), isSeparator); left > 0; --left)
        values += ",1";
    EXPECT_EQ(decodeSamples(test::withKey(valid, values + "]")), twoSamples);
    EXPECT_EQ(decodeSamples(test::withKey(valid, values + ",1]")), std::nullopt);
}

TEST(UsageSample, unknownKeysArePassedOver)
{
    for (const char* value : {"1", "null", R"({"at":7})", R"([["percents"]])", R"("x")"}) {
        SCOPED_TRACE(value);
        EXPECT_EQ(decodeSamples(test::withKey(valid, value)), twoSamples);
    }
    EXPECT_EQ(decodeSamples(test::withKey(valid, test::nested(62))), twoSamples);
    EXPECT_EQ(decodeSamples(test::withKey(valid, test::nested(63))), std::nullopt);
}

TEST(UsageSample, oneBadElementMakesTheWholeFileNothing)
{
    const char* const elements[] = {
        "1",
        "null",
        "\"text\"",
        "[]",
        "{}",
        R"({"at":"2026-03-01T09:30:00Z"})",
        R"({"percents":{}})",
        R"({"at":null,"percents":{}})",
        R"({"at":"2026-03-01T09:30:00Z","percents":null})",
        R"({"at":"yesterday","percents":{}})",
        R"({"at":"","percents":{}})",
        R"({"at":794050200,"percents":{}})",
        R"({"at":true,"percents":{}})",
        R"({"at":"2026-03-01T09:30:00Z","percents":[]})",
        R"({"at":"2026-03-01T09:30:00Z","percents":5})",
        R"({"at":"2026-03-01T09:30:00Z","percents":{"a":"5"}})",
        R"({"at":"2026-03-01T09:30:00Z","percents":{"a":null}})",
        R"({"at":"2026-03-01T09:30:00Z","percents":{"a":true}})",
        R"({"at":"2026-03-01T09:30:00Z","percents":{"a":{}}})",
        R"({"at":"2026-03-01T09:30:00Z","percents":{"a":1,"b":[1]}})",
        R"({"at":"2026-03-01T09:30:00Z","percents":{"a":1e999}})",
        R"({"at":"2026-03-01T09:30:00Z","percents":{"a":01}})",
    };
    const std::string good = R"({"at":"2026-03-01T09:30:00Z","percents":{"a":1}})";
    ASSERT_EQ(decodeSamples("[" + good + "," + good + "]")->size(), 2U);
    for (const std::string element : elements) {
        SCOPED_TRACE(element);
        EXPECT_EQ(decodeSamples("[" + element + "]"), std::nullopt);
        EXPECT_EQ(decodeSamples("[" + good + "," + element + "]"), std::nullopt);
        EXPECT_EQ(decodeSamples("[" + element + "," + good + "]"), std::nullopt);
    }
}

TEST(UsageSample, whatIsNoArrayIsNothing)
{
    for (const char* bytes : {"{}", "5", "true", "\"[]\"", R"({"at":"2026-03-01T09:30:00Z"})"})
        EXPECT_EQ(decodeSamples(bytes), std::nullopt) << bytes;
    ASSERT_EQ(decodeSamples(test::withKey(valid, "\"\u00E9\"")), twoSamples);
    for (const auto& [what, bytes] : test::hostileTexts(valid)) {
        SCOPED_TRACE(what);
        EXPECT_EQ(decodeSamples(bytes), std::nullopt);
    }
}

// A kind that could be read and not written would keep the file from ever being written again.
TEST(UsageSample, noKindIsReadThatCouldNotBeWritten)
{
    for (const char* kind : {"\xFF", "\xED\xA0\x80", R"(\ud800)", R"(\udc00)", R"(\udc00\ud800)",
                             R"(\ud800x)", R"(\ud800\u0041)", R"(\x)", R"(\u12)"}) {
        SCOPED_TRACE(kind);
        EXPECT_EQ(decodedPercents("{\"" + std::string(kind) + "\":1}"), std::nullopt);
    }
    for (const char* kind : {R"(\u0000)", R"(\ud83d\ude00)", R"(\uFFFF)", "\u00E9"}) {
        SCOPED_TRACE(kind);
        const auto samples = decodedPercents("{\"" + std::string(kind) + "\":1}");
        ASSERT_TRUE(samples);
        expectTheTextOfATree(*samples);
    }
}

} // namespace vellumor::usageSampleTest
