#include "platform/linux/tray/ItemRow.h"

#include <algorithm>

namespace vellumor {

namespace {

QString idOf(std::size_t place)
{
    const auto name = QStringLiteral("vellumor");
    return place == 0 ? name : QStringLiteral("%1-%2").arg(name).arg(place + 1);
}

} // namespace

ItemRow::ItemRow(Clock& clock, Worker& worker, std::string busAddress, StatusMenu& menu,
                 StatusNotifierItem::OnClick onClick)
    : m_clock(clock)
    , m_worker(worker)
    , m_busAddress(std::move(busAddress))
    , m_menu(menu)
    , m_onClick(std::move(onClick))
{
}

void ItemRow::setFaces(std::vector<StatusNotifierItem::Face> leftToRight)
{
    resize(leftToRight.size());
    auto face = leftToRight.rbegin();
    for (const auto& item : m_items)
        item->item().setFace(std::move(*face++));
    registerNext();
}

void ItemRow::setWatcher(const QString& owner)
{
    m_watcher = owner;
    m_gap.reset();
    registerNext();
}

void ItemRow::resize(std::size_t count)
{
    while (m_items.size() > count) {
        if (m_registering == m_items.back().get())
            m_registering = nullptr;
        m_items.pop_back();
    }
    while (m_items.size() < count) {
        RegisteredItem::Identity identity{m_busAddress, ++m_made, idOf(m_items.size())};
        m_items.push_back(
            std::make_unique<RegisteredItem>(m_worker, std::move(identity), m_menu, m_onClick));
    }
}

void ItemRow::registerNext()
{
    if (m_watcher.isEmpty() || m_registering != nullptr || m_gap)
        return;
    const auto next = std::ranges::find_if(
        m_items, [this](const auto& item) { return !item->isRegisteredWith(m_watcher); });
    if (next == m_items.end())
        return;
    m_registering = next->get();
    m_registering->registerWith(m_watcher, [this] { onRegistered(); });
}

void ItemRow::onRegistered()
{
    m_registering = nullptr;
    const bool areAllThere = std::ranges::all_of(
        m_items, [this](const auto& item) { return item->isRegisteredWith(m_watcher); });
    if (areAllThere || m_watcher.isEmpty())
        return;
    m_gap = m_clock.after(gap, [this] {
        m_gap.reset();
        registerNext();
    });
}

} // namespace vellumor
