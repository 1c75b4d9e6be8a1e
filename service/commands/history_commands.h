#pragma once

#include <QJsonObject>

namespace TWB::Service {

class CommandRouter;
class Database;
class Responder;

/// The history of runs and of file operations: "HistoryListByPlan" and "HistoryListByFiles".
/// Newest first, pages of pageSize() entries, the next page starting below the last id held.
class HistoryCommands final
{
public:
    explicit HistoryCommands(Database& database)
        : m_database(database)
    { }
    HistoryCommands(const HistoryCommands&) = delete;
    HistoryCommands& operator=(const HistoryCommands&) = delete;

    void registerAt(CommandRouter& router);

    /// Entries of one page. The console's export asks for the next page only after a full one.
    static constexpr int pageSize() { return 200; }

private:
    void listByPlan(const QJsonObject& params, const Responder& respond);
    void listByFiles(const QJsonObject& params, const Responder& respond);

    Database& m_database;
};

} // namespace TWB::Service
