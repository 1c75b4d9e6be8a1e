#include "restore_wizard/page_glacier.h"

#include "frame/license_restrictions.h"
#include "platform/plan/restore.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace TWB::GUI {

using StorageInfo = TWB::Info::Plan::Restore::StorageInfo;

const char* RestorePlanEditWizard::PageGlacier::FieldRetrievalType = "Field_GlacierRetrievalType";

RestorePlanEditWizard::PageGlacier::PageGlacier(QWidget* parent)
    : PageBase(tr("Glacier Smart Restore"), parent)
    , tier(new QComboBox(this))
    , description(new QLabel(this))
{
    setSubTitle(tr("Specify how files located in Glacier are retrieved before they are restored"));
    tier->setObjectName(QStringLiteral("tier"));
    tier->addItem(tr("Standard"), int(StorageInfo::RetrievalStandard));
    tier->addItem(tr("Bulk"), int(StorageInfo::RetrievalBulk));
    tier->addItem(tr("Expedited"), int(StorageInfo::RetrievalExpedited));
    tier->setMinimumWidth(200);
    description->setObjectName(QStringLiteral("description"));
    description->setWordWrap(true);
    auto* note = new QLabel(tr("Amazon charges for every retrieval. Each run asks Amazon to bring the archived files "
                               "back for one day and then restores them; a run that finds them not yet available "
                               "fails, and can be run again once Amazon has brought them back."),
        this);
    note->setWordWrap(true);

    auto* tierRow = new QHBoxLayout;
    tierRow->addWidget(new QLabel(tr("Retrieval option:"), this));
    tierRow->addWidget(tier);
    tierRow->addStretch(1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(tierRow);
    layout->addWidget(description);
    layout->addSpacing(10);
    layout->addWidget(note);
    layout->addStretch(1);

    registerField(QLatin1String(FieldRetrievalType), tier);
    connect(tier, qOverload<int>(&QComboBox::currentIndexChanged), this, &PageGlacier::describe);
    describe();
}

void RestorePlanEditWizard::PageGlacier::describe()
{
    switch (StorageInfo::Type(tier->currentData().toInt())) {
    case StorageInfo::RetrievalBulk:
        description->setText(tr("The cheapest option: files are usually available within 5 to 12 hours."));
        break;
    case StorageInfo::RetrievalExpedited:
        description->setText(tr("The fastest and most expensive option: files are usually available within 1 to "
                                "5 minutes. Not available for Glacier Deep Archive."));
        break;
    default:
        description->setText(tr("Files are usually available within 3 to 5 hours."));
        break;
    }
}

int RestorePlanEditWizard::PageGlacier::nextId() const
{
    return License::LicenseRestrictions::isNotificationsAvailable() ? 5 : 6;
}

QString RestorePlanEditWizard::PageGlacier::summary()
{
    return QStringLiteral("<tr><td>%1</td><td>%2</td></tr>").arg(tr("Glacier retrieval:"), tier->currentText());
}

bool RestorePlanEditWizard::PageGlacier::initPlan(TWB::Info::Plan::Base* plan)
{
    auto* restore = dynamic_cast<TWB::Info::Plan::Restore*>(plan);
    if (!restore)
        return false;
    restore->storageInfo().setType(
        StorageInfo::Type(tier->itemData(field(QLatin1String(FieldRetrievalType)).toInt()).toInt()));
    return true;
}

bool RestorePlanEditWizard::PageGlacier::fromPlan(TWB::Info::Plan::Base* plan)
{
    const auto* restore = dynamic_cast<const TWB::Info::Plan::Restore*>(plan);
    if (!restore)
        return false;
    // A plan that skips archived files still offers the usual tier, should the user turn them on.
    const int index = tier->findData(int(restore->storageInfo().type()));
    setField(QLatin1String(FieldRetrievalType), index < 0 ? 0 : index);
    return true;
}

} // namespace TWB::GUI
