#include "platform/cloud/about.h"
#include "platform/cloud/account_keys.h"
#include "platform/cloud/check_config.h"
#include "platform/cloud/list_containers.h"
#include "platform/cloud/listing.h"
#include "platform/cloud/listing_object.h"
#include "platform/cloud/pool_job_p.h"
#include "platform/cloud/rclone_errors_p.h"
#include "platform/cloud/rclone_run_p.h"
#include "platform/logging/twl_debug.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QStorageInfo>

#include <algorithm>
#include <functional>

namespace TWL::Cloud::Operation {

using Detail::RcloneRemote;
using Detail::RcloneResult;
using Detail::RcloneRun;

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("TWL::Cloud::Operation", text);
}

/// What a file-system job gives back.
struct LocalResult
{
    int code = IOperation::NoError;
    QString message;
    QJsonArray entries;
    qint64 total = -1;
    qint64 free = -1;
};

/// Starts rclone for an operation; `done` gets the result on the operation's thread.
RcloneRun* launch(const RcloneRemote& remote, const QStringList& arguments, QObject* context,
    std::function<void(const RcloneResult&)> done)
{
    auto* run = new RcloneRun(remote, arguments, context);
    QObject::connect(run, &RcloneRun::done, context, std::move(done));
    run->start();
    return run;
}

/// The failure of a run in the user's words; rclone's own text goes to the debug log only.
Detail::Failure failureOf(const RcloneRemote& remote, const RcloneResult& result, const QString& container)
{
    if (result.errorCode != IOperation::NoError)
        return {result.errorCode, result.message};
    TWL::TwlDebug("TWB").debug() << "rclone ended with" << result.exitCode << ":"
                                 << QString::fromUtf8(result.errors).trimmed();
    return Detail::explainRclone(remote, result.errors, container);
}

bool failed(const RcloneResult& result)
{
    return result.errorCode != IOperation::NoError || result.exitCode != 0;
}

QJsonArray parseEntries(const QByteArray& output, bool* ok)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(output, &error);
    *ok = error.error == QJsonParseError::NoError && document.isArray();
    return document.array();
}

QString folderOf(const RcloneRemote& remote, const QString& container)
{
    QString path = remote.base;
    if (!container.isEmpty())
        path += QLatin1Char('/') + container;
    return path;
}

// A folder of a file-system account that must exist; fills `result` when it does not.
bool localFolderExists(const QString& path, LocalResult& result)
{
    const QFileInfo info(path);
    if (!info.exists()) {
        result.code = IOperation::NoSuchContainer;
        result.message = tr("The folder \"%1\" does not exist.").arg(QDir::toNativeSeparators(path));
        return false;
    }
    if (!info.isDir()) {
        result.code = IOperation::BadConfiguration;
        result.message = tr("\"%1\" is not a folder.").arg(QDir::toNativeSeparators(path));
        return false;
    }
    if (!info.isReadable() || !info.isExecutable()) {
        result.code = IOperation::PermissionDenied;
        result.message = tr("Permission denied: the folder \"%1\" cannot be read.").arg(QDir::toNativeSeparators(path));
        return false;
    }
    return true;
}

bool localBaseGiven(const RcloneRemote& remote, LocalResult& result)
{
    if (remote.base.isEmpty() || !QDir::isAbsolutePath(remote.base)) {
        result.code = IOperation::BadConfiguration;
        result.message = tr("The account has no absolute folder.");
        return false;
    }
    return true;
}

QString withoutSlashes(QString text)
{
    while (text.startsWith(QLatin1Char('/')))
        text.remove(0, 1);
    while (text.endsWith(QLatin1Char('/')))
        text.chop(1);
    return text;
}

} // namespace

// ListContainers

ListContainers::ListContainers(const QVariantMap& config, QObject* parent)
    : IOperation(QStringLiteral("ListContainers"), config, parent)
{ }

