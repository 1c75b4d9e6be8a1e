#include "backup_wizard/page_retention_policy.h"

#include "platform/plan/backup.h"
#include "settings/retention_policy.h"
#include "settings/setting_simple_dialog.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace TWB::GUI {

using RetentionPolicy = TWB::Info::Plan::Backup::RetentionPolicy;

const char* BackupPlanEditWizard::PageRetentionPolicy::FieldUseDefault = "Field_RPUseDefault";
const char* BackupPlanEditWizard::PageRetentionPolicy::FieldUseCustom = "Field_RPUseCustom";
const char* BackupPlanEditWizard::PageRetentionPolicy::FieldUseDeleteOlder = "Field_RPUseDeleteOlder";
const char* BackupPlanEditWizard::PageRetentionPolicy::FieldUseDeleteOlderAge = "Field_RPUseDeleteOlderAge";
const char* BackupPlanEditWizard::PageRetentionPolicy::FieldUseDeleteOlderType = "Field_RPUseDeleteOlderType";
const char* BackupPlanEditWizard::PageRetentionPolicy::FieldUseDeleteDateType = "Field_UseBackupDate";
const char* BackupPlanEditWizard::PageRetentionPolicy::FieldUseDeleteOlderKeepLast = "Field_RPUseDeleteOlderKeepLast";
const char* BackupPlanEditWizard::PageRetentionPolicy::FieldUseKeepVersion = "Field_RPUseKeepVersion";
const char* BackupPlanEditWizard::PageRetentionPolicy::FieldUseKeepVersionNumber = "Field_RPUseKeepVersionNumber";
const char* BackupPlanEditWizard::PageRetentionPolicy::FieldUseDeleteLocalyFiles = "Field_RPUseDeleteFiles";
const char* BackupPlanEditWizard::PageRetentionPolicy::FieldUseDeleteLocalyFilesValue = "Field_RPUseDeleteFilesValue";

namespace {
const int schedulePage = 4;
} // namespace

BackupPlanEditWizard::PageRetentionPolicy::PageRetentionPolicy(QWidget* parent)
    : PageBase(tr("Retention Policy"), parent)
{
    setSubTitle(tr("Specify retention policy for backup files"));

    auto* useDefault = new QRadioButton(tr("Use default"), this);
    auto* defaultLabel
        = new QLabel(tr("Use default <a href=\"options\">options</a> specified for the whole product"), this);
    defaultLabel->setContentsMargins(20, 0, 0, 0);
    defaultLabel->setEnabled(false);
    connect(useDefault, &QRadioButton::toggled, defaultLabel, &QWidget::setEnabled);
    connect(defaultLabel, &QLabel::linkActivated, this, &PageRetentionPolicy::onLinkActivated);

    useCustom = new QRadioButton(tr("Specify custom retention policy for backup plan"), this);
    auto* group = new QButtonGroup(this);
    group->addButton(useDefault);
    group->addButton(useCustom);

    deleteOlder = new QCheckBox(tr("Delete versions older than"), this);
    deleteOlderBox = new QWidget(this);
    auto* age = new QSpinBox(deleteOlderBox);
    age->setMinimum(1);
    auto* unit = new QComboBox(deleteOlderBox);
    // The units of an age: the count stands before them.
    unit->addItems({tr("day"), tr("week"), tr("month")});
    auto* fromLabel = new QLabel(tr("from"), deleteOlderBox);
    dateType = new QComboBox(deleteOlderBox);
    dateType->addItems({tr("modification date"), tr("backup date")});
    keepLast = new QCheckBox(tr("Always keep the last version"), deleteOlderBox);

    keepVersion = new QCheckBox(tr("Keep number of versions (for each file)"), this);
    keepVersionBox = new QWidget(this);
    auto* versionsLabel = new QLabel(tr("Keep number of versions:"), keepVersionBox);
    auto* versions = new QSpinBox(keepVersionBox);
    versions->setMinimum(1);
    versions->setValue(3);

    auto* deleteLocaly = new QCheckBox(tr("Delete files that have been deleted locally"), this);
    auto* deleteLocalyBox = new QWidget(this);
    auto* afterLabel = new QLabel(tr("Delete after:"), deleteLocalyBox);
    auto* days = new QSpinBox(deleteLocalyBox);
    days->setRange(0, 99999);
    days->setValue(30);
    auto* daysLabel = new QLabel(tr("days"), deleteLocalyBox);

    for (QWidget* w : {static_cast<QWidget*>(deleteOlder), deleteOlderBox, static_cast<QWidget*>(keepVersion),
             keepVersionBox, deleteLocalyBox})
        w->setEnabled(false);
    connect(useCustom, &QRadioButton::toggled, this, &PageRetentionPolicy::onCustomPolicy);
    connect(deleteOlder, &QCheckBox::toggled, deleteOlderBox, &QWidget::setEnabled);
    connect(keepVersion, &QCheckBox::toggled, keepVersionBox, &QWidget::setEnabled);
    connect(deleteLocaly, &QCheckBox::toggled, deleteLocalyBox, &QWidget::setEnabled);
    connect(dateType, qOverload<int>(&QComboBox::currentIndexChanged), this,
        &PageRetentionPolicy::onDeleteOlderDateTypeChanged);

    auto* ageRow = new QHBoxLayout;
    ageRow->setContentsMargins(0, 0, 0, 0);
    ageRow->addWidget(age);
    ageRow->addWidget(unit);
    ageRow->addWidget(fromLabel);
    ageRow->addWidget(dateType);
    ageRow->addStretch(1);
    auto* deleteOlderLayout = new QVBoxLayout(deleteOlderBox);
    deleteOlderLayout->setContentsMargins(20, 0, 0, 0);
    deleteOlderLayout->addLayout(ageRow);
    deleteOlderLayout->addWidget(keepLast);

    auto* versionsLayout = new QHBoxLayout(keepVersionBox);
    versionsLayout->setContentsMargins(20, 0, 0, 0);
    versionsLayout->addWidget(versionsLabel);
    versionsLayout->addWidget(versions);
    versionsLayout->addStretch(1);

    auto* customLayout = new QVBoxLayout;
    customLayout->setContentsMargins(20, 0, 0, 0);
    customLayout->addWidget(deleteOlder);
    customLayout->addWidget(deleteOlderBox);
    customLayout->addWidget(keepVersion);
    customLayout->addWidget(keepVersionBox);

    auto* deleteLocalyLayout = new QHBoxLayout(deleteLocalyBox);
    deleteLocalyLayout->setContentsMargins(20, 0, 0, 0);
    deleteLocalyLayout->addWidget(afterLabel);
    deleteLocalyLayout->addWidget(days);
    deleteLocalyLayout->addWidget(daysLabel);
    deleteLocalyLayout->addStretch(1);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(useDefault);
    layout->addWidget(defaultLabel);
    layout->addWidget(useCustom);
    layout->addLayout(customLayout);
    layout->addSpacing(10);
    layout->addWidget(deleteLocaly);
    layout->addWidget(deleteLocalyBox);
    layout->addStretch(1);

    registerField(QLatin1String(FieldUseDefault), useDefault);
    registerField(QLatin1String(FieldUseCustom), useCustom);
    registerField(QLatin1String(FieldUseDeleteOlder), deleteOlder);
    registerField(QLatin1String(FieldUseDeleteOlderAge), age);
    registerField(QLatin1String(FieldUseDeleteOlderType), unit);
    registerField(QLatin1String(FieldUseDeleteDateType), dateType);
    registerField(QLatin1String(FieldUseDeleteOlderKeepLast), keepLast);
    registerField(QLatin1String(FieldUseKeepVersion), keepVersion);
    registerField(QLatin1String(FieldUseKeepVersionNumber), versions);
    registerField(QLatin1String(FieldUseDeleteLocalyFiles), deleteLocaly);
    registerField(QLatin1String(FieldUseDeleteLocalyFilesValue), days);
}

