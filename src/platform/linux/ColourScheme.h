#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include <functional>
#include <optional>

namespace vellumor {

// Whether the user wants a dark desktop, as the settings portal tells it. Where there is no portal,
// or the user has no wish, it knows nothing. Main thread only.
class ColourScheme final : public QObject {
    Q_OBJECT

public:
    explicit ColourScheme(QDBusConnection bus = QDBusConnection::sessionBus());

    // Once. `onChange` is called when the first answer or a change differs from what was known.
    void start(std::function<void()> onChange);

    [[nodiscard]] std::optional<bool> prefersDark() const { return m_prefersDark; }

private slots:
    void onSettingChanged(const QDBusMessage& message);
    void onOwnerChanged(const QDBusMessage& message);

private:
    void ask();
    void take(std::optional<bool> prefersDark);

    QDBusConnection m_bus;
    std::function<void()> m_onChange;
    std::optional<bool> m_prefersDark;
};

} // namespace vellumor