void ListContainers::exec()
{
    const RcloneRemote remote = RcloneRemote::fromConfig(cloudConfig());
    if (!startWith(remote.error))
        return;
    setState(Running);
    if (remote.type == FileSystem) {
        Detail::runInPool<LocalResult>(
            this,
            [remote] {
                LocalResult result;
                if (!localBaseGiven(remote, result) || !localFolderExists(remote.base, result))
                    return result;
                const QFileInfoList folders
                    = QDir(remote.base).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
                for (const QFileInfo& folder : folders)
                    result.entries.append(QJsonObject {{QStringLiteral("Name"), folder.fileName()},
                        {QStringLiteral("Created"), folder.lastModified().toUTC().toString(Qt::ISODate)}});
                return result;
            },
            [this](const LocalResult& result) {
                if (result.code != NoError) {
                    fail(result.code, result.message);
                    return;
                }
                m_data = result.entries;
                succeed();
            });
        return;
    }
    attach(launch(remote, {QStringLiteral("lsjson"), QStringLiteral("--dirs-only"), remote.root()}, this,
        [this, remote](const RcloneResult& result) {
            if (failed(result)) {
                const auto failure = failureOf(remote, result, QString());
                fail(failure.code, failure.message, QString::fromUtf8(result.errors));
                return;
            }
            bool ok = false;
            const QJsonArray entries = parseEntries(result.output, &ok);
            if (!ok) {
                fail(Failed, tr("The storage's answer could not be read."), QString::fromUtf8(result.output.left(500)));
                return;
            }
            QList<QJsonObject> containers;
            for (const QJsonValue& value : entries) {
                const QJsonObject entry = value.toObject();
                QJsonObject container {{QStringLiteral("Name"), entry.value(QStringLiteral("Name")).toString()}};
                const QString created = entry.value(QStringLiteral("ModTime")).toString();
                if (!created.isEmpty() && !created.startsWith(QLatin1String("2000-01-01")))
                    container.insert(QStringLiteral("Created"), created);
                containers << container;
            }
            std::sort(containers.begin(), containers.end(), [](const QJsonObject& a, const QJsonObject& b) {
                return a.value(QStringLiteral("Name")).toString() < b.value(QStringLiteral("Name")).toString();
            });
            for (const QJsonObject& container : qAsConst(containers))
                m_data.append(container);
            succeed();
        }));
}

// Listing

Listing::Listing(const QVariantMap& config, const QString& prefix, const QString& marker, const QString& delimiter,
    unsigned short count, QObject* parent)
    : IOperation(QStringLiteral("Listing"), config, parent)
    , m_prefix(prefix)
    , m_marker(marker)
    , m_delimiter(delimiter)
    , m_count(count)
{ }

void Listing::take(const QJsonArray& entries)
{
    // Names are compared as a bucket orders its keys: by their bytes.
    QList<QPair<QByteArray, QJsonObject>> kept;
    for (const QJsonValue& value : entries) {
        const QJsonObject entry = value.toObject();
        const QString name = Api::ListingObject(entry).name();
        if (!name.startsWith(m_prefix))
            continue;
        kept.append({name.toUtf8(), entry});
    }
    std::sort(
        kept.begin(), kept.end(), [](const QPair<QByteArray, QJsonObject>& a, const QPair<QByteArray, QJsonObject>& b) {
            return a.first < b.first;
        });
    const QByteArray after = m_marker.toUtf8();
    int taken = 0;
    for (int i = 0; i < kept.size(); ++i) {
        if (!after.isEmpty() && kept.at(i).first <= after)
            continue;
        if (m_count > 0 && taken == m_count) {
            m_nextMarker = QString::fromUtf8(kept.at(i - 1).first);
            return;
        }
        m_data.append(kept.at(i).second);
        ++taken;
    }
}

