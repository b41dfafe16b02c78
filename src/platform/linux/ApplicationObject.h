#pragma once

#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <string>

namespace vellumor {

// The interface org.freedesktop.Application, by which the desktop and a second start reach the
// running copy.
class ApplicationObject : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    using OnActivate = std::function<void(const std::string& activationToken)>;

    explicit ApplicationObject(OnActivate onActivate)
        : m_onActivate(std::move(onActivate))
    {
    }

public Q_SLOTS:
    Q_SCRIPTABLE void Activate(const QVariantMap& platformData) { activate(platformData); }
    // There are no documents and no actions, so both only bring the program to the front.
    Q_SCRIPTABLE void Open(const QStringList&, const QVariantMap& platformData)
    {
        activate(platformData);
    }
    Q_SCRIPTABLE void ActivateAction(const QString&, const QVariantList&,
                                     const QVariantMap& platformData)
    {
        activate(platformData);
    }

private:
    void activate(const QVariantMap& platformData)
    {
        m_onActivate(
            platformData.value(QStringLiteral("activation-token")).toString().toStdString());
    }

    OnActivate m_onActivate;
};

} // namespace vellumor
