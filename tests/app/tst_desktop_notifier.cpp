#include "app/desktop_notifier.h"
#include "engine_test_support.h"
#include "raw_client.h"
#include "service_fixture.h"

#include "platform/plan/backup_file.h"
#include "service/store/database.h"

#include <QDBusConnection>
#include <QProcess>
#include <QSqlQuery>
#include <QtTest>

#include <memory>

using namespace TWB::Info::Plan;
using namespace TWB::Test;

/// The desktop's notification service as the test's own object on a private session bus.
class FakeNotifications : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    QStringList summaries;
    QStringList bodies;

public Q_SLOTS:
    uint Notify(const QString&, uint, const QString&, const QString& summary, const QString& body, const QStringList&,
        const QVariantMap&, int)
    {
        summaries << summary;
        bodies << body;
        return static_cast<uint>(summaries.size());
    }
};

/// Desktop notices of failed and late runs: real twbd, real restic runs, a private dbus-daemon.
class TestDesktopNotifier : public QObject
{
    Q_OBJECT

private:
    QProcess m_bus;
    FakeNotifications m_fake;
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<RawClient> m_client;
    std::unique_ptr<TWB::Host::DesktopNotifier> m_notifier;
    QUuid m_account;
    QString m_source;

    std::unique_ptr<BackupFile> plan(const QString& name, bool broken)
    {
        auto plan = EngineTestSupport::backupPlan(
            m_account, name, {m_source + (broken ? QStringLiteral("/gone") : QString())});
        return plan;
    }

    void setDesktopNotices(bool on)
    {
        const QJsonObject settings {{QStringLiteral("DesktopNotifications"), on ? "true" : "false"}};
        QVERIFY(m_client->call(QStringLiteral("SetNoticeSettings"), {{QStringLiteral("settings"), settings}}).success);
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_bus.start(QStringLiteral("dbus-daemon"),
            {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address=1")});
        QVERIFY2(m_bus.waitForStarted(), "dbus-daemon does not start");
        QVERIFY(QTest::qWaitFor([this] { return m_bus.canReadLine(); }, 10000));
        const QByteArray address = m_bus.readLine().trimmed();
        // Set before anything asks for the session bus: the console's own connection goes there too.
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        QDBusConnection desktop
            = QDBusConnection::connectToBus(QString::fromLatin1(address), QStringLiteral("desktop"));
        QVERIFY(desktop.isConnected());
        QVERIFY(desktop.registerObject(
            QStringLiteral("/org/freedesktop/Notifications"), &m_fake, QDBusConnection::ExportAllSlots));
        QVERIFY(desktop.registerService(QStringLiteral("org.freedesktop.Notifications")));

        m_service = std::make_unique<ServiceFixture>();
        m_client = std::make_unique<RawClient>();
        QVERIFY2(m_service->startWithConsoles(*m_client), qPrintable(m_service->process().output()));
        m_notifier = std::make_unique<TWB::Host::DesktopNotifier>();
        const QString root = m_service->environment().root();
        m_account
            = EngineTestSupport::addLocalAccount(*m_client, root + QStringLiteral("/storage"), QStringLiteral("d"));
        m_source = root + QStringLiteral("/source");
        EngineTestSupport::writeFile(m_source + QStringLiteral("/a.txt"), "a\n");
    }

    void cleanupTestCase()
    {
        m_notifier.reset();
        m_bus.terminate();
        m_bus.waitForFinished();
    }

    void oneNoticePerFailedRunWhileTurnedOn()
    {
        auto fine = plan(QStringLiteral("Fine"), false);
        auto broken = plan(QStringLiteral("Broken"), true);
        auto silenced = plan(QStringLiteral("Silenced"), true);
        for (auto* p : {fine.get(), broken.get(), silenced.get()})
            QVERIFY(EngineTestSupport::save(*m_client, *p));
        QSignalSpy posted(m_notifier.get(), &TWB::Host::DesktopNotifier::posted);

        setDesktopNotices(false);
        QCOMPARE(EngineTestSupport::run(*m_client, silenced->id()).status, 8);
        setDesktopNotices(true);
        QCOMPARE(EngineTestSupport::run(*m_client, fine->id()).status, 6);
        QCOMPARE(EngineTestSupport::run(*m_client, broken->id()).status, 8);
        QTRY_COMPARE(m_fake.summaries.size(), 1);
        QCOMPARE(m_fake.summaries.first(), QStringLiteral("Plan \"Broken\" failed"));
        QVERIFY2(!m_fake.bodies.first().isEmpty(), "the notice says why");
        QTRY_COMPARE(posted.size(), 1);
        QTest::qWait(500);
        QCOMPARE(m_fake.summaries.size(), 1);
    }

    void aScheduledRunThatStartsLateIsTold()
    {
        m_fake.summaries.clear();
        auto late = plan(QStringLiteral("Nightly"), false);
        late->schedule().setEnable(true);
        late->schedule().setType(Schedule::Recurring);
        late->schedule().setFrequencyType(Schedule::Daily);
        late->schedule().setOccursAt(QTime(3, 0));
        QVERIFY(EngineTestSupport::save(*m_client, *late));
        {
            // What a machine that slept through the night leaves: a next run long past.
            TWB::Service::Database store(m_service->storeFile());
            store.open();
            QSqlQuery query
                = store.prepare(QStringLiteral("UPDATE plan_timings SET next_run_utc = ? WHERE plan_id = ?"));
            query.addBindValue(
                QDateTime::currentDateTimeUtc().addSecs(-3600).toString(QStringLiteral("yyyyMMddhhmmss")));
            query.addBindValue(late->id().toString());
            store.exec(query);
        }
        // Any change of the plans wakes the scheduler, which finds the time passed.
        auto other = plan(QStringLiteral("Other"), false);
        QVERIFY(EngineTestSupport::save(*m_client, *other));
        QVERIFY(EngineTestSupport::waitForEnd(*m_client, late->id()).ended);
        QTRY_COMPARE(m_fake.summaries, QStringList {QStringLiteral("Plan \"Nightly\" started late")});
    }
};

QTEST_MAIN(TestDesktopNotifier)
#include "tst_desktop_notifier.moc"
