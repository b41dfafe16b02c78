#include "ui/settings/NotificationsTab.h"

#include "base/PlatformWords.h"
#include "notifications/NotificationPermission.h"
#include "ui/PlainText.h"
#include "ui/settings/SettingsForm.h"
#include "ui/settings/SettingsMetrics.h"
#include "ui/settings/ShowChecked.h"
#include "ui/settings/TabOrder.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QScrollArea>
#include <QSpinBox>

#include <algorithm>

namespace vellumor {

namespace {

constexpr const char* thresholdsLabel = "Usage thresholds";
constexpr const char* eventsLabel = "Other events";
constexpr const char* customLabel = "Custom usage thresholds";
constexpr int mostCustomRows = 5; // more of them scroll

QLabel* label(const char* text, QWidget* parent)
{
    auto* const made = new QLabel(QString::fromUtf8(text), parent);
    made->setTextFormat(Qt::PlainText);
    return made;
}

} // namespace

NotificationsTab::NotificationsTab(AppState& appState, Notifications& notifications)
    : SettingsPage(appState)
    , m_notifications(notifications)
{
    SettingsForm form(this, {thresholdsLabel, eventsLabel, customLabel});
    m_master = form.toggle("", "Enable notifications", "");
    connect(m_master, &QCheckBox::toggled, this, [this](bool on) { setEnabled(on); });
    m_denied = form.note(PlatformWords::notificationsDenied);
    m_denied->setVisible(false);
    form.section();
    makeThresholds(form);
    form.section();
    makeEvents(form);
    makeClosing(form);
    form.section();
    makeCustomList(form);
    form.end();
}

QCheckBox* NotificationsTab::bind(QCheckBox* box, NotificationsContent::Switch field)
{
    connect(box, &QCheckBox::toggled, this, [this, field](bool on) { setField(field, on); });
    m_boxes.emplace_back(box, field);
    return box;
}

void NotificationsTab::makeThresholds(SettingsForm& form)
{
    auto* const table = new QGridLayout;
    table->setHorizontalSpacing(SettingsMetrics::sectionGap);
    table->setVerticalSpacing(SettingsMetrics::step);
    int column = 1;
    for (const char* title : NotificationsContent::thresholdColumns)
        table->addWidget(label(title, this), 0, column++, Qt::AlignHCenter);
    int row = 1;
    for (const auto& line : NotificationsContent::thresholdRows) {
        table->addWidget(label(line.title, this), row, 0);
        column = 1;
        for (const auto field : line.switches) {
            auto* const box = bind(new QCheckBox(this), field);
            const char* const title =
                NotificationsContent::thresholdColumns[static_cast<std::size_t>(column - 1)];
            box->setAccessibleName(QStringLiteral("%1: %2").arg(QString::fromUtf8(line.title),
                                                                QString::fromUtf8(title)));
            table->addWidget(box, row, column++, Qt::AlignHCenter);
        }
        ++row;
    }
    table->setColumnStretch(column, 1);
    form.add(thresholdsLabel, table, 0);
    form.note(NotificationsContent::thresholdNote);
}

void NotificationsTab::makeEvents(SettingsForm& form)
{
    const char* name = eventsLabel;
    for (const auto& event : NotificationsContent::events) {
        bind(form.toggle(name, event.title, event.help), event.field);
        name = "";
    }
}

// "Session window closes soon", and under it "(notify 30 min before it closes)" with a list in its
// middle: in one line they would be too wide.
void NotificationsTab::makeClosing(SettingsForm& form)
{
    const auto& event = NotificationsContent::sessionClosing;
    auto* const box = bind(form.toggle("", event.title, event.help), event.field);
    m_leadLine = new QWidget(this);
    auto* const words = new QHBoxLayout(m_leadLine);
    words->setContentsMargins(form.titleIndent(*box), 0, 0, 0);
    words->setSpacing(SettingsMetrics::step + 2);
    m_lead = new QComboBox(m_leadLine);
    m_lead->setAccessibleName(QStringLiteral("Lead time"));
    words->addWidget(label("(notify", m_leadLine));
    words->addWidget(m_lead);
    words->addWidget(label("before it closes)", m_leadLine));
    form.add("", m_leadLine);
    connect(m_lead, &QComboBox::activated, this, [this](int index) {
        const int minutes = m_leads.at(static_cast<std::size_t>(index));
        m_appState.updatePreferences(
            [minutes](Preferences& p) { p.sessionClosingLeadMinutes = minutes; });
    });
}

// The permission is asked for before anything is kept: where nobody would show a notification the
// switch stays off.
void NotificationsTab::setEnabled(bool on)
{
    m_denied->setVisible(false);
    if (!on) {
        setField(&Preferences::notificationsEnabled, false);
        return;
    }
    showChecked(*m_master, m_appState.preferences().notificationsEnabled);
    NotificationPermission::requestIfNeeded(
        m_notifications, [self = QPointer<NotificationsTab>(this)](bool granted) {
            if (!self)
                return;
            if (granted)
                self->setField(&Preferences::notificationsEnabled, true);
            self->m_denied->setVisible(!granted);
            self->refresh();
        });
}

void NotificationsTab::setField(NotificationsContent::Switch field, bool on)
{
    m_appState.updatePreferences([field, on](Preferences& p) { p.*field = on; });
}

void NotificationsTab::setCustom(const std::string& id, std::optional<double> percent)
{
    m_appState.updatePreferences([&](Preferences& p) {
        if (percent)
            p.customThresholds[id] = *percent;
        else
            p.customThresholds.erase(id);
    });
}

void NotificationsTab::makeCustomList(SettingsForm& form)
{
    m_customList = new QScrollArea(this);
    m_customList->setFrameShape(QFrame::NoFrame);
    m_customList->setFocusPolicy(Qt::NoFocus);
    m_customList->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_customList->setWidgetResizable(true);
    m_customRows = new QWidget;
    m_customColumn = new QVBoxLayout(m_customRows);
    m_customColumn->setContentsMargins(0, 0, 0, 0);
    m_customColumn->setSpacing(SettingsMetrics::step);
    m_customList->setWidget(m_customRows);
    m_customWidth = form.controlWidth();
    auto* const box = new QVBoxLayout;
    box->addWidget(m_customList);
    form.add(customLabel, box, QSpinBox().sizeHint().height());
}

NotificationsTab::CustomRow NotificationsTab::makeCustomRow(const std::string& id)
{
    CustomRow row{new QWidget(m_customRows), nullptr, nullptr};
    auto* const line = new QHBoxLayout(row.line);
    line->setContentsMargins(0, 0, 0, 0);
    row.isOn = new QCheckBox(row.line);
    row.percent = new QSpinBox(row.line);
    row.percent->setRange(1, 99);
    row.percent->setSuffix(QStringLiteral("%"));
    row.percent->setKeyboardTracking(false); // "75" is not 7 on its way
    row.percent->setValue(static_cast<int>(NotificationsContent::usualCustomThreshold));
    line->addWidget(row.isOn, 1);
    line->addWidget(row.percent);
    connect(row.isOn, &QCheckBox::toggled, this, [this, id, percent = row.percent](bool on) {
        setCustom(id, on ? std::optional<double>(percent->value()) : std::nullopt);
    });
    connect(row.percent, &QSpinBox::valueChanged, this,
            [this, id](int percent) { setCustom(id, percent); });
    m_customColumn->addWidget(row.line);
    return row;
}

void NotificationsTab::refreshCustom(const NotificationsContent& content)
{
    for (auto row = m_custom.begin(); row != m_custom.end();) {
        const bool isThere =
            std::any_of(content.custom.begin(), content.custom.end(),
                        [&](const auto& account) { return account.id == row->first; });
        if (!isThere)
            delete row->second.line;
        row = isThere ? std::next(row) : m_custom.erase(row);
    }
    int place = 0;
    std::vector<QWidget*> controls;
    for (const auto& account : content.custom) {
        auto found = m_custom.find(account.id);
        if (found == m_custom.end())
            found = m_custom.emplace(account.id, makeCustomRow(account.id)).first;
        const CustomRow& row = found->second;
        m_customColumn->insertWidget(place++, row.line);
        row.line->show(); // at once, or it would not count yet in the height of the list
        const QString name = QString::fromStdString(account.name);
        row.isOn->setText(row.isOn->fontMetrics().elidedText(
            buttonText(account.name), Qt::ElideRight, m_customWidth * 2 / 3));
        row.isOn->setAccessibleName(name);
        row.percent->setAccessibleName(QStringLiteral("Threshold of %1").arg(name));
        const QSignalBlocker quiet(row.percent);
        showChecked(*row.isOn, account.percent.has_value());
        row.isOn->setEnabled(content.preferences.notificationsEnabled);
        row.percent->setEnabled(account.percent && content.preferences.notificationsEnabled);
        if (account.percent && !row.percent->hasFocus())
            row.percent->setValue(qRound(*account.percent));
        controls.insert(controls.end(), {row.isOn, row.percent});
    }
    setTabOrderOf(controls);
    const int most = mostCustomRows * (QSpinBox().sizeHint().height() + SettingsMetrics::step);
    m_customList->setFixedHeight(std::min(m_customColumn->sizeHint().height(), most));
}

void NotificationsTab::refresh()
{
    const NotificationsContent content = NotificationsContent::of(m_appState);
    const bool on = content.preferences.notificationsEnabled;
    showChecked(*m_master, on);
    for (const auto& [box, field] : m_boxes) {
        showChecked(*box, content.preferences.*field);
        QWidget* const control = box;
        control->setEnabled(on);
    }
    if (content.leads != m_leads) {
        m_leads = content.leads;
        m_lead->clear();
        for (const int minutes : m_leads)
            m_lead->addItem(QString::fromStdString(SessionClosingChoice::text(minutes)));
    }
    m_lead->setCurrentIndex(static_cast<int>(
        std::distance(m_leads.begin(), std::find(m_leads.begin(), m_leads.end(),
                                                 content.preferences.sessionClosingLeadMinutes))));
    m_leadLine->setEnabled(on && content.preferences.notifySessionClosing);
    refreshCustom(content);
}

} // namespace vellumor
