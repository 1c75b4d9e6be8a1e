#include "storages/accounts/local.h"

#include "platform/logging/twl_debug.h"
#include "storages/account_advanced.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QJsonObject>
#include <QLineEdit>
#include <QPushButton>

namespace TWB::GUI::Settings::Account {

Local::Local(QWidget* parent)
    : Info(TWL::Cloud::FileSystem, parent)
{
    addField(tr("Folder:"), QStringLiteral("Path"));
}

Local::Add::Add(QWidget* parent)
    : Storages::Add(TWL::Cloud::FileSystem, parent)
    , displayName(new QLineEdit(this))
    , path(new QLineEdit(this))
    , browse(new QPushButton(tr("Browse..."), this))
{
    auto form = new QFormLayout;
    displayName->setFixedWidth(LineEditWidth);
    path->setMinimumWidth(LineEditWidth);
    path->setPlaceholderText(tr("A local folder or a mounted share"));
    form->addRow(tr("Display Name:"), displayName);
    auto row = new QHBoxLayout;
    row->addWidget(path, 1);
    row->addWidget(browse);
    form->addRow(tr("Folder:"), row);
    insertForm(form);
    browse->setAutoDefault(false);
    connect(displayName, &QLineEdit::textChanged, this, &Add::onDataChanged);
    connect(path, &QLineEdit::textChanged, this, &Add::onDataChanged);
    connect(browse, &QPushButton::clicked, this, &Add::onBrowse);
}

QString Local::Add::folderProblem(const QString& folder)
{
    const QString clean = QDir::cleanPath(folder.trimmed());
    if (clean.isEmpty() || clean == QLatin1String("."))
        return tr("Choose a folder.");
    if (!QDir::isAbsolutePath(clean))
        return tr("Give the folder's whole path, beginning with \"/\".");
    const QFileInfo info(clean);
    if (info.exists()) {
        if (!info.isDir())
            return tr("\"%1\" is a file, not a folder.").arg(clean);
        if (!info.isWritable())
            return tr("You may not write to \"%1\".").arg(clean);
        return QString();
    }
    // The service makes a missing folder, provided that it may write where it would stand.
    QFileInfo parent(info.absolutePath());
    while (!parent.exists() && parent.absoluteFilePath() != QLatin1String("/"))
        parent = QFileInfo(parent.absolutePath());
    if (!parent.isDir() || !parent.isWritable())
        return tr("\"%1\" does not exist and cannot be made.").arg(clean);
    return QString();
}

void Local::Add::onDataChanged()
{
    onClearErrorMessage();
    if (path->text().trimmed().isEmpty()) {
        okButton()->setEnabled(false);
        return;
    }
    const QString problem = folderProblem(path->text());
    if (!problem.isEmpty()) {
        setErrorMessage(problem, true);
        return;
    }
    setSuccessMessage(QFileInfo::exists(QDir::cleanPath(path->text().trimmed()))
            ? tr("Backups can be written to this folder.")
            : tr("The folder will be made when the account is saved."),
        false);
    okButton()->setEnabled(!displayName->text().trimmed().isEmpty());
}

void Local::Add::onBrowse()
{
    const QString chosen = QFileDialog::getExistingDirectory(this, tr("Choose the backup folder"), path->text());
    if (!chosen.isEmpty())
        path->setText(chosen);
}

void Local::Add::onSetItem(const QModelIndex& index)
{
    displayName->setText(index.sibling(index.row(), 0).data().toString());
    const QJsonObject details = index.sibling(index.row(), 8).data().toJsonObject();
    path->setText(details.value(QStringLiteral("Path")).toString());
}

void Local::Add::onAdvancedClicked()
{
    onClearErrorMessage();
    Advanced dialog(prefix, QStringList(), false, nullptr, this);
    if (dialog.exec() == QDialog::Accepted)
        prefix = dialog.prefix();
    onDataChanged();
}

void Local::Add::onAccept()
{
    const QString problem = folderProblem(path->text());
    if (!problem.isEmpty()) {
        setErrorMessage(problem, true);
        return;
    }
    QString error;
    const QJsonObject document {{QStringLiteral("Path"), QDir::cleanPath(path->text().trimmed())}};
    if (!updateAccount(document, displayName->text().trimmed(), error)) {
        TWL::TwlDebug("TWB").error() << error;
        setErrorMessage(error, true);
    }
}

} // namespace TWB::GUI::Settings::Account
