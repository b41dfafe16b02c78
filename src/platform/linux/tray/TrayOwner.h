#pragma once

#include <QAbstractNativeEventFilter>
#include <QColor>
#include <QImage>
#include <QObject>
#include <qwindowdefs.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

struct xcb_connection_t;

namespace vellumor {

// The tray of X11, into which a program's own window is taken: the window that owns the selection
// _NET_SYSTEM_TRAY_S0, now or later. Without X11 there is none. All of xcb is here. Main thread
// only.
class TrayOwner final : public QObject, public QAbstractNativeEventFilter {
    Q_OBJECT

public:
    struct Callbacks {
        std::function<void()> onOwner;    // another one, or none any more
        std::function<void()> onColours;  // of the same one
        std::function<void(WId)> onTaken; // a window that has asked for its place has got it
    };

    TrayOwner();
    ~TrayOwner() override;

    // Once. Calls back from the event loop.
    void start(Callbacks callbacks);

    [[nodiscard]] bool exists() const { return m_window != 0; }
    // The colour in which the tray wants its icons.
    [[nodiscard]] std::optional<QColor> foreground() const;
    // Whether windows in it may be translucent.
    [[nodiscard]] bool hasAlpha() const;

    // Asks for a place for the window, which is not shown yet.
    void dock(WId window);
    // What lies behind an opaque window of the tray. The window is emptied by this.
    [[nodiscard]] QImage background(WId window, QSize pixels) const;

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    struct Atoms;

    void look();
    void lookLater();
    [[nodiscard]] bool follow(std::uint32_t window) const;
    [[nodiscard]] std::uint32_t rootWindow() const;
    [[nodiscard]] std::vector<std::uint32_t> cardinals(std::uint32_t atom,
                                                       std::uint32_t type) const;

    xcb_connection_t* m_connection = nullptr; // nothing without X11
    std::unique_ptr<Atoms> m_atoms;
    Callbacks m_callbacks;
    std::uint32_t m_window = 0;
};

} // namespace vellumor
