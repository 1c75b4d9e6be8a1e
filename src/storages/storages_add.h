#pragma once

#include "platform/cloud/cloud_type.h"
#include "storages/storages.h"

#include <QDialog>
#include <QJsonObject>
#include <QModelIndex>
#include <QSharedPointer>
#include <QStringList>
#include <QUuid>

class QComboBox;
class QDialogButtonBox;
class QGridLayout;
class QLabel;
class QLayout;
class QPushButton;
class QVBoxLayout;

namespace TWL::Cloud {
class IOperation;
namespace Operation {
class ListContainers;
}
} // namespace TWL::Cloud

namespace TWB::Operation {
class GetPrefixOperation;
}

namespace TWB::GUI {
class ProgressWheel;
}

namespace TWB::GUI::Settings {

/// What every new-account dialog has: the id of the account, made before the service knows it.
class TWBCONSOLE_EXPORT Storages::AddBase
{
public:
    AddBase();
    virtual ~AddBase();
    QUuid accountId() const { return id; }

protected:
    QUuid id;
};

/// The frame of every account form: a message line, a wait wheel, "Advanced settings", Ok and Cancel;
/// listing and creating containers and listing prefixes through the cloud layer; the trust of a
/// certificate the peer shows; and saving the account through the service.
class TWBCONSOLE_EXPORT Storages::Add : public QDialog, public Storages::AddBase
{
    Q_OBJECT
    Q_DISABLE_COPY(Add)
public:
    static constexpr int LineEditWidth = 260;
    /// Where, counted from the end of the dialog's layout, subclasses insert their form.
    static constexpr int Index = 3;

    Add(TWL::Cloud::Type type, QWidget* parent = nullptr);
    ~Add() override;

    TWL::Cloud::Type cloudType() const { return type; }
    QString accountPrefix() const { return prefix; }
    /// Opens an existing account: the form fills itself from the row a moment after it shows.
    void setItem(const QModelIndex& index);

    void setErrorMessage(const QString& text, bool lock);
    void setSuccessMessage(const QString& text, bool lock);
    void process(bool on);
    /// The message shown now, as plain text.
    QString messageText() const;
    QPushButton* okButton() const;
    QPushButton* advancedButton() const { return advanced; }

    virtual bool canRequestPrefixes() const;
    virtual void loadPrefixes();

    virtual void beginLockUI();
    virtual void endLockUI();
    virtual void lockWidgetsAfterError(bool lock);
    virtual void lockWidgetsAfterSslOperation(bool lock);
    virtual bool loadContainersFinished(TWL::Cloud::Operation::ListContainers* operation);
    virtual QVariantMap cloudConfig();
    virtual void createContainer(const QJsonObject& params);
    virtual void operationErrorHandler(int code, const QString& message);

    /// The prefix a new account starts with: the computer's name.
    static QString defaultPrefix();
    /// Selects in a freshly listed box the name kept for it (exact spelling first, else one differing in
    /// case, else the first entry) and forgets the name.
    static void selectPendingContainer(QComboBox* box, QString* pending);

public Q_SLOTS:
    virtual void onAccept() = 0;
    virtual void onSetItem(const QModelIndex& index) = 0;
    virtual void onAdvancedClicked() = 0;
    virtual void onLoadContainerOperationFinished();
    void onClearErrorMessage();
    void loadContainers();

Q_SIGNALS:
    void updateComplite();
    void updateError(const QString& text);
    void setItemSignal(const QModelIndex& index);
    void loadPrefixiesFinished(const QStringList& prefixes);

protected:
    /// Puts the form above the frame's own rows.
    void insertForm(QLayout* form);
    /// The endpoint as the user typed it, normalised; empty with an error shown when it is not usable.
    QString checkingEndpoint(const QString& endpoint, bool& useSsl);
    /// Sends the saved document to the service; false, with the reason in `error`, when it could not.
    bool updateAccount(const QJsonObject& document, const QString& displayName, QString& error);
    /// True when the operation did not fail; a certificate the peer cannot be trusted with leads to the
    /// trust question, and the form stays locked meanwhile.
    bool operationFinished(TWL::Cloud::IOperation* operation);

    const TWL::Cloud::Type type;
    QString prefix;
    QModelIndex item;
    QString createdContainer;
    QSharedPointer<TWL::Cloud::IOperation> containersOperation;
    QSharedPointer<TWL::Cloud::IOperation> createOperation;
    QSharedPointer<TWB::Operation::GetPrefixOperation> prefixOperation;

private Q_SLOTS:
    void onCreateContainerFinished();
    void onLoadSslFinished();
    void onAppendSslFinished();
    void onUpdateComplite();
    void onUpdateError(const QString& text);
    void onReject();
    void onLoadPrefixesOperationFinished(const QUuid& id, const QStringList& prefixes);
    void onLoadPrefixesOperationError(const QUuid& id, int code, const QString& message);

private:
    void callingOnSetItem();

    QVBoxLayout* mainLayout; // owned by the dialog
    QLabel* message; // owned as a child
    ProgressWheel* wheel; // owned as a child
    QGridLayout* grid; // owned by mainLayout
    QPushButton* advanced; // owned as a child
    QDialogButtonBox* buttons; // owned as a child
};

} // namespace TWB::GUI::Settings
