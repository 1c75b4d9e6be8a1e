#include "storages/storages_add.h"

#include "platform/cloud/endpoint_helper.h"
#include "platform/cloud/get_prefix_operation.h"
#include "platform/cloud/info.h"
#include "platform/cloud/info_factory.h"
#include "platform/cloud/ioperation.h"
#include "platform/cloud/list_containers.h"
#include "platform/cloud/operation_manager.h"
#include "platform/communication/command_calls.h"
#include "platform/communication/command_params.h"
#include "platform/logging/twl_debug.h"
#include "storages/ssl_cert_make_trust_dialog.h"
#include "widgets/progress_wheel.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSslCertificate>
#include <QSysInfo>
#include <QTextDocumentFragment>
#include <QTimer>
#include <QVBoxLayout>

namespace TWB::GUI::Settings {

using TWB::Common::Communication::ICommand;
namespace Communication = TWB::Common::Communication;

Storages::AddBase::AddBase()
    : id(QUuid::createUuid())
{ }

Storages::AddBase::~AddBase() = default;

Storages::Add::Add(TWL::Cloud::Type type, QWidget* parent)
    : QDialog(parent)
    , type(type)
    , prefix(defaultPrefix())
    , mainLayout(new QVBoxLayout(this))
    , message(new QLabel(this))
    , wheel(new ProgressWheel(ProgressWheel::Dialog, this))
    , grid(new QGridLayout)
    , advanced(new QPushButton(tr("Advanced settings"), this))
    , buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this))
{
    setWindowTitle(tr("Add New Account"));
    // Return in a field must not open the advanced settings: only Ok is a default button.
    advanced->setAutoDefault(false);
    grid->addWidget(advanced, 0, 1, Qt::AlignRight);
    grid->setColumnStretch(0, 1);
    mainLayout->addLayout(grid);
    message->setWordWrap(true);
    message->setTextFormat(Qt::RichText);
    message->hide();
    mainLayout->addWidget(message);
    auto bottom = new QHBoxLayout;
    bottom->addWidget(wheel);
    bottom->addStretch(1);
    bottom->addWidget(buttons);
    mainLayout->addLayout(bottom);
    okButton()->setEnabled(false);

    connect(advanced, &QPushButton::clicked, this, &Add::onAdvancedClicked);
    // Ok saves first; the dialog closes only once the service took the account.
    connect(buttons, &QDialogButtonBox::accepted, this, &Add::onAccept);
    connect(buttons, &QDialogButtonBox::rejected, this, &Add::reject);
    connect(this, &QDialog::rejected, this, &Add::onReject);
    connect(this, &Add::updateComplite, this, &Add::accept);
    connect(this, &Add::updateError, this, &Add::onUpdateError);
    connect(this, &Add::setItemSignal, this, &Add::onSetItem, Qt::QueuedConnection);
}

Storages::Add::~Add()
{
    if (containersOperation)
        containersOperation->remove();
    if (createOperation)
        createOperation->remove();
}

