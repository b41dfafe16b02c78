#pragma once

#include <QColor>
#include <QLabel>

#include <string>

namespace vellumor {

// A text that is shown as it is, whatever it holds: no markup, no line feeds of its own, and never
// wider than its place. It breaks into at most so many lines, and ends in an ellipsis where they do
// not suffice; then the tooltip has all of it. To a screen reader it is a label.
class PlainText final : public QLabel {
    Q_OBJECT

public:
    // The most lines of a sentence where room is scarce, and of one on a page of its own.
    static constexpr int sentenceLines = 3;
    static constexpr int pageLines = 8;

    explicit PlainText(QWidget* parent, int mostLines = 1);

    void setPlainText(const std::string& text); // does nothing when it is the same
    void setColour(const QColor& colour);       // instead of the palette's
    void setDimmed();                           // secondary, in the palette's colours
    // Takes the height that it needs at this width, for layouts that do not ask.
    void fixWidth(int width);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] bool hasHeightForWidth() const override { return m_mostLines > 1; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    struct Lines {
        QStringList texts;
        bool isCut = false;
    };
    [[nodiscard]] Lines lines(int width) const;
    [[nodiscard]] Lines broken(const QString& spaced, int width) const;
    void updateToolTip();
    [[nodiscard]] QColor ink() const;

    int m_mostLines;
    QColor m_colour; // invalid: the palette's
    bool m_isDimmed = false;
};

} // namespace vellumor
