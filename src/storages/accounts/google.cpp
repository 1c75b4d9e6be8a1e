#include "storages/accounts/google.h"

#include "platform/cloud/account_keys.h"
#include "platform/cloud/container_params.h"
#include "platform/cloud/info.h"
#include "platform/cloud/list_containers.h"
#include "platform/crypt/local_password.h"
#include "platform/logging/twl_debug.h"
#include "storages/accounts/google_authentication.h"
#include "widgets/icon_manager.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QEventLoop>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLineEdit>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPushButton>
#include <QToolButton>

#include <memory>

namespace TWB::GUI::Settings::Account {

namespace {

const char* const modeTexts[] = {QT_TRANSLATE_NOOP("TWB::GUI::Settings::Account::Google", "Access and Secret Key"),
    QT_TRANSLATE_NOOP("TWB::GUI::Settings::Account::Google", "OAuth 2.0 (Installed Application)"),
    QT_TRANSLATE_NOOP("TWB::GUI::Settings::Account::Google", "OAuth 2.0 (Service Account)")};

QString modeText(int mode)
{
    return QCoreApplication::translate("TWB::GUI::Settings::Account::Google", modeTexts[mode]);
}

QString formEncoded(const QString& value)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(value));
}

} // namespace

Google::Google(QWidget* parent)
    : Info(TWL::Cloud::GoogleStorage, parent)
{
    // Rows whose key the account's document lacks stay hidden: keys show only the access key, the OAuth
    // modes only the project.
    addField(tr("Authentication:"), QStringLiteral("AuthType"), &Google::authenticationText);
    addField(tr("Access Key:"), QStringLiteral("AccessKey"));
    addField(tr("Project ID:"), QStringLiteral("ProjectId"), &Info::decryptDelegate);
    addField(tr("Bucket:"), QStringLiteral("ContainerName"));
    addField(tr("Prefix:"), QStringLiteral("BackupPrefix"));
    addField(tr("Use SSL:"), QStringLiteral("UseSsl"), &Info::trueFalseDelegate);
}

QString Google::authenticationText(const QVariant& authType)
{
    return modeText(Add::modeOf(authType.toInt()));
}

Google::Validator::Validator(QObject* parent)
    : AmazonS3Compatible::Validator(parent)
{ }

Google::AddContainer::AddContainer(const QSet<QString>& existing, QWidget* parent)
    : Storages::AddContainer(parent)
    , existing(existing)
    , types(new QComboBox(this))
    , locations(new QComboBox(this))
{
    edit->setValidator(new Validator(edit));
    setNote(tr("Container name must be globally unique. Name must be more 3 characters"));
    const TWL::Cloud::Info::GoogleStorage info;
    const auto classes = info.storageType();
    for (const auto& choice : classes)
        types->addItem(choice.label, choice.code);
    const auto regions = info.regions();
    for (const auto& choice : regions)
        locations->addItem(choice.label, choice.code);
    form->addRow(tr("Type:"), types);
    form->addRow(tr("Location:"), locations);
}

QString Google::AddContainer::type() const
{
    return types->currentData().toString();
}

QString Google::AddContainer::location() const
{
    return locations->currentData().toString();
}

void Google::AddContainer::onDataChanged()
{
    const QString name = edit->text().trimmed();
    okButton()->setEnabled(name.size() >= 3 && !existing.contains(name));
}

Google::Add::Add(QWidget* parent)
    : Storages::Add(TWL::Cloud::GoogleStorage, parent)
    , displayName(new QLineEdit(this))
    , authentication(new QComboBox(this))
    , settings(new QToolButton(this))
    , bucket(new QComboBox(this))
    , addBucket(new QToolButton(this))
{
    auto form = new QFormLayout;
    displayName->setFixedWidth(LineEditWidth);
    form->addRow(tr("Display Name:"), displayName);

    for (int mode : {AccessKeyMode, InstalledApplicationMode, ServiceAccountMode})
        authentication->addItem(modeText(mode));
    authentication->setCurrentIndex(-1);
    authentication->setMinimumWidth(LineEditWidth - 30);
    settings->setIcon(IconManager::icon(IconManager::Edit));
    settings->setToolTip(tr("Authentication settings"));
    settings->setEnabled(false);
    auto authRow = new QHBoxLayout;
    authRow->addWidget(authentication, 1);
    authRow->addWidget(settings);
    form->addRow(tr("Authentication:"), authRow);

    bucket->setMinimumWidth(LineEditWidth - 30);
    bucket->setEnabled(false);
    addBucket->setIcon(IconManager::icon(IconManager::Add));
    addBucket->setToolTip(tr("Add new bucket"));
    addBucket->setEnabled(false);
    auto bucketRow = new QHBoxLayout;
    bucketRow->addWidget(bucket, 1);
    bucketRow->addWidget(addBucket);
    form->addRow(tr("Bucket:"), bucketRow);
    insertForm(form);

    bucket->installEventFilter(this);
    connect(displayName, &QLineEdit::textChanged, this, &Add::onDataChanged);
    connect(
        authentication, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &Add::onAuthenticationTypeChanged);
    connect(settings, &QToolButton::clicked, this, &Add::onAuthenticationSettingsClicked);
    connect(bucket, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &Add::onDataChanged);
    connect(addBucket, &QToolButton::clicked, this, &Add::onAddBucketClicked);
}

