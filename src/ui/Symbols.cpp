#include "ui/Symbols.h"

#include <QIcon>
#include <QPainter>

namespace vellumor::Symbols {

namespace {

// The names of freedesktop's naming specification, as symbolic icons.
QString themeName(Symbol symbol)
{
    switch (symbol) {
    case Symbol::history:
        return QStringLiteral("document-open-recent-symbolic");
    case Symbol::refresh:
        return QStringLiteral("view-refresh-symbolic");
    case Symbol::settings:
        return QStringLiteral("emblem-system-symbolic");
    case Symbol::dismiss:
        return QStringLiteral("window-close-symbolic");
    case Symbol::warning:
        return QStringLiteral("dialog-warning-symbolic");
    case Symbol::menuBar:
        return QStringLiteral("preferences-desktop-display-symbolic");
    case Symbol::about:
        return QStringLiteral("help-about-symbolic");
    case Symbol::back:
        return QStringLiteral("go-previous-symbolic");
    case Symbol::accounts:
        return QStringLiteral("system-users-symbolic");
    case Symbol::usage:
        return QStringLiteral("utilities-system-monitor-symbolic");
    case Symbol::notifications:
        return QStringLiteral("preferences-system-notifications-symbolic");
    case Symbol::privacy:
        return QStringLiteral("preferences-system-privacy-symbolic");
    case Symbol::handle:
        return QStringLiteral("open-menu-symbolic");
    case Symbol::pinned:
        return QStringLiteral("view-pin-symbolic");
    case Symbol::unpinned:
        return QStringLiteral("vellumor-unpinned-symbolic");
    case Symbol::more:
        return QStringLiteral("view-more-symbolic");
    }
    return {};
}

} // namespace

QPixmap pixmap(Symbol symbol, int points, const QColor& colour, double scale)
{
    const QString name = themeName(symbol);
    const QIcon own(QStringLiteral(":/icons/%1.svg").arg(name));
    const int pixels = qRound(points * scale);
    // A theme that has the symbol in colours alone gives that one, which would become a blot.
    const QIcon themed = QIcon::fromTheme(name);
    QPixmap drawn;
    if (themed.name() == name)
        drawn = themed.pixmap(QSize(pixels, pixels), 1.0);
    if (drawn.isNull())
        drawn = own.pixmap(QSize(pixels, pixels), 1.0);
    QPixmap coloured(pixels, pixels);
    coloured.fill(Qt::transparent);
    QPainter painter(&coloured);
    painter.drawPixmap((pixels - drawn.width()) / 2, (pixels - drawn.height()) / 2, drawn);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(coloured.rect(), colour);
    painter.end();
    coloured.setDevicePixelRatio(scale);
    return coloured;
}

} // namespace vellumor::Symbols
