#include "engine_test_support.h"
#include "raw_client.h"
#include "service_fixture.h"
#include "support/smtp_sink.h"

#include "platform/plan/backup_file.h"

#include <QFile>
#include <QHostInfo>
#include <QJsonArray>
#include <QtTest>

#include <memory>

using namespace TWB::Info::Plan;
using namespace TWB::Test;

/// Notification emails of runs through the real twbd, real restic runs and an SMTP sink that demands AUTH.
class TestServiceNotices : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<RawClient> m_client;
    SmtpSink m_sink;
    QUuid m_account;
    QString m_source;

    ServiceReply setSettings(const QJsonObject& settings)
    {
        return m_client->call(QStringLiteral("SetNoticeSettings"), {{QStringLiteral("settings"), settings}});
    }

    QJsonObject settings()
    {
        return m_client->call(QStringLiteral("GetNoticeSettings")).data.value(QStringLiteral("settings")).toObject();
    }

    std::unique_ptr<BackupFile> plan(const QString& name, const QString& item, Notification::Type type)
    {
        auto plan = EngineTestSupport::backupPlan(m_account, name, {item});
        plan->notification().setType(type);
        plan->notification().setSubject(QStringLiteral("%PLAN_NAME% on %COMPUTER_NAME%: %RESULT%"));
        plan->notification().setGenerateDetailedReport(true);
        return plan;
    }

    QString lastRunMessage(const QUuid& plan)
    {
        const QJsonArray runs = EngineTestSupport::history(*m_client, QStringLiteral("HistoryListByPlan"), plan);
        return runs.isEmpty() ? QString() : runs.first().toObject().value(QStringLiteral("ErrorMessage")).toString();
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_sink.start(), qPrintable(m_sink.output()));
        m_service = std::make_unique<ServiceFixture>();
        QVERIFY2(m_service->start(), qPrintable(m_service->process().output()));
        m_client = std::make_unique<RawClient>();
        QVERIFY(m_client->connectTo(m_service->socketPath()));
        const QString root = m_service->environment().root();
        m_account
            = EngineTestSupport::addLocalAccount(*m_client, root + QStringLiteral("/storage"), QStringLiteral("n"));
        m_source = root + QStringLiteral("/source");
        EngineTestSupport::writeFile(m_source + QStringLiteral("/report.txt"), "quarterly\n");
    }

    void badSettingsAreRefusedWhole_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::newRow("port") << "Port"
                              << "70000";
        QTest::newRow("security") << "Security"
                                  << "ssl3";
        QTest::newRow("recipient") << "To"
                                   << "ann@example.org; not an address";
        QTest::newRow("host") << "Host"
                              << "mail server";
        QTest::newRow("desktop") << "DesktopNotifications"
                                 << "yes";
        QTest::newRow("unknown") << "Relay"
                                 << "x";
    }

    void badSettingsAreRefusedWhole()
    {
        QFETCH(QString, key);
        QFETCH(QString, value);
        const QJsonObject before = settings();
        const ServiceReply reply
            = setSettings({{QStringLiteral("Host"), QStringLiteral("changed.example")}, {key, value}});
        QVERIFY(reply.received && !reply.success);
        QVERIFY2(reply.error.contains(key), qPrintable(reply.error));
        QCOMPARE(settings(), before);
    }

    void passwordIsSealedAndNeverAnswered()
    {
        QVERIFY(setSettings(
            {{QStringLiteral("Host"), QStringLiteral("127.0.0.1")},
                {QStringLiteral("Port"), QString::number(m_sink.port())},
                {QStringLiteral("Security"), QStringLiteral("none")}, {QStringLiteral("User"), SmtpSink::user()},
                {QStringLiteral("Password"), SmtpSink::password()},
                {QStringLiteral("From"), QStringLiteral("backup@example.org")},
                {QStringLiteral("To"), QStringLiteral("ann@example.org, bob@example.org")}})
                    .success);
        const QJsonObject stored = settings();
        QVERIFY(!stored.contains(QStringLiteral("Password")));
        QCOMPARE(stored.value(QStringLiteral("PasswordSet")).toBool(), true);
        QCOMPARE(stored.value(QStringLiteral("DesktopNotifications")).toString(), QStringLiteral("true"));
        // A change that does not name the password keeps it.
        QVERIFY(setSettings({{QStringLiteral("DesktopNotifications"), QStringLiteral("false")}}).success);
        QCOMPARE(settings().value(QStringLiteral("PasswordSet")).toBool(), true);
        QFile file(m_service->dataDir() + QStringLiteral("/notices.ini"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(!file.readAll().contains(SmtpSink::password().toUtf8()));
        QCOMPARE(file.permissions() & (QFileDevice::ReadGroup | QFileDevice::ReadOther), QFileDevice::Permissions());
    }

    void resultsReachTheSinkAsThePlanAsks()
    {
        auto always = plan(QStringLiteral("Quarterly ü"), m_source, Notification::Always);
        auto quietWhenFine = plan(QStringLiteral("Quiet"), m_source, Notification::OnFailure);
        auto broken = plan(QStringLiteral("Broken"), m_source + QStringLiteral("/gone"), Notification::OnFailure);
        for (auto* p : {always.get(), quietWhenFine.get(), broken.get()})
            QVERIFY(EngineTestSupport::save(*m_client, *p));

        QCOMPARE(EngineTestSupport::run(*m_client, quietWhenFine->id()).status, 6);
        QCOMPARE(EngineTestSupport::run(*m_client, always->id()).status, 6);
        QTRY_COMPARE_WITH_TIMEOUT(m_sink.messages().size(), 1, 20000);
        QCOMPARE(EngineTestSupport::run(*m_client, broken->id()).status, 8);
        QTRY_COMPARE_WITH_TIMEOUT(m_sink.messages().size(), 2, 20000);

        const QList<SinkMail> mails = m_sink.messages();
        const SinkMail& first = mails.at(0);
        QCOMPARE(first.subject, QStringLiteral("Quarterly ü on %1: Success").arg(QHostInfo::localHostName()));
        QCOMPARE(first.from, QStringLiteral("<backup@example.org>"));
        QCOMPARE(first.to, QStringList({QStringLiteral("<ann@example.org>"), QStringLiteral("<bob@example.org>")}));
        QVERIFY2(first.body.contains(QStringLiteral("Result: Success")), qPrintable(first.body));
        QVERIFY2(first.body.contains(QStringLiteral("Uploaded ") + m_source + QStringLiteral("/report.txt")),
            qPrintable(first.body));
        QVERIFY2(mails.at(1).subject.startsWith(QStringLiteral("Broken on")), qPrintable(mails.at(1).subject));
        QVERIFY2(mails.at(1).body.contains(QStringLiteral("Result: Failed")), qPrintable(mails.at(1).body));
        QVERIFY(lastRunMessage(always->id()).isEmpty());
    }

    void wrongPasswordIsLoggedAndTheRunStillSucceeds()
    {
        const int before = m_sink.messages().size();
        QVERIFY(setSettings({{QStringLiteral("Password"), QStringLiteral("not it")}}).success);
        const ServiceReply test = m_client->call(QStringLiteral("SendTestEmail"), {}, 60000);
        QVERIFY(test.received && !test.success);
        QVERIFY2(test.error.startsWith(QStringLiteral("The test email was not sent:")), qPrintable(test.error));

        auto always = plan(QStringLiteral("Refused"), m_source, Notification::Always);
        QVERIFY(EngineTestSupport::save(*m_client, *always));
        QCOMPARE(EngineTestSupport::run(*m_client, always->id()).status, 6);
        QTRY_VERIFY_WITH_TIMEOUT(
            lastRunMessage(always->id()).startsWith(QStringLiteral("The notification email was not sent:")), 20000);
        const QJsonObject run = EngineTestSupport::history(*m_client, QStringLiteral("HistoryListByPlan"), always->id())
                                    .first()
                                    .toObject();
        QCOMPARE(run.value(QStringLiteral("Result")).toInt(), 6);
        QTRY_VERIFY(m_service->process().output().contains(QStringLiteral("was not sent")));
        QVERIFY(!m_service->process().output().contains(QStringLiteral("not it")));
        QCOMPARE(m_sink.messages().size(), before);
    }

    void startTlsTrustsWhatTheUserTrusted()
    {
        QString certificate;
        QString key;
        QVERIFY(CloudPeer::makeCertificate(m_service->environment().root(), &certificate, &key));
        SmtpSink secure;
        QVERIFY2(secure.start(certificate, key), qPrintable(secure.output()));
        QVERIFY(setSettings({{QStringLiteral("Port"), QString::number(secure.port())},
                                {QStringLiteral("Security"), QStringLiteral("starttls")},
                                {QStringLiteral("Password"), SmtpSink::password()}})
                    .success);
        const ServiceReply untrusted = m_client->call(QStringLiteral("SendTestEmail"), {}, 60000);
        QVERIFY(untrusted.received && !untrusted.success);
        QVERIFY2(untrusted.error.contains(QStringLiteral("certificate")), qPrintable(untrusted.error));

        QFile pem(certificate);
        QVERIFY(pem.open(QIODevice::ReadOnly));
        QVERIFY(m_client
                    ->call(QStringLiteral("AppendToSslStorage"),
                        {{QStringLiteral("pem"), QString::fromLatin1(pem.readAll())}})
                    .success);
        const ServiceReply trusted = m_client->call(QStringLiteral("SendTestEmail"), {}, 60000);
        QVERIFY2(trusted.success, qPrintable(trusted.error));
        QCOMPARE(secure.messages().size(), 1);
        QCOMPARE(secure.messages().first().subject, QStringLiteral("Tidewrack Backup test email"));
    }
};

QTEST_MAIN(TestServiceNotices)
#include "tst_service_notices.moc"
