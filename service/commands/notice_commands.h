#pragma once

#include <QJsonObject>
#include <QObject>
#include <QString>

namespace TWB::Service {

class CommandRouter;
class Database;
class Responder;

/// "GetNoticeSettings", "SetNoticeSettings": the mail server through which runs' results are sent, and
/// whether consoles show desktop notices.
/// "SendTestEmail": one email through it now, answered when the server took or refused it.
class NoticeCommands final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(NoticeCommands)
public:
    NoticeCommands(Database& database, const QString& settingsFile, QObject* parent = nullptr)
        : QObject(parent)
        , m_database(database)
        , m_settingsFile(settingsFile)
    { }

    void registerAt(CommandRouter& router);

private:
    void getSettings(const QJsonObject& params, const Responder& respond) const;
    void setSettings(const QJsonObject& params, const Responder& respond) const;
    void sendTest(const QJsonObject& params, const Responder& respond);

    Database& m_database;
    QString m_settingsFile;
};

} // namespace TWB::Service
