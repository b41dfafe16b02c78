#include "history/HistoryExport.h"

#include "base/Json.h"
#include "support/FakeClock.h"
#include "support/ScopedZone.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <sstream>

namespace vellumor::historyExportTest {

using test::instant;
using test::ScopedZone;

namespace {

using namespace std::chrono_literals;

const Instant start = instant("2026-03-01T09:30:00.125Z");

// The text of one percent in a file of one row.
std::string numberText(double percent)
{
    const std::string text = HistoryExport::csv({{start, {{"k", percent}}}});
    const std::string before = "at,kind,percent\n2026-03-01T09:30:00.125Z,k,";
    EXPECT_EQ(text.substr(0, before.size()), before);
    EXPECT_EQ(text.back(), '\n');
    return text.substr(before.size(), text.size() - before.size() - 1);
}

// Any finite number.
double anyDouble(std::mt19937_64& random)
{
    for (;;) {
        const auto number = std::bit_cast<double>(random());
        if (std::isfinite(number))
            return number;
    }
}

WeeklyReceipt receipt()
{
    return {start - 168h, start, 87.5, 12, {{"weekly_all", 92.25, start - 1h, 2}}, start + 5min};
}

std::string outputOf(const std::string& command)
{
    std::FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr)
        return "no pipe";
    std::string output;
    char buffer[4096];
    for (std::size_t size = 0; (size = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        output.append(buffer, size);
    EXPECT_EQ(::pclose(pipe), 0) << output;
    return output;
}

// A text as a spreadsheet's reader takes it: each row's fields, the number by its bits.
constexpr const char* reader = R"(
import csv, struct, sys
rows = list(csv.reader(open(sys.argv[1], newline="", encoding="utf-8")))
assert rows[0] == ["at", "kind", "percent"], rows[0]
for at, kind, percent in rows[1:]:
    print(at, kind, struct.pack(">d", float(percent)).hex())
)";

std::string hexOf(double number)
{
    char text[17];
    std::snprintf(text, sizeof text, "%016llx",
                  static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(number)));
    return text;
}

} // namespace

TEST(HistoryExport, withoutSamplesTheTextIsItsHeader)
{
    EXPECT_EQ(HistoryExport::csv({}), "at,kind,percent\n");
    EXPECT_EQ(HistoryExport::csv({{start, {}}}), "at,kind,percent\n");
}

TEST(HistoryExport, eachSampleHasARowForEachKindByTimeAndKind)
{
    const UsageSamples samples = {
        {start + 1h, {{"weekly_all", 7}, {"session", 42.5}}},
        {start + 1us, {{"b", 1}, {"a", 0.1}}},
        {start, {{"session", 3}}},
        {start + 2h, {}},
        {start + 1h, {{"session", 43}}}, // of the same moment: behind the first
    };
    EXPECT_EQ(HistoryExport::csv(samples), "at,kind,percent\n"
                                           "2026-03-01T09:30:00.125Z,session,3.0\n"
                                           "2026-03-01T09:30:00.125Z,a,0.1\n"
                                           "2026-03-01T09:30:00.125Z,b,1.0\n"
                                           "2026-03-01T10:30:00.125Z,session,42.5\n"
                                           "2026-03-01T10:30:00.125Z,weekly_all,7.0\n"
                                           "2026-03-01T10:30:00.125Z,session,43.0\n");
}

