#include "status/sources/StatusFiles.h"

#include "app/state/AppStateTesting.h"
#include "base/Json.h"
#include "support/FileState.h"
#include "ui/model/PopoverContent.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>

namespace vellumor::statusFilesTest {
namespace {

using std::chrono::minutes;

std::string shortTime(Instant instant)
{
    return Format::isoWholeSeconds(instant);
}

// A home as the program leaves it, made at random, with the program's own state over the same
// files.
struct World : test::AppWorld {
    explicit World(unsigned seed)
        : random(seed)
    {
        others.localOnly = true; // what can be had without a request
        clock.advance(std::chrono::hours(below(200)));
        const unsigned count = below(5);
        for (unsigned i = 0; i < count; ++i)
            add("a" + std::to_string(i));
        for (const DiscoveredFacts& facts : found.facts)
            std::filesystem::create_directories(facts.configDir);
        state.setUserInterval(60.0 + below(1000));
        rescan();
        for (const DiscoveredFacts& facts : found.facts)
            fill(facts.configDir);
        if (oneIn(2))
            fillVscode();
        decide();
        rescan();
        waitFor(state.refresh(true));
        settle();
    }

    unsigned below(unsigned limit) { return static_cast<unsigned>(random() % limit); }
    bool oneIn(unsigned count) { return below(count) == 0; }

    Usage randomReading(Instant at)
    {
        Usage usage = test::reading(below(1100) / 10.0, at);
        usage.windows.resize(below(4));
        for (LimitWindow& window : usage.windows) {
            window.isActive = oneIn(2);
            if (oneIn(2))
                window.resetsAt = at + minutes(below(9000));
            if (oneIn(4))
                window.scope = "Opus";
        }
        if (oneIn(3)) {
            usage.extraUsage.emplace();
            usage.extraUsage->isEnabled = oneIn(2);
            usage.extraUsage->usedCredits = below(9000);
            usage.extraUsage->monthlyLimit = 5000;
            usage.extraUsage->currency = "EUR";
        }
        return usage;
    }

    void fill(const std::string& dir)
    {
        if (oneIn(2)) {
            UsageSnapshotStore snapshots(files, folders.vellumor() + "/usage-snapshots.json");
            snapshots.save(randomReading(clock.now() - minutes(below(40))), dir);
            others.snapshots = snapshots.load();
        }
        if (oneIn(2)) {
            SharedCache cache(files, folders.quorle() + "/usage-cache");
            cache.write(randomReading(clock.now() - minutes(below(40))), dir, std::nullopt);
            others.shared[dir] = {cache.read(dir)->usage(), std::nullopt};
        }
        fillHistory(dir);
        if (oneIn(2)) {
            Usage week = test::reading(39, clock.now());
            week.windows[1].resetsAt = clock.now() + std::chrono::hours(below(160));
            ResetAnchorStore(files, folders.vellumor() + "/reset-anchors.json").record(week, dir);
        }
    }

    // One for all directories.
    void fillVscode()
    {
        const Instant at = clock.now() - minutes(below(40));
        const Json data = {{"utilization5h", below(1100) / 10.0},
                           {"utilization7d", below(1000) / 10.0},
                           {"reset5hAt", std::floor(secondsSince1970(at)) + below(18000)}};
        const std::string bytes =
            Json{{"updatedAt", Format::isoFractional(at)}, {"usageData", data}}.dump();
        for (const DiscoveredFacts& facts : found.facts)
            std::ofstream(facts.configDir + "/vscode-claude-status-cache.json") << bytes;
        others.vscode = VscodeStatusCache::parse(bytes);
        EXPECT_TRUE(others.vscode);
    }

    // An hour at an even pace, so that there is a forecast.
    void fillHistory(const std::string& dir)
    {
        if (oneIn(3))
            return;
        UsageHistoryStore history(files, folders.vellumor() + "/history");
        const double slope = below(30) / 10.0;
        for (int ago = 60; ago >= 0; ago -= 5) {
            const Instant at = clock.now() - minutes(ago);
            history.append(test::reading(20 + slope * (60 - ago) / 5, at), dir, at);
        }
    }

    // What the user has done.
    void decide()
    {
        for (const Account& account : std::vector(state.accounts())) {
            if (oneIn(4))
                state.rename(account, "Renamed " + account.displayName);
            if (oneIn(5))
                state.setTracked(account.id, false);
            else if (oneIn(6))
                state.remove(account);
        }
        if (state.accounts().size() > 1 && oneIn(2))
            state.reorder({1}, 0);
        settle();
    }

