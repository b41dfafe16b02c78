#pragma once

#include <QDBusArgument>
#include <QDBusVariant>
#include <QList>
#include <QMetaType>
#include <QStringList>
#include <QVariantMap>

namespace vellumor {

// What com.canonical.dbusmenu sends and takes.

// (ia{sv}): an entry's number and its properties.
struct MenuProperties {
    int id = 0;
    QVariantMap properties;
};

// (ias): an entry's number and the names of properties that it has no more.
struct MenuRemovals {
    int id = 0;
    QStringList names;
};

// (ia{sv}av): an entry with what lies below it.
struct MenuLayout {
    int id = 0;
    QVariantMap properties;
    QList<MenuLayout> children;
};

// (isvu): what has happened to an entry, and when.
struct MenuEvent {
    int id = 0;
    QString event;
    QDBusVariant data;
    uint timestamp = 0;
};

QDBusArgument& operator<<(QDBusArgument& argument, const MenuProperties& entry);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuProperties& entry);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuRemovals& entry);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuRemovals& entry);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuLayout& entry);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuLayout& entry);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& event);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& event);
void registerMenuTypes(); // once before any of these is sent or taken

} // namespace vellumor

Q_DECLARE_METATYPE(vellumor::MenuProperties)
Q_DECLARE_METATYPE(vellumor::MenuRemovals)
Q_DECLARE_METATYPE(vellumor::MenuLayout)
Q_DECLARE_METATYPE(vellumor::MenuEvent)
