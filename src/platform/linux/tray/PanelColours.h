#pragma once

#include "platform/linux/ColourScheme.h"
#include "platform/linux/tray/TrayOwner.h"

#include <QColor>
#include <QObject>

#include <functional>
#include <optional>

namespace vellumor {

// The colour in which the label is drawn, since no panel tells it to its items: that of X11's tray,
// else what fits the desktop's colour scheme, else what fits the program's own windows. Main thread
// only.
class PanelColours final : public QObject {
    Q_OBJECT

public:
    // `tray` outlives this.
    PanelColours(const TrayOwner& tray, QDBusConnection bus);
    ~PanelColours() override;

    // Once. `onChange` is called when the scheme or the palette has changed; whoever has started
    // the tray's owner hears of its changes itself.
    void start(std::function<void()> onChange);

    // `isUsuallyDark`: what is known of this kind of panel; without it the program's own windows
    // decide where nobody tells.
    [[nodiscard]] QColor foreground(std::optional<bool> isUsuallyDark) const;

    // `tray`: the tray's own.
    [[nodiscard]] static QColor foregroundFor(std::optional<QColor> tray,
                                              std::optional<bool> prefersDark,
                                              bool isDarkOtherwise);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    const TrayOwner& m_tray;
    ColourScheme m_scheme;
    std::function<void()> m_onChange;
};

} // namespace vellumor
