#pragma once

#include "ui/PopoverMetrics.h"
#include "ui/Theme.h"
#include "ui/model/AccountSectionContent.h"

#include <QWidget>

namespace vellumor {

// One limit: title, bar, percent and reset, in columns that line up over all accounts.
class UsageRow final : public QWidget {
    Q_OBJECT

public:
    UsageRow(const PopoverMetrics& metrics, QWidget* parent);

    void setContent(const UsageRowContent& content, const Theme& theme); // repaints if it changed

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void paintPercent(QPainter& painter, const QRect& place) const;
    [[nodiscard]] QColor colour(const QColor& fresh) const;

    const PopoverMetrics& m_metrics;
    UsageRowContent m_content;
    Theme m_theme;
};

} // namespace vellumor
