#pragma once

#include "status/StatusReport.h"

#include <string>

// StatusWaybar: a report as a custom module of waybar takes it. Pure.
namespace vellumor::StatusWaybar {

// One line of JSON, without its end: `text` (each account with its fullest limit), `tooltip`
// (everything), `class` (how near a limit is: "calm", "high" or "full"; the states of the accounts
// but "ok"; "files" where the program does not answer; "none" without an account) and `percentage`
// (the fullest of all, at most 100). Names stand in it as text and never as markup.
[[nodiscard]] std::string line(const StatusReport& report, StatusOrigin origin, Instant now);

} // namespace vellumor::StatusWaybar
