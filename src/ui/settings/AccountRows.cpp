#include "ui/settings/AccountRows.h"

#include "async/OrEnd.h"
#include "ui/settings/AccountRow.h"
#include "ui/settings/DragHandle.h"
#include "ui/settings/RemovalQuestion.h"
#include "ui/settings/TabOrder.h"

#include <QFrame>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>

namespace vellumor {

namespace {

constexpr int markHeight = 2;
constexpr int nearEdge = 12; // where a drag scrolls on

void scrollTo(QWidget& rows, int y)
{
    for (QWidget* above = rows.parentWidget(); above != nullptr; above = above->parentWidget()) {
        if (auto* const area = qobject_cast<QScrollArea*>(above))
            area->ensureVisible(0, y, 0, nearEdge);
    }
}

// Later: it may be the one that asks for this very change.
void discard(QWidget* row)
{
    row->hide();
    row->deleteLater();
}

} // namespace

AccountRows::AccountRows(AppState& appState, QScrollArea& list)
    : QWidget(&list)
    , m_appState(appState)
    , m_column(new QVBoxLayout(this))
    , m_mark(new QFrame(this))
{
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(0);
    m_column->addStretch(1);
    m_mark->setAutoFillBackground(true);
    m_mark->setBackgroundRole(QPalette::Highlight);
    m_mark->hide();
    list.setFrameShape(QFrame::NoFrame);
    list.setFocusPolicy(Qt::NoFocus);
    list.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list.setWidgetResizable(true);
    list.setWidget(this);
}

const Account* AccountRows::account(const std::string& id) const
{
    const auto& accounts = m_appState.accounts();
    const auto found = std::find_if(accounts.begin(), accounts.end(),
                                    [&](const Account& account) { return account.id == id; });
    return found == accounts.end() ? nullptr : &*found;
}

std::size_t AccountRows::place(const std::string& id) const
{
    const auto found = std::find_if(m_content.begin(), m_content.end(),
                                    [&](const AccountRowContent& row) { return row.id == id; });
    return static_cast<std::size_t>(std::distance(m_content.begin(), found));
}

AccountRow* AccountRows::makeRow(const std::string& id)
{
    auto* const row = new AccountRow(this);
    connect(row, &AccountRow::trackedChanged, this,
            [this, id](bool tracked) { m_appState.setTracked(id, tracked); });
    connect(row, &AccountRow::pinnedChanged, this,
            [this, id](bool pinned) { m_appState.setPinned(id, pinned); });
    connect(row, &AccountRow::renamed, this, [this, id](const std::string& name) {
        if (const Account* const known = account(id))
            m_appState.rename(*known, name);
    });
    connect(row, &AccountRow::serviceChanged, this, [this, id](const std::string& service) {
        [[maybe_unused]] const Task<> scan = orEnd(m_appState.setServiceOverride(id, service));
    });
    connect(row, &AccountRow::removalAsked, this,
            [this, id] { askForAccountRemoval(m_appState, id, window()); });
    connectDragging(*row, id);
    return row;
}

void AccountRows::connectDragging(AccountRow& row, const std::string& id)
{
    DragHandle& handle = row.handle();
    connect(&handle, &DragHandle::dragged, this, &AccountRows::showMark);
    connect(&handle, &DragHandle::cancelled, m_mark, &QWidget::hide);
    connect(&handle, &DragHandle::dropped, this, [this, id](const QPoint& at) {
        m_mark->hide();
        moveTo(id, placeAt(mapFromGlobal(at).y()));
    });
    connect(&handle, &DragHandle::moved, this, [this, id](int steps) { step(id, steps); });
}

std::size_t AccountRows::placeAt(int y) const
{
    for (std::size_t i = 0; i < m_content.size(); ++i) {
        if (y < m_rows.at(m_content[i].id)->geometry().center().y())
            return i;
    }
    return m_content.size();
}

void AccountRows::showMark(const QPoint& globalPosition)
{
    const int y = mapFromGlobal(globalPosition).y();
    scrollTo(*this, std::clamp(y, 0, height()));
    const std::size_t to = placeAt(y);
    const int edge =
        to < m_content.size() ? m_rows.at(m_content[to].id)->y() : height() - markHeight;
    m_mark->setGeometry(0, edge, width(), markHeight);
    m_mark->show();
    m_mark->raise();
}

void AccountRows::moveTo(const std::string& id, std::size_t to)
{
    const std::size_t from = place(id);
    if (from < m_content.size() && to != from && to != from + 1)
        m_appState.reorder({from}, to);
}

void AccountRows::step(const std::string& id, int steps)
{
    const std::size_t from = place(id);
    if (steps < 0 && from > 0)
        moveTo(id, from - 1);
    else if (steps > 0 && from + 1 < m_content.size())
        moveTo(id, from + 2);
}

void AccountRows::setContent(const std::vector<AccountRowContent>& rows)
{
    if (rows == m_content)
        return;
    m_content = rows;
    for (auto row = m_rows.begin(); row != m_rows.end();) {
        const bool isThere = place(row->first) < m_content.size();
        if (!isThere) {
            discard(row->second);
            m_mark->hide(); // it may be the one that is dragged
        }
        row = isThere ? std::next(row) : m_rows.erase(row);
    }
    int place = 0;
    for (const AccountRowContent& content : m_content) {
        AccountRow*& row = m_rows[content.id];
        if (row == nullptr)
            row = makeRow(content.id);
        m_column->insertWidget(place++, row);
        row->setContent(content);
        row->show(); // at once, or it would not count yet in the height of the list
    }
    setTabOrderOf(controls());
}

std::vector<QWidget*> AccountRows::controls() const
{
    std::vector<QWidget*> all;
    for (const AccountRowContent& content : m_content) {
        const auto controls = m_rows.at(content.id)->controls();
        all.insert(all.end(), controls.begin(), controls.end());
    }
    return all;
}

} // namespace vellumor
