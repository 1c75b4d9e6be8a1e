#include "service/engine/backup_run.h"

#include "platform/logging/twl_debug.h"
#include "platform/plan/backup_file.h"
#include "service/store/database.h"
#include "service/catalog/plan_paths.h"
#include "service/engine/restic_output.h"
#include "service/engine/retention_rules.h"
#include "service/engine/run_state.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocale>
#include <QPointer>
#include <QThreadPool>

#include <sys/stat.h>

namespace TWB::Service {

using TWB::Info::Plan::Backup;
using TWB::Info::Plan::BackupFile;

namespace {

QString describeError(const QJsonValue& error)
{
    if (error.isString())
        return error.toString();
    const QJsonObject object = error.toObject();
    const QString op = object.value(QStringLiteral("Op")).toString();
    const QJsonValue err = object.value(QStringLiteral("Err"));
    QString reason;
    if (err.isDouble())
        reason = qt_error_string(err.toInt());
    else if (err.isString())
        reason = err.toString();
    else if (err.isObject())
        reason = describeError(err);
    if (reason.isEmpty())
        reason = QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
    return op.isEmpty() ? reason : QStringLiteral("%1 failed: %2").arg(op, reason);
}

QString byteText(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat);
}

} // namespace

BackupRun::BackupRun(
    Database& database, const RunPlaces& places, std::shared_ptr<const TWB::Info::Plan::Base> plan, QObject* parent)
    : PlanRun(database, places, std::move(plan), parent)
{
    m_result.operation = 0;
}

const BackupFile& BackupRun::files() const
{
    return static_cast<const BackupFile&>(*m_plan);
}

void BackupRun::resticCall(
    const QStringList& arguments, const QString& password, EngineProcess::LineHandler onLine, Done done, bool always)
{
    callRestic(m_target, m_repository, password, arguments, std::move(onLine), std::move(done), always);
}

bool BackupRun::writeList(const QString& name, const QStringList& lines)
{
    QFile file(runFolder() + QLatin1Char('/') + name);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    for (const QString& line : lines) {
        file.write(line.toUtf8());
        file.write("\n");
    }
    return file.error() == QFileDevice::NoError;
}

void BackupRun::begin(bool forceFull)
{
    if (!dynamic_cast<const BackupFile*>(m_plan.get())) {
        complete(RunState::Fail, QStringLiteral("Disk image backups are not available in this version"));
        return;
    }
    const auto& plan = files();
    const std::optional<Account> account = AccountStore(m_database).find(plan.storage());
    if (!account) {
        complete(RunState::Fail, QStringLiteral("The plan's storage account does not exist"));
        return;
    }
    m_account = *account;
    StorageOptions options;
    options.amazonStorageClass = plan.storageInfo().storageClassAmazonS3();
    options.serverSideEncryption = plan.storageInfo().useSSE();
    options.transferAcceleration = plan.storageInfo().useS3Accelerated();
    options.azureAccessTier = plan.storageInfo().storageClassAzureBlob();
    m_target = BackendMapping::map(m_account, options, runFolder());
    if (!m_target.error.isEmpty()) {
        complete(RunState::Fail, m_target.error);
        return;
    }
    QString error;
    if (!writeFiles(m_target, &error)) {
        complete(RunState::Fail, error);
        return;
    }
    m_repository = m_target.repository(m_account.prefix, planId().toString(QUuid::WithoutBraces));
    // A plan that asked for every file to be sent again after a change of its encryption.
    const QDateTime since = plan.reBackupModifiedSince();
    const QList<SnapshotRecord> snapshots = SnapshotIndex(m_database).snapshots(planId());
    m_force = forceFull
        || (since.isValid() && (snapshots.isEmpty() || snapshots.last().timeMs < since.toMSecsSinceEpoch()));
    runPreAction();
}

