#include "plans/plan_xml_list.h"
#include "platform/communication/connection_manager.h"
#include "platform/communication/notification_types.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/restore_file.h"
#include "support/fake_service.h"
#include "support/log_capture.h"
#include "support/test_environment.h"

#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace TWB::Info::Plan;
using TWB::Common::Communication::ConnectionManager;
using TWB::GUI::PlanXmlList;
using TWB::Test::FakeReply;
using TWB::Test::FakeRequest;
using TWB::Test::FakeService;
using TWB::Test::LogCapture;
using TWB::Test::TestEnvironment;
namespace NotificationType = TWB::Common::Communication::Notification::Type;

namespace {
QString backupXml(const QUuid& id, const QString& name)
{
    BackupFile plan;
    plan.setId(id);
    plan.setName(name);
    plan.setItems({QStringLiteral("/home/alice")});
    return plan.toXml();
}
} // namespace

class TestPlanXmlList : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    FakeService m_service;
    /// What the fake service holds, by plan id.
    QMap<QString, QString> m_stored;

    void serveStoredPlans()
    {
        m_service.on(QStringLiteral("PlanGetXML"), [this](const FakeRequest& request) {
            const QString id = request.params.value(QStringLiteral("ID")).toString();
            if (!m_stored.contains(id))
                return FakeReply::fail(QStringLiteral("Plan %1 is not known").arg(id));
            return FakeReply::ok({{QStringLiteral("planXML"), m_stored.value(id)}});
        });
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        QVERIFY(m_service.serveConsole(m_env->socketPath()));
        QVERIFY(PlanXmlList::instance());
    }

    void init()
    {
        serveStoredPlans();
        m_service.clearRequests();
        qputenv("USER", "alice");
    }

    void fetchedPlanIsBuiltOnceAndKept()
    {
        auto list = PlanXmlList::instance();
        const QUuid id = QUuid::createUuid();
        m_stored.insert(id.toString(), backupXml(id, QStringLiteral("Documents")));
        QSignalSpy begin(list.data(), &PlanXmlList::beginLoad);
        QSignalSpy complite(list.data(), &PlanXmlList::complite);
        QVERIFY(list->getPlan(id));
        QCOMPARE(begin.count(), 1);
        QCOMPARE(begin.at(0).at(0).toUuid(), id);
        QVERIFY(complite.wait());
        QCOMPARE(complite.at(0).at(0).toUuid(), id);

        QCOMPARE(m_service.requests(QStringLiteral("PlanGetXML")).first().params.value(QStringLiteral("ID")).toString(),
            id.toString());

        QVERIFY(list->containts(id));
        QCOMPARE(list->planXml(id).documentElement().tagName(), QStringLiteral("Plan"));
        Base* plan = list->plan(id);
        QVERIFY(dynamic_cast<BackupFile*>(plan));
        QCOMPARE(plan->name(), QStringLiteral("Documents"));
        QCOMPARE(list->plan(id), plan);
    }

    void failedFetchesEmitTheirText_data()
    {
        QTest::addColumn<QString>("planXml");
        QTest::addColumn<bool>("known");
        QTest::addColumn<QString>("text");
        QTest::newRow("service error") << QString() << false << "is not known";
        QTest::newRow("empty planXML") << QString() << true << "Error on XML plan content";
        QTest::newRow("planXML is no XML") << QStringLiteral("<Plan format=") << true << "Error on XML plan content";
    }

    void failedFetchesEmitTheirText()
    {
        QFETCH(QString, planXml);
        QFETCH(bool, known);
        QFETCH(QString, text);
        auto list = PlanXmlList::instance();
        const QUuid id = QUuid::createUuid();
        if (known)
            m_stored.insert(id.toString(), planXml);
        LogCapture log;
        QSignalSpy error(list.data(), &PlanXmlList::error);
        QSignalSpy complite(list.data(), &PlanXmlList::complite);
        QVERIFY(list->getPlan(id));
        QVERIFY(error.wait());
        QVERIFY(error.at(0).at(0).toString().contains(text));
        QVERIFY(log.contains(QtWarningMsg, QStringLiteral("TWB"), text));
        QCOMPARE(complite.count(), 0);
        QVERIFY(!list->containts(id));
        QVERIFY(!list->plan(id));
    }

    void documentTheFactoryRefusesGivesNoPlan()
    {
        auto list = PlanXmlList::instance();
        const QUuid id = QUuid::createUuid();
        m_stored.insert(id.toString(), QStringLiteral("<Inventory><Item>chair</Item></Inventory>"));
        QSignalSpy complite(list.data(), &PlanXmlList::complite);
        QSignalSpy error(list.data(), &PlanXmlList::error);
        QVERIFY(list->getPlan(id));
        QVERIFY(complite.wait());
        LogCapture log;
        QVERIFY(list->containts(id));
        QVERIFY(!list->plan(id));
        QCOMPARE(error.count(), 0);
        QVERIFY(log.contains(QtDebugMsg, QStringLiteral("TWB"), QStringLiteral("<Inventory>")));
        QCOMPARE(log.warnings(), 0);
    }

    void planUpdatedDropsTheCopyAndFetchesAgain()
    {
        auto list = PlanXmlList::instance();
        const QUuid id = QUuid::createUuid();
        m_stored.insert(id.toString(), backupXml(id, QStringLiteral("Old name")));
        QSignalSpy complite(list.data(), &PlanXmlList::complite);
        QVERIFY(list->getPlan(id));
        QVERIFY(complite.wait());
        QCOMPARE(list->plan(id)->name(), QStringLiteral("Old name"));

        m_stored.insert(id.toString(), backupXml(id, QStringLiteral("New name")));
        QSignalSpy update(list.data(), &PlanXmlList::update);
        m_service.notify(QLatin1String(NotificationType::PlanUpdated), {{QStringLiteral("id"), id.toString()}});
        QVERIFY(update.wait());
        QCOMPARE(update.at(0).at(0).toUuid(), id);
        // Until the new document is in, there is no stale plan to hand out.
        QVERIFY(!list->containts(id));
        QVERIFY(!list->plan(id));
        QTRY_COMPARE(complite.count(), 2);
        QCOMPARE(list->plan(id)->name(), QStringLiteral("New name"));
        QCOMPARE(m_service.requests(QStringLiteral("PlanGetXML")).size(), 2);
    }

    void planRemovedForgetsWithoutASignal()
    {
        auto list = PlanXmlList::instance();
        const QUuid id = QUuid::createUuid();
        m_stored.insert(id.toString(), backupXml(id, QStringLiteral("Gone soon")));
        QSignalSpy complite(list.data(), &PlanXmlList::complite);
        QVERIFY(list->getPlan(id));
        QVERIFY(complite.wait());
        QVERIFY(list->plan(id));

        QSignalSpy update(list.data(), &PlanXmlList::update);
        QSignalSpy begin(list.data(), &PlanXmlList::beginLoad);
        const QUuid other = QUuid::createUuid();
        // A second notification after the removal proves the first was handled.
        m_service.notify(QLatin1String(NotificationType::PlanRemoved), {{QStringLiteral("id"), id.toString()}});
        m_service.notify(QLatin1String(NotificationType::PlanUpdated), {{QStringLiteral("id"), other.toString()}});
        QVERIFY(update.wait());
        QCOMPARE(update.count(), 1);
        QCOMPARE(update.at(0).at(0).toUuid(), other);
        QVERIFY(!list->containts(id));
        QVERIFY(!list->plan(id));
        QCOMPARE(begin.count(), 1);
    }

    void laterReplyWins()
    {
        auto list = PlanXmlList::instance();
        const QUuid id = QUuid::createUuid();
        int served = 0;
        m_service.on(QStringLiteral("PlanGetXML"), [&served, id](const FakeRequest& request) {
            if (request.params.value(QStringLiteral("ID")).toString() != id.toString())
                return FakeReply::fail(QStringLiteral("not this test's plan"));
            ++served;
            // The first request is answered last.
            return served == 1
                ? FakeReply::ok({{QStringLiteral("planXML"), backupXml(id, QStringLiteral("answered last"))}})
                      .after(300)
                : FakeReply::ok({{QStringLiteral("planXML"), backupXml(id, QStringLiteral("answered first"))}});
        });
        QSignalSpy complite(list.data(), &PlanXmlList::complite);
        QVERIFY(list->getPlan(id));
        QVERIFY(list->getPlan(id));
        auto arrivedForThisPlan = [&] {
            return std::count_if(complite.cbegin(), complite.cend(),
                [&](const QList<QVariant>& args) { return args.at(0).toUuid() == id; });
        };
        QTRY_COMPARE(arrivedForThisPlan(), 2);
        QCOMPARE(list->plan(id)->name(), QStringLiteral("answered last"));
    }
};

QTEST_GUILESS_MAIN(TestPlanXmlList)
#include "tst_plan_xml_list.moc"
