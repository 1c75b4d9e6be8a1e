#include "storages/accounts/amazon_s3_compatible.h"

#include "platform/cloud/amazon_operation_manager.h"
#include "platform/cloud/container_params.h"
#include "platform/cloud/endpoint_helper.h"
#include "platform/cloud/info.h"
#include "platform/cloud/info_factory.h"
#include "platform/cloud/lifecycle_policy.h"
#include "platform/cloud/list_containers.h"
#include "platform/cloud/operation_manager.h"
#include "platform/crypt/local_password.h"
#include "platform/logging/twl_debug.h"
#include "widgets/icon_manager.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDomDocument>
#include <QEventLoop>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QToolButton>

namespace TWB::GUI::Settings::Account {

namespace {

QString defaultEndpointOf(TWL::Cloud::Type type)
{
    const auto info = TWL::Cloud::InfoFactory::create(type);
    if (auto s3 = dynamic_cast<TWL::Cloud::Info::AmazonS3Like*>(info.data()))
        return s3->defaultEndpoint().toString();
    return QString();
}

bool isAsciiLetter(QChar c)
{
    const ushort u = c.unicode();
    return u >= 65 && u <= 122 && !(u >= 91 && u <= 96);
}

} // namespace

AmazonS3Compatible::AmazonS3Compatible(TWL::Cloud::Type type, bool showEndpoint, QWidget* parent)
    : Info(type, parent)
{
    addField(tr("Access Key:"), QStringLiteral("AccessKey"));
    if (showEndpoint)
        addField(tr("Endpoint:"), QStringLiteral("Endpoint"));
    addField(tr("Bucket:"), QStringLiteral("ContainerName"));
    addField(tr("Prefix:"), QStringLiteral("BackupPrefix"));
    addField(tr("Use SSL:"), QStringLiteral("UseSsl"), &Info::trueFalseDelegate);
}

bool AmazonS3Compatible::traits(TWL::Cloud::Type type, Traits* traits)
{
    using namespace TWL::Cloud;
    static const QMap<int, Traits> table = {
        {S3Compatible, {true, true, false}},
        {TWL::Cloud::AmazonS3, {false, false, true}},
        {AmazonS3Chinese, {false, false, true}},
        {Wasabi, {false, false, true}},
        {TWL::Cloud::AlibabaCloud, {false, false, true}},
        {ThinkOn, {false, false, false}},
        {Verizon, {false, false, false}},
        {Minio, {true, false, false}},
        {Cloudian, {true, false, false}},
        {DreamObjects, {true, false, false}},
        {Scality, {true, false, false}},
        {CenturyLink, {true, false, false}},
    };
    if (!table.contains(type))
        return false;
    if (traits)
        *traits = table.value(type);
    return true;
}

AmazonS3Compatible::Validator::Validator(QObject* parent)
    : QValidator(parent)
{ }

QValidator::State AmazonS3Compatible::Validator::validate(QString& input, int& pos) const
{
    if (input.isEmpty())
        return Acceptable;
    const QChar first = input.at(0);
    const bool firstFits = first.unicode() > 127 ? first.isLetterOrNumber() : (isAsciiLetter(first) || first.isDigit());
    if (!firstFits)
        return Invalid;
    if (pos < 2)
        return Intermediate;
    if (input.size() >= 3 && pos >= 2 && input.at(pos - 1) == QLatin1Char('.') && input.at(pos - 2) == QLatin1Char('.'))
        return Invalid;
    const QChar last = input.at(pos - 1);
    if (last.isLetterOrNumber() || last == QLatin1Char('-') || last == QLatin1Char('.') || last == QLatin1Char('_'))
        return Acceptable;
    return Invalid;
}

AmazonS3Compatible::AdvancedStorage::AdvancedStorage(
    bool useSsl, const QString& prefix, bool disabled, QWidget* add, QWidget* parent)
    : Account::AdvancedStorage(useSsl, prefix, QStringList(), disabled, add, parent)
{ }

AmazonS3Compatible::AdvancedStorage::AdvancedStorage(
    bool useSsl, const QString& prefix, bool disabled, QWidget* add, int signatureValue, QWidget* parent)
    : Account::AdvancedStorage(useSsl, prefix, QStringList(), disabled, add, parent)
    , signature(new QComboBox(this))
{
    signature->addItems({QStringLiteral("AWS4"), QStringLiteral("AWS2")});
    signature->setCurrentIndex(signatureValue != 0 ? 0 : 1);
    form->insertRow(1, tr("Signature version:"), signature);
}

int AmazonS3Compatible::AdvancedStorage::authType() const
{
    if (!signature)
        return 1;
    return signature->currentIndex() == 0 ? 0 : 1;
}

AmazonS3Compatible::AddContainer::AddContainer(
    const QSet<QString>& existing, bool showRegion, TWL::Cloud::Type type, QWidget* parent)
    : Storages::AddContainer(parent)
    , existing(existing)
{
    edit->setValidator(new Validator(edit));
    setNote(tr("Container name must be globally unique. Name must be more 3 characters"));
    if (showRegion) {
        region = new QComboBox(this);
        const auto info = TWL::Cloud::InfoFactory::create(type);
        if (auto s3 = dynamic_cast<TWL::Cloud::Info::AmazonS3Like*>(info.data())) {
            const auto regions = s3->regions();
            for (const auto& choice : regions)
                region->addItem(choice.label, choice.code);
        }
        form->addRow(tr("Region:"), region);
    }
}

QString AmazonS3Compatible::AddContainer::location() const
{
    return region ? region->currentData().toString() : QString();
}

void AmazonS3Compatible::AddContainer::onDataChanged()
{
    const QString name = edit->text().trimmed();
    okButton()->setEnabled(name.size() >= 3 && !existing.contains(name));
}

AmazonS3Compatible::Add::Add(TWL::Cloud::Type type, bool showEndpoint, bool showSignature, QWidget* parent)
    : Storages::Add(type, parent)
    , displayName(new QLineEdit(this))
    , accessKey(new QLineEdit(this))
    , secretKey(new QLineEdit(this))
    , endpoint(new QLineEdit(this))
    , bucket(new QComboBox(this))
    , addBucket(new QToolButton(this))
    , showSignature(showSignature)
    , showEndpoint(showEndpoint)
{
    auto form = new QFormLayout;
    formLayout = form;
    for (QLineEdit* edit : {displayName, accessKey, secretKey, endpoint})
        edit->setFixedWidth(LineEditWidth);
    secretKey->setEchoMode(QLineEdit::Password);
    form->addRow(tr("Display Name:"), displayName);
    form->addRow(tr("Access Key:"), accessKey);
    form->addRow(tr("Secret Key:"), secretKey);
    if (showEndpoint)
        form->addRow(tr("Endpoint:"), endpoint);
    else
        endpoint->hide();
    auto bucketRow = new QHBoxLayout;
    bucket->setMinimumWidth(LineEditWidth - 30);
    bucket->setEnabled(false);
    addBucket->setIcon(IconManager::icon(IconManager::Add));
    addBucket->setToolTip(tr("Add new bucket"));
    addBucket->setEnabled(false);
    bucketRow->addWidget(bucket, 1);
    bucketRow->addWidget(addBucket);
    form->addRow(tr("Bucket:"), bucketRow);
    insertForm(form);
    // Members with a fixed service hold its endpoint, shown or not.
    endpoint->setText(defaultEndpointOf(type));
    // AWS4 unless the service knows only AWS2.
    signature = 1;
    const auto info = TWL::Cloud::InfoFactory::create(type);
    if (auto s3 = dynamic_cast<TWL::Cloud::Info::AmazonS3Like*>(info.data()))
        signature = s3->defaultSignature() == 2 ? 0 : 1;

    bucket->installEventFilter(this);
    for (QLineEdit* edit : {displayName, accessKey, secretKey, endpoint})
        connect(edit, &QLineEdit::textChanged, this, &Add::onDataChanged);
    for (QLineEdit* edit : {accessKey, secretKey, endpoint})
        connect(edit, &QLineEdit::textEdited, this, &Add::onCredsReset);
    connect(endpoint, &QLineEdit::editingFinished, this, &Add::onEditingFinished);
    connect(bucket, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &Add::onDataChanged);
    connect(addBucket, &QToolButton::clicked, this, &Add::onAddContainerClicked);
}

bool AmazonS3Compatible::Add::canRequestPrefixes() const
{
    return listLoaded && !bucket->currentText().isEmpty();
}

void AmazonS3Compatible::Add::lockWidgetsAfterError(bool lock)
{
    Storages::Add::lockWidgetsAfterError(lock);
    if (lock) {
        bucket->setEnabled(false);
        addBucket->setEnabled(false);
    }
}

void AmazonS3Compatible::Add::lockWidgetsAfterSslOperation(bool lock)
{
    Storages::Add::lockWidgetsAfterSslOperation(lock);
    // A press on the list tries again.
    bucket->setEnabled(true);
}

void AmazonS3Compatible::Add::onDataChanged()
{
    onClearErrorMessage();
    const bool complete = !accessKey->text().trimmed().isEmpty() && !secretKey->text().trimmed().isEmpty()
        && !displayName->text().trimmed().isEmpty() && !endpoint->text().trimmed().isEmpty();
    if (!complete) {
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

void AmazonS3Compatible::Add::onCredsReset()
{
    containers.clear();
    const QSignalBlocker blocker(bucket);
    bucket->clear();
    addBucket->setEnabled(false);
    onClearErrorMessage();
    listLoaded = false;
    okButton()->setEnabled(false);
}

bool AmazonS3Compatible::Add::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == bucket && event->type() == QEvent::MouseButtonPress && bucket->isEnabled() && !listLoaded)
        loadContainers();
    return Storages::Add::eventFilter(watched, event);
}

bool AmazonS3Compatible::Add::loadContainersFinished(TWL::Cloud::Operation::ListContainers* operation)
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

void AmazonS3Compatible::Add::onEditingFinished()
{
    if (!endpoint->isModified())
        return;
    onClearErrorMessage();
    const QString checked = checkingEndpoint(endpoint->text(), useSsl);
    if (!checked.isEmpty())
        endpoint->setText(checked);
    endpoint->setModified(false);
}

void AmazonS3Compatible::Add::onAdvancedClicked()
{
    onClearErrorMessage();
    if (showEndpoint) {
        const QString checked = checkingEndpoint(endpoint->text(), useSsl);
        if (checked.isEmpty())
            return;
    }
    std::unique_ptr<AdvancedStorage> dialog(showSignature
            ? new AdvancedStorage(useSsl, prefix, !canRequestPrefixes(), this, signature, this)
            : new AdvancedStorage(useSsl, prefix, !canRequestPrefixes(), this, this));
    if (dialog->exec() != QDialog::Accepted)
        return;
    prefix = dialog->prefix();
    if (dialog->useSsl() != useSsl) {
        onCredsReset();
        bucket->setEnabled(true);
        TWL::Utitlity::EndpointHelper helper(endpoint->text(), true);
        helper.setUseSsl(dialog->useSsl());
        if (helper.hasError())
            setErrorMessage(helper.lastErrorMessage(), true);
        else
            endpoint->setText(helper.endpointWithScheme());
    }
    useSsl = dialog->useSsl();
    if (showSignature)
        signature = dialog->authType() == 0 ? 1 : 0;
}

Storages::AddContainer* AmazonS3Compatible::Add::addContainerDialog()
{
    Traits kind {};
    traits(type, &kind);
    return new AddContainer(QSet<QString>(containers.begin(), containers.end()), kind.showRegion, type, this);
}

void AmazonS3Compatible::Add::onAddContainerClicked()
{
    onClearErrorMessage();
    std::unique_ptr<Storages::AddContainer> dialog(addContainerDialog());
    if (dialog->exec() != QDialog::Accepted)
        return;
    TWL::TwlDebug("TWB").info() << "AmazonS3Like: create new bucket!";
    createContainer(containerParams(dialog.get()));
    createdContainer = dialog->name();
}

QJsonObject AmazonS3Compatible::Add::containerParams(Storages::AddContainer* dialog) const
{
    QString location;
    if (auto s3 = dynamic_cast<AddContainer*>(dialog))
        location = s3->location();
    return TWL::Cloud::ContainerParams::AmazonS3Like(dialog->name(), location).json();
}

void AmazonS3Compatible::Add::setRowLabel(QWidget* field, const QString& text)
{
    // The field may stand alone or inside the row's own layout, as the bucket list does.
    for (int row = 0; row < formLayout->rowCount(); ++row) {
        QLayoutItem* item = formLayout->itemAt(row, QFormLayout::FieldRole);
        if (!item || (item->widget() != field && !(item->layout() && item->layout()->indexOf(field) >= 0)))
            continue;
        if (QLayoutItem* label = formLayout->itemAt(row, QFormLayout::LabelRole)) {
            if (auto shown = qobject_cast<QLabel*>(label->widget()))
                shown->setText(text);
        }
    }
}

void AmazonS3Compatible::Add::onSetItem(const QModelIndex& index)
{
    displayName->setText(index.sibling(index.row(), 0).data().toString());
    const QJsonObject details = index.sibling(index.row(), 8).data().toJsonObject();
    accessKey->setText(details.value(QStringLiteral("AccessKey")).toString());
    useSsl = details.value(QStringLiteral("UseSsl")).toBool(true);
    if (details.contains(QStringLiteral("Endpoint")))
        endpoint->setText(TWL::Utitlity::EndpointHelper::toEndpointWithScheme(
            details.value(QStringLiteral("Endpoint")).toString(), useSsl));
    if (showSignature)
        signature = details.value(QStringLiteral("Signature")).toInt() == 2 ? 0 : 1;
    const QString stored = details.value(QStringLiteral("SecretKey")).toString();
    const QString secret = SHARED::cryptNS::decrypt_local_password(stored);
    secretKey->setText(secret);
    if (secret.isEmpty() && !stored.isEmpty()) {
        TWL::TwlDebug("TWB").error() << "Can't decrypt secret Key in account load. ID:" << id.toString();
        setErrorMessage(tr("Can't decrypt secret Key in account load."), true);
    }
    loadContainers();
    pendingContainer = details.value(QStringLiteral("ContainerName")).toString();
}

QVariantMap AmazonS3Compatible::Add::cloudConfig()
{
    QVariantMap config = Storages::Add::cloudConfig();
    config.insert(QStringLiteral("AccessKey"), accessKey->text().trimmed());
    config.insert(QStringLiteral("SecretKey"), secretKey->text().trimmed());
    config.insert(QStringLiteral("UseSsl"), useSsl);
    if (type != TWL::Cloud::AmazonS3 && type != TWL::Cloud::AmazonS3Chinese)
        config.insert(
            QStringLiteral("Endpoint"), TWL::Utitlity::EndpointHelper::toPair(endpoint->text().trimmed()).first);
    config.insert(QStringLiteral("ContainerName"), bucket->currentText());
    if (showSignature)
        config.insert(QStringLiteral("Signature"), signature != 0 ? QStringLiteral("V4") : QStringLiteral("V2"));
    return config;
}

QJsonObject AmazonS3Compatible::Add::document() const
{
    QJsonObject saved {
        {QStringLiteral("AccessKey"), accessKey->text().trimmed()},
        {QStringLiteral("SecretKey"), SHARED::cryptNS::encrypt_local_password(secretKey->text().trimmed())},
        {QStringLiteral("ContainerName"), bucket->currentText()},
        {QStringLiteral("UseSsl"), useSsl},
        {QStringLiteral("Endpoint"), TWL::Utitlity::EndpointHelper::toPair(endpoint->text().trimmed()).first},
    };
    if (showSignature)
        saved.insert(QStringLiteral("Signature"), signature != 0 ? 4 : 2);
    return saved;
}

void AmazonS3Compatible::Add::saveConfig()
{
    QString error;
    if (!updateAccount(document(), displayName->text().trimmed(), error)) {
        TWL::TwlDebug("TWB").error() << error;
        setErrorMessage(error, true);
    }
}

void AmazonS3Compatible::Add::onAccept()
{
    saveConfig();
}

AmazonS3::AmazonS3(QWidget* parent)
    : AmazonS3Compatible(TWL::Cloud::AmazonS3, false, parent)
{ }

AmazonS3::Add::Add(QWidget* parent)
    : AmazonS3Compatible::Add(TWL::Cloud::AmazonS3, false, false, parent)
    , archive(new QCheckBox(tr("Archive to Glacier"), this))
{
    archive->setChecked(false);
    archive->hide();
    auto row = new QHBoxLayout;
    row->addWidget(archive);
    insertForm(row);
}

void AmazonS3::Add::onSetItem(const QModelIndex& index)
{
    const QJsonObject details = index.sibling(index.row(), 8).data().toJsonObject();
    initialArchive = details.value(QStringLiteral("Archive2Glacier")).toBool(false);
    archive->setChecked(initialArchive);
    // The option can only be turned off: a new account never offers it.
    archive->setVisible(initialArchive);
    AmazonS3Compatible::Add::onSetItem(index);
    initialPrefix = prefix;
    endpoint->setText(defaultEndpointOf(type));
}

void AmazonS3::Add::saveConfig()
{
    QJsonObject saved = document();
    saved.remove(QStringLiteral("Endpoint"));
    saved.insert(QStringLiteral("Archive2Glacier"), archive->isChecked());
    QString error;
    if (!updateAccount(saved, displayName->text().trimmed(), error)) {
        TWL::TwlDebug("TWB").error() << error;
        setErrorMessage(error, true);
    }
}

void AmazonS3::Add::onAccept()
{
    if (archive->isChecked() != initialArchive)
        loadLifecyclePolicy();
    else if (archive->isChecked() && prefix != initialPrefix)
        loadLifecyclePolicy();
    else
        saveConfig();
}

void AmazonS3::Add::onLifecyclePolicyEditError(const QString& text)
{
    process(false);
    endLockUI();
    setErrorMessage(text, true);
}

namespace {

// Runs an operation to its end behind a local loop; the form is locked meanwhile.
bool runToEnd(const QSharedPointer<TWL::Cloud::IOperation>& operation)
{
    if (!operation)
        return false;
    QEventLoop loop;
    QObject::connect(operation.data(), &TWL::Cloud::IOperation::finished, &loop, &QEventLoop::quit);
    operation->exec();
    if (!operation->isComplite())
        loop.exec();
    operation->remove();
    return !operation->isError();
}

QString failureText(const QSharedPointer<TWL::Cloud::IOperation>& operation)
{
    return operation ? operation->errorMessage() : QObject::tr("The storage cannot be reached.");
}

} // namespace

void AmazonS3::Add::loadLifecyclePolicy()
{
    beginLockUI();
    process(true);
    QVariantMap config = cloudConfig();
    auto manager = TWL::Cloud::OperationManager::instance();
    auto amazon = TWL::Cloud::AmazonOperationManager::instance();
    if (!manager || !amazon) {
        onLifecyclePolicyEditError(tr("The storage cannot be reached."));
        return;
    }
    auto check = manager->checkConfig(config);
    if (!runToEnd(check)) {
        TWL::TwlDebug("TWB").error() << "Check cloud config operation finished with error:" << failureText(check);
        onLifecyclePolicyEditError(failureText(check));
        return;
    }
    config = check->cloudConfig();
    auto load = amazon->loadLifecyclePolicy(config);
    if (!runToEnd(load)) {
        TWL::TwlDebug("TWB").error() << "Load LifecyclePolicy operation finished with error:" << failureText(load);
        onLifecyclePolicyEditError(failureText(load));
        return;
    }
    const QByteArray xml = qobject_cast<TWL::Cloud::Operation::Amazon::LoadLifecyclePolicy*>(load.data())->data();
    QDomDocument document;
    if (!xml.isEmpty()) {
        QString error;
        if (!document.setContent(xml, &error)) {
            TWL::TwlDebug("TWB").error() << "Error on parce LifecyclePolicy xml, message:" << error;
            onLifecyclePolicyEditError(error);
            return;
        }
    }
    QDomElement root = document.documentElement();
    if (root.isNull()) {
        root = document.createElement(QStringLiteral("LifecycleConfiguration"));
        document.appendChild(root);
    }
    const QString key = QStringLiteral("TWB_%1/").arg(prefix);
    // Drops this prefix's rule; it comes back below while the option is on.
    for (QDomElement rule = root.firstChildElement(QStringLiteral("Rule")); !rule.isNull();) {
        QDomElement next = rule.nextSiblingElement(QStringLiteral("Rule"));
        if (rule.firstChildElement(QStringLiteral("ID")).text() == key)
            root.removeChild(rule);
        rule = next;
    }
    if (!initialArchive || archive->isChecked()) {
        const auto text = [&](QDomElement parent, const QString& name, const QString& value) {
            QDomElement element = document.createElement(name);
            element.appendChild(document.createTextNode(value));
            parent.appendChild(element);
            return element;
        };
        QDomElement rule = document.createElement(QStringLiteral("Rule"));
        text(rule, QStringLiteral("ID"), key);
        QDomElement filter = document.createElement(QStringLiteral("Filter"));
        text(filter, QStringLiteral("Prefix"), key);
        rule.appendChild(filter);
        text(rule, QStringLiteral("Status"), QStringLiteral("Enabled"));
        QDomElement transition = document.createElement(QStringLiteral("Transition"));
        text(transition, QStringLiteral("Days"), QStringLiteral("0"));
        text(transition, QStringLiteral("StorageClass"), QStringLiteral("GLACIER"));
        rule.appendChild(transition);
        root.appendChild(rule);
    }
    auto save = root.firstChild().isNull() ? amazon->deleteLifecyclePolicy(config)
                                           : amazon->saveLifecyclePolicy(config, document.toByteArray(1));
    if (!runToEnd(save)) {
        TWL::TwlDebug("TWB").error() << "Save LifecyclePolicy operation finished with error:" << failureText(save);
        onLifecyclePolicyEditError(failureText(save));
        return;
    }
    process(false);
    endLockUI();
    saveConfig();
}

} // namespace TWB::GUI::Settings::Account
