#include "storages/accounts/sftp.h"

#include "platform/cloud/list_containers.h"
#include "platform/crypt/local_password.h"
#include "platform/logging/twl_debug.h"
#include "storages/account_advanced.h"

#include <QFile>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QJsonObject>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

namespace TWB::GUI::Settings::Account {

namespace {
constexpr int sshPort = 22;
constexpr qint64 largestKey = 64 * 1024;
} // namespace

Sftp::Sftp(QWidget* parent)
    : Info(TWL::Cloud::Sftp, parent)
{
    addField(tr("Server:"), QStringLiteral("Address"));
    addField(tr("Port:"), QStringLiteral("Port"));
    addField(tr("User:"), QStringLiteral("User"));
    addField(tr("Folder:"), QStringLiteral("Path"));
}

Sftp::Add::Add(QWidget* parent)
    : Storages::Add(TWL::Cloud::Sftp, parent)
    , displayName(new QLineEdit(this))
    , host(new QLineEdit(this))
    , port(new QSpinBox(this))
    , user(new QLineEdit(this))
    , password(new QLineEdit(this))
    , keyFile(new QLineEdit(this))
    , browseKey(new QPushButton(tr("Browse..."), this))
    , folder(new QLineEdit(this))
    , check(new QPushButton(tr("Connect"), this))
{
    auto form = new QFormLayout;
    for (QLineEdit* edit : {displayName, host, user, password, folder})
        edit->setFixedWidth(LineEditWidth);
    port->setRange(1, 65535);
    port->setValue(sshPort);
    password->setEchoMode(QLineEdit::Password);
    password->setPlaceholderText(tr("Empty to sign in with a key"));
    keyFile->setPlaceholderText(tr("Optional"));
    folder->setPlaceholderText(tr("Empty for the home folder"));
    form->addRow(tr("Display Name:"), displayName);
    form->addRow(tr("Server:"), host);
    form->addRow(tr("Port:"), port);
    form->addRow(tr("User:"), user);
    form->addRow(tr("Password:"), password);
    auto keyRow = new QHBoxLayout;
    keyRow->addWidget(keyFile, 1);
    keyRow->addWidget(browseKey);
    form->addRow(tr("Private key file:"), keyRow);
    form->addRow(tr("Folder:"), folder);
    auto checkRow = new QHBoxLayout;
    checkRow->addWidget(check);
    checkRow->addStretch(1);
    form->addRow(QString(), checkRow);
    insertForm(form);
    check->setEnabled(false);
    check->setAutoDefault(false);
    browseKey->setAutoDefault(false);
    for (QLineEdit* edit : {displayName, host, user, password, keyFile, folder})
        connect(edit, &QLineEdit::textChanged, this, &Add::onDataChanged);
    connect(port, QOverload<int>::of(&QSpinBox::valueChanged), this, &Add::onDataChanged);
    connect(check, &QPushButton::clicked, this, &Add::onCheck);
    connect(browseKey, &QPushButton::clicked, this, &Add::onBrowseKey);
}

void Sftp::Add::onDataChanged()
{
    // Any change asks for a new check before the account can be saved.
    checked = false;
    onClearErrorMessage();
    check->setEnabled(!host->text().trimmed().isEmpty() && !user->text().trimmed().isEmpty());
    okButton()->setEnabled(false);
}

void Sftp::Add::onBrowseKey()
{
    const QString chosen = QFileDialog::getOpenFileName(this, tr("Choose the private key"), keyFile->text());
    if (!chosen.isEmpty())
        keyFile->setText(chosen);
}

QByteArray Sftp::Add::privateKey(QString* error) const
{
    const QString name = keyFile->text().trimmed();
    if (name.isEmpty())
        return storedKey;
    QFile file(name);
    if (file.size() > largestKey || !file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = tr("The private key file \"%1\" cannot be read.").arg(name);
        return QByteArray();
    }
    return file.readAll();
}

void Sftp::Add::onCheck()
{
    QString error;
    privateKey(&error);
    if (!error.isEmpty()) {
        setErrorMessage(error, true);
        return;
    }
    loadContainers();
}

QVariantMap Sftp::Add::cloudConfig()
{
    QVariantMap config = Storages::Add::cloudConfig();
    config.insert(QStringLiteral("Address"), host->text().trimmed());
    config.insert(QStringLiteral("Port"), port->value());
    config.insert(QStringLiteral("KeepAlive"), true);
    config.insert(QStringLiteral("UseProxy"), false);
    config.insert(QStringLiteral("Path"), folder->text().trimmed());
    config.insert(QStringLiteral("User"), user->text().trimmed());
    config.insert(QStringLiteral("Password"), password->text());
    config.insert(QStringLiteral("PrivateKey"), privateKey(nullptr));
    return config;
}

bool Sftp::Add::loadContainersFinished(TWL::Cloud::Operation::ListContainers*)
{
    checked = true;
    setSuccessMessage(tr("Signed in. The folder is there and can be read."), false);
    okButton()->setEnabled(!displayName->text().trimmed().isEmpty());
    return true;
}

void Sftp::Add::lockWidgetsAfterError(bool lock)
{
    Storages::Add::lockWidgetsAfterError(lock);
    if (lock)
        checked = false;
}

void Sftp::Add::onSetItem(const QModelIndex& index)
{
    displayName->setText(index.sibling(index.row(), 0).data().toString());
    const QJsonObject details = index.sibling(index.row(), 8).data().toJsonObject();
    host->setText(details.value(QStringLiteral("Address")).toString());
    port->setValue(details.value(QStringLiteral("Port")).toInt(sshPort));
    user->setText(details.value(QStringLiteral("User")).toString());
    folder->setText(details.value(QStringLiteral("Path")).toString());
    const QString sealedPassword = details.value(QStringLiteral("Password")).toString();
    const QString sealedKey = details.value(QStringLiteral("PrivateKey")).toString();
    const QString plainPassword = SHARED::cryptNS::decrypt_local_password(sealedPassword);
    const QString plainKey = SHARED::cryptNS::decrypt_local_password(sealedKey);
    password->setText(plainPassword);
    storedKey = plainKey.toUtf8();
    if ((plainPassword.isEmpty() && !sealedPassword.isEmpty()) || (plainKey.isEmpty() && !sealedKey.isEmpty())) {
        TWL::TwlDebug("TWB").error() << "Can't decrypt the password or key in account load. ID:" << id.toString();
        setErrorMessage(tr("Can't decrypt secret Key in account load."), true);
    }
    loadContainers();
}

void Sftp::Add::onAdvancedClicked()
{
    onClearErrorMessage();
    Advanced dialog(prefix, QStringList(), false, nullptr, this);
    if (dialog.exec() == QDialog::Accepted)
        prefix = dialog.prefix();
    okButton()->setEnabled(checked && !displayName->text().trimmed().isEmpty());
}

void Sftp::Add::onAccept()
{
    if (!checked)
        return;
    const QJsonObject document {
        {QStringLiteral("Address"), host->text().trimmed()},
        {QStringLiteral("Port"), port->value()},
        {QStringLiteral("KeepAlive"), true},
        {QStringLiteral("UseProy"), false},
        {QStringLiteral("Path"), folder->text().trimmed()},
        {QStringLiteral("User"), user->text().trimmed()},
        {QStringLiteral("Password"), SHARED::cryptNS::encrypt_local_password(password->text())},
        {QStringLiteral("PrivateKey"), SHARED::cryptNS::encrypt_local_password(QString::fromUtf8(privateKey(nullptr)))},
    };
    QString error;
    if (!updateAccount(document, displayName->text().trimmed(), error)) {
        TWL::TwlDebug("TWB").error() << error;
        setErrorMessage(error, true);
    }
}

} // namespace TWB::GUI::Settings::Account
