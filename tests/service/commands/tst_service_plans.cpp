#include "plan_samples.h"
#include "raw_client.h"
#include "service_fixture.h"

#include "platform/communication/notification_center.h"
#include "platform/communication/notification_types.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/factory.h"
#include "service/store/database.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using TWB::Test::PlanSamples;
using TWB::Test::RawClient;
using TWB::Test::ServiceFixture;
using TWB::Test::ServiceReply;
namespace Type = TWB::Common::Communication::Notification::Type;

namespace {

QJsonObject update(const QUuid& id, const QString& xml)
{
    return {{QStringLiteral("ID"), id.toString()}, {QStringLiteral("planXML"), xml}};
}

QJsonObject byId(const QUuid& id)
{
    return {{QStringLiteral("ID"), id.toString()}};
}

QJsonObject findPlan(const ServiceReply& list, const QUuid& id)
{
    const QJsonArray plans = list.data.value(QStringLiteral("planList")).toArray();
    for (const QJsonValue& plan : plans) {
        if (QUuid(plan.toObject().value(QStringLiteral("ID")).toString()) == id)
            return plan.toObject();
    }
    return QJsonObject();
}

// The next local time of day after now, in the plan table's form.
QString nextDaily(const QTime& at)
{
    QDateTime next(QDate::currentDate(), at, Qt::LocalTime);
    if (next <= QDateTime::currentDateTime())
        next = QDateTime(QDate::currentDate().addDays(1), at, Qt::LocalTime);
    return next.toUTC().toString(Qt::ISODate);
}

} // namespace

