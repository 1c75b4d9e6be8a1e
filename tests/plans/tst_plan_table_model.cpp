#include "plans/plan_table_model.h"
#include "platform/communication/connection_manager.h"
#include "platform/communication/notification_types.h"
#include "plan_test_rows.h"
#include "support/fake_service.h"
#include "support/log_capture.h"
#include "support/test_environment.h"
#include "widgets/icon_manager.h"

#include <QAbstractItemModelTester>
#include <QLocale>
#include <QSignalSpy>
#include <QtTest>

#include <ctime>
#include <memory>

using namespace TWB::GUI;
using TWB::Common::Communication::ConnectionManager;
using TWB::Test::FakeReply;
using TWB::Test::FakeRequest;
using TWB::Test::FakeService;
using TWB::Test::LogCapture;
using TWB::Test::planRow;
using TWB::Test::PlanRows;
using TWB::Test::RegisteredPlanTable;
using TWB::Test::TestEnvironment;
namespace NotificationType = TWB::Common::Communication::Notification::Type;

class TestPlanTableModel : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    FakeService m_service;
    PlanRows m_rows {m_service};
    std::unique_ptr<RegisteredPlanTable> m_registered;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
    PlanTableModel* m_table = nullptr;

    QString cell(int row, int column) const { return m_table->index(row, column).data().toString(); }

    QStringList names() const
    {
        QStringList result;
        for (int row = 0; row < m_table->rowCount(); ++row)
            result.append(cell(row, 1));
        return result;
    }

    void notify(const char* type, const QUuid& id, const QJsonObject& more = QJsonObject())
    {
        QJsonObject data = more;
        data.insert(QStringLiteral("id"), id.toString());
        m_service.notify(QLatin1String(type), data);
    }

    /// Loads the table from what the service holds.
    bool load()
    {
        QSignalSpy complite(m_table, &BaseModel::complite);
        return m_table->init() && complite.wait();
    }