int Google::Add::authTypeOf(int mode)
{
    switch (mode) {
    case InstalledApplicationMode:
        return TWL::Cloud::GoogleInstalledApplication;
    case ServiceAccountMode:
        return TWL::Cloud::GoogleServiceAccount;
    default:
        return TWL::Cloud::GoogleAccessKey;
    }
}

int Google::Add::modeOf(int authType)
{
    switch (authType) {
    case TWL::Cloud::GoogleInstalledApplication:
        return InstalledApplicationMode;
    case TWL::Cloud::GoogleServiceAccount:
        return ServiceAccountMode;
    default:
        return AccessKeyMode;
    }
}

bool Google::Add::canRequestPrefixes() const
{
    return listLoaded && !bucket->currentText().isEmpty();
}

void Google::Add::lockWidgetsAfterError(bool lock)
{
    Storages::Add::lockWidgetsAfterError(lock);
    if (lock) {
        bucket->setEnabled(false);
        addBucket->setEnabled(false);
    }
}

void Google::Add::lockWidgetsAfterSslOperation(bool lock)
{
    Storages::Add::lockWidgetsAfterSslOperation(lock);
    // A press on the list tries again.
    bucket->setEnabled(true);
}

Google::Add::Authentication* Google::Add::authenticationDialog(int mode)
{
    switch (mode) {
    case AccessKeyMode:
        return new AuthenticationAccessKey(&accessKey, &secretKey, this);
    case InstalledApplicationMode:
        return new AuthenticatioInstallApp(&appProjectId, &code, &redirectUri, this);
    case ServiceAccountMode:
        return new AuthenticationAccount(&accountProjectId, &serviceAccount, &privateKey, this);
    default:
        return nullptr;
    }
}

void Google::Add::onAuthenticationTypeChanged(int index)
{
    std::unique_ptr<Authentication> dialog(authenticationDialog(index));
    if (!dialog) {
        settings->setEnabled(false);
        onDataChanged();
        return;
    }
    if (dialog->exec() == QDialog::Accepted) {
        settings->setEnabled(true);
        onCredsReset();
    } else {
        const QSignalBlocker blocker(authentication);
        authentication->setCurrentIndex(-1);
        settings->setEnabled(false);
    }
    onDataChanged();
}

void Google::Add::onAuthenticationSettingsClicked()
{
    std::unique_ptr<Authentication> dialog(authenticationDialog(authentication->currentIndex()));
    if (dialog && dialog->exec() == QDialog::Accepted) {
        onCredsReset();
        onDataChanged();
    }
}

void Google::Add::onDataChanged()
{
    onClearErrorMessage();
    if (displayName->text().trimmed().isEmpty() || authentication->currentIndex() < 0) {
        bucket->setEnabled(false);
        okButton()->setEnabled(false);
        return;
    }
    bucket->setEnabled(true);
    if (!pendingContainer.isEmpty() && !containers.isEmpty())
        selectPendingContainer(bucket, &pendingContainer);
    if (listLoaded) {
        addBucket->setEnabled(true);
        okButton()->setEnabled(bucket->currentIndex() >= 0);
    }
}

void Google::Add::onCredsReset()
{
    containers.clear();
    const QSignalBlocker blocker(bucket);
    bucket->clear();
    addBucket->setEnabled(false);
    onClearErrorMessage();
    listLoaded = false;
    okButton()->setEnabled(false);
}

bool Google::Add::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == bucket && event->type() == QEvent::MouseButtonPress && bucket->isEnabled() && !listLoaded) {
        if (spendCode())
            loadContainers();
    }
    return Storages::Add::eventFilter(watched, event);
}

