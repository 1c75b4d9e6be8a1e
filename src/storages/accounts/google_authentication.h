#pragma once

#include "storages/accounts/google.h"

#include <QDialog>
#include <QPointer>

class QDialogButtonBox;
class QFormLayout;
class QLabel;
class QOAuth2AuthorizationCodeFlow;
class QOAuthHttpServerReplyHandler;
class QPushButton;

namespace TWB::GUI::Settings::Account {

/// What the three authentication dialogs share: a form, a message line, Ok only while the form is complete,
/// and the form's fields written back on Ok.
class TWBCONSOLE_EXPORT Google::Add::Authentication : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY(Authentication)
public:
    QPushButton* okButton() const;
    QString messageText() const;

public Q_SLOTS:
    virtual void onDataChanged();

protected:
    Authentication(const QString& title, QWidget* parent);
    /// A line edit in the form, of the width of the account forms, showing `value`.
    QLineEdit* addLine(const QString& label, const QString& value);
    void setMessage(const QString& text);
    virtual bool complete() const;
    virtual void store() = 0;

    QFormLayout* form; // owned by the dialog's layout
    QList<QLineEdit*> lines; // owned as children

private:
    QLabel* message; // owned as a child
    QDialogButtonBox* buttons; // owned as a child
};

class TWBCONSOLE_EXPORT Google::Add::AuthenticationAccessKey : public Google::Add::Authentication
{
    Q_OBJECT
    Q_DISABLE_COPY(AuthenticationAccessKey)
public:
    AuthenticationAccessKey(QString* accessKey, QString* secretKey, QWidget* parent = nullptr);

protected:
    void store() override;

private:
    QString* accessKey; // not owned
    QString* secretKey; // not owned
};

/// The installed application: "..." runs the OAuth code flow in the user's browser, and the code comes back
/// to a listener on loopback; a code pasted by hand works as well.
class TWBCONSOLE_EXPORT Google::Add::AuthenticatioInstallApp : public Google::Add::Authentication
{
    Q_OBJECT
    Q_DISABLE_COPY(AuthenticatioInstallApp)
public:
    /// The redirect address that codes typed by hand are issued for.
    static QString manualRedirectUri() { return QStringLiteral("urn:ietf:wg:oauth:2.0:oob"); }

    AuthenticatioInstallApp(QString* projectId, QString* code, QString* redirectUri, QWidget* parent = nullptr);
    ~AuthenticatioInstallApp() override;

    QLineEdit* codeEdit() const { return lines.value(1); }
    QPushButton* getTokenButton() const { return getToken; }

public Q_SLOTS:
    void onGetToken();

protected:
    void store() override;

private:
    void onCallback(const QVariantMap& values);

    QString* projectId; // not owned
    QString* code; // not owned
    QString* redirectUri; // not owned
    QString redirect;
    QPushButton* getToken; // owned as a child
    QPointer<QOAuth2AuthorizationCodeFlow> flow; // owned as a child
    QPointer<QOAuthHttpServerReplyHandler> listener; // owned as a child
};

class TWBCONSOLE_EXPORT Google::Add::AuthenticationAccount : public Google::Add::Authentication
{
    Q_OBJECT
    Q_DISABLE_COPY(AuthenticationAccount)
public:
    AuthenticationAccount(
        QString* projectId, QString* serviceAccount, QByteArray* privateKey, QWidget* parent = nullptr);

    QLabel* keyLabel() const { return keyState; }
    QPushButton* importButton() const { return import; }

public Q_SLOTS:
    void onImport();

protected:
    bool complete() const override;
    void store() override;

private:
    QString* projectId; // not owned
    QString* serviceAccount; // not owned
    QByteArray* privateKey; // not owned
    QByteArray key;
    QLabel* keyState; // owned as a child
    QPushButton* import; // owned as a child
};

} // namespace TWB::GUI::Settings::Account
