#include "restore_wizard/page_point_type.h"

#include "frame/application.h"
#include "platform/cloud/cloud_type.h"
#include "platform/plan/restore.h"
#include "widgets/check_box.h"
#include "widgets/radio_button.h"

#include <QCheckBox>
#include <QDateTimeEdit>
#include <QLabel>
#include <QLocale>
#include <QVBoxLayout>

namespace TWB::GUI {

using TWB::Info::Plan::Restore;

const char* RestorePlanEditWizard::PagePointType::FieldUseLatestVersion = "Field_TypeUseLatestVersion;";
const char* RestorePlanEditWizard::PagePointType::FieldUsePointInTime = "Field_TypeUsePointInTime";
const char* RestorePlanEditWizard::PagePointType::FieldPointInTimeValue = "Field_TypePointInTimeValue";
const char* RestorePlanEditWizard::PagePointType::FieldUseSincBeforRun = "Field_UseSincBeforRun";
const char* RestorePlanEditWizard::PagePointType::FieldUseS3Acceleration = "Field_UseS3Acceleration";
const char* RestorePlanEditWizard::PagePointType::FieldUseGlacier = "Field_TypeUseGlacier";

namespace {

QString twoLines(const QString& text, const QString& note)
{
    return QStringLiteral("<table><tr><td>%1</td></tr><tr><td><small>%2</small></td></tr></table>").arg(text, note);
}

QString row(const QString& text)
{
    return QStringLiteral("<tr><td></td><td>%1</td></tr>").arg(text);
}

} // namespace

RestorePlanEditWizard::PagePointType::PagePointType(QWidget* parent)
    : PageBase(tr("Restore Type"), parent)
    , latest(new RadioButton(twoLines(tr("Latest version"), tr("Restore the latest version of selected files")), this))
    , pointInTime(new RadioButton(twoLines(tr("Point in time"),
                                      tr("Restore selected files to a particular point in time. If there was no "
                                         "version of a given file before this point in time, no file will be "
                                         "restored.")),
          this))
    , pointInTimeValue(new QDateTimeEdit(QDateTime::currentDateTime(), this))
    , syncBeforeRun(new QCheckBox(tr("Sync before run"), this))
    , acceleration(new QCheckBox(tr("Use S3 Transfer Acceleration"), this))
    , skipGlacier(new CheckBox(
          twoLines(tr("Do not restore files located in Glacier (with GLACIER storage class)"),
              tr("If this options is ON files with GLACIER storage class will be skipped and not restored. If you "
                 "want these files to be restored switch OFF the option and specify Glacier Smart Restore options "
                 "on one of the following step")),
          this))
{
    setSubTitle(tr("Restore from specified time"));
    pointInTime->label()->setWordWrap(true);
    skipGlacier->label()->setWordWrap(true);
    pointInTimeValue->setCalendarPopup(true);
    pointInTimeValue->setEnabled(false);
    connect(pointInTime, &QAbstractButton::toggled, pointInTimeValue, &QWidget::setEnabled);
    // Shown once the page knows the storage.
    acceleration->hide();
    skipGlacier->hide();
    connect(this, &PagePointType::setGlacierVisible, skipGlacier, &QWidget::setVisible);
    connect(this, &PagePointType::setVisibleS3Acceleration, acceleration, &QWidget::setVisible);

    auto* timeRow = new QHBoxLayout;
    timeRow->setContentsMargins(20, 0, 0, 0);
    timeRow->addWidget(pointInTimeValue);
    timeRow->addStretch(1);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(latest);
    layout->addWidget(pointInTime);
    layout->addLayout(timeRow);
    layout->addSpacing(10);
    layout->addWidget(syncBeforeRun);
    layout->addWidget(acceleration);
    layout->addWidget(skipGlacier);
    layout->addStretch(1);

    registerField(QLatin1String(FieldUseLatestVersion), latest);
    registerField(QLatin1String(FieldUsePointInTime), pointInTime);
    registerField(QLatin1String(FieldPointInTimeValue), pointInTimeValue);
    registerField(QLatin1String(FieldUseSincBeforRun), syncBeforeRun);
    registerField(QLatin1String(FieldUseS3Acceleration), acceleration);
    registerField(QLatin1String(FieldUseGlacier), skipGlacier);
}

int RestorePlanEditWizard::PagePointType::nextId() const
{
    return 2;
}

bool RestorePlanEditWizard::PagePointType::isComplete() const
{
    // A plan whose restore type is neither of the two still goes on; initPlan then leaves it alone.
    return true;
}

bool RestorePlanEditWizard::PagePointType::validatePage()
{
    return true;
}

bool RestorePlanEditWizard::PagePointType::amazonStorage() const
{
    const int type = field(QStringLiteral("Field_CloudType")).toString().toInt(nullptr, 10);
    return type == TWL::Cloud::AmazonS3 || type == TWL::Cloud::AmazonS3Chinese;
}

void RestorePlanEditWizard::PagePointType::initializePage()
{
    PageBase::initializePage();
    // Hiding keeps the value, so a plan moved to another storage keeps its choice.
    const bool s3 = amazonStorage();
    Q_EMIT setGlacierVisible(s3);
    Q_EMIT setVisibleS3Acceleration(s3);
}

QString RestorePlanEditWizard::PagePointType::summary()
{
    QString text = QStringLiteral("<tr><td>%1:</td><td></td></tr>").arg(tr("Restore type"));
    if (field(QLatin1String(FieldUseLatestVersion)).toBool())
        text += row(tr("Latest versions"));
    if (field(QLatin1String(FieldUsePointInTime)).toBool()) {
        const QDateTime when = field(QLatin1String(FieldPointInTimeValue)).toDateTime();
        text += row(
            QStringLiteral("%1: %2").arg(tr("Point in time"), QLocale::system().toString(when, QLocale::ShortFormat)));
    }
    if (field(QLatin1String(FieldUseSincBeforRun)).toBool())
        text += row(tr("Sync before run"));
    if (Application::isStandalon() && amazonStorage() && field(QLatin1String(FieldUseS3Acceleration)).toBool())
        text += row(tr("Use S3 Transfer Acceleration"));
    return text;
}

bool RestorePlanEditWizard::PagePointType::initPlan(TWB::Info::Plan::Base* plan)
{
    auto* restore = dynamic_cast<Restore*>(plan);
    if (!restore)
        return false;
    if (field(QLatin1String(FieldUseLatestVersion)).toBool()) {
        restore->setRestoreType(Restore::LatestVersion);
    } else if (field(QLatin1String(FieldUsePointInTime)).toBool()) {
        restore->setRestoreType(Restore::PointInTime);
        restore->setPointInTime(field(QLatin1String(FieldPointInTimeValue)).toDateTime());
    }
    restore->setSyncBeforeRun(field(QLatin1String(FieldUseSincBeforRun)).toBool());
    restore->storageInfo().setUseS3Accelerated(field(QLatin1String(FieldUseS3Acceleration)).toBool());
    // Otherwise the Glacier page writes how archived files come back.
    if (field(QLatin1String(FieldUseGlacier)).toBool())
        restore->storageInfo().setType(Restore::StorageInfo::NoGlacier);
    return true;
}

bool RestorePlanEditWizard::PagePointType::fromPlan(TWB::Info::Plan::Base* plan)
{
    const auto* restore = dynamic_cast<const Restore*>(plan);
    if (!restore)
        return false;
    if (restore->restoreType() == Restore::LatestVersion) {
        setField(QLatin1String(FieldUseLatestVersion), true);
    } else if (restore->restoreType() == Restore::PointInTime) {
        setField(QLatin1String(FieldUsePointInTime), true);
        setField(QLatin1String(FieldPointInTimeValue), restore->pointInTime());
    }
    setField(QLatin1String(FieldUseSincBeforRun), restore->syncBeforeRun());
    setField(QLatin1String(FieldUseS3Acceleration), restore->storageInfo().useS3Accelerated());
    setField(QLatin1String(FieldUseGlacier), restore->storageInfo().type() == Restore::StorageInfo::NoGlacier);
    return true;
}

} // namespace TWB::GUI