bool Google::Add::spendCode()
{
    // The cloud layer lists with the refresh token, so a fresh code is traded before the first list rather
    // than after it; it is spent once either way.
    if (authentication->currentIndex() != InstalledApplicationMode || code.isEmpty())
        return true;
    refreshToken = refreshTokenInstalledApp(code.toLatin1());
    TWL::TwlDebug("TWB").debug() << "Refresh token:" << refreshToken;
    code.clear();
    if (refreshToken.isEmpty()) {
        // Without the token nothing can be listed: a new code is the only way on.
        setErrorMessage(tr("Google did not accept the code. Get a new code in the authentication settings."), true);
        return false;
    }
    return true;
}

QByteArray Google::Add::refreshTokenInstalledApp(const QByteArray& authorizationCode)
{
    using TWL::Cloud::Info::GoogleStorage;
    const QString redirect = redirectUri.isEmpty() ? AuthenticatioInstallApp::manualRedirectUri() : redirectUri;
    const QByteArray body
        = QStringLiteral("code=%1&client_id=%2&client_secret=%3&redirect_uri=%4&grant_type=%5")
              .arg(formEncoded(QString::fromLatin1(authorizationCode)), formEncoded(GoogleStorage::oauthClientId()),
                  formEncoded(GoogleStorage::oauthClientSecret()), formEncoded(redirect),
                  QStringLiteral("authorization_code"))
              .toLatin1();
    QNetworkRequest request(GoogleStorage::oauthTokenUrl());
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/x-www-form-urlencoded"));
    request.setTransferTimeout(30000);
    QNetworkAccessManager network;
    beginLockUI();
    std::unique_ptr<QNetworkReply> reply(network.post(request, body));
    QEventLoop loop;
    connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    if (!reply->isFinished())
        loop.exec();
    endLockUI();
    const QByteArray answer = reply->readAll();
    const QJsonObject parsed = QJsonDocument::fromJson(answer).object();
    if (reply->error() != QNetworkReply::NoError) {
        // The provider says why in its answer ("invalid_grant" for a spent code); the body holds no secret.
        const QString reason = parsed.value(QStringLiteral("error")).toString();
        TWL::TwlDebug("TWB").warning() << "Google token request failed:" << reply->errorString() << reason;
        return QByteArray();
    }
    const QByteArray token = parsed.value(QStringLiteral("refresh_token")).toString().toLatin1();
    if (token.isEmpty())
        TWL::TwlDebug("TWB").warning() << "Google token answer holds no refresh token.";
    return token;
}

bool Google::Add::loadContainersFinished(TWL::Cloud::Operation::ListContainers* operation)
{
    containers.clear();
    const QJsonArray data = operation->data();
    for (const auto& entry : data)
        containers.append(entry.toObject().value(QStringLiteral("Name")).toString());
    {
        const QSignalBlocker blocker(bucket);
        bucket->clear();
        bucket->addItems(containers);
    }
    listLoaded = true;
    addBucket->setEnabled(true);
    if (!createdContainer.isEmpty() && !containers.isEmpty()) {
        pendingContainer = createdContainer;
        createdContainer.clear();
    }
    onDataChanged();
    return true;
}

QVariantMap Google::Add::cloudConfig()
{
    using namespace TWL::Cloud;
    QVariantMap config = Storages::Add::cloudConfig();
    const int mode = authentication->currentIndex();
    config.insert(Key::ContainerName, bucket->currentText());
    config.insert(Key::AuthType, authTypeOf(mode));
    if (mode == InstalledApplicationMode) {
        config.insert(Key::ProjectId, appProjectId);
        config.insert(Key::InitCode, code);
        config.insert(Key::RefreshToken, QString::fromLatin1(refreshToken));
        config.insert(Key::UseSsl, true);
    } else if (mode == ServiceAccountMode) {
        config.insert(Key::PrivateKey, privateKey);
        config.insert(Key::ProjectId, accountProjectId);
        config.insert(Key::ServiceAccount, serviceAccount);
        config.insert(Key::UseSsl, true);
    } else {
        config.insert(Key::AccessKey, accessKey);
        config.insert(Key::SecretKey, secretKey);
        config.insert(Key::UseSsl, useSsl);
    }
    return config;
}

