#include "service/engine/repository_sync.h"

#include "platform/communication/notification_types.h"
#include "platform/logging/twl_debug.h"
#include "platform/plan/backup.h"
#include "platform/plan/factory.h"
#include "service/engine/engine_process.h"
#include "service/catalog/plan_paths.h"
#include "service/store/plan_store.h"
#include "service/engine/repository_key_store.h"
#include "service/engine/restic_output.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

namespace TWB::Service {

namespace Type = TWB::Common::Communication::Notification::Type;

RepositorySync::RepositorySync(
    Database& database, const RunPlaces& places, const QUuid& account, const QString& password, QObject* parent)
    : QObject(parent)
    , m_database(database)
    , m_places(places)
    , m_accountId(account)
    , m_password(password)
{
    m_steps = new EngineSteps(m_places, m_places.syncFolder(m_accountId), this);
    m_steps->setGate([this] {
        if (m_ended)
            return false;
        if (m_cancelled) {
            end(QStringLiteral("Synchronisation cancelled"));
            return false;
        }
        return true;
    });
}

RepositorySync::~RepositorySync() = default;

void RepositorySync::message(const QString& text)
{
    TWL::TwlDebug("TWB").info() << "Synchronising" << m_accountId.toString() << ":" << text;
    Q_EMIT notification(QLatin1String(Type::RepositorySyncMessage1),
        {{QStringLiteral("id"), m_accountId.toString()}, {QStringLiteral("message"), text}});
}

void RepositorySync::end(const QString& text)
{
    if (m_ended)
        return;
    m_ended = true;
    message(text);
    m_steps->removeFolder();
    Q_EMIT notification(QLatin1String(Type::StorageSyncFinished),
        {{QStringLiteral("id"), m_accountId.toString()}, {QStringLiteral("message"), text}});
    // What the account holds and its prefixes may have changed.
    Q_EMIT notification(QLatin1String(Type::StorageUpdated), {{QStringLiteral("id"), m_accountId.toString()}});
    Q_EMIT finished();
}

void RepositorySync::cancel()
{
    m_cancelled = true;
    if (m_steps->isRunning())
        m_steps->interrupt(5000);
    else
        end(QStringLiteral("Synchronisation cancelled"));
}

void RepositorySync::runRestic(const Repository& repository, const QString& password, const QStringList& arguments,
    EngineProcess::LineHandler onLine, EngineSteps::Done done)
{
    m_steps->runRestic(m_target, m_target.repository(repository.prefix, repository.plan.toString(QUuid::WithoutBraces)),
        password, arguments, std::move(onLine), std::move(done));
}

void RepositorySync::start()
{
    Q_EMIT notification(QLatin1String(Type::StorageSyncStarted), {{QStringLiteral("id"), m_accountId.toString()}});
    const std::optional<Account> account = AccountStore(m_database).find(m_accountId);
    if (!account) {
        end(QStringLiteral("The storage account does not exist"));
        return;
    }
    m_account = *account;
    QString error;
    if (!m_steps->makeFolder(&error)) {
        end(error);
        return;
    }
    m_target = BackendMapping::map(m_account, StorageOptions(), m_steps->folder());
    if (!m_target.error.isEmpty()) {
        end(m_target.error);
        return;
    }
    if (!m_steps->writeFiles(m_target, &error)) {
        end(error);
        return;
    }
    message(QStringLiteral("Looking for backups in the storage"));
    m_steps->obscureSecrets(m_target, [this](const QString& error) {
        if (!error.isEmpty())
            end(error);
        else
            listRepositories();
    });
}

void RepositorySync::listRepositories()
{
    // A repository is "<prefix>/<plan id>/config" below the account's root.
    QString root = m_target.rcloneRoot;
    const QStringList arguments = {QStringLiteral("lsjson"), QStringLiteral("--recursive"),
        QStringLiteral("--max-depth"), QStringLiteral("3"), QStringLiteral("--files-only"), root};
    m_steps->run(m_steps->rclone(m_target, arguments), nullptr,
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
    tryKey(repository, EngineSteps::passwords(m_database, repository.plan, m_password));
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
    runRestic(repository, password, {QStringLiteral("snapshots"), QStringLiteral("--json")}, nullptr,
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
            // A repository that opens with a key the service made, or with the key that follows
            // from the plan's id, is not protected by a password of the user's.
            const bool encrypted = password != RepositoryKeyStore::openKey(repository.plan)
                && !(known && known->generated && known->text == password);
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
            auto pending = std::make_shared<QList<PendingSnapshot>>();
            for (const SnapshotRecord& snapshot : qAsConst(snapshots))
                pending->append({snapshot, {}, {}, {}});
            readSnapshots(repository, password, encrypted, pending, 0);
        });
}

void RepositorySync::readSnapshots(const Repository& repository, const QString& password, bool encrypted,
    std::shared_ptr<QList<PendingSnapshot>> pending, int index)
{
    if (index >= pending->size()) {
        // The new catalog of the plan was read aside; it takes the old one's place at once.
        try {
            SnapshotIndex(m_database).rebuild(repository.plan, *pending, true, encrypted);
        } catch (const QString& text) {
            message(QStringLiteral("The catalog could not take the backup %1/%2: %3")
                        .arg(repository.prefix, repository.plan.toString(), text));
        }
        openNext();
        return;
    }
    message(QStringLiteral("Reading the backup %1/%2: snapshot %3 of %4")
                .arg(repository.prefix, repository.plan.toString())
                .arg(index + 1)
                .arg(pending->size()));
    auto files = std::make_shared<QList<SnapshotFile>>();
    auto first = std::make_shared<bool>(true);
    runRestic(
        repository, password,
        {QStringLiteral("ls"), QStringLiteral("--json"), QStringLiteral("--no-lock"), pending->at(index).snapshot.id},
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
        [this, repository, password, encrypted, pending, index, files](
            int exitCode, const QString& error, const QByteArray&) {
            if (exitCode != 0) {
                message(QStringLiteral("Cannot read a snapshot of %1/%2: %3")
                            .arg(repository.prefix, repository.plan.toString(), ResticOutput::reason(error, exitCode)));
                pending->removeAt(index);
                readSnapshots(repository, password, encrypted, pending, index);
                return;
            }
            // What changed since the snapshot before is what that backup brought.
            static const QHash<QString, SnapshotFile> none;
            const QHash<QString, SnapshotFile>& previous = index > 0 ? pending->at(index - 1).files : none;
            PendingSnapshot& current = (*pending)[index];
            for (const SnapshotFile& file : qAsConst(*files)) {
                const auto before = previous.constFind(file.path);
                if (before == previous.constEnd() || before->size != file.size || before->modified != file.modified)
                    current.changed.insert(file.path, file.size);
                current.files.insert(file.path, file);
                current.held << file.path;
            }
            // The snapshot before needs only what it brought from now on.
            if (index > 0) {
                QHash<QString, SnapshotFile>& kept = (*pending)[index - 1].files;
                for (auto it = kept.begin(); it != kept.end();) {
                    if ((*pending)[index - 1].changed.contains(it.key()))
                        ++it;
                    else
                        it = kept.erase(it);
                }
            }
            readSnapshots(repository, password, encrypted, pending, index + 1);
        });
}

} // namespace TWB::Service
