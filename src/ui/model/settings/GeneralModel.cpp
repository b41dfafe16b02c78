#include "ui/model/settings/GeneralModel.h"

#include "base/PlatformWords.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace vellumor {

namespace {

std::string updateText(const GeneralModel::Update& update)
{
    using Kind = GeneralModel::Update::Kind;
    switch (update.kind) {
    case Kind::none:
        return "Vellumor is up to date.";
    case Kind::available:
        return fmt::format("Vellumor {} is available.", update.version);
    case Kind::failed:
        return "Couldn’t check for updates: " + update.why;
    }
    return {};
}

} // namespace

GeneralModel::GeneralModel(Parts parts)
    : m_parts(std::move(parts))
    , m_notice(m_parts.clock)
{
    m_content.hasUpdates = m_parts.hasUpdates;
    if (!m_content.hasUpdates)
        m_content.updateNote = "Updates are not set up in this build.";
}

GeneralContent GeneralModel::content() const
{
    GeneralContent content = m_content;
    content.autoUpdates = content.hasUpdates && m_parts.autoUpdates();
    return content;
}

Task<> GeneralModel::load()
{
    const bool isOn = co_await m_parts.isLaunchedAtLogin();
    m_content.launchAtLogin = isOn;
    m_notice.announce();
}

Task<> GeneralModel::setLaunchAtLogin(bool on)
{
    const auto error = co_await m_parts.setLaunchedAtLogin(on);
    m_content.loginError = error ? "Couldn't update login item: " + *error : std::string();
    co_await load(); // what stands now, whatever was wanted
}

void GeneralModel::setAutoUpdates(bool on)
{
    m_parts.setAutoUpdates(on);
    m_notice.announce();
}

Task<> GeneralModel::checkForUpdates()
{
    if (m_content.isChecking || !m_content.hasUpdates)
        co_return;
    m_content.isChecking = true;
    m_content.updateNote = "Checking for updates…";
    m_content.updatePage.clear();
    m_notice.announce();
    const Update update = co_await m_parts.checkForUpdates();
    m_content.isChecking = false;
    announce(update);
}

void GeneralModel::announce(const Update& update)
{
    m_content.updateNote = updateText(update);
    m_content.updatePage = update.page;
    m_notice.announce();
}

Task<> GeneralModel::removeAllData()
{
    if (m_content.isRemoving)
        co_return;
    m_content.isRemoving = true;
    m_notice.announce();
    const std::vector<std::string> left = co_await m_parts.removeAllData();
    if (!left.empty()) {
        m_content.removalError = fmt::format("Couldn't remove: {}{}", fmt::join(left, ", "),
                                             PlatformWords::deleteByHand);
        co_await load(); // the login item may have gone
    }
    m_content.isRemoving = false;
    m_notice.announce();
}

} // namespace vellumor
