#include "plan_samples.h"
#include "raw_client.h"
#include "service_fixture.h"

#include "platform/communication/notification_types.h"
#include "service/store/database.h"

#include <QJsonArray>
#include <QRandomGenerator>
#include <QSet>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QtTest>

#include <memory>

using TWB::Test::PlanSamples;
using TWB::Test::RawClient;
using TWB::Test::ServiceFixture;
using TWB::Test::ServiceProcess;
using TWB::Test::ServiceReply;
namespace Type = TWB::Common::Communication::Notification::Type;

namespace {

QSet<QString> ids(const ServiceReply& reply, const char* list)
{
    QSet<QString> result;
    const QJsonArray rows = reply.data.value(QLatin1String(list)).toArray();
    for (const QJsonValue& row : rows)
        result << row.toObject().value(QStringLiteral("ID")).toString();
    return result;
}

QString pragma(const QString& file, const QString& statement)
{
    TWB::Service::Database store(file);
    store.open();
    QSqlQuery query = store.prepare(statement);
    return store.scalar(query).toString();
}

} // namespace

class TestServiceRobustness : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ServiceFixture> m_service;

private Q_SLOTS:
    void initTestCase()
    {
        m_service = std::make_unique<ServiceFixture>();
        QVERIFY2(m_service->start(), qPrintable(m_service->process().output()));
    }

    void init() { QVERIFY2(m_service->start(), qPrintable(m_service->process().output())); }

    void killedServiceLosesNothingItAcknowledgedOrAnnounced()
    {
        constexpr int rounds = 8;
        constexpr int inFlight = 4;
        int killedWithWritesInFlight = 0;
        for (int round = 0; round < rounds; ++round) {
            QVERIFY2(m_service->start(), qPrintable(m_service->process().output()));
            RawClient writer;
            QVERIFY(writer.connectTo(m_service->socketPath()));
            const QUuid account = ServiceFixture::firstAccount(writer);
            QVERIFY(!account.isNull());

            // Writes alternate between accounts and plans; each request knows what it creates.
            QHash<QString, QString> creates;
            QSet<QString> acknowledged;
            QSet<QString> announced;
            int sent = 0;
            int answered = 0;
            const int killAfter = 3 + QRandomGenerator::global()->bounded(40);
            bool killed = false;
            auto sendNext = [&] {
                const QUuid id = QUuid::createUuid();
                const QString request = sent % 2 == 0
                    ? writer.send(QStringLiteral("SaveStorage"),
                        ServiceFixture::s3Account(id, QStringLiteral("Round %1").arg(round), QStringLiteral("secret")))
                    : writer.send(QStringLiteral("PlanUpdate"),
                        {{QStringLiteral("ID"), id.toString()},
                            {QStringLiteral("planXML"),
                                PlanSamples::backup(id, QStringLiteral("Plan %1").arg(sent), account)}});
                creates.insert(request, id.toString());
                ++sent;
            };
            connect(&writer, &RawClient::replied, &writer, [&](const QString& request) {
                if (killed)
                    return;
                ++answered;
                if (writer.reply(request).success)
                    acknowledged << creates.value(request);
                if (answered >= killAfter) {
                    // Killed from inside the reply, with further writes on their way.
                    if (sent > answered)
                        ++killedWithWritesInFlight;
                    killed = true;
                    m_service->process().kill();
                    return;
                }
                sendNext();
            });
            connect(&writer, &RawClient::notified, &writer, [&](const QJsonObject& note) {
                if (!killed)
                    announced << note.value(QStringLiteral("data")).toObject().value(QStringLiteral("id")).toString();
            });
            for (int i = 0; i < inFlight; ++i)
                sendNext();
            QTRY_VERIFY_WITH_TIMEOUT(killed, 20000);
            QVERIFY(!acknowledged.isEmpty());

            QCOMPARE(pragma(m_service->storeFile(), QStringLiteral("PRAGMA integrity_check")), QStringLiteral("ok"));
            QVERIFY2(m_service->start(), qPrintable(m_service->process().output()));
            RawClient reader;
            QVERIFY(reader.connectTo(m_service->socketPath()));
            const QSet<QString> present = ids(reader.call(QStringLiteral("StorageGetConnection")), "storageConnection")
                + ids(reader.call(QStringLiteral("PlanGetList")), "planList");
            const QSet<QString> lost = (acknowledged + announced) - present;
            QVERIFY2(lost.isEmpty(), qPrintable(QStringList(lost.values()).join(QLatin1Char(' '))));
        }
        // The kills must have landed while writes were under way, or the test proved little.
        QVERIFY(killedWithWritesInFlight > 0);
    }

    void manyClientsAtOnceEachGetTheirRepliesAndEveryNotification()
    {
        constexpr int clients = 16;
        constexpr int requestsEach = 24;
        RawClient probe;
        QVERIFY(probe.connectTo(m_service->socketPath()));
        QVERIFY(probe.call(QStringLiteral("PlanGetList")).success);
        const QUuid account = ServiceFixture::firstAccount(probe);
        const int accountsBefore = ids(probe.call(QStringLiteral("StorageGetConnection")), "storageConnection").size();

        std::vector<std::unique_ptr<RawClient>> all;
        QList<QStringList> sentBy;
        QSet<QString> created;
        for (int c = 0; c < clients; ++c) {
            all.push_back(std::make_unique<RawClient>());
            QVERIFY(all.back()->connectTo(m_service->socketPath()));
            // A reply shows that the service took the connection in; until then it cannot be told of changes.
            QVERIFY(all.back()->call(QStringLiteral("PlanGetList")).success);
        }
        for (int c = 0; c < clients; ++c) {
            QStringList sent;
            for (int r = 0; r < requestsEach; ++r) {
                switch (r % 3) {
                case 0: {
                    const QUuid id = QUuid::createUuid();
                    created << id.toString();
                    sent << all[c]->send(QStringLiteral("SaveStorage"),
                        ServiceFixture::s3Account(id, QStringLiteral("Client %1").arg(c), QStringLiteral("k")));
                    break;
                }
                case 1:
                    sent << all[c]->send(QStringLiteral("PlanGetList"));
                    break;
                default:
                    sent << all[c]->send(
                        QStringLiteral("GetRestoreContent"), {{QStringLiteral("destination"), account.toString()}});
                }
            }
            sentBy << sent;
        }
        for (int c = 0; c < clients; ++c) {
            for (const QString& request : qAsConst(sentBy[c])) {
                QVERIFY(all[c]->waitForReply(request));
                QVERIFY2(all[c]->reply(request).success, qPrintable(all[c]->reply(request).error));
            }
        }
        const QSet<QString> listed = ids(probe.call(QStringLiteral("StorageGetConnection")), "storageConnection");
        QCOMPARE(listed.size(), accountsBefore + created.size());
        QVERIFY(listed.contains(created));
        // Every client heard of every account, whoever added it.
        for (int c = 0; c < clients; ++c)
            QTRY_COMPARE(all[c]->countNotifications(QLatin1String(Type::StorageAdded)), created.size());
        QTRY_COMPARE(probe.countNotifications(QLatin1String(Type::StorageAdded)), created.size());
    }

    void garbageSenderIsDroppedWithoutHarmingTheOthers()
    {
        RawClient patient;
        RawClient vandal;
        RawClient arrays;
        QVERIFY(patient.connectTo(m_service->socketPath()));
        QVERIFY(vandal.connectTo(m_service->socketPath()));
        QVERIFY(arrays.connectTo(m_service->socketPath()));
        // Half a request is waiting in the service's buffer for this client while the others misbehave.
        const QByteArray request
            = "{\"type\":\"request\",\"id\":\"{patient}\",\"command\":\"StorageGetConnection\",\"params\":{}}\n";
        patient.sendRaw(request.left(30));

        QSignalSpy vandalGone(&vandal, &RawClient::disconnected);
        QSignalSpy arraysGone(&arrays, &RawClient::disconnected);
        vandal.sendRaw("\x01\x02 this is not json at all\n");
        arrays.sendRaw("[1,2,3]\n");
        QVERIFY(vandalGone.wait() || vandalGone.count() == 1);
        QTRY_COMPARE(arraysGone.count(), 1);

        patient.sendRaw(request.mid(30));
        QVERIFY(patient.waitForReply(QStringLiteral("{patient}")));
        QVERIFY(patient.reply(QStringLiteral("{patient}")).success);
        QVERIFY(patient.call(QStringLiteral("PlanGetList")).success);
        QVERIFY(m_service->process().isRunning());
    }

    void storeIsWalWithTheCurrentSchema()
    {
        QCOMPARE(pragma(m_service->storeFile(), QStringLiteral("PRAGMA journal_mode")), QStringLiteral("wal"));
        QCOMPARE(pragma(m_service->storeFile(), QStringLiteral("PRAGMA user_version")).toInt(),
            TWB::Service::Database::currentSchemaVersion());
        QVERIFY(TWB::Service::Database::currentSchemaVersion() >= 1);
    }

    void storeOfANewerServiceIsRefused()
    {
        const QString folder = m_service->environment().root() + QStringLiteral("/newer");
        QVERIFY(QDir().mkpath(folder + QStringLiteral("/data")));
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("newer"));
            db.setDatabaseName(folder + QStringLiteral("/data/service.db"));
            QVERIFY(db.open());
            QSqlQuery query(db);
            QVERIFY(query.exec(QStringLiteral("PRAGMA user_version=999")));
            db.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("newer"));
        ServiceProcess newer(folder + QStringLiteral("/service.sock"), folder + QStringLiteral("/data"));
        QVERIFY(!newer.start(5000));
        QTRY_VERIFY(newer.output().contains(QStringLiteral("has schema version 999, newer than")));
        QVERIFY(!newer.isRunning());
    }
};

QTEST_MAIN(TestServiceRobustness)
#include "tst_service_robustness.moc"
