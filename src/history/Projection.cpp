#include "history/Projection.h"

#include "history/Sparkline.h"

#include <algorithm>
#include <cmath>

namespace vellumor {

namespace {

constexpr double runSpan = 2700.0;    // seconds
constexpr double halfLife = 900.0;    // seconds
constexpr double leastElapsed = 0.05; // of a window's length: before, a pace says nothing
constexpr double recentWeight = 0.7;  // of the run in the rate; the rest is the window's average
constexpr double averageWeight = 1.0 - recentWeight;
constexpr int highestOnPace = 95;

Projection::Run pointsOf(const UsageSamples& history, std::string_view kind)
{
    Projection::Run points;
    for (const UsageSample& sample : history) {
        if (const double* percent = sample.percents.find(kind))
            points.push_back({sample.at, *percent});
    }
    return points;
}

std::optional<double> gapLimit(const Projection::Run& points)
{
    std::vector<double> spacings;
    for (std::size_t i = 1; i < points.size(); ++i)
        spacings.push_back(secondsBetween(points[i - 1].at, points[i].at));
    return Sparkline::gapThreshold(std::move(spacings));
}

double rateOf(double average, const UsageSamples& history, std::string_view kind, Instant now)
{
    const auto run = Projection::trailingRun(history, kind, now);
    return run ? averageWeight * average + recentWeight * Projection::ewmaRate(*run, now) : average;
}

// To the nearest multiple of 5, but never the full window.
int onPacePercent(double projected)
{
    const double rounded = std::round(projected / 5.0) * 5;
    return rounded >= highestOnPace + 1 ? highestOnPace : static_cast<int>(rounded);
}

std::optional<Projection::Candidate> candidateOf(const LimitWindow& window,
                                                 const UsageSamples& history, Instant now)
{
    const auto length = Projection::windowLength(window.kind, window.group);
    if (!length || !window.resetsAt)
        return std::nullopt;
    const double left = secondsBetween(now, *window.resetsAt);
    const double elapsed = (*length - left) / *length;
    if (!(elapsed >= leastElapsed) || !(window.percent >= 1.0 && window.percent < 100.0))
        return std::nullopt;
    const double rate = rateOf(window.percent / (*length - left), history, window.kind, now);
    Projection::Candidate candidate;
    candidate.title = LimitWindow::title(window.kind, window.scope);
    candidate.kind = window.kind;
    candidate.projected = window.percent / elapsed;
    if (window.percent + left * rate >= 100.0) {
        const std::chrono::duration<double> untilFull((100.0 - window.percent) / rate);
        candidate.wall = now + std::chrono::round<std::chrono::microseconds>(untilFull);
        candidate.form = Projection::Eta{*candidate.wall};
        return candidate;
    }
    const int percent = onPacePercent(candidate.projected);
    if (window.percent >= percent)
        return std::nullopt;
    candidate.form = Projection::OnPace{percent};
    return candidate;
}

bool isMoreUrgent(const Projection::Candidate& a, const Projection::Candidate& b)
{
    if (a.wall && b.wall)
        return *a.wall < *b.wall;
    if (a.wall || b.wall)
        return a.wall.has_value();
    return b.projected < a.projected;
}

} // namespace

std::optional<Projection> Projection::evaluate(const std::vector<LimitWindow>& windows,
                                               const UsageSamples& history, Instant now)
{
    const auto all = candidates(windows, history, now);
    const Candidate* best = nullptr;
    for (const Candidate& candidate : all) {
        if (best == nullptr || isMoreUrgent(candidate, *best))
            best = &candidate;
    }
    if (best == nullptr)
        return std::nullopt;
    return Projection{best->title, best->kind, best->form};
}

std::vector<Projection::Candidate> Projection::candidates(const std::vector<LimitWindow>& windows,
                                                          const UsageSamples& history, Instant now)
{
    std::vector<Candidate> found;
    for (const LimitWindow& window : windows) {
        if (auto candidate = candidateOf(window, history, now))
            found.push_back(*std::move(candidate));
    }
    return found;
}

std::optional<double> Projection::windowLength(std::string_view kind, std::string_view group)
{
    if (kind == "session" || group == "session")
        return 18000.0;
    if (group == "weekly" || kind == "weekly_all" || kind.starts_with("seven_day"))
        return 604800.0;
    return std::nullopt;
}

std::optional<Projection::Run> Projection::trailingRun(const UsageSamples& history,
                                                       std::string_view kind, Instant now)
{
    const Run points = pointsOf(history, kind);
    const auto limit = gapLimit(points);
    if (!limit || secondsBetween(points.back().at, now) > *limit)
        return std::nullopt;
    auto first = points.end() - 1;
    while (first != points.begin() && secondsBetween(first->at, points.back().at) < runSpan) {
        const auto before = first - 1;
        if (secondsBetween(before->at, first->at) > *limit || first->percent < before->percent)
            break;
        first = before;
    }
    if (secondsBetween(first->at, points.back().at) < runSpan)
        return std::nullopt;
    return Run(first, points.end());
}

double Projection::ewmaRate(const Run& run, Instant now)
{
    double climbed = 0;
    double lasted = 0;
    for (std::size_t i = 1; i < run.size(); ++i) {
        const double seconds = secondsBetween(run[i - 1].at, run[i].at);
        if (!(seconds > 0))
            continue;
        const double weight = std::exp2(secondsBetween(run[i].at, now) / -halfLife);
        climbed += (run[i].percent - run[i - 1].percent) * weight;
        lasted += seconds * weight;
    }
    return lasted > 0 ? std::max(climbed / lasted, 0.0) : 0.0;
}

} // namespace vellumor