void Google::Add::saveConfig()
{
    using namespace TWL::Cloud;
    using SHARED::cryptNS::encrypt_local_password;
    const int mode = authentication->currentIndex();
    QJsonObject document {{Key::ContainerName, bucket->currentText()}, {Key::AuthType, authTypeOf(mode)}};
    if (mode == InstalledApplicationMode) {
        document.insert(Key::RefreshToken, encrypt_local_password(QString::fromLatin1(refreshToken)));
        document.insert(Key::ProjectId, encrypt_local_password(appProjectId));
        document.insert(Key::UseSsl, 1);
    } else if (mode == ServiceAccountMode) {
        document.insert(Key::ServiceAccount, encrypt_local_password(serviceAccount));
        document.insert(Key::ProjectId, encrypt_local_password(accountProjectId));
        // As text, which is how the service and the cloud layer read it: rclone takes Google's JSON or PEM keys.
        document.insert(Key::PrivateKey, encrypt_local_password(QString::fromUtf8(privateKey)));
        document.insert(Key::UseSsl, 1);
    } else {
        document.insert(Key::AccessKey, accessKey);
        document.insert(Key::SecretKey, encrypt_local_password(secretKey));
        document.insert(Key::UseSsl, useSsl);
    }
    QString error;
    if (!updateAccount(document, displayName->text().trimmed(), error)) {
        TWL::TwlDebug("TWB").error() << error;
        setErrorMessage(error, true);
    }
}

void Google::Add::onAccept()
{
    saveConfig();
}

QString Google::Add::decrypted(const QJsonObject& details, const QString& key)
{
    const QString stored = details.value(key).toString();
    const QString plain = SHARED::cryptNS::decrypt_local_password(stored);
    if (plain.isEmpty() && !stored.isEmpty()) {
        TWL::TwlDebug("TWB").error() << "Can't decrypt secret Key in account load. ID:" << id.toString();
        setErrorMessage(tr("Can't decrypt secret Key in account load."), true);
    }
    return plain;
}

void Google::Add::onSetItem(const QModelIndex& index)
{
    using namespace TWL::Cloud;
    displayName->setText(index.sibling(index.row(), 0).data().toString());
    const QJsonObject details = index.sibling(index.row(), 8).data().toJsonObject();
    useSsl = details.value(Key::UseSsl).toVariant().toBool() || !details.contains(Key::UseSsl);
    const int mode = modeOf(details.value(Key::AuthType).toInt());
    if (mode == InstalledApplicationMode) {
        refreshToken = decrypted(details, Key::RefreshToken).toLatin1();
        appProjectId = decrypted(details, Key::ProjectId);
    } else if (mode == ServiceAccountMode) {
        serviceAccount = decrypted(details, Key::ServiceAccount);
        accountProjectId = decrypted(details, Key::ProjectId);
        privateKey = decrypted(details, Key::PrivateKey).toUtf8();
    } else {
        accessKey = details.value(Key::AccessKey).toString();
        secretKey = decrypted(details, Key::SecretKey);
    }
    {
        const QSignalBlocker blocker(authentication);
        authentication->setCurrentIndex(mode);
    }
    settings->setEnabled(true);
    onDataChanged();
    loadContainers();
    pendingContainer = details.value(Key::ContainerName).toString();
}

void Google::Add::onAdvancedClicked()
{
    onClearErrorMessage();
    const bool keys = authentication->currentIndex() == AccessKeyMode;
    Account::AdvancedStorage dialog(keys ? useSsl : true, prefix, QStringList(), !canRequestPrefixes(), this, this);
    // Google's OAuth interfaces take TLS only.
    dialog.sslBox()->setEnabled(keys);
    if (dialog.exec() != QDialog::Accepted)
        return;
    prefix = dialog.prefix();
    if (keys && dialog.useSsl() != useSsl) {
        useSsl = dialog.useSsl();
        onCredsReset();
        onDataChanged();
    }
}

Storages::AddContainer* Google::Add::addContainerDialog()
{
    return new AddContainer(QSet<QString>(containers.begin(), containers.end()), this);
}

void Google::Add::onAddBucketClicked()
{
    onClearErrorMessage();
    std::unique_ptr<Storages::AddContainer> dialog(addContainerDialog());
    if (dialog->exec() != QDialog::Accepted)
        return;
    TWL::TwlDebug("TWB").info() << "Google: create new bucket!";
    auto google = static_cast<AddContainer*>(dialog.get());
    createContainer(
        TWL::Cloud::ContainerParams::GoogleStorage(google->name(), google->type(), google->location()).json());
    createdContainer = dialog->name();
}

} // namespace TWB::GUI::Settings::Account
