#pragma once

#include "history/HistoryCoverage.h"
#include "ui/Theme.h"

#include <QWidget>

#include <vector>

namespace vellumor {

// A thin bar over the span: filled where it was watched, dark where it was not.
class CoverageStripView final : public QWidget {
    Q_OBJECT

public:
    explicit CoverageStripView(QWidget* parent);

    void setContent(const std::vector<HistoryCoverage::Segment>& segments, const Theme& theme);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::vector<HistoryCoverage::Segment> m_segments;
    Theme m_theme;
};

} // namespace vellumor
