#include "service/engine/restore_run.h"

#include "platform/cloud/cloud_type.h"
#include "platform/plan/backup.h"
#include "platform/plan/factory.h"
#include "platform/plan/restore_file.h"
#include "platform/logging/twl_debug.h"
#include "service/engine/backup_selection.h"
#include "service/catalog/version_catalog.h"
#include "service/catalog/plan_paths.h"
#include "service/store/plan_store.h"
#include "service/engine/repository_key_store.h"
#include "service/engine/restic_output.h"
#include "service/engine/run_state.h"
#include "service/engine/staged_restore.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QThreadPool>

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace TWB::Service {

using TWB::Info::Plan::RestoreFile;

RestoreRun::RestoreRun(
    Database& database, const RunPlaces& places, std::shared_ptr<const TWB::Info::Plan::Base> plan, QObject* parent)
    : PlanRun(database, places, std::move(plan), parent)
{
    m_result.operation = 1;
    m_measureTimer.setInterval(1000);
    connect(&m_measureTimer, &QTimer::timeout, this, &RestoreRun::measureStaging);
}

RestoreRun::~RestoreRun()
{
    if (!m_staging.isEmpty())
        QDir(m_staging).removeRecursively();
}

const RestoreFile& RestoreRun::files() const
{
    return static_cast<const RestoreFile&>(*m_plan);
}

void RestoreRun::begin(bool)
{
    if (!dynamic_cast<const RestoreFile*>(m_plan.get())) {
        complete(RunState::Fail, QStringLiteral("Disk image restores are not available in this version"));
        return;
    }
    const RestoreFile& plan = files();
    const std::optional<Account> account = AccountStore(m_database).find(plan.storage());
    if (!account) {
        complete(RunState::Fail, QStringLiteral("The plan's storage account does not exist"));
        return;
    }
    m_account = *account;
    StorageOptions options;
    options.transferAcceleration = plan.storageInfo().useS3Accelerated();
    m_target = BackendMapping::map(m_account, options, runFolder());
    QString error;
    if (!m_target.error.isEmpty() || !writeFiles(m_target, &error)) {
        complete(RunState::Fail, m_target.error.isEmpty() ? error : m_target.error);
        return;
    }

    // Each item is read from the snapshot that holds it; items of one snapshot go together.
    std::optional<qint64> pointInTime;
    if (plan.restoreType() == TWB::Info::Plan::Restore::PointInTime) {
        if (!plan.pointInTime().isValid()) {
            complete(RunState::Fail, QStringLiteral("The plan restores to a point in time but names none"));
            return;
        }
        pointInTime = plan.pointInTime().toMSecsSinceEpoch();
    }
    const QStringList prefixes = VersionCatalog(m_database).prefixes(m_account.id);
    SnapshotIndex catalog(m_database);
    const QStringList items = plan.restoreItems();
    QStringList reasons;
    for (const QString& item : items) {
        const VersionCatalog::PrefixedPath path = VersionCatalog::splitPrefix(item, prefixes, m_account.prefix);
        QString why;
        const std::optional<RestoreSource> source
            = catalog.sourceFor(m_account.id, path.prefix, path.path, pointInTime, &why);
        if (!source) {
            addOperation(FileOperationRecord::Failed, item, 0, QDateTime(), why);
            reasons << why;
            continue;
        }
        auto group = std::find_if(m_groups.begin(), m_groups.end(), [&source](const Group& g) {
            return g.snapshot.plan == source->snapshot.plan && g.snapshot.id == source->snapshot.id;
        });
        if (group == m_groups.end()) {
            m_groups.append({source->snapshot, {}, 0});
            group = m_groups.end() - 1;
        }
        if (!group->paths.contains(source->realPath)) {
            group->paths << source->realPath;
            group->bytes += source->bytes;
            m_totalBytes += source->bytes;
        }
    }
    if (m_groups.isEmpty()) {
        complete(RunState::Fail,
            items.isEmpty() ? QStringLiteral("The plan names nothing to restore") : reasons.join(QStringLiteral("; ")));
        return;
    }
    if (!plan.restoreToOriginalLocation()) {
        m_destination = QDir::cleanPath(plan.destination());
        if (!QDir::isAbsolutePath(m_destination)) {
            complete(
                RunState::Fail, QStringLiteral("The destination \"%1\" is not an absolute path").arg(m_destination));
            return;
        }
    }
    if (!prepareStaging(&error)) {
        complete(RunState::Fail, error);
        return;
    }
    TWL::TwlDebug("TWB").debug() << "Run of" << planId().toString() << "restores from" << m_groups.size()
                                 << "snapshots into" << m_staging;
    const int type = m_account.type;
    const bool amazon = type == TWL::Cloud::AmazonS3 || type == TWL::Cloud::AmazonS3Chinese;
    QList<QPair<QString, QUuid>> repositories;
    if (amazon && plan.storageInfo().type() != TWB::Info::Plan::Restore::StorageInfo::NoGlacier) {
        for (const Group& group : qAsConst(m_groups)) {
            const QPair<QString, QUuid> repository {group.snapshot.prefix, group.snapshot.plan};
            if (!repositories.contains(repository))
                repositories.append(repository);
        }
    }
    obscureSecrets(m_target, [this, repositories] { retrieveArchived(repositories); });
}

void RestoreRun::retrieveArchived(QList<QPair<QString, QUuid>> repositories)
{
    if (repositories.isEmpty()) {
        restoreNext();
        return;
    }
    const QPair<QString, QUuid> repository = repositories.takeFirst();
    QString priority = QStringLiteral("Standard");
    if (files().storageInfo().type() == TWB::Info::Plan::Restore::StorageInfo::RetrievalBulk)
        priority = QStringLiteral("Bulk");
    else if (files().storageInfo().type() == TWB::Info::Plan::Restore::StorageInfo::RetrievalExpedited)
        priority = QStringLiteral("Expedited");
    setStatus(RunState::Preparing);
    // A request for every object of the repository: restic reads index and snapshots as well as packs.
    // Amazon answers at once for objects that are not archived or already on their way back, and rclone
    // reports those per object, so only a failure of rclone itself stops the run.
    const QString path
        = m_target.rcloneRoot + repository.first + QLatin1Char('/') + repository.second.toString(QUuid::WithoutBraces);
    call(steps().rclone(m_target,
             {QStringLiteral("backend"), QStringLiteral("restore"), path, QStringLiteral("-o"),
                 QStringLiteral("priority=") + priority, QStringLiteral("-o"), QStringLiteral("lifetime=1")}),
        nullptr, [this, repositories](int exitCode, const QString& error) {
            if (exitCode != 0) {
                end(RunState::Fail,
                    QStringLiteral("Cannot ask for the files archived in Glacier: %1")
                        .arg(ResticOutput::reason(error, exitCode)));
                return;
            }
            retrieveArchived(repositories);
        });
}

QString RestoreRun::placeOf(const QString& stagedPath) const
{
    if (!m_destination.isEmpty())
        return m_destination == QLatin1String("/") ? stagedPath : m_destination + stagedPath;
    // A file of a network share goes back to where that share is mounted now.
    for (const Group& group : m_groups) {
        const QString catalogPath = PlanPaths::toCatalog(stagedPath, group.snapshot.shares);
        if (!catalogPath.startsWith(PlanPaths::sharesRoot() + QLatin1Char('/')))
            continue;
        const QString name = catalogPath.section(QLatin1Char('/'), 2, 2);
        const QString mount = PlanPaths().shareMount(name);
        if (!mount.isEmpty())
            return mount + catalogPath.mid(PlanPaths::sharesRoot().size() + 1 + name.size());
    }
    return stagedPath;
}

bool RestoreRun::prepareStaging(QString* error)
{
    // Staging sits on the destination's file system, so that placing a file is one rename.
    QString anchor;
    if (!m_destination.isEmpty()) {
        if (!QDir().mkpath(m_destination)) {
            *error = QStringLiteral("Cannot create the destination folder %1").arg(m_destination);
            return false;
        }
        anchor = m_destination;
    } else {
        anchor = placeOf(m_groups.first().paths.first());
        while (!QFileInfo(anchor).isDir() && anchor != QLatin1String("/"))
            anchor = QFileInfo(anchor).absolutePath();
    }
    const QString name = QStringLiteral(".tidewrack-restore-") + QUuid::createUuid().toString(QUuid::Id128).left(12);
    m_staging = anchor == QLatin1String("/") ? QLatin1Char('/') + name : anchor + QLatin1Char('/') + name;
    // The system's reason tells the user what to fix: a read-only mount, a full disk, missing rights.
    if (::mkdir(QFile::encodeName(m_staging).constData(), 0700) != 0) {
        *error = QStringLiteral("The destination cannot be written: cannot create a folder in %1: %2")
                     .arg(anchor, QString::fromLocal8Bit(std::strerror(errno)));
        m_staging.clear();
        return false;
    }
    return true;
}

void RestoreRun::restoreNext()
{
    if (m_groups.isEmpty()) {
        place();
        return;
    }
    const RestoreFile& plan = files();
    if (plan.useEncryption() && !plan.encryptionPassword().isEmpty()) {
        restoreGroup({plan.encryptionPassword()}, true);
        return;
    }
    restoreGroup(EngineSteps::passwords(m_database, m_groups.first().snapshot.plan), false);
}

void RestoreRun::restoreGroup(QStringList passwords, bool userPassword)
{
    const QString password = passwords.takeFirst();
    setStatus(RunState::Downloading);
    const Group& group = m_groups.first();
    const QString repository
        = m_target.repository(group.snapshot.prefix, group.snapshot.plan.toString(QUuid::WithoutBraces));
    QStringList arguments = {QStringLiteral("restore"), group.snapshot.id, QStringLiteral("--target"), m_staging};
    for (const QString& path : group.paths)
        arguments << QStringLiteral("--include") << BackupSelection::escaped(path);
    m_measureTimer.start();
    callRestic(m_target, repository, password, arguments, nullptr,
        [this, passwords, userPassword](int exitCode, const QString& error) {
            m_measureTimer.stop();
            if (exitCode == 0) {
                m_stagedBefore += m_groups.first().bytes;
                m_groups.removeFirst();
                restoreNext();
                return;
            }
            if (ResticOutput::wrongPassword(error)) {
                if (userPassword) {
                    end(RunState::Fail,
                        QStringLiteral("The backup does not open with the password of the restore plan: "
                                       "wrong password"));
                    return;
                }
                if (!passwords.isEmpty()) {
                    restoreGroup(passwords, false);
                    return;
                }
                end(RunState::Fail,
                    QStringLiteral("The backup is encrypted with a password the service does not know; give it in "
                                   "the restore plan"));
                return;
            }
            end(RunState::Fail, QStringLiteral("The restore failed: %1").arg(ResticOutput::reason(error, exitCode)));
        });
}

void RestoreRun::measureStaging()
{
    // A restore of a few seconds is not worth walking its staging folder for.
    if (++m_measureTicks < 2 || m_measuring || m_staging.isEmpty())
        return;
    m_measuring = true;
    QPointer<RestoreRun> self(this);
    const QString staging = m_staging;
    // Walking the staging folder reads the disk: on a worker, with the result back on the event loop.
    QThreadPool::globalInstance()->start([self, staging] {
        qint64 bytes = 0;
        qint64 count = 0;
        QString last;
        QDirIterator it(staging, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            last = it.next();
            bytes += it.fileInfo().size();
            ++count;
        }
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, bytes, count, last, staging] {
                if (!self)
                    return;
                self->m_measuring = false;
                if (self->isFinished())
                    return;
                const qint64 total = qMax<qint64>(1, self->m_totalBytes);
                self->setProgress(100.0 * double(bytes) / double(total), bytes, count, last.mid(staging.size()));
            },
            Qt::QueuedConnection);
    });
}

