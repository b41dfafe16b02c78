#pragma once

#include "app/state/ChangeNotice.h"
#include "async/Task.h"
#include "diagnostics/crash/SupportReport.h"
#include "store/Preferences.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vellumor {

// What the settings say about this version and its problems. An empty text is one that is not
// shown.
struct AboutContent {
    std::string version;      // "Version 1.0.0 · part of the Quorle toolkit"
    std::string status;       // how often it has crashed of late
    std::string instructions; // what to do with the last crash
    bool canCopy = false;     // the details are known
    bool showsCrossPromo = false;

    bool operator==(const AboutContent&) const = default;

    static constexpr const char* tagline = "Claude usage in your menu bar.";
    static constexpr const char* crossPromoTitle = "Also from the Quorle toolkit";
    static constexpr const char* crossPromoKind = " — VS Code extension";
    static constexpr const char* crossPromoText =
        "Switch Claude Code accounts from the status bar and pin them to projects.";
    static constexpr const char* disclaimer =
        "The applications of the Quorle toolkit are independent tools and are not affiliated with "
        "the maker of Claude. Live usage data depends on that maker's platform, which could change "
        "without notice.";
};

// Main thread only.
class AboutModel {
public:
    struct Facts {
        std::vector<CrashDigest> recentCrashes; // the last first
        bool isSiblingInstalled = false;
        SupportReport::Environment environment;
    };

    struct Parts {
        Clock& clock; // outlives it
        std::function<Task<Facts>()> look;
        std::function<void()> showReports;
    };

    explicit AboutModel(Parts parts);

    // Calls `observer` after changes, once a turn of the event loop.
    void observe(std::function<void()> observer) { m_notice.observe(std::move(observer)); }
    [[nodiscard]] AboutContent content(const Preferences& preferences) const;
    // The text of a mail about a problem.
    [[nodiscard]] std::string details() const;
    void showReports() const { m_parts.showReports(); }

    // Looks for crashes and for the sibling application.
    [[nodiscard]] Task<> load();

private:
    Parts m_parts;
    ChangeNotice m_notice;
    std::optional<Facts> m_facts; // nothing: not known yet
};

} // namespace vellumor
