#include "engine_test_support.h"

#include "platform/communication/notification_types.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/restore_file.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QProcess>
#include <QRandomGenerator>
#include <QSettings>
#include <QTest>

#include <unistd.h>

namespace TWB::Test {

namespace Type = TWB::Common::Communication::Notification::Type;

void EngineTestSupport::writeFile(const QString& path, const QByteArray& data, const QDateTime& modified)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        qFatal("cannot write %s", qPrintable(path));
    file.write(data);
    file.flush();
    if (modified.isValid())
        file.setFileTime(modified, QFileDevice::FileModificationTime);
}

QByteArray EngineTestSupport::noise(int size, quint32 seed)
{
    QRandomGenerator generator(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    generator.fillRange(reinterpret_cast<quint32*>(bytes.data()), size / 4);
    for (int i = size / 4 * 4; i < size; ++i)
        bytes[i] = char(generator.generate());
    return bytes;
}

QMap<QString, QByteArray> EngineTestSupport::tree(const QString& root)
{
    QMap<QString, QByteArray> entries;
    QDirIterator it(
        root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QFileInfo info = it.fileInfo();
        const QString relative = path.mid(root.size());
        if (info.isSymLink()) {
            // The link's own text, not the absolute path Qt makes of it.
            char target[4096];
            const ssize_t length = ::readlink(QFile::encodeName(path).constData(), target, sizeof(target));
            entries.insert(relative, "link:" + QByteArray(target, int(qMax<ssize_t>(0, length))));
        } else if (info.isDir()) {
            entries.insert(relative, "folder");
        } else {
            QFile file(path);
            file.open(QIODevice::ReadOnly);
            entries.insert(relative, QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256).toHex());
        }
    }
    return entries;
}

bool EngineTestSupport::save(RawClient& client, const TWB::Info::Plan::Base& plan)
{
    const ServiceReply reply = client.call(QStringLiteral("PlanUpdate"),
        {{QStringLiteral("ID"), plan.id().toString()}, {QStringLiteral("planXML"), plan.toXml()}});
    if (!reply.success)
        qWarning("PlanUpdate refused: %s", qPrintable(reply.error));
    return reply.success;
}

RunOutcome EngineTestSupport::run(RawClient& client, const QUuid& plan, bool forceFull, int timeoutMs)
{
    client.clearNotifications();
    QJsonObject params {{QStringLiteral("ID"), plan.toString()}};
    if (forceFull)
        params.insert(QStringLiteral("force_full"), true);
    const ServiceReply started = client.call(QStringLiteral("PlanExecuteStart"), params);
    if (!started.success) {
        qWarning("PlanExecuteStart refused: %s", qPrintable(started.error));
        return RunOutcome();
    }
    return waitForEnd(client, plan, timeoutMs);
}

RunOutcome EngineTestSupport::waitForEnd(RawClient& client, const QUuid& plan, int timeoutMs)
{
    RunOutcome outcome;
    auto ended = [&] {
        bool started = false;
        const QList<QJsonObject> messages = client.notifications();
        for (const QJsonObject& message : messages) {
            if (QUuid(message.value(QStringLiteral("id")).toString()) != QUuid(Type::PlanStateChanged))
                continue;
            const QJsonObject data = message.value(QStringLiteral("data")).toObject();
            if (QUuid(data.value(QStringLiteral("id")).toString()) != plan)
                continue;
            if (data.value(QStringLiteral("state")).toInt() == 1)
                started = true;
            if (data.value(QStringLiteral("state")).toInt() == 2) {
                outcome.startedFirst = started;
                outcome.lastState = data.value(QStringLiteral("last_state")).toInt(-1);
                return true;
            }
        }
        return false;
    };
    outcome.ended = QTest::qWaitFor(ended, timeoutMs);
    outcome.row = client.call(QStringLiteral("PlanGetInfo"), {{QStringLiteral("id"), plan.toString()}})
                      .data.value(QStringLiteral("planInfo"))
                      .toObject();
    outcome.status = outcome.row.value(QStringLiteral("LastRunStatus")).toInt(-1);
    outcome.message = outcome.row.value(QStringLiteral("LastRunMessage")).toString();
    return outcome;
}

