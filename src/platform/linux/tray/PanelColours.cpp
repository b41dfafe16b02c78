#include "platform/linux/tray/PanelColours.h"

#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace vellumor {

namespace {

constexpr QRgb onDark = 0xffeeeeec;
constexpr QRgb onLight = 0xff2e3436;
constexpr int midLightness = 128; // of 255

} // namespace

PanelColours::PanelColours(const TrayOwner& tray, QDBusConnection bus)
    : m_tray(tray)
    , m_scheme(std::move(bus))
{
}

PanelColours::~PanelColours() = default;

void PanelColours::start(std::function<void()> onChange)
{
    m_onChange = std::move(onChange);
    qApp->installEventFilter(this);
    m_scheme.start([this] { m_onChange(); });
}

QColor PanelColours::foreground(std::optional<bool> isUsuallyDark) const
{
    const QColor window = QGuiApplication::palette().color(QPalette::Window);
    return foregroundFor(m_tray.foreground(), m_scheme.prefersDark(),
                         isUsuallyDark.value_or(window.lightness() < midLightness));
}

QColor PanelColours::foregroundFor(std::optional<QColor> tray, std::optional<bool> prefersDark,
                                   bool isDarkOtherwise)
{
    if (tray)
        return *tray;
    const bool isDark = prefersDark.value_or(isDarkOtherwise);
    return QColor::fromRgb(isDark ? onDark : onLight);
}

bool PanelColours::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange)
        m_onChange();
    return false;
}

} // namespace vellumor