void Listing::exec()
{
    const RcloneRemote remote = RcloneRemote::fromConfig(cloudConfig());
    if (!startWith(remote.error))
        return;
    if (remote.hasBuckets() && remote.container.isEmpty()) {
        fail(BadConfiguration, tr("The account has no bucket."));
        return;
    }
    setState(Running);
    // "a/b/c" lists the folder "a/b/" and keeps the names that begin with "c".
    const int slash = m_prefix.lastIndexOf(QLatin1Char('/'));
    const QString folder = slash < 0 ? QString() : m_prefix.left(slash + 1);
    const bool recursive = m_delimiter.isEmpty();
    if (remote.type == FileSystem) {
        const QString root = folderOf(remote, remote.container);
        Detail::runInPool<LocalResult>(
            this,
            [remote, root, folder, recursive, maxDepth = m_maxDepth] {
                LocalResult result;
                if (!localBaseGiven(remote, result) || !localFolderExists(root, result))
                    return result;
                const QDir top(root);
                const QDir dir(root + QLatin1Char('/') + folder);
                if (!dir.exists())
                    return result;
                QFileInfoList found;
                QList<QPair<QDir, int>> pending {{dir, 1}};
                while (!pending.isEmpty()) {
                    const auto current = pending.takeFirst();
                    const QFileInfoList here = current.first.entryInfoList(
                        QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System, QDir::Name);
                    for (const QFileInfo& info : here) {
                        if (recursive && info.isDir() && !info.isSymLink()) {
                            if (maxDepth == 0 || current.second < maxDepth)
                                pending.append({QDir(info.filePath()), current.second + 1});
                        } else {
                            found << info;
                        }
                    }
                }
                for (const QFileInfo& info : qAsConst(found)) {
                    const bool isFolder = info.isDir();
                    QString name = top.relativeFilePath(info.filePath());
                    if (isFolder)
                        name += QLatin1Char('/');
                    result.entries.append(Api::ListingObject::make(name, isFolder, info.size(), info.lastModified()));
                }
                return result;
            },
            [this](const LocalResult& result) {
                if (result.code != NoError) {
                    fail(result.code, result.message);
                    return;
                }
                take(result.entries);
                succeed();
            });
        return;
    }
    QStringList arguments {QStringLiteral("lsjson")};
    if (recursive)
        arguments << QStringLiteral("--recursive") << QStringLiteral("--files-only");
    if (recursive && m_maxDepth > 0)
        arguments << QStringLiteral("--max-depth") << QString::number(m_maxDepth);
    arguments << remote.path(remote.container, folder);
    attach(launch(remote, arguments, this, [this, remote, folder](const RcloneResult& result) {
        if (failed(result)) {
            const auto failure = failureOf(remote, result, remote.container);
            // A folder that is not there holds nothing, as a bucket without such keys lists nothing.
            if (failure.code == NoSuchContainer && !folder.isEmpty()) {
                succeed();
                return;
            }
            fail(failure.code, failure.message, QString::fromUtf8(result.errors));
            return;
        }
        bool ok = false;
        const QJsonArray entries = parseEntries(result.output, &ok);
        if (!ok) {
            fail(Failed, tr("The storage's answer could not be read."), QString::fromUtf8(result.output.left(500)));
            return;
        }
        QJsonArray named;
        for (const QJsonValue& value : entries) {
            const QJsonObject entry = value.toObject();
            const bool isFolder = entry.value(QStringLiteral("IsDir")).toBool();
            QString name = folder + entry.value(QStringLiteral("Path")).toString();
            if (isFolder)
                name += QLatin1Char('/');
            named.append(
                Api::ListingObject::make(name, isFolder, qint64(entry.value(QStringLiteral("Size")).toDouble()),
                    QDateTime::fromString(entry.value(QStringLiteral("ModTime")).toString(), Qt::ISODateWithMs)));
        }
        take(named);
        succeed();
    }));
}

// About

About::About(const QVariantMap& config, QObject* parent)
    : IOperation(QStringLiteral("About"), config, parent)
{ }

void About::exec()
{
    const RcloneRemote remote = RcloneRemote::fromConfig(cloudConfig());
    if (!startWith(remote.error))
        return;
    setState(Running);
    if (remote.type == FileSystem) {
        Detail::runInPool<LocalResult>(
            this,
            [remote] {
                LocalResult result;
                if (!localBaseGiven(remote, result) || !localFolderExists(remote.base, result))
                    return result;
                const QStorageInfo volume(remote.base);
                result.total = volume.bytesTotal();
                result.free = volume.bytesAvailable();
                return result;
            },
            [this](const LocalResult& result) {
                if (result.code != NoError) {
                    fail(result.code, result.message);
                    return;
                }
                m_total = result.total;
                m_free = result.free;
                m_used = result.total >= 0 && result.free >= 0 ? result.total - result.free : -1;
                succeed();
            });
        return;
    }
    attach(launch(remote, {QStringLiteral("about"), QStringLiteral("--json"), remote.path(remote.container)}, this,
        [this, remote](const RcloneResult& result) {
            if (failed(result)) {
                if (QString::fromUtf8(result.errors).contains(QLatin1String("doesn't support about"))) {
                    // Object stores keep no quota: nothing to tell, and nothing wrong.
                    succeed();
                    return;
                }
                const auto failure = failureOf(remote, result, remote.container);
                fail(failure.code, failure.message, QString::fromUtf8(result.errors));
                return;
            }
            const QJsonObject space = QJsonDocument::fromJson(result.output).object();
            auto number = [&space](const char* key) {
                const QJsonValue value = space.value(QLatin1String(key));
                return value.isDouble() ? qint64(value.toDouble()) : qint64(-1);
            };
            m_total = number("total");
            m_used = number("used");
            m_free = number("free");
            succeed();
        }));
}

// CheckConfig

CheckConfig::CheckConfig(const QVariantMap& config, QObject* parent)
    : IOperation(QStringLiteral("CheckConfig"), config, parent)
{ }

