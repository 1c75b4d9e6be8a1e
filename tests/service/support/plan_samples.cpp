#include "plan_samples.h"

#include "platform/plan/backup_file.h"
#include "platform/plan/restore_file.h"

namespace TWB::Test {

using namespace TWB::Info::Plan;

QString PlanSamples::backup(const QUuid& id, const QString& name, const QUuid& storage, const QStringList& items,
    const QTime& at, const QString& password)
{
    BackupFile plan;
    plan.setId(id);
    plan.setName(name);
    plan.setStorage(storage);
    plan.setItems(items);
    if (at.isValid()) {
        plan.schedule().setEnable(true);
        plan.schedule().setType(Schedule::Recurring);
        plan.schedule().setFrequencyType(Schedule::Daily);
        plan.schedule().setOccursAt(at);
    }
    if (!password.isEmpty()) {
        plan.encryption().setEnabled(true);
        plan.encryption().setPassword(password);
    }
    return plan.toXml();
}

QString PlanSamples::restore(const QUuid& id, const QString& name, const QUuid& storage)
{
    RestoreFile plan;
    plan.setId(id);
    plan.setName(name);
    plan.setStorage(storage);
    plan.setRestoreItems({QStringLiteral("/TWB_VOLUMES/root/home")});
    plan.setDestination(QStringLiteral("/tmp/restored"));
    return plan.toXml();
}

} // namespace TWB::Test