void BackupRun::runPreAction()
{
    const auto& pre = files().actions().pre();
    if (!pre.isEnabled() || pre.program().trimmed().isEmpty()) {
        obscureSecrets(m_target, [this] { prepareSelection(); });
        return;
    }
    setStatus(RunState::RunningPreBackupAction);
    runAction(pre.program(), pre.arguments(), RunState::Running, [this, &pre](bool ok, const QString& why) {
        if (!ok && pre.terminateOnFailure()) {
            end(RunState::Fail, QStringLiteral("The pre-action failed, so the backup did not run: %1").arg(why));
            return;
        }
        if (!ok)
            warn(QStringLiteral("The pre-action failed: %1").arg(why));
        obscureSecrets(m_target, [this] { prepareSelection(); });
    });
}

void BackupRun::runAction(
    const QString& program, const QString& arguments, int state, std::function<void(bool, QString)> done)
{
    EngineCall action;
    action.program = program.trimmed();
    action.arguments = QProcess::splitCommand(arguments);
    action.environment = QProcessEnvironment::systemEnvironment();
    // What the action may want to know of the run it belongs to.
    action.environment.insert(QStringLiteral("TWB_PLAN_ID"), planId().toString());
    action.environment.insert(QStringLiteral("TWB_PLAN_NAME"), m_plan->name());
    action.environment.insert(QStringLiteral("TWB_RUN_STATE"), QString::number(state));
    call(
        action, [](const QByteArray&) {},
        [done](int exitCode, const QString& error) {
            if (exitCode == 0)
                done(true, QString());
            else if (exitCode < 0)
                done(false, error.isEmpty() ? QStringLiteral("it did not start or it crashed") : error);
            else
                done(false,
                    QStringLiteral("it ended with exit code %1%2")
                        .arg(exitCode)
                        .arg(error.isEmpty() ? QString() : QStringLiteral(": ") + error));
        });
}

void BackupRun::prepareSelection()
{
    setStatus(RunState::Preparing);
    m_selection = BackupSelection::of(files(), PlanPaths());
    for (const QString& missing : qAsConst(m_selection.missing))
        addOperation(FileOperationRecord::Failed, QString(), 0, QDateTime(), missing);
    if (m_selection.items.isEmpty()) {
        end(RunState::Fail,
            m_selection.missing.isEmpty() ? QStringLiteral("The plan names nothing to back up")
                                          : QStringLiteral("Nothing the plan names exists: %1")
                                                .arg(m_selection.missing.join(QStringLiteral("; "))));
        return;
    }
    if (!m_selection.listFiles) {
        openRepository();
        return;
    }
    // Include masks: the files are listed on a worker thread and come back to the event loop.
    QPointer<BackupRun> self(this);
    const BackupSelection selection = m_selection;
    QThreadPool::globalInstance()->start([self, selection] {
        const QStringList found = selection.walk();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, found] {
                if (!self || self->isFinished())
                    return;
                if (self->isStopping()) {
                    self->onStopped();
                    return;
                }
                if (found.isEmpty()) {
                    self->end(RunState::Success, QStringLiteral("No file matches the plan's filter"));
                    return;
                }
                self->m_selection.items = found;
                self->openRepository();
            },
            Qt::QueuedConnection);
    });
}

void BackupRun::openRepository()
{
    RepositoryKeyStore keys(m_database);
    std::optional<RepositoryKeyStore::Key> stored;
    try {
        stored = keys.key(planId());
    } catch (const QString& text) {
        end(RunState::Fail, text);
        return;
    }
    const Backup::Encyption& encryption = files().encryption();
    if (encryption.isEnabled()) {
        if (encryption.password().isEmpty()) {
            end(RunState::Fail, QStringLiteral("The plan asks for encryption but has no password"));
            return;
        }
        m_desired = encryption.password();
        m_generated = false;
    } else {
        m_generated = true;
        m_desired = stored && stored->generated ? stored->text : RepositoryKeyStore::generate();
    }
    m_keyKnown = stored.has_value();
    // A file-system repository is seen on the disk: no need to fail a backup to learn it is missing.
    if (m_account.type == 1 && !QFileInfo::exists(m_repository + QStringLiteral("/config"))) {
        initRepository();
        return;
    }
    if (stored && stored->text != m_desired) {
        rotateKey(stored->text);
        return;
    }
    m_password = m_desired;
    backup();
}

