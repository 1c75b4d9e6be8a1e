#pragma once

#include "service/store/account_store.h"
#include "service/engine/backend_mapping.h"
#include "service/engine/plan_run.h"
#include "service/catalog/snapshot_index.h"

#include <QPointer>

namespace TWB::Info::Plan {
class RestoreFile;
}

namespace TWB::Service {

class StagedRestore;

/// A restore run: for each item the snapshot that holds it (the newest one, or the newest at the
/// point in time), restic's restore of those items into a staging folder on the destination's file
/// system, and then the move of each file into place by the plan's overwrite rule.
class RestoreRun final : public PlanRun
{
    Q_OBJECT
    Q_DISABLE_COPY(RestoreRun)
public:
    RestoreRun(Database& database, const RunPlaces& places, std::shared_ptr<const TWB::Info::Plan::Base> plan,
        QObject* parent = nullptr);
    ~RestoreRun() override;

protected:
    void begin(bool forceFull) override;
    void onStopped() override;
    void interruptStep() override;

private:
    /// The items that one snapshot gives.
    struct Group
    {
        SnapshotRecord snapshot;
        QStringList paths; // real paths in the snapshot
        qint64 bytes = 0;
    };

    const TWB::Info::Plan::RestoreFile& files() const;
    QString placeOf(const QString& stagedPath) const;
    bool prepareStaging(QString* error);
    /// Asks Amazon to bring archived objects of the next repository back, when the plan wants them.
    void retrieveArchived(QList<QPair<QString, QUuid>> repositories);
    void restoreNext();
    void restoreGroup(QStringList passwords, bool userPassword);
    void measureStaging();
    void place();
    void end(int state, const QString& message);

    Account m_account;
    BackendTarget m_target;
    QList<Group> m_groups;
    QString m_staging;
    QString m_destination; // empty for the original location
    qint64 m_totalBytes = 0;
    qint64 m_stagedBefore = 0; // bytes of groups done
    bool m_measuring = false;
    int m_measureTicks = 0;
    QTimer m_measureTimer;
    QPointer<StagedRestore> m_placing;
};

} // namespace TWB::Service
