#pragma once

#include <QGridLayout>

#include <initializer_list>
#include <string>

class QAbstractButton;
class QCheckBox;
class QLabel;

namespace vellumor {

class PlainText;

// Lays out a page: right-aligned labels in one column, controls on one left edge beside them, and
// explanations small and dimmed under their controls. Without labels the controls begin at the
// left.
class SettingsForm {
public:
    // `labels`: those that will be used, so that the widest fits.
    SettingsForm(QWidget* page, std::initializer_list<const char*> labels);

    // Room before what comes next.
    void section();
    // Under `label`, or on the controls' edge when it is empty. The label is the control's buddy.
    void add(const char* label, QWidget* control);
    // The label stands beside their first row, which is so many points high.
    void add(const char* label, QLayout* controls, int firstRow);
    // A little room.
    void gap();
    // Under `button`, on the edge of its title.
    void help(QAbstractButton& button, const char* text);
    // Text under a control.
    PlainText* note(const std::string& text = {});
    PlainText* text(const std::string& text = {}); // not dimmed
    // With its explanation, if it is not empty.
    QCheckBox* toggle(const char* label, const char* title, const char* help);
    // Room at the bottom, so that all stays at the top.
    void end();

    // From the controls' edge to the title of this check box or choice.
    [[nodiscard]] int titleIndent(const QAbstractButton& button) const;
    [[nodiscard]] int controlWidth() const { return m_controlWidth; }

private:
    QLabel* addLabel(const char* label, QWidget* buddy);
    PlainText* addText(const std::string& text, int left);

    QWidget* m_page;
    QGridLayout* m_grid;
    int m_controlWidth;
    int m_row = 0;
};

// As the text of a button, where an ampersand alone would mark a key.
[[nodiscard]] QString buttonText(const std::string& text);

} // namespace vellumor