private Q_SLOTS:
    void initTestCase()
    {
        // Far from UTC and not on a whole hour, so that a time shown without conversion stands out.
        qputenv("TZ", "Asia/Kolkata");
        tzset();
        m_env = std::make_unique<TestEnvironment>();
        QVERIFY(m_service.serveConsole(m_env->socketPath()));
    }

    void init()
    {
        qputenv("USER", "alice");
        m_rows.rows.clear();
        m_rows.serve();
        m_service.clearRequests();
        m_registered = std::make_unique<RegisteredPlanTable>();
        m_table = m_registered->table;
        QVERIFY(m_table);
        m_tester = std::make_unique<QAbstractItemModelTester>(
            m_table, QAbstractItemModelTester::FailureReportingMode::QtTest);
    }

    void cleanup()
    {
        m_tester.reset();
        m_registered.reset();
        m_table = nullptr;
    }

    void loadShowsEveryPlanInArrivalOrder()
    {
        const QUuid first = QUuid::createUuid();
        const QUuid second = QUuid::createUuid();
        const QUuid third = QUuid::createUuid();
        m_rows.put(planRow(first, QStringLiteral("Photos"), 1));
        m_rows.put(planRow(second, QStringLiteral("Documents"), 1));
        m_rows.put(planRow(third, QStringLiteral("Restore photos"), 2));

        QStringList events;
        connect(m_table, &BaseModel::updated, this, [&] { events << QStringLiteral("updated"); });
        connect(m_table, &QAbstractItemModel::rowsInserted, this,
            [&](const QModelIndex&, int from, int to) { events << QStringLiteral("rows %1-%2").arg(from).arg(to); });
        connect(m_table, &BaseModel::complite, this, [&] { events << QStringLiteral("complite"); });
        QVERIFY(load());
        QCOMPARE(events, (QStringList {"updated", "rows 0-2", "complite"}));

        const FakeRequest request = m_service.requests(QStringLiteral("PlanGetList")).first();
        QCOMPARE(request.params, (QJsonObject {{QStringLiteral("profile"), QStringLiteral("alice")}}));

        QCOMPARE(m_table->rowCount(), 3);
        QCOMPARE(m_table->columnCount(), 15);
        QCOMPARE(names(), (QStringList {"Photos", "Documents", "Restore photos"}));
        QCOMPARE(m_table->index(1, 0).data().toUuid(), second);
        QCOMPARE(m_table->index(2, 2).data().toInt(), 2);
        QCOMPARE(cell(0, 3), QStringLiteral("Every day at 22:00"));
        QCOMPARE(cell(0, 6), QStringLiteral("6 files sent"));
        QCOMPARE(m_table->index(0, 13).data().toDouble(), 52428800.0);
    }

    void timesShowInLocalTime()
    {
        QJsonObject row = planRow(QUuid::createUuid(), QStringLiteral("Photos"), 1);
        row.insert(QStringLiteral("NextRun"), QString());
        m_rows.put(row);
        QVERIFY(load());
        const QDateTime utc(QDate(2024, 3, 1), QTime(10, 15), Qt::UTC);
        const QString local = QLocale::system().toString(utc.toLocalTime(), QLocale::ShortFormat);
        QVERIFY(local.contains(QStringLiteral("3:45")) || local.contains(QStringLiteral("15:45")));
        QCOMPARE(cell(0, 8), local);
        // Not yet scheduled: no date at all rather than a made-up one.
        QVERIFY(!m_table->index(0, 9).data().isValid());
    }

    void loadFailureIsReportedAndLeavesNoRows_data()
    {
        QTest::addColumn<FakeReply>("reply");
        QTest::addColumn<QString>("text");
        QTest::newRow("service error") << FakeReply::fail(QStringLiteral("Plan store is locked"))
                                       << QStringLiteral("Plan store is locked");
        QTest::newRow("connection lost") << FakeReply::closeConnection()
                                         << QStringLiteral("Local command reply format error");
    }

    void loadFailureIsReportedAndLeavesNoRows()
    {
        QFETCH(FakeReply, reply);
        QFETCH(QString, text);
        m_rows.put(planRow(QUuid::createUuid(), QStringLiteral("Photos"), 1));
        m_service.on(QStringLiteral("PlanGetList"), reply);
        LogCapture log;
        QSignalSpy error(m_table, &BaseModel::error);
        QSignalSpy complite(m_table, &BaseModel::complite);
        QVERIFY(m_table->init());
        QVERIFY(error.wait());
        QCOMPARE(error.at(0).at(0).toString(), text);
        QVERIFY(log.contains(QtWarningMsg, QStringLiteral("TWB"), text));
        QCOMPARE(complite.count(), 0);
        QCOMPARE(m_table->rowCount(), 0);
        // A lost connection comes back by itself; later tests need it.
        QTRY_VERIFY(ConnectionManager::instance()->isLocalManagmentConnected());
        QTRY_VERIFY(m_service.clientCount() > 0);
    }

    void stateChangeShowsAtOnceThenReloadsTheRow()
    {
        const QUuid photos = QUuid::createUuid();
        m_rows.put(planRow(photos, QStringLiteral("Photos"), 1, 2, 6));
        QVERIFY(load());

        // The service has run the plan meanwhile: its next answer has a new last run.
        m_rows.put(planRow(photos, QStringLiteral("Photos"), 1, 2, 8));
        QList<int> statusAtEachChange;
        connect(m_table, &QAbstractItemModel::dataChanged, this,
            [&] { statusAtEachChange << m_table->index(0, 4).data().toInt(); });
        QSignalSpy complite(m_table, &BaseModel::complite);
        QSignalSpy updated(m_table, &BaseModel::updated);
        notify(NotificationType::PlanStateChanged, photos, {{QStringLiteral("state"), 1}});
        QVERIFY(complite.wait());
        QCOMPARE(updated.count(), 1);
        // First the notification's state, then the service's row as it stands.
        QCOMPARE(statusAtEachChange, (QList<int> {1, 2}));
        QCOMPARE(m_table->index(0, 7).data().toInt(), 8);
        QCOMPARE(m_service.requests(QStringLiteral("PlanGetInfo")).size(), 1);
    }

    void notificationsArriveInOrder()
    {
        const QUuid photos = QUuid::createUuid();
        const QUuid music = QUuid::createUuid();
        m_rows.put(planRow(photos, QStringLiteral("Photos"), 1));
        m_rows.put(planRow(music, QStringLiteral("Music"), 1));
        QVERIFY(load());
        const QUuid videos = QUuid::createUuid();
        m_rows.put(planRow(videos, QStringLiteral("Videos"), 1, 2));

        // A burst as the service sends it when a new plan starts at once and another is removed.
        // The state change comes before the new plan's row: the table does not hold it yet and lets
        // it pass, so the row shows the service's own status.
        QSignalSpy complite(m_table, &BaseModel::complite);
        notify(NotificationType::PlanCreated, videos);
        notify(NotificationType::PlanStateChanged, videos, {{QStringLiteral("state"), 1}});
        notify(NotificationType::PlanRemoved, music);
        notify(NotificationType::PlanUpdated, photos);
        QTRY_COMPARE(complite.count(), 2);
        QCOMPARE(names(), (QStringList {"Photos", "Videos"}));
        QCOMPARE(m_table->index(1, 4).data().toInt(), 2);
        QStringList asked;
        const QList<FakeRequest> requests = m_service.requests(QStringLiteral("PlanGetInfo"));
        for (const FakeRequest& request : requests)
            asked << request.params.value(QStringLiteral("id")).toString();
        QCOMPARE(asked, (QStringList {videos.toString(), photos.toString()}));
    }

    void notificationsForUnknownPlansAreIgnoredOrAdded()
    {
        const QUuid photos = QUuid::createUuid();
        m_rows.put(planRow(photos, QStringLiteral("Photos"), 1));
        QVERIFY(load());
        QSignalSpy removed(m_table, &QAbstractItemModel::rowsAboutToBeRemoved);
        QSignalSpy changed(m_table, &QAbstractItemModel::dataChanged);
        QSignalSpy complite(m_table, &BaseModel::complite);
        const QUuid stranger = QUuid::createUuid();
        notify(NotificationType::PlanRemoved, stranger);
        notify(NotificationType::PlanStateChanged, stranger, {{QStringLiteral("state"), 1}});
        // Updated for a plan never seen: it is added when the answer comes.
        m_rows.put(planRow(stranger, QStringLiteral("Made elsewhere"), 2));
        notify(NotificationType::PlanUpdated, stranger);
        QVERIFY(complite.wait());
        QCOMPARE(removed.count(), 0);
        QCOMPARE(changed.count(), 0);
        QCOMPARE(names(), (QStringList {"Photos", "Made elsewhere"}));
        QCOMPARE(m_service.requests(QStringLiteral("PlanGetInfo")).size(), 1);
    }

    void emptyPlanInfoChangesNothing()
    {
        const QUuid photos = QUuid::createUuid();
        m_rows.put(planRow(photos, QStringLiteral("Photos"), 1));
        QVERIFY(load());
        // Removed on the service between the notification and the question.
        m_rows.rows.clear();
        QSignalSpy complite(m_table, &BaseModel::complite);
        QSignalSpy changed(m_table, &QAbstractItemModel::dataChanged);
        QSignalSpy inserted(m_table, &QAbstractItemModel::rowsAboutToBeInserted);
        QVERIFY(m_table->loadInfo(photos));
        QVERIFY(complite.wait());
        QCOMPARE(changed.count(), 0);
        QCOMPARE(inserted.count(), 0);
        QCOMPARE(names(), (QStringList {"Photos"}));
    }

    void failedReloadKeepsTheStoredState()
    {
        const QUuid photos = QUuid::createUuid();
        m_rows.put(planRow(photos, QStringLiteral("Photos"), 1, 2, 6));
        QVERIFY(load());
        m_service.on(QStringLiteral("PlanGetInfo"), FakeReply::fail(QStringLiteral("Plan store is locked")));
        LogCapture log;
        QSignalSpy error(m_table, &BaseModel::error);
        notify(NotificationType::PlanStateChanged, photos, {{QStringLiteral("state"), 1}});
        QVERIFY(error.wait());
        QCOMPARE(error.at(0).at(0).toString(), QStringLiteral("Plan store is locked"));
        QVERIFY(log.contains(QtWarningMsg, QStringLiteral("TWB"), QStringLiteral("Plan store is locked")));
        QCOMPARE(m_table->index(0, 4).data().toInt(), 1);
        QCOMPARE(m_table->index(0, 7).data().toInt(), 6);
    }

    void nameShowsTheRunOrHowTheLastRunEnded_data()
    {
        QTest::addColumn<int>("subType");
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("lastRunStatus");
        QTest::addColumn<int>("icon");
        QTest::newRow("backup, success") << 1 << 2 << 6 << int(IconManager::BackupPlanSuccess);
        QTest::newRow("backup, warning") << 1 << 2 << 7 << int(IconManager::BackupPlanWarning);
        QTest::newRow("backup, fail") << 1 << 2 << 8 << int(IconManager::BackupPlanFail);
        QTest::newRow("backup running after a fail") << 1 << 1 << 8 << int(IconManager::BackupPlanRunning);
        QTest::newRow("restore, success") << 2 << 2 << 6 << int(IconManager::RestorePlanSuccess);
        QTest::newRow("restore running") << 2 << 1 << 6 << int(IconManager::RestorePlanRunning);
        QTest::newRow("restore, never ran") << 2 << 2 << -1 << int(IconManager::RestorePlan);
        QTest::newRow("unknown kind") << 3 << 1 << 6 << 0;
    }

    void nameShowsTheRunOrHowTheLastRunEnded()
    {
        QFETCH(int, subType);
        QFETCH(int, status);
        QFETCH(int, lastRunStatus);
        QFETCH(int, icon);
        m_rows.put(planRow(QUuid::createUuid(), QStringLiteral("Photos"), subType, status, lastRunStatus));
        QVERIFY(load());
        const QVariant decoration = m_table->index(0, 1).data(Qt::DecorationRole);
        if (!icon) {
            QVERIFY(!decoration.isValid());
            return;
        }
        QVERIFY(decoration.canConvert<QIcon>());
        const QImage shown = decoration.value<QIcon>().pixmap(16, 16).toImage();
        QVERIFY(!shown.isNull());
        QCOMPARE(shown, IconManager::icon(icon, IconManager::Small).pixmap(16, 16).toImage());
        // The comparison means something only if the states look different.
        const int plain = subType == 1 ? IconManager::BackupPlan : IconManager::RestorePlan;
        if (icon != plain)
            QVERIFY(shown != IconManager::icon(plain, IconManager::Small).pixmap(16, 16).toImage());
    }
};

QTEST_MAIN(TestPlanTableModel)
#include "tst_plan_table_model.moc"
