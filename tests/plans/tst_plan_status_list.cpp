#include "plans/plan_states.h"
#include "plans/plan_status_list.h"
#include "platform/communication/connection_manager.h"
#include "platform/communication/notification_types.h"
#include "support/fake_service.h"
#include "support/log_capture.h"
#include "support/test_environment.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTranslator>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using TWB::Common::Communication::ConnectionManager;
using TWB::Test::FakeService;
using TWB::Test::LogCapture;
using TWB::Test::TestEnvironment;
namespace NotificationType = TWB::Common::Communication::Notification::Type;

namespace {

/// Translates every text of one context by marking it, to see which texts go through translation.
class MarkingTranslator final : public QTranslator
{
public:
    explicit MarkingTranslator(const char* context)
        : m_context(context)
    { }
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* source, const char*, int) const override
    {
        return qstrcmp(context, m_context) == 0 ? QStringLiteral("<%1>").arg(QString::fromUtf8(source)) : QString();
    }

private:
    const char* m_context;
};

} // namespace

class TestPlanStatusList : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    FakeService m_service;
    std::unique_ptr<PlanStatusList> m_list;

    void progress(const QJsonObject& message)
    {
        m_service.notify(QLatin1String(NotificationType::PlanProgress), message);
    }

    void stateChange(const QUuid& id, int state)
    {
        m_service.notify(QLatin1String(NotificationType::PlanStateChanged),
            {{QStringLiteral("id"), id.toString()}, {QStringLiteral("state"), state}});
    }

    /// Waits until the list has seen everything sent so far: a progress message of a plan of its own
    /// comes after them on the same connection.
    bool settle()
    {
        const QUuid marker = QUuid::createUuid();
        QSignalSpy updated(m_list.get(), &PlanStatusList::updated);
        progress({{QStringLiteral("plan_id"), marker.toString()}});
        const bool seen = updated.wait() || updated.count() > 0;
        m_list->removeStatus(marker);
        return seen;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        QVERIFY(m_service.serveConsole(m_env->socketPath()));
    }

    void init() { m_list = std::make_unique<PlanStatusList>(); }
    void cleanup() { m_list.reset(); }

    void progressCreatesAndReplacesTheEntry()
    {
        const QUuid id = QUuid::createUuid();
        QVERIFY(m_list->status(id).isEmpty());
        QSignalSpy updated(m_list.get(), &PlanStatusList::updated);
        const QJsonObject first {{QStringLiteral("plan_id"), id.toString()}, {QStringLiteral("progress"), 10},
            {QStringLiteral("current_file"), QStringLiteral("/home/alice/a.jpg")}, {QStringLiteral("speed"), 2048}};
        progress(first);
        QVERIFY(updated.wait());
        QCOMPARE(updated.at(0).at(0).toUuid(), id);
        // Kept whole, keys the list does not know included.
        QCOMPARE(updated.at(0).at(1).toMap(), first.toVariantMap());
        QCOMPARE(m_list->status(id), first.toVariantMap());

        const QJsonObject second {{QStringLiteral("plan_id"), id.toString()}, {QStringLiteral("progress"), 55}};
        progress(second);
        QVERIFY(updated.wait());
        QCOMPARE(m_list->status(id), second.toVariantMap());
        QVERIFY(!m_list->status(id).contains(QStringLiteral("current_file")));
    }

    void runningAgainForgetsTheLastFigures_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<bool>("kept");
        QTest::newRow("1 starts the plan: figures go") << 1 << false;
        QTest::newRow("2 stops the plan: figures stay") << 2 << true;
    }

    void runningAgainForgetsTheLastFigures()
    {
        QFETCH(int, state);
        QFETCH(bool, kept);
        const QUuid id = QUuid::createUuid();
        const QUuid other = QUuid::createUuid();
        QSignalSpy updated(m_list.get(), &PlanStatusList::updated);
        progress({{QStringLiteral("plan_id"), id.toString()}, {QStringLiteral("progress"), 100}});
        progress({{QStringLiteral("plan_id"), other.toString()}, {QStringLiteral("progress"), 3}});
        QTRY_COMPARE(updated.count(), 2);
        stateChange(id, state);
        QVERIFY(settle());
        QCOMPARE(!m_list->status(id).isEmpty(), kept);
        QCOMPARE(m_list->status(other).value(QStringLiteral("progress")).toInt(), 3);
        // The state notification itself is never passed on.
        QCOMPARE(updated.count(), 3);
    }

    void quietCases()
    {
        const QUuid known = QUuid::createUuid();
        QSignalSpy updated(m_list.get(), &PlanStatusList::updated);
        progress({{QStringLiteral("plan_id"), known.toString()}});
        QVERIFY(updated.wait());

        // Running state for a plan with no figures, and removing a plan the list does not know.
        stateChange(QUuid::createUuid(), 1);
        m_list->removeStatus(QUuid::createUuid());
        // A type the list does not follow, and one nobody declared.
        m_service.notify(QLatin1String(NotificationType::PlanCreated), {{QStringLiteral("id"), known.toString()}});
        LogCapture log;
        m_service.notify(QStringLiteral("{00000000-1111-2222-3333-444444444444}"), {});
        QVERIFY(settle());
        QCOMPARE(updated.count(), 2);
        QVERIFY(m_list->status(known).contains(QStringLiteral("plan_id")));
        QVERIFY(log.contains(QtDebugMsg, QStringLiteral("TWB"), QStringLiteral("Notiifcation is 0x00")));

        m_list->removeStatus(known);
        QVERIFY(m_list->status(known).isEmpty());
    }

    void messageWithoutPlanIsKeptUnderTheNullId()
    {
        QSignalSpy updated(m_list.get(), &PlanStatusList::updated);
        progress({{QStringLiteral("progress"), 7}});
        QVERIFY(updated.wait());
        QVERIFY(updated.at(0).at(0).toUuid().isNull());
        QCOMPARE(m_list->status(QUuid()).value(QStringLiteral("progress")).toInt(), 7);
    }

    void displayTextsAreTranslatedAndNamesAreNot()
    {
        MarkingTranslator translator("TWB::GUI::PlanStates");
        QCoreApplication::installTranslator(&translator);
        const QString text = PlanStates::displayText(PlanStates::InterruptedBySchedule);
        const QString name = PlanStates::name(PlanStates::InterruptedBySchedule);
        const QMap<int, QString> statuses = PlanStates::runStatusTexts();
        QCoreApplication::removeTranslator(&translator);

        QCOMPARE(text, QStringLiteral("<Interrupted by schedule>"));
        QCOMPARE(name, QStringLiteral("InterruptedBySchedule"));
        QCOMPARE(statuses, (QMap<int, QString> {{1, "<Run>"}, {2, "<Stop>"}}));
        QCOMPARE(PlanStates::runStatusTexts().value(2), QStringLiteral("Stop"));
    }
};

QTEST_GUILESS_MAIN(TestPlanStatusList)
#include "tst_plan_status_list.moc"