TEST(HistoryExport, aPercentIsTheShortestTextThatReadsBack)
{
    const std::pair<double, const char*> rows[] = {
        {42, "42.0"},
        {0, "0.0"},
        {-0.0, "-0.0"},
        {100, "100.0"},
        {-7, "-7.0"},
        {-12.5, "-12.5"},
        {0.1, "0.1"},
        {0.30000000000000004, "0.30000000000000004"},
        {100.0 / 3, "33.333333333333336"},
        {123456789, "123456789.0"},
        {1e-4, "0.0001"},
        {0.00012345, "0.00012345"},
        {std::nextafter(1e-4, 0), "9.999999999999999e-05"},
        {1e-5, "1e-05"},
        {-1e-5, "-1e-05"},
        {1.5e-7, "1.5e-07"},
        {5e-324, "5e-324"},
        {1e15, "1000000000000000.0"},
        {9007199254740993, "9007199254740992.0"},
        {std::nextafter(1e16, 0), "9999999999999998.0"},
        {1e16, "1e+16"},
        {-1e16, "-1e+16"},
        {1.25e20, "1.25e+20"},
        {1e300, "1e+300"},
        {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
    };
    for (const auto& [percent, text] : rows)
        EXPECT_EQ(numberText(percent), text);
}

TEST(HistoryExport, everyNumberReadsBackAndNoneLooksLikeAnInteger)
{
    std::mt19937_64 random(7);
    for (int round = 0; round < 20000; ++round) {
        const double number = round % 2 == 0
                                  ? anyDouble(random)
                                  : std::uniform_real_distribution<double>(0, 110)(random);
        const std::string text = numberText(number);
        double back = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), back);
        EXPECT_EQ(error, std::errc());
        EXPECT_EQ(end, text.data() + text.size());
        ASSERT_EQ(hexOf(back), hexOf(number)) << text;
        EXPECT_NE(text.find_first_of(".e"), std::string::npos) << text;
    }
}

TEST(HistoryExport, aReaderOfSuchFilesFindsTheSameRows)
{
    std::mt19937_64 random(11);
    UsageSamples samples;
    std::string expected;
    for (int i = 0; i < 500; ++i) {
        const Instant at = start + i * 61s + std::chrono::milliseconds(random() % 1000);
        const double session = anyDouble(random);
        const double weekly = std::uniform_real_distribution<double>(0, 110)(random);
        samples.push_back({at, {{"session", session}, {"weekly_all", weekly}}});
        const std::string moment = Format::isoFractional(at);
        expected += moment + " session " + hexOf(session) + "\n";
        expected += moment + " weekly_all " + hexOf(weekly) + "\n";
    }
    const test::TempFolder folder;
    const std::string script = folder.put("read.py", reader);
    const std::string exported = folder.put("export.csv", HistoryExport::csv(samples));
    EXPECT_EQ(outputOf("/usr/bin/python3 -I '" + script + "' '" + exported + "' 2>&1"), expected);
}

TEST(HistoryExport, theDocumentHoldsTheAccountItsSamplesAndItsReceipts)
{
    const UsageSamples samples = {{start + 1h, {{"session", 0.1}}},
                                  {start + 999us, {{"weekly_all", 42}, {"a/b", 1.5}}},
                                  {start + 2h, {}}};
    EXPECT_EQ(HistoryExport::json("Me & \"Élan\"", samples, {receipt()}, start + 3h), R"({
  "account": "Me & \"Élan\"",
  "app": "Vellumor",
  "exportedAt": "2026-03-01T12:30:00.125Z",
  "receipts": [
    {
      "archivedAt": "2026-03-01T09:35:00.125Z",
      "coveragePercent": 87.5,
      "sampleCount": 12,
      "weekEnd": "2026-03-01T09:30:00.125Z",
      "weekStart": "2026-02-22T09:30:00.125Z",
      "windows": [
        {
          "kind": "weekly_all",
          "observedResets": 2,
          "peakAt": "2026-03-01T08:30:00.125Z",
          "peakPercent": 92.25
        }
      ]
    }
  ],
  "samples": [
    {
      "at": "2026-03-01T09:30:00.125Z",
      "percents": {
        "a\/b": 1.5,
        "weekly_all": 42
      }
    },
    {
      "at": "2026-03-01T10:30:00.125Z",
      "percents": {
        "session": 0.1
      }
    },
    {
      "at": "2026-03-01T11:30:00.125Z",
      "percents": {}
    }
  ]
})");
    EXPECT_EQ(HistoryExport::json("", {}, {}, start), R"({
  "account": "",
  "app": "Vellumor",
  "exportedAt": "2026-03-01T09:30:00.125Z",
  "receipts": [],
  "samples": []
})");
}

