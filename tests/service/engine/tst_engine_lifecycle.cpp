#include "engine_test_support.h"
#include "raw_client.h"
#include "service_fixture.h"
#include "support/process_tree.h"

#include "platform/communication/notification_types.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/restore_file.h"
#include "service/store/database.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QSqlQuery>
#include <QtTest>

#include <csignal>
#include <memory>

using namespace TWB::Info::Plan;
using TWB::Test::EngineTestSupport;
using TWB::Test::RawClient;
using TWB::Test::RunOutcome;
using TWB::Test::ServiceFixture;
using TWB::Test::ServiceReply;

namespace Type = TWB::Common::Communication::Notification::Type;

namespace {

const QString prefix = QStringLiteral("desk");

QJsonObject byId(const QUuid& id)
{
    return {{QStringLiteral("ID"), id.toString()}};
}

} // namespace

/// How runs start, stop, fail and survive the service: progress, stops, time limits, actions, the
/// service's own death and the scheduler.
class TestEngineLifecycle : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<RawClient> m_client;
    QString m_root;
    QString m_storage;
    QUuid m_account;

    QString repository(const QUuid& plan) const
    {
        return m_storage + QLatin1Char('/') + prefix + QLatin1Char('/') + plan.toString(QUuid::WithoutBraces);
    }

    std::unique_ptr<BackupFile> backupPlan(const QString& name, const QStringList& items, const QString& password = {})
    {
        return EngineTestSupport::backupPlan(m_account, name, items, password);
    }

    /// The fake power supplies twbd reads: an adapter plugged in or not, and a battery.
    void plugIn(bool ac)
    {
        const QString power = m_root + QStringLiteral("/power");
        EngineTestSupport::writeFile(power + QStringLiteral("/AC/type"), "Mains\n");
        EngineTestSupport::writeFile(power + QStringLiteral("/AC/online"), ac ? "1\n" : "0\n");
        EngineTestSupport::writeFile(power + QStringLiteral("/BAT0/type"), "Battery\n");
        EngineTestSupport::writeFile(power + QStringLiteral("/BAT0/status"), ac ? "Charging\n" : "Discharging\n");
    }

    void slowDown(bool slow)
    {
        // 200 KByte/s: a few MByte take long enough to be watched and stopped.
        EngineTestSupport::setOption(
            m_service->dataDir(), QStringLiteral("Local Bandwidth"), slow ? QStringLiteral("200") : QString());
    }

    bool reconnect()
    {
        m_client = std::make_unique<RawClient>();
        return m_client->connectTo(m_service->socketPath());
    }

    QJsonObject row(const QUuid& plan)
    {
        return m_client->call(QStringLiteral("PlanGetInfo"), {{QStringLiteral("id"), plan.toString()}})
            .data.value(QStringLiteral("planInfo"))
            .toObject();
    }

    /// Starts the plan and waits until `count` progress messages of the running phase carry a `key` above 0.
    bool startAndWaitForProgress(const QUuid& plan, int count = 1, const char* key = nullptr)
    {
        m_client->clearNotifications();
        if (!m_client->call(QStringLiteral("PlanExecuteStart"), byId(plan)).success)
            return false;
        return QTest::qWaitFor(
            [&] {
                int seen = 0;
                for (const QJsonObject& message : EngineTestSupport::progress(*m_client, plan)) {
                    if (message.value(QStringLiteral("status_value")).toInt() == 2
                        && (!key || message.value(QLatin1String(key)).toDouble() > 0))
                        ++seen;
                }
                return seen >= count;
            },
            30000);
    }

    void setNextRuns(const QList<QUuid>& plans, const QString& nextRun, const QString& nextRunFull)
    {
        TWB::Service::Database store(m_service->storeFile());
        store.open();
        for (const QUuid& plan : plans) {
            QSqlQuery query = store.prepare(
                QStringLiteral("UPDATE plan_timings SET next_run_utc = ?, next_run_full_utc = ? WHERE plan_id = ?"));
            query.addBindValue(nextRun);
            query.addBindValue(nextRunFull);
            query.addBindValue(plan.toString());
            store.exec(query);
        }
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_service = std::make_unique<ServiceFixture>();
        m_root = m_service->environment().root();
        plugIn(true);
        qputenv("TWB_POWER_SUPPLY_DIR", QFile::encodeName(m_root + QStringLiteral("/power")));
        QVERIFY2(m_service->start(), qPrintable(m_service->process().output()));
        QVERIFY(reconnect());
        m_storage = m_root + QStringLiteral("/storage");
        m_account = EngineTestSupport::addLocalAccount(*m_client, m_storage, prefix);
        QVERIFY(!m_account.isNull());
    }

    void cleanup()
    {
        slowDown(false);
        plugIn(true);
        EngineTestSupport::setOption(m_service->dataDir(), QStringLiteral("BackUpOnBattery"), QString());
    }

    void progressArrivesAndAStopLeavesAUsableRepository()
    {
        const QString source = m_root + QStringLiteral("/large");
        const QString big = source + QStringLiteral("/video.raw");
        EngineTestSupport::writeFile(big, EngineTestSupport::noise(3 * 1024 * 1024, 7));
        EngineTestSupport::writeFile(source + QStringLiteral("/notes.txt"), "notes\n");
        auto plan = backupPlan(QStringLiteral("Large"), {source}, QStringLiteral("stop"));
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        slowDown(true);

        m_client->clearNotifications();
        QVERIFY(startAndWaitForProgress(plan->id(), 2, "size"));

        // One run per plan: a second start is refused, and so is removing a running plan.
        const ServiceReply again = m_client->call(QStringLiteral("PlanExecuteStart"), byId(plan->id()));
        QVERIFY(!again.success);
        QCOMPARE(again.error, QStringLiteral("The plan %1 is running already").arg(plan->id().toString()));
        QVERIFY(m_client->call(QStringLiteral("PlanRemove"), byId(plan->id()))
                    .error.contains(QStringLiteral("is running")));
        QCOMPARE(row(plan->id()).value(QStringLiteral("Status")).toInt(), 1);

        const QList<QJsonObject> progress = EngineTestSupport::progress(*m_client, plan->id());
        double lastSize = -1;
        double lastElapsed = -1;
        bool sawSpeed = false;
        bool sawFiles = false;
        for (const QJsonObject& message : progress) {
            for (const char* key : {"plan_id", "status", "status_value", "progress", "size", "speed", "elapsed",
                     "current_file", "files_copied"})
                QVERIFY2(message.contains(QLatin1String(key)), key);
            const int percent = message.value(QStringLiteral("progress")).toInt();
            QVERIFY(percent >= 0 && percent <= 100);
            QVERIFY(message.value(QStringLiteral("elapsed")).toDouble() >= lastElapsed);
            lastElapsed = message.value(QStringLiteral("elapsed")).toDouble();
            if (message.value(QStringLiteral("status_value")).toInt() != 2)
                continue;
            QCOMPARE(message.value(QStringLiteral("status")).toString(), QStringLiteral("Running"));
            QVERIFY(message.value(QStringLiteral("size")).toDouble() >= lastSize);
            lastSize = message.value(QStringLiteral("size")).toDouble();
            sawSpeed = sawSpeed || message.value(QStringLiteral("speed")).toDouble() > 0;
            sawFiles = sawFiles || message.value(QStringLiteral("files_copied")).toInt() > 0;
        }
        QVERIFY(sawSpeed);
        QVERIFY(sawFiles);
        QVERIFY(lastSize <= 3 * 1024 * 1024 + 6);

        QVERIFY(m_client->call(QStringLiteral("PlanExecuteStop"), byId(plan->id())).success);
        const RunOutcome stopped = EngineTestSupport::waitForEnd(*m_client, plan->id());
        QVERIFY(stopped.ended);
        QCOMPARE(stopped.status, 9);
        QCOMPARE(stopped.message, QStringLiteral("Stopped by the user"));
        QCOMPARE(stopped.row.value(QStringLiteral("Status")).toInt(), 2);
        QTRY_VERIFY(TWB::Test::descendants(m_service->process().pid()).isEmpty());

        // The repository is whole: it checks, holds no snapshot, and takes the next backup.
        int exitCode = -1;
        EngineTestSupport::restic(repository(plan->id()), QStringLiteral("stop"), {QStringLiteral("check")}, &exitCode);
        QCOMPARE(exitCode, 0);
        QVERIFY(EngineTestSupport::snapshots(repository(plan->id()), QStringLiteral("stop")).isEmpty());
        slowDown(false);
        QCOMPARE(EngineTestSupport::run(*m_client, plan->id()).status, 6);

        auto back = EngineTestSupport::restorePlan(
            m_account, {QStringLiteral("/TWB_VOLUMES/root") + source}, m_root + QStringLiteral("/large-out"));
        QVERIFY(EngineTestSupport::save(*m_client, *back));
        QCOMPARE(EngineTestSupport::run(*m_client, back->id()).status, 6);
        QCOMPARE(
            EngineTestSupport::tree(m_root + QStringLiteral("/large-out") + source), EngineTestSupport::tree(source));
    }

    void timeLimitStopsARun()
    {
        const QString source = m_root + QStringLiteral("/limited");
        EngineTestSupport::writeFile(
            source + QStringLiteral("/data.raw"), EngineTestSupport::noise(3 * 1024 * 1024, 8));
        auto plan = backupPlan(QStringLiteral("Limited"), {source}, QStringLiteral("limit"));
        plan->schedule().setStopAfter(2);
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        slowDown(true);
        const RunOutcome outcome = EngineTestSupport::run(*m_client, plan->id());
        QCOMPARE(outcome.status, 9);
        QCOMPARE(outcome.message, QStringLiteral("Stopped after the plan's time limit of 0:00:02"));
        const int duration = outcome.row.value(QStringLiteral("LastDuration")).toInt();
        QVERIFY2(duration >= 2 && duration < 20, qPrintable(QString::number(duration)));
    }

    void actionsFollowTheirFailureRules_data()
    {
        QTest::addColumn<bool>("preFails");
        QTest::addColumn<bool>("terminate");
        QTest::addColumn<bool>("postFails");
        QTest::addColumn<bool>("postAfterFailure");
        QTest::addColumn<int>("state");
        QTest::addColumn<QString>("trace");
        QTest::newRow("a failed pre-action stops the backup") << true << true << false << true << 8 << "pre\npost 8\n";
        QTest::newRow("no post-action after a failed backup unless asked")
            << true << true << false << false << 8 << "pre\n";
        QTest::newRow("a failed pre-action that need not stop it")
            << true << false << false << false << 7 << "pre\npost 7\n";
        QTest::newRow("a failed post-action") << false << false << true << false << 7 << "pre\npost 6\n";
    }

    void actionsFollowTheirFailureRules()
    {
        QFETCH(bool, preFails);
        QFETCH(bool, terminate);
        QFETCH(bool, postFails);
        QFETCH(bool, postAfterFailure);
        QFETCH(int, state);
        QFETCH(QString, trace);
        const QString source = m_root + QStringLiteral("/acted");
        EngineTestSupport::writeFile(source + QStringLiteral("/file.txt"), "file\n");
        const QString marker = m_root + QStringLiteral("/actions.log");
        QFile::remove(marker);
        static const QUuid id = QUuid::createUuid();
        auto plan = backupPlan(QStringLiteral("Acted"), {source}, QStringLiteral("acted"));
        plan->setId(id);
        auto& pre = plan->actions().pre();
        pre.setEnabled(true);
        pre.setProgram(QStringLiteral("/bin/sh"));
        pre.setArguments(QStringLiteral("-c \"echo pre >> %1; exit %2\"").arg(marker).arg(preFails ? 3 : 0));
        pre.setTerminateOnFailure(terminate);
        auto& post = plan->actions().post();
        post.setEnabled(true);
        post.setProgram(QStringLiteral("/bin/sh"));
        post.setArguments(
            QStringLiteral("-c \"echo post $TWB_RUN_STATE >> %1; exit %2\"").arg(marker).arg(postFails ? 1 : 0));
        post.setRunOnBackupFailure(postAfterFailure);
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        const RunOutcome outcome = EngineTestSupport::run(*m_client, plan->id());
        QCOMPARE(outcome.status, state);
        QCOMPARE(EngineTestSupport::readText(marker), trace);
        if (preFails && terminate)
            QVERIFY2(outcome.message.startsWith(QStringLiteral("The pre-action failed, so the backup did not run: "
                                                               "it ended with exit code 3")),
                qPrintable(outcome.message));
        if (postFails)
            QVERIFY2(outcome.message.contains(QStringLiteral("The post-action failed: it ended with exit code 1")),
                qPrintable(outcome.message));
    }

    void runCutShortByTheServiceIsInterruptedAtTheNextStart()
    {
        const QString source = m_root + QStringLiteral("/cut");
        EngineTestSupport::writeFile(
            source + QStringLiteral("/data.raw"), EngineTestSupport::noise(3 * 1024 * 1024, 9));
        auto plan = backupPlan(QStringLiteral("Cut"), {source}, QStringLiteral("cut"));
        plan->retentionPolicy().setType(Backup::RetentionPolicy::Custom);
        plan->retentionPolicy().setUseKeepVersion(true);
        plan->retentionPolicy().setKeepVersion(1);
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        slowDown(true);
        QVERIFY(startAndWaitForProgress(plan->id()));
        const QMap<qint64, QByteArray> engine = TWB::Test::descendants(m_service->process().pid());
        QVERIFY(!engine.isEmpty());
        // Lists and key files lie in folders only the service's user enters.
        const QString runRoot = m_service->dataDir() + QStringLiteral("/run");
        const QString folder = runRoot + QLatin1Char('/') + plan->id().toString(QUuid::WithoutBraces);
        const auto owner = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
        QCOMPARE(int(QFileInfo(runRoot).permissions() & QFileDevice::Permissions(0x7077)), int(owner));
        QCOMPARE(int(QFileInfo(folder).permissions() & QFileDevice::Permissions(0x7077)), int(owner));

        m_service->process().kill();
        // restic goes with the service that ran it, and leaves no lock that would hold up the next run.
        QTRY_VERIFY_WITH_TIMEOUT(
            [&] {
                for (auto it = engine.constBegin(); it != engine.constEnd(); ++it) {
                    if (QFile::exists(QStringLiteral("/proc/%1").arg(it.key())))
                        return false;
                }
                return true;
            }(),
            15000);
        QVERIFY(QFileInfo::exists(folder));
        QVERIFY2(m_service->start(), qPrintable(m_service->process().output()));
        QVERIFY(reconnect());
        QVERIFY(QDir(runRoot).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).isEmpty());
        const QJsonObject after = row(plan->id());
        QCOMPARE(after.value(QStringLiteral("LastRunStatus")).toInt(), 9);
        QCOMPARE(after.value(QStringLiteral("LastRunMessage")).toString(),
            QStringLiteral("The service stopped during the run"));
        QCOMPARE(after.value(QStringLiteral("Status")).toInt(), 2);
        const QJsonArray runs = EngineTestSupport::history(*m_client, QStringLiteral("HistoryListByPlan"), plan->id());
        QCOMPARE(runs.size(), 1);
        QCOMPARE(runs.first().toObject().value(QStringLiteral("Result")).toInt(), 9);

        // The killed run's lock holds up neither the backups nor their retention.
        slowDown(false);
        for (int run = 1; run <= 2; ++run) {
            EngineTestSupport::writeFile(source + QStringLiteral("/counter.txt"), QByteArray::number(run));
            const RunOutcome outcome = EngineTestSupport::run(*m_client, plan->id());
            QVERIFY2(outcome.status == 6, qPrintable(outcome.message));
        }
        QCOMPARE(EngineTestSupport::snapshots(repository(plan->id()), QStringLiteral("cut")).size(), 1);
        QVERIFY(QDir(repository(plan->id()) + QStringLiteral("/locks")).entryList(QDir::Files).isEmpty());
    }

    void stoppedServiceRecordsItsRunsAsInterrupted()
    {
        const QString source = m_root + QStringLiteral("/terminated");
        EngineTestSupport::writeFile(
            source + QStringLiteral("/data.raw"), EngineTestSupport::noise(3 * 1024 * 1024, 10));
        auto plan = backupPlan(QStringLiteral("Terminated"), {source}, QStringLiteral("terminated"));
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        slowDown(true);
        QVERIFY(startAndWaitForProgress(plan->id()));
        const qint64 service = m_service->process().pid();
        const QMap<qint64, QByteArray> engine = TWB::Test::descendants(service);
        QVERIFY(!engine.isEmpty());

        // A service asked to stop ends its runs and writes them down before it goes.
        QVERIFY(m_service->process().terminate());
        for (auto it = engine.constBegin(); it != engine.constEnd(); ++it)
            QVERIFY(!QFile::exists(QStringLiteral("/proc/%1").arg(it.key())));
        {
            TWB::Service::Database store(m_service->storeFile());
            store.open();
            QSqlQuery runs = store.prepare(QStringLiteral("SELECT result, error_message FROM runs WHERE plan_id = ?"));
            runs.addBindValue(plan->id().toString());
            store.exec(runs);
            QVERIFY(runs.next());
            QCOMPARE(runs.value(0).toInt(), 9);
            QCOMPARE(runs.value(1).toString(), QStringLiteral("The service stopped during the run"));
            QSqlQuery status = store.prepare(QStringLiteral("SELECT status, last_run_status FROM plans WHERE id = ?"));
            status.addBindValue(plan->id().toString());
            store.exec(status);
            QVERIFY(status.next());
            QCOMPARE(status.value(0).toInt(), 2);
            QCOMPARE(status.value(1).toInt(), 9);
        }
        QVERIFY2(m_service->start(), qPrintable(m_service->process().output()));
        QVERIFY(reconnect());
    }

    void scheduledPlanRunsByItself()
    {
        const QString source = m_root + QStringLiteral("/scheduled");
        EngineTestSupport::writeFile(source + QStringLiteral("/file.txt"), "file\n");
        auto plan = backupPlan(QStringLiteral("Scheduled"), {source}, QStringLiteral("scheduled"));
        plan->schedule().setEnable(true);
        plan->schedule().setType(Schedule::SpecificDate);
        plan->schedule().setSpecificDate(QDateTime::currentDateTime().addSecs(2));
        m_client->clearNotifications();
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        QVERIFY(!row(plan->id()).value(QStringLiteral("NextRun")).toString().isEmpty());
        const RunOutcome outcome = EngineTestSupport::waitForEnd(*m_client, plan->id(), 60000);
        QVERIFY(outcome.ended);
        QVERIFY(outcome.startedFirst);
        QCOMPARE(outcome.status, 6);
        // A specific date fires once.
        QCOMPARE(outcome.row.value(QStringLiteral("NextRun")).toString(), QString());

        // A scheduled run that cannot start is a failed run with its reason, and the plan's last result.
        plan->setItems({});
        plan->schedule().setSpecificDate(QDateTime::currentDateTime().addSecs(2));
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        QTRY_VERIFY_WITH_TIMEOUT(row(plan->id()).value(QStringLiteral("NextRun")).toString().isEmpty(), 30000);
        // Once, with whole seconds in the store and milliseconds in the schedule.
        QCOMPARE(EngineTestSupport::history(*m_client, QStringLiteral("HistoryListByPlan"), plan->id()).size(), 2);
        const QJsonObject refused
            = EngineTestSupport::history(*m_client, QStringLiteral("HistoryListByPlan"), plan->id()).first().toObject();
        const QString reason
            = QStringLiteral("The scheduled run did not start: The plan \"Scheduled\" names no files or folders");
        QCOMPARE(refused.value(QStringLiteral("Result")).toInt(), 8);
        const QJsonObject after = row(plan->id());
        QCOMPARE(after.value(QStringLiteral("LastRunStatus")).toInt(), 8);
        QCOMPARE(after.value(QStringLiteral("LastRunMessage")).toString(), reason);
    }

    void scheduledBackupsKeepOffBattery()
    {
        const QString source = m_root + QStringLiteral("/unplugged");
        EngineTestSupport::writeFile(source + QStringLiteral("/file.txt"), "file\n");
        auto plan = backupPlan(QStringLiteral("Unplugged"), {source}, QStringLiteral("unplugged"));
        plan->schedule().setEnable(true);
        plan->schedule().setType(Schedule::SpecificDate);
        const auto runAt = [&](int seconds) {
            plan->schedule().setSpecificDate(QDateTime::currentDateTime().addSecs(seconds));
            m_client->clearNotifications();
            return EngineTestSupport::save(*m_client, *plan);
        };
        const QJsonObject options {{QStringLiteral("BackUpOnBattery"), QStringLiteral("false")}};
        QVERIFY(m_client->call(QStringLiteral("SetProductOptions"), {{QStringLiteral("options"), options}}).success);
        plugIn(false);

        QVERIFY(runAt(2));
        QTRY_VERIFY_WITH_TIMEOUT(row(plan->id()).value(QStringLiteral("NextRun")).toString().isEmpty(), 30000);
        const QJsonArray refused
            = EngineTestSupport::history(*m_client, QStringLiteral("HistoryListByPlan"), plan->id());
        QCOMPARE(refused.size(), 1);
        QCOMPARE(refused.first().toObject().value(QStringLiteral("Result")).toInt(), 8);
        QCOMPARE(row(plan->id()).value(QStringLiteral("LastRunMessage")).toString(),
            QStringLiteral("The scheduled run did not start: The computer runs on battery power, and backups on "
                           "battery power are turned off"));

        // The user's own run is the user's choice.
        RunOutcome outcome = EngineTestSupport::run(*m_client, plan->id());
        QCOMPARE(outcome.status, 6);

        plugIn(true);
        QVERIFY(runAt(2));
        outcome = EngineTestSupport::waitForEnd(*m_client, plan->id(), 60000);
        QVERIFY(outcome.ended);
        QCOMPARE(outcome.status, 6);

        // Pulled out during the run: stopped as a user's Stop stops it, in its own state.
        EngineTestSupport::writeFile(
            source + QStringLiteral("/data.raw"), EngineTestSupport::noise(4 * 1024 * 1024, 9));
        slowDown(true);
        QVERIFY(runAt(2));
        QTRY_COMPARE_WITH_TIMEOUT(row(plan->id()).value(QStringLiteral("Status")).toInt(), 1, 30000);
        plugIn(false);
        outcome = EngineTestSupport::waitForEnd(*m_client, plan->id(), 60000);
        QVERIFY(outcome.ended);
        QCOMPARE(outcome.status, 101);
        QCOMPARE(outcome.lastState, 101);
        QCOMPARE(outcome.message, QStringLiteral("Stopped because the computer switched to battery power"));
        const QList<QJsonObject> progress = EngineTestSupport::progress(*m_client, plan->id());
        QVERIFY(!progress.isEmpty());
        QCOMPARE(progress.last().value(QStringLiteral("status")).toString(), QStringLiteral("Stopping"));
    }

    void missedPlansRunAtStartWhenTheyAsk()
    {
        const QString source = m_root + QStringLiteral("/missed");
        for (int i = 0; i < 3; ++i)
            EngineTestSupport::writeFile(source + QStringLiteral("/file%1.txt").arg(i), QByteArray::number(i));
        auto missed = backupPlan(QStringLiteral("Missed"), {source}, QStringLiteral("missed"));
        auto left = backupPlan(QStringLiteral("Left"), {source}, QStringLiteral("left"));
        auto ahead = backupPlan(QStringLiteral("Ahead"), {source}, QStringLiteral("ahead"));
        for (BackupFile* plan : {missed.get(), left.get(), ahead.get()}) {
            plan->schedule().setEnable(true);
            plan->schedule().setType(Schedule::Recurring);
            plan->schedule().setFrequencyType(Schedule::Daily);
            plan->schedule().setOccursAt(QTime(3, 0));
            plan->forceFullSchedule().setEnable(true);
            plan->forceFullSchedule().setType(Schedule::Recurring);
            plan->forceFullSchedule().setFrequencyType(Schedule::Weekly);
            plan->forceFullSchedule().setWeeklyFrequency(QBitArray(7, true));
            plan->forceFullSchedule().setOccursAt(QTime(3, 0));
        }
        missed->setRunMissedPlan(true);
        left->setRunMissedPlan(false);
        QVERIFY(EngineTestSupport::save(*m_client, *missed));
        QVERIFY(EngineTestSupport::save(*m_client, *left));
        QVERIFY(EngineTestSupport::save(*m_client, *ahead));
        // Unchanged files are read again only when a full backup is due.
        QCOMPARE(
            EngineTestSupport::run(*m_client, missed->id()).row.value(QStringLiteral("LastUploadedCount")).toInt(), 3);
        QCOMPARE(
            EngineTestSupport::run(*m_client, missed->id()).row.value(QStringLiteral("LastUploadedCount")).toInt(), 0);
        QCOMPARE(EngineTestSupport::run(*m_client, missed->id(), true)
                     .row.value(QStringLiteral("LastUploadedCount"))
                     .toInt(),
            3);

        QVERIFY(m_service->process().terminate());
        const QString hourAgo
            = QDateTime::currentDateTimeUtc().addSecs(-3600).toString(QStringLiteral("yyyyMMddhhmmss"));
        setNextRuns({missed->id(), left->id()}, hourAgo, hourAgo);
        // What a clock that stood a month ahead, then went back, leaves behind.
        const QString monthAhead
            = QDateTime::currentDateTimeUtc().addDays(30).toString(QStringLiteral("yyyyMMddhhmmss"));
        setNextRuns({ahead->id()}, monthAhead, monthAhead);
        QVERIFY2(m_service->start(), qPrintable(m_service->process().output()));
        QVERIFY(reconnect());
        QTRY_VERIFY_WITH_TIMEOUT(row(missed->id()).value(QStringLiteral("Status")).toInt() == 2
                && EngineTestSupport::history(*m_client, QStringLiteral("HistoryListByPlan"), missed->id()).size() == 4,
            60000);
        const QJsonObject ran = row(missed->id());
        QCOMPARE(ran.value(QStringLiteral("LastRunStatus")).toInt(), 6);
        QCOMPARE(ran.value(QStringLiteral("LastUploadedCount")).toInt(), 3); // the full backup was due too
        const QJsonObject waited = row(left->id());
        QCOMPARE(waited.value(QStringLiteral("LastRunStatus")).toString(), QString());
        QVERIFY(EngineTestSupport::history(*m_client, QStringLiteral("HistoryListByPlan"), left->id()).isEmpty());
        // All wait for their next time now, as the schedule gives it.
        for (const QJsonObject& plan : {ran, waited, row(ahead->id())}) {
            const QDateTime next = QDateTime::fromString(plan.value(QStringLiteral("NextRun")).toString(), Qt::ISODate);
            QVERIFY(next > QDateTime::currentDateTimeUtc());
            QVERIFY(next <= QDateTime::currentDateTimeUtc().addDays(1));
            const QDateTime full
                = QDateTime::fromString(plan.value(QStringLiteral("NextRunFull")).toString(), Qt::ISODate);
            QVERIFY(!full.isValid() || full <= QDateTime::currentDateTimeUtc().addDays(1));
        }
    }

    void catalogTakesWhatResticReadNotWhatCameLater()
    {
        const QString source = m_root + QStringLiteral("/changing");
        const QString early = source + QStringLiteral("/a-first.txt");
        const QDateTime read(QDate(2020, 1, 1), QTime(12, 0), Qt::UTC);
        EngineTestSupport::writeFile(early, "before\n", read);
        EngineTestSupport::writeFile(source + QStringLiteral("/big.raw"), EngineTestSupport::noise(1024 * 1024, 11));
        auto plan = backupPlan(QStringLiteral("Changing"), {source}, QStringLiteral("changing"));
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        slowDown(true);
        QVERIFY(startAndWaitForProgress(plan->id(), 1, "files_copied"));
        // restic has read the small file; it changes before the backup ends.
        EngineTestSupport::writeFile(
            early, "changed while the backup ran\n", QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC));
        QCOMPARE(EngineTestSupport::waitForEnd(*m_client, plan->id()).status, 6);
        const QJsonArray versions
            = m_client
                  ->call(QStringLiteral("GetRestoreContentManualMode"),
                      {{QStringLiteral("destination"), m_account.toString()},
                          {QStringLiteral("path"), QStringLiteral("/%1/TWB_VOLUMES/root%2").arg(prefix, early)}})
                  .data.value(QStringLiteral("contentRestore"))
                  .toArray();
        QCOMPARE(versions.size(), 1);
        QCOMPARE(versions.first().toObject().value(QStringLiteral("original_size")).toInt(), 7);
        QCOMPARE(versions.first().toObject().value(QStringLiteral("date_modified_utc")).toString(),
            read.toString(QStringLiteral("yyyyMMddhhmmss")));
    }

    void cutDuringPruneLeavesTheCatalogTrue_data()
    {
        QTest::addColumn<bool>("kill");
        QTest::newRow("stopped") << false;
        // A killed service matches the catalog at the plan's next retention, even one that forgets nothing.
        QTest::newRow("service killed") << true;
    }

    void cutDuringPruneLeavesTheCatalogTrue()
    {
        QFETCH(bool, kill);
        const QString source = m_root + QStringLiteral("/pruned-") + QString::number(kill);
        auto plan = backupPlan(QStringLiteral("Pruned"), {source}, QStringLiteral("pruned"));
        plan->retentionPolicy().setType(Backup::RetentionPolicy::Custom);
        plan->retentionPolicy().setUseKeepVersion(true);
        plan->retentionPolicy().setKeepVersion(1);
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        EngineTestSupport::writeFile(
            source + QStringLiteral("/data.raw"), EngineTestSupport::noise(4 * 1024 * 1024, 12));
        QCOMPARE(EngineTestSupport::run(*m_client, plan->id()).status, 6);

        // The second backup makes the first one's data unused: forgetting it is quick, pruning is not.
        EngineTestSupport::writeFile(
            source + QStringLiteral("/data.raw"), EngineTestSupport::noise(4 * 1024 * 1024, 13));
        const QDir snapshots(repository(plan->id()) + QStringLiteral("/snapshots"));
        m_client->clearNotifications();
        QVERIFY(m_client->call(QStringLiteral("PlanExecuteStart"), byId(plan->id())).success);
        bool grew = false;
        QVERIFY(QTest::qWaitFor(
            [&] {
                const int count = snapshots.entryList(QDir::Files).size();
                grew = grew || count == 2;
                return grew && count == 1;
            },
            60000));
        if (kill) {
            const QMap<qint64, QByteArray> engine = TWB::Test::descendants(m_service->process().pid());
            m_service->process().kill();
            for (auto it = engine.constBegin(); it != engine.constEnd(); ++it)
                QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(QStringLiteral("/proc/%1").arg(it.key())), 15000);
            QVERIFY2(m_service->start(), qPrintable(m_service->process().output()));
            QVERIFY(reconnect());
            plan->retentionPolicy().setUseKeepVersion(false);
            QVERIFY(EngineTestSupport::save(*m_client, *plan));
            const RunOutcome again = EngineTestSupport::run(*m_client, plan->id());
            QVERIFY2(again.status == 6, qPrintable(again.message));
        } else {
            QVERIFY(m_client->call(QStringLiteral("PlanExecuteStop"), byId(plan->id())).success);
            QVERIFY(EngineTestSupport::waitForEnd(*m_client, plan->id()).ended);
        }

        // Whatever the stop cut short, the catalog names only snapshots the repository holds.
        const auto held = EngineTestSupport::snapshots(repository(plan->id()), QStringLiteral("pruned"));
        QCOMPARE(held.size(), kill ? 2 : 1);
        const QJsonArray versions
            = m_client
                  ->call(QStringLiteral("GetRestoreContentManualMode"),
                      {{QStringLiteral("destination"), m_account.toString()},
                          {QStringLiteral("path"),
                              QStringLiteral("/%1/TWB_VOLUMES/root%2/data.raw").arg(prefix, source)}})
                  .data.value(QStringLiteral("contentRestore"))
                  .toArray();
        QCOMPARE(versions.size(), 1);
        QVERIFY(held.first().first.startsWith(
            versions.first().toObject().value(QStringLiteral("Path")).toString().section(QLatin1Char('@'), 1)));
    }
};

QTEST_GUILESS_MAIN(TestEngineLifecycle)
#include "tst_engine_lifecycle.moc"
