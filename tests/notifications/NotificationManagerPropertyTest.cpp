#include "notifications/NotificationManager.h"

#include "notifications/NotifiedWorld.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <random>
#include <set>

namespace vellumor::notificationManagerPropertyTest {
namespace {

using namespace test;

constexpr double week = 604800;
constexpr double sessionLength = 18000;
constexpr double jitter = 100; // so that two reports of one reset are up to 200 seconds apart

class Chance {
public:
    explicit Chance(std::uint64_t seed)
        : m_engine(seed)
    {
    }
    double between(double least, double most)
    {
        return std::uniform_real_distribution(least, most)(m_engine);
    }
    bool oneIn(int count) { return std::uniform_int_distribution(1, count)(m_engine) == 1; }
    template <typename Values>
    auto oneOf(const Values& values)
    {
        const auto last = static_cast<std::ptrdiff_t>(std::size(values)) - 1;
        const auto place = std::uniform_int_distribution<std::ptrdiff_t>(0, last)(m_engine);
        return *(std::begin(values) + place);
    }

private:
    std::mt19937_64 m_engine;
};

// One window as it really is; the endpoint's reports of it jitter.
struct TrueWindow {
    LimitWindow reported;
    double length = week;
    std::optional<double> end;     // seconds after the morning; nothing while a session is idle
    std::optional<double> lastEnd; // of the period before, once one has ended
    int period = 0;

    void passTo(double now, Chance& chance)
    {
        while (end && *end <= now) {
            lastEnd = end;
            end = length == week ? std::optional(*end + week) : std::nullopt;
            reported.percent = 0;
            ++period;
        }
        if (!end && !chance.oneIn(3))
            end = now + length - chance.between(0, 600);
        if (end && !chance.oneIn(4))
            reported.percent += std::pow(chance.between(0, 1), 4) * 60;
        if (chance.oneIn(12)) // as endpoints correct themselves
            reported.percent *= 0.5;
        reported.resetsAt.reset();
        if (end)
            reported.resetsAt = after(*end + chance.between(-jitter, jitter));
    }
};

struct TrueAccount {
    Account account;
    std::vector<TrueWindow> windows;
    UsageSamples history;
    std::optional<double> lastAlertOfForecast;
    bool isWhole = false; // the manager has seen all of its windows at once
};

// Some accounts whose usage goes on for weeks, and a manager that sees what the endpoint reports.
class Stream {
public:
    explicit Stream(std::uint64_t seed, int accounts)
        : m_chance(seed)
    {
        for (int i = 0; i < accounts; ++i) {
            const std::string number = std::to_string(i);
            TrueAccount made{account("id" + number, "Account" + number), {}, {}, {}};
            made.windows.push_back({session(0, {}), sessionLength, {}, {}, 0});
            for (const LimitWindow& one :
                 {weekly(0, {}), opus(0, {}), scoped("Sonnet", 0, {}), scoped("Haiku", 0, {})})
                made.windows.push_back({one, week, m_chance.between(60, week), {}, 0});
            m_accounts.push_back(std::move(made));
        }
        restart();
    }

    void step(double least, double most)
    {
        m_now += m_chance.between(least, most);
        if (m_chance.oneIn(40))
            m_now += m_chance.between(1200, 2.5 * week / 7); // asleep
        if (m_chance.oneIn(60))
            m_offlineUntil = m_now + m_chance.between(600, week / 14);
        if (m_chance.oneIn(150))
            restart();
        if (m_chance.oneIn(10))
            changeSettings();
        TrueAccount& who = m_accounts.at(static_cast<std::size_t>(
            m_chance.between(0, static_cast<double>(m_accounts.size()) - 0.001)));
        observe(who);
        if (m_chance.oneIn(4))
            noteTrouble(who);
    }

