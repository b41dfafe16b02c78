#include "ui/PopoverView.h"

#include "ui/AccountSection.h"
#include "ui/HistoryDetailView.h"
#include "ui/LinkButton.h"
#include "ui/PlainText.h"
#include "ui/SymbolButton.h"
#include "ui/ThinScrollBar.h"
#include "ui/TransientNoticeBanner.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

namespace vellumor {

namespace {

// Of everything in `layout`, whether or not any of it breaks into lines.
int heightAt(int width, QLayout& layout)
{
    layout.activate();
    return layout.hasHeightForWidth() ? layout.totalHeightForWidth(width)
                                      : layout.totalSizeHint().height();
}

} // namespace

PopoverView::PopoverView(Actions actions)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , m_actions(std::move(actions))
    , m_metrics(PopoverMetrics::of(QApplication::font()))
    , m_theme(Theme::of(QApplication::palette()))
    , m_column(new QVBoxLayout(this))
    , m_banner(new TransientNoticeBanner(m_metrics, this))
{
    setWindowTitle(QStringLiteral("Vellumor"));
    setAccessibleName(QStringLiteral("Vellumor"));
    setFocusPolicy(Qt::ClickFocus);           // so that no control has to take the focus
    m_column->setContentsMargins(1, 1, 1, 1); // the edge
    m_column->setSpacing(0);
    m_column->addWidget(m_banner);
    m_banner->onDismiss = [this] { m_actions.dismissNotice(); };
    makeList();
    makeFooter();
    setFocus(Qt::OtherFocusReason);
}

PopoverView::~PopoverView() = default;

void PopoverView::makeList()
{
    m_scroll = new QScrollArea(this);
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->setFocusPolicy(Qt::NoFocus);
    setThinScrollBar(*m_scroll);
    m_scroll->setWidgetResizable(true);
    m_scroll->viewport()->setAutoFillBackground(false);
    m_list = new QWidget;
    m_listColumn = new QVBoxLayout(m_list);
    m_listColumn->setContentsMargins(m_metrics.margin, m_metrics.step, m_metrics.margin,
                                     m_metrics.step);
    m_listColumn->setSpacing(0);
    m_scroll->setWidget(m_list); // makes it paint a background, which is this window's
    m_list->setAutoFillBackground(false);
    m_column->addWidget(m_scroll, 1);
    makeHint();
}

void PopoverView::makeHint()
{
    m_hintBox = new QWidget(m_list);
    auto* const column = new QVBoxLayout(m_hintBox);
    column->setContentsMargins(0, 2 * m_metrics.step, 0, 2 * m_metrics.step);
    column->setSpacing(m_metrics.step);
    m_hint = new PlainText(m_hintBox, PlainText::sentenceLines);
    m_hintLink = new LinkButton(m_hintBox);
    column->addWidget(m_hint);
    column->addWidget(m_hintLink);
    m_listColumn->addWidget(m_hintBox);
    connect(m_hintLink, &QAbstractButton::clicked, this, [this] { m_actions.signInGuide(); });
}

void PopoverView::makeFooter()
{
    m_footer = new QWidget(this);
    auto* const row = new QHBoxLayout(m_footer);
    row->setContentsMargins(m_metrics.margin, 2 * m_metrics.step, m_metrics.margin,
                            2 * m_metrics.step);
    row->setSpacing(2 * m_metrics.step);
    m_footerText = new PlainText(m_footer);
    m_footerText->setFont(m_metrics.secondary);
    m_refresh = new SymbolButton(Symbols::Symbol::refresh, m_footer);
    m_refresh->setHelp("Refresh now");
    m_settings = new SymbolButton(Symbols::Symbol::settings, m_footer);
    m_settings->setHelp("Settings");
    row->addWidget(m_footerText);
    row->addStretch(1);
    row->addWidget(m_refresh);
    row->addWidget(m_settings);
    m_column->addWidget(m_footer);
    connect(m_refresh, &QAbstractButton::clicked, this, [this] { m_actions.refresh(); });
    connect(m_settings, &QAbstractButton::clicked, this, [this] { m_actions.settings(); });
}

void PopoverView::setContent(const PopoverContent& content, int mostHeight)
{
    if (content == m_content && mostHeight == m_mostHeight)
        return;
    m_mostHeight = mostHeight;
    apply(content);
}

void PopoverView::apply(const PopoverContent& content)
{
    m_content = content;
    m_banner->setContent(notice(), m_theme);
    setSections(content.sections);
    setHint();
    m_footerText->setPlainText(content.footer);
    m_footerText->setColour(m_theme.dimmed);
    m_refresh->setColour(m_theme.dimmed);
    m_settings->setColour(m_theme.dimmed);
    resizeToContent();
}

void PopoverView::setUrgentNotice(const std::string& notice)
{
    if (notice == m_urgentNotice)
        return;
    m_urgentNotice = notice;
    apply(m_content);
}

std::string PopoverView::notice() const
{
    if (!m_urgentNotice.empty() || m_history)
        return m_urgentNotice;
    return m_content.notice;
}

void PopoverView::setSections(const std::vector<AccountSectionContent>& sections)
{
    const bool isOther = m_sections.size() != sections.size();
    while (m_sections.size() > sections.size()) {
        delete m_sections.back();
        m_sections.pop_back();
    }
    while (m_sections.size() < sections.size()) {
        auto* const section = new AccountSection(m_metrics, m_list);
        section->onHistory = [this](const std::string& dir) { m_actions.history(dir); };
        section->setLineAbove(!m_sections.empty());
        m_listColumn->addWidget(section);
        section->setVisible(!m_history);
        m_sections.push_back(section);
    }
    if (isOther)
        orderTabs();
    for (std::size_t i = 0; i < sections.size(); ++i)
        m_sections[i]->setContent(sections[i], m_theme);
}

// The sections come and go between what was there before them.
void PopoverView::orderTabs()
{
    QWidget* last = m_banner->dismissButton();
    const auto append = [&last](QWidget* next) {
        setTabOrder(last, next);
        last = next;
    };
    for (const AccountSection* section : m_sections)
        append(section->historyButton());
    for (QWidget* next : std::initializer_list<QWidget*>{m_hintLink, m_refresh, m_settings})
        append(next);
}

void PopoverView::setHint()
{
    m_hintBox->setVisible(!m_history && !m_content.hint.empty());
    m_hint->setPlainText(m_content.hint);
    m_hint->setColour(m_theme.text);
    m_hintLink->setText(QString::fromStdString(m_content.hintLink));
    m_hintLink->setColour(m_theme.link);
}

void PopoverView::setHistory(std::shared_ptr<const HistoryContent> history)
{
    const bool isOther = (history == nullptr) != (m_history == nullptr);
    m_history = std::move(history);
    applyHistory();
    if (isOther)
        apply(m_content);
    else
        resizeToContent();
    if (isOther)
        m_scroll->verticalScrollBar()->setValue(0);
}

void PopoverView::applyHistory()
{
    if (m_history && m_historyView == nullptr) {
        m_historyView = new HistoryDetailView(
            m_metrics, {m_actions.back, m_actions.copy, m_actions.exportAs}, m_list);
        m_listColumn->addWidget(m_historyView);
    }
    if (m_history)
        m_historyView->setContent(*m_history, m_theme);
    if (m_historyView != nullptr)
        m_historyView->setVisible(m_history != nullptr);
    for (AccountSection* section : m_sections)
        section->setVisible(!m_history);
    m_footer->setVisible(!m_history);
}

void PopoverView::resizeToContent()
{
    const int banner = notice().empty() ? 0 : heightAt(m_metrics.width, *m_banner->layout());
    const int footer = m_history ? 0 : m_footer->sizeHint().height();
    const int list = heightAt(m_metrics.width, *m_listColumn);
    const int edges = 2;
    const int whole = banner + list + footer + edges;
    const bool scrolls = whole > m_mostHeight;
    const int bar = scrolls ? m_scroll->verticalScrollBar()->sizeHint().width() : 0;
    m_scroll->setVerticalScrollBarPolicy(scrolls ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    setFixedSize(m_metrics.width + edges + bar, scrolls ? m_mostHeight : whole);
}

// The desktop has changed its colours.
void PopoverView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationPaletteChange)
        adoptTheme();
    QWidget::changeEvent(event);
}

