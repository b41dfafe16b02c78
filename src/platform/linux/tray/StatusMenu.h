#pragma once

#include "platform/StatusItem.h"
#include "platform/linux/tray/MenuTypes.h"

#include <QDBusContext>
#include <QObject>

#include <vector>

namespace vellumor {

// The item's menu on the bus, com.canonical.dbusmenu: panels fetch it, show it themselves, and tell
// what was clicked. The entries never change. Entry 0 is the menu, its entries count from 1.
// Whatever comes in from outside is answered with what is known of it, or with an error.
class StatusMenu final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version CONSTANT)
    Q_PROPERTY(QString TextDirection READ textDirection)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath CONSTANT)

public:
    explicit StatusMenu(std::vector<StatusItem::MenuEntry> entries);

    [[nodiscard]] uint version() const { return 3; }
    [[nodiscard]] QString textDirection() const;
    [[nodiscard]] QString status() const { return QStringLiteral("normal"); }
    [[nodiscard]] QStringList iconThemePath() const { return {}; }

public Q_SLOTS:
    // `depth`: how many levels below `parent` are told; all of them if negative.
    Q_SCRIPTABLE uint GetLayout(int parent, int depth, const QStringList& names,
                                vellumor::MenuLayout& layout);
    // Of all entries when there are no ids; each is told once.
    Q_SCRIPTABLE QList<vellumor::MenuProperties> GetGroupProperties(const QList<int>& ids,
                                                                    const QStringList& names);
    Q_SCRIPTABLE QDBusVariant GetProperty(int id, const QString& name);
    Q_SCRIPTABLE void Event(int id, const QString& event, const QDBusVariant& data, uint timestamp);
    // Gives the ids that are not known. An entry is clicked once, however often it comes in one
    // call.
    Q_SCRIPTABLE QList<int> EventGroup(const QList<vellumor::MenuEvent>& events);
    Q_SCRIPTABLE bool AboutToShow(int id);
    Q_SCRIPTABLE QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& unknown);

Q_SIGNALS:
    // Part of the interface; nothing changes here that would need them.
    Q_SCRIPTABLE void ItemsPropertiesUpdated(const QList<vellumor::MenuProperties>& updated,
                                             const QList<vellumor::MenuRemovals>& removed);
    Q_SCRIPTABLE void LayoutUpdated(uint revision, int parent);
    Q_SCRIPTABLE void ItemActivationRequested(int id, uint timestamp);

private:
    [[nodiscard]] bool isKnown(int id) const;
    [[nodiscard]] QVariantMap propertiesOf(int id, const QStringList& names) const;
    [[nodiscard]] MenuLayout layoutOf(int id, int depth, const QStringList& names) const;
    void click(int id);
    void refuse(const QString& why);

    std::vector<StatusItem::MenuEntry> m_entries;
};

} // namespace vellumor
