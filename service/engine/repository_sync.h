#pragma once

#include "service/store/account_store.h"
#include "service/engine/backend_mapping.h"
#include "service/engine/plan_run.h"
#include "service/catalog/snapshot_index.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QUuid>

#include <functional>

namespace TWB::Service {

class Database;
class EngineProcess;
class ServiceServer;

/// Rebuilds the catalog of one storage account from the repositories the storage holds, under
/// every prefix, so that a new machine can restore what another one backed up. Each repository
/// is opened with the keys the service knows for it, the password the user gave, or the open key
/// of a plan without encryption; one it cannot open keeps its catalog as it was.
class RepositorySync final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(RepositorySync)
public:
    RepositorySync(Database& database, ServiceServer& server, const RunPlaces& places, const QUuid& account,
        const QString& password, QObject* parent = nullptr);
    ~RepositorySync() override;

    void start();
    void cancel();

Q_SIGNALS:
    void finished();

private:
    struct Repository
    {
        QString prefix;
        QUuid plan;
    };

    void obscureNext();
    void listRepositories();
    void openNext();
    void tryKey(const Repository& repository, QStringList keys);
    void readSnapshots(const Repository& repository, const QString& password, const QList<SnapshotRecord>& snapshots,
        int index, std::shared_ptr<QHash<QString, SnapshotFile>> previous);
    void run(const EngineCall& call, std::function<void(const QByteArray&)> onLine,
        std::function<void(int, const QString&, const QByteArray&)> done, const QByteArray& input = {});
    void message(const QString& text);
    void end(const QString& text);
    QString runFolder() const;
    EngineCall restic(const Repository& repository, const QString& password, const QStringList& arguments) const;

    Database& m_database;
    ServiceServer& m_server;
    RunPlaces m_places;
    QUuid m_accountId;
    QString m_password;
    Account m_account;
    BackendTarget m_target;
    QStringList m_obscure;
    QList<Repository> m_repositories;
    QPointer<EngineProcess> m_process;
    bool m_cancelled = false;
    bool m_ended = false;
    int m_opened = 0;
    int m_locked = 0;
};

} // namespace TWB::Service