int BackupPlanEditWizard::PageRetentionPolicy::nextId() const
{
    return schedulePage;
}

bool BackupPlanEditWizard::PageRetentionPolicy::isComplete() const
{
    return true;
}

bool BackupPlanEditWizard::PageRetentionPolicy::validatePage()
{
    return true;
}

void BackupPlanEditWizard::PageRetentionPolicy::onCustomPolicy(bool on)
{
    deleteOlder->setEnabled(on);
    deleteOlderBox->setEnabled(on && deleteOlder->isChecked());
    keepVersion->setEnabled(on);
    keepVersionBox->setEnabled(on && keepVersion->isChecked());
    if (on)
        onDeleteOlderDateTypeChanged();
}

void BackupPlanEditWizard::PageRetentionPolicy::onDeleteOlderDateTypeChanged()
{
    if (dateType->currentIndex() != 0) {
        keepLast->setChecked(true);
        keepLast->setEnabled(false);
    } else {
        // Left checked: the user unchecks it if that is what they want.
        keepLast->setEnabled(true);
    }
}

void BackupPlanEditWizard::PageRetentionPolicy::onLinkActivated(const QString&)
{
    QPointer<SettingSimpleDialog> dialog = new SettingSimpleDialog(this);
    auto* page = new Settings::RetentionPolicy(dialog);
    dialog->setWidget(page);
    page->loadSettings();
    dialog->exec();
    delete dialog;
}