    // Keys live until eight days after their reset, which lies a week ahead at the most. Of one
    // kind of alert that makes no more than 41 sessions, since the next ends 17,400 seconds later
    // at the earliest, and 3 weeks, of four windows. A session has seven kinds of alerts: its
    // reset, three levels, the custom level, the forecast and the closing; a weekly window has all
    // but the closing.
    [[nodiscard]] std::size_t mostRemembered() const
    {
        return m_accounts.size() * (41 * 7 + 4 * 3 * 6);
    }
    [[nodiscard]] std::size_t remembered() const { return m_world->manager.rememberedAlerts(); }
    [[nodiscard]] int count(const std::string& kind) const
    {
        const auto found = m_counts.find(kind);
        return found == m_counts.end() ? 0 : found->second;
    }

private:
    void restart()
    {
        m_world.emplace();
        m_told.clear();
        for (TrueAccount& one : m_accounts)
            one.lastAlertOfForecast.reset();
        for (TrueAccount& one : m_accounts)
            one.isWhole = false;
        changeSettings();
    }

    void changeSettings()
    {
        Preferences& preferences = m_world->preferences;
        for (const auto alert : alertSwitches)
            preferences.*alert = !m_chance.oneIn(4);
        preferences.notificationsEnabled = !m_chance.oneIn(5);
        preferences.customThresholds.clear();
        for (const TrueAccount& one : m_accounts)
            preferences.customThresholds[one.account.id] = m_chance.oneOf(std::array{33.3, 72.5});
        m_world->interval = m_chance.oneOf(std::array{60.0, 120.0, 600.0});
    }

    // Some are missing at times, but not at their reset: what has gone then has reset at what was
    // its time in the last report.
    bool isHeldBack(const TrueAccount& who, const TrueWindow& one)
    {
        if (!one.reported.scope)
            return !one.reported.resetsAt && m_chance.oneIn(2);
        // Of several of a kind that were never seen together one would be taken for another.
        const bool isKnown = who.isWhole || one.reported.scope == "Haiku";
        return isKnown && *one.end - m_now > 3 * jitter && m_chance.oneIn(4);
    }

    void observe(TrueAccount& who)
    {
        std::vector<LimitWindow> windows;
        for (TrueWindow& one : who.windows) {
            one.passTo(m_now, m_chance);
            if (!isHeldBack(who, one))
                windows.push_back(one.reported);
        }
        const bool isWhole = std::ranges::count(windows, "weekly_scoped", &LimitWindow::kind) == 2;
        if (m_chance.oneIn(2))
            std::ranges::reverse(windows);
        Usage usage = reading(windows, after(m_now));
        if (m_now < m_offlineUntil || m_chance.oneIn(6)) {
            ASSERT_EQ(observeOld(who, usage), Told{});
            return;
        }
        std::swap(m_world->history, who.history);
        who.isWhole = who.isWhole || isWhole;
        const auto source = m_chance.oneIn(5) ? UsageSource::cli : UsageSource::endpoint;
        const Told told = m_world->observe(who.account, usage, source);
        std::swap(m_world->history, who.history);
        who.history.push_back(UsageSample::of(usage));
        if (who.history.size() > 30) // the forecast looks no further back
            who.history.erase(who.history.begin());
        if (!m_world->preferences.notificationsEnabled) {
            ASSERT_EQ(told, Told{});
        }
        for (const std::string& body : told)
            judge(who, body);
        ASSERT_LE(remembered(), mostRemembered());
    }

    // A reading that is not new, and as alarming as can be.
    Told observeOld(const TrueAccount& who, Usage usage)
    {
        for (LimitWindow& one : usage.windows) {
            one.percent = 100;
            if (one.resetsAt)
                *one.resetsAt += hours(200);
        }
        return m_world->observe(who.account, usage,
                                m_chance.oneOf(std::array<std::optional<UsageSource>, 4>{
                                    std::nullopt, UsageSource::sharedCache,
                                    UsageSource::vscodeCache, UsageSource::snapshot}));
    }

