#pragma once

#include "platform/linux/tray/BusPicture.h"

#include <QDBusObjectPath>
#include <QObject>
#include <QPoint>

#include <functional>
#include <string>

namespace vellumor {

// One item of the panel on the bus, org.kde.StatusNotifierItem. Signals tell what has changed, and
// nothing else.
class StatusNotifierItem final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ id CONSTANT)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(int WindowId READ windowId CONSTANT)
    Q_PROPERTY(QString IconName READ iconName)
    Q_PROPERTY(QString IconAccessibleDesc READ title)
    Q_PROPERTY(QList<vellumor::BusPicture> IconPixmap READ iconPixmap)
    Q_PROPERTY(vellumor::BusToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)

public:
    struct Face {
        BusPictures pictures;
        QString iconName; // wins over the pictures where it is installed
        QString text;
        QString toolTip; // the same text, as the host wants it

        bool operator==(const Face&) const = default;
    };
    // `position` as the host gives it. Called after the host has its answer.
    using OnClick = std::function<void(QPoint position, const std::string& activationToken)>;

    static constexpr auto objectPath = "/StatusNotifierItem";
    static constexpr auto menuPath = "/MenuBar";

    StatusNotifierItem(QString id, OnClick onClick);

    void setFace(Face face);

    [[nodiscard]] QString category() const { return QStringLiteral("ApplicationStatus"); }
    [[nodiscard]] QString id() const { return m_id; }
    [[nodiscard]] QString title() const { return m_face.text; }
    [[nodiscard]] QString status() const { return QStringLiteral("Active"); }
    [[nodiscard]] int windowId() const { return 0; }
    [[nodiscard]] QString iconName() const { return m_face.iconName; }
    [[nodiscard]] BusPictures iconPixmap() const { return m_face.pictures; }
    [[nodiscard]] BusToolTip toolTip() const { return {{}, {}, m_face.toolTip, {}}; }
    [[nodiscard]] bool itemIsMenu() const { return false; }
    [[nodiscard]] QDBusObjectPath menu() const { return QDBusObjectPath(menuPath); }

public Q_SLOTS:
    Q_SCRIPTABLE void Activate(int x, int y);
    Q_SCRIPTABLE void SecondaryActivate(int x, int y);
    // Hosts show the menu on the bus themselves.
    Q_SCRIPTABLE void ContextMenu(int, int) {}
    Q_SCRIPTABLE void Scroll(int, const QString&) {}
    // For the window that the next click opens.
    Q_SCRIPTABLE void ProvideXdgActivationToken(const QString& token);

Q_SIGNALS:
    Q_SCRIPTABLE void NewIcon();
    Q_SCRIPTABLE void NewTitle();
    Q_SCRIPTABLE void NewToolTip();

private:
    QString m_id;
    OnClick m_onClick;
    Face m_face;
    std::string m_activationToken;
};

} // namespace vellumor
