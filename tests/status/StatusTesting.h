#pragma once

#include "status/StatusReport.h"
#include "support/FakeClock.h"

#include <string>

namespace vellumor::test {

inline const Instant reportedAt = instant("2026-03-29T12:00:00Z");

inline StatusWindow statusWindow(const std::string& kind, const std::string& title, double percent,
                                 const std::string& resetText = "")
{
    StatusWindow window;
    window.kind = kind;
    window.title = title;
    window.percent = percent;
    window.percentText = std::to_string(static_cast<int>(percent)) + "%";
    window.resetText = resetText;
    window.isActive = true;
    return window;
}

inline StatusAccount statusAccount(const std::string& name, std::vector<StatusWindow> windows)
{
    StatusAccount account;
    account.id = name + "-id";
    account.name = name;
    account.state = "ok";
    account.windows = std::move(windows);
    account.updatedAt = reportedAt - std::chrono::minutes(2);
    return account;
}

// Two accounts: one with all that can be said, and one of which nothing is known.
inline StatusReport statusReport()
{
    StatusAccount work = statusAccount("Work", {statusWindow("session", "Session", 62, "2h 14m"),
                                                statusWindow("weekly_all", "Weekly", 91, "3d 2h")});
    work.windows[0].resetsAt = reportedAt + std::chrono::minutes(134);
    work.windows[1].scope = "Opus";
    work.forecast = "↗ Weekly on pace to hit the limit ~15:05";
    work.credits = "Usage credits · €12.50 of €50.00";
    work.notes = {"Offline — showing last update"};
    StatusAccount home = statusAccount("Home", {});
    home.state = "noData";
    home.updatedAt.reset();
    return {{work, home}, work.updatedAt};
}

} // namespace vellumor::test
