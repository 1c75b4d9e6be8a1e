#pragma once

#include <QJsonObject>
#include <QString>

namespace TWB::Service {

class CommandRouter;
class Responder;

/// "GetSettings": what the licence and managed pages need to know of this installation.
/// "GetProductOptions", "SetProductOptions": the product's options that runs follow, in `optionsFile`;
/// the log options take effect at once.
class SettingsCommands final
{
public:
    explicit SettingsCommands(const QString& optionsFile)
        : m_optionsFile(optionsFile)
    { }

    void registerAt(CommandRouter& router);
    /// Points the service's log at "LogPath" and its clean-up at "Logs Rotate TimeOut". A folder that
    /// cannot be used is logged, and the log stays where it was.
    static void applyLogOptions(const QString& optionsFile);

private:
    static void getSettings(const QJsonObject& params, const Responder& respond);
    void getProductOptions(const QJsonObject& params, const Responder& respond) const;
    void setProductOptions(const QJsonObject& params, const Responder& respond) const;

    QString m_optionsFile;
};

} // namespace TWB::Service
