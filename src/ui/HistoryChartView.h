#pragma once

#include "ui/Theme.h"
#include "ui/model/HistoryContent.h"

#include <QWidget>

namespace vellumor {

// Seven days of one limit as an area under a line. Where nothing was watched there is no line.
class HistoryChartView final : public QWidget {
    Q_OBJECT

public:
    explicit HistoryChartView(QWidget* parent);

    void setContent(const HistoryChartContent& content, const std::vector<double>& dayBoundaries,
                    const Theme& theme);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QPointF place(const HistoryChart::Point& point) const;
    [[nodiscard]] double onPixel(double x) const;
    void paintSegment(QPainter& painter, const HistoryChart::Points& points) const;
    void paintTicks(QPainter& painter) const;

    HistoryChartContent m_content;
    std::vector<double> m_days;
    Theme m_theme;
};

} // namespace vellumor