    // What is no reading.
    void noteTrouble(const TrueAccount& who)
    {
        FetchOutcome outcome;
        if (m_chance.oneIn(2))
            outcome.error = UsageFetchError{UsageFetchError::Kind::forbidden, {}, {}, 403};
        if (m_chance.oneIn(2))
            outcome.revival = RevivalStatus::needsSignIn;
        m_world->manager.noteOutcome(who.account, outcome, m_world->preferences);
        std::vector<Account> found;
        for (const TrueAccount& one : m_accounts) {
            if (!m_chance.oneIn(3))
                found.push_back(one.account);
        }
        (void)m_world->manager.reconcile(found, m_world->preferences);
        const bool isTold = !m_world->taken().empty();
        ASSERT_TRUE(m_world->preferences.notificationsEnabled || !isTold);
    }

    static const char* kindOf(const std::string& body)
    {
        constexpr const char* kinds[] = {"crossed 50%",          "crossed 90%", "crossed ",
                                         "limit reached",        "has reset",   "on pace to hit",
                                         "session window closes"};
        for (const char* kind : kinds) {
            if (body.find(kind) != std::string::npos)
                return kind;
        }
        return "";
    }

    // The window that a body is about.
    static const TrueWindow& windowOf(const TrueAccount& who, const std::string& body)
    {
        if (body.find("ession") != std::string::npos)
            return who.windows[0];
        for (std::size_t i = 2; i < who.windows.size(); ++i) {
            const LimitWindow& window = who.windows[i].reported;
            std::string title = LimitWindow::title(window.kind, window.scope);
            // Of one that was alone at first and has gone the scope is not told.
            if (window.scope == "Sonnet" && body.find("(scoped)") != std::string::npos)
                title = "Weekly (scoped)";
            if (body.find(title) != std::string::npos)
                return who.windows[i];
        }
        return who.windows.at(1);
    }

    void judge(TrueAccount& who, const std::string& body)
    {
        SCOPED_TRACE(body);
        const TrueWindow& about = windowOf(who, body);
        const std::string kind = kindOf(body);
        ASSERT_NE(kind, "");
        ASSERT_TRUE(body.starts_with(who.account.displayName + " · "));
        ++m_counts[kind];
        const std::string title = LimitWindow::title(about.reported.kind, about.reported.scope);
        const bool isFirst = m_told.insert({who.account.id, title, kind, about.period}).second;
        // The history, and so the forecast, knows windows by their kind alone.
        EXPECT_TRUE(isFirst || (kind == "on pace to hit" && about.reported.scope))
            << "twice in one period";
        if (kind == "has reset") {
            ASSERT_TRUE(about.lastEnd);
            const double grace = std::max(3 * m_world->interval, 300.0);
            EXPECT_LE(m_now - *about.lastEnd, grace + jitter) << "old news";
        }
        if (kind == "on pace to hit") {
            if (who.lastAlertOfForecast) {
                EXPECT_GE(m_now - *who.lastAlertOfForecast, 5400);
            }
            who.lastAlertOfForecast = m_now;
        }
    }

