#pragma once

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

    Database& m_database;
};

} // namespace TWB::Service
