#pragma once

#include "raw_client.h"

#include <QByteArray>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QUuid>

#include <memory>

namespace TWB::Info::Plan {
class Base;
class BackupFile;
class RestoreFile;
} // namespace TWB::Info::Plan

namespace TWB::Test {

/// What a run left in the plan table and the notifications it sent.
struct RunOutcome
{
    bool ended = false;
    QJsonObject row; // "planInfo" after the run
    int status = -1; // "LastRunStatus"
    QString message; // "LastRunMessage"
    int lastState = -1; // "last_state" of the end notification
    bool startedFirst = false; // a state 1 came before the state 2
};

/// Helpers of the tests that run plans through the real twbd with real restic repositories.
class EngineTestSupport final
{
public:
    /// Writes a file, making its folders; sets its modification time when one is given.
    static void writeFile(const QString& path, const QByteArray& data, const QDateTime& modified = QDateTime());
    /// Bytes that compress badly, the same for the same seed.
    static QByteArray noise(int size, quint32 seed);
    /// Every file and link below a folder by its path there, with a digest of its content (or of
    /// the link's target), so that two trees compare byte for byte.
    static QMap<QString, QByteArray> tree(const QString& root);

    /// The text of a file; empty when it cannot be read.
    static QString readText(const QString& path);
    /// A backup plan of `items` onto `account`, encrypted when a password is given.
    static std::unique_ptr<TWB::Info::Plan::BackupFile> backupPlan(
        const QUuid& account, const QString& name, const QStringList& items, const QString& password = {});
    /// A restore plan of catalog `items` from `account` into `destination`, or to where they came from
    /// when it is empty; existing files are overwritten.
    static std::unique_ptr<TWB::Info::Plan::RestoreFile> restorePlan(
        const QUuid& account, const QStringList& items, const QString& destination);

    /// Saves the plan through "PlanUpdate"; false with the reason logged when refused.
    static bool save(RawClient& client, const TWB::Info::Plan::Base& plan);
    /// Starts the plan and waits for its end: the state notification with state 2.
    static RunOutcome run(RawClient& client, const QUuid& plan, bool forceFull = false, int timeoutMs = 90000);
    /// Waits for the end of a run that was started otherwise.
    static RunOutcome waitForEnd(RawClient& client, const QUuid& plan, int timeoutMs = 90000);
    /// A file-system account on `folder` with the prefix given; returns its id.
    static QUuid addLocalAccount(RawClient& client, const QString& folder, const QString& prefix);

    /// The progress notifications of a plan that the client holds.
    static QList<QJsonObject> progress(const RawClient& client, const QUuid& plan);
    /// All entries of a history listing ("HistoryListByPlan" or "HistoryListByFiles") of one plan.
    static QJsonArray history(RawClient& client, const QString& command, const QUuid& plan);

    /// restic itself on a repository, for looking at what the service made; exit code in `exitCode`.
    static QByteArray restic(
        const QString& repository, const QString& password, const QStringList& arguments, int* exitCode = nullptr);
    /// The ids of the repository's snapshots, oldest first, and their times.
    static QList<QPair<QString, QDateTime>> snapshots(const QString& repository, const QString& password);

    /// Sets or clears (empty value) an option in the service's options.ini.
    static void setOption(const QString& dataDir, const QString& key, const QString& value);
};

} // namespace TWB::Test