QUuid EngineTestSupport::addLocalAccount(RawClient& client, const QString& folder, const QString& prefix)
{
    const QUuid id = QUuid::createUuid();
    const ServiceReply reply = client.call(QStringLiteral("SaveStorage"),
        {{QStringLiteral("ID"), id.toString()}, {QStringLiteral("displayName"), QStringLiteral("Test storage")},
            {QStringLiteral("prefix"), prefix}, {QStringLiteral("type"), 1},
            {QStringLiteral("params"), QJsonObject {{QStringLiteral("Path"), folder}}}});
    return reply.success ? id : QUuid();
}

QList<QJsonObject> EngineTestSupport::progress(const RawClient& client, const QUuid& plan)
{
    QList<QJsonObject> found;
    const QList<QJsonObject> messages = client.notifications();
    for (const QJsonObject& message : messages) {
        if (QUuid(message.value(QStringLiteral("id")).toString()) != QUuid(Type::PlanProgress))
            continue;
        const QJsonObject data = message.value(QStringLiteral("data")).toObject();
        if (QUuid(data.value(QStringLiteral("plan_id")).toString()) == plan)
            found << data;
    }
    return found;
}

QJsonArray EngineTestSupport::history(RawClient& client, const QString& command, const QUuid& plan)
{
    const bool byPlan = command == QLatin1String("HistoryListByPlan");
    const ServiceReply reply
        = client.call(command, {{byPlan ? QStringLiteral("planID") : QStringLiteral("planId"), plan.toString()}});
    return reply.data.value(command).toArray();
}

QByteArray EngineTestSupport::restic(
    const QString& repository, const QString& password, const QStringList& arguments, int* exitCode)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("RESTIC_PASSWORD"), password);
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral("restic"),
        QStringList {QStringLiteral("--repo"), repository, QStringLiteral("--no-cache")} + arguments);
    process.waitForFinished(120000);
    if (exitCode)
        *exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    return process.readAllStandardOutput();
}

QList<QPair<QString, QDateTime>> EngineTestSupport::snapshots(const QString& repository, const QString& password)
{
    QList<QPair<QString, QDateTime>> result;
    const QJsonArray list
        = QJsonDocument::fromJson(restic(repository, password, {QStringLiteral("snapshots"), QStringLiteral("--json")}))
              .array();
    for (const QJsonValue& value : list) {
        const QJsonObject object = value.toObject();
        QString time = object.value(QStringLiteral("time")).toString();
        // restic writes nanoseconds; milliseconds are what the service keeps.
        const int dot = time.indexOf(QLatin1Char('.'));
        if (dot > 0)
            time = time.left(dot + 4) + QLatin1Char('Z');
        result.append({object.value(QStringLiteral("id")).toString(), QDateTime::fromString(time, Qt::ISODateWithMs)});
    }
    std::sort(result.begin(), result.end(), [](const auto& a, const auto& b) { return a.second < b.second; });
    return result;
}

QString EngineTestSupport::readText(const QString& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return QString::fromUtf8(file.readAll());
}

std::unique_ptr<TWB::Info::Plan::BackupFile> EngineTestSupport::backupPlan(
    const QUuid& account, const QString& name, const QStringList& items, const QString& password)
{
    auto plan = std::make_unique<TWB::Info::Plan::BackupFile>();
    plan->setId(QUuid::createUuid());
    plan->setName(name);
    plan->setStorage(account);
    plan->setItems(items);
    if (!password.isEmpty()) {
        plan->encryption().setEnabled(true);
        plan->encryption().setPassword(password);
    }
    return plan;
}

std::unique_ptr<TWB::Info::Plan::RestoreFile> EngineTestSupport::restorePlan(
    const QUuid& account, const QStringList& items, const QString& destination)
{
    auto plan = std::make_unique<TWB::Info::Plan::RestoreFile>();
    plan->setId(QUuid::createUuid());
    plan->setName(QStringLiteral("Restore"));
    plan->setStorage(account);
    plan->setRestoreItems(items);
    plan->setRestoreToOriginalLocation(destination.isEmpty());
    plan->setDestination(destination);
    plan->setSkipExistingFiles(false);
    return plan;
}

void EngineTestSupport::setOption(const QString& dataDir, const QString& key, const QString& value)
{
    QSettings options(dataDir + QStringLiteral("/options.ini"), QSettings::IniFormat);
    if (value.isEmpty())
        options.remove(key);
    else
        options.setValue(key, value);
    options.sync();
}

} // namespace TWB::Test