bool BackupPlanEditWizard::PageRetentionPolicy::initPlan(TWB::Info::Plan::Base* plan)
{
    auto* backup = dynamic_cast<TWB::Info::Plan::Backup*>(plan);
    if (!backup)
        return false;
    RetentionPolicy& policy = backup->retentionPolicy();
    if (field(QLatin1String(FieldUseDefault)).toBool())
        policy.setType(RetentionPolicy::Default);
    else if (field(QLatin1String(FieldUseCustom)).toBool())
        policy.setType(RetentionPolicy::Custom);

    // The custom values are written whatever the type: the type alone decides whether the service uses them.
    if (field(QLatin1String(FieldUseDeleteOlder)).toBool()) {
        policy.setUseDeleteOlder(true);
        RetentionPolicy::FileAge age;
        age.age = field(QLatin1String(FieldUseDeleteOlderAge)).toInt();
        age.unit = RetentionPolicy::FileAge::Unit(field(QLatin1String(FieldUseDeleteOlderType)).toInt());
        policy.setDeleteFileAge(age);
        policy.setUseKeepLastVersion(field(QLatin1String(FieldUseDeleteOlderKeepLast)).toBool());
    } else {
        policy.setUseDeleteOlder(false);
    }
    if (field(QLatin1String(FieldUseKeepVersion)).toBool()) {
        policy.setUseKeepVersion(true);
        policy.setKeepVersion(field(QLatin1String(FieldUseKeepVersionNumber)).toInt());
    } else {
        policy.setUseKeepVersion(false);
    }
    // Deleted files and the backup date mean something to file plans only.
    if (plan->type() != TWB::Info::Plan::Base::TypeFile)
        return true;
    if (field(QLatin1String(FieldUseDeleteLocalyFiles)).toBool()) {
        policy.setUseDeleteLocaly(true);
        policy.setDeleteLocalyAfter(field(QLatin1String(FieldUseDeleteLocalyFilesValue)).toInt());
    } else {
        policy.setUseDeleteLocaly(false);
    }
    policy.setUseBackupDate(field(QLatin1String(FieldUseDeleteDateType)).toInt() != 0);
    return true;
}

bool BackupPlanEditWizard::PageRetentionPolicy::fromPlan(TWB::Info::Plan::Base* plan)
{
    auto* backup = dynamic_cast<TWB::Info::Plan::Backup*>(plan);
    if (!backup)
        return false;
    const RetentionPolicy& policy = backup->retentionPolicy();
    setField(QLatin1String(FieldUseDeleteOlder), policy.useDeleteOlder());
    setField(QLatin1String(FieldUseDeleteOlderAge), policy.deleteFileAge().age);
    setField(QLatin1String(FieldUseDeleteOlderType), int(policy.deleteFileAge().unit));
    setField(QLatin1String(FieldUseDeleteOlderKeepLast), policy.useKeepLastVersion());
    setField(QLatin1String(FieldUseKeepVersion), policy.useKeepVersion());
    setField(QLatin1String(FieldUseKeepVersionNumber), policy.keepVersion());
    if (plan->type() == TWB::Info::Plan::Base::TypeFile) {
        setField(QLatin1String(FieldUseDeleteLocalyFiles), policy.useDeleteLocaly());
        setField(QLatin1String(FieldUseDeleteLocalyFilesValue), policy.deleteLocalyAfter());
    }
    setField(QLatin1String(FieldUseDeleteDateType), policy.useBackupDate() ? 1 : 0);
    const bool custom = policy.type() == RetentionPolicy::Custom;
    setField(QLatin1String(custom ? FieldUseCustom : FieldUseDefault), true);
    // The check boxes above toggled their containers whatever the policy's type; the type has the last word.
    onCustomPolicy(custom);
    return true;
}

QString BackupPlanEditWizard::PageRetentionPolicy::summary()
{
    QString rows = QStringLiteral("<tr><td>%1</td><td></td></tr>").arg(tr("Retention policy:"));
    if (field(QLatin1String(FieldUseDefault)).toBool())
        return rows + QStringLiteral("<tr><td></td><td>%1</td></tr>").arg(tr("Default retention policy"));
    if (!field(QLatin1String(FieldUseCustom)).toBool())
        return rows;
    if (field(QLatin1String(FieldUseDeleteOlder)).toBool()) {
        const QStringList units = {tr("day(s)"), tr("week(s)"), tr("month(s)")};
        const QString unit = units.value(field(QLatin1String(FieldUseDeleteOlderType)).toInt());
        const QString date
            = field(QLatin1String(FieldUseDeleteDateType)).toInt() == 0 ? tr("modification date") : tr("backup date");
        rows += QStringLiteral("<tr><td></td><td>%1 %2 %3 %4 %5</td></tr>")
                    .arg(tr("Delete version older than"),
                        QString::number(field(QLatin1String(FieldUseDeleteOlderAge)).toInt()), unit, tr("from"), date);
        if (field(QLatin1String(FieldUseDeleteOlderKeepLast)).toBool())
            rows += QStringLiteral("<tr><td></td><td>%1</td></tr>").arg(tr("Always keep the last version"));
    }
    if (field(QLatin1String(FieldUseKeepVersion)).toBool()) {
        rows += QStringLiteral("<tr><td></td><td>%1 %2 %3</td></tr>")
                    .arg(tr("Keep only"), QString::number(field(QLatin1String(FieldUseKeepVersionNumber)).toInt()),
                        tr("versions"));
    }
    if (field(QLatin1String(FieldUseDeleteLocalyFiles)).toBool()) {
        rows += QStringLiteral("<tr><td></td><td>%1 %2 %3</td></tr>")
                    .arg(tr("Delete files that have been deleted locally after"),
                        QString::number(field(QLatin1String(FieldUseDeleteLocalyFilesValue)).toInt()), tr("day(s)"));
    }
    return rows;
}

} // namespace TWB::GUI
