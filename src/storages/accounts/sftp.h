#pragma once

#include "storages/storages_add.h"
#include "storages/storages_info.h"

class QLineEdit;
class QPushButton;
class QSpinBox;

namespace TWB::GUI::Settings::Account {

/// A folder on an SFTP server.
class TWBCONSOLE_EXPORT Sftp : public Storages::Info
{
    Q_OBJECT
    Q_DISABLE_COPY(Sftp)
public:
    class Add;
    explicit Sftp(QWidget* parent = nullptr);
};

/// Host, port, user, a password or a private key file, and the folder. "Connect" signs in and lists the
/// folder; Ok waits for that to have worked with the fields as they stand.
class TWBCONSOLE_EXPORT Sftp::Add : public Storages::Add
{
    Q_OBJECT
    Q_DISABLE_COPY(Add)
public:
    explicit Add(QWidget* parent = nullptr);

    QVariantMap cloudConfig() override;
    bool loadContainersFinished(TWL::Cloud::Operation::ListContainers* operation) override;
    void lockWidgetsAfterError(bool lock) override;

    QLineEdit* displayNameEdit() const { return displayName; }
    QLineEdit* hostEdit() const { return host; }
    QSpinBox* portBox() const { return port; }
    QLineEdit* userEdit() const { return user; }
    QLineEdit* passwordEdit() const { return password; }
    QLineEdit* keyFileEdit() const { return keyFile; }
    QLineEdit* folderEdit() const { return folder; }
    QPushButton* connectButton() const { return check; }
    bool isChecked() const { return checked; }

public Q_SLOTS:
    void onAccept() override;
    void onSetItem(const QModelIndex& index) override;
    void onAdvancedClicked() override;
    void onDataChanged();
    void onCheck();
    void onBrowseKey();

private:
    /// The private key: the file's text when a file is named, else the key the account holds.
    QByteArray privateKey(QString* error) const;

    QLineEdit* displayName; // owned as a child
    QLineEdit* host; // owned as a child
    QSpinBox* port; // owned as a child
    QLineEdit* user; // owned as a child
    QLineEdit* password; // owned as a child
    QLineEdit* keyFile; // owned as a child
    QPushButton* browseKey; // owned as a child
    QLineEdit* folder; // owned as a child
    QPushButton* check; // owned as a child
    QByteArray storedKey;
    bool checked = false;
};

} // namespace TWB::GUI::Settings::Account
