#include "platform/communication/connection_manager.h"
#include "platform/communication/icommand.h"
#include "platform/communication/iparser.h"
#include "platform/communication/json_keys.h"
#include "platform/communication/manager.h"
#include "platform/communication/notification_center.h"
#include "platform/communication/notification_types.h"
#include "platform/communication/parser_factory.h"
#include "support/fake_service.h"
#include "support/log_capture.h"
#include "support/test_caller.h"
#include "support/test_environment.h"

#include <QJsonArray>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace TWB::Common::Communication;
using TWB::Test::FakeReply;
using TWB::Test::FakeRequest;
using TWB::Test::FakeService;
using TWB::Test::LogCapture;
using TWB::Test::TestCaller;
using TWB::Test::TestEnvironment;

namespace {
const QString formatError = QStringLiteral("Local command reply format error");
}

class TestCommandChannel : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    FakeService m_service;

    bool waitConnected()
    {
        auto connection = ConnectionManager::instance();
        if (!connection)
            return false;
        return QTest::qWaitFor([&] { return connection->isLocalManagmentConnected(); }, 5000)
            && m_service.waitForClient();
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        QVERIFY(m_service.listen(m_env->socketPath()));
        QVERIFY(ConnectionManager::instance());
        TestEnvironment::speedUpChannel();
    }

    void init()
    {
        if (!m_service.isListening())
            QVERIFY(m_service.listen(m_env->socketPath()));
        QVERIFY(waitConnected());
        m_service.clearRequests();
        qputenv("USER", "alice");
    }

    void roundTripCarriesTheEnvelope()
    {
        m_service.on(QStringLiteral("PlanGetList"), [](const FakeRequest& request) {
            return FakeReply::ok({{QStringLiteral("planList"), QJsonArray {request.params.value("profile")}}});
        });
        TestCaller caller;
        QSignalSpy succeeded(&caller, &TestCaller::succeeded);
        QSignalSpy failed(&caller, &TestCaller::failed);
        QVERIFY(caller.send(QStringLiteral("PlanGetList")));
        QVERIFY(succeeded.wait());
        QCOMPARE(failed.count(), 0);

        const QJsonObject data = succeeded.at(0).at(0).toJsonObject();
        QCOMPARE(data.value(QStringLiteral("planList")).toArray(), QJsonArray {QStringLiteral("alice")});

        QCOMPARE(m_service.requests().size(), 1);
        const QJsonObject envelope = m_service.requests().first().envelope;
        QCOMPARE(envelope.keys(),
            (QStringList {QStringLiteral("command"), QStringLiteral("connection_type"), QStringLiteral("id"),
                QStringLiteral("params"), QStringLiteral("session_id"), QStringLiteral("type")}));
        QCOMPARE(envelope.value(QStringLiteral("command")).toString(), QStringLiteral("PlanGetList"));
        QVERIFY(!QUuid(envelope.value(QStringLiteral("id")).toString()).isNull());
        QCOMPARE(envelope.value(QStringLiteral("session_id")).toString(), Manager::instance()->sessionId());
        QCOMPARE(envelope.value(QStringLiteral("params")).toObject(),
            (QJsonObject {{QStringLiteral("profile"), QStringLiteral("alice")}}));
        // The request the slot reads back is the one that went out.
        QCOMPARE(succeeded.at(0).at(1).toJsonObject(), envelope);
        // The caller deleted its command in the result slot.
        QTRY_VERIFY(caller.lastCommand.isNull());
    }

    void commandFlagsAfterAReply()
    {
        m_service.on(QStringLiteral("GetSettings"), FakeReply::ok({{QStringLiteral("k"), 1}}));
        std::unique_ptr<ICommand> command(Manager::instance()->commandFactory(QStringLiteral("GetSettings")));
        QVERIFY(command);
        QSignalSpy complite(command.get(), &ICommand::complite);
        QSignalSpy error(command.get(), &ICommand::error);
        QSignalSpy timeout(command.get(), &ICommand::timeout);
        command->exec();
        // exec() never answers from inside itself.
        QCOMPARE(complite.count(), 0);
        QVERIFY(complite.wait());
        QVERIFY(command->finished);
        QVERIFY(!command->failed);
        QVERIFY(!command->isReplyError());
        QCOMPARE(command->reply().object().value(QStringLiteral("id")).toString(), command->id());
        QCOMPARE(
            command->reply().object().value(QStringLiteral("data")).toObject().value(QStringLiteral("k")).toInt(), 1);
        QCOMPARE(error.count(), 0);
        QCOMPARE(timeout.count(), 0);

        // A second exec is refused and sends nothing.
        LogCapture log;
        command->exec();
        QTest::qWait(50); // nothing to wait for: the check is that no request follows
        QCOMPARE(m_service.requests(QStringLiteral("GetSettings")).size(), 1);
        QCOMPARE(complite.count(), 1);
        QVERIFY(log.contains(QtWarningMsg, QStringLiteral("TWB"), QStringLiteral("executed twice")));
    }

    void replyWithoutSuccessFlagIsAnError()
    {
        m_service.on(QStringLiteral("GetContentType"), [this](const FakeRequest& request) {
            m_service.sendRaw(
                QByteArray("{\"type\":\"reply\",\"id\":\"") + request.id.toUtf8() + "\",\"data\":{}}" + '\n');
            return FakeReply::none();
        });
        TestCaller caller;
        QSignalSpy failed(&caller, &TestCaller::failed);
        QVERIFY(caller.send(QStringLiteral("GetContentType")));
        QVERIFY(failed.wait());
        QVERIFY(!failed.at(0).at(0).toString().isEmpty());
        QVERIFY(failed.at(0).at(0).toString() != formatError);
    }

    void brokenExchangeEndsInFormatError_data()
    {
        QTest::addColumn<FakeReply>("reply");
        QTest::addColumn<int>("timeoutMs");
        QTest::addColumn<QString>("signal");
        QTest::newRow("line that is not json") << FakeReply::raw("{oops\n") << 0 << "error";
        QTest::newRow("json array") << FakeReply::raw("[1,2]\n") << 0 << "error";
        QTest::newRow("empty json value") << FakeReply::raw("null\n") << 0 << "error";
        QTest::newRow("service vanishes mid-command") << FakeReply::closeConnection() << 0 << "error";
        QTest::newRow("no reply in time") << FakeReply::none() << 200 << "timeout";
        QTest::newRow("reply after the time ran out") << FakeReply::ok().after(500) << 150 << "timeout";
    }

    void brokenExchangeEndsInFormatError()
    {
        QFETCH(FakeReply, reply);
        QFETCH(int, timeoutMs);
        QFETCH(QString, signal);
        m_service.on(QStringLiteral("HistoryListByPlan"), reply);
        LogCapture log;
        TestCaller caller;
        QSignalSpy failed(&caller, &TestCaller::failed);
        QSignalSpy succeeded(&caller, &TestCaller::succeeded);
        QVERIFY(caller.send(QStringLiteral("HistoryListByPlan"), {}, timeoutMs));
        QPointer<ICommand> command = caller.lastCommand;
        QVERIFY(command);
        QSignalSpy errorSignal(command.data(), &ICommand::error);
        QSignalSpy timeoutSignal(command.data(), &ICommand::timeout);
        QVERIFY(failed.wait());
        QCOMPARE(failed.at(0).at(0).toString(), formatError);
        QCOMPARE(errorSignal.count(), signal == QLatin1String("error") ? 1 : 0);
        QCOMPARE(timeoutSignal.count(), signal == QLatin1String("timeout") ? 1 : 0);
        QVERIFY(log.contains(QtWarningMsg, QStringLiteral("TWB"), formatError));
        // Deleted on the failure path too.
        QTRY_VERIFY(command.isNull());
        // A late reply finds no command and harms nothing.
        QTest::qWait(timeoutMs > 0 ? 400 : 0); // lets a delayed reply arrive after the timeout
        QCOMPARE(succeeded.count(), 0);
        QCOMPARE(failed.count(), 1);
    }

    void everyCommandInFlightFailsWhenTheServiceVanishes()
    {
        m_service.on(QStringLiteral("PlanGetInfo"), FakeReply::none());
        TestCaller caller;
        QSignalSpy failed(&caller, &TestCaller::failed);
        for (int i = 0; i < 3; ++i)
            QVERIFY(caller.send(QStringLiteral("PlanGetInfo"), {{QStringLiteral("ID"), i}}));
        QTRY_COMPARE(m_service.requests(QStringLiteral("PlanGetInfo")).size(), 3);
        QCOMPARE(ConnectionManager::instance()->commandsInFlight(), 3);
        m_service.closeClients();
        QTRY_COMPARE(failed.count(), 3);
        for (const auto& args : qAsConst(failed))
            QCOMPARE(args.at(0).toString(), formatError);
        QCOMPARE(ConnectionManager::instance()->commandsInFlight(), 0);
    }

    void unregisteredCommandNameIsRefused()
    {
        QVERIFY(!Manager::instance()->commandFactory(QStringLiteral("NoSuchCommand")));
        TestCaller caller;
        QSignalSpy failed(&caller, &TestCaller::failed);
        QVERIFY(!caller.send(QStringLiteral("NoSuchCommand")));
        QCOMPARE(failed.count(), 1);
        QCOMPARE(failed.at(0).at(0).toString(), QStringLiteral("Commnunication command don't registrate"));
        QTest::qWait(50); // nothing may reach the service; there is no event to wait for
        QCOMPARE(m_service.requests().size(), 0);
    }

    void unsetUserGivesAnEmptyProfile()
    {
        qunsetenv("USER");
        m_service.on(QStringLiteral("PlanGetList"), FakeReply::ok());
        TestCaller caller;
        QSignalSpy succeeded(&caller, &TestCaller::succeeded);
        QVERIFY(caller.send(QStringLiteral("PlanGetList")));
        QVERIFY(succeeded.wait());
        const QJsonObject params = m_service.requests().first().params;
        QVERIFY(params.contains(QStringLiteral("profile")));
        QCOMPARE(params.value(QStringLiteral("profile")), QJsonValue(QString()));
    }

    void commandSentWhileDisconnectedGoesOutOnReconnection()
    {
        m_service.stop();
        QTRY_VERIFY(!ConnectionManager::instance()->isLocalManagmentConnected());
        m_service.on(QStringLiteral("PlanGetList"), FakeReply::ok({{QStringLiteral("late"), true}}));
        TestCaller caller;
        QSignalSpy succeeded(&caller, &TestCaller::succeeded);
        QVERIFY(caller.send(QStringLiteral("PlanGetList")));
        QTest::qWait(100); // the service is down on purpose; the command must stay queued meanwhile
        QCOMPARE(succeeded.count(), 0);
        QVERIFY(m_service.listen(m_env->socketPath()));
        QVERIFY(succeeded.wait(3000));
        QCOMPARE(succeeded.at(0).at(0).toJsonObject().value(QStringLiteral("late")).toBool(), true);
    }

    void commandFailsWhenNoServiceComesInTime()
    {
        auto connection = ConnectionManager::instance();
        connection->setQueueTimeout(200);
        m_service.stop();
        QTRY_VERIFY(!connection->isLocalManagmentConnected());
        TestCaller caller;
        QSignalSpy failed(&caller, &TestCaller::failed);
        QVERIFY(caller.send(QStringLiteral("PlanGetList")));
        QVERIFY(failed.wait(2000));
        QCOMPARE(failed.at(0).at(0).toString(), formatError);
        QTRY_VERIFY(caller.lastCommand.isNull());
        connection->setQueueTimeout(2000);
    }

    void connectionStateFollowsTheService()
    {
        auto connection = ConnectionManager::instance();
        QSignalSpy connected(connection.data(), &ConnectionManager::localManagmentConnected);
        QSignalSpy disconnected(connection.data(), &ConnectionManager::localManagmentDisconnected);
        QSignalSpy attempts(connection.data(), &ConnectionManager::connectionAttemptFailed);
        m_service.stop();
        QVERIFY(disconnected.wait());
        QCOMPARE(disconnected.count(), 1);
        QVERIFY(!connection->isLocalManagmentConnected());
        // Retries go on while the service is away, no faster than the first interval.
        QTRY_VERIFY(attempts.count() >= 3);
        QVERIFY(attempts.count() < 40);
        QCOMPARE(connected.count(), 0);

        QVERIFY(m_service.listen(m_env->socketPath()));
        QVERIFY(connected.wait(2000));
        QCOMPARE(connected.count(), 1);
        QCOMPARE(disconnected.count(), 1);
        QVERIFY(connection->isLocalManagmentConnected());
    }

    void notificationsArriveInOrder()
    {
        auto center = NotificationCenter::instance();
        QSignalSpy notifications(center.data(), &NotificationCenter::notification);
        m_service.on(QStringLiteral("PlanGetList"), FakeReply::ok().after(20));
        TestCaller caller;
        QSignalSpy succeeded(&caller, &TestCaller::succeeded);
        QVERIFY(caller.send(QStringLiteral("PlanGetList")));
        const int count = 300;
        for (int i = 0; i < count; ++i)
            m_service.notify(QLatin1String(Notification::Type::PlanProgress), {{QStringLiteral("seq"), i}});
        QTRY_COMPARE(notifications.count(), count);
        QVERIFY(succeeded.wait() || succeeded.count() == 1);
        for (int i = 0; i < count; ++i) {
            const QJsonObject document = notifications.at(i).at(0).toJsonDocument().object();
            QCOMPARE(document.value(QStringLiteral("data")).toObject().value(QStringLiteral("seq")).toInt(), i);
        }
    }

    void replyForNoCommandInFlightIsIgnored()
    {
        LogCapture log;
        m_service.sendRaw("{\"type\":\"reply\",\"id\":\"{00000000-0000-0000-0000-000000000001}\",\"success\":true}"
                          "\n");
        m_service.sendRaw("{\"type\":\"surprise\"}"
                          "\n");
        QTRY_VERIFY(log.contains(QtDebugMsg, QStringLiteral("TWB"), QStringLiteral("Reply for no command in flight")));
        QTRY_VERIFY(log.contains(QtDebugMsg, QStringLiteral("TWB"), QStringLiteral("unknown type")));
        QVERIFY(ConnectionManager::instance()->isLocalManagmentConnected());
    }

    void largeReplyArrivesWhole()
    {
        const QString blob(4 * 1024 * 1024, QLatin1Char('z'));
        m_service.on(QStringLiteral("GetRestoreContent"), FakeReply::ok({{QStringLiteral("blob"), blob}}));
        TestCaller caller;
        QSignalSpy succeeded(&caller, &TestCaller::succeeded);
        QVERIFY(caller.send(QStringLiteral("GetRestoreContent")));
        QVERIFY(succeeded.wait(10000));
        QCOMPARE(succeeded.at(0).at(0).toJsonObject().value(QStringLiteral("blob")).toString().size(), blob.size());
    }

    void parserFactoryKnowsTheDeclaredTypes_data()
    {
        QTest::addColumn<QByteArray>("document");
        QTest::addColumn<bool>("parsed");
        QTest::addColumn<QString>("type");
        QTest::newRow("plan created") << QByteArray(
            "{\"type\":\"notification\",\"id\":\"{ca927cb1-de60-46c1-a978-cda7a44bbf01}\",\"data\":{\"id\":\"{1}\"}}")
                                      << true << "{ca927cb1-de60-46c1-a978-cda7a44bbf01}";
        QTest::newRow("upper-case guid of a lower-case type")
            << QByteArray("{\"type\":\"notification\",\"id\":\"{CA927CB1-DE60-46C1-A978-CDA7A44BBF01}\",\"data\":{}}")
            << true << "{ca927cb1-de60-46c1-a978-cda7a44bbf01}";
        QTest::newRow("update starting, declared in upper case")
            << QByteArray("{\"type\":\"notification\",\"id\":\"{24b13160-716f-41b7-ad5f-a15d496a1af8}\"}") << true
            << "{24B13160-716F-41B7-AD5F-A15D496A1AF8}";
        QTest::newRow("unknown guid") << QByteArray(
            "{\"type\":\"notification\",\"id\":\"{11111111-2222-3333-4444-555555555555}\"}")
                                      << false << "";
        QTest::newRow("not a guid") << QByteArray("{\"type\":\"notification\",\"id\":\"plan created\"}") << false << "";
        QTest::newRow("a reply, not a notification")
            << QByteArray("{\"type\":\"reply\",\"id\":\"{ca927cb1-de60-46c1-a978-cda7a44bbf01}\"}") << false << "";
        QTest::newRow("empty") << QByteArray() << false << "";
    }

    void parserFactoryKnowsTheDeclaredTypes()
    {
        QFETCH(QByteArray, document);
        QFETCH(bool, parsed);
        QFETCH(QString, type);
        const Notification::ParserFactory factory;
        std::unique_ptr<Notification::IParser> parser(factory.create(QJsonDocument::fromJson(document)));
        QCOMPARE(bool(parser), parsed);
        if (parser)
            QCOMPARE(parser->type(), QUuid(type));
    }
};

QTEST_GUILESS_MAIN(TestCommandChannel)
#include "tst_command_channel.moc"
