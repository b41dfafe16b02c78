#include "ui/settings/ManualAddSheet.h"

#include "async/OrEnd.h"
#include "base/Text.h"
#include "ui/PlainText.h"
#include "ui/model/settings/AccountsContent.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace vellumor {

namespace {

std::string typed(const QLineEdit& edit)
{
    const std::string text = edit.text().toStdString();
    return std::string(Text::trimmed(text));
}

} // namespace

ManualAddSheet::ManualAddSheet(AppState& appState, const SettingsActions& actions, QWidget* parent)
    : Sheet(parent)
    , m_appState(appState)
    , m_directory(new QLineEdit(this))
    , m_service(new QLineEdit(this))
{
    auto* const line = new QHBoxLayout;
    m_directory->setPlaceholderText(QStringLiteral("Config directory (e.g. ~/.claude-work)"));
    m_directory->setAccessibleName(m_directory->placeholderText());
    m_service->setPlaceholderText(QStringLiteral("Keychain service override (optional)"));
    m_service->setAccessibleName(m_service->placeholderText());
    auto* const choose = new QPushButton(QStringLiteral("Choose"), this);
    choose->setAutoDefault(false);
    line->addWidget(m_directory, 1);
    line->addWidget(choose);
    content().addLayout(line);
    m_objection = addText();
    content().addWidget(m_service);
    QPushButton* const cancel = addButton("Cancel");
    m_confirm = addButton("Add");
    m_confirm->setDefault(true);
    connect(choose, &QPushButton::clicked, this, [this, pick = actions.chooseFolder] {
        pick([self = QPointer<ManualAddSheet>(this)](const std::string& path) {
            if (self)
                self->m_directory->setText(QString::fromStdString(path));
        });
    });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_confirm, &QPushButton::clicked, this, &ManualAddSheet::confirm);
    connect(m_directory, &QLineEdit::textChanged, this, &ManualAddSheet::update);
    update();
}

void ManualAddSheet::update()
{
    const std::string directory = typed(*m_directory);
    const ManualAddContent words = ManualAddContent::of(m_appState.isRemoved(directory));
    setHeading(words.title, words.text);
    m_confirm->setText(QString::fromStdString(words.confirm));
    m_confirm->setEnabled(!directory.empty());
    showText(*m_objection, {});
}

void ManualAddSheet::confirm()
{
    m_confirm->setEnabled(false);
    [[maybe_unused]] const Task<> running = orEnd(add(typed(*m_directory), typed(*m_service)));
}

// The window may be closed while the folder is looked at: then nothing is added.
Task<> ManualAddSheet::add(std::string directory, std::string service)
{
    const QPointer<ManualAddSheet> self(this);
    AppState& appState = m_appState;
    const FolderState folder = co_await appState.examineFolder(directory);
    if (!self)
        co_return;
    const std::string objection = ManualAddContent::objection(folder);
    if (!objection.empty()) {
        showText(*m_objection, objection);
        m_confirm->setEnabled(true);
        co_return;
    }
    accept();
    // A removed account comes back with the service that it had, unless another one is given.
    if (service.empty() && appState.isRemoved(directory))
        co_await appState.restore(directory);
    else
        co_await appState.upsertManual(directory, service);
}

} // namespace vellumor
