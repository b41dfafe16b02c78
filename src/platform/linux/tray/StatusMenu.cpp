#include "platform/linux/tray/StatusMenu.h"

#include <QDBusError>
#include <QGuiApplication>

#include <set>

namespace vellumor {

namespace {

constexpr int root = 0;
constexpr uint revision = 1;
const auto clicked = QStringLiteral("clicked");

// An underscore marks the letter to press; two are one to be seen.
QString escaped(const std::string& text)
{
    return QString::fromStdString(text).replace(QLatin1Char('_'), QLatin1String("__"));
}

QStringList shortcutOf(const StatusItem::MenuEntry& entry)
{
    QStringList keys;
    for (const std::string& key : entry.shortcut)
        keys.append(QString::fromStdString(key));
    return keys;
}

QVariantMap allPropertiesOf(const StatusItem::MenuEntry& entry)
{
    QVariantMap properties{{QStringLiteral("enabled"), true}, {QStringLiteral("visible"), true}};
    if (entry.text.empty()) {
        properties.insert(QStringLiteral("type"), QStringLiteral("separator"));
        return properties;
    }
    properties.insert(QStringLiteral("label"), escaped(entry.text));
    if (!entry.shortcut.empty())
        properties.insert(QStringLiteral("shortcut"),
                          QVariant::fromValue(QList<QStringList>{shortcutOf(entry)}));
    return properties;
}

} // namespace

StatusMenu::StatusMenu(std::vector<StatusItem::MenuEntry> entries)
    : m_entries(std::move(entries))
{
    registerMenuTypes();
}

QString StatusMenu::textDirection() const
{
    return QGuiApplication::isRightToLeft() ? QStringLiteral("rtl") : QStringLiteral("ltr");
}

uint StatusMenu::GetLayout(int parent, int depth, const QStringList& names, MenuLayout& layout)
{
    if (!isKnown(parent)) {
        refuse(QStringLiteral("no such entry"));
        return 0;
    }
    layout = layoutOf(parent, depth, names);
    return revision;
}

QList<MenuProperties> StatusMenu::GetGroupProperties(const QList<int>& ids,
                                                     const QStringList& names)
{
    std::set<int> wanted(ids.begin(), ids.end());
    QList<MenuProperties> found;
    for (int id = root; isKnown(id); ++id) {
        if (ids.isEmpty() || wanted.contains(id))
            found.append({id, propertiesOf(id, names)});
    }
    return found;
}

QDBusVariant StatusMenu::GetProperty(int id, const QString& name)
{
    const QVariantMap properties = isKnown(id) ? propertiesOf(id, {name}) : QVariantMap();
    if (properties.isEmpty()) {
        refuse(QStringLiteral("no such property"));
        return QDBusVariant(QString());
    }
    return QDBusVariant(properties.first());
}

void StatusMenu::Event(int id, const QString& event, const QDBusVariant&, uint)
{
    if (!isKnown(id))
        refuse(QStringLiteral("no such entry"));
    else if (event == clicked)
        click(id);
}

QList<int> StatusMenu::EventGroup(const QList<MenuEvent>& events)
{
    QList<int> unknown;
    std::set<int> clicks;
    for (const MenuEvent& event : events) {
        if (!isKnown(event.id))
            unknown.append(event.id);
        else if (event.event == clicked && clicks.insert(event.id).second)
            click(event.id);
    }
    if (!events.isEmpty() && unknown.size() == events.size())
        refuse(QStringLiteral("no such entries"));
    return unknown;
}

bool StatusMenu::AboutToShow(int id)
{
    if (!isKnown(id))
        refuse(QStringLiteral("no such entry"));
    return false;
}

QList<int> StatusMenu::AboutToShowGroup(const QList<int>& ids, QList<int>& unknown)
{
    for (const int id : ids) {
        if (!isKnown(id))
            unknown.append(id);
    }
    if (!ids.isEmpty() && unknown.size() == ids.size())
        refuse(QStringLiteral("no such entries"));
    return {};
}

bool StatusMenu::isKnown(int id) const
{
    return id >= root && static_cast<std::size_t>(id) <= m_entries.size();
}

QVariantMap StatusMenu::propertiesOf(int id, const QStringList& names) const
{
    QVariantMap properties{{QStringLiteral("children-display"), QStringLiteral("submenu")}};
    if (id != root)
        properties = allPropertiesOf(m_entries[static_cast<std::size_t>(id) - 1]);
    if (names.isEmpty())
        return properties;
    QVariantMap chosen;
    for (const QString& name : names) {
        if (properties.contains(name))
            chosen.insert(name, properties.value(name));
    }
    return chosen;
}

MenuLayout StatusMenu::layoutOf(int id, int depth, const QStringList& names) const
{
    MenuLayout layout{id, propertiesOf(id, names), {}};
    for (int child = root + 1; id == root && depth != 0 && isKnown(child); ++child)
        layout.children.append({child, propertiesOf(child, names), {}});
    return layout;
}

// Later, so that the panel has its answer even if the action ends the program.
void StatusMenu::click(int id)
{
    if (id == root)
        return;
    if (const auto& action = m_entries[static_cast<std::size_t>(id) - 1].action)
        QMetaObject::invokeMethod(this, action, Qt::QueuedConnection);
}

void StatusMenu::refuse(const QString& why)
{
    if (calledFromDBus())
        sendErrorReply(QDBusError::InvalidArgs, why);
}

} // namespace vellumor
