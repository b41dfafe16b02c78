#include "ui/settings/AccountRow.h"

#include "base/Text.h"
#include "ui/Accessibility.h"
#include "ui/PlainText.h"
#include "ui/SymbolButton.h"
#include "ui/Theme.h"
#include "ui/settings/DragHandle.h"
#include "ui/settings/SettingsMetrics.h"
#include "ui/settings/ShowChecked.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenu>
#include <QVBoxLayout>

#include <algorithm>

namespace vellumor {

namespace {

constexpr const char* serviceHelp =
    "Only needed if Vellumor can't find this account's sign-in token";

// Not what the user is about to type.
void setUnlessEdited(QLineEdit& edit, const std::string& text)
{
    const QString whole = QString::fromStdString(text);
    if (edit.text() == whole || (edit.hasFocus() && edit.isModified()))
        return;
    edit.setText(whole);
    edit.setCursorPosition(0);
}

void setHelp(QWidget& widget, const QString& help)
{
    widget.setToolTip(help);
    widget.setAccessibleDescription(help);
}

} // namespace

AccountRow::AccountRow(QWidget* parent)
    : QWidget(parent)
    , m_handle(new DragHandle(this))
    , m_name(new QLineEdit(this))
    , m_status(new PlainText(this))
    , m_tracked(new QCheckBox(this))
    , m_pin(new SymbolButton(Symbols::Symbol::unpinned, this))
    , m_more(new SymbolButton(Symbols::Symbol::more, this))
    , m_serviceBlock(new QWidget(this))
    , m_service(new QLineEdit(m_serviceBlock))
    , m_serviceNote(new PlainText(m_serviceBlock, PlainText::pageLines))
{
    Accessibility::setRole(*this, QAccessible::Grouping);
    makeControls();
    makeService();
    connect(m_tracked, &QCheckBox::toggled, this, &AccountRow::trackedChanged);
    connect(m_pin, &QAbstractButton::clicked, this,
            [this] { emit pinnedChanged(!m_content.isPinned); });
    connect(m_more, &QAbstractButton::clicked, this, &AccountRow::showMenu);
    connect(m_name, &QLineEdit::editingFinished, this, [this] {
        m_name->setModified(false);
        const std::string typed = m_name->text().toStdString();
        const std::string name(Text::trimmed(typed));
        emit renamed(name);
        setUnlessEdited(*m_name, name.empty() ? m_content.name : name); // a blank name is none
    });
    connect(m_service, &QLineEdit::editingFinished, this, [this] {
        m_service->setModified(false);
        const std::string typed = m_service->text().toStdString();
        const std::string service(Text::trimmed(typed));
        if (service != m_content.service)
            emit serviceChanged(service);
        else
            setUnlessEdited(*m_service, service);
    });
}

std::vector<QWidget*> AccountRow::controls() const
{
    return {m_handle, m_name, m_tracked, m_pin, m_more, m_service};
}

void AccountRow::makeControls()
{
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, SettingsMetrics::step, 0, SettingsMetrics::step);
    column->setSpacing(SettingsMetrics::step);
    auto* const line = new QHBoxLayout;
    line->setSpacing(2 * SettingsMetrics::step);
    line->addWidget(m_handle);
    line->addWidget(m_name, 1);
    line->addWidget(m_status);
    line->addWidget(m_tracked);
    line->addWidget(m_pin);
    line->addWidget(m_more);
    column->addLayout(line);
    column->addWidget(m_serviceBlock);
    m_handle->setHelp("Move");
    m_name->setAccessibleName(QStringLiteral("Name"));
    m_name->setPlaceholderText(QStringLiteral("Name"));
    m_status->setDimmed();
    m_more->setHelp("More actions");
}

void AccountRow::makeService()
{
    auto* const grid = new QGridLayout(m_serviceBlock);
    grid->setContentsMargins(m_handle->width() + 2 * SettingsMetrics::step, 0, 0,
                             SettingsMetrics::step);
    grid->setVerticalSpacing(SettingsMetrics::step);
    auto* const label = new QLabel(QStringLiteral("Keychain service (advanced)"), m_serviceBlock);
    label->setBuddy(m_service);
    m_service->setAccessibleName(label->text());
    m_service->setPlaceholderText(QStringLiteral("(auto)"));
    setHelp(*m_service, QString::fromUtf8(serviceHelp));
    m_serviceNote->setFont(SettingsMetrics::secondary(font()));
    m_serviceNote->setDimmed();
    grid->addWidget(label, 0, 0);
    grid->addWidget(m_service, 0, 1);
    grid->addWidget(m_serviceNote, 1, 0, 1, 2);
    grid->setColumnStretch(1, 1);
}

void AccountRow::showMenu()
{
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    connect(menu->addAction(QStringLiteral("Remove from Vellumor…")), &QAction::triggered, this,
            &AccountRow::removalAsked);
    menu->popup(m_more->mapToGlobal(QPoint(0, m_more->height())));
}

void AccountRow::setPin(const AccountRowContent& content)
{
    using Symbols::Symbol;
    const bool isShown = content.isPinned && content.isTracked;
    const Theme theme = Theme::of(palette());
    m_pin->setSymbol(isShown ? Symbol::pinned : Symbol::unpinned);
    m_pin->setColour(isShown ? theme.accent : (content.canPin ? theme.dimmed : theme.track));
    m_pin->setHelp(content.pinHelp);
    m_pin->setEnabled(content.canPin);
}

void AccountRow::setContent(const AccountRowContent& content)
{
    m_content = content;
    setAccessibleName(QString::fromStdString(content.name));
    setUnlessEdited(*m_name, content.name);
    m_name->setToolTip(QStringLiteral("<span>%1</span>")
                           .arg(QString::fromStdString(content.configDir).toHtmlEscaped()));
    m_status->setPlainText(content.status);
    m_status->setVisible(!content.status.empty());
    showChecked(*m_tracked, content.isTracked);
    m_tracked->setAccessibleName(QString::fromStdString(content.trackHelp));
    setHelp(*m_tracked, QString::fromStdString(content.trackHelp));
    setUnlessEdited(*m_service, content.service);
    m_serviceNote->setPlainText(content.serviceNote);
    // One that is being filled in stays.
    m_serviceBlock->setVisible(!content.serviceNote.empty() || m_service->hasFocus());
    fitServiceNote();
    drawSymbols();
}

void AccountRow::drawSymbols()
{
    setPin(m_content);
    m_handle->setColour(Theme::of(palette()).dimmed);
    m_more->setColour(palette().color(QPalette::WindowText));
}

// Of a change a widget learns before those in it do, so each row follows for itself.
void AccountRow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange)
        drawSymbols();
    QWidget::changeEvent(event);
}

// The block is as wide as the row, also while it is hidden; the list above asks for no height that
// depends on a width.
void AccountRow::fitServiceNote()
{
    const int left = m_serviceBlock->layout()->contentsMargins().left();
    m_serviceNote->setFixedHeight(m_serviceNote->heightForWidth(std::max(width() - left, 1)));
}

void AccountRow::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    fitServiceNote();
}

} // namespace vellumor
