#pragma once

#include <QDialog>

class QHBoxLayout;
class QPushButton;
class QVBoxLayout;

namespace vellumor {

class PlainText;

// A small window over the settings, with a heading, a text, whatever it asks for, and its buttons
// at the bottom right. It goes away when it is closed.
class Sheet : public QDialog {
    Q_OBJECT

public:
    explicit Sheet(QWidget* parent);

protected:
    void setHeading(const std::string& heading, const std::string& text);
    // Between the text and the buttons.
    [[nodiscard]] QVBoxLayout& content() { return *m_content; }
    // From left to right.
    QPushButton* addButton(const char* title);
    // A text of its own width, that breaks into lines.
    PlainText* addText();
    void showText(PlainText& line, const std::string& text);

private:
    PlainText* m_heading;
    PlainText* m_text;
    QVBoxLayout* m_content;
    QHBoxLayout* m_buttons;
};

} // namespace vellumor