void BackupRun::rotateKey(const QString& from)
{
    setStatus(RunState::Preparing);
    if (!writeList(QStringLiteral("new-key"), {m_desired})) {
        end(RunState::Fail, QStringLiteral("Cannot write into the run folder %1").arg(runFolder()));
        return;
    }
    const QStringList arguments = {QStringLiteral("key"), QStringLiteral("passwd"),
        QStringLiteral("--new-password-file"), runFolder() + QStringLiteral("/new-key")};
    resticCall(arguments, from, nullptr, [this, from](int exitCode, const QString& error) {
        QFile::remove(runFolder() + QStringLiteral("/new-key"));
        if (exitCode != 0 && ResticOutput::noRepository(error)) {
            initRepository();
            return;
        }
        if (exitCode != 0) {
            end(RunState::Fail,
                ResticOutput::wrongPassword(error)
                    ? QStringLiteral("The plan's repository no longer opens with the password it was given last; "
                                     "its password cannot be changed")
                    : QStringLiteral("Cannot change the password of the plan's repository: %1")
                          .arg(ResticOutput::reason(error, exitCode)));
            return;
        }
        m_password = m_desired;
        RepositoryKeyStore(m_database).setKey(planId(), {m_desired, m_generated});
        m_keyKnown = true;
        // A repository that lost or gained a password of the user's loses or gains its open key.
        if (m_generated)
            addOpenKey([this] { backup(); });
        else
            removeOpenKeys([this] { backup(); });
    });
}

void BackupRun::initRepository()
{
    m_triedInit = true;
    setStatus(RunState::Preparing);
    m_password = m_desired;
    const QStringList arguments = {QStringLiteral("init"), QStringLiteral("--repository-version"), QStringLiteral("2")};
    resticCall(arguments, m_password, nullptr, [this](int exitCode, const QString& error) {
        if (exitCode != 0) {
            end(RunState::Fail,
                QStringLiteral("Cannot create the plan's repository: %1").arg(ResticOutput::reason(error, exitCode)));
            return;
        }
        RepositoryKeyStore(m_database).setKey(planId(), {m_password, m_generated});
        m_keyKnown = true;
        if (m_generated)
            addOpenKey([this] { backup(); });
        else
            backup();
    });
}

void BackupRun::addOpenKey(std::function<void()> next)
{
    if (!writeList(QStringLiteral("open-key"), {RepositoryKeyStore::openKey(planId())})) {
        end(RunState::Fail, QStringLiteral("Cannot write into the run folder %1").arg(runFolder()));
        return;
    }
    const QStringList arguments = {QStringLiteral("key"), QStringLiteral("add"), QStringLiteral("--user"),
        RepositoryKeyStore::openKeyUser(), QStringLiteral("--host"), planId().toString(QUuid::WithoutBraces),
        QStringLiteral("--new-password-file"), runFolder() + QStringLiteral("/open-key")};
    resticCall(arguments, m_password, nullptr, [this, next](int exitCode, const QString& error) {
        QFile::remove(runFolder() + QStringLiteral("/open-key"));
        if (exitCode != 0)
            warn(QStringLiteral("Another machine will not open this plan's backups: %1")
                     .arg(ResticOutput::reason(error, exitCode)));
        next();
    });
}