void CheckConfig::exec()
{
    const RcloneRemote remote = RcloneRemote::fromConfig(cloudConfig());
    if (!startWith(remote.error))
        return;
    setState(Running);
    if (remote.type == FileSystem) {
        Detail::runInPool<LocalResult>(
            this,
            [remote] {
                LocalResult result;
                const QString path = folderOf(remote, remote.container);
                if (!localBaseGiven(remote, result) || !localFolderExists(path, result))
                    return result;
                if (!QFileInfo(path).isWritable()) {
                    result.code = PermissionDenied;
                    result.message = tr("Permission denied: nothing can be written to the folder \"%1\".")
                                         .arg(QDir::toNativeSeparators(path));
                }
                return result;
            },
            [this](const LocalResult& result) {
                if (result.code != NoError)
                    fail(result.code, result.message);
                else
                    succeed();
            });
        return;
    }
    // Listing the container's top proves the credentials and the container in one request; without a
    // container the list of containers proves the credentials.
    const QString target = remote.container.isEmpty() ? remote.root() : remote.path(remote.container);
    attach(launch(remote, {QStringLiteral("lsjson"), QStringLiteral("--max-depth"), QStringLiteral("1"), target}, this,
        [this, remote](const RcloneResult& result) {
            if (failed(result)) {
                const auto failure = failureOf(remote, result, remote.container);
                fail(failure.code, failure.message, QString::fromUtf8(result.errors));
                return;
            }
            succeed();
        }));
}

// CreateContainer

CreateContainer::CreateContainer(const QVariantMap& config, const QJsonObject& params, QObject* parent)
    : IOperation(QStringLiteral("CreateContainer"), config, parent)
    , m_params(params)
{ }

void CreateContainer::exec()
{
    RcloneRemote remote = RcloneRemote::fromConfig(cloudConfig());
    if (!startWith(remote.error))
        return;
    const QString name = withoutSlashes(m_params.value(QStringLiteral("Name")).toString().trimmed());
    if (name.isEmpty() || name.contains(QLatin1Char('/')) || name == QLatin1String("..")) {
        fail(BadConfiguration, tr("A container needs a name without \"/\"."));
        return;
    }
    setState(Running);
    if (remote.type == FileSystem) {
        Detail::runInPool<LocalResult>(
            this,
            [remote, name] {
                LocalResult result;
                if (!localBaseGiven(remote, result) || !localFolderExists(remote.base, result))
                    return result;
                if (!QDir(remote.base).mkpath(name)) {
                    result.code = PermissionDenied;
                    result.message = tr("Permission denied: the folder \"%1\" cannot be made.")
                                         .arg(QDir::toNativeSeparators(remote.base + QLatin1Char('/') + name));
                }
                return result;
            },
            [this](const LocalResult& result) {
                if (result.code != NoError)
                    fail(result.code, result.message);
                else
                    succeed();
            });
        return;
    }
    const QString location = m_params.value(QStringLiteral("Location")).toString().trimmed();
    const QString access = m_params.value(QStringLiteral("AccessType")).toString().trimmed();
    const QString storageClass = m_params.value(QStringLiteral("StorageClass")).toString().trimmed();
    if (isS3Like(remote.type) && !location.isEmpty()) {
        remote.environment.insert(RcloneRemote::variable("LOCATION_CONSTRAINT"), location);
        if (!remote.environment.contains(RcloneRemote::variable("REGION")))
            remote.environment.insert(RcloneRemote::variable("REGION"), location);
    } else if (remote.type == GoogleStorage) {
        // Keys reach Google through its S3 interface, which takes the location as S3 names it.
        const bool interoperable = remote.environment.value(RcloneRemote::variable("TYPE")) == QLatin1String("s3");
        if (!location.isEmpty())
            remote.environment.insert(
                RcloneRemote::variable(interoperable ? "LOCATION_CONSTRAINT" : "LOCATION"), location);
        if (!storageClass.isEmpty())
            remote.environment.insert(RcloneRemote::variable("STORAGE_CLASS"), storageClass);
    } else if (remote.type == AzureBlob && (access == QLatin1String("blob") || access == QLatin1String("container"))) {
        remote.environment.insert(RcloneRemote::variable("PUBLIC_ACCESS"), access);
    }
    attach(launch(
        remote, {QStringLiteral("mkdir"), remote.path(name)}, this, [this, remote, name](const RcloneResult& result) {
            if (failed(result)) {
                const auto failure = failureOf(remote, result, name);
                fail(failure.code, failure.message, QString::fromUtf8(result.errors));
                return;
            }
            succeed();
        }));
}

} // namespace TWL::Cloud::Operation
