#pragma once

#include "base/Instant.h"
#include "history/UsageSample.h"
#include "usage/model/LimitWindow.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vellumor {

// What the present pace of an account's most urgent limit leads to.
struct Projection {
    // The window will not fill before its reset: it ends near this percent, a multiple of 5 up to
    // 95.
    struct OnPace {
        int percent;
        bool operator==(const OnPace&) const = default;
    };
    // The window will be full at this moment, before its reset.
    struct Eta {
        Instant moment;
        bool operator==(const Eta&) const = default;
    };
    using Form = std::variant<OnPace, Eta>;

    // One window about which the pace says something.
    struct Candidate {
        std::string title;
        std::string kind;
        Form form;
        double projected = 0;        // percent at the reset on the straight line; may exceed 100
        std::optional<Instant> wall; // the moment of an Eta
        bool operator==(const Candidate&) const = default;
    };

    // One window's percents, in the order of time.
    struct Point {
        Instant at{};
        double percent = 0;
        bool operator==(const Point&) const = default;
    };
    using Run = std::vector<Point>;

    std::string windowTitle;
    std::string windowKind;
    Form form;
    bool operator==(const Projection&) const = default;

    // All are pure: no clock, no files, no state; callable from any thread. Linear in the history
    // but for one sorting.

    // Of the candidates the one with the earliest wall, else the one that gets furthest; of equal
    // ones the first.
    [[nodiscard]] static std::optional<Projection>
    evaluate(const std::vector<LimitWindow>& windows, const UsageSamples& history, Instant now);
    // In the order of the windows.
    [[nodiscard]] static std::vector<Candidate>
    candidates(const std::vector<LimitWindow>& windows, const UsageSamples& history, Instant now);
    // How long a window runs, in seconds: 18000 for the session family, 604800 for the weekly
    // family, nothing for a window of neither.
    [[nodiscard]] static std::optional<double> windowLength(std::string_view kind,
                                                            std::string_view group);
    // The latest 45 minutes or a little more in which the percent has never fallen and no sample is
    // missing; nothing when there are fewer, or the last sample is too old.
    [[nodiscard]] static std::optional<Run> trailingRun(const UsageSamples& history,
                                                        std::string_view kind, Instant now);
    // Percent a second, never negative; what lies 900 seconds back weighs half.
    [[nodiscard]] static double ewmaRate(const Run& run, Instant now);

    // "on pace for ~40% by reset", "on pace to hit the limit ~4:30 PM", and of another day "…
    // ~Friday 4:30 PM", the weekday always in English. `shortTime` gives a moment's hour and minute
    // as the user writes them; the days are those of the local time zone.
    [[nodiscard]] std::string phrase(Instant now,
                                     const std::function<std::string(Instant)>& shortTime) const;
    // "4:30 PM", and of another day than `now` "Friday 4:30 PM".
    [[nodiscard]] static std::string
    momentText(Instant moment, Instant now, const std::function<std::string(Instant)>& shortTime);
    // For the report: "Session ~40% by reset", "Weekly limit in 3h 5m".
    [[nodiscard]] std::string summary(Instant now) const;
};

} // namespace vellumor
