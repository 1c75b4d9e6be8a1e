#include "plans/plan_control_object.h"
#include "plans/plan_table_model.h"
#include "platform/communication/connection_manager.h"
#include "platform/communication/notification_types.h"
#include "plan_test_rows.h"
#include "support/fake_service.h"
#include "support/log_capture.h"
#include "support/test_environment.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QWidget>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using TWB::Common::Communication::ConnectionManager;
using TWB::Test::FakeReply;
using TWB::Test::FakeRequest;
using TWB::Test::FakeService;
using TWB::Test::LogCapture;
using TWB::Test::NoModelCreator;
using TWB::Test::planRow;
using TWB::Test::PlanRows;
using TWB::Test::RegisteredPlanTable;
using TWB::Test::TestEnvironment;
namespace NotificationType = TWB::Common::Communication::Notification::Type;

class TestPlanControlObject : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    FakeService m_service;
    PlanRows m_rows {m_service};
    std::unique_ptr<RegisteredPlanTable> m_registered;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
    PlanTableModel* m_table = nullptr;
    QWidget m_window;
    const QUuid m_idle = QUuid::createUuid();
    const QUuid m_running = QUuid::createUuid();
    const QUuid m_restore = QUuid::createUuid();
    const QUuid m_odd = QUuid::createUuid();

    void notify(const char* type, const QUuid& id, const QJsonObject& more = QJsonObject())
    {
        QJsonObject data = more;
        data.insert(QStringLiteral("id"), id.toString());
        m_service.notify(QLatin1String(type), data);
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        QVERIFY(m_service.serveConsole(m_env->socketPath()));
    }

    void init()
    {
        qputenv("USER", "alice");
        m_rows.rows.clear();
        m_rows.put(planRow(m_idle, QStringLiteral("Photos"), 1, 2));
        m_rows.put(planRow(m_running, QStringLiteral("Music"), 1, 1));
        m_rows.put(planRow(m_restore, QStringLiteral("Back home"), 2, 2));
        // A status the service never sends for a plan at rest.
        m_rows.put(planRow(m_odd, QStringLiteral("Odd"), 1, 5));
        m_rows.serve();
        const FakeReply done = FakeReply::ok();
        m_service.on(QStringLiteral("PlanExecuteStart"), done);
        m_service.on(QStringLiteral("PlanExecuteStop"), done);
        m_service.on(QStringLiteral("PlanRemove"), done);
        m_service.clearRequests();
        m_registered = std::make_unique<RegisteredPlanTable>();
        m_table = m_registered->table;
        m_tester = std::make_unique<QAbstractItemModelTester>(
            m_table, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy complite(m_table, &BaseModel::complite);
        QVERIFY(m_table->init());
        QVERIFY(complite.wait());
        m_service.clearRequests();
    }

    void cleanup()
    {
        m_tester.reset();
        m_registered.reset();
        m_table = nullptr;
    }

    void startOrStopFollowsTheRunStatus_data()
    {
        QTest::addColumn<QString>("plan");
        QTest::addColumn<bool>("force");
        QTest::addColumn<QString>("command");
        QTest::addColumn<QJsonObject>("extra");
        QTest::newRow("idle starts") << "idle" << false << "PlanExecuteStart" << QJsonObject();
        QTest::newRow("idle starts full")
            << "idle" << true << "PlanExecuteStart" << QJsonObject {{QStringLiteral("force_full"), true}};
        QTest::newRow("running stops") << "running" << false << "PlanExecuteStop" << QJsonObject();
        QTest::newRow("running stops, full ignored") << "running" << true << "PlanExecuteStop" << QJsonObject();
    }

    void startOrStopFollowsTheRunStatus()
    {
        QFETCH(QString, plan);
        QFETCH(bool, force);
        QFETCH(QString, command);
        QFETCH(QJsonObject, extra);
        const QUuid id = plan == QLatin1String("idle") ? m_idle
            : plan == QLatin1String("running")         ? m_running
                                                       : m_restore;
        PlanControlObject control(&m_window);
        control.setCurrentPlan(id, 0);
        QStringList events;
        connect(&control, &PlanControlObject::updatedBegin, this, [&] { events << QStringLiteral("begin"); });
        connect(&control, &PlanControlObject::updatedComplite, this, [&] { events << QStringLiteral("complite"); });
        connect(&control, &PlanControlObject::updatedError, this, [&](const QString& text) { events << text; });
        control.onChangePlanStatus(force);
        QCOMPARE(events, QStringList {"begin"});
        QTRY_COMPARE(events, (QStringList {"begin", "complite"}));

        QCOMPARE(m_service.requests(QStringLiteral("PlanExecuteStart")).size()
                + m_service.requests(QStringLiteral("PlanExecuteStop")).size(),
            1);
        const QList<FakeRequest> sent = m_service.requests(command);
        QCOMPARE(sent.size(), 1);
        QJsonObject expected {{QStringLiteral("ID"), id.toString()}, {QStringLiteral("profile"), "alice"}};
        for (auto it = extra.constBegin(); it != extra.constEnd(); ++it)
            expected.insert(it.key(), it.value());
        QCOMPARE(sent.first().params, expected);
        // Nothing changes until the service says so.
        QCOMPARE(m_table->index(m_table->match(m_table->index(0, 0), Qt::DisplayRole, id.toString()).first().row(), 4)
                     .data()
                     .toInt(),
            plan == QLatin1String("running") ? 1 : 2);
    }

    void planThatCannotStartOrStopFails_data()
    {
        QTest::addColumn<bool>("known");
        QTest::newRow("status 5") << true;
        QTest::newRow("no row for the plan") << false;
    }

    void planThatCannotStartOrStopFails()
    {
        QFETCH(bool, known);
        PlanControlObject control(&m_window);
        QSignalSpy status(&control, &PlanControlObject::statusChanged);
        control.setCurrentPlan(known ? m_odd : QUuid::createUuid(), 0);
        control.updateWidget();
        // A plan the table does not hold has no status to show.
        QCOMPARE(status.isEmpty(), !known);
        QSignalSpy begin(&control, &PlanControlObject::updatedBegin);
        QSignalSpy error(&control, &PlanControlObject::updatedError);
        control.onChangePlanStatus(true);
        QCOMPARE(begin.count(), 1);
        QCOMPARE(error.count(), 1);
        QCOMPARE(error.at(0).at(0).toString(), QStringLiteral("Commnunication command don't registrate"));
        QTest::qWait(50); // nothing is expected to arrive; give a stray request the time to show
        QCOMPARE(m_service.requests().size(), 0);
    }

    void refusedCommandIsReported()
    {
        m_service.on(QStringLiteral("PlanExecuteStart"), FakeReply::fail(QStringLiteral("The storage is full")));
        PlanControlObject control(&m_window);
        control.setCurrentPlan(m_idle, 0);
        LogCapture log;
        QSignalSpy error(&control, &PlanControlObject::updatedError);
        QSignalSpy complite(&control, &PlanControlObject::updatedComplite);
        control.onChangePlanStatus(false);
        QVERIFY(error.wait());
        QCOMPARE(error.at(0).at(0).toString(), QStringLiteral("The storage is full"));
        QVERIFY(log.contains(QtWarningMsg, QStringLiteral("TWB"), QStringLiteral("The storage is full")));
        QCOMPARE(complite.count(), 0);
        QCOMPARE(m_table->index(0, 4).data().toInt(), 2);
    }

    void removeAsksTheServiceAndWaitsForIt()
    {
        PlanControlObject control(&m_window);
        control.setCurrentPlan(m_idle, 0);
        QSignalSpy complite(&control, &PlanControlObject::updatedComplite);
        QSignalSpy gone(&control, &PlanControlObject::removeCurrentPlan);
        control.onRemove();
        QVERIFY(complite.wait());
        const QList<FakeRequest> sent = m_service.requests(QStringLiteral("PlanRemove"));
        QCOMPARE(sent.size(), 1);
        QCOMPARE(sent.first().params,
            (QJsonObject {{QStringLiteral("ID"), m_idle.toString()}, {QStringLiteral("profile"), "alice"}}));
        // The row stays until the service reports the removal.
        QCOMPARE(m_table->rowCount(), 4);
        // Another plan's removal leaves the current one.
        QSignalSpy removed(m_table, &QAbstractItemModel::rowsRemoved);
        notify(NotificationType::PlanRemoved, m_running);
        QVERIFY(removed.wait());
        QCOMPARE(gone.count(), 0);

        LogCapture log;
        notify(NotificationType::PlanRemoved, m_idle);
        QVERIFY(gone.wait());
        QCOMPARE(gone.count(), 1);
        QCOMPARE(gone.at(0).at(0).toUuid(), m_idle);
        QVERIFY(log.contains(QtInfoMsg, QStringLiteral("TWB"), QStringLiteral("Current plan remove")));
    }

    void nullPlanIsGoneAtTheFirstRemoval()
    {
        PlanControlObject control(&m_window);
        QSignalSpy status(&control, &PlanControlObject::statusChanged);
        QSignalSpy gone(&control, &PlanControlObject::removeCurrentPlan);
        control.setCurrentPlan(QUuid(), 0);
        QCOMPARE(status.count(), 0);
        notify(NotificationType::PlanRemoved, m_restore);
        QVERIFY(gone.wait());
        QVERIFY(gone.at(0).at(0).toUuid().isNull());
    }

    void statusFollowsTheTable()
    {
        PlanControlObject control(&m_window);
        QSignalSpy status(&control, &PlanControlObject::statusChanged);
        control.setCurrentPlan(m_restore, 7);
        QCOMPARE(status.count(), 1);
        QCOMPARE(status.at(0).at(0).toInt(), 2);
        QCOMPARE(status.at(0).at(1).toInt(), 2);

        // The service reports the plan running; the host hears it at once, and again for the reload.
        status.clear();
        QSignalSpy complite(m_table, &BaseModel::complite);
        m_rows.put(planRow(m_restore, QStringLiteral("Back home"), 2, 1));
        notify(NotificationType::PlanStateChanged, m_restore, {{QStringLiteral("state"), 1}});
        QVERIFY(complite.wait());
        QCOMPARE(status.count(), 2);
        QCOMPARE(status.at(0), (QList<QVariant> {2, 1}));
        QCOMPARE(status.at(1), (QList<QVariant> {2, 1}));

        // Any row's change is passed on, as the current plan's state.
        status.clear();
        notify(NotificationType::PlanUpdated, m_idle);
        QVERIFY(complite.wait());
        QCOMPARE(status.count(), 1);
        QCOMPARE(status.at(0), (QList<QVariant> {2, 1}));
    }

    void withoutTableNothingHappens()
    {
        NoModelCreator none;
        ModelManager::instance()->registrateCreator(none);
        PlanControlObject control(&m_window);
        QSignalSpy begin(&control, &PlanControlObject::updatedBegin);
        QSignalSpy status(&control, &PlanControlObject::statusChanged);
        QSignalSpy gone(&control, &PlanControlObject::removeCurrentPlan);
        QSignalSpy error(&control, &PlanControlObject::updatedError);
        control.setCurrentPlan(m_idle, 0);
        control.onChangePlanStatus(false);
        control.onPlanRemove();
        control.onEdit();
        QCOMPARE(begin.count(), 0);
        QCOMPARE(status.count(), 0);
        QCOMPARE(gone.count(), 0);
        QCOMPARE(error.count(), 0);
    }
};

QTEST_MAIN(TestPlanControlObject)
#include "tst_plan_control_object.moc"