void BackupRun::removeOpenKeys(std::function<void()> next)
{
    const QStringList arguments = {QStringLiteral("key"), QStringLiteral("list"), QStringLiteral("--json")};
    auto listed = std::make_shared<QByteArray>();
    resticCall(
        arguments, m_password, [listed](const QByteArray& line) { *listed += line; },
        [this, listed, next](int exitCode, const QString& error) {
            if (exitCode != 0) {
                warn(QStringLiteral("Cannot list the keys of the repository: %1")
                         .arg(ResticOutput::reason(error, exitCode)));
                next();
                return;
            }
            const QJsonArray keys = QJsonDocument::fromJson(*listed).array();
            for (const QJsonValue& key : keys) {
                const QJsonObject object = key.toObject();
                if (object.value(QStringLiteral("userName")).toString() != RepositoryKeyStore::openKeyUser())
                    continue;
                const QString id = object.value(QStringLiteral("id")).toString();
                resticCall({QStringLiteral("key"), QStringLiteral("remove"), id}, m_password, nullptr,
                    [this, next](int removed, const QString& why) {
                        if (removed != 0)
                            warn(QStringLiteral("The repository keeps a key that opens it without the plan's "
                                                "password: %1")
                                     .arg(ResticOutput::reason(why, removed)));
                        // One open key is all the service ever adds; look again for any other.
                        removeOpenKeys(next);
                    });
                return;
            }
            next();
        });
}

void BackupRun::backup()
{
    setStatus(RunState::Running);
    const QString itemsFile = QStringLiteral("items");
    const QString excludesFile = QStringLiteral("excludes");
    if (!writeList(itemsFile, m_selection.items) || !writeList(excludesFile, m_selection.excludes)) {
        end(RunState::Fail, QStringLiteral("Cannot write into the run folder %1").arg(runFolder()));
        return;
    }
    QStringList arguments = {QStringLiteral("backup"), QStringLiteral("--json"), QStringLiteral("-vv"),
        QStringLiteral("--compression"), files().useCompression() ? QStringLiteral("auto") : QStringLiteral("off"),
        QStringLiteral("--files-from-verbatim"), runFolder() + QLatin1Char('/') + itemsFile,
        QStringLiteral("--exclude-file"), runFolder() + QLatin1Char('/') + excludesFile};
    arguments << m_selection.options();
    if (m_force)
        arguments << QStringLiteral("--force");
    // The snapshot's time is the run's own, to the second, so that the catalog knows it without
    // asking restic again.
    // restic takes whole seconds: a backup that starts in the second of the plan's last one is
    // dated a second later, so that a point in time still tells the two apart.
    QDateTime start = m_result.start.isValid() ? m_result.start : QDateTime::currentDateTimeUtc();
    const QList<SnapshotRecord> earlier = SnapshotIndex(m_database).snapshots(planId());
    if (!earlier.isEmpty() && earlier.last().timeMs / 1000 >= start.toMSecsSinceEpoch() / 1000)
        start = QDateTime::fromMSecsSinceEpoch(earlier.last().timeMs + 1000, Qt::UTC);
    m_snapshot.timeMs = start.toMSecsSinceEpoch() / 1000 * 1000;
    arguments << QStringLiteral("--time") << start.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    m_snapshot.shares = PlanPaths().sharesOf(m_selection.items);
    const QStringList shares = PlanPaths::encodeShares(m_snapshot.shares);
    for (const QString& share : shares)
        arguments << QStringLiteral("--tag") << QStringLiteral("share=") + share;
    m_stored.clear();
    m_uploaded.clear();
    m_uploadedBytes = 0;
    m_held.clear();
    m_described.clear();
    m_unsure.clear();
    m_startMs = m_result.start.isValid() ? m_result.start.toMSecsSinceEpoch() : 0;
    resticCall(
        arguments, m_password, [this](const QByteArray& line) { onBackupLine(line); },
        [this](int exitCode, const QString& error) { onBackupEnded(exitCode, error); });
    try {
        m_live = SnapshotIndex(m_database).liveVersions(planId());
    } catch (const QString& text) {
        warn(QStringLiteral("The catalog cannot be read: %1").arg(text));
    }
}