    std::mt19937 random;
};

void expectSame(const StatusAccount& told, const AccountSectionContent& shown)
{
    EXPECT_EQ(told.name, shown.name);
    EXPECT_EQ(told.forecast, shown.forecast);
    EXPECT_EQ(told.credits, shown.credits);
    EXPECT_EQ(told.areCreditsExhausted, shown.areCreditsExhausted);
    ASSERT_EQ(told.windows.size(), shown.rows.size());
    for (std::size_t i = 0; i < shown.rows.size(); ++i) {
        EXPECT_EQ(told.windows[i].title, shown.rows[i].title);
        EXPECT_EQ(told.windows[i].percent, shown.rows[i].percent);
        EXPECT_EQ(told.windows[i].percentText, shown.rows[i].percentText);
        EXPECT_EQ(told.windows[i].resetText, shown.rows[i].resetText);
        EXPECT_EQ(told.windows[i].isStale, shown.rows[i].isStale);
    }
    const std::string note = shown.note ? shown.note->text : "";
    EXPECT_EQ(told.notes.empty() ? "" : told.notes.back(), note.empty() ? shown.substitute : note);
}

TEST(StatusFiles, inManyWorldsTheyGiveWhatThePopoverShowsOfTheSameFiles)
{
    std::size_t rows = 0;
    std::size_t forecasts = 0;
    for (unsigned seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const World world(seed);
        const Instant now = world.clock.now();
        const auto shown = PopoverContent::of(world.state, now, shortTime);
        const auto told = StatusFiles::report(world.folders, now, shortTime);
        ASSERT_EQ(told.accounts.size(), shown.sections.size());
        for (std::size_t i = 0; i < told.accounts.size(); ++i) {
            expectSame(told.accounts[i], shown.sections[i]);
            rows += told.accounts[i].windows.size();
            forecasts += told.accounts[i].forecast.empty() ? 0U : 1U;
        }
        EXPECT_EQ(told.updatedAt, world.state.dataUpdatedAt());
    }
    EXPECT_GT(rows, 50U); // the worlds are not empty
    EXPECT_GT(forecasts, 10U);
}

TEST(StatusFiles, aHomeInWhichNothingIsHasNoAccountsAndStaysEmpty)
{
    const test::TempFolder home;
    const Folders folders{home.path(), home.file("data"), home.file("config")};
    EXPECT_EQ(StatusFiles::report(folders, test::instant("2026-03-29T12:00:00Z"), shortTime),
              StatusReport());
    EXPECT_TRUE(test::namesIn(home.path()).empty());
}

TEST(StatusFiles, filesOfRubbishCountAsNone)
{
    const test::TempFolder home;
    const Folders folders{home.path(), home.file("data"), home.file("config")};
    for (const char* name :
         {"Vellumor/accounts.json", "Vellumor/usage-snapshots.json", "Vellumor/preferences.json",
          "Vellumor/reset-anchors.json", "Quorle/accounts.json"})
        home.put(std::string("data/") + name, "{\"schemaVersion\":1,\"accounts\":[");
    EXPECT_EQ(StatusFiles::report(folders, test::instant("2026-03-29T12:00:00Z"), shortTime),
              StatusReport());
}

TEST(StatusFiles, anAccountWithoutAReadingHasNoDataAndAnAccountWithoutAFolderIsGone)
{
    test::TempFolder home;
    const Folders folders{home.path(), home.file("data"), home.file("config")};
    home.makeFolder("there");
    Json accounts = Json::object();
    for (const char* name : {"there", "gone"}) {
        accounts[home.file(name)] = {
            {"id", name}, {"name", name}, {"order", 0}, {"tracked", true}, {"pinned", true}};
    }
    const Json file = {{"schemaVersion", 1}, {"accounts", accounts}};
    home.put("data/Vellumor/accounts.json", file.dump());
    const auto report =
        StatusFiles::report(folders, test::instant("2026-03-29T12:00:00Z"), shortTime);
    ASSERT_EQ(report.accounts.size(), 1U);
    EXPECT_EQ(report.accounts[0].name, "there");
    EXPECT_EQ(report.accounts[0].state, "noData");
}

} // namespace
} // namespace vellumor::statusFilesTest
