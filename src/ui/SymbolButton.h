#pragma once

#include "ui/FlatButton.h"
#include "ui/Symbols.h"

namespace vellumor {

// A flat symbol of 16 points in a target of 24, with a tooltip that is its accessible name too; and
// with its text beside it, if it has one.
class SymbolButton : public FlatButton {
    Q_OBJECT

public:
    SymbolButton(Symbols::Symbol symbol, QWidget* parent);

    void setSymbol(Symbols::Symbol symbol);
    void setHelp(const std::string& help);
    void setColour(const QColor& colour);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    Symbols::Symbol m_symbol;
    QColor m_colour;
    QPixmap m_drawn; // in m_colour and the screen's scale; null until needed
};

} // namespace vellumor
