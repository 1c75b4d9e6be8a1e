#include "settings/retention_policy.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QJsonObject>
#include <QLabel>
#include <QSpinBox>
#include <QVBoxLayout>

namespace TWB::GUI::Settings {

const char* RetentionPolicy::KeyNumberOfVersions = "RetentionNumberOfVersions";
const char* RetentionPolicy::KeyRetentionTime = "SerializationSupportRetentionTime";
const char* RetentionPolicy::KeyDeleteLastVersion = "RetentionDeleteLastVersion";
const char* RetentionPolicy::KeyUseBackupDate = "RetentionUseBackupDate";

namespace {

const int backupDateIndex = 1;

QString flag(bool on)
{
    return on ? QStringLiteral("true") : QStringLiteral("false");
}

} // namespace

RetentionPolicy::RetentionPolicy(QWidget* parent)
    : ServiceSettingsPage(
        {QStringLiteral("GetProductOptions"), QStringLiteral("SetProductOptions"), QStringLiteral("options")}, parent)
{
    setWindowTitle(tr("Default retention policy"));

    auto* intro = new QLabel(
        tr("Plans that use the default retention policy follow these rules from their next run on."), this);
    intro->setWordWrap(true);

    deleteOlder = new QCheckBox(tr("Delete versions older than"), controls);
    days = new QSpinBox(controls);
    days->setRange(1, 99999);
    days->setValue(30);
    // Saved when the user is done with the number, not at each digit.
    days->setKeyboardTracking(false);
    auto* daysLabel = new QLabel(tr("days from"), controls);
    dateType = new QComboBox(controls);
    dateType->addItems({tr("modification date"), tr("backup date")});
    keepLast = new QCheckBox(tr("Always keep the last version"), controls);
    keepVersions = new QCheckBox(tr("Keep number of versions (for each file)"), controls);
    versions = new QSpinBox(controls);
    versions->setRange(1, 99);
    versions->setValue(3);
    versions->setKeyboardTracking(false);

    for (QWidget* w : {static_cast<QWidget*>(days), static_cast<QWidget*>(daysLabel), static_cast<QWidget*>(dateType),
             static_cast<QWidget*>(keepLast)}) {
        w->setEnabled(false);
        connect(deleteOlder, &QCheckBox::toggled, w, &QWidget::setEnabled);
    }
    versions->setEnabled(false);
    connect(keepVersions, &QCheckBox::toggled, versions, &QWidget::setEnabled);
    connect(dateType, qOverload<int>(&QComboBox::currentIndexChanged), this, &RetentionPolicy::onDateTypeChanged);
    connect(deleteOlder, &QCheckBox::toggled, this, &RetentionPolicy::onDateTypeChanged);

    auto* grid = new QGridLayout(controls);
    grid->setContentsMargins(0, 0, 0, 0);
    auto* ageRow = new QHBoxLayout;
    ageRow->addWidget(days);
    ageRow->addWidget(daysLabel);
    ageRow->addWidget(dateType);
    ageRow->addStretch(1);
    grid->addWidget(deleteOlder, 0, 0);
    grid->addLayout(ageRow, 0, 1);
    auto* keepLastRow = new QHBoxLayout;
    keepLastRow->setContentsMargins(20, 0, 0, 0);
    keepLastRow->addWidget(keepLast);
    grid->addLayout(keepLastRow, 1, 0, 1, 2);
    grid->addWidget(keepVersions, 2, 0);
    auto* versionsRow = new QHBoxLayout;
    versionsRow->addWidget(versions);
    versionsRow->addStretch(1);
    grid->addLayout(versionsRow, 2, 1);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addWidget(controls);
    layout->addWidget(errorLabel);

    connect(deleteOlder, &QCheckBox::toggled, this, &RetentionPolicy::save);
    connect(days, qOverload<int>(&QSpinBox::valueChanged), this, &RetentionPolicy::save);
    connect(dateType, qOverload<int>(&QComboBox::currentIndexChanged), this, &RetentionPolicy::save);
    connect(keepLast, &QCheckBox::toggled, this, &RetentionPolicy::save);
    connect(keepVersions, &QCheckBox::toggled, this, &RetentionPolicy::save);
    connect(versions, qOverload<int>(&QSpinBox::valueChanged), this, &RetentionPolicy::save);
}

void RetentionPolicy::onDateTypeChanged()
{
    // By backup date the last version always stays, as it does for a plan's own rules.
    const bool forced = dateType->currentIndex() == backupDateIndex;
    if (forced)
        keepLast->setChecked(true);
    keepLast->setEnabled(deleteOlder->isChecked() && !forced);
}

void RetentionPolicy::fill(const QJsonObject& options)
{
    auto value = [&options](const char* key) { return options.value(QLatin1String(key)).toString(); };
    const int storedDays = value(KeyRetentionTime).toInt();
    deleteOlder->setChecked(storedDays > 0);
    if (storedDays > 0)
        days->setValue(storedDays);
    // The service counts from the backup date unless told "false".
    dateType->setCurrentIndex(value(KeyUseBackupDate) == QLatin1String("false") ? 0 : backupDateIndex);
    keepLast->setChecked(value(KeyDeleteLastVersion) != QLatin1String("true"));
    onDateTypeChanged();
    const int storedVersions = value(KeyNumberOfVersions).toInt();
    keepVersions->setChecked(storedVersions > 0);
    if (storedVersions > 0)
        versions->setValue(storedVersions);
}

void RetentionPolicy::save()
{
    // Nothing is sent before the stored values were shown: the controls' own defaults would overwrite them.
    if (!canSave())
        return;
    QJsonObject options;
    options.insert(QLatin1String(KeyRetentionTime),
        deleteOlder->isChecked() ? QString::number(days->value()) : QStringLiteral("0"));
    options.insert(QLatin1String(KeyUseBackupDate), flag(dateType->currentIndex() == backupDateIndex));
    options.insert(QLatin1String(KeyDeleteLastVersion), flag(!keepLast->isChecked()));
    options.insert(QLatin1String(KeyNumberOfVersions),
        keepVersions->isChecked() ? QString::number(versions->value()) : QStringLiteral("0"));
    sendValues(options);
}

QString RetentionPolicy::failureText(const QString& reason) const
{
    return tr("The default retention policy could not be read or saved: %1").arg(reason);
}

} // namespace TWB::GUI::Settings
