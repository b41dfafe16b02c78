#pragma once

// The texts that name a computer and its system. They stand as they are in every place, and all of
// them here, so that they can be changed together.
namespace vellumor::PlatformWords {

inline constexpr const char* couldNotFindClaude =
    "Couldn’t find Claude Code on this Mac — set its location in Settings";

inline constexpr const char* claudeLocationHelp =
    "Vellumor should find your Claude Code by itself, but if it shows “Couldn’t find Claude Code "
    "on this Mac”, specify the path to the claude command-line tool here.";
inline constexpr const char* notificationsDenied =
    "macOS denied notifications for Vellumor. Turn them on in System Settings → Notifications, "
    "then try again.";
inline constexpr const char* telemetryNeverIncludes =
    "never includes your sign-in tokens, email, or organization, your usage percentages or credit "
    "amounts, file paths from your Mac, or the raw data returned by Claude.";
inline constexpr const char* whatIsRead =
    "To get the usage data of your accounts, Vellumor reads what Claude Code has already cached on "
    "your Mac first. Only when there is nothing fresh to read does it request your usage data from "
    "the same endpoint Claude Code uses, with the token Claude Code already stores.";
inline constexpr const char* deleteAllDataHelp =
    "Removes everything Vellumor stores on this Mac. Claude Code's own data will remain untouched.";
inline constexpr const char* deleteByHand = " — delete manually in Finder, then quit Vellumor.";
inline constexpr const char* systemName = "macOS"; // before its version, in a problem report
inline constexpr const char* crashReportHolds =
    "The crash report makes the problem much easier to fix. It describes what the app was doing "
    "when it stopped, including file paths from your Mac. Have a look at it before sending if you "
    "would like to (TextEdit can open it). Nothing leaves your Mac unless you attach it here "
    "yourself.";

} // namespace vellumor::PlatformWords
