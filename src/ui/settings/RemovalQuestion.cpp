#include "ui/settings/RemovalQuestion.h"

#include "ui/model/settings/AccountsContent.h"

#include <QMessageBox>
#include <QPushButton>

#include <algorithm>

namespace vellumor {

namespace {

constexpr int mostOfName = 60; // characters

} // namespace

void askForAccountRemoval(AppState& appState, const std::string& id, QWidget* parent)
{
    const auto& accounts = appState.accounts();
    const auto found = std::find_if(accounts.begin(), accounts.end(),
                                    [&](const Account& account) { return account.id == id; });
    if (found == accounts.end())
        return;
    auto* const box = new QMessageBox(parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setWindowTitle(QStringLiteral("Remove from Vellumor"));
    box->setTextFormat(Qt::PlainText);
    box->setText(QStringLiteral("Remove “%1”?")
                     .arg(QString::fromStdString(found->displayName).left(mostOfName)));
    box->setInformativeText(QString::fromUtf8(AccountsContent::removalText));
    auto* const remove = box->addButton(QStringLiteral("Remove"), QMessageBox::AcceptRole);
    box->setDefaultButton(box->addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole));
    QObject::connect(remove, &QAbstractButton::clicked, box,
                     [&appState, account = *found] { appState.remove(account); });
    box->open();
}

} // namespace vellumor
