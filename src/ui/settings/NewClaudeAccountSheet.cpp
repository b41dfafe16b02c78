#include "ui/settings/NewClaudeAccountSheet.h"

#include "async/OrEnd.h"
#include "ui/PlainText.h"
#include "ui/model/settings/AccountsContent.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace vellumor {

NewClaudeAccountSheet::NewClaudeAccountSheet(AppState& appState, const SettingsActions& actions,
                                             QWidget* parent)
    : Sheet(parent)
    , m_appState(appState)
    , m_label(new QLineEdit(QStringLiteral("work"), this))
    , m_command(new QLineEdit(this))
{
    setHeading("Set up a new Claude sign-in",
               "Vellumor never signs in for you — Claude Code does. Copy this into a terminal, "
               "complete Claude Code's sign-in, then scan for accounts.");
    auto* const line = new QHBoxLayout;
    auto* const label = new QLabel(QStringLiteral("Label"), this);
    label->setBuddy(m_label);
    m_label->setAccessibleName(label->text());
    line->addWidget(label);
    line->addWidget(m_label, 1);
    content().addLayout(line);
    m_directory = addText();
    m_command->setReadOnly(true);
    m_command->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_command->setAccessibleName(QStringLiteral("Command"));
    content().addWidget(m_command);
    m_removed = addText();
    makeButtons(actions);
    connect(m_label, &QLineEdit::textChanged, this, &NewClaudeAccountSheet::update);
    update();
}

void NewClaudeAccountSheet::makeButtons(const SettingsActions& actions)
{
    QPushButton* const cancel = addButton("Cancel");
    QPushButton* const copy = addButton("Copy");
    QPushButton* const terminal = addButton("Open Terminal");
    QPushButton* const scan = addButton("Scan When Done");
    scan->setDefault(true);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(copy, &QPushButton::clicked, this,
            [this, put = actions.copy] { put(m_command->text().toStdString()); });
    connect(terminal, &QPushButton::clicked, this, actions.openTerminal);
    connect(scan, &QPushButton::clicked, this, [this] {
        // Looks for accounts, and a folder that was removed comes back by being used.
        const auto directory = NewClaudeAccountContent::of(m_label->text().toStdString()).directory;
        [[maybe_unused]] const Task<> running = orEnd(m_appState.restore(directory));
        accept();
    });
}

void NewClaudeAccountSheet::update()
{
    const auto words = NewClaudeAccountContent::of(m_label->text().toStdString());
    showText(*m_directory, "Suggested directory: " + words.directory);
    m_command->setText(QString::fromStdString(words.command));
    m_command->setCursorPosition(0);
    showText(*m_removed, m_appState.isRemoved(words.directory)
                             ? NewClaudeAccountContent::removedNote
                             : std::string());
}

} // namespace vellumor
