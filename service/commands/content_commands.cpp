#include "service/commands/content_commands.h"

#include "service/store/account_store.h"
#include "service/catalog/version_catalog.h"
#include "service/commands/command_router.h"
#include "service/commands/json_writer.h"
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

// One entry of a listing; the manual mode adds a file's sizes, flags and version details.
class EntryWriter final
{
public:
    explicit EntryWriter(bool details)
        : m_details(details)
    {
        m_out.reserve(4096);
        m_out.append("{\"contentRestore\":[");
    }

    void add(const QString& name, const QString& path, int type, bool expandable,
        const std::optional<CatalogVersion>& version)
    {
        if (m_count++ > 0)
            m_out.append(',');
        JsonWriter json(m_out);
        json.beginObject();
        json.key("Name");
        json.string(name);
        json.key("Path");
        json.string(path);
        json.key("IsChangeable");
        json.boolean(type != endOfPart);
        json.key("IsExpandable");
        json.boolean(expandable);
        json.key("Type");
        json.number(qint64(type));
        if (m_details) {
            json.key("size");
            json.real(version ? double(version->size) : noSize);
            json.key("original_size");
            json.real(version ? double(version->originalSize) : noSize);
            json.key("date_modified_utc");
            json.string(version ? StoreTime::toText(version->modified) : QString());
            json.key("is_encrypted");
            json.boolean(version && version->encrypted);
            json.key("is_compressed");
            json.boolean(version && version->compressed);
            json.key("is_full");
            json.boolean(!version || version->full);
            json.key("bl_revision");
            json.real(version ? double(version->revision) : 0.0);
            json.key("attribute");
            json.real(version ? double(version->attribute) : 0.0);
            json.key("delimiter");
            json.plain("/");
        }
        json.endObject();
    }
    /// The entry that tells the client to ask for the next part.
    void addMarker() { add(QString(), QString(), endOfPart, false, std::nullopt); }

    QByteArray finish()
    {
        m_out.append("]}");
        return m_out;
    }

private:
    QByteArray m_out;
    int m_count = 0;
    bool m_details;
};

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
    EntryWriter entries(manualMode);
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
            for (const QString& name : page)
                entries.add(name, QLatin1Char('/') + name, CatalogItem::Folder, true, std::nullopt);
            if (more)
                entries.addMarker();
            respond.successJson(entries.finish());
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
                entries.add(folder->name, shown + folder->path + QLatin1Char('@') + version.snapshot,
                    block ? CatalogItem::BlockVersion : CatalogItem::FileVersion, false, version);
            }
        }
    } else {
        // A client asks for the parts of a folder one after another, each from where the last ended:
        // that entry is kept, so that the next part starts at it instead of counting up to it.
        const QString listing
            = QStringLiteral("%1|%2|%3|%4")
                  .arg(destination.toString(), prefix, path, foldersOnly ? QStringLiteral("d") : QString());
        const auto cursor = m_cursors.constFind(listing);
        std::optional<VersionCatalog::ListingKey> after;
        if (cursor != m_cursors.constEnd() && cursor->offset == offset && offset > 0)
            after = cursor->last;
        QList<CatalogItem> items
            = catalog.children(destination, prefix, path, foldersOnly, offset, pageSize + 1, after);
        more = items.size() > pageSize;
        if (more)
            items.removeLast();
        for (const CatalogItem& item : qAsConst(items)) {
            const bool expandable = item.isFile ? manualMode : item.hasChildren;
            entries.add(item.name, shown + item.path, item.kind, expandable, item.latest);
        }
        if (more) {
            if (m_cursors.size() >= maxCursors)
                m_cursors.clear();
            m_cursors.insert(listing, {offset + int(items.size()), {items.last().isFile, items.last().name}});
        } else {
            m_cursors.remove(listing);
        }
    }
    if (more)
        entries.addMarker();
    respond.successJson(entries.finish());
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
