#include "service/commands/content_commands.h"

#include "service/store/account_store.h"
#include "service/catalog/version_catalog.h"
#include "service/commands/command_router.h"
#include "service/store/option_store.h"
#include "service/commands/params.h"
#include "service/commands/responder.h"
#include "service/store/store_time.h"

#include <QJsonArray>

#include <algorithm>
#include <limits>

namespace TWB::Service {

namespace {

constexpr int endOfPart = 4;
// The storage trees read this size as "no size" and show N/A.
constexpr double noSize = 9223372036854775808.0;

QJsonObject entry(const QString& name, const QString& path, int type, bool expandable)
{
    QJsonObject object;
    object.insert(QStringLiteral("Name"), name);
    object.insert(QStringLiteral("Path"), path);
    object.insert(QStringLiteral("IsChangeable"), true);
    object.insert(QStringLiteral("IsExpandable"), expandable);
    object.insert(QStringLiteral("Type"), type);
    return object;
}

void addDetails(QJsonObject& object, const std::optional<CatalogVersion>& version)
{
    object.insert(QStringLiteral("size"), version ? double(version->size) : noSize);
    object.insert(QStringLiteral("original_size"), version ? double(version->originalSize) : noSize);
    object.insert(QStringLiteral("date_modified_utc"), version ? StoreTime::toText(version->modified) : QString());
    object.insert(QStringLiteral("is_encrypted"), version && version->encrypted);
    object.insert(QStringLiteral("is_compressed"), version && version->compressed);
    object.insert(QStringLiteral("is_full"), !version || version->full);
    object.insert(QStringLiteral("bl_revision"), version ? double(version->revision) : 0.0);
    object.insert(QStringLiteral("attribute"), version ? double(version->attribute) : 0.0);
    object.insert(QStringLiteral("delimiter"), QStringLiteral("/"));
}

QJsonObject marker()
{
    QJsonObject object = entry(QString(), QString(), endOfPart, false);
    object.insert(QStringLiteral("IsChangeable"), false);
    return object;
}

} // namespace

void ContentCommands::registerAt(CommandRouter& router)
{
    router.add(QStringLiteral("GetRestoreContent"),
        [this](const QJsonObject& params, const Responder& respond) { restoreContent(params, respond, false); });
    router.add(QStringLiteral("GetRestoreContentManualMode"),
        [this](const QJsonObject& params, const Responder& respond) { restoreContent(params, respond, true); });
    router.add(QStringLiteral("GetContentType"),
        [this](const QJsonObject& params, const Responder& respond) { contentType(params, respond); });
}

void ContentCommands::restoreContent(const QJsonObject& request, const Responder& respond, bool manualMode)
{
    const Params params(request, respond.command());
    const QUuid destination = params.uuid("destination");
    QString path = params.optionalString("path");
    if (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    if (path == QLatin1String("/"))
        path.clear();
    if (!VersionCatalog::isValidPath(path))
        throw params.fault("path", QStringLiteral("is not an absolute path: \"%1\"").arg(path.left(200)));
    const int offset = int(params.optionalInteger("currentPart", 0, 0, std::numeric_limits<int>::max()));
    params.optionalInteger("type", 0, std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    params.optionalString("restoreType");
    const bool foldersOnly = params.optionalBool("dir_only", false);

    const std::optional<Account> account = AccountStore(m_database).find(destination);
    if (!account)
        throw params.fault("destination", QStringLiteral("names no storage account: %1").arg(destination.toString()));
    const int page
        = int(OptionStore(m_database)
                  .number(QLatin1String(OptionStore::RestoreContentPageSize), defaultPageSize(), 1, 1000000));
    // The first part is one page, so that the first rows come at once; later parts grow with what the
    // client holds, up to eight pages, so that a long folder takes a few dozen round trips and view
    // layouts instead of hundreds, and no part keeps the client's thread for long.
    const int pageSize = std::min(std::max(page, offset), page * 8);

    VersionCatalog catalog(m_database);
    QJsonArray entries;
    bool more = false;
    // Without a prefix of its own, a request walks the tree whose top level is the account's
    // prefixes, one for each machine that backs up into it; "/<prefix>/..." lies below one of them.
    QString prefix = params.optionalString("prefix");
    QString shown; // what stands before the catalog path in the entries' paths
    if (prefix.isEmpty()) {
        const QStringList prefixes = catalog.prefixes(destination);
        if (path.isEmpty()) {
            const QStringList page = prefixes.mid(offset, pageSize);
            more = prefixes.size() > offset + pageSize;
            for (const QString& name : page) {
                QJsonObject object = entry(name, QLatin1Char('/') + name, CatalogItem::Folder, true);
                if (manualMode)
                    addDetails(object, std::nullopt);
                entries.append(object);
            }
            if (more)
                entries.append(marker());
            respond.success({{QStringLiteral("contentRestore"), entries}});
            return;
        }
        const VersionCatalog::PrefixedPath split = VersionCatalog::splitPrefix(path, prefixes, account->prefix);
        prefix = split.prefix;
        path = split.path;
        if (split.named)
            shown = QLatin1Char('/') + prefix;
    }

    std::optional<CatalogItem> folder;
    if (!path.isEmpty()) {
        folder = catalog.find(destination, prefix, path);
        if (!folder)
            throw params.fault("path",
                QStringLiteral("names nothing in the catalog of storage account %1 under prefix \"%2\": \"%3\"")
                    .arg(destination.toString(), prefix, path.left(200)));
    }
    if (folder && folder->isFile) {
        // Only the manual mode shows versions; elsewhere a file has nothing below it.
        if (manualMode) {
            QList<CatalogVersion> versions = catalog.versions(folder->id, offset, pageSize + 1);
            more = versions.size() > pageSize;
            if (more)
                versions.removeLast();
            for (const CatalogVersion& version : qAsConst(versions)) {
                const bool block = version.revision > 0 || !version.full;
                QJsonObject object = entry(folder->name, shown + folder->path + QLatin1Char('@') + version.snapshot,
                    block ? CatalogItem::BlockVersion : CatalogItem::FileVersion, false);
                addDetails(object, version);
                entries.append(object);
            }
        }
    } else {
        QList<CatalogItem> items = catalog.children(destination, prefix, path, foldersOnly, offset, pageSize + 1);
        more = items.size() > pageSize;
        if (more)
            items.removeLast();
        for (const CatalogItem& item : qAsConst(items)) {
            const bool expandable = item.isFile ? manualMode : item.hasChildren;
            QJsonObject object = entry(item.name, shown + item.path, item.kind, expandable);
            if (manualMode)
                addDetails(object, item.latest);
            entries.append(object);
        }
    }
    if (more)
        entries.append(marker());
    respond.success({{QStringLiteral("contentRestore"), entries}});
}

void ContentCommands::contentType(const QJsonObject& request, const Responder& respond)
{
    const Params params(request, respond.command());
    const QUuid destination = params.uuid("DestinationId");
    if (!AccountStore(m_database).find(destination))
        throw params.fault("DestinationId", QStringLiteral("names no storage account: %1").arg(destination.toString()));
    // Backups are file-level only: there is no disk image to offer.
    QJsonArray types;
    if (VersionCatalog(m_database).hasContent(destination))
        types.append(QStringLiteral("FileLivel"));
    respond.success({{QStringLiteral("ContentType"), types}});
}

} // namespace TWB::Service
