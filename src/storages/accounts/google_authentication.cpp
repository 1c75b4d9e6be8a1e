#include "storages/accounts/google_authentication.h"

#include "platform/cloud/info.h"
#include "platform/logging/twl_debug.h"
#include "storages/storages_add.h"

#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QOAuth2AuthorizationCodeFlow>
#include <QOAuthHttpServerReplyHandler>
#include <QPushButton>
#include <QVBoxLayout>

namespace TWB::GUI::Settings::Account {

namespace {

// The flow up to the code: the form trades the code itself once the account is checked, so the flow's own
// token request, which grant() would make on the callback, must not spend it first.
class CodeFlow final : public QOAuth2AuthorizationCodeFlow
{
public:
    using QOAuth2AuthorizationCodeFlow::QOAuth2AuthorizationCodeFlow;
    QUrl authorizationRequest(const QVariantMap& parameters) { return buildAuthenticateUrl(parameters); }
};

} // namespace

Google::Add::Authentication::Authentication(const QString& title, QWidget* parent)
    : QDialog(parent)
    , form(new QFormLayout)
    , message(new QLabel(this))
    , buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this))
{
    setWindowTitle(title);
    auto layout = new QVBoxLayout(this);
    layout->addLayout(form);
    message->setWordWrap(true);
    message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    message->hide();
    layout->addWidget(message);
    layout->addWidget(buttons);
    okButton()->setEnabled(false);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        store();
        accept();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

QPushButton* Google::Add::Authentication::okButton() const
{
    return buttons->button(QDialogButtonBox::Ok);
}

QString Google::Add::Authentication::messageText() const
{
    return message->isHidden() ? QString() : message->text();
}

QLineEdit* Google::Add::Authentication::addLine(const QString& label, const QString& value)
{
    auto line = new QLineEdit(value, this);
    line->setFixedWidth(Storages::Add::LineEditWidth);
    connect(line, &QLineEdit::textChanged, this, &Authentication::onDataChanged);
    lines << line;
    form->addRow(label, line);
    return line;
}

void Google::Add::Authentication::setMessage(const QString& text)
{
    message->setText(text);
    message->setVisible(!text.isEmpty());
    adjustSize();
}

bool Google::Add::Authentication::complete() const
{
    for (const QLineEdit* line : lines) {
        if (line->text().trimmed().isEmpty())
            return false;
    }
    return true;
}

void Google::Add::Authentication::onDataChanged()
{
    okButton()->setEnabled(complete());
}

Google::Add::AuthenticationAccessKey::AuthenticationAccessKey(QString* accessKey, QString* secretKey, QWidget* parent)
    : Authentication(tr("Authentication with Access and Secret Key"), parent)
    , accessKey(accessKey)
    , secretKey(secretKey)
{
    addLine(tr("Access Key:"), *accessKey);
    addLine(tr("Secret Key:"), *secretKey)->setEchoMode(QLineEdit::Password);
    onDataChanged();
}

void Google::Add::AuthenticationAccessKey::store()
{
    *accessKey = lines.at(0)->text().trimmed();
    *secretKey = lines.at(1)->text().trimmed();
}

Google::Add::AuthenticatioInstallApp::AuthenticatioInstallApp(
    QString* projectId, QString* code, QString* redirectUri, QWidget* parent)
    : Authentication(tr("Authentication with Install Application"), parent)
    , projectId(projectId)
    , code(code)
    , redirectUri(redirectUri)
    , redirect(redirectUri->isEmpty() ? manualRedirectUri() : *redirectUri)
    , getToken(new QPushButton(QStringLiteral("..."), this))
{
    addLine(tr("Project ID:"), *projectId);
    auto codeLine = new QLineEdit(*code, this);
    codeLine->setMinimumWidth(Storages::Add::LineEditWidth - 40);
    connect(codeLine, &QLineEdit::textChanged, this, &Authentication::onDataChanged);
    // A code typed or pasted by hand was issued for the address that shows it to the user.
    connect(codeLine, &QLineEdit::textEdited, this, [this] { redirect = manualRedirectUri(); });
    lines << codeLine;
    getToken->setToolTip(tr("Sign in with Google in the browser"));
    getToken->setFixedWidth(getToken->sizeHint().height() + 8);
    auto row = new QHBoxLayout;
    row->addWidget(codeLine, 1);
    row->addWidget(getToken);
    form->addRow(tr("Code:"), row);
    connect(getToken, &QPushButton::clicked, this, &AuthenticatioInstallApp::onGetToken);
    onDataChanged();
}

Google::Add::AuthenticatioInstallApp::~AuthenticatioInstallApp() = default;

void Google::Add::AuthenticatioInstallApp::onGetToken()
{
    using TWL::Cloud::Info::GoogleStorage;
    setMessage(QString());
    if (GoogleStorage::oauthClientId().isEmpty()) {
        setMessage(QStringLiteral("<font color='red'>%1</font>")
                       .arg(tr("No OAuth client is set up for Google Cloud Storage.")));
        return;
    }
    delete flow;
    delete listener;
    // A loopback listener on a port of the system's choosing receives the browser's redirect with the code.
    listener = new QOAuthHttpServerReplyHandler(QHostAddress::LocalHost, 0, this);
    if (!listener->isListening()) {
        setMessage(QStringLiteral("<font color='red'>%1</font>").arg(tr("Can't wait for the code on this computer.")));
        return;
    }
    listener->setCallbackText(tr("The code has been passed on. You may close this page."));
    auto codeFlow = new CodeFlow(this);
    flow = codeFlow;
    flow->setAuthorizationUrl(GoogleStorage::oauthAuthorizationUrl());
    flow->setAccessTokenUrl(GoogleStorage::oauthTokenUrl());
    flow->setClientIdentifier(GoogleStorage::oauthClientId());
    flow->setScope(GoogleStorage::oauthScope());
    flow->setReplyHandler(listener);
    connect(flow.data(), &QOAuth2AuthorizationCodeFlow::authorizationCallbackReceived, this,
        &AuthenticatioInstallApp::onCallback);
    const QUrl url = codeFlow->authorizationRequest({{QStringLiteral("access_type"), QStringLiteral("offline")},
        {QStringLiteral("prompt"), QStringLiteral("consent")}});
    TWL::TwlDebug("TWB").debug() << "Google authorisation:" << url.toString();
    if (!QDesktopServices::openUrl(url))
        setMessage(tr("Open this address in a browser: %1").arg(url.toString().toHtmlEscaped()));
}

void Google::Add::AuthenticatioInstallApp::onCallback(const QVariantMap& values)
{
    if (!flow)
        return;
    const QString error = values.value(QStringLiteral("error")).toString();
    if (!error.isEmpty()) {
        TWL::TwlDebug("TWB").warning() << "Google authorisation refused:" << error;
        setMessage(
            QStringLiteral("<font color='red'>%1</font>").arg(tr("Google refused the authorisation: %1").arg(error)));
        return;
    }
    // The state ties the answer to the request this dialog made.
    if (values.value(QStringLiteral("state")).toString() != flow->state()) {
        TWL::TwlDebug("TWB").warning() << "Google authorisation answer of another request dropped.";
        return;
    }
    const QString received = QUrl::fromPercentEncoding(values.value(QStringLiteral("code")).toByteArray());
    if (received.isEmpty())
        return;
    redirect = listener->callback();
    lines.at(1)->setText(received);
    listener->close();
    raise();
    activateWindow();
}

void Google::Add::AuthenticatioInstallApp::store()
{
    *projectId = lines.at(0)->text().trimmed();
    const QString typed = lines.at(1)->text().trimmed();
    if (typed != *code)
        *redirectUri = redirect;
    *code = typed;
}

Google::Add::AuthenticationAccount::AuthenticationAccount(
    QString* projectId, QString* serviceAccount, QByteArray* privateKey, QWidget* parent)
    : Authentication(tr("Authentication with Service Account"), parent)
    , projectId(projectId)
    , serviceAccount(serviceAccount)
    , privateKey(privateKey)
    , key(*privateKey)
    , keyState(new QLabel(this))
    , import(new QPushButton(tr("Import"), this))
{
    addLine(tr("Project ID"), *projectId);
    addLine(tr("Service acc. email:"), *serviceAccount);
    keyState->setText(key.isEmpty() ? tr("Not specified") : tr("Imported"));
    auto row = new QHBoxLayout;
    row->addWidget(keyState, 1);
    row->addWidget(import);
    form->addRow(tr("Private key (p12):"), row);
    connect(import, &QPushButton::clicked, this, &AuthenticationAccount::onImport);
    onDataChanged();
}

void Google::Add::AuthenticationAccount::onImport()
{
    const QString path
        = QFileDialog::getOpenFileName(this, tr("Import private key"), QString(), QStringLiteral("*.p12 (*.p12)"));
    if (path.isEmpty())
        return;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        setMessage(QStringLiteral("<font color='red'>%1</font>").arg(file.errorString().toHtmlEscaped()));
        return;
    }
    key = file.readAll();
    keyState->setText(key.isEmpty() ? tr("Not specified") : tr("Imported"));
    onDataChanged();
}

bool Google::Add::AuthenticationAccount::complete() const
{
    return Authentication::complete() && !key.isEmpty();
}

void Google::Add::AuthenticationAccount::store()
{
    *projectId = lines.at(0)->text().trimmed();
    *serviceAccount = lines.at(1)->text().trimmed();
    *privateKey = key;
}

} // namespace TWB::GUI::Settings::Account
