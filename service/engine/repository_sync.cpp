#include "service/engine/repository_sync.h"

#include "platform/communication/notification_types.h"
#include "platform/logging/twl_debug.h"
#include "platform/plan/backup.h"
#include "platform/plan/factory.h"
#include "service/engine/engine_process.h"
#include "service/engine/plan_paths.h"
#include "service/store/plan_store.h"
#include "service/engine/repository_key_store.h"
#include "service/engine/restic_output.h"
#include "service/server/service_server.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

namespace TWB::Service {

namespace Type = TWB::Common::Communication::Notification::Type;

RepositorySync::RepositorySync(Database& database, ServiceServer& server, const RunPlaces& places, const QUuid& account,
    const QString& password, QObject* parent)
    : QObject(parent)
    , m_database(database)
    , m_server(server)
    , m_places(places)
    , m_accountId(account)
    , m_password(password)
{ }

RepositorySync::~RepositorySync()
{
    QDir(runFolder()).removeRecursively();
}

QString RepositorySync::runFolder() const
{
    return m_places.dataDir + QStringLiteral("/run/sync-") + m_accountId.toString(QUuid::WithoutBraces);
}

void RepositorySync::message(const QString& text)
{
    TWL::TwlDebug("TWB").info() << "Synchronising" << m_accountId.toString() << ":" << text;
    m_server.broadcast(QLatin1String(Type::RepositorySyncMessage1),
        {{QStringLiteral("id"), m_accountId.toString()}, {QStringLiteral("message"), text}});
}

void RepositorySync::end(const QString& text)
{
    if (m_ended)
        return;
    m_ended = true;
    message(text);
    QDir(runFolder()).removeRecursively();
    m_server.broadcast(QLatin1String(Type::StorageSyncFinished),
        {{QStringLiteral("id"), m_accountId.toString()}, {QStringLiteral("message"), text}});
    // What the account holds and its prefixes may have changed.
    m_server.broadcast(QLatin1String(Type::StorageUpdated), {{QStringLiteral("id"), m_accountId.toString()}});
    Q_EMIT finished();
}

void RepositorySync::cancel()
{
    m_cancelled = true;
    if (m_process)
        m_process->interrupt(5000);
}

void RepositorySync::run(const EngineCall& call, std::function<void(const QByteArray&)> onLine,
    std::function<void(int, const QString&, const QByteArray&)> done, const QByteArray& input)
{
    auto* process = new EngineProcess(this);
    m_process = process;
    connect(process, &EngineProcess::ended, this, [this, process, done](int exitCode) {
        const QString error = process->errorText();
        const QByteArray output = process->output();
        process->deleteLater();
        if (m_ended)
            return;
        if (m_cancelled) {
            end(QStringLiteral("Synchronisation cancelled"));
            return;
        }
        done(exitCode, error, output);
    });
    process->begin(call, onLine, input);
}

EngineCall RepositorySync::restic(
    const Repository& repository, const QString& password, const QStringList& arguments) const
{
    return EngineCall::restic(m_target,
        m_target.repository(repository.prefix, repository.plan.toString(QUuid::WithoutBraces)), password,
        m_places.cacheDir(), m_places.rcloneConfig(), arguments);
}

void RepositorySync::start()
{
    m_server.broadcast(QLatin1String(Type::StorageSyncStarted), {{QStringLiteral("id"), m_accountId.toString()}});
    const std::optional<Account> account = AccountStore(m_database).find(m_accountId);
    if (!account) {
        end(QStringLiteral("The storage account does not exist"));
        return;
    }
    m_account = *account;
    m_target = BackendMapping::map(m_account, StorageOptions(), runFolder());
    if (!m_target.error.isEmpty()) {
        end(m_target.error);
        return;
    }
    QDir().mkpath(m_places.cacheDir());
    QFile config(m_places.rcloneConfig());
    if (!config.exists() && config.open(QIODevice::WriteOnly))
        config.close();
    QDir().mkpath(runFolder());
    QFile::setPermissions(runFolder(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    for (auto it = m_target.files.constBegin(); it != m_target.files.constEnd(); ++it) {
        QFile file(runFolder() + QLatin1Char('/') + it.key());
        if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner)
            || file.write(it.value()) != it.value().size()) {
            end(QStringLiteral("Cannot write %1").arg(file.fileName()));
            return;
        }
    }
    m_obscure = m_target.obscured;
    message(QStringLiteral("Looking for backups in the storage"));
    obscureNext();
}

void RepositorySync::obscureNext()
{
    if (m_obscure.isEmpty()) {
        listRepositories();
        return;
    }
    const QString key = m_obscure.takeFirst();
    EngineCall obscure;
    obscure.program = EngineCall::rcloneProgram();
    obscure.environment = EngineCall::cleanEnvironment();
    obscure.arguments = QStringList {QStringLiteral("obscure"), QStringLiteral("-")};
    run(
        obscure, nullptr,
        [this, key](int exitCode, const QString& error, const QByteArray& output) {
            const QString obscured = QString::fromUtf8(output).trimmed();
            if (exitCode != 0 || obscured.isEmpty()) {
                end(QStringLiteral("rclone cannot prepare the storage's password: %1").arg(error));
                return;
            }
            m_target.rcloneEnvironment.insert(key, obscured);
            obscureNext();
        },
        m_target.rcloneEnvironment.value(key).toUtf8());
}

void RepositorySync::listRepositories()
{
    // A repository is "<prefix>/<plan id>/config" below the account's root.
    QString root = m_target.rcloneRoot;
    const QStringList arguments = {QStringLiteral("lsjson"), QStringLiteral("--recursive"),
        QStringLiteral("--max-depth"), QStringLiteral("3"), QStringLiteral("--files-only"), root};
    run(EngineCall::rclone(m_target, m_places.rcloneConfig(), arguments), nullptr,
        [this](int exitCode, const QString& error, const QByteArray& output) {
            if (exitCode != 0) {
                end(QStringLiteral("Cannot list the storage: %1").arg(ResticOutput::reason(error, exitCode)));
                return;
            }
            const QJsonArray entries = QJsonDocument::fromJson(output).array();
            for (const QJsonValue& value : entries) {
                const QStringList parts
                    = value.toObject().value(QStringLiteral("Path")).toString().split(QLatin1Char('/'));
                if (parts.size() != 3 || parts.at(2) != QLatin1String("config"))
                    continue;
                const QUuid plan(parts.at(1));
                if (plan.isNull())
                    continue;
                m_repositories.append({parts.at(0), plan});
            }
            message(QStringLiteral("Found %1 backups").arg(m_repositories.size()));
            openNext();
        });
}

void RepositorySync::openNext()
{
    if (m_repositories.isEmpty()) {
        end(m_locked == 0 ? QStringLiteral("Synchronised %1 backups").arg(m_opened)
                          : QStringLiteral("Synchronised %1 backups; %2 did not open with any key the service knows")
                                .arg(m_opened)
                                .arg(m_locked));
        return;
    }
    const Repository repository = m_repositories.takeFirst();
    QStringList keys;
    try {
        if (const std::optional<RepositoryKeyStore::Key> known = RepositoryKeyStore(m_database).key(repository.plan))
            keys << known->text;
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
    }
    if (!m_password.isEmpty())
        keys << m_password;
    if (const std::optional<PlanRecord> record = PlanStore(m_database).find(repository.plan)) {
        std::unique_ptr<TWB::Info::Plan::Base> plan(TWB::Info::Plan::Factory::create(record->xml));
        if (const auto* backup = dynamic_cast<const TWB::Info::Plan::Backup*>(plan.get())) {
            if (backup->encryption().isEnabled() && !backup->encryption().password().isEmpty())
                keys << backup->encryption().password();
        }
    }
    keys << RepositoryKeyStore::openKey(repository.plan);
    keys.removeDuplicates();
    tryKey(repository, keys);
}

void RepositorySync::tryKey(const Repository& repository, QStringList keys)
{
    if (keys.isEmpty()) {
        ++m_locked;
        message(QStringLiteral("The backup %1/%2 does not open with any key the service knows")
                    .arg(repository.prefix, repository.plan.toString()));
        openNext();
        return;
    }
    const QString password = keys.takeFirst();
    run(restic(repository, password, {QStringLiteral("snapshots"), QStringLiteral("--json")}), nullptr,
        [this, repository, password, keys](int exitCode, const QString& error, const QByteArray& output) {
            if (exitCode != 0 && ResticOutput::wrongPassword(error)) {
                tryKey(repository, keys);
                return;
            }
            if (exitCode != 0) {
                ++m_locked;
                message(QStringLiteral("Cannot read the backup %1/%2: %3")
                            .arg(repository.prefix, repository.plan.toString(), ResticOutput::reason(error, exitCode)));
                openNext();
                return;
            }
            const std::optional<RepositoryKeyStore::Key> known = RepositoryKeyStore(m_database).key(repository.plan);
            if (!known || known->text != password)
                RepositoryKeyStore(m_database).setKey(repository.plan, {password, false});
            QList<SnapshotRecord> snapshots;
            const QJsonArray list = QJsonDocument::fromJson(output).array();
            for (const QJsonValue& value : list) {
                const QJsonObject object = value.toObject();
                SnapshotRecord snapshot;
                snapshot.plan = repository.plan;
                snapshot.id = object.value(QStringLiteral("id")).toString();
                snapshot.timeMs
                    = ResticOutput::time(object.value(QStringLiteral("time")).toString()).toMSecsSinceEpoch();
                snapshot.account = m_account.id;
                snapshot.prefix = repository.prefix;
                QStringList shares;
                const QJsonArray tags = object.value(QStringLiteral("tags")).toArray();
                for (const QJsonValue& tag : tags) {
                    if (tag.toString().startsWith(QLatin1String("share=")))
                        shares << tag.toString().mid(6);
                }
                snapshot.shares = PlanPaths::decodeShares(shares);
                snapshots.append(snapshot);
            }
            std::sort(snapshots.begin(), snapshots.end(),
                [](const SnapshotRecord& a, const SnapshotRecord& b) { return a.timeMs < b.timeMs; });
            ++m_opened;
            SnapshotIndex(m_database).dropPlan(repository.plan);
            readSnapshots(repository, password, snapshots, 0, std::make_shared<QHash<QString, SnapshotFile>>());
        });
}

void RepositorySync::readSnapshots(const Repository& repository, const QString& password,
    const QList<SnapshotRecord>& snapshots, int index, std::shared_ptr<QHash<QString, SnapshotFile>> previous)
{
    if (index >= snapshots.size()) {
        openNext();
        return;
    }
    message(QStringLiteral("Reading the backup %1/%2: snapshot %3 of %4")
                .arg(repository.prefix, repository.plan.toString())
                .arg(index + 1)
                .arg(snapshots.size()));
    const SnapshotRecord snapshot = snapshots.at(index);
    auto files = std::make_shared<QList<SnapshotFile>>();
    auto first = std::make_shared<bool>(true);
    run(
        restic(repository, password, {QStringLiteral("ls"), QStringLiteral("--json"), snapshot.id}),
        [files, first](const QByteArray& line) {
            if (*first) {
                *first = false;
                return;
            }
            const QJsonObject node = ResticOutput::object(line);
            const QString type = node.value(QStringLiteral("type")).toString();
            if (type != QLatin1String("file") && type != QLatin1String("symlink"))
                return;
            files->append(
                {node.value(QStringLiteral("path")).toString(), qint64(node.value(QStringLiteral("size")).toDouble()),
                    ResticOutput::time(node.value(QStringLiteral("mtime")).toString())});
        },
        [this, repository, password, snapshots, index, previous, files, snapshot](
            int exitCode, const QString& error, const QByteArray&) {
            if (exitCode != 0) {
                message(QStringLiteral("Cannot read a snapshot of %1/%2: %3")
                            .arg(repository.prefix, repository.plan.toString(), ResticOutput::reason(error, exitCode)));
                readSnapshots(repository, password, snapshots, index + 1, previous);
                return;
            }
            // What changed since the snapshot before is what that backup brought.
            QHash<QString, qint64> changed;
            QStringList held;
            auto next = std::make_shared<QHash<QString, SnapshotFile>>();
            for (const SnapshotFile& file : qAsConst(*files)) {
                const auto before = previous->constFind(file.path);
                if (before == previous->constEnd() || before->size != file.size || before->modified != file.modified)
                    changed.insert(file.path, file.size);
                next->insert(file.path, file);
                held << file.path;
            }
            try {
                SnapshotIndex(m_database).record(snapshot, held, changed, true, [next](const QString& path) {
                    return next->value(path);
                });
            } catch (const QString& text) {
                message(QStringLiteral("The catalog could not take a snapshot: %1").arg(text));
            }
            readSnapshots(repository, password, snapshots, index + 1, next);
        });
}

} // namespace TWB::Service
