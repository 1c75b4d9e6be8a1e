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

/// A plan's retention, per file, at one moment. A version may go when every rule that is on lets
/// it go; the last version of a file that exists stays when `keepLast` says so, and the last
/// version of a file deleted locally stays until `deletedBeforeMs`, when there is such a rule.
struct FileRetention
{
    int keepVersions = 0; // versions of each file that stay; 0: no such rule
    qint64 olderThanMs = 0; // versions older than this may go; 0: no such rule
    bool ageFromModification = false; // age by the file's modification time, else by its backup
    bool keepLast = true; // the newest version of a file that exists always stays
    qint64 deletedBeforeMs = 0; // files deleted locally before this go whole; 0: they stay

    bool keepsEverything() const { return keepVersions <= 0 && olderThanMs <= 0 && deletedBeforeMs <= 0; }
};

/// A backup read back from its repository, waiting to be recorded.
struct PendingSnapshot
{
    SnapshotRecord snapshot;
    QStringList held;
    QHash<QString, qint64> changed;
    QHash<QString, SnapshotFile> files;
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
    /// `encrypted` says whether a password of the user's protects the repository.
    int record(const SnapshotRecord& snapshot, const QStringList& held, const QHash<QString, qint64>& changed,
        bool compressed, bool encrypted, const Describe& describe, std::optional<Live> live = std::nullopt);
    /// Replaces everything the catalog holds of the plan's repository by the snapshots given,
    /// oldest first, in one transaction: the catalog is either the old one or the new one.
    void rebuild(const QUuid& plan, const QList<PendingSnapshot>& snapshots, bool compressed, bool encrypted);

    /// The plan's snapshots, oldest first.
    QList<SnapshotRecord> snapshots(const QUuid& plan);
    std::optional<SnapshotRecord> snapshot(const QUuid& plan, const QString& id);

    /// After retention removed snapshots: moves each of their versions to the oldest remaining
    /// snapshot that still holds it, drops the others, and removes what no longer has a version.
    void forget(const QUuid& plan, const QSet<QString>& removed);
    /// The snapshots retention may forget: those of which every file version they hold may go
    /// under the rules. The newest snapshot always stays.
    QStringList forgettable(const QUuid& plan, const FileRetention& rules);
    /// Makes the catalog follow the repository: the plan's snapshots whose id is not among
    /// `present` (full or short ids) are forgotten. Returns how many.
    int keepOnly(const QUuid& plan, const QSet<QString>& present);
    /// Forgets everything of the plan's repository, before it is read again from the storage.
    void dropPlan(const QUuid& plan);

    /// The snapshot to restore a catalog path from: for "<file>@<snapshot>" that version; for a
    /// point in time, the newest snapshot at or before it; else the newest snapshot that holds the
    /// path. Empty, with the reason in `why`, when no backup holds it.
    std::optional<RestoreSource> sourceFor(const QUuid& account, const QString& prefix, const QString& catalogPath,
        std::optional<qint64> pointInTimeMs, QString* why);

private:
    int recordInto(const SnapshotRecord& snapshot, const QStringList& held, const QHash<QString, qint64>& changed,
        bool compressed, bool encrypted, const Describe& describe, const std::optional<Live>& live);
    void dropInto(const QUuid& plan);
    void pruneEntries();

    Database& m_database;
};

} // namespace TWB::Service
