#pragma once

#include "service/engine/backend_mapping.h"
#include "service/engine/run_places.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUuid>

namespace TWB::Service {

class Database;
class EngineSteps;

/// Whether a password opens the backups that a restore would read: the repositories behind the
/// restore items, as the catalog names them. Only those a password of the user's protects are
/// opened, one restic call each, so that a check of an open backup costs nothing.
class PasswordCheck final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(PasswordCheck)
public:
    struct Result
    {
        bool encrypted = false; // a password of the user's protects one of the backups
        bool passwordKnown = false; // the service holds a password for every such backup
        bool opens = false; // the password given opens every such backup
        QString error; // why the check could not be made; the rest means nothing then
    };

    /// Without a password only `encrypted` and `passwordKnown` are found, from the store.
    PasswordCheck(Database& database, const RunPlaces& places, const QUuid& account, const QStringList& items,
        const QString& password, QObject* parent = nullptr);
    ~PasswordCheck() override;

    void start();

Q_SIGNALS:
    void finished(const TWB::Service::PasswordCheck::Result& result);

private:
    struct Repository
    {
        QString prefix;
        QUuid plan;
    };

    bool protectedByUser(const QUuid& plan);
    bool knowsPassword(const QUuid& plan);
    void openNext();
    void end();

    Database& m_database;
    RunPlaces m_places;
    QUuid m_account;
    QStringList m_items;
    QString m_password;
    BackendTarget m_target;
    QList<Repository> m_locked; // repositories still to open
    EngineSteps* m_steps = nullptr; // owned by parent-child
    Result m_result;
    bool m_ended = false;
};

} // namespace TWB::Service
