#pragma once

#include "service/catalog/version_catalog.h"

#include <QHash>
#include <QJsonObject>

namespace TWB::Service {

class CommandRouter;
class Database;
class Responder;

/// What a storage holds, answered from the catalog: "GetRestoreContent",
/// "GetRestoreContentManualMode" and "GetContentType".
///
/// A folder is listed in parts, folders first and then files, by name: a first part of the option
/// RestoreContentPageSize (500 by default), then parts as large as what the client holds, up to
/// eight times the option. "currentPart" is the number of entries the client already
/// holds; when more remain, the part ends with an entry of "Type" 4, and the client asks again.
/// Listings are of the account's own prefix unless "prefix" names another one.
class ContentCommands final
{
public:
    explicit ContentCommands(Database& database)
        : m_database(database)
    { }
    ContentCommands(const ContentCommands&) = delete;
    ContentCommands& operator=(const ContentCommands&) = delete;

    void registerAt(CommandRouter& router);

    static constexpr int defaultPageSize() { return 500; }

private:
    /// The manual mode lists files with their sizes and flags, and a file's versions below it.
    void restoreContent(const QJsonObject& params, const Responder& respond, bool manualMode);
    void contentType(const QJsonObject& params, const Responder& respond);

    /// Where a listing's last part ended, by account, prefix, folder and kind of listing.
    struct Cursor
    {
        int offset = 0;
        VersionCatalog::ListingKey last;
    };
    /// Listings a few clients browse at once; more than this are forgotten and simply count up again.
    static constexpr int maxCursors = 64;

    Database& m_database;
    QHash<QString, Cursor> m_cursors;
};

} // namespace TWB::Service
