#include "Ratio.h"

#include "base/Json.h"
#include "usage/model/Usage.h"

#include <benchmark/benchmark.h>

namespace vellumor::bench {

namespace {

std::string presentShape()
{
    Json json = {{"extra_usage",
                  {{"is_enabled", true},
                   {"used_credits", 1250.0},
                   {"currency", "EUR"},
                   {"decimal_places", 2},
                   {"monthly_limit", 5000},
                   {"utilization", 25.0},
                   {"user_disabled", false},
                   {"spend_limit_reached", false},
                   {"credits_ever_enabled", true}}}};
    const char* kinds[] = {"session",          "weekly_all",           "weekly_scoped",
                           "seven_day_opus",   "seven_day_sonnet",     "seven_day_cowork",
                           "seven_day_design", "seven_day_oauth_apps", "monthly_all"};
    double percent = 3.5;
    for (const char* kind : kinds) {
        json["limits"].push_back({{"kind", kind},
                                  {"group", "weekly"},
                                  {"percent", percent += 7.25},
                                  {"severity", "normal"},
                                  {"resets_at", "2026-03-04T10:00:00.123456+00:00"},
                                  {"is_active", true},
                                  {"scope", {{"model", {{"display_name", "Opus"}}}}}});
    }
    return json.dump();
}

std::string olderShape()
{
    Json json;
    const char* slots[] = {"five_hour",
                           "seven_day",
                           "seven_day_opus",
                           "seven_day_sonnet",
                           "seven_day_oauth_apps",
                           "seven_day_cowork"};
    double percent = 3.5;
    for (const char* slot : slots)
        json[slot] = {{"utilization", percent += 7.25},
                      {"resets_at", "2026-03-04T10:00:00.123456+00:00"}};
    // The endpoint sends objects for limits that the program does not know, too.
    for (int i = 0; i < 14; ++i)
        json["seven_day_example_" + std::to_string(i)] = {
            {"utilization", 0.0}, {"resets_at", "2026-03-04T10:00:00.123456+00:00"}};
    return json.dump();
}

Comparison decoding(const std::string& name, const std::string& bytes)
{
    return {name + ", " + std::to_string(bytes.size()) + " bytes",
            [bytes] { benchmark::DoNotOptimize(Usage::decode(bytes, Instant())); },
            [bytes] { benchmark::DoNotOptimize(Json::parse(bytes)); },
            400,
            20,
            1.5};
}

} // namespace

std::vector<Comparison> usageDecoding()
{
    return {decoding("usage answer, present shape", presentShape()),
            decoding("usage answer, older shape", olderShape())};
}

} // namespace vellumor::bench