void PopoverView::adoptTheme()
{
    const Theme theme = Theme::of(QApplication::palette());
    if (theme == m_theme)
        return;
    m_theme = theme;
    apply(m_content);
    applyHistory();
    update();
}

bool PopoverView::event(QEvent* event)
{
    if (event->type() == QEvent::WindowActivate)
        m_wasActive = true;
    // Before it was active once, the focus has only not come yet.
    if (event->type() == QEvent::WindowDeactivate && m_wasActive)
        m_actions.deactivated();
    return QWidget::event(event);
}

void PopoverView::keyPressEvent(QKeyEvent* event)
{
    QScrollBar& bar = *m_scroll->verticalScrollBar();
    switch (event->key()) {
    case Qt::Key_Escape:
        m_actions.close();
        return;
    case Qt::Key_Down:
        bar.triggerAction(QScrollBar::SliderSingleStepAdd);
        return;
    case Qt::Key_Up:
        bar.triggerAction(QScrollBar::SliderSingleStepSub);
        return;
    case Qt::Key_PageDown:
        bar.triggerAction(QScrollBar::SliderPageStepAdd);
        return;
    case Qt::Key_PageUp:
        bar.triggerAction(QScrollBar::SliderPageStepSub);
        return;
    default:
        QWidget::keyPressEvent(event);
    }
}

void PopoverView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), m_theme.background);
    painter.setPen(m_theme.edge);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    if (m_history)
        return;
    painter.setPen(m_theme.hairline);
    painter.drawLine(m_metrics.margin, m_footer->y(), width() - m_metrics.margin, m_footer->y());
}

} // namespace vellumor
