#include "storages/accounts/openstack.h"

#include "platform/cloud/container_params.h"
#include "platform/cloud/endpoint_helper.h"
#include "platform/cloud/info.h"
#include "platform/crypt/local_password.h"
#include "platform/logging/twl_debug.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QRegularExpressionValidator>
#include <QToolButton>

namespace TWB::GUI::Settings::Account {

namespace {

const QString authTypeKey = QStringLiteral("AuthType");
const QString userNameKey = QStringLiteral("UserName");
const QString apiKeyKey = QStringLiteral("ApiKey");
const QString endpointKey = QStringLiteral("Endpoint");
const QString containerKey = QStringLiteral("ContainerName");
const QString internalKey = QStringLiteral("UseInternalUrl");
const QString regionKey = QStringLiteral("Region");
const QString tenantKey = QStringLiteral("TenantName");
const QString projectKey = QStringLiteral("ProjectName");
const QString domainKey = QStringLiteral("DomainName");
const QString scopeKey = QStringLiteral("UseScope");

// Keystone's own domain, which a new v3 user belongs to unless the cloud says otherwise.
const QString defaultDomain = QStringLiteral("Default");

// The version an identity URL announces by its last path part, or 0.
int versionOfUrl(const QString& url)
{
    static const QRegularExpression tail(QStringLiteral("/(?:auth/)?v(\\d)(?:\\.\\d)?/*$"));
    const QRegularExpressionMatch match = tail.match(url.trimmed());
    if (!match.hasMatch())
        return 0;
    const int number = match.captured(1).toInt();
    return number >= 1 && number <= 3 ? number : 0;
}

} // namespace

OpenStack::OpenStack(TWL::Cloud::Type type, QWidget* parent)
    : Info(type, parent)
{
    addField(tr("User name:"), userNameKey);
    addField(tr("Auth URL:"), endpointKey);
    addField(tr("Auth version:"), authTypeKey, &OpenStack::versionText);
    addField(tr("Tenant:"), tenantKey);
    addField(tr("Project:"), projectKey);
    addField(tr("Domain:"), domainKey);
    addField(tr("Region:"), regionKey);
    addField(tr("Container:"), containerKey);
    addField(tr("Prefix:"), QStringLiteral("BackupPrefix"));
    addField(tr("Internal URL:"), internalKey, &Info::trueFalseDelegate);
}

bool OpenStack::traits(TWL::Cloud::Type type, Traits* traits)
{
    using namespace TWL::Cloud;
    static const QMap<int, Traits> table = {
        {Openstack, {3, true, false}},
        {Rackspace, {2, false, true}},
        {SoftLayer, {1, false, true}},
        {OracleCloud, {1, false, false}},
        {HPCloud, {2, true, false}},
    };
    if (!table.contains(type))
        return false;
    if (traits)
        *traits = table.value(type);
    return true;
}

QString OpenStack::versionText(const QVariant& version)
{
    switch (version.toInt()) {
    case 1:
        return tr("1 (TempAuth)");
    case 3:
        return tr("3 (Keystone)");
    default:
        // Documents without the key were written for Keystone v2.
        return tr("2 (Keystone)");
    }
}

OpenStack::AdvancedStorage::AdvancedStorage(
    bool internalUrl, const QString& prefix, bool disabled, QWidget* add, QWidget* parent)
    : Account::Advanced(prefix, QStringList(), disabled, add, parent)
    , internal(new QCheckBox(tr("Use internal URL"), this))
{
    internal->setChecked(internalUrl);
    internal->setToolTip(tr("Reach the storage through the provider's internal network, as servers in the same "
                            "cloud can."));
    form->insertRow(1, QString(), internal);
}

bool OpenStack::AdvancedStorage::useInternalUrl() const
{
    return internal->isChecked();
}

OpenStack::Add::Add(TWL::Cloud::Type type, QWidget* parent)
    : AmazonS3Compatible::Add(type, true, false, parent)
    , location(new QComboBox(this))
    , version(new QComboBox(this))
    , tenant(new QLineEdit(this))
    , domain(new QLineEdit(this))
    , region(new QLineEdit(this))
{
    Traits kind {2, true, false};
    traits(type, &kind);
    setRowLabel(accessKey, tr("User name:"));
    setRowLabel(secretKey, kind.secretIsApiKey ? tr("API key:") : tr("Password:"));
    setRowLabel(endpoint, tr("Auth URL:"));
    setRowLabel(bucket, tr("Container:"));
    addBucket->setToolTip(tr("Add new container"));
    endpoint->setPlaceholderText(QStringLiteral("https://auth.example.com/v3"));
    endpoint->setToolTip(tr("The address of the identity service, where the user signs in"));

    for (int v = 1; v <= 3; ++v)
        version->addItem(versionText(v), v);
    version->setCurrentIndex(version->findData(kind.authVersion));
    for (QWidget* field : std::initializer_list<QWidget*> {location, version, tenant, domain, region})
        field->setFixedWidth(LineEditWidth);
    domain->setText(defaultDomain);
    region->setPlaceholderText(tr("Optional"));
    region->setToolTip(tr("Without a region, the first of the service catalog is used"));

    int row = 0;
    QFormLayout::ItemRole role;
    formLayout->getWidgetPosition(endpoint, &row, &role);
    const QList<TWL::Cloud::Info::Choice> places = TWL::Cloud::Info::OpenStack(type).endpoints();
    if (!places.isEmpty()) {
        for (const auto& place : places)
            location->addItem(place.label, place.code);
        location->addItem(tr("Other"), QString());
        formLayout->insertRow(row, tr("Location:"), location);
        endpoint->setText(places.first().code);
        endpoint->setCursorPosition(0);
    } else {
        location->hide();
    }
    chooseVersion = kind.chooseVersion;
    for (QWidget* field : std::initializer_list<QWidget*> {version, tenant, domain, region})
        field->hide();
    onVersionChanged();

    for (QLineEdit* edit : {tenant, domain, region})
        connect(edit, &QLineEdit::textEdited, this, &Add::onCredsReset);
    connect(endpoint, &QLineEdit::textEdited, this, &Add::onEndpointEdited);
    connect(location, QOverload<int>::of(&QComboBox::activated), this, &Add::onLocationChosen);
    connect(version, QOverload<int>::of(&QComboBox::activated), this, [this] {
        onVersionChanged();
        onCredsReset();
        onDataChanged();
    });
}

int OpenStack::Add::authVersion() const
{
    return version->currentData().toInt();
}

void OpenStack::Add::onVersionChanged()
{
    // TempAuth knows users and keys only; Keystone scopes the sign-in to a tenant (v2) or a project in a
    // domain (v3) and lists the storage by region. Rows that do not apply leave the form, so that it keeps
    // its even spacing.
    const int v = authVersion();
    const QList<QPair<QWidget*, QString>> rows = {
        {version, chooseVersion ? tr("Auth version:") : QString()},
        {tenant, v == 1 ? QString() : (v == 3 ? tr("Project:") : tr("Tenant:"))},
        {domain, v == 3 ? tr("Domain:") : QString()},
        {region, v == 1 ? QString() : tr("Region:")},
    };
    for (const auto& row : rows) {
        int at = -1;
        QFormLayout::ItemRole role;
        formLayout->getWidgetPosition(row.first, &at, &role);
        if (at < 0)
            continue;
        const QFormLayout::TakeRowResult taken = formLayout->takeRow(at);
        if (taken.labelItem) {
            delete taken.labelItem->widget();
            delete taken.labelItem;
        }
        delete taken.fieldItem;
        row.first->hide();
    }
    int at = -1;
    QFormLayout::ItemRole role;
    formLayout->getWidgetPosition(endpoint, &at, &role);
    for (const auto& row : rows) {
        if (row.second.isEmpty())
            continue;
        formLayout->insertRow(++at, row.second, row.first);
        row.first->show();
    }
    adjustSize();
}

void OpenStack::Add::onLocationChosen()
{
    const QString url = location->currentData().toString();
    if (url.isEmpty()) {
        endpoint->setFocus();
        return;
    }
    endpoint->setText(url);
    endpoint->setCursorPosition(0);
    onEndpointEdited();
    onCredsReset();
    onDataChanged();
}

void OpenStack::Add::onEndpointEdited()
{
    if (location->count() > 0) {
        const int at = location->findData(endpoint->text().trimmed());
        location->setCurrentIndex(at >= 0 ? at : location->count() - 1);
    }
    const int announced = versionOfUrl(endpoint->text());
    if (announced != 0 && announced != authVersion() && chooseVersion) {
        version->setCurrentIndex(version->findData(announced));
        onVersionChanged();
    }
}

QVariantMap OpenStack::Add::cloudConfig()
{
    QVariantMap config = Storages::Add::cloudConfig();
    const TWL::Utitlity::EndpointHelper helper(endpoint->text(), useSsl);
    const QString url = helper.hasError() ? endpoint->text().trimmed() : helper.endpointWithScheme();
    const int v = authVersion();
    config.insert(QStringLiteral("Endpoint"), url);
    config.insert(QStringLiteral("Username"), accessKey->text().trimmed());
    config.insert(apiKeyKey, secretKey->text().trimmed());
    config.insert(internalKey, internalUrl);
    config.insert(authTypeKey, v);
    config.insert(regionKey, v == 1 ? QString() : region->text().trimmed());
    config.insert(containerKey, bucket->currentText());
    if (v == 2) {
        config.insert(tenantKey, tenant->text().trimmed());
    } else if (v == 3) {
        config.insert(projectKey, tenant->text().trimmed());
        config.insert(domainKey, domain->text().trimmed());
        config.insert(scopeKey, !tenant->text().trimmed().isEmpty());
    }
    return config;
}

QJsonObject OpenStack::Add::document() const
{
    const TWL::Utitlity::EndpointHelper helper(endpoint->text(), useSsl);
    const int v = authVersion();
    QJsonObject saved {
        {authTypeKey, v},
        {userNameKey, accessKey->text().trimmed()},
        {apiKeyKey, SHARED::cryptNS::encrypt_local_password(secretKey->text().trimmed())},
        {endpointKey, helper.hasError() ? endpoint->text().trimmed() : helper.endpointWithScheme()},
        {containerKey, bucket->currentText()},
        {internalKey, internalUrl},
    };
    // Without a region the first of the catalog serves; the view then shows no empty row.
    if (v != 1 && !region->text().trimmed().isEmpty())
        saved.insert(regionKey, region->text().trimmed());
    if (v == 2) {
        saved.insert(tenantKey, tenant->text().trimmed());
    } else if (v == 3) {
        saved.insert(projectKey, tenant->text().trimmed());
        saved.insert(domainKey, domain->text().trimmed());
        saved.insert(scopeKey, !tenant->text().trimmed().isEmpty());
    }
    return saved;
}

Storages::AddContainer* OpenStack::Add::addContainerDialog()
{
    auto dialog = new Storages::AddContainer(this);
    // Swift takes any name up to 256 bytes but "/", which would read as a folder.
    dialog->nameEdit()->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[^/]{0,256}")), dialog->nameEdit()));
    dialog->setNote(tr("Container names are up to 256 characters long and may not hold \"/\"."));
    return dialog;
}

QJsonObject OpenStack::Add::containerParams(Storages::AddContainer* dialog) const
{
    return TWL::Cloud::ContainerParams::OpenStack(dialog->name()).json();
}

void OpenStack::Add::onSetItem(const QModelIndex& index)
{
    displayName->setText(index.sibling(index.row(), 0).data().toString());
    const QJsonObject details = index.sibling(index.row(), 8).data().toJsonObject();
    accessKey->setText(details.value(userNameKey).toString());
    const QString url = details.value(endpointKey).toString();
    useSsl = !url.startsWith(QLatin1String("http://"), Qt::CaseInsensitive);
    endpoint->setText(
        url.contains(QLatin1String("://")) ? url : TWL::Utitlity::EndpointHelper::toEndpointWithScheme(url, useSsl));
    if (location->count() > 0) {
        const int at = location->findData(endpoint->text());
        location->setCurrentIndex(at >= 0 ? at : location->count() - 1);
    }
    const int v = details.value(authTypeKey).toVariant().toInt();
    const int at = version->findData(v);
    // A document without a version was written for Keystone v2.
    version->setCurrentIndex(at >= 0 ? at : version->findData(2));
    onVersionChanged();
    tenant->setText(authVersion() == 3 ? details.value(projectKey).toString(details.value(tenantKey).toString())
                                       : details.value(tenantKey).toString());
    domain->setText(details.value(domainKey).toString());
    region->setText(details.value(regionKey).toString());
    internalUrl = details.value(internalKey).toBool(false);
    const QString stored = details.value(apiKeyKey).toString();
    const QString secret = SHARED::cryptNS::decrypt_local_password(stored);
    secretKey->setText(secret);
    if (secret.isEmpty() && !stored.isEmpty()) {
        TWL::TwlDebug("TWB").error() << "Can't decrypt secret Key in account load. ID:" << id.toString();
        setErrorMessage(tr("Can't decrypt secret Key in account load."), true);
    }
    loadContainers();
    pendingContainer = details.value(containerKey).toString();
}

void OpenStack::Add::onAdvancedClicked()
{
    onClearErrorMessage();
    const QString checked = checkingEndpoint(endpoint->text(), useSsl);
    if (checked.isEmpty())
        return;
    endpoint->setText(checked);
    AdvancedStorage dialog(internalUrl, prefix, !canRequestPrefixes(), this, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    prefix = dialog.prefix();
    if (dialog.useInternalUrl() != internalUrl) {
        internalUrl = dialog.useInternalUrl();
        // Another network may hold other containers: the list is asked for again.
        onCredsReset();
        onDataChanged();
    }
}

} // namespace TWB::GUI::Settings::Account
