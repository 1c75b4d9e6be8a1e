#pragma once

#include "service/store/account_store.h"
#include "service/engine/backend_mapping.h"
#include "service/engine/engine_steps.h"
#include "service/engine/plan_run.h"
#include "service/catalog/snapshot_index.h"

#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QUuid>

#include <functional>

namespace TWB::Service {

class Database;

/// Rebuilds the catalog of one storage account from the repositories the storage holds, under
/// every prefix, so that a new machine can restore what another one backed up. Each repository
/// is opened with the keys the service knows for it, the password the user gave, or the open key
/// of a plan without encryption; one it cannot open keeps its catalog as it was. Each plan's new
/// catalog is read whole before it replaces the old one in one transaction, so that a cancel
/// leaves the old one as it was.
class RepositorySync final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(RepositorySync)
public:
    RepositorySync(Database& database, const RunPlaces& places, const QUuid& account, const QString& password,
        QObject* parent = nullptr);
    ~RepositorySync() override;

    void start();
    void cancel();

Q_SIGNALS:
    void finished();
    void notification(const QString& type, const QJsonObject& data);

private:
    struct Repository
    {
        QString prefix;
        QUuid plan;
    };

    void listRepositories();
    void openNext();
    void tryKey(const Repository& repository, QStringList keys);
    void readSnapshots(const Repository& repository, const QString& password, bool encrypted,
        std::shared_ptr<QList<PendingSnapshot>> pending, int index);
    void runRestic(const Repository& repository, const QString& password, const QStringList& arguments,
        EngineProcess::LineHandler onLine, EngineSteps::Done done);
    void message(const QString& text);
    void end(const QString& text);

    Database& m_database;
    RunPlaces m_places;
    QUuid m_accountId;
    QString m_password;
    Account m_account;
    BackendTarget m_target;
    QList<Repository> m_repositories;
    EngineSteps* m_steps = nullptr;
    bool m_cancelled = false;
    bool m_ended = false;
    int m_opened = 0;
    int m_locked = 0;
};

} // namespace TWB::Service