TEST(HistoryExport, samplesAndReceiptsReadBackAsTheyWere)
{
    std::mt19937_64 random(13);
    UsageSamples samples;
    for (int i = 0; i < 300; ++i)
        samples.push_back(
            {start + i * 1min, {{"session", anyDouble(random)}, {"\u00E9", 0.5 * i}}});
    samples.push_back({start + 301min, {{"session", -0.0}}});
    const WeeklyReceipts receipts = {receipt(), receipt()};
    const auto text = HistoryExport::json("Work", samples, receipts, start);
    ASSERT_TRUE(text);
    const Json json = Json::parse(*text);
    EXPECT_EQ(json.size(), 5U);
    EXPECT_EQ(decodeSamples(json.at("samples").dump()), samples);
    EXPECT_EQ(ReceiptStore::decode(
                  Json({{"schemaVersion", 1}, {"receipts", json.at("receipts")}}).dump()),
              receipts);
}

TEST(HistoryExport, whatJsonHasNoTextForIsNotExported)
{
    EXPECT_EQ(HistoryExport::json("\xFF", {}, {}, start), std::nullopt);
    EXPECT_EQ(HistoryExport::json("Work", {{start, {{"\xFF", 1}}}}, {}, start), std::nullopt);
    constexpr double infinite = std::numeric_limits<double>::infinity();
    for (const double number : {infinite, -infinite, std::nan("")}) {
        SCOPED_TRACE(number);
        // In the last one of several, behind one that can be told.
        const UsageSamples samples = {{start, {{"k", 1}}},
                                      {start + 1min, {{"a", 2}, {"k", number}}}};
        EXPECT_EQ(HistoryExport::json("Work", samples, {}, start), std::nullopt);
        WeeklyReceipt watched = receipt();
        watched.coveragePercent = number;
        EXPECT_EQ(HistoryExport::json("Work", {}, {receipt(), watched}, start), std::nullopt);
        WeeklyReceipt peaked = receipt();
        peaked.windows.back().peakPercent = number;
        EXPECT_EQ(HistoryExport::json("Work", {}, {receipt(), peaked}, start), std::nullopt);
    }
}

TEST(HistoryExport, theFileIsNamedAfterTheAccountAndTheDay)
{
    const std::pair<const char*, const char*> rows[] = {
        {"Work", "work"},
        {"My  Work (EU)", "my-work-eu"},
        {"***", "account"},
        {"", "account"},
        {"  ", "account"},
        {"\U0001F600", "account"},
        {"../../etc/passwd", "etc-passwd"},
        {"<b>Ada</b> & co", "b-ada-b-co"},
        {"ada@example.org", "ada-example-org"},
        {"ÉLAN", "élan"},
        {"\xFF", "account"},
    };
    for (const auto& [name, slug] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(HistoryExport::filename(name, "csv", start),
                  "vellumor-history-" + std::string(slug) + "-2026-03-01.csv");
    }
    EXPECT_EQ(HistoryExport::filename("Work", "json", instant("0999-12-31T23:59:59.999Z")),
              "vellumor-history-work-0999-12-31.json");
}

TEST(HistoryExport, theDayIsThatOfGreenwichAsAllDatesInTheFileAre)
{
    const struct {
        const char* zone;
        const char* moment;
        const char* day;
    } rows[] = {
        {"Etc/GMT+5", "2026-03-02T04:30:00Z", "2026-03-02"}, // half past eleven at night there
        {"Etc/GMT+5", "2026-03-01T23:59:59.999Z", "2026-03-01"},
        {"Asia/Kolkata", "2026-03-01T20:00:00Z", "2026-03-01"},
        {"Pacific/Kiritimati", "2026-03-01T11:00:00Z", "2026-03-01"},
    };
    for (const auto& [zone, moment, day] : rows) {
        SCOPED_TRACE(zone);
        const ScopedZone scoped(zone);
        EXPECT_EQ(HistoryExport::filename("Work", "csv", instant(moment)),
                  "vellumor-history-work-" + std::string(day) + ".csv");
        EXPECT_EQ(HistoryExport::csv({{instant(moment), {{"k", 1}}}}).substr(16, 10), day);
    }
}

} // namespace vellumor::historyExportTest
