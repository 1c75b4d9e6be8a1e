#pragma once

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <QUuid>

#include <functional>
#include <optional>

namespace TWB::Service {

class Database;

/// One backup of a plan, as its repository names it.
struct SnapshotRecord
{
    QUuid plan;
    QString id; // restic's full snapshot id
    qint64 timeMs = 0;
    QUuid account;
    QString prefix;
    QMap<QString, QString> shares; // network shares the backup saw, name to mount point
};

/// A file a backup holds, by its real path.
struct SnapshotFile
{
    QString path;
    qint64 size = 0;
    QDateTime modified;
};

/// Where one restore item is read from.
struct RestoreSource
{
    SnapshotRecord snapshot;
    QString realPath; // the path in the snapshot
    qint64 bytes = 0; // what the files below it that the snapshot holds add up to
};

/// The catalog as backups and retention change it: the snapshots of each plan's repository, and
/// the versions of files each snapshot brought. A version records the plan whose repository holds
/// it and until when that plan's backups held it, which is what lets retention drop a snapshot
/// without losing the versions that later snapshots still hold, and lets a restore find the
/// snapshot to read for a time.
class SnapshotIndex final
{
public:
    explicit SnapshotIndex(Database& database)
        : m_database(database)
    { }

    /// The versions the plan's newest backup holds, by catalog path. A backup asks for them while
    /// restic runs, so that recording the snapshot afterwards has less to do.
    using Live = QHash<QString, qint64>;
    Live liveVersions(const QUuid& plan);

    /// Gives the size and time of a file that gets a version.
    using Describe = std::function<SnapshotFile(const QString& path)>;

    /// Records a backup in one transaction: the snapshot, a version of each file that changed
    /// (`changed`: real path to bytes it added to the storage) or that the catalog lacks, and the
    /// end of the versions this backup no longer holds. `held` are the real paths of every file the
    /// snapshot holds; only those that get a version are described. Returns the versions added.
    int record(const SnapshotRecord& snapshot, const QStringList& held, const QHash<QString, qint64>& changed,
        bool compressed, const Describe& describe, std::optional<Live> live = std::nullopt);

    /// The plan's snapshots, oldest first.
    QList<SnapshotRecord> snapshots(const QUuid& plan);
    std::optional<SnapshotRecord> snapshot(const QUuid& plan, const QString& id);

    /// After retention removed snapshots: moves each of their versions to the oldest remaining
    /// snapshot that still holds it, drops the others, and removes what no longer has a version.
    void forget(const QUuid& plan, const QSet<QString>& removed);
    /// Forgets everything of the plan's repository, before it is read again from the storage.
    void dropPlan(const QUuid& plan);

    /// The snapshot to restore a catalog path from: for "<file>@<snapshot>" that version; for a
    /// point in time, the newest snapshot at or before it; else the newest snapshot that holds the
    /// path. Empty, with the reason in `why`, when no backup holds it.
    std::optional<RestoreSource> sourceFor(const QUuid& account, const QString& prefix, const QString& catalogPath,
        std::optional<qint64> pointInTimeMs, QString* why);

private:
    void pruneEntries();

    Database& m_database;
};

} // namespace TWB::Service