void RestoreRun::place()
{
    TWL::TwlDebug("TWB").debug() << "Run of" << planId().toString() << "places the restored files";
    setStatus(RunState::Running);
    StagedRestore::Rule rule = StagedRestore::Rule::Overwrite;
    if (files().skipExistingFiles())
        rule = StagedRestore::Rule::SkipExisting;
    else if (files().onlyNewFiles())
        rule = StagedRestore::Rule::OverwriteOlder;
    auto* placing = new StagedRestore(
        m_staging, [this](const QString& staged) { return placeOf(staged); }, rule, this);
    m_placing = placing;
    auto skipped = std::make_shared<qint64>(0);
    connect(placing, &StagedRestore::restored, this, [this](const QString& target, qint64 size, const QDateTime& when) {
        addOperation(FileOperationRecord::Restored, target, size, when);
        ++m_result.uploadedCount;
        m_result.uploadedSize += size;
        setProgress(100.0 * double(m_result.uploadedSize) / double(qMax<qint64>(1, m_totalBytes)),
            m_result.uploadedSize, m_result.uploadedCount, target);
    });
    connect(placing, &StagedRestore::skipped, this, [skipped](const QString&) { ++*skipped; });
    connect(placing, &StagedRestore::failed, this, [this](const QString& target, const QString& why) {
        addOperation(FileOperationRecord::Failed, target, 0, QDateTime(), why);
    });
    connect(placing, &StagedRestore::finished, this, [this, skipped] {
        m_result.fileCount = m_result.uploadedCount + *skipped + m_result.failedCount;
        if (isStopping()) {
            end(stoppedState(), stopMessage());
            return;
        }
        end(RunState::Success,
            QStringLiteral("%1 files restored, %2 existing files kept, %3 failed")
                .arg(m_result.uploadedCount)
                .arg(*skipped)
                .arg(m_result.failedCount));
    });
    placing->start();
}

void RestoreRun::end(int state, const QString& message)
{
    m_measureTimer.stop();
    m_result.fileSize = m_totalBytes;
    if (!m_staging.isEmpty() && !QDir(m_staging).removeRecursively())
        warn(QStringLiteral("Cannot remove the staging folder %1").arg(m_staging));
    m_staging.clear();
    complete(state, message);
}

void RestoreRun::onStopped()
{
    end(stoppedState(), stopMessage());
}

void RestoreRun::interruptStep()
{
    // Placing stops after the file in hand and ends the run through its finished().
    if (m_placing)
        m_placing->stop();
}

} // namespace TWB::Service