void Storages::Add::selectPendingContainer(QComboBox* box, QString* pending)
{
    int at = box->findText(*pending, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (at < 0)
        at = box->findText(*pending, Qt::MatchFixedString);
    pending->clear();
    box->setCurrentIndex(at < 0 ? 0 : at);
}

QString Storages::Add::defaultPrefix()
{
    return QSysInfo::machineHostName();
}

void Storages::Add::insertForm(QLayout* form)
{
    mainLayout->insertLayout(mainLayout->count() - Index, form);
}

QPushButton* Storages::Add::okButton() const
{
    return buttons->button(QDialogButtonBox::Ok);
}

void Storages::Add::setItem(const QModelIndex& index)
{
    if (index.isValid())
        setWindowTitle(tr("Edit Account"));
    id = QUuid(index.sibling(index.row(), 1).data().toString());
    prefix = index.sibling(index.row(), 3).data().toString();
    item = index;
    // The form fills itself once the dialog has appeared.
    QTimer::singleShot(100, this, &Add::callingOnSetItem);
}

void Storages::Add::callingOnSetItem()
{
    Q_EMIT setItemSignal(item);
}

void Storages::Add::setErrorMessage(const QString& text, bool lock)
{
    lockWidgetsAfterError(lock);
    message->setText(QStringLiteral("<font color='red'>%1</font>").arg(text.toHtmlEscaped()));
    message->setVisible(!text.isEmpty());
    adjustSize();
}

void Storages::Add::setSuccessMessage(const QString& text, bool lock)
{
    lockWidgetsAfterError(lock);
    message->setText(QStringLiteral("<font color='green'>%1</font>").arg(text.toHtmlEscaped()));
    message->setVisible(!text.isEmpty());
    adjustSize();
}

QString Storages::Add::messageText() const
{
    return message->isVisible() ? QTextDocumentFragment::fromHtml(message->text()).toPlainText() : QString();
}

void Storages::Add::onClearErrorMessage()
{
    setErrorMessage(QString(), false);
}

void Storages::Add::process(bool on)
{
    if (on)
        onClearErrorMessage();
    wheel->animate(on);
}

QString Storages::Add::checkingEndpoint(const QString& endpoint, bool& useSsl)
{
    if (endpoint.trimmed().isEmpty()) {
        setErrorMessage(tr("Endpoint is empty"), true);
        return QString();
    }
    TWL::Utitlity::EndpointHelper helper(endpoint, useSsl);
    if (helper.hasError()) {
        setErrorMessage(helper.lastErrorMessage(), true);
        return QString();
    }
    useSsl = helper.useSsl();
    return helper.endpointWithScheme();
}

bool Storages::Add::canRequestPrefixes() const
{
    return false;
}

void Storages::Add::loadPrefixes()
{
    if (!canRequestPrefixes()) {
        Q_EMIT loadPrefixiesFinished(QStringList());
        return;
    }
    prefixOperation.reset(
        new TWB::Operation::GetPrefixOperation(cloudConfig(), QStringLiteral("TWB_"), this), &QObject::deleteLater);
    connect(prefixOperation.data(), &TWB::Operation::GetPrefixOperation::finished, this,
        &Add::onLoadPrefixesOperationFinished);
    connect(
        prefixOperation.data(), &TWB::Operation::GetPrefixOperation::error, this, &Add::onLoadPrefixesOperationError);
    prefixOperation->exec();
}

void Storages::Add::onLoadPrefixesOperationFinished(const QUuid&, const QStringList& prefixes)
{
    Q_EMIT loadPrefixiesFinished(prefixes);
}

void Storages::Add::onLoadPrefixesOperationError(const QUuid& operation, int code, const QString& text)
{
    setErrorMessage(text, true);
    TWL::TwlDebug("TWB").warning() << QStringLiteral("Load prefix error: in operation id(%1) (%2) %3")
                                          .arg(operation.toString())
                                          .arg(code)
                                          .arg(text);
    okButton()->setEnabled(false);
    Q_EMIT loadPrefixiesFinished(QStringList());
}

void Storages::Add::beginLockUI()
{
    onClearErrorMessage();
    setCursor(Qt::WaitCursor);
    const auto children = findChildren<QWidget*>();
    for (QWidget* child : children)
        child->setEnabled(false);
    // Cancel stays usable through any operation.
    buttons->setEnabled(true);
    okButton()->setEnabled(false);
    buttons->button(QDialogButtonBox::Cancel)->setEnabled(true);
    buttons->setCursor(Qt::ArrowCursor);
    process(true);
}

void Storages::Add::endLockUI()
{
    process(false);
    const auto children = findChildren<QWidget*>();
    for (QWidget* child : children)
        child->setEnabled(true);
    setCursor(Qt::ArrowCursor);
}

void Storages::Add::lockWidgetsAfterError(bool lock)
{
    if (lock)
        okButton()->setEnabled(false);
}

void Storages::Add::lockWidgetsAfterSslOperation(bool lock)
{
    lockWidgetsAfterError(lock);
}

bool Storages::Add::loadContainersFinished(TWL::Cloud::Operation::ListContainers*)
{
    return true;
}

QVariantMap Storages::Add::cloudConfig()
{
    return {{QStringLiteral("CloudId"), QUuid::createUuid()},
        {QStringLiteral("CloudType"), TWL::Cloud::typeNames().value(type)}};
}

void Storages::Add::loadContainers()
{
    beginLockUI();
    if (containersOperation) {
        containersOperation->remove();
        containersOperation.reset();
    }
    if (auto manager = TWL::Cloud::OperationManager::instance())
        containersOperation = manager->listContainers(cloudConfig());
    if (!containersOperation) {
        endLockUI();
        setErrorMessage(tr("Can't load containers!"), true);
        TWL::TwlDebug("TWB").warning() << "Can't load containers. Doesn't create an operation.";
        return;
    }
    connect(
        containersOperation.data(), &TWL::Cloud::IOperation::finished, this, &Add::onLoadContainerOperationFinished);
    containersOperation->exec();
}

void Storages::Add::onLoadContainerOperationFinished()
{
    QSharedPointer<TWL::Cloud::IOperation> operation = containersOperation;
    if (!operation || operation.data() != sender()) {
        endLockUI();
        setErrorMessage(tr("Can't load containers!"), true);
        TWL::TwlDebug("TWB").warning() << "Can't load containers. Doesn't cast sender to operation.";
        return;
    }
    operation->remove();
    const bool result = operationFinished(operation.data());
    lockWidgetsAfterError(!result);
    containersOperation.reset();
}

bool Storages::Add::operationFinished(TWL::Cloud::IOperation* operation)
{
    if (!operation->isError()) {
        if (operation->state() == TWL::Cloud::IOperation::Finished) {
            if (operation->type() == QLatin1String("ListContainers")) {
                auto list = qobject_cast<TWL::Cloud::Operation::ListContainers*>(operation);
                endLockUI();
                if (!list) {
                    setErrorMessage(tr("Can't load containers!"), true);
                    TWL::TwlDebug("TWB").warning()
                        << "Can't load containers. Doesn't cast operation to list container.";
                    return false;
                }
                return loadContainersFinished(list);
            }
            if (operation->type() == QLatin1String("CreateContainer"))
                TWL::TwlDebug("TWB").debug() << "Container was created.";
        }
        endLockUI();
        return true;
    }

    const QVariantMap config = operation->cloudConfig();
    QString endpoint = config.value(QStringLiteral("Endpoint")).toString();
    if (endpoint.isEmpty()) {
        const auto info = TWL::Cloud::InfoFactory::create(config);
        const int kind = info ? int(info->type()) : 0;
        if (kind == TWL::Cloud::AmazonS3 || kind == TWL::Cloud::AmazonS3Chinese)
            endpoint = static_cast<TWL::Cloud::Info::AmazonS3Like*>(info.data())->defaultEndpoint().toString();
        else if (kind == TWL::Cloud::AzureBlob)
            endpoint = static_cast<TWL::Cloud::Info::AzureBlob*>(info.data())->defaultEndpoint().toString();
        else if (kind == TWL::Cloud::GoogleStorage)
            endpoint = static_cast<TWL::Cloud::Info::GoogleStorage*>(info.data())->defaultEndpoint().toString();
        else if (kind == TWL::Cloud::BackBlaze)
            endpoint = static_cast<TWL::Cloud::Info::BackBlaze*>(info.data())->defaultEndpoint().toString();
        else
            TWL::TwlDebug("TWB").debug() << "Default endpoint is not set";
    }

    if (operation->errorCode() == TWL::Cloud::IOperation::CertificateNotTrusted
        && config.contains(QStringLiteral("Endpoint"))) {
        TWL::TwlDebug("TWB").warning() << "Error code:" << operation->errorCode()
                                       << "Error message:" << operation->errorMessage();
        try {
            ICommand* command
                = Communication::newCommand(QStringLiteral("GetPeerSslCertificate"), this, &Add::onLoadSslFinished);
            Communication::setCommandParams(*command, {{QStringLiteral("endpoint"), endpoint}});
            command->exec();
            // The form stays locked until the user answered the trust question.
            return false;
        } catch (const QString&) {
            TWL::TwlDebug("TWB").warning() << "Commnunication command don't registrate";
        }
    }
    operationErrorHandler(operation->errorCode(), operation->errorMessage());
    TWL::TwlDebug("TWB").warning()
        << "Operation return error:"
        << QStringLiteral("err(%1): %2").arg(operation->errorCode()).arg(operation->errorMessage());
    endLockUI();
    // Ending the lock enabled every widget; the error leaves Ok off again.
    okButton()->setEnabled(false);
    return false;
}

void Storages::Add::operationErrorHandler(int, const QString& text)
{
    setErrorMessage(text, true);
}

void Storages::Add::onLoadSslFinished()
{
    auto command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    endLockUI();
    command->deleteLater();
    try {
        const QJsonObject data = Communication::replyData(*command);
        const QList<QSslCertificate> chain
            = QSslCertificate::fromData(data.value(QStringLiteral("pem")).toString().toUtf8(), QSsl::Pem);
        if (chain.isEmpty() || chain.first().isNull())
            throw tr("Peer certificate is empty");
        SslCertMakeTrustDialog trust(chain.first(), this);
        if (trust.exec() != QDialog::Accepted) {
            lockWidgetsAfterSslOperation(true);
            return;
        }
        const QByteArray pem = chain.first().toPem();
        // This process trusts it at once; the service keeps it for the engine and later sessions.
        if (auto manager = TWL::Cloud::OperationManager::instance())
            manager->addTrustedCertificate(pem);
        ICommand* append
            = Communication::newCommand(QStringLiteral("AppendToSslStorage"), this, &Add::onAppendSslFinished);
        Communication::setCommandParams(*append, {{QStringLiteral("pem"), QString::fromUtf8(pem)}});
        append->exec();
        loadContainers();
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        setErrorMessage(text, true);
        lockWidgetsAfterSslOperation(true);
    }
}

void Storages::Add::onAppendSslFinished()
{
    auto command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    command->deleteLater();
    try {
        Communication::replyData(*command);
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << "AppendToSslStorage:" << text;
    }
}

void Storages::Add::createContainer(const QJsonObject& params)
{
    beginLockUI();
    if (createOperation) {
        createOperation->remove();
        createOperation.reset();
    }
    if (auto manager = TWL::Cloud::OperationManager::instance())
        createOperation = manager->createContainer(cloudConfig(), params);
    if (!createOperation) {
        endLockUI();
        setErrorMessage(tr("Cab't create container!"), true);
        TWL::TwlDebug("TWB").warning() << "Can't create container. Doesn't create an operation.";
        return;
    }
    connect(createOperation.data(), &TWL::Cloud::IOperation::finished, this, &Add::onCreateContainerFinished);
    createOperation->exec();
}

void Storages::Add::onCreateContainerFinished()
{
    QSharedPointer<TWL::Cloud::IOperation> operation = createOperation;
    if (!operation || operation.data() != sender()) {
        endLockUI();
        setErrorMessage(tr("Can't creat container!"), true);
        TWL::TwlDebug("TWB").warning() << "Can't create container. Doesn't cast sender to operation.";
        return;
    }
    operation->remove();
    const bool result = operationFinished(operation.data());
    lockWidgetsAfterError(!result);
    createOperation.reset();
    if (result)
        loadContainers();
}

void Storages::Add::onReject()
{
    if (containersOperation) {
        containersOperation->remove();
        containersOperation.reset();
    }
}

bool Storages::Add::updateAccount(const QJsonObject& document, const QString& displayName, QString& error)
{
    try {
        ICommand* command = Communication::newCommand(QStringLiteral("SaveStorage"), this, &Add::onUpdateComplite);
        QJsonObject copy;
        for (auto it = document.begin(); it != document.end(); ++it)
            copy.insert(it.key(), it.value());
        const QJsonObject params {
            {QStringLiteral("profile"), Communication::currentProfile()},
            {QStringLiteral("ID"), id.toString()},
            {QStringLiteral("displayName"), displayName},
            {QStringLiteral("prefix"), prefix},
            {QStringLiteral("params"), copy},
            {QStringLiteral("type"), int(type)},
        };
        Communication::setCommandParams(*command, params);
        command->exec();
        return true;
    } catch (const QString& text) {
        error = text;
        TWL::TwlDebug("TWB").warning() << text;
        return false;
    }
}

void Storages::Add::onUpdateComplite()
{
    auto command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    command->deleteLater();
    try {
        const QJsonObject data = Communication::replyData(*command);
        if (data.value(QStringLiteral("SaveStorage")).toString() == QLatin1String("error"))
            throw QStringLiteral("Error on exec command");
        Q_EMIT updateComplite();
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        Q_EMIT updateError(text);
    }
}

void Storages::Add::onUpdateError(const QString& text)
{
    QMessageBox box(QMessageBox::Critical, tr("Error on save/update operation!"), text, QMessageBox::Ok, this);
    box.exec();
}

} // namespace TWB::GUI::Settings
