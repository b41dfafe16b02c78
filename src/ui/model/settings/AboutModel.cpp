#include "ui/model/settings/AboutModel.h"

#include "base/Version.h"

namespace vellumor {

namespace {

SupportReport::Crash latest(const std::vector<CrashDigest>& crashes)
{
    return crashes.empty() ? std::nullopt : std::optional(crashes.front());
}

} // namespace

AboutModel::AboutModel(Parts parts)
    : m_parts(std::move(parts))
    , m_notice(m_parts.clock)
{
}

AboutContent AboutModel::content(const Preferences& preferences) const
{
    AboutContent content;
    content.version = "Version " + std::string(version) + " · part of the Quorle toolkit";
    if (!m_facts)
        return content;
    content.canCopy = true;
    content.status = SupportReport::statusLine(static_cast<int>(m_facts->recentCrashes.size()));
    if (const auto crash = latest(m_facts->recentCrashes))
        content.instructions = SupportReport::instructions(crash->fileName);
    content.showsCrossPromo = !preferences.crossPromoDismissed && !m_facts->isSiblingInstalled;
    return content;
}

std::string AboutModel::details() const
{
    const Facts facts = m_facts.value_or(Facts{});
    return SupportReport::body(facts.environment, latest(facts.recentCrashes),
                               static_cast<int>(facts.recentCrashes.size()));
}

Task<> AboutModel::load()
{
    m_facts = co_await m_parts.look();
    m_notice.announce();
}

} // namespace vellumor
