#pragma once

#include <QJsonObject>

namespace TWB::Service {

class CommandRouter;
class Responder;

/// "GetSettings": what the licence and managed pages need to know of this installation.
class SettingsCommands final
{
public:
    void registerAt(CommandRouter& router);

private:
    static void getSettings(const QJsonObject& params, const Responder& respond);
};

} // namespace TWB::Service
