#include "engine_test_support.h"
#include "raw_client.h"
#include "service_fixture.h"

#include "platform/communication/notification_types.h"
#include "platform/crypt/local_password.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/restore_file.h"
#include "service/store/database.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QProcess>
#include <QScopeGuard>
#include <QSqlQuery>
#include <QtTest>

#include <memory>

using namespace TWB::Info::Plan;
using TWB::Test::EngineTestSupport;
using TWB::Test::RawClient;
using TWB::Test::RunOutcome;
using TWB::Test::ServiceFixture;
using TWB::Test::ServiceReply;

namespace Type = TWB::Common::Communication::Notification::Type;

namespace {

const QString prefix = QStringLiteral("laptop");

QString catalogPath(const QString& real)
{
    return QStringLiteral("/%1/TWB_VOLUMES/root%2").arg(prefix, real);
}

} // namespace

/// Backups and restores through the real twbd into real restic repositories on the file system.
class TestEngineRuns : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<RawClient> m_client;
    QString m_root;
    QString m_storage;
    QUuid m_account;
    QUuid m_documents; // the first test's backup, under the password "correct horse"
    QString m_documentsSource;
    QUuid m_selection; // one plan whose selection each row changes

    QString repository(const QUuid& plan) const
    {
        return m_storage + QLatin1Char('/') + prefix + QLatin1Char('/') + plan.toString(QUuid::WithoutBraces);
    }

    std::unique_ptr<BackupFile> backupPlan(const QString& name, const QStringList& items, const QString& password = {})
    {
        return EngineTestSupport::backupPlan(m_account, name, items, password);
    }

    std::unique_ptr<RestoreFile> restorePlan(const QStringList& items, const QString& destination)
    {
        return EngineTestSupport::restorePlan(m_account, items, destination);
    }

    RunOutcome restore(RestoreFile& plan)
    {
        if (!EngineTestSupport::save(*m_client, plan))
            return RunOutcome();
        return EngineTestSupport::run(*m_client, plan.id());
    }

    QJsonArray listing(const QString& command, const QString& path)
    {
        return m_client
            ->call(command, {{QStringLiteral("destination"), m_account.toString()}, {QStringLiteral("path"), path}})
            .data.value(QStringLiteral("contentRestore"))
            .toArray();
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_service = std::make_unique<ServiceFixture>();
        QVERIFY2(m_service->start(), qPrintable(m_service->process().output()));
        m_client = std::make_unique<RawClient>();
        QVERIFY(m_client->connectTo(m_service->socketPath()));
        m_root = m_service->environment().root();
        m_storage = m_root + QStringLiteral("/storage");
        m_account = EngineTestSupport::addLocalAccount(*m_client, m_storage, prefix);
        QVERIFY(!m_account.isNull());
    }

    void cleanup()
    {
        EngineTestSupport::setOption(m_service->dataDir(), QStringLiteral("Local Bandwidth"), QString());
        // Nothing a run made for itself stays behind.
        QTRY_VERIFY(QDir(m_service->dataDir() + QStringLiteral("/run"))
                        .entryList(QDir::NoDotAndDotDot | QDir::AllEntries)
                        .isEmpty());
    }

    void backupThenRestoreGivesIdenticalFiles()
    {
        const QString source = m_root + QStringLiteral("/documents");
        EngineTestSupport::writeFile(source + QStringLiteral("/letter.txt"), "Dear Alice,\n");
        EngineTestSupport::writeFile(source + QStringLiteral("/empty"), QByteArray());
        EngineTestSupport::writeFile(
            source + QStringLiteral("/photos/2026/beach.raw"), EngineTestSupport::noise(300000, 1));
        EngineTestSupport::writeFile(source + QStringLiteral("/Übersicht März.txt"), "Umlaute\n");
        // The same bytes as the letter: restic stores them once, and the history still gives its size.
        EngineTestSupport::writeFile(source + QStringLiteral("/.profile"), "Dear Alice,\n");
        QVERIFY(QFile::link(QStringLiteral("letter.txt"), source + QStringLiteral("/latest")));
        const QMap<QString, QByteArray> original = EngineTestSupport::tree(source);

        auto plan = backupPlan(QStringLiteral("Documents"), {QStringLiteral("/TWB_VOLUMES/root") + source},
            QStringLiteral("correct horse"));
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        const RunOutcome backup = EngineTestSupport::run(*m_client, plan->id());
        m_documents = plan->id();
        m_documentsSource = source;
        QVERIFY(backup.ended);
        QVERIFY(backup.startedFirst);
        QCOMPARE(backup.lastState, 6);
        QCOMPARE(backup.status, 6);
        QCOMPARE(backup.row.value(QStringLiteral("Status")).toInt(), 2);
        // restic backs up the link but counts and names files only.
        QCOMPARE(backup.row.value(QStringLiteral("LastUploadedCount")).toInt(), 5);
        QCOMPARE(backup.row.value(QStringLiteral("LastFailedCount")).toInt(), 0);
        QCOMPARE(backup.row.value(QStringLiteral("LastFileCount")).toInt(), 5);
        QVERIFY(backup.row.value(QStringLiteral("LastUploadedSize")).toDouble() > 300000);
        QVERIFY(!backup.row.value(QStringLiteral("LastRunTime")).toString().isEmpty());
        QVERIFY2(backup.message.startsWith(QStringLiteral("5 files backed up")), qPrintable(backup.message));
        QVERIFY(m_client->waitForNotification(QLatin1String(Type::PlanUpdated), plan->id().toString()));

        // One repository at <account folder>/<prefix>/<plan id>, under the plan's password.
        QVERIFY(QFile::exists(repository(plan->id()) + QStringLiteral("/config")));
        QCOMPARE(EngineTestSupport::snapshots(repository(plan->id()), QStringLiteral("correct horse")).size(), 1);
        int exitCode = 0;
        EngineTestSupport::restic(
            repository(plan->id()), QStringLiteral("wrong"), {QStringLiteral("snapshots")}, &exitCode);
        QVERIFY(exitCode != 0);

        // History: the run and one operation per file, with its size and time.
        const QJsonArray runs = EngineTestSupport::history(*m_client, QStringLiteral("HistoryListByPlan"), plan->id());
        QCOMPARE(runs.size(), 1);
        QCOMPARE(runs.first().toObject().value(QStringLiteral("Result")).toInt(), 6);
        QCOMPARE(runs.first().toObject().value(QStringLiteral("Operation")).toInt(), 0);
        QCOMPARE(runs.first().toObject().value(QStringLiteral("FileOperationsTotalCount")).toInt(), 5);
        const QJsonArray operations
            = EngineTestSupport::history(*m_client, QStringLiteral("HistoryListByFiles"), plan->id());
        QMap<QString, QJsonObject> uploaded;
        for (const QJsonValue& value : operations) {
            QCOMPARE(value.toObject().value(QStringLiteral("Operation")).toInt(), 1);
            uploaded.insert(value.toObject().value(QStringLiteral("File")).toString(), value.toObject());
        }
        QCOMPARE(uploaded.keys(),
            QStringList({source + QStringLiteral("/.profile"), source + QStringLiteral("/empty"),
                source + QStringLiteral("/letter.txt"), source + QStringLiteral("/photos/2026/beach.raw"),
                source + QStringLiteral("/Übersicht März.txt")}));
        for (auto it = uploaded.cbegin(); it != uploaded.cend(); ++it)
            QCOMPARE(qint64(it.value().value(QStringLiteral("Size")).toDouble()), QFileInfo(it.key()).size());
        const QJsonObject beach = uploaded.value(source + QStringLiteral("/photos/2026/beach.raw"));
        QCOMPARE(beach.value(QStringLiteral("DateModified")).toString(),
            QFileInfo(source + QStringLiteral("/photos/2026/beach.raw"))
                .lastModified()
                .toUTC()
                .toString(QStringLiteral("yyyyMMddhhmmss")));

        // Catalog: the prefix, the folders and files, and a version under each file.
        QJsonArray top = listing(QStringLiteral("GetRestoreContent"), QString());
        QVERIFY(top.contains(QJsonObject {{QStringLiteral("Name"), prefix},
            {QStringLiteral("Path"), QLatin1Char('/') + prefix}, {QStringLiteral("IsChangeable"), true},
            {QStringLiteral("IsExpandable"), true}, {QStringLiteral("Type"), 2}}));
        const QJsonArray files = listing(QStringLiteral("GetRestoreContentManualMode"), catalogPath(source));
        QStringList names;
        for (const QJsonValue& value : files)
            names << value.toObject().value(QStringLiteral("Name")).toString();
        QCOMPARE(names,
            QStringList({QStringLiteral("photos"), QStringLiteral(".profile"), QStringLiteral("empty"),
                QStringLiteral("letter.txt"), QStringLiteral("Übersicht März.txt")}));
        const QJsonArray versions = listing(
            QStringLiteral("GetRestoreContentManualMode"), catalogPath(source + QStringLiteral("/letter.txt")));
        QCOMPARE(versions.size(), 1);
        const QString snapshot
            = EngineTestSupport::snapshots(repository(plan->id()), QStringLiteral("correct horse")).first().first;
        QVERIFY(snapshot.startsWith(
            versions.first().toObject().value(QStringLiteral("Path")).toString().section(QLatin1Char('@'), 1)));
        QCOMPARE(versions.first().toObject().value(QStringLiteral("original_size")).toInt(), 12);
        QCOMPARE(versions.first().toObject().value(QStringLiteral("is_encrypted")).toBool(), true);

        // A run-once restore into another folder gives the same bytes, and then goes.
        const QString target = m_root + QStringLiteral("/restored");
        auto back = restorePlan({catalogPath(source)}, target);
        back->setDeletePlan(Restore::DeleteAfterRun);
        const RunOutcome restored = restore(*back);
        QCOMPARE(restored.lastState, 6);
        QCOMPARE(EngineTestSupport::tree(target + source), original);
        QCOMPARE(QDir(target).entryList(QDir::Hidden | QDir::AllEntries | QDir::NoDotAndDotDot),
            QStringList({source.section(QLatin1Char('/'), 1, 1)}));
        QVERIFY(m_client->waitForNotification(QLatin1String(Type::PlanRemoved), back->id().toString()));
        QVERIFY(m_client->call(QStringLiteral("PlanGetInfo"), {{QStringLiteral("id"), back->id().toString()}})
                    .data.value(QStringLiteral("planInfo"))
                    .toObject()
                    .isEmpty());
        const QJsonArray restoreRuns
            = EngineTestSupport::history(*m_client, QStringLiteral("HistoryListByPlan"), back->id());
        QCOMPARE(restoreRuns.size(), 1);
        QCOMPARE(restoreRuns.first().toObject().value(QStringLiteral("Operation")).toInt(), 1);
        const QJsonArray restoredFiles
            = EngineTestSupport::history(*m_client, QStringLiteral("HistoryListByFiles"), back->id());
        QCOMPARE(restoredFiles.size(), 6); // the link is placed like a file
        for (const QJsonValue& value : restoredFiles) {
            QCOMPARE(value.toObject().value(QStringLiteral("Operation")).toInt(), 2);
            QVERIFY(value.toObject().value(QStringLiteral("File")).toString().startsWith(target + source));
        }
    }

    void planWithoutPasswordKeepsItsKeyAndChangesItWithThePlan()
    {
        const QString source = m_root + QStringLiteral("/notes");
        EngineTestSupport::writeFile(source + QStringLiteral("/todo.txt"), "milk\n");
        auto plan = backupPlan(QStringLiteral("Notes"), {source});
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        QCOMPARE(EngineTestSupport::run(*m_client, plan->id()).status, 6);

        // The key the service made is kept sealed in its store, and opens the repository.
        TWB::Service::Database store(m_service->storeFile());
        store.open();
        QSqlQuery query = store.prepare(QStringLiteral("SELECT key, generated FROM repository_keys WHERE plan_id = ?"));
        query.addBindValue(plan->id().toString());
        store.exec(query);
        QVERIFY(query.next());
        QVERIFY(query.value(1).toBool());
        const QString key = SHARED::cryptNS::decrypt_local_password(query.value(0).toString());
        QVERIFY(key.size() >= 40);
        QVERIFY(!m_service->storeBytes().contains(key.toUtf8()));
        QCOMPARE(EngineTestSupport::snapshots(repository(plan->id()), key).size(), 1);
        // Its key follows from what the service keeps, or from the plan's id: nothing to call encrypted.
        const QJsonArray open
            = listing(QStringLiteral("GetRestoreContentManualMode"), catalogPath(source + QStringLiteral("/todo.txt")));
        QCOMPARE(open.size(), 1);
        QCOMPARE(open.first().toObject().value(QStringLiteral("is_encrypted")).toBool(), false);

        // Encryption turned on later: the repository takes the plan's password and only that.
        plan->encryption().setEnabled(true);
        plan->encryption().setPassword(QStringLiteral("now secret"));
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        const RunOutcome second = EngineTestSupport::run(*m_client, plan->id());
        QCOMPARE(second.status, 6);
        QCOMPARE(EngineTestSupport::snapshots(repository(plan->id()), QStringLiteral("now secret")).size(), 2);
        int exitCode = 0;
        EngineTestSupport::restic(repository(plan->id()), key, {QStringLiteral("snapshots")}, &exitCode);
        QVERIFY(exitCode != 0);
        const QByteArray keys = EngineTestSupport::restic(repository(plan->id()), QStringLiteral("now secret"),
            {QStringLiteral("key"), QStringLiteral("list"), QStringLiteral("--json")});
        QCOMPARE(QJsonDocument::fromJson(keys).array().size(), 1);
    }

    void pointInTimePicksTheRightVersion()
    {
        const QString source = m_root + QStringLiteral("/versions");
        const QString file = source + QStringLiteral("/report.txt");
        auto plan = backupPlan(QStringLiteral("Versions"), {source}, QStringLiteral("pit"));
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        for (const char* content : {"first\n", "second\n", "third\n"}) {
            EngineTestSupport::writeFile(file, content);
            QCOMPARE(EngineTestSupport::run(*m_client, plan->id()).status, 6);
        }
        const auto snapshots = EngineTestSupport::snapshots(repository(plan->id()), QStringLiteral("pit"));
        QCOMPARE(snapshots.size(), 3);

        struct Case
        {
            const char* name;
            Restore::RestoreType type;
            QDateTime when;
            QString item;
            QString expected;
        };
        const qint64 between
            = (snapshots.at(1).second.toMSecsSinceEpoch() + snapshots.at(2).second.toMSecsSinceEpoch()) / 2;
        const QList<Case> cases = {
            {"latest", Restore::LatestVersion, QDateTime(), catalogPath(file), QStringLiteral("third\n")},
            {"between the second and third", Restore::PointInTime, QDateTime::fromMSecsSinceEpoch(between, Qt::UTC),
                catalogPath(source), QStringLiteral("second\n")},
            {"at the first", Restore::PointInTime, snapshots.at(0).second, catalogPath(file),
                QStringLiteral("first\n")},
            {"a version by name", Restore::LatestVersion, QDateTime(),
                catalogPath(file) + QLatin1Char('@') + snapshots.at(0).first, QStringLiteral("first\n")},
        };
        int n = 0;
        for (const Case& c : cases) {
            const QString target = m_root + QStringLiteral("/pit-%1").arg(++n);
            auto back = restorePlan({c.item}, target);
            back->setRestoreType(c.type);
            back->setPointInTime(c.when);
            const RunOutcome outcome = restore(*back);
            QVERIFY2(outcome.status == 6, c.name);
            QVERIFY2(EngineTestSupport::readText(target + file) == c.expected, c.name);
        }

        // Before the first backup there was nothing: the run fails and writes nothing.
        const QString target = m_root + QStringLiteral("/pit-none");
        auto before = restorePlan({catalogPath(file)}, target);
        before->setRestoreType(Restore::PointInTime);
        before->setPointInTime(snapshots.at(0).second.addSecs(-60));
        const RunOutcome nothing = restore(*before);
        QCOMPARE(nothing.status, 8);
        QVERIFY2(nothing.message.contains(QStringLiteral("No backup held")), qPrintable(nothing.message));
        QVERIFY(!QFile::exists(target + file));
    }

    void overwriteRulesDecideWhatAnExistingFileBecomes_data()
    {
        QTest::addColumn<bool>("skip");
        QTest::addColumn<bool>("onlyNewer");
        QTest::addColumn<QString>("older");
        QTest::addColumn<QString>("newer");
        QTest::newRow("skip existing files") << true << false << "local older\n"
                                             << "local newer\n";
        QTest::newRow("overwrite") << false << false << "backed up\n"
                                   << "backed up\n";
        QTest::newRow("overwrite only with newer files") << false << true << "backed up\n"
                                                         << "local newer\n";
    }

    void overwriteRulesDecideWhatAnExistingFileBecomes()
    {
        QFETCH(bool, skip);
        QFETCH(bool, onlyNewer);
        QFETCH(QString, older);
        QFETCH(QString, newer);
        const QString source = m_root + QStringLiteral("/rules");
        static QUuid backedUp;
        if (backedUp.isNull()) {
            for (const QString& name :
                {QStringLiteral("older.txt"), QStringLiteral("newer.txt"), QStringLiteral("missing.txt")})
                EngineTestSupport::writeFile(source + QLatin1Char('/') + name, "backed up\n");
            auto plan = backupPlan(QStringLiteral("Rules"), {source}, QStringLiteral("rules"));
            QVERIFY(EngineTestSupport::save(*m_client, *plan));
            QCOMPARE(EngineTestSupport::run(*m_client, plan->id()).status, 6);
            backedUp = plan->id();
        }
        const QString target = m_root + QStringLiteral("/rules-")
            + QString::fromLatin1(QTest::currentDataTag()).replace(QLatin1Char(' '), QLatin1Char('-'));
        const QString place = target + source;
        EngineTestSupport::writeFile(
            place + QStringLiteral("/older.txt"), "local older\n", QDateTime(QDate(2001, 1, 1), QTime(12, 0), Qt::UTC));
        EngineTestSupport::writeFile(
            place + QStringLiteral("/newer.txt"), "local newer\n", QDateTime::currentDateTimeUtc().addDays(1));

        auto back = restorePlan({catalogPath(source)}, target);
        back->setSkipExistingFiles(skip);
        back->setOnlyNewFiles(onlyNewer);
        const RunOutcome outcome = restore(*back);
        QCOMPARE(outcome.status, 6);
        QCOMPARE(EngineTestSupport::readText(place + QStringLiteral("/older.txt")), older);
        QCOMPARE(EngineTestSupport::readText(place + QStringLiteral("/newer.txt")), newer);
        QCOMPARE(EngineTestSupport::readText(place + QStringLiteral("/missing.txt")), QStringLiteral("backed up\n"));
        const int replaced = (older != QLatin1String("local older\n")) + (newer != QLatin1String("local newer\n"));
        QCOMPARE(EngineTestSupport::history(*m_client, QStringLiteral("HistoryListByFiles"), back->id()).size(),
            1 + replaced);
        // Nothing of the staging folder stays beside the files.
        QCOMPARE(QDir(target).entryList(QDir::Hidden | QDir::AllEntries | QDir::NoDotAndDotDot).size(), 1);
    }

    void wrongPasswordFailsClearlyAndLosesNothing()
    {
        QVERIFY(!m_documents.isNull());
        const QString source = m_documentsSource;
        const QString target = m_root + QStringLiteral("/secret-out");
        EngineTestSupport::writeFile(target + source + QStringLiteral("/letter.txt"), "what was there\n");
        const QMap<QString, QByteArray> before = EngineTestSupport::tree(target);
        auto wrong = restorePlan({catalogPath(source)}, target);
        wrong->setUseEncryption(true);
        wrong->setEncryptionPassword(QStringLiteral("wrong one"));
        const RunOutcome failed = restore(*wrong);
        QCOMPARE(failed.status, 8);
        QCOMPARE(failed.message,
            QStringLiteral("The backup does not open with the password of the restore plan: wrong password"));
        QCOMPARE(EngineTestSupport::tree(target), before);

        wrong->setEncryptionPassword(QStringLiteral("correct horse"));
        const RunOutcome right = restore(*wrong);
        QCOMPARE(right.status, 6);
        QCOMPARE(EngineTestSupport::readText(target + source + QStringLiteral("/letter.txt")),
            QStringLiteral("Dear Alice,\n"));
        QCOMPARE(EngineTestSupport::snapshots(repository(m_documents), QStringLiteral("correct horse")).size(), 1);
    }

    void originalLocationGetsTheBackedUpFilesBack()
    {
        QVERIFY(!m_documents.isNull());
        const QString source = m_documentsSource;
        const QMap<QString, QByteArray> backedUp = EngineTestSupport::tree(source);
        EngineTestSupport::writeFile(source + QStringLiteral("/letter.txt"), "Changed my mind\n");
        QVERIFY(QFile::remove(source + QStringLiteral("/photos/2026/beach.raw")));
        EngineTestSupport::writeFile(source + QStringLiteral("/new since.txt"), "not in the backup\n");
        auto back = restorePlan({catalogPath(source)}, QString());
        const RunOutcome outcome = restore(*back);
        QCOMPARE(outcome.status, 6);
        QMap<QString, QByteArray> now = EngineTestSupport::tree(source);
        // A restore puts back what the backup held and leaves what came since.
        QVERIFY(now.contains(QStringLiteral("/new since.txt")));
        now.remove(QStringLiteral("/new since.txt"));
        QCOMPARE(now, backedUp);
    }

    void unreadableAndMissingItemsAreFailuresOfTheirOwn()
    {
        const QString source = m_root + QStringLiteral("/partly");
        EngineTestSupport::writeFile(source + QStringLiteral("/fine.txt"), "fine\n");
        // The kernel refuses to read a process's memory from its start: restic meets a read error.
        auto plan = backupPlan(QStringLiteral("Partly"),
            {source, QStringLiteral("/proc/self/mem"), m_root + QStringLiteral("/never-there")},
            QStringLiteral("partly"));
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        const RunOutcome outcome = EngineTestSupport::run(*m_client, plan->id());
        QCOMPARE(outcome.status, 7);
        QCOMPARE(outcome.row.value(QStringLiteral("LastFailedCount")).toInt(), 2);
        QCOMPARE(outcome.row.value(QStringLiteral("LastUploadedCount")).toInt(), 1);
        QMap<int, QStringList> operations;
        const QJsonArray entries
            = EngineTestSupport::history(*m_client, QStringLiteral("HistoryListByFiles"), plan->id());
        for (const QJsonValue& value : entries) {
            const QJsonObject entry = value.toObject();
            operations[entry.value(QStringLiteral("Operation")).toInt()]
                << entry.value(QStringLiteral("File")).toString() + QStringLiteral(": ")
                    + entry.value(QStringLiteral("Message")).toString();
        }
        QCOMPARE(operations.value(1), QStringList({source + QStringLiteral("/fine.txt: ")}));
        QStringList failed = operations.value(4);
        failed.sort();
        QCOMPARE(failed,
            QStringList({QStringLiteral("/proc/self/mem: read failed: Input/output error"),
                QStringLiteral(": \"%1/never-there\" does not exist").arg(m_root)}));
        QCOMPARE(EngineTestSupport::history(*m_client, QStringLiteral("HistoryListByPlan"), plan->id())
                     .first()
                     .toObject()
                     .value(QStringLiteral("Result"))
                     .toInt(),
            7);
    }

    void selectionFollowsExcludesMasksSizeAgeAndHiddenFiles_data()
    {
        QTest::addColumn<int>("filterType");
        QTest::addColumn<QStringList>("masks");
        QTest::addColumn<bool>("ignoreCase");
        QTest::addColumn<qulonglong>("largerThan");
        QTest::addColumn<bool>("byAge");
        QTest::addColumn<QStringList>("skipped"); // of the files that the other rules keep
        const int exclude = BackupFile::ExcludeMasks;
        const int include = BackupFile::IncludeMasks;
        const QStringList jpg = {QStringLiteral("*.jpg")};
        const QString big = QStringLiteral("/deep/big.bin");
        const QString old = QStringLiteral("/deep/old.txt");
        const QString photo = QStringLiteral("/Photo.JPG");
        const QString txt = QStringLiteral("/keep.txt");
        const QString md = QStringLiteral("/deep/keep.md");
        const QString tmp = QStringLiteral("/scratch.tmp");
        const qulonglong none = 0;
        QTest::newRow("exclude masks") << exclude << QStringList({QStringLiteral("*.tmp")}) << false << none << false
                                       << QStringList({tmp});
        QTest::newRow("include masks") << include << QStringList({QStringLiteral("*.txt")}) << false << none << false
                                       << QStringList({big, photo, md, tmp});
        QTest::newRow("exclude masks ignoring case") << exclude << jpg << true << none << false << QStringList({photo});
        QTest::newRow("exclude masks minding case") << exclude << jpg << false << none << false << QStringList();
        QTest::newRow("include masks ignoring case")
            << include << jpg << true << none << false << QStringList({big, old, txt, md, tmp});
        QTest::newRow("include masks minding case")
            << include << QStringList({QStringLiteral("*.JPG"), QStringLiteral("*.TXT")}) << false << none << false
            << QStringList({big, old, txt, md, tmp});
        QTest::newRow("larger than") << 0 << QStringList() << false << qulonglong(1000) << false << QStringList({big});
        QTest::newRow("modified before") << 0 << QStringList() << false << none << true << QStringList({old});
        // The listed files still pass restic's exclude masks and size limit.
        QTest::newRow("all at once") << exclude << QStringList({QStringLiteral("*.JPG")}) << false << qulonglong(1000)
                                     << true << QStringList({big, old, photo});
    }

    void selectionFollowsExcludesMasksSizeAgeAndHiddenFiles()
    {
        QFETCH(int, filterType);
        QFETCH(QStringList, masks);
        QFETCH(bool, ignoreCase);
        QFETCH(qulonglong, largerThan);
        QFETCH(bool, byAge);
        QFETCH(QStringList, skipped);
        const QString source = m_root + QStringLiteral("/selection");
        const QDateTime longAgo(QDate(2020, 1, 1), QTime(12, 0));
        QStringList expected;
        // Names that an exclude file would take for a comment, a variable or blanks to trim.
        for (const char* name : {"/keep.txt", "/deep/keep.md", "/scratch.tmp", "/Photo.JPG", "/skipped/x.txt",
                 "/$HOME/x.txt", "/deep/node_modules/y.txt", "/deep/#recycle/y.txt", "/deep/ pad /y.txt",
                 "/.cache/z.txt", "/deep/.swap.txt"}) {
            EngineTestSupport::writeFile(source + QLatin1String(name), name);
            if (QByteArray(name).count('/') == 1 + QByteArray(name).startsWith("/deep/keep"))
                expected << QLatin1String(name);
        }
        EngineTestSupport::writeFile(source + QStringLiteral("/deep/big.bin"), EngineTestSupport::noise(5000, 1));
        EngineTestSupport::writeFile(source + QStringLiteral("/deep/old.txt"), "old", longAgo);
        expected << QStringLiteral("/deep/big.bin") << QStringLiteral("/deep/old.txt");
        for (const QString& file : qAsConst(skipped))
            expected.removeOne(file);
        const QString password = QStringLiteral("selection");
        auto plan = backupPlan(QStringLiteral("Selection"), {QStringLiteral("/TWB_VOLUMES/root") + source}, password);
        if (m_selection.isNull())
            m_selection = plan->id();
        plan->setId(m_selection);
        plan->setExcludeItems({source + QStringLiteral("/skipped"), source + QStringLiteral("/$HOME")});
        plan->setExcludeFolderList(
            {QStringLiteral("node_modules"), QStringLiteral("#recycle"), QStringLiteral(" pad ")});
        plan->setExcludeSystemAndHidden(true);
        plan->setFilterType(BackupFile::FilterType(filterType));
        plan->setFilter(masks);
        plan->setFilterCaseInsensitive(ignoreCase);
        plan->setExcludeLargerThan(largerThan);
        if (byAge)
            plan->setExcludeModifiedBefore(longAgo.addDays(1));
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        const RunOutcome outcome = EngineTestSupport::run(*m_client, plan->id());
        QVERIFY2(outcome.status == 6, qPrintable(outcome.message));

        // What the new snapshot holds, as restic itself lists it.
        const auto snapshots = EngineTestSupport::snapshots(repository(plan->id()), password);
        QVERIFY(!snapshots.isEmpty());
        const QByteArray lines = EngineTestSupport::restic(
            repository(plan->id()), password, {QStringLiteral("ls"), QStringLiteral("--json"), snapshots.last().first});
        QStringList held;
        for (const QByteArray& line : lines.split('\n')) {
            const QJsonObject node = QJsonDocument::fromJson(line).object();
            if (node.value(QStringLiteral("type")).toString() == QLatin1String("file"))
                held << node.value(QStringLiteral("path")).toString().mid(source.size());
        }
        held.sort();
        expected.sort();
        QCOMPARE(held, expected);
    }

    void retentionRemovesWhatItShouldAndNothingElse()
    {
        const QString source = m_root + QStringLiteral("/kept");
        auto plan = backupPlan(QStringLiteral("Kept"), {source}, QStringLiteral("keep"));
        plan->retentionPolicy().setType(Backup::RetentionPolicy::Custom);
        plan->retentionPolicy().setUseKeepVersion(true);
        plan->retentionPolicy().setKeepVersion(2);
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        EngineTestSupport::writeFile(source + QStringLiteral("/stable.txt"), "never changes\n");
        for (int run = 1; run <= 3; ++run) {
            EngineTestSupport::writeFile(source + QStringLiteral("/changing.txt"), QByteArray::number(run));
            QCOMPARE(EngineTestSupport::run(*m_client, plan->id()).status, 6);
        }
        const auto kept = EngineTestSupport::snapshots(repository(plan->id()), QStringLiteral("keep"));
        QCOMPARE(kept.size(), 2);

        // The changing file keeps one version per kept snapshot.
        const QJsonArray versions = listing(
            QStringLiteral("GetRestoreContentManualMode"), catalogPath(source + QStringLiteral("/changing.txt")));
        QStringList snapshots;
        for (const QJsonValue& value : versions)
            snapshots << value.toObject().value(QStringLiteral("Path")).toString().section(QLatin1Char('@'), 1);
        QCOMPARE(snapshots.size(), 2);
        QVERIFY(kept.at(1).first.startsWith(snapshots.at(0)));
        QVERIFY(kept.at(0).first.startsWith(snapshots.at(1)));
        // The file that never changed came with the removed snapshot; a kept one still holds it.
        const QJsonArray stable = listing(
            QStringLiteral("GetRestoreContentManualMode"), catalogPath(source + QStringLiteral("/stable.txt")));
        QCOMPARE(stable.size(), 1);
        QVERIFY(kept.at(0).first.startsWith(
            stable.first().toObject().value(QStringLiteral("Path")).toString().section(QLatin1Char('@'), 1)));
        QStringList names;
        const QJsonArray folder = listing(QStringLiteral("GetRestoreContent"), catalogPath(source));
        for (const QJsonValue& value : folder)
            names << value.toObject().value(QStringLiteral("Name")).toString();
        QCOMPARE(names, QStringList({QStringLiteral("changing.txt"), QStringLiteral("stable.txt")}));

        const QString target = m_root + QStringLiteral("/kept-out");
        auto back = restorePlan({catalogPath(source)}, target);
        QCOMPARE(restore(*back).status, 6);
        QCOMPARE(EngineTestSupport::readText(target + source + QStringLiteral("/stable.txt")),
            QStringLiteral("never changes\n"));
        QCOMPARE(EngineTestSupport::readText(target + source + QStringLiteral("/changing.txt")), QStringLiteral("3"));
    }

    void filesThatWentMissingKeepTheirLastVersion_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<int>("later");
        QTest::addColumn<int>("snapshots");
        QTest::addColumn<bool>("kept");
        // Keep one version of each file: the first backup is the only one holding precious.txt.
        QTest::newRow("unmounted disk") << "unmounted" << 6 << 2 << true;
        QTest::newRow("unreadable file") << "unreadable" << 7 << 2 << true;
        QTest::newRow("deleted, and the plan lets deleted files go") << "deleted" << 6 << 1 << false;
    }

    void filesThatWentMissingKeepTheirLastVersion()
    {
        QFETCH(QString, how);
        QFETCH(int, later);
        QFETCH(int, snapshots);
        QFETCH(bool, kept);
        const QString base = m_root + QStringLiteral("/missing-") + how;
        const QString precious = base + QStringLiteral("/mnt/precious.txt");
        const QString other = base + QStringLiteral("/work/other.txt");
        EngineTestSupport::writeFile(precious, "the only copy\n");
        auto plan = backupPlan(QStringLiteral("Missing"),
            {base + QStringLiteral("/mnt"), base + QStringLiteral("/work")}, QStringLiteral("missing"));
        plan->retentionPolicy().setType(Backup::RetentionPolicy::Custom);
        plan->retentionPolicy().setUseKeepVersion(true);
        plan->retentionPolicy().setKeepVersion(1);
        plan->retentionPolicy().setUseDeleteLocaly(how == QLatin1String("deleted"));
        plan->retentionPolicy().setDeleteLocalyAfter(0);
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        EngineTestSupport::writeFile(other, "1");
        QCOMPARE(EngineTestSupport::run(*m_client, plan->id()).status, 6);

        if (how == QLatin1String("unreadable")) {
            // Reading another process's memory fails: restic cannot read the file and says so.
            QProcess mount;
            mount.start(
                QStringLiteral("mount"), {QStringLiteral("--bind"), QStringLiteral("/proc/self/mem"), precious});
            if (!mount.waitForFinished() || mount.exitCode() != 0)
                QSKIP("bind mounts are not allowed here");
        } else {
            QVERIFY(QFile::remove(precious));
        }
        auto unmount = qScopeGuard([&] {
            if (how == QLatin1String("unreadable"))
                QProcess::execute(QStringLiteral("umount"), {precious});
        });
        for (int run = 2; run <= 3; ++run) {
            EngineTestSupport::writeFile(other, QByteArray::number(run));
            const RunOutcome outcome = EngineTestSupport::run(*m_client, plan->id());
            QCOMPARE(outcome.status, later);
        }
        if (how == QLatin1String("unreadable"))
            QCOMPARE(QProcess::execute(QStringLiteral("umount"), {precious}), 0);
        unmount.dismiss();
        QFile::remove(precious);

        // Retention ran, and stopped at the snapshot that holds the only copy.
        QCOMPARE(EngineTestSupport::snapshots(repository(plan->id()), QStringLiteral("missing")).size(), snapshots);
        const QString target = m_root + QStringLiteral("/missing-out-") + how;
        auto back = restorePlan({catalogPath(precious)}, target);
        const RunOutcome restored = restore(*back);
        QCOMPARE(restored.status, kept ? 6 : 8);
        if (kept)
            QCOMPARE(EngineTestSupport::readText(target + precious), QStringLiteral("the only copy\n"));
        QCOMPARE(QFile::exists(target + precious), kept);
        QVERIFY(!QFile::exists(target + other));
    }

    void syncRefusesRunsBesideItAndACancelKeepsTheCatalog()
    {
        const QString source = m_root + QStringLiteral("/synced");
        const QString file = source + QStringLiteral("/diary.txt");
        auto plan = backupPlan(QStringLiteral("Synced"), {source}, QStringLiteral("synced"));
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        for (int run = 1; run <= 3; ++run) {
            EngineTestSupport::writeFile(file, QByteArray("day ") + QByteArray::number(run));
            QCOMPARE(EngineTestSupport::run(*m_client, plan->id()).status, 6);
        }
        const QJsonArray before = listing(QStringLiteral("GetRestoreContentManualMode"), catalogPath(file));
        QCOMPARE(before.size(), 3);

        // A synchronisation rebuilds the catalog of the account's plans: not beside one of their runs.
        const QJsonObject account {{QStringLiteral("id"), m_account.toString()}};
        m_client->clearNotifications();
        QVERIFY(m_client->call(QStringLiteral("PlanExecuteStart"), {{QStringLiteral("ID"), plan->id().toString()}})
                    .success);
        const ServiceReply refused = m_client->call(QStringLiteral("SynchronizeRepository"), account);
        QVERIFY(!refused.success);
        QVERIFY2(refused.error.contains(QStringLiteral("is running")), qPrintable(refused.error));
        QCOMPARE(EngineTestSupport::waitForEnd(*m_client, plan->id()).status, 6);

        // Cancelled while it reads this plan's snapshots: the catalog stays as it was.
        m_client->clearNotifications();
        QVERIFY(m_client->call(QStringLiteral("SynchronizeRepository"), account).success);
        const QString reading
            = QStringLiteral("Reading the backup %1/%2: snapshot 1 of").arg(prefix, plan->id().toString());
        QVERIFY(QTest::qWaitFor(
            [&] {
                for (const QJsonObject& message : m_client->notifications()) {
                    if (message.value(QStringLiteral("data"))
                            .toObject()
                            .value(QStringLiteral("message"))
                            .toString()
                            .startsWith(reading))
                        return true;
                }
                return false;
            },
            120000));
        const ServiceReply startDuringSync
            = m_client->call(QStringLiteral("PlanExecuteStart"), {{QStringLiteral("ID"), plan->id().toString()}});
        QVERIFY(m_client->call(QStringLiteral("SynchronizeRepositoryCancel"), account).success);
        QVERIFY(m_client->waitForNotification(QLatin1String(Type::StorageSyncFinished), m_account.toString(), 60000));
        QVERIFY(!startDuringSync.success);
        QVERIFY2(
            startDuringSync.error.contains(QStringLiteral("is being synchronised")), qPrintable(startDuringSync.error));
        QCOMPARE(listing(QStringLiteral("GetRestoreContentManualMode"), catalogPath(file)).size(), 3);
    }
};

QTEST_GUILESS_MAIN(TestEngineRuns)
#include "tst_engine_runs.moc"
