#include "ui/settings/AccountsTab.h"

#include "async/OrEnd.h"
#include "ui/LinkButton.h"
#include "ui/NameOrder.h"
#include "ui/PlainText.h"
#include "ui/PopoverMetrics.h"
#include "ui/QuorleURL.h"
#include "ui/settings/AccountRows.h"
#include "ui/settings/ManualAddSheet.h"
#include "ui/settings/NewClaudeAccountSheet.h"
#include "ui/settings/SettingsMetrics.h"
#include "ui/settings/TabOrder.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>

#include <algorithm>

namespace vellumor {

using namespace SettingsMetrics;

namespace {

constexpr double mostOfScreen = 0.4; // a longer list scrolls

QVBoxLayout* columnOf(QWidget* widget)
{
    auto* const column = new QVBoxLayout(widget);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(step);
    return column;
}

} // namespace

AccountsTab::AccountsTab(AppState& appState, const SettingsActions& actions)
    : SettingsPage(appState)
    , m_actions(actions)
    , m_list(new QScrollArea(this))
{
    auto* const column = columnOf(this);
    column->setSpacing(3 * step);
    column->addWidget(makeHeader());
    m_rows = new AccountRows(appState, *m_list);
    column->addWidget(m_list);
    m_empty = makeEmpty();
    column->addWidget(m_empty);
    column->addWidget(makeButtons());
    m_hidden = makeHidden();
    column->addWidget(m_hidden);
    column->addStretch(1);
}

QWidget* AccountsTab::makeHeader()
{
    auto* const header = new QWidget(this);
    auto* const column = columnOf(header);
    const QString text = QString::fromUtf8(AccountsContent::header);
    for (const QString& part : text.split(u'\n')) {
        auto* const line = new PlainText(header, PlainText::pageLines);
        line->setFont(secondary(font()));
        line->setDimmed();
        line->setPlainText(part.toStdString());
        line->fixWidth(contentWidth(font()));
        column->addWidget(line);
    }
    return header;
}

QWidget* AccountsTab::makeEmpty()
{
    auto* const empty = new QWidget(this);
    auto* const column = columnOf(empty);
    column->setContentsMargins(0, sectionGap, 0, sectionGap);
    m_emptyTitle = new PlainText(empty);
    m_emptyTitle->setFont(PopoverMetrics::of(font()).name);
    m_emptyText = new PlainText(empty, PlainText::pageLines);
    m_emptyText->setAlignment(Qt::AlignHCenter);
    m_guide = new LinkButton(empty);
    m_guide->setText(QStringLiteral("How to sign in to Claude Code"));
    connect(m_guide, &QAbstractButton::clicked, this,
            [this] { m_actions.openPage(QuorleURL::signInGuide); });
    column->addWidget(m_emptyTitle, 0, Qt::AlignHCenter);
    column->addWidget(m_emptyText, 0, Qt::AlignHCenter);
    column->addWidget(m_guide, 0, Qt::AlignHCenter);
    return empty;
}

QWidget* AccountsTab::makeButtons()
{
    auto* const buttons = new QWidget(this);
    auto* const line = new QHBoxLayout(buttons);
    line->setContentsMargins(0, 0, 0, 0);
    m_scan = new QPushButton(QStringLiteral("Scan for Accounts"), buttons);
    m_add = new QPushButton(QStringLiteral("Add Account Manually"), buttons);
    auto* const menu = new QMenu(m_add);
    connect(menu->addAction(QStringLiteral("From an Existing Folder…")), &QAction::triggered, this,
            &AccountsTab::addManually);
    connect(menu->addAction(QStringLiteral("Set Up a New Claude Sign-in…")), &QAction::triggered,
            this, [this] { (new NewClaudeAccountSheet(m_appState, m_actions, this))->open(); });
    m_add->setMenu(menu);
    m_count = new PlainText(buttons);
    m_count->setFont(secondary(font()));
    m_count->setDimmed();
    line->addWidget(m_scan);
    line->addWidget(m_add);
    line->addStretch(1);
    line->addWidget(m_count);
    connect(m_scan, &QPushButton::clicked, this,
            [this] { [[maybe_unused]] const Task<> running = orEnd(m_appState.rescan()); });
    return buttons;
}

QWidget* AccountsTab::makeHidden()
{
    auto* const hidden = new QWidget(this);
    auto* const column = columnOf(hidden);
    column->setContentsMargins(0, step, 0, 0);
    m_hiddenTitle = new PlainText(hidden);
    m_hiddenTitle->setDimmed();
    column->addWidget(m_hiddenTitle);
    m_hiddenRows = new QVBoxLayout;
    m_hiddenRows->setSpacing(step);
    column->addLayout(m_hiddenRows);
    return hidden;
}

void AccountsTab::addManually()
{
    (new ManualAddSheet(m_appState, m_actions, this))->open();
}

void AccountsTab::refreshHidden(const AccountsContent& content)
{
    m_hidden->setVisible(!content.hidden.empty());
    m_hiddenTitle->setPlainText(content.hiddenTitle);
    if (content.hidden == m_content.hidden)
        return;
    while (QLayoutItem* const item = m_hiddenRows->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
    for (const HiddenAccountContent& account : content.hidden) {
        auto* const row = new QWidget(m_hidden);
        auto* const line = new QHBoxLayout(row);
        line->setContentsMargins(0, 0, 0, 0);
        auto* const name = new PlainText(row);
        name->setPlainText(account.name);
        auto* const folder = new PlainText(row);
        folder->setPlainText(account.configDir);
        folder->setFont(secondary(font()));
        folder->setDimmed();
        auto* const back = new QPushButton(QStringLiteral("Add back"), row);
        back->setAccessibleDescription(QString::fromStdString(account.name));
        line->addWidget(name);
        line->addWidget(folder);
        line->addStretch(1);
        line->addWidget(back);
        connect(back, &QPushButton::clicked, this, [this, configDir = account.configDir] {
            [[maybe_unused]] const Task<> running = orEnd(m_appState.restore(configDir));
        });
        m_hiddenRows->addWidget(row);
    }
}

// As high as its rows, until they would take too much of the screen.
void AccountsTab::fitList()
{
    const int most = static_cast<int>(screen()->availableGeometry().height() * mostOfScreen);
    m_list->setFixedHeight(std::min(m_rows->sizeHint().height(), most));
}

void AccountsTab::refresh()
{
    AccountsContent content = AccountsContent::of(m_appState, namesInOrder);
    m_rows->setContent(content.rows);
    m_list->setVisible(!content.rows.empty());
    m_empty->setVisible(content.rows.empty());
    m_emptyTitle->setPlainText(content.emptyTitle);
    m_emptyText->setPlainText(content.emptyText);
    m_emptyText->fixWidth(contentWidth(font()) * 3 / 4);
    m_guide->setVisible(content.hasSignInGuide);
    m_count->setPlainText(content.count);
    refreshHidden(content);
    m_content = std::move(content);
    fitList();
    orderTabs();
}

// Rows come later than what stands below them.
void AccountsTab::orderTabs()
{
    auto controls = m_rows->controls();
    controls.insert(controls.end(), {m_scan, m_add});
    for (QPushButton* back : m_hidden->findChildren<QPushButton*>()) {
        if (!back->isHidden())
            controls.push_back(back);
    }
    setTabOrderOf(controls);
}

} // namespace vellumor
