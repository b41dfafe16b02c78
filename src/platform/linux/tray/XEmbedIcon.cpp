#include "platform/linux/tray/XEmbedIcon.h"

#include "platform/linux/tray/BusPicture.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace vellumor {

namespace {

// As a menu shows it; nothing but its text, since the keys work in no window of the tray.
QString shortcutText(const std::vector<std::string>& keys)
{
    QString text;
    for (const std::string& key : keys) {
        QString name = QString::fromStdString(key);
        if (name == QLatin1String("Control"))
            name = QStringLiteral("Ctrl");
        else if (name == QLatin1String("comma"))
            name = QStringLiteral(",");
        if (name.size() == 1)
            name = name.toUpper();
        text += (text.isEmpty() ? QString() : QStringLiteral("+")) + name;
    }
    return text;
}

} // namespace

XEmbedIcon::XEmbedIcon(TrayOwner& tray, const std::vector<StatusItem::MenuEntry>& entries,
                       OnClick onClick)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint)
    , m_tray(tray)
    , m_onClick(std::move(onClick))
{
    setAttribute(Qt::WA_AlwaysShowToolTips);
    setAttribute(Qt::WA_QuitOnClose, false);
    setAttribute(Qt::WA_TranslucentBackground, m_tray.hasAlpha());
    for (const auto& entry : entries)
        addEntry(entry);
    m_tray.dock(winId());
}

void XEmbedIcon::setLabel(const StatusLabel& label, const QColor& tint)
{
    for (std::size_t i = 0; i < m_pictures.size(); ++i)
        m_pictures[i] = tinted(label.whole[i], tint);
    m_size = label.whole[0].deviceIndependentSize().toSize();
    setMinimumSize(m_size); // which is what a tray goes by
    const QString text = QString::fromStdString(label.text);
    setAccessibleName(text);
    setWindowTitle(text);
    m_background = QImage();
    update();
}

void XEmbedIcon::onTaken(WId window)
{
    if (window == winId())
        show();
}

bool XEmbedIcon::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        // Names are no markup, whatever they look like.
        const auto* help = static_cast<QHelpEvent*>(event);
        QToolTip::showText(help->globalPos(),
                           QStringLiteral("<p style='white-space:pre'>%1</p>")
                               .arg(accessibleName().toHtmlEscaped()),
                           this);
        return true;
    }
    return QWidget::event(event);
}

// Something else lies behind it now; and while it reached out of the screen, nothing could be seen.
void XEmbedIcon::moveEvent(QMoveEvent*)
{
    m_background = QImage();
    update();
}

void XEmbedIcon::paintEvent(QPaintEvent*)
{
    const auto scale = static_cast<std::size_t>(std::ceil(devicePixelRatioF()));
    const QImage& picture = m_pictures[std::clamp(scale, std::size_t{1}, m_pictures.size()) - 1];
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    drawBackground(painter);
    QSize shown = m_size;
    if (shown.width() > width() || shown.height() > height())
        shown.scale(size(), Qt::KeepAspectRatio);
    const QPoint corner((width() - shown.width()) / 2, (height() - shown.height()) / 2);
    painter.drawImage(QRect(corner, shown), picture);
}

void XEmbedIcon::drawBackground(QPainter& painter)
{
    if (testAttribute(Qt::WA_TranslucentBackground)) {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(rect(), Qt::transparent);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        return;
    }
    const QSize pixels = size() * devicePixelRatioF();
    if (m_background.size() != pixels)
        m_background = m_tray.background(winId(), pixels);
    if (!m_background.isNull())
        painter.drawImage(rect(), m_background);
}

void XEmbedIcon::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::RightButton)
        m_menu.popup(event->globalPosition().toPoint());
    else if (event->button() == Qt::LeftButton || event->button() == Qt::MiddleButton)
        m_onClick(QRect((event->globalPosition() - event->position()).toPoint(), size()));
}

void XEmbedIcon::addEntry(const StatusItem::MenuEntry& entry)
{
    if (entry.text.empty()) {
        m_menu.addSeparator();
        return;
    }
    QString text =
        QString::fromStdString(entry.text).replace(QLatin1Char('&'), QLatin1String("&&"));
    if (!entry.shortcut.empty())
        text += QLatin1Char('\t') + shortcutText(entry.shortcut);
    connect(m_menu.addAction(text), &QAction::triggered, this, [action = entry.action] {
        if (action)
            action();
    });
}

} // namespace vellumor
