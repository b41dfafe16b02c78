#pragma once

#include "platform/StatusItem.h"
#include "platform/linux/tray/TrayOwner.h"

#include <QColor>
#include <QImage>
#include <QMenu>
#include <QWidget>

#include <functional>

namespace vellumor {

// The label as a window of its own inside X11's tray, at its full width. It belongs to the tray
// that was there when it was made, and is made anew for the next one.
class XEmbedIcon final : public QWidget {
    Q_OBJECT

public:
    using OnClick = std::function<void(const QRect& anchor)>;

    // `tray` exists, and outlives this.
    XEmbedIcon(TrayOwner& tray, const std::vector<StatusItem::MenuEntry>& entries, OnClick onClick);

    void setLabel(const StatusLabel& label, const QColor& tint);
    // Only now is there anything to be drawn on.
    void onTaken(WId window);

    [[nodiscard]] QSize sizeHint() const override { return m_size; }

protected:
    bool event(QEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void addEntry(const StatusItem::MenuEntry& entry);
    void drawBackground(QPainter& painter);

    TrayOwner& m_tray;
    OnClick m_onClick;
    QMenu m_menu;
    StatusLabel::Scales m_pictures; // in the panel's colour
    QSize m_size;                   // in points
    QImage m_background;            // of an opaque window
};

} // namespace vellumor
