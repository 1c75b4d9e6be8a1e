#pragma once

#include "service/store/account_store.h"
#include "service/engine/backend_mapping.h"
#include "service/engine/backup_selection.h"
#include "service/engine/plan_run.h"
#include "service/engine/repository_key_store.h"
#include "service/catalog/snapshot_index.h"

#include <QHash>
#include <QSet>

namespace TWB::Info::Plan {
class BackupFile;
}

namespace TWB::Service {

/// A backup run: the pre-action, restic's backup into the plan's repository (made on the first
/// run), the new snapshot into the catalog, retention, and the post-action.
class BackupRun final : public PlanRun
{
    Q_OBJECT
    Q_DISABLE_COPY(BackupRun)
public:
    BackupRun(Database& database, const RunPlaces& places, std::shared_ptr<const TWB::Info::Plan::Base> plan,
        QObject* parent = nullptr);

protected:
    void begin(bool forceFull) override;
    void onStopped() override;
    bool finishingStep() const override;

private:
    const TWB::Info::Plan::BackupFile& files() const;
    void resticCall(const QStringList& arguments, const QString& password, EngineProcess::LineHandler onLine, Done done,
        bool always = false);

    void runPreAction();
    void prepareSelection();
    void openRepository();
    void rotateKey(const QString& from);
    void initRepository();
    void addOpenKey(std::function<void()> next);
    void removeOpenKeys(std::function<void()> next);
    void backup();
    void onBackupLine(const QByteArray& line);
    void onBackupEnded(int exitCode, const QString& error);
    /// Size and time of a file restic has read, and whether they are surely those restic saw.
    void describeNow(const QString& path);
    void recordSnapshot();
    void fillCatalog();
    void applyRetention();
    void reconcile(std::function<void()> next);
    void finishStopped();
    void end(int state, const QString& message);
    void runPostAction(int state, const QString& message);
    void runAction(
        const QString& program, const QString& arguments, int state, std::function<void(bool, QString)> done);
    bool writeList(const QString& name, const QStringList& lines);

    Account m_account;
    BackendTarget m_target;
    BackupSelection m_selection;
    QString m_repository;
    QString m_password; // what opens the repository now
    QString m_desired; // what the plan wants it to be
    bool m_generated = false;
    bool m_keyKnown = false; // the store holds the key that opens the repository
    bool m_force = false;
    bool m_triedInit = false;
    bool m_triedOpenKey = false;

    // What restic reported.
    QHash<QString, qint64> m_stored; // new and changed files: bytes added to the storage
    QSet<QString> m_uploaded; // files restic stored anew or changed
    qint64 m_uploadedBytes = 0; // their sizes on disk
    QStringList m_held; // every file the snapshot holds
    QString m_shortId;
    qint64 m_dataAdded = 0;
    qint64 m_filesProcessed = 0;
    qint64 m_bytesProcessed = 0;
    SnapshotRecord m_snapshot;
    SnapshotIndex::Live m_live; // what the plan's last backup held, read while restic runs
    QHash<QString, SnapshotFile> m_described; // what the catalog records of the files that get a version
    QSet<QString> m_unsure; // files whose status changed since the run began
    qint64 m_startMs = 0; // when the run began
    bool m_retentionTouched = false; // snapshots may have been forgotten: the catalog must follow
    bool m_finishing = false; // a step that a stop lets finish runs
    bool m_matchedFirst = false; // the catalog was matched before this run's retention
};

} // namespace TWB::Service