class TestServicePlans : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<RawClient> m_listener;
    QUuid m_account;

    bool savePlan(const QUuid& id, const QString& xml)
    {
        return m_listener->call(QStringLiteral("PlanUpdate"), update(id, xml)).success;
    }

    int planCount()
    {
        return m_listener->call(QStringLiteral("PlanGetList")).data.value(QStringLiteral("planList")).toArray().size();
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_service = std::make_unique<ServiceFixture>();
        m_listener = std::make_unique<RawClient>();
        QVERIFY2(m_service->startWithConsoles(*m_listener), qPrintable(m_service->process().output()));
        m_account = ServiceFixture::firstAccount(*m_listener);
        QVERIFY(!m_account.isNull());
    }

    void init() { m_listener->clearNotifications(); }

    void newPlanIsListedAndAnnouncedToEveryClient()
    {
        const auto center = TWB::Common::Communication::NotificationCenter::instance();
        QSignalSpy consoleNotes(center.data(), &TWB::Common::Communication::NotificationCenter::notification);
        const QUuid id = QUuid::createUuid();
        const QTime at(23, 45);
        // A name that the list's JSON must escape: quotes, a backslash, a tab and letters beyond ASCII.
        const QString name = QStringLiteral("Ann's \"Documents\" \\ \u00c6r\u00f8\t1");
        const ServiceReply saved = ServiceFixture::callThroughChannel(
            QStringLiteral("PlanUpdate"), update(id, PlanSamples::backup(id, name, m_account, {}, at)));
        QVERIFY2(saved.success, qPrintable(saved.error));

        // Both the console's channel and the second client hear of it.
        QVERIFY(m_listener->waitForNotification(QLatin1String(Type::PlanCreated), id.toString()));
        QTRY_VERIFY(!consoleNotes.isEmpty());
        const QJsonObject note = consoleNotes.first().first().value<QJsonDocument>().object();
        QCOMPARE(QUuid(note.value(QStringLiteral("id")).toString()), QUuid(QLatin1String(Type::PlanCreated)));
        QCOMPARE(note.value(QStringLiteral("data")).toObject().value(QStringLiteral("id")).toString(), id.toString());
        QCOMPARE(m_listener->countNotifications(QLatin1String(Type::PlanUpdated)), 0);

        const QJsonObject row = findPlan(ServiceFixture::callThroughChannel(QStringLiteral("PlanGetList")), id);
        QCOMPARE(row.value(QStringLiteral("Name")).toString(), name);
        QCOMPARE(row.value(QStringLiteral("SubType")).toInt(), 1);
        QCOMPARE(row.value(QStringLiteral("Type")).toInt(), 0);
        QCOMPARE(row.value(QStringLiteral("Status")).toInt(), 2);
        QCOMPARE(QUuid(row.value(QStringLiteral("StorageId")).toString()), m_account);
        QCOMPARE(row.value(QStringLiteral("Schedule")).toString(), QStringLiteral("Daily at 23:45"));
        QCOMPARE(row.value(QStringLiteral("NextRun")).toString(), nextDaily(at));
        for (const char* key : {"LastRunMessage", "LastRunStatus", "LastRunTime", "LastDuration", "LastUploadedCount",
                 "LastFailedCount", "LastUploadedSize", "LastFileCount", "LastFileSize", "NextRunFull"}) {
            QVERIFY2(row.contains(QLatin1String(key)), key);
            QCOMPARE(row.value(QLatin1String(key)).toString(), QString());
        }

        // PlanGetInfo takes the lower-case "id" and gives the same row.
        const ServiceReply info = ServiceFixture::callThroughChannel(
            QStringLiteral("PlanGetInfo"), {{QStringLiteral("id"), id.toString()}});
        QVERIFY2(info.success, qPrintable(info.error));
        QCOMPARE(info.data.value(QStringLiteral("planInfo")).toObject(), row);

        // The service keeps its list between calls, but a change another connection made to the
        // store shows all the same.
        {
            TWB::Service::Database store(m_service->storeFile());
            store.open();
            QSqlQuery rename = store.prepare(QStringLiteral("UPDATE plans SET name = ? WHERE id = ?"));
            rename.addBindValue(QStringLiteral("Renamed by a tool"));
            rename.addBindValue(id.toString());
            store.exec(rename);
        }
        QCOMPARE(findPlan(m_listener->call(QStringLiteral("PlanGetList")), id).value(QStringLiteral("Name")).toString(),
            QStringLiteral("Renamed by a tool"));
    }

    void changedPlanIsAnnouncedAsUpdatedAndReadsBackEqual()
    {
        const QUuid id = QUuid::createUuid();
        QVERIFY(savePlan(id, PlanSamples::backup(id, QStringLiteral("Old"), m_account)));
        const int before = planCount();
        const QString xml = PlanSamples::backup(
            id, QStringLiteral("New name"), m_account, {QStringLiteral("/srv"), QStringLiteral("/etc")});
        const ServiceReply saved = m_listener->call(QStringLiteral("PlanUpdate"), update(id, xml));
        QVERIFY2(saved.success, qPrintable(saved.error));
        QVERIFY(m_listener->waitForNotification(QLatin1String(Type::PlanUpdated), id.toString()));
        QCOMPARE(m_listener->countNotifications(QLatin1String(Type::PlanCreated), id.toString()), 1);
        QCOMPARE(planCount(), before);

        const ServiceReply read = ServiceFixture::callThroughChannel(QStringLiteral("PlanGetXML"), byId(id));
        QVERIFY2(read.success, qPrintable(read.error));
        const std::unique_ptr<TWB::Info::Plan::Base> sent(TWB::Info::Plan::Factory::create(xml));
        const std::unique_ptr<TWB::Info::Plan::Base> back(
            TWB::Info::Plan::Factory::create(read.data.value(QStringLiteral("planXML")).toString()));
        QVERIFY(sent && back);
        QVERIFY(*sent == *back);
    }

    void refusals_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QJsonObject>("params");
        QTest::addColumn<QString>("error");
        const QUuid unknown = QUuid::createUuid();
        for (const char* command : {"PlanExecuteStart", "PlanExecuteStop"}) {
            QTest::addRow("%s, unknown plan", command)
                << command << byId(unknown)
                << QStringLiteral("Parameter \"ID\" of %1 names no plan: %2").arg(command, unknown.toString());
            QTest::addRow("%s, no ID", command)
                << command << QJsonObject() << QStringLiteral("Parameter \"ID\" of %1 is missing").arg(command);
        }
        QTest::newRow("PlanGetInfo, upper-case ID")
            << "PlanGetInfo" << byId(unknown) << "Parameter \"id\" of PlanGetInfo is missing";
        const QString save = QStringLiteral("PlanUpdate");
        const QUuid id = QUuid::createUuid();
        const QString good = PlanSamples::backup(id, QStringLiteral("P"), QUuid());
        QTest::newRow("no ID") << save << QJsonObject {{QStringLiteral("planXML"), good}}
                               << "Parameter \"ID\" of PlanUpdate is missing";
        QTest::newRow("ID not an id") << save
                                      << QJsonObject {{QStringLiteral("ID"), QStringLiteral("plan-1")},
                                             {QStringLiteral("planXML"), good}}
                                      << "Parameter \"ID\" of PlanUpdate is not an identifier: \"plan-1\"";
        QTest::newRow("no planXML") << save << byId(id) << "Parameter \"planXML\" of PlanUpdate is missing";
        QTest::newRow("planXML not a string")
            << save << QJsonObject {{QStringLiteral("ID"), id.toString()}, {QStringLiteral("planXML"), 5}}
            << "Parameter \"planXML\" of PlanUpdate is not a string";
        QTest::newRow("not XML") << save << update(id, QStringLiteral("<Plan")) << "is not a plan: The plan is no XML";
        QTest::newRow("not a plan") << save << update(id, QStringLiteral("<Backup format=\"1\"/>"))
                                    << "is not a plan: The document is no plan";
        QTest::newRow("malformed plan") << save
                                        << update(id,
                                               QString(good).replace(
                                                   QStringLiteral("<Type>0</Type>"), QStringLiteral("<Type>x</Type>")))
                                        << "is not a plan: The plan document is malformed";
        const QUuid other = QUuid::createUuid();
        QTest::newRow("ID of another plan")
            << save << update(other, good)
            << QStringLiteral("Parameter \"ID\" of PlanUpdate is %1, but the document in \"planXML\" is the plan %2")
                   .arg(other.toString(), id.toString());
        const QUuid missing = QUuid::createUuid();
        QTest::newRow("unknown storage")
            << save << update(id, PlanSamples::backup(id, QStringLiteral("P"), missing))
            << QStringLiteral("names the storage account %1, which does not exist").arg(missing.toString());
        QTest::newRow("no name") << save << update(id, PlanSamples::backup(id, QStringLiteral("  "), QUuid()))
                                 << "holds a plan without a name";
    }

    void refusals()
    {
        QFETCH(QString, command);
        QFETCH(QJsonObject, params);
        QFETCH(QString, error);
        const int before = planCount();
        const ServiceReply reply = m_listener->call(command, params);
        QVERIFY(reply.received);
        QVERIFY(!reply.success);
        QVERIFY2(reply.error.contains(error), qPrintable(reply.error));
        QCOMPARE(planCount(), before);
        QCOMPARE(m_listener->notifications().size(), 0);
    }

    void planKeepsItsKind()
    {
        const QUuid id = QUuid::createUuid();
        QVERIFY(savePlan(id, PlanSamples::backup(id, QStringLiteral("B"), m_account)));
        const ServiceReply reply = m_listener->call(
            QStringLiteral("PlanUpdate"), update(id, PlanSamples::restore(id, QStringLiteral("R"), m_account)));
        QVERIFY(!reply.success);
        QVERIFY2(reply.error.contains(QStringLiteral("a plan keeps its kind")), qPrintable(reply.error));
        QCOMPARE(
            findPlan(m_listener->call(QStringLiteral("PlanGetList")), id).value(QStringLiteral("SubType")).toInt(), 1);
    }

    void removedPlanIsAnnouncedAndGone()
    {
        const QUuid id = QUuid::createUuid();
        QVERIFY(savePlan(id, PlanSamples::restore(id, QStringLiteral("R"), m_account)));
        const ServiceReply removed = ServiceFixture::callThroughChannel(QStringLiteral("PlanRemove"), byId(id));
        QVERIFY2(removed.success, qPrintable(removed.error));
        QVERIFY(m_listener->waitForNotification(QLatin1String(Type::PlanRemoved), id.toString()));
        QVERIFY(findPlan(m_listener->call(QStringLiteral("PlanGetList")), id).isEmpty());

        const ServiceReply info
            = m_listener->call(QStringLiteral("PlanGetInfo"), {{QStringLiteral("id"), id.toString()}});
        QVERIFY(info.success);
        QVERIFY(info.data.value(QStringLiteral("planInfo")).toObject().isEmpty());
        const QString gone = QStringLiteral("names no plan: %1").arg(id.toString());
        for (const QString& command : {QStringLiteral("PlanGetXML"), QStringLiteral("PlanRemove")}) {
            const ServiceReply reply = m_listener->call(command, byId(id));
            QVERIFY(!reply.success);
            QCOMPARE(reply.error, QStringLiteral("Parameter \"ID\" of %1 %2").arg(command, gone));
        }
        QCOMPARE(m_listener->countNotifications(QLatin1String(Type::PlanRemoved)), 1);
    }

    void sharesInUseAreListedByPlan()
    {
        const QUuid backup = QUuid::createUuid();
        QVERIFY(savePlan(backup,
            PlanSamples::backup(backup, QStringLiteral("Shares"), m_account,
                {QStringLiteral("/TWB_SHARES/nas/docs"), QStringLiteral("/TWB_SHARES/nas/photos"),
                    QStringLiteral("/TWB_SHARES/media"), QStringLiteral("/home")})));
        const ServiceReply reply = ServiceFixture::callThroughChannel(QStringLiteral("GetUsedShare"));
        QVERIFY2(reply.success, qPrintable(reply.error));
        QSet<QString> shares;
        const QJsonArray list = reply.data.value(QStringLiteral("list")).toArray();
        for (const QJsonValue& entry : list) {
            if (QUuid(entry.toObject().value(QStringLiteral("plan")).toString()) == backup)
                shares << entry.toObject().value(QStringLiteral("share")).toString();
        }
        QCOMPARE(shares, QSet<QString>({QStringLiteral("/TWB_SHARES/nas"), QStringLiteral("/TWB_SHARES/media")}));
        // Nothing else in this test's store backs up a share.
        QCOMPARE(list.size(), 2);
    }

    void plansAndTheirSecretsSurviveARestartSealed()
    {
        const QUuid id = QUuid::createUuid();
        const QString password = QStringLiteral("correct horse battery staple");
        const QString xml = PlanSamples::backup(
            id, QStringLiteral("Sealed"), m_account, {QStringLiteral("/home")}, QTime(), password);
        QVERIFY(savePlan(id, xml));
        const int before = planCount();

        // Left as the service before this one kept it, with the documents in the plans' own rows: the
        // start moves them out, and no plan may lose its document on the way.
        QVERIFY(m_service->process().terminate());
        {
            TWB::Service::Database store(m_service->storeFile());
            store.open();
            store.exec(QStringLiteral("ALTER TABLE plans ADD COLUMN xml TEXT NOT NULL DEFAULT ''"));
            store.exec(
                QStringLiteral("UPDATE plans SET xml = (SELECT xml FROM plan_documents d WHERE d.plan_id = plans.id)"));
            store.exec(QStringLiteral("DROP INDEX plans_by_creation"));
            store.exec(QStringLiteral("DROP INDEX runs_unfinished"));
            store.exec(QStringLiteral("DROP TABLE plan_documents"));
            store.exec(QStringLiteral("PRAGMA user_version=4"));
        }
        QVERIFY2(m_service->start(), qPrintable(m_service->process().output()));
        QVERIFY(!m_service->storeBytes().contains(password.toUtf8()));
        QVERIFY(!m_service->storeBytes().contains("<Plan"));

        RawClient client;
        QVERIFY(client.connectTo(m_service->socketPath()));
        QCOMPARE(
            client.call(QStringLiteral("PlanGetList")).data.value(QStringLiteral("planList")).toArray().size(), before);
        const ServiceReply read = client.call(QStringLiteral("PlanGetXML"), byId(id));
        QVERIFY2(read.success, qPrintable(read.error));
        const std::unique_ptr<TWB::Info::Plan::Base> plan(
            TWB::Info::Plan::Factory::create(read.data.value(QStringLiteral("planXML")).toString()));
        auto* files = dynamic_cast<TWB::Info::Plan::BackupFile*>(plan.get());
        QVERIFY(files);
        QCOMPARE(files->encryption().password(), password);
    }
};

QTEST_MAIN(TestServicePlans)
#include "tst_service_plans.moc"
