#include "restore_wizard/page_restore_type.h"

#include "platform/communication/command_calls.h"
#include "platform/communication/command_params.h"
#include "platform/logging/twl_debug.h"
#include "platform/plan/restore_file.h"
#include "widgets/radio_button.h"
#include "wizard/page_cloud.h"

#include <QJsonArray>
#include <QVBoxLayout>
#include <QVariant>
#include <QWizard>

namespace TWB::GUI {

using namespace TWB::Common::Communication;

namespace {

bool checkedButton(const RadioButton* button)
{
    return button && button->isChecked();
}

} // namespace

RestorePlanEditWizard::PageRestoreType::PageRestoreType(QWidget* parent)
    : PageBase(tr("Select Restore type"), parent)
{
    setSubTitle(tr("Select type of data for restore"));
    fileLevel = new RadioButton(
        QStringLiteral("<table><tr><td>%1</td></tr><tr><td>%2</td></tr></table>")
            .arg(tr("Restore file and folders"), tr("Select this item if you want restore files and folders")),
        this);
    // Enabled only once the storage says it holds files.
    fileLevel->setEnabled(false);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(fileLevel);
    layout->addStretch(1);
}

void RestorePlanEditWizard::PageRestoreType::initializePage()
{
    PageBase::initializePage();
    try {
        ICommand* command = newCommand(QStringLiteral("GetContentType"), this, &PageRestoreType::onGetContentTypeResult,
            managerGoneText(), QStringLiteral("Commnunication command don't registrate"));
        setCommandParams(*command,
            {{QStringLiteral("DestinationId"), field(QLatin1String(PlanWizardBase::PageCloud::FieldId)).toString()}});
        command->exec();
        setEnabled(false);
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        setEnabled(false);
    }
}

void RestorePlanEditWizard::PageRestoreType::onGetContentTypeResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    try {
        const QJsonArray kinds = replyData(*command).value(QStringLiteral("ContentType")).toArray();
        for (const QJsonValue& kind : kinds) {
            // "DiskImage" and "SystemFileFull" are known kinds this product does not restore.
            if (kind.toString() == QLatin1String("FileLivel"))
                fileLevel->setEnabled(true);
        }
        setEnabled(true);
        for (RadioButton* button : {fileLevel, physicalDisk, virtualDisk, virtualMachine, fullSystemFile}) {
            if (button && button->isEnabled()) {
                button->setChecked(true);
                break;
            }
        }
    } catch (const QString& text) {
        logCommandFailure(*command, text);
    }
    Q_EMIT completeChanged();
    command->deleteLater();
}

int RestorePlanEditWizard::PageRestoreType::nextId() const
{
    return 1;
}

bool RestorePlanEditWizard::PageRestoreType::isComplete() const
{
    if (!isEnabled())
        return false;
    return checkedButton(fileLevel) || checkedButton(physicalDisk) || checkedButton(virtualDisk)
        || checkedButton(virtualMachine) || checkedButton(fullSystemFile);
}

bool RestorePlanEditWizard::PageRestoreType::validatePage()
{
    QWizard* owner = wizard();
    quint8 kind = PlanTypeFile;
    if (checkedButton(fileLevel))
        kind = PlanTypeFile;
    else if (checkedButton(fullSystemFile))
        kind = PlanTypeFullFile;
    else if (checkedButton(physicalDisk))
        kind = PlanTypeDiskImagePhysicalDisk;
    else if (checkedButton(virtualDisk))
        kind = PlanTypeDiskImageVirtualDisk;
    else if (checkedButton(virtualMachine))
        kind = PlanTypeDiskImageVirtualMachine;
    if (owner)
        owner->setProperty(PropertyRestorePlanType, QVariant::fromValue(kind));
    if (!checkedButton(fileLevel))
        return false;
    // Every page starts from the defaults of a file restore.
    TWB::Info::Plan::RestoreFile plan;
    if (owner) {
        const auto ids = owner->pageIds();
        for (int id : ids) {
            if (auto* page = qobject_cast<PageBase*>(owner->page(id)))
                page->fromPlan(&plan);
        }
    }
    return true;
}

bool RestorePlanEditWizard::PageRestoreType::initPlan(TWB::Info::Plan::Base*)
{
    return true;
}

bool RestorePlanEditWizard::PageRestoreType::fromPlan(TWB::Info::Plan::Base*)
{
    return true;
}

QString RestorePlanEditWizard::PageRestoreType::summary()
{
    static const char* const names[]
        = {QT_TR_NOOP("File Level"), QT_TR_NOOP("Full System File Backup"), QT_TR_NOOP("Image Base to Physical Disk"),
            QT_TR_NOOP("Image Base to Virtual Disk"), QT_TR_NOOP("Image Base to Virtual Machine")};
    const int kind = wizard() ? wizard()->property(PropertyRestorePlanType).toInt() : -1;
    const QString text = kind >= 0 && kind < 5 ? tr(names[kind]) : QString();
    return QStringLiteral("<tr><td>%1:</td><td>%2</td></tr>").arg(tr("Type"), text);
}

} // namespace TWB::GUI
