#pragma once

#include <QDateTime>
#include <QList>
#include <QSet>
#include <QSqlQuery>
#include <QString>
#include <QStringList>
#include <QUuid>

#include <memory>
#include <optional>

namespace TWB::Service {

class Database;

/// One backed-up version of a file.
struct CatalogVersion
{
    QString snapshot; // the engine's name for the backup that holds it
    QDateTime backupTime;
    QDateTime modified;
    qint64 size = 0; // on the storage
    qint64 originalSize = 0;
    bool encrypted = false;
    bool compressed = false;
    bool full = true;
    qint64 revision = 0; // block-level revision; 0 for a whole file
    qint64 attribute = 0;
    QUuid plan; // the plan whose repository holds it
    qint64 goneMs = 0; // when its plan's backups stopped holding it; 0 while they do
};

/// A folder or file of the catalog, with its newest version when it is a file.
struct CatalogItem
{
    /// Item types as the storage trees show them.
    enum Kind : int { File = 0, FileVersion = 1, Folder = 2, Share = 5, Volume = 7, BlockVersion = 10 };

    qint64 id = 0;
    QString path;
    QString name;
    int kind = Folder;
    bool isFile = false;
    /// Whether a listing of it would give anything (of folders only, for a listing of folders).
    bool hasChildren = false;
    std::optional<CatalogVersion> latest;
};

/// What each storage holds, by account, prefix and path. Paths are absolute, "/" separated, and
/// every folder on the way to a file is an entry of its own: "/TWB_VOLUMES", "/TWB_VOLUMES/root", ...
///
/// An object keeps its prepared statements and the folders it has seen, so that filling the catalog
/// after a run costs about two statements per file: use one object per transaction.
class VersionCatalog final
{
public:
    explicit VersionCatalog(Database& database);
    ~VersionCatalog();
    VersionCatalog(const VersionCatalog&) = delete;
    VersionCatalog& operator=(const VersionCatalog&) = delete;

    /// A path of the storage tree split into its prefix and the catalog path below it.
    struct PrefixedPath
    {
        QString prefix;
        QString path;
        bool named = false; // the path began with the prefix
    };
    /// The tree lists an account's prefixes first: "/<prefix>/TWB_VOLUMES/..." when the first part
    /// is one of `prefixes`; a path that starts at a volume or share root, or any other, lies under
    /// the account's own prefix.
    static PrefixedPath splitPrefix(const QString& path, const QStringList& prefixes, const QString& ownPrefix);

    /// Whether a path is one the catalog can hold: absolute, no empty, "." or ".." part, no
    /// trailing "/". The root itself is the empty path.
    static bool isValidPath(const QString& path);

    /// Records a version of a file, making the folders on the way. Throws on an invalid path.
    void addVersion(const QUuid& account, const QString& prefix, const QString& path, const CatalogVersion& version);
    /// Records a folder (and those on the way), for folders that hold no file.
    void addFolder(const QUuid& account, const QString& prefix, const QString& path);

    std::optional<CatalogItem> find(const QUuid& account, const QString& prefix, const QString& path);
    /// Where a listing of a folder stands: its order is folders first, then by name.
    struct ListingKey
    {
        bool isFile = false;
        QString name;
    };
    /// Entries of a folder ("" for the top), folders first, then by name, from `offset` on, or right
    /// after `after` when given, which costs nothing for the entries before it.
    QList<CatalogItem> children(const QUuid& account, const QString& prefix, const QString& folder, bool foldersOnly,
        int offset, int limit, const std::optional<ListingKey>& after = std::nullopt);
    /// Versions of a file entry, newest first.
    QList<CatalogVersion> versions(qint64 entryId, int offset, int limit);

    /// The prefixes that hold anything in the account, in order.
    QStringList prefixes(const QUuid& account);
    bool hasContent(const QUuid& account);
    /// Bytes on the storage of every version in the account.
    qint64 usedSize(const QUuid& account);
    void removeAccount(const QUuid& account);

private:
    qint64 ensureEntry(const QUuid& account, const QString& prefix, const QString& path, bool isFile);
    void ensureFolders(const QUuid& account, const QString& prefix, const QString& path);
    QSqlQuery& prepared(std::unique_ptr<QSqlQuery>& query, const QString& statement);

    Database& m_database;
    std::unique_ptr<QSqlQuery> m_upsertEntry;
    std::unique_ptr<QSqlQuery> m_entryId;
    std::unique_ptr<QSqlQuery> m_upsertVersion;
    QSet<QString> m_folders; // account, prefix and path of folders known to be there
};

} // namespace TWB::Service
