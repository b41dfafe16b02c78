#pragma once

#include "ui/model/settings/AccountsContent.h"

#include <QWidget>

#include <vector>

class QCheckBox;
class QLineEdit;

namespace vellumor {

class DragHandle;
class PlainText;
class SymbolButton;

// One account in the settings, with everything that can be changed about it.
class AccountRow final : public QWidget {
    Q_OBJECT

public:
    explicit AccountRow(QWidget* parent);

    void setContent(const AccountRowContent& content);
    [[nodiscard]] DragHandle& handle() const { return *m_handle; }
    // What takes the focus, in the order of the Tab key.
    [[nodiscard]] std::vector<QWidget*> controls() const;

signals:
    void trackedChanged(bool tracked);
    void pinnedChanged(bool pinned);
    void renamed(const std::string& name);
    void serviceChanged(const std::string& service);
    void removalAsked();

protected:
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void makeControls();
    void makeService();
    void showMenu();
    void drawSymbols();
    void setPin(const AccountRowContent& content);
    void fitServiceNote();

    AccountRowContent m_content;
    DragHandle* m_handle;
    QLineEdit* m_name;
    PlainText* m_status;
    QCheckBox* m_tracked;
    SymbolButton* m_pin;
    SymbolButton* m_more;
    QWidget* m_serviceBlock;
    QLineEdit* m_service;
    PlainText* m_serviceNote;
};

} // namespace vellumor
