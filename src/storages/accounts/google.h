#pragma once

#include "storages/accounts/amazon_s3_compatible.h"

#include <QByteArray>

class QComboBox;
class QToolButton;

namespace TWB::GUI::Settings::Account {

/// The view of a Google Cloud Storage account; its rows follow the way the account authenticates.
class TWBCONSOLE_EXPORT Google : public Storages::Info
{
    Q_OBJECT
    Q_DISABLE_COPY(Google)
public:
    class Add;
    class AddContainer;
    class Validator;

    explicit Google(QWidget* parent = nullptr);
    /// The text of an "AuthType" value of a saved document.
    static QString authenticationText(const QVariant& authType);
};

/// Bucket names of Google: the rules of the S3 family.
class TWBCONSOLE_EXPORT Google::Validator : public AmazonS3Compatible::Validator
{
    Q_OBJECT
    Q_DISABLE_COPY(Validator)
public:
    explicit Validator(QObject* parent = nullptr);
};

/// A new bucket: its name, storage class and location.
class TWBCONSOLE_EXPORT Google::AddContainer : public Storages::AddContainer
{
    Q_OBJECT
    Q_DISABLE_COPY(AddContainer)
public:
    AddContainer(const QSet<QString>& existing, QWidget* parent = nullptr);
    /// The storage class code, such as "STANDARD".
    QString type() const;
    QString location() const;
    QComboBox* typeBox() const { return types; }
    QComboBox* locationBox() const { return locations; }

public Q_SLOTS:
    void onDataChanged() override;

private:
    const QSet<QString> existing;
    QComboBox* types; // owned as a child
    QComboBox* locations; // owned as a child
};

/// A Google Cloud Storage account, reached in one of three ways, each set in a dialog of its own: HMAC keys,
/// an installed application that the user authorises in a browser, or a service account. A press on the
/// bucket list checks the credentials.
class TWBCONSOLE_EXPORT Google::Add : public Storages::Add
{
    Q_OBJECT
    Q_DISABLE_COPY(Add)
public:
    class Authentication;
    class AuthenticationAccessKey;
    class AuthenticatioInstallApp;
    class AuthenticationAccount;

    /// Combo box indexes; the saved "AuthType" numbers the last two the other way round.
    enum Mode {
        AccessKeyMode = 0,
        InstalledApplicationMode = 1,
        ServiceAccountMode = 2,
    };

    explicit Add(QWidget* parent = nullptr);

    bool canRequestPrefixes() const override;
    void lockWidgetsAfterError(bool lock) override;
    void lockWidgetsAfterSslOperation(bool lock) override;
    bool loadContainersFinished(TWL::Cloud::Operation::ListContainers* operation) override;
    QVariantMap cloudConfig() override;
    void saveConfig();
    Storages::AddContainer* addContainerDialog();

    /// Trades an authorisation code of the installed application for its refresh token at the provider's
    /// token endpoint; empty, with a warning in the log, when the provider refuses.
    QByteArray refreshTokenInstalledApp(const QByteArray& code);

    static int authTypeOf(int mode);
    static int modeOf(int authType);

    QLineEdit* displayNameEdit() const { return displayName; }
    QComboBox* authenticationBox() const { return authentication; }
    QToolButton* settingsButton() const { return settings; }
    QComboBox* bucketBox() const { return bucket; }
    QToolButton* addBucketButton() const { return addBucket; }
    bool isListLoaded() const { return listLoaded; }
    QByteArray heldRefreshToken() const { return refreshToken; }

public Q_SLOTS:
    void onAccept() override;
    void onSetItem(const QModelIndex& index) override;
    void onAdvancedClicked() override;
    void onDataChanged();
    void onCredsReset();
    void onAuthenticationTypeChanged(int index);
    void onAuthenticationSettingsClicked();
    void onAddBucketClicked();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// The dialog of a mode, bound to this form's fields.
    Authentication* authenticationDialog(int mode);
    /// Spends a fresh code of the installed application once, before the list needs its refresh token; false,
    /// with the reason shown, when the provider refused it.
    bool spendCode();
    QString decrypted(const QJsonObject& details, const QString& key);

    QLineEdit* displayName; // owned as a child
    QComboBox* authentication; // owned as a child
    QToolButton* settings; // owned as a child
    QComboBox* bucket; // owned as a child
    QToolButton* addBucket; // owned as a child

    QString accessKey;
    QString secretKey;
    QString appProjectId;
    QString code;
    /// Where the provider sent the code; the token request must name the same address.
    QString redirectUri;
    QString accountProjectId;
    QString serviceAccount;
    QByteArray privateKey;
    QByteArray refreshToken;
    QString pendingContainer;
    QStringList containers;
    bool listLoaded = false;
    bool useSsl = true;
};

} // namespace TWB::GUI::Settings::Account
