#include "backup_wizard/page_compression_end_encryption.h"

#include "backup_wizard/storage_class_info.h"
#include "frame/base_model.h"
#include "frame/license_restrictions.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "platform/cloud/account_keys.h"
#include "platform/logging/twl_debug.h"
#include "platform/plan/backup_file.h"
#include "platform/rebranding/rebranding.h"
#include "widgets/attention_frame.h"
#include "widgets/check_box.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <QWizard>

namespace TWB::GUI {

using StorageInfo = TWB::Info::Plan::Backup::StorageInfo;
using Encyption = TWB::Info::Plan::Backup::Encyption;

const char* BackupPlanEditWizard::PageCompressionEndEncryption::FieldUseCompression = "Field_UseEncryption";
const char* BackupPlanEditWizard::PageCompressionEndEncryption::FieldUseEncryption = "Field_FieldUseEncryption";
const char* BackupPlanEditWizard::PageCompressionEndEncryption::FieldEncryptionType = "Field_EncryptionType";
const char* BackupPlanEditWizard::PageCompressionEndEncryption::FieldEncryptionPassword = "Field_EncryptionPassword";
const char* BackupPlanEditWizard::PageCompressionEndEncryption::FieldEncryptionConfirmPassword
    = "Field_EncryptionConfirmPassword";
const char* BackupPlanEditWizard::PageCompressionEndEncryption::FieldUseSSE = "Field_UseSSE";
const char* BackupPlanEditWizard::PageCompressionEndEncryption::FieldUseS3Acceleration = "Field_UseS3Acceleration";
const char* BackupPlanEditWizard::PageCompressionEndEncryption::FieldStorageClass = "Field_StorageClass";

const QStringList BackupPlanEditWizard::PageCompressionEndEncryption::EncryptionType = {
    QStringLiteral(QT_TRANSLATE_NOOP("TWB::GUI::BackupPlanEditWizard::PageCompressionEndEncryption", "AES 128")),
    QStringLiteral(QT_TRANSLATE_NOOP("TWB::GUI::BackupPlanEditWizard::PageCompressionEndEncryption", "AES 192")),
    QStringLiteral(QT_TRANSLATE_NOOP("TWB::GUI::BackupPlanEditWizard::PageCompressionEndEncryption", "AES 256")),
    QStringLiteral(QT_TRANSLATE_NOOP("TWB::GUI::BackupPlanEditWizard::PageCompressionEndEncryption", "DES 64")),
    QStringLiteral(QT_TRANSLATE_NOOP("TWB::GUI::BackupPlanEditWizard::PageCompressionEndEncryption", "DES 112")),
    QStringLiteral(QT_TRANSLATE_NOOP("TWB::GUI::BackupPlanEditWizard::PageCompressionEndEncryption", "3DES 168")),
};

const QSet<TWL::Cloud::Type> BackupPlanEditWizard::PageCompressionEndEncryption::AmazonTypes
    = {TWL::Cloud::AmazonS3, TWL::Cloud::AmazonS3Chinese, TWL::Cloud::AmazonS3UB};

namespace {

const char* const cloudTypeField = "Field_CloudType";
const char* const cloudIdField = "Field_CloudId";
const int offeredEncryptionTypes = 3;
const int retentionPage = 103;

bool rebranded(const char* key)
{
    return TWB::Defines::Rebranding().value(QLatin1String(key)).toBool();
}

QString row(const QString& text)
{
    return QStringLiteral("<tr><td></td><td>%1</td></tr>").arg(text);
}

} // namespace

BackupPlanEditWizard::PageCompressionEndEncryption::PageCompressionEndEncryption(QWidget* parent)
    : PageBase(tr("Compression and Encryption"), parent)
    , compression(new QCheckBox(tr("Enable compression"), this))
    , encryption(new QCheckBox(tr("Enable encryption"), this))
    , encryptionType(new QComboBox(this))
    , passwordEdit(new QLineEdit(this))
    , confirmEdit(new QLineEdit(this))
    , sse(new QCheckBox(tr("Use Server Side Encryption"), this))
    , acceleration(new CheckBox(QStringLiteral("<table><tr><td>%1</td></tr><tr><td><small>%2</small></td></tr></table>")
                                    .arg(tr("Use S3 Transfer Acceleration"),
                                        tr("S3 Transfer Acceleration speeds up file transfer for an extra fee. "
                                           "Ensure that the target bucket has this feature enabled.")),
          this))
    , storageClassLabel(new QLabel(this))
    , storageClass(new QComboBox(this))
    , storageClassDescription(new QLabel(this))
    , previewFrame(new AttentionFrame(tr("Public preview of blob-level tiering and Archive access tier should be "
                                         "added to your subscription. This is not recommended for production "
                                         "workloads until the feature reaches GA."),
          this))
{
    setSubTitle(tr("Specify compression and encryption options"));
    const bool freeEdition = License::LicenseRestrictions::isFreeEdition();
    // Names for style sheets, accessibility tools and tests.
    sse->setObjectName(QStringLiteral("sse"));
    acceleration->setObjectName(QStringLiteral("acceleration"));
    // The note under the option is longer than the page is wide.
    acceleration->label()->setWordWrap(true);
    storageClassLabel->setObjectName(QStringLiteral("storageClassLabel"));
    storageClass->setObjectName(QStringLiteral("storageClass"));
    previewFrame->setObjectName(QStringLiteral("previewFrame"));

    for (int value = 0; value < offeredEncryptionTypes; ++value)
        encryptionType->addItem(tr(EncryptionType.at(value).toUtf8().constData()), value);
    encryptionType->setMinimumWidth(200);
    for (QLineEdit* edit : {passwordEdit, confirmEdit}) {
        edit->setMinimumWidth(200);
        edit->setEchoMode(QLineEdit::Password);
    }

    auto* encryptionBox = new QWidget(this);
    auto* grid = new QGridLayout(encryptionBox);
    grid->setContentsMargins(20, 0, 0, 0);
    grid->addWidget(new QLabel(tr("Algorithm:"), encryptionBox), 0, 0);
    grid->addWidget(encryptionType, 0, 1);
    grid->addWidget(new QLabel(tr("Password:"), encryptionBox), 1, 0);
    grid->addWidget(passwordEdit, 1, 1);
    grid->addWidget(new QLabel(tr("Confirm password:"), encryptionBox), 2, 0);
    grid->addWidget(confirmEdit, 2, 1);
    grid->setColumnStretch(2, 1);
    encryptionBox->setEnabled(false);
    connect(encryption, &QCheckBox::toggled, encryptionBox, &QWidget::setEnabled);

    AttentionFrame* attention;
    if (freeEdition) {
        compression->setEnabled(false);
        encryption->setEnabled(false);
        sse->setEnabled(false);
        attention = new AttentionFrame(tr("Encryption and compression are not available in FREE edition"), this);
    } else {
        attention = new AttentionFrame(tr("The password and confirmation password do not match"), encryptionBox);
        attention->setObjectName(QStringLiteral("passwordAttention"));
        attention->hide();
        grid->addWidget(attention, 3, 0, 1, 3);
        connect(this, &PageCompressionEndEncryption::setAttentionVisible, attention, &QWidget::setVisible);
    }
    previewFrame->hide();

    compression->setVisible(rebranded("AllowCompression"));
    const bool allowEncryption = rebranded("AllowEncryption");
    encryption->setVisible(allowEncryption);
    encryptionBox->setVisible(allowEncryption);

    storageClassDescription->setWordWrap(true);
    storageClassDescription->setTextFormat(Qt::RichText);
    storageClass->setMinimumWidth(200);
    auto* classRow = new QHBoxLayout;
    classRow->addWidget(storageClassLabel);
    classRow->addWidget(storageClass);
    classRow->addStretch(1);
    for (QWidget* widget : {static_cast<QWidget*>(storageClassLabel), static_cast<QWidget*>(storageClass),
             static_cast<QWidget*>(storageClassDescription)}) {
        widget->hide();
        connect(this, &PageCompressionEndEncryption::setVisibleStorageClass, widget, &QWidget::setVisible);
    }
    sse->hide();
    acceleration->hide();
    connect(this, &PageCompressionEndEncryption::setVisibleSSE, sse, &QWidget::setVisible);
    connect(this, &PageCompressionEndEncryption::setVisibleS3Acceleration, acceleration, &QWidget::setVisible);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(compression);
    layout->addWidget(encryption);
    layout->addWidget(encryptionBox);
    if (freeEdition)
        layout->addWidget(attention);
    layout->addWidget(sse);
    layout->addWidget(acceleration);
    layout->addLayout(classRow);
    layout->addWidget(storageClassDescription);
    layout->addWidget(previewFrame);
    layout->addStretch(1);

    registerField(QLatin1String(FieldUseCompression), compression);
    registerField(QLatin1String(FieldUseEncryption), encryption);
    registerField(QLatin1String(FieldEncryptionType), encryptionType);
    registerField(QLatin1String(FieldEncryptionPassword), passwordEdit);
    registerField(QLatin1String(FieldEncryptionConfirmPassword), confirmEdit);
    registerField(QLatin1String(FieldUseSSE), sse);
    registerField(QLatin1String(FieldUseS3Acceleration), acceleration);

    connect(encryption, &QCheckBox::toggled, this, &PageCompressionEndEncryption::onDataChanged);
    connect(passwordEdit, &QLineEdit::textChanged, this, &PageCompressionEndEncryption::onDataChanged);
    connect(confirmEdit, &QLineEdit::textChanged, this, &PageCompressionEndEncryption::onDataChanged);
    connect(storageClass, qOverload<int>(&QComboBox::currentIndexChanged), this,
        &PageCompressionEndEncryption::onDataChanged);
}

int BackupPlanEditWizard::PageCompressionEndEncryption::cloudType() const
{
    return field(QLatin1String(cloudTypeField)).toString().toInt(nullptr, 10);
}

QString BackupPlanEditWizard::PageCompressionEndEncryption::password() const
{
    return field(QLatin1String(FieldEncryptionPassword)).toString();
}

bool BackupPlanEditWizard::PageCompressionEndEncryption::encryptionOn() const
{
    return field(QLatin1String(FieldUseEncryption)).toBool();
}

int BackupPlanEditWizard::PageCompressionEndEncryption::nextId() const
{
    return retentionPage;
}

void BackupPlanEditWizard::PageCompressionEndEncryption::initializePage()
{
    PageBase::initializePage();
    Q_EMIT setVisibleStorageClass(false);
    Q_EMIT setVisibleSSE(false);
    Q_EMIT setVisibleS3Acceleration(false);
    const int type = cloudType();
    bool azureTiers = false;
    {
        const QSignalBlocker blocker(storageClass);
        // Items of the back-end chosen before must not be read as this one's classes.
        storageClass->clear();
        if (AmazonTypes.contains(TWL::Cloud::Type(type))) {
            Q_EMIT setVisibleSSE(rebranded("showSSE"));
            if (type != TWL::Cloud::AmazonS3UB)
                Q_EMIT setVisibleS3Acceleration(rebranded("S3Accelerate"));
            setAmazonS3StorageClassInfo();
        } else if (type == TWL::Cloud::AzureBlob) {
            if (azureAccountType(QUuid(field(QLatin1String(cloudIdField)).toString())) != QLatin1String("AzureStack")) {
                setAzureStorageClassInfo();
                azureTiers = true;
            }
        }
    }
    previewFrame->setVisible(azureTiers && storedAzureTier != StorageInfo::AzureDefault);
    passwordOnEntry = password();
}

void BackupPlanEditWizard::PageCompressionEndEncryption::setAmazonS3StorageClassInfo()
{
    const bool show = rebranded("showSIA");
    Q_EMIT setVisibleStorageClass(show);
    if (!show)
        return;
    storageClassLabel->setText(tr("Storage class:"));
    storageClass->clear();
    storageClassDescription->setText(
        QStringLiteral("<small>%1</small>")
            .arg(tr("Storage class describes under which conditions the data will be stored, including data "
                    "durability, availability, price and more. Choose the one that fits your requirements for this "
                    "set of data.")));
    addStorageClassToComboBox(tr("Standard"), StorageInfo::Standard);
    addStorageClassToComboBox(tr("Intelligent-Tiering"), StorageInfo::IntelligentTiering);
    addStorageClassToComboBox(tr("Standard-IA"), StorageInfo::StandardIA);
    addStorageClassToComboBox(tr("One Zone-IA"), StorageInfo::OneZoneIA);
    addStorageClassToComboBox(tr("Glacier Flexible Retrieval"), StorageInfo::Glacier);
    addStorageClassToComboBox(tr("Glacier Instant Retrieval"), StorageInfo::GlacierInstantRetrieval);
    addStorageClassToComboBox(tr("Glacier Deep Archive"), StorageInfo::GlacierDeepArchive);
}

void BackupPlanEditWizard::PageCompressionEndEncryption::setAzureStorageClassInfo()
{
    Q_EMIT setVisibleStorageClass(true);
    storageClassLabel->setText(tr("Access tier:"));
    storageClass->clear();
    addStorageClassToComboBox(tr("Default"), StorageInfo::AzureDefault);
    addStorageClassToComboBox(tr("Cool"), StorageInfo::AzureCool);
    addStorageClassToComboBox(tr("Archive"), StorageInfo::AzureArchive);
    storageClassDescription->setText(
        QStringLiteral("<small>%1</small>")
            .arg(tr("Storage tier describes under which conditions the data will be stored, including data "
                    "durability, availability, price and more. Choose the one that fits your requirements for this "
                    "set of data.")));
}

void BackupPlanEditWizard::PageCompressionEndEncryption::addStorageClassItem(
    const QString& text, int value, int stored, const QString& toolTip)
{
    storageClass->addItem(text, value);
    const int index = storageClass->count() - 1;
    storageClass->setItemData(index, toolTip, Qt::ToolTipRole);
    if (value == stored)
        storageClass->setCurrentIndex(index);
}

void BackupPlanEditWizard::PageCompressionEndEncryption::addStorageClassToComboBox(
    const QString& text, StorageInfo::AmazonS3StorageClass value)
{
    addStorageClassItem(text, value, storedAmazonClass, StorageClassInfo::AmazonS3::toolTip(value));
}

void BackupPlanEditWizard::PageCompressionEndEncryption::addStorageClassToComboBox(
    const QString& text, StorageInfo::AzureBlobStorageClass value)
{
    addStorageClassItem(text, value, storedAzureTier, StorageClassInfo::Azure::toolTip(value));
}

QString BackupPlanEditWizard::PageCompressionEndEncryption::azureAccountType(const QUuid& id) const
{
    const QPointer<ModelManager> manager = ModelManager::instance();
    if (!manager || id.isNull())
        return QString();
    const QAbstractItemModel* model = manager->create(QLatin1String(ModelNames::StorageConnection));
    if (!model)
        return QString();
    for (int r = 0; r < model->rowCount(); ++r) {
        if (QUuid(model->index(r, 1).data().toString()) != id)
            continue;
        // Column 8 holds the back-end's own settings as a JSON object.
        const QJsonObject detail = model->index(r, 8).data().toJsonObject();
        const QJsonValue additional = detail.value(TWL::Cloud::Key::AdditionalSettings);
        // Saved documents hold the nested settings as an object, or as that object's JSON text.
        const QJsonObject settings = additional.isString()
            ? QJsonDocument::fromJson(additional.toString().toUtf8()).object()
            : additional.toObject();
        return settings.value(TWL::Cloud::Key::AzureAccountType).toString();
    }
    return QString();
}

void BackupPlanEditWizard::PageCompressionEndEncryption::onDataChanged()
{
    if (encryptionOn())
        Q_EMIT setAttentionVisible(password() != field(QLatin1String(FieldEncryptionConfirmPassword)).toString());
    else
        Q_EMIT setAttentionVisible(false);
    const int type = cloudType();
    // An empty list (Azure Stack, storage classes not shown) keeps the plan's own value.
    const bool listed = storageClass->currentIndex() >= 0;
    if (type == TWL::Cloud::AzureBlob && listed) {
        storedAzureTier = StorageInfo::AzureBlobStorageClass(storageClass->currentData().toInt());
        previewFrame->setVisible(storedAzureTier != StorageInfo::AzureDefault);
    }
    if (AmazonTypes.contains(TWL::Cloud::Type(type)) && listed)
        storedAmazonClass = StorageInfo::AmazonS3StorageClass(storageClass->currentData().toInt());
    Q_EMIT completeChanged();
}

bool BackupPlanEditWizard::PageCompressionEndEncryption::isComplete() const
{
    if (!encryptionOn())
        return true;
    const QString text = password();
    return !text.isEmpty() && text == field(QLatin1String(FieldEncryptionConfirmPassword)).toString();
}

bool BackupPlanEditWizard::PageCompressionEndEncryption::validatePage()
{
    bool ok = isComplete();
    const QString current = password();
    if (passwordOnEntry != current)
        passwordUnchanged = false;
    if (encryptionOn() && ok && !passwordUnchanged) {
        if (messageOpen)
            return ok;
        messageOpen = true;
        if (!passwordOnEntry.isEmpty() && isFilePlan) {
            QMessageBox question(QMessageBox::Question, tr("Encryption option has changed!"),
                tr("Encryption option has changed. Do you want to rebackup all files with new encryption?\n\nMake "
                   "sure to have the new encryption key noted somewhere safe. The data cannot be restored if the "
                   "key is lost."),
                QMessageBox::Ok | QMessageBox::No | QMessageBox::Cancel, QApplication::activeWindow(), Qt::Sheet);
            question.setDefaultButton(QMessageBox::Ok);
            const int answer = question.exec();
            if (answer == QMessageBox::Ok)
                reBackupModifiedSince = QDateTime::currentDateTime(); // the service uploads every file again
            else if (answer != QMessageBox::No)
                ok = false;
        } else {
            QMessageBox notice(QMessageBox::Information, tr("Write down your password!"),
                tr("Make sure to have the new encryption key noted somewhere safe. The data cannot be restored if "
                   "the key is lost."),
                QMessageBox::Ok | QMessageBox::Cancel, QApplication::activeWindow(), Qt::Sheet);
            notice.setDefaultButton(QMessageBox::Cancel);
            ok = notice.exec() == QMessageBox::Ok;
        }
        messageOpen = false;
        // Once answered, this password is the one the user accepted: coming back must not ask again.
        if (ok)
            passwordUnchanged = true;
    }
    passwordOnEntry = current;
    return ok;
}

bool BackupPlanEditWizard::PageCompressionEndEncryption::initPlan(TWB::Info::Plan::Base* plan)
{
    auto* backup = dynamic_cast<TWB::Info::Plan::Backup*>(plan);
    if (!backup)
        return false;
    backup->setUseCompression(field(QLatin1String(FieldUseCompression)).toBool());
    if (encryptionOn()) {
        Encyption& encyption = backup->encryption();
        encyption.setEnabled(true);
        const int value = encryptionType->itemData(field(QLatin1String(FieldEncryptionType)).toInt()).toInt();
        if (value >= Encyption::AES128 && value <= Encyption::TripleDES168)
            encyption.setEncryptionType(Encyption::Type(value));
        else
            TWL::TwlDebug("TWB").warning() << "Unknown encryption type!";
        encyption.setPassword(password());
    }
    const int type = cloudType();
    StorageInfo& info = backup->storageInfo();
    if (AmazonTypes.contains(TWL::Cloud::Type(type))) {
        if (rebranded("showSIA")) {
            const QVariant chosen = storageClass->currentData();
            info.setStorageClassAmazonS3(
                chosen.isValid() ? StorageInfo::AmazonS3StorageClass(chosen.toInt()) : storedAmazonClass);
        }
        info.setUseSSE(field(QLatin1String(FieldUseSSE)).toBool());
        info.setUseS3Accelerated(field(QLatin1String(FieldUseS3Acceleration)).toBool());
    }
    if (type == TWL::Cloud::AzureBlob)
        info.setStorageClassAzureBlob(StorageInfo::AzureBlobStorageClass(storageClass->currentData().toInt()));
    if (plan->type() == 0) {
        if (auto* file = dynamic_cast<TWB::Info::Plan::BackupFile*>(plan))
            file->setReBackupModifiedSince(reBackupModifiedSince);
    }
    return true;
}

bool BackupPlanEditWizard::PageCompressionEndEncryption::fromPlan(TWB::Info::Plan::Base* plan)
{
    auto* backup = dynamic_cast<TWB::Info::Plan::Backup*>(plan);
    if (!backup)
        return false;
    isFilePlan = plan->type() == 0;
    if (auto* file = dynamic_cast<TWB::Info::Plan::BackupFile*>(plan))
        reBackupModifiedSince = file->reBackupModifiedSince();
    if (!License::LicenseRestrictions::isFreeEdition()) {
        setField(QLatin1String(FieldUseCompression), backup->useCompression());
        setField(QLatin1String(FieldUseEncryption), backup->encryption().isEnabled());
    }
    const Encyption& encyption = backup->encryption();
    if (encyption.isEnabled()) {
        setField(QLatin1String(FieldEncryptionPassword), encyption.password());
        setField(QLatin1String(FieldEncryptionConfirmPassword), encyption.password());
        passwordUnchanged = field(QLatin1String(FieldUseEncryption)).toBool();
        switch (encyption.encryptionType()) {
        case Encyption::AES128:
            break;
        case Encyption::AES192:
        case Encyption::AES256:
            setField(QLatin1String(FieldEncryptionType), int(encyption.encryptionType()));
            break;
        default:
            TWL::TwlDebug("TWB").warning() << "Encryption type don't support!";
        }
    }
    const StorageInfo& info = backup->storageInfo();
    setField(QLatin1String(FieldUseSSE), info.useSSE());
    storedAmazonClass = info.storageClassAmazonS3();
    setField(QLatin1String(FieldUseS3Acceleration), info.useS3Accelerated());
    storedAzureTier = info.storageClassAzureBlob();
    if (cloudType() == TWL::Cloud::AzureBlob && storedAzureTier != StorageInfo::AzureDefault)
        previewFrame->show();
    return true;
}

QString BackupPlanEditWizard::PageCompressionEndEncryption::encryptionTypeText() const
{
    const int value = encryptionType->itemData(field(QLatin1String(FieldEncryptionType)).toInt()).toInt();
    return tr(EncryptionType.value(value).toUtf8().constData());
}

QString BackupPlanEditWizard::PageCompressionEndEncryption::summary()
{
    QString rows = QStringLiteral("<tr><td>%1</td><td></td></tr>").arg(tr("Backup options:"));
    rows += row(
        field(QLatin1String(FieldUseCompression)).toBool() ? tr("Compression: enabled") : tr("Compression: disabled"));
    if (encryptionOn())
        rows += QStringLiteral("<tr><td></td><td>%1: %2</td></tr>").arg(tr("Encryption"), encryptionTypeText());
    else
        rows += row(tr("Encryption: disabled"));
    const int type = cloudType();
    const int chosen = storageClass->currentData().toInt();
    if (AmazonTypes.contains(TWL::Cloud::Type(type))) {
        if (field(QLatin1String(FieldUseSSE)).toBool())
            rows += row(tr("Use Server Side Encryption"));
        if (field(QLatin1String(FieldUseS3Acceleration)).toBool())
            rows += row(tr("Use S3 Transfer Acceleration"));
        QString text;
        switch (chosen) {
        case StorageInfo::IntelligentTiering:
            text = tr("Use Intelligent Tiering");
            break;
        case StorageInfo::StandardIA:
            text = tr("Use Standard-IA Storage");
            break;
        case StorageInfo::OneZoneIA:
            text = tr("Use One Zone-IA Storage");
            break;
        case StorageInfo::Glacier:
            text = tr("Use Glacier Storage");
            break;
        case StorageInfo::GlacierInstantRetrieval:
            text = tr("Glacier Instant Retrieval");
            break;
        case StorageInfo::GlacierDeepArchive:
            text = tr("Use Glacier Deep Archive");
            break;
        default:
            break;
        }
        if (!text.isEmpty())
            rows += row(text);
    }
    if (type == TWL::Cloud::AzureBlob) {
        if (chosen == StorageInfo::AzureCool)
            rows += row(tr("Use Azure Cool"));
        else if (chosen == StorageInfo::AzureArchive)
            rows += row(tr("Use Azure Archive"));
    }
    return rows;
}

} // namespace TWB::GUI
