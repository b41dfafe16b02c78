#pragma once

#include "ui/PopoverMetrics.h"
#include "ui/Theme.h"

#include <QWidget>

#include <functional>

namespace vellumor {

class PlainText;
class SymbolButton;

// A line of news at the top of the popover that goes away when it is dismissed.
class TransientNoticeBanner final : public QWidget {
    Q_OBJECT

public:
    TransientNoticeBanner(const PopoverMetrics& metrics, QWidget* parent);

    void setContent(const std::string& text, const Theme& theme);
    [[nodiscard]] SymbolButton* dismissButton() const { return m_dismiss; }

    std::function<void()> onDismiss;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    PlainText* m_text;
    SymbolButton* m_dismiss;
    Theme m_theme;
};

} // namespace vellumor