    Chance m_chance;
    std::optional<NotifiedWorld> m_world;
    std::vector<TrueAccount> m_accounts;
    double m_now = 0;
    double m_offlineUntil = 0;
    std::set<std::tuple<std::string, std::string, std::string, int>> m_told;
    std::map<std::string, int> m_counts;
};

TEST(NotificationManagerProperty, nothingIsToldTwiceTooOftenOrTooLate)
{
    std::map<std::string, int> counts;
    for (std::uint64_t seed = 1; seed <= 2000; ++seed) {
        SCOPED_TRACE(seed);
        Stream stream(seed, static_cast<int>(1 + seed % 3));
        for (int i = 0; i < 50; ++i)
            stream.step(60, 900);
        for (const char* kind : {"crossed 50%", "crossed 90%", "crossed ", "limit reached",
                                 "has reset", "on pace to hit", "session window closes"})
            counts[kind] += stream.count(kind);
        ASSERT_FALSE(testing::Test::HasFailure());
    }
    for (const auto& [kind, count] : counts)
        EXPECT_GT(count, 100) << kind << ": the streams would show nothing";
}

TEST(NotificationManagerProperty, weeksOfReadingsLeaveABoundedNumberOfAlertsBehind)
{
    for (std::uint64_t seed = 1; seed <= 3; ++seed) {
        SCOPED_TRACE(seed);
        Stream stream(seed, 2);
        std::size_t most = 0;
        for (int i = 0; i < 3000; ++i) {
            stream.step(60, 3600);
            most = std::max(most, stream.remembered());
            ASSERT_FALSE(testing::Test::HasFailure());
        }
        EXPECT_GT(most, 20) << "the stream would show nothing";
    }
}

// Without a restart in between nothing but the forgetting keeps the number small.
TEST(NotificationManagerProperty, aYearOfSessionsIsForgottenAsItGoes)
{
    NotifiedWorld world;
    std::size_t most = 0;
    const int sessions = 365 * 24 / 5;
    for (int i = 0; i < sessions; ++i) {
        const double start = i * sessionLength;
        const Instant end = after(start + sessionLength);
        for (const auto& [percent, at] :
             {std::pair(1.0, 60.0), {60.0, 9000.0}, {95.0, 15'000.0}, {100.0, 17'000.0}})
            world.observe(reading({session(percent, end)}, after(start + at)));
        most = std::max(most, world.manager.rememberedAlerts());
    }
    // Its reset, three levels and the forecast, of the sessions of eight days and the present one.
    EXPECT_LE(most, (8 * 24 / 5 + 2) * 5);
    EXPECT_GT(most, (8 * 24 / 5 - 2) * 3);
}

TEST(NotificationManagerProperty, readingsThatMakeNoSenseAreSurvived)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const double percents[] = {
        -infinity, -1e300, -1,    -0.0,     0,
        5e-324,    40,     50,    89.9,     95,
        100,       10'001, 1e300, infinity, std::numeric_limits<double>::quiet_NaN()};
    const std::string names[] = {
        "session",  "weekly_all",         "seven_day_opus", "seven_day_",  "",
        "|",        "a|reset|b|1",        "x\ny",           "<b>bold</b>", "{}%s",
        "\xff\xfe", std::string(1, '\0'), "weekly_scoped"};
    const std::string groups[] = {"session", "weekly", "", "|"};
    for (std::uint64_t seed = 1; seed <= 3000; ++seed) {
        Chance chance(seed);
        const Instant moments[] = {yearOne,    yearLast,   Instant(),   after(0),
                                   after(299), after(301), after(9000), after(week)};
        NotifiedWorld world;
        for (int i = 0; i < 8; ++i) {
            const Account who = account(chance.oneOf(names), chance.oneOf(names));
            world.preferences.customThresholds[who.id] = chance.oneOf(percents);
            world.preferences.sessionClosingLeadMinutes =
                chance.oneOf(std::array{-2147483647, 0, 30, 2147483647});
            world.interval = chance.oneOf(percents);
            Usage usage = reading({}, chance.oneOf(moments));
            while (!chance.oneIn(4)) {
                usage.windows.push_back(
                    window(chance.oneOf(names), chance.oneOf(groups), chance.oneOf(percents), {}));
                if (!chance.oneIn(5))
                    usage.windows.back().resetsAt = chance.oneOf(moments);
            }
            usage.extraUsage = ExtraUsage{};
            usage.extraUsage->usedCredits = chance.oneOf(percents);
            usage.extraUsage->monthlyLimit = chance.oneOf(percents);
            usage.extraUsage->decimalPlaces = chance.oneOf(std::array{-2147483647, 0, 2147483647});
            for (const std::string& body : world.observe(who, usage))
                ASSERT_TRUE(body.starts_with(who.displayName + " · "));
            world.history.push_back(UsageSample::of(usage));
        }
    }
}

} // namespace
} // namespace vellumor::notificationManagerPropertyTest
