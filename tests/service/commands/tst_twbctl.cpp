#include "plan_samples.h"
#include "raw_client.h"
#include "service_fixture.h"

#include "platform/communication/notification_types.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QtTest>

#include <memory>

using TWB::Test::PlanSamples;
using TWB::Test::RawClient;
using TWB::Test::ServiceFixture;
namespace Type = TWB::Common::Communication::Notification::Type;

namespace {

struct Run
{
    int code = -1;
    QByteArray out;
    QString err;

    QJsonObject reply() const { return QJsonDocument::fromJson(out).object(); }
    QJsonObject data() const { return reply().value(QStringLiteral("data")).toObject(); }
};

} // namespace

class TestTwbctl : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ServiceFixture> m_service;

    Run twbctl(QStringList arguments, const QByteArray& input = QByteArray())
    {
        arguments.prepend(m_service->socketPath());
        arguments.prepend(QStringLiteral("--socket"));
        QProcess process;
        process.start(QStringLiteral(TWBCTL_PROGRAM), arguments);
        process.write(input);
        process.closeWriteChannel();
        Run run;
        if (!process.waitForFinished(20000))
            return run;
        run.code = process.exitCode();
        run.out = process.readAllStandardOutput();
        run.err = QString::fromUtf8(process.readAllStandardError());
        return run;
    }

    QSet<QString> listed(const char* command, const char* list)
    {
        QSet<QString> ids;
        const QJsonArray rows = twbctl({QLatin1String(command)}).data().value(QLatin1String(list)).toArray();
        for (const QJsonValue& row : rows)
            ids << row.toObject().value(QStringLiteral("ID")).toString();
        return ids;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_service = std::make_unique<ServiceFixture>();
        QVERIFY2(m_service->start(), qPrintable(m_service->process().output()));
    }

    void planIsImportedListedAndRemoved()
    {
        const QString account = *listed("StorageGetConnection", "storageConnection").cbegin();
        const QUuid id = QUuid::createUuid();
        const QString file = m_service->environment().root() + QStringLiteral("/plan.xml");
        QFile xml(file);
        QVERIFY(xml.open(QIODevice::WriteOnly));
        xml.write(PlanSamples::backup(id, QStringLiteral("Imported"), QUuid(account)).toUtf8());
        xml.close();

        // The plan's id comes from the document itself.
        const Run imported
            = twbctl({QStringLiteral("--file"), QStringLiteral("planXML=") + file, QStringLiteral("PlanUpdate")});
        QVERIFY2(imported.code == 0, qPrintable(imported.err));
        QCOMPARE(imported.reply().value(QStringLiteral("success")).toBool(), true);
        QVERIFY(listed("PlanGetList", "planList").contains(id.toString()));

        const Run removed
            = twbctl({QStringLiteral("PlanRemove"), QStringLiteral("{\"ID\":\"%1\"}").arg(id.toString())});
        QVERIFY2(removed.code == 0, qPrintable(removed.err));
        QVERIFY(!listed("PlanGetList", "planList").contains(id.toString()));
    }

    void accountIsSavedFromStdinAndRemoved()
    {
        const QUuid id = QUuid::createUuid();
        const QJsonObject params = ServiceFixture::localAccount(
            id, QStringLiteral("Scripted"), m_service->environment().root() + QStringLiteral("/scripted"));
        const Run saved = twbctl({QStringLiteral("SaveStorage"), QStringLiteral("-")}, QJsonDocument(params).toJson());
        QVERIFY2(saved.code == 0, qPrintable(saved.err));
        QCOMPARE(saved.data().value(QStringLiteral("SaveStorage")).toString(), QStringLiteral("success"));
        QVERIFY(listed("StorageGetConnection", "storageConnection").contains(id.toString()));

        const Run removed = twbctl({QStringLiteral("--set"), QStringLiteral("ID=") + id.toString(),
            QStringLiteral("StorageDeleteFileSystem")});
        QVERIFY2(removed.code == 0, qPrintable(removed.err));
        QVERIFY(!listed("StorageGetConnection", "storageConnection").contains(id.toString()));
    }

    void watchPrintsEachNotificationOnALine()
    {
        QProcess watch;
        watch.start(QStringLiteral(TWBCTL_PROGRAM),
            {QStringLiteral("--socket"), m_service->socketPath(), QStringLiteral("--watch"), QStringLiteral("--count"),
                QStringLiteral("2")});
        QVERIFY(watch.waitForStarted());
        QByteArray said;
        QTRY_VERIFY2((said += watch.readAllStandardError()).contains("watching notifications"), said.constData());

        RawClient client;
        QVERIFY(client.connectTo(m_service->socketPath()));
        const QUuid id = QUuid::createUuid();
        QVERIFY(client
                    .call(QStringLiteral("SaveStorage"),
                        ServiceFixture::s3Account(id, QStringLiteral("Watched"), QStringLiteral("k")))
                    .success);
        QVERIFY(
            client.call(QStringLiteral("StorageDeleteFileSystem"), {{QStringLiteral("ID"), id.toString()}}).success);

        // The watcher may already have ended while the client's calls ran the event loop.
        QVERIFY(watch.state() == QProcess::NotRunning || watch.waitForFinished(10000));
        QCOMPARE(watch.exitCode(), 0);
        const QList<QByteArray> lines = watch.readAllStandardOutput().trimmed().split('\n');
        QCOMPARE(lines.size(), 2);
        const QJsonObject added = QJsonDocument::fromJson(lines.at(0)).object();
        const QJsonObject removed = QJsonDocument::fromJson(lines.at(1)).object();
        QCOMPARE(QUuid(added.value(QStringLiteral("id")).toString()), QUuid(QLatin1String(Type::StorageAdded)));
        QCOMPARE(QUuid(removed.value(QStringLiteral("id")).toString()), QUuid(QLatin1String(Type::StorageRemoved)));
        QCOMPARE(added.value(QStringLiteral("data")).toObject().value(QStringLiteral("id")).toString(), id.toString());
    }

    void failuresExitWithAReason_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("error");
        QTest::newRow("unknown command") << QStringList {QStringLiteral("NoSuchCommand")} << 1
                                         << "Unknown command: NoSuchCommand";
        QTest::newRow("refused") << QStringList {QStringLiteral("PlanRemove"), QStringLiteral("{\"ID\":\"nope\"}")} << 1
                                 << "Parameter \"ID\" of PlanRemove is not an identifier";
        QTest::newRow("params not JSON") << QStringList {QStringLiteral("PlanGetList"), QStringLiteral("{oops")} << 2
                                         << "the params are no JSON object";
        QTest::newRow("file missing") << QStringList {QStringLiteral("--file"),
            QStringLiteral("planXML=/nonexistent.xml"), QStringLiteral("PlanUpdate")}
                                      << 2 << "cannot read /nonexistent.xml";
        QTest::newRow("no command") << QStringList() << 2 << "give one command";
    }

    void failuresExitWithAReason()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, code);
        QFETCH(QString, error);
        const Run run = twbctl(arguments);
        QCOMPARE(run.code, code);
        QVERIFY2(run.err.contains(error), qPrintable(run.err));
    }

    void noServiceIsNamed()
    {
        QProcess process;
        process.start(QStringLiteral(TWBCTL_PROGRAM),
            {QStringLiteral("--socket"), m_service->environment().root() + QStringLiteral("/nobody.sock"),
                QStringLiteral("PlanGetList")});
        QVERIFY(process.waitForFinished(20000));
        QCOMPARE(process.exitCode(), 2);
        QVERIFY(process.readAllStandardError().contains("No service answers on"));
    }
};

QTEST_GUILESS_MAIN(TestTwbctl)
#include "tst_twbctl.moc"
