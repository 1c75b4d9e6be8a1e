#include "service/engine/password_check.h"

#include "platform/logging/twl_debug.h"
#include "service/catalog/snapshot_index.h"
#include "service/catalog/version_catalog.h"
#include "service/engine/engine_steps.h"
#include "service/engine/repository_key_store.h"
#include "service/engine/restic_output.h"
#include "service/store/account_store.h"
#include "service/store/database.h"

#include <QSqlQuery>

namespace TWB::Service {

PasswordCheck::PasswordCheck(Database& database, const RunPlaces& places, const QUuid& account,
    const QStringList& items, const QString& password, QObject* parent)
    : QObject(parent)
    , m_database(database)
    , m_places(places)
    , m_account(account)
    , m_items(items)
    , m_password(password)
{
    const QString folder
        = m_places.runRoot() + QStringLiteral("/check-") + QUuid::createUuid().toString(QUuid::Id128).left(12);
    m_steps = new EngineSteps(m_places, folder, this);
}

PasswordCheck::~PasswordCheck()
{
    m_steps->removeFolder();
}

bool PasswordCheck::protectedByUser(const QUuid& plan)
{
    // The catalog marks a version encrypted only when a password of the user's protects its backup.
    QSqlQuery query = m_database.prepare(
        QStringLiteral("SELECT 1 FROM catalog_versions WHERE plan_id = ? AND is_encrypted = 1 LIMIT 1"));
    query.bindValue(0, plan.toString());
    m_database.exec(query);
    return query.next();
}

bool PasswordCheck::knowsPassword(const QUuid& plan)
{
    std::optional<RepositoryKeyStore::Key> kept;
    try {
        kept = RepositoryKeyStore(m_database).key(plan);
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
    }
    const QStringList keys = EngineSteps::passwords(m_database, plan);
    for (const QString& key : keys) {
        if (key != RepositoryKeyStore::openKey(plan) && !(kept && kept->generated && kept->text == key))
            return true;
    }
    return false;
}

void PasswordCheck::start()
{
    const std::optional<Account> account = AccountStore(m_database).find(m_account);
    if (!account) {
        m_result.error = QStringLiteral("The storage account does not exist");
        end();
        return;
    }
    // The repositories the restore would read: those of the newest backups behind the items.
    const QStringList prefixes = VersionCatalog(m_database).prefixes(m_account);
    SnapshotIndex catalog(m_database);
    QList<Repository> repositories;
    for (const QString& item : qAsConst(m_items)) {
        const VersionCatalog::PrefixedPath path = VersionCatalog::splitPrefix(item, prefixes, account->prefix);
        const std::optional<RestoreSource> source
            = catalog.sourceFor(m_account, path.prefix, path.path, std::nullopt, nullptr);
        if (!source)
            continue;
        const bool seen = std::any_of(repositories.cbegin(), repositories.cend(),
            [&source](const Repository& r) { return r.plan == source->snapshot.plan; });
        if (!seen)
            repositories.append({source->snapshot.prefix, source->snapshot.plan});
    }
    m_result.passwordKnown = true;
    for (const Repository& repository : qAsConst(repositories)) {
        if (!protectedByUser(repository.plan))
            continue;
        m_result.encrypted = true;
        m_result.passwordKnown = m_result.passwordKnown && knowsPassword(repository.plan);
        m_locked.append(repository);
    }
    if (!m_result.encrypted)
        m_result.passwordKnown = false;
    if (m_locked.isEmpty() || m_password.isEmpty()) {
        m_result.opens = m_locked.isEmpty();
        end();
        return;
    }

    m_target = BackendMapping::map(*account, StorageOptions(), m_steps->folder());
    QString error;
    if (!m_target.error.isEmpty() || !m_steps->makeFolder(&error) || !m_steps->writeFiles(m_target, &error)) {
        m_result.error = m_target.error.isEmpty() ? error : m_target.error;
        end();
        return;
    }
    m_steps->obscureSecrets(m_target, [this](const QString& error) {
        if (!error.isEmpty()) {
            m_result.error = error;
            end();
            return;
        }
        m_result.opens = true;
        openNext();
    });
}

void PasswordCheck::openNext()
{
    if (m_locked.isEmpty()) {
        end();
        return;
    }
    const Repository repository = m_locked.takeFirst();
    // "cat config" reads the smallest thing a key opens: the check costs restic's key derivation alone.
    m_steps->runRestic(m_target, m_target.repository(repository.prefix, repository.plan.toString(QUuid::WithoutBraces)),
        m_password, {QStringLiteral("cat"), QStringLiteral("config")}, nullptr,
        [this](int exitCode, const QString& error, const QByteArray&) {
            if (exitCode == 0) {
                openNext();
                return;
            }
            if (ResticOutput::wrongPassword(error)) {
                m_result.opens = false;
                end();
                return;
            }
            m_result.error = QStringLiteral("Cannot read the backup: %1").arg(ResticOutput::reason(error, exitCode));
            end();
        });
}

void PasswordCheck::end()
{
    if (m_ended)
        return;
    m_ended = true;
    m_steps->removeFolder();
    Q_EMIT finished(m_result);
}

} // namespace TWB::Service
