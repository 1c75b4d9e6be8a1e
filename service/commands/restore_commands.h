#pragma once

#include "service/engine/run_places.h"

#include <QJsonObject>

namespace TWB::Service {

class CommandRouter;
class Database;
class Responder;

/// What the restore wizard asks before a plan is saved: whether the backups behind its items are
/// protected by a password, and whether a password opens them.
class RestoreCommands final
{
public:
    RestoreCommands(Database& database, const RunPlaces& places);
    RestoreCommands(const RestoreCommands&) = delete;
    RestoreCommands& operator=(const RestoreCommands&) = delete;

    void registerAt(CommandRouter& router);

private:
    void checkPassword(const QJsonObject& params, const Responder& respond);

    Database& m_database;
    RunPlaces m_places;
};

} // namespace TWB::Service
