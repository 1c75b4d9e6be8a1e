#pragma once

#include <QJsonObject>
#include <QString>

namespace TWB::Service {

class CommandRouter;
class Responder;

/// "GetSettings": what the licence and managed pages need to know of this installation.
/// "GetProductOptions", "SetProductOptions": the product's options that runs follow, in `optionsFile`.
class SettingsCommands final
{
public:
    explicit SettingsCommands(const QString& optionsFile)
        : m_optionsFile(optionsFile)
    { }

    void registerAt(CommandRouter& router);

private:
    static void getSettings(const QJsonObject& params, const Responder& respond);
    void getProductOptions(const QJsonObject& params, const Responder& respond) const;
    void setProductOptions(const QJsonObject& params, const Responder& respond) const;

    QString m_optionsFile;
};

} // namespace TWB::Service
