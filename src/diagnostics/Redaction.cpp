#include "diagnostics/Redaction.h"

#include "base/Text.h"

#include <re2/re2.h>

#include <algorithm>

namespace vellumor {

namespace {

constexpr std::string_view hiddenMark = "…";
constexpr std::size_t shortestHidden = 3; // hiding every "a" would hide the report

} // namespace

Redaction::Redaction(std::string home, const std::vector<DiscoveredFacts>& facts)
    : m_home(std::move(home))
{
    for (const DiscoveredFacts& account : facts) {
        for (const auto& name : {account.email, account.org}) {
            if (name && Text::length(*name) >= shortestHidden)
                m_hidden.push_back(*name);
        }
    }
    // Longer names first, so that a name within another does not leave the rest of it standing.
    std::stable_sort(m_hidden.begin(), m_hidden.end(),
                     [](const auto& a, const auto& b) { return a.size() > b.size(); });
}

std::string Redaction::shown(std::string_view text) const
{
    std::string result = Text::printable(text);
    if (result == m_home || result.starts_with(m_home + "/"))
        result.replace(0, m_home.size(), "~");
    result = Text::replaced(std::move(result), "\"" + m_home + "/", "\"~/");
    for (const std::string& name : m_hidden) {
        const std::string pattern = "(?i)" + re2::RE2::QuoteMeta(name);
        re2::RE2::GlobalReplace(&result, pattern, std::string(hiddenMark));
    }
    re2::RE2::GlobalReplace(&result, R"([^\s@/"]+@[^\s@/"]+)", std::string(hiddenMark));
    return result;
}

} // namespace vellumor