void BackupRun::onBackupLine(const QByteArray& line)
{
    const QJsonObject message = ResticOutput::object(line);
    const QString type = message.value(QStringLiteral("message_type")).toString();
    if (type == QLatin1String("status")) {
        const QJsonArray current = message.value(QStringLiteral("current_files")).toArray();
        setProgress(message.value(QStringLiteral("percent_done")).toDouble() * 100,
            qint64(message.value(QStringLiteral("bytes_done")).toDouble()),
            qint64(message.value(QStringLiteral("files_done")).toDouble()),
            current.isEmpty() ? QString() : current.first().toString());
    } else if (type == QLatin1String("verbose_status")) {
        const QString action = message.value(QStringLiteral("action")).toString();
        const QString item = message.value(QStringLiteral("item")).toString();
        if (item.isEmpty() || item.endsWith(QLatin1Char('/')))
            return;
        if (action == QLatin1String("new") || action == QLatin1String("modified")
            || action == QLatin1String("changed")) {
            m_stored.insert(item, qint64(message.value(QStringLiteral("data_size_in_repo")).toDouble()));
            m_uploaded.insert(item);
            m_held << item;
            // Described now, while restic goes on, rather than all at once after it.
            describeNow(item);
        } else if (action == QLatin1String("unchanged")) {
            m_held << item;
        }
    } else if (type == QLatin1String("error")) {
        const QString item = message.value(QStringLiteral("item")).toString();
        addOperation(
            FileOperationRecord::Failed, item, 0, QDateTime(), describeError(message.value(QStringLiteral("error"))));
    } else if (type == QLatin1String("summary")) {
        m_shortId = message.value(QStringLiteral("snapshot_id")).toString();
        m_dataAdded = qint64(message.value(QStringLiteral("data_added")).toDouble());
        m_filesProcessed = qint64(message.value(QStringLiteral("total_files_processed")).toDouble());
        m_bytesProcessed = qint64(message.value(QStringLiteral("total_bytes_processed")).toDouble());
    }
}

void BackupRun::onBackupEnded(int exitCode, const QString& error)
{
    // 3: a snapshot was made, but some files could not be read; they are in the failed operations.
    if ((exitCode == 0 || exitCode == 3) && !m_shortId.isEmpty()) {
        if (!m_keyKnown) {
            RepositoryKeyStore(m_database).setKey(planId(), {m_password, m_generated && m_password == m_desired});
            m_keyKnown = true;
        }
        recordSnapshot();
        return;
    }
    if (ResticOutput::noRepository(error) && !m_triedInit) {
        initRepository();
        return;
    }
    if (ResticOutput::wrongPassword(error)) {
        // A repository made by this plan elsewhere, or before the service lost its store, still
        // has its open key when the plan never had a password.
        if (m_generated && !m_keyKnown && !m_triedOpenKey) {
            m_triedOpenKey = true;
            m_password = RepositoryKeyStore::openKey(planId());
            backup();
            return;
        }
        end(RunState::Fail,
            m_generated ? QStringLiteral("The plan's repository does not open with the key the service keeps for it")
                        : QStringLiteral("The plan's repository does not open with the plan's encryption password"));
        return;
    }
    end(RunState::Fail, QStringLiteral("The backup failed: %1").arg(ResticOutput::reason(error, exitCode)));
}

void BackupRun::describeNow(const QString& path)
{
    // restic reports a file once it has read it. A file whose status has not changed since the run
    // began still shows what restic read; one that changed since is listed from the snapshot.
    // One stat call, and times in UTC: thousands of files pass here, and a local time costs a look
    // at the time zone each.
    struct stat info;
    if (::stat(QFile::encodeName(path).constData(), &info) != 0) {
        m_described.insert(path, {path, 0, QDateTime()});
        m_unsure.insert(path);
        return;
    }
    const auto ms = [](const struct timespec& time) { return qint64(time.tv_sec) * 1000 + time.tv_nsec / 1000000; };
    const bool steady = ms(info.st_ctim) < m_startMs;
    m_described.insert(path, {path, qint64(info.st_size), QDateTime::fromMSecsSinceEpoch(ms(info.st_mtim), Qt::UTC)});
    if (!steady)
        m_unsure.insert(path);
}

void BackupRun::recordSnapshot()
{
    setStatus(RunState::UpdatingRepository);
    m_snapshot.id = m_shortId;
    m_snapshot.plan = planId();
    m_snapshot.account = m_account.id;
    m_snapshot.prefix = m_account.prefix;
    // The size and time of each file that gets a version are those restic recorded. restic read
    // them from the disk during the run: a file whose status has not changed since the run began
    // still shows them, which costs a stat. Only when one changed since is the snapshot listed.
    // New and changed files were described while restic ran; what is left are files the catalog
    // lacks although restic found them unchanged.
    for (const QString& path : qAsConst(m_held)) {
        if (!m_described.contains(path) && !m_live.contains(PlanPaths::toCatalog(path, m_snapshot.shares)))
            describeNow(path);
    }
    if (m_unsure.isEmpty()) {
        fillCatalog();
        return;
    }
    TWL::TwlDebug("TWB").debug() << "Run of" << planId().toString() << ":" << m_unsure.size()
                                 << "files changed during the backup; reading the snapshot's own record";
    auto first = std::make_shared<bool>(true);
    m_finishing = true;
    steps().runRestic(
        m_target, m_repository, m_password,
        {QStringLiteral("ls"), QStringLiteral("--json"), QStringLiteral("--no-lock"), m_shortId},
        [this, first](const QByteArray& line) {
            if (*first) { // the snapshot itself
                *first = false;
                return;
            }
            const QJsonObject node = ResticOutput::object(line);
            const QString path = node.value(QStringLiteral("path")).toString();
            if (!m_unsure.contains(path))
                return;
            m_described.insert(path,
                {path, qint64(node.value(QStringLiteral("size")).toDouble()),
                    ResticOutput::time(node.value(QStringLiteral("mtime")).toString())});
        },
        [this](int exitCode, const QString& error, const QByteArray&) {
            m_finishing = false;
            if (exitCode != 0)
                warn(QStringLiteral("The times of files changed during the backup are those after it: %1")
                         .arg(ResticOutput::reason(error, exitCode)));
            fillCatalog();
        },
        true);
}

void BackupRun::fillCatalog()
{
    const auto describe = [this](const QString& path) {
        const auto found = m_described.constFind(path);
        if (found != m_described.constEnd())
            return *found;
        const QFileInfo info(path);
        return SnapshotFile {path, info.size(), info.lastModified().toUTC()};
    };
    QElapsedTimer clock;
    clock.start();
    try {
        const int added
            = SnapshotIndex(m_database)
                  .record(m_snapshot, m_held, m_stored, files().useCompression(), !m_generated, describe, m_live);
        TWL::TwlDebug("TWB").debug() << "Run of" << planId().toString() << ": the catalog took" << added
                                     << "versions of" << m_held.size() << "files in" << clock.elapsed() << "ms";
    } catch (const QString& text) {
        warn(QStringLiteral("The catalog could not take the backup: %1").arg(text));
    }
    // The file's own size: restic's data_size counts only what it had not stored before, 0 for a
    // file whose contents the repository already held.
    m_uploadedBytes = 0;
    for (const QString& path : qAsConst(m_uploaded)) {
        const SnapshotFile file = describe(path);
        m_uploadedBytes += file.size;
        addOperation(FileOperationRecord::Uploaded, path, file.size, file.modified);
    }
    m_described.clear();
    if (isStopping())
        finishStopped();
    else
        applyRetention();
}

void BackupRun::applyRetention()
{
    // A service killed during the plan's last retention left the catalog unmatched: match it first.
    if (!m_matchedFirst && QFile::exists(m_places.retentionMark(planId()))) {
        m_matchedFirst = true;
        setStatus(RunState::PurgingFiles);
        reconcile([this] { applyRetention(); });
        return;
    }
    const FileRetention rules = RetentionRules::of(files().retentionPolicy(),
        DefaultRetention::fromOptions(m_places.optionsFile()), QDateTime::currentDateTimeUtc());
    QStringList doomed;
    try {
        doomed = SnapshotIndex(m_database).forgettable(planId(), rules);
    } catch (const QString& text) {
        warn(QStringLiteral("Retention did not run: the catalog cannot be read: %1").arg(text));
    }
    if (doomed.isEmpty()) {
        end(RunState::Success, QString());
        return;
    }
    setStatus(RunState::PurgingFiles);
    m_retentionTouched = true;
    QFile mark(m_places.retentionMark(planId()));
    if (mark.open(QIODevice::WriteOnly))
        mark.close();
    TWL::TwlDebug("TWB").info() << "Run of" << planId().toString() << ": retention forgets" << doomed.size()
                                << "snapshots";
    resticCall(
        RetentionRules::forgetArguments(doomed), m_password, nullptr, [this](int exitCode, const QString& error) {
            if (exitCode != 0)
                warn(QStringLiteral("Retention failed: %1").arg(ResticOutput::reason(error, exitCode)));
            reconcile([this] { end(RunState::Success, QString()); });
        });
}

void BackupRun::reconcile(std::function<void()> next)
{
    // Whatever ended the retention, the catalog keeps only what the repository still holds.
    m_finishing = true;
    steps().runRestic(
        m_target, m_repository, m_password, {QStringLiteral("snapshots"), QStringLiteral("--json")}, nullptr,
        [this, next](int exitCode, const QString& error, const QByteArray& output) {
            m_finishing = false;
            m_retentionTouched = false;
            QSet<QString> present;
            const QJsonArray list = QJsonDocument::fromJson(output).array();
            for (const QJsonValue& value : list) {
                present.insert(value.toObject().value(QStringLiteral("id")).toString());
                present.insert(value.toObject().value(QStringLiteral("short_id")).toString());
            }
            present.remove(QString());
            if (exitCode != 0 || present.isEmpty()) {
                warn(QStringLiteral("The catalog could not be matched with the repository: %1")
                         .arg(ResticOutput::reason(error, exitCode)));
            } else {
                try {
                    SnapshotIndex(m_database).keepOnly(planId(), present);
                    QFile::remove(m_places.retentionMark(planId()));
                } catch (const QString& text) {
                    warn(QStringLiteral("The catalog could not follow the retention: %1").arg(text));
                }
            }
            if (isStopping())
                finishStopped();
            else
                next();
        },
        true);
}

void BackupRun::end(int state, const QString& message)
{
    m_result.uploadedCount = m_uploaded.size();
    m_result.uploadedSize = m_dataAdded;
    m_result.fileCount = m_filesProcessed;
    m_result.fileSize = m_bytesProcessed;
    QString text = message;
    if (text.isEmpty() && state == RunState::Success) {
        text = QStringLiteral("%1 files backed up (%2), %3 failed")
                   .arg(m_uploaded.size())
                   .arg(byteText(m_uploadedBytes))
                   .arg(m_result.failedCount);
    }
    runPostAction(state, text);
}

void BackupRun::runPostAction(int state, const QString& message)
{
    const auto& post = files().actions().post();
    const bool failed = state == RunState::Fail;
    if (!post.isEnabled() || post.program().trimmed().isEmpty() || (failed && !post.runOnBackupFailure())) {
        complete(state, message);
        return;
    }
    setStatus(RunState::RunningPostBackupAction);
    runAction(post.program(), post.arguments(), finalState(state), [this, state, message](bool ok, const QString& why) {
        if (!ok)
            warn(QStringLiteral("The post-action failed: %1").arg(why));
        complete(state, message);
    });
}

bool BackupRun::finishingStep() const
{
    return m_finishing;
}

void BackupRun::onStopped()
{
    if (m_finishing)
        return; // the step ends the run when it is done
    if (m_retentionTouched) {
        reconcile([] {});
        return;
    }
    finishStopped();
}

void BackupRun::finishStopped()
{
    m_result.uploadedCount = m_uploaded.size();
    m_result.uploadedSize = m_dataAdded;
    PlanRun::onStopped();
}

} // namespace TWB::Service
