#include "plans/plan_test_rows.h"
#include "plans/plan_xml_list.h"
#include "platform/communication/notification_types.h"
#include "support/fake_service.h"
#include "support/log_capture.h"
#include "support/test_environment.h"
#include "wizard/plan_edit_wait.h"

#include <QAbstractItemModelTester>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
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

class TestPlanEditWait : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    FakeService m_service;
    PlanRows m_rows {m_service};
    std::unique_ptr<RegisteredPlanTable> m_registered;
    std::unique_ptr<QAbstractItemModelTester> m_tester;

    /// The service holds a new plan and says so, as after a saved new plan.
    void create(const QUuid& id)
    {
        m_rows.put(planRow(id, QStringLiteral("Plan"), 1));
        m_service.notify(QLatin1String(NotificationType::PlanCreated), {{QStringLiteral("id"), id.toString()}});
    }

    void touch(const QUuid& id)
    {
        m_service.notify(QLatin1String(NotificationType::PlanUpdated), {{QStringLiteral("id"), id.toString()}});
    }

    /// Runs `action` once the service has received the named command.
    void onRequest(const QString& command, QObject* context, std::function<void()> action)
    {
        auto done = std::make_shared<bool>(false);
        connect(
            &m_service, &FakeService::requestReceived, context, [command, action, done](const FakeRequest& request) {
                if (*done || request.command != command)
                    return;
                *done = true;
                // After the reply has gone out, as the service's notification would follow it.
                QTimer::singleShot(20, action);
            });
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
        m_rows.serve();
        m_registered = std::make_unique<RegisteredPlanTable>();
        m_tester = std::make_unique<QAbstractItemModelTester>(
            m_registered->table, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy complite(m_registered->table, &BaseModel::complite);
        QVERIFY(m_registered->table->init() && complite.wait());
        m_service.clearRequests();
        m_service.on(QStringLiteral("PlanUpdate"), FakeReply::ok());
        m_service.on(QStringLiteral("PlanExecuteStart"), FakeReply::ok());
    }

    void cleanup()
    {
        m_tester.reset();
        m_registered.reset();
    }

    void newPlanClosesWhenItsRowArrives()
    {
        const QUuid id = QUuid::createUuid();
        const QUuid other = QUuid::createUuid();
        PlanEditWait wait(false);
        QSignalSpy messages(&wait, &PlanEditWait::setMessage);
        onRequest(QStringLiteral("PlanUpdate"), this, [&] {
            QVERIFY(wait.grab().save(TestEnvironment::outputDir() + QStringLiteral("/plan_edit_wait.png")));
            QVERIFY(!(wait.windowFlags() & Qt::WindowCloseButtonHint));
            create(other);
            create(id);
        });
        wait.setPlan(id, QStringLiteral("<Plan/>"), false);
        QCOMPARE(wait.result(), int(QDialog::Accepted));
        QCOMPARE(PlanXmlList::instance()->lastCreatedPlan(), id);
        const FakeRequest update = m_service.requests(QStringLiteral("PlanUpdate")).value(0);
        QCOMPARE(update.params,
            (QJsonObject {{QStringLiteral("profile"), QStringLiteral("alice")},
                {QStringLiteral("planXML"), QStringLiteral("<Plan/>")}, {QStringLiteral("ID"), id.toString()}}));
        QCOMPARE(m_service.requests(QStringLiteral("PlanExecuteStart")).size(), 0);
        QCOMPARE(messages.count(), 2);
    }

    void newPlanToRunIsStartedThenClosed()
    {
        const QUuid id = QUuid::createUuid();
        PlanEditWait wait(false);
        QSignalSpy messages(&wait, &PlanEditWait::setMessage);
        onRequest(QStringLiteral("PlanUpdate"), this, [&] { create(id); });
        wait.setPlan(id, QStringLiteral("<Plan/>"), true);
        QCOMPARE(wait.result(), int(QDialog::Accepted));
        const auto starts = m_service.requests(QStringLiteral("PlanExecuteStart"));
        QCOMPARE(starts.size(), 1);
        QCOMPARE(starts.first().params,
            (QJsonObject {
                {QStringLiteral("ID"), id.toString()}, {QStringLiteral("profile"), QStringLiteral("alice")}}));
        QCOMPARE(messages.last().at(0).toString(), QStringLiteral("Running plan..."));
    }

    void editToRunStartsOnceDespiteRepeatedChanges()
    {
        const QUuid id = QUuid::createUuid();
        create(id);
        QTRY_COMPARE(m_registered->table->rowCount(), 1);
        m_service.on(QStringLiteral("PlanExecuteStart"), FakeReply::ok().after(200));
        PlanEditWait wait(true);
        onRequest(QStringLiteral("PlanUpdate"), this, [&] {
            touch(id);
            touch(id);
            QTimer::singleShot(50, this, [&] { touch(id); });
        });
        // New rows do not concern an edit.
        wait.setPlan(id, QStringLiteral("<Plan/>"), true);
        QCOMPARE(wait.result(), int(QDialog::Accepted));
        QCOMPARE(m_service.requests(QStringLiteral("PlanExecuteStart")).size(), 1);
    }

    void otherPlansRowsAndEscapeDoNotEndTheWait()
    {
        const QUuid id = QUuid::createUuid();
        PlanEditWait wait(false);
        bool openAfterOthers = false;
        onRequest(QStringLiteral("PlanUpdate"), this, [&] {
            create(QUuid::createUuid());
            QTest::keyClick(&wait, Qt::Key_Escape);
            QTimer::singleShot(200, this, [&] {
                openAfterOthers = wait.isVisible();
                create(id);
            });
        });
        wait.setPlan(id, QStringLiteral("<Plan/>"), false);
        QVERIFY(openAfterOthers);
        QCOMPARE(wait.result(), int(QDialog::Accepted));
    }

    void failedSaveShowsTheServiceTextAndAWayOut()
    {
        m_service.on(QStringLiteral("PlanUpdate"), FakeReply::fail(QStringLiteral("No space left on the storage")));
        const QUuid id = QUuid::createUuid();
        PlanEditWait wait(false);
        LogCapture log;
        QString shown;
        bool closeVisible = false;
        onRequest(QStringLiteral("PlanUpdate"), this, [&] {
            QTimer::singleShot(100, this, [&] {
                shown = wait.message();
                auto* box = wait.findChild<QDialogButtonBox*>();
                closeVisible = box && box->isVisible();
                QVERIFY(wait.grab().save(TestEnvironment::outputDir() + QStringLiteral("/plan_edit_wait_failed.png")));
                if (box)
                    box->button(QDialogButtonBox::Close)->click();
            });
        });
        wait.setPlan(id, QStringLiteral("<Plan/>"), true);
        QVERIFY(closeVisible);
        QVERIFY(shown.contains(QStringLiteral("No space left on the storage")));
        QCOMPARE(wait.result(), int(QDialog::Rejected));
        QVERIFY(log.contains(QtWarningMsg, QStringLiteral("TWB"), QStringLiteral("No space left on the storage")));
        QCOMPARE(m_service.requests(QStringLiteral("PlanExecuteStart")).size(), 0);
    }

    void failedStartLetsTheWizardCloseOnTheSavedPlan_data()
    {
        QTest::addColumn<bool>("escape");
        QTest::newRow("Close") << false;
        QTest::newRow("Escape") << true;
    }

    void failedStartLetsTheWizardCloseOnTheSavedPlan()
    {
        // Either way out says the plan is saved, so that the wizard closes instead of saving it again.
        QFETCH(bool, escape);
        m_service.on(QStringLiteral("PlanExecuteStart"), FakeReply::fail(QStringLiteral("Plan is already running")));
        const QUuid id = QUuid::createUuid();
        PlanEditWait wait(false);
        QString shown;
        connect(&wait, &PlanEditWait::setMessage, this, [&](const QString& text) {
            if (!text.contains(QStringLiteral("already running")))
                return;
            shown = text;
            QTimer::singleShot(0, this, [&] {
                if (escape)
                    QTest::keyClick(&wait, Qt::Key_Escape);
                else if (auto* box = wait.findChild<QDialogButtonBox*>())
                    box->button(QDialogButtonBox::Close)->click();
            });
        });
        onRequest(QStringLiteral("PlanUpdate"), this, [&] { create(id); });
        wait.setPlan(id, QStringLiteral("<Plan/>"), true);
        QCOMPARE(shown, QStringLiteral("The plan was saved, but it could not be started: Plan is already running"));
        QCOMPARE(wait.result(), int(QDialog::Accepted));
    }

    void withoutAPlanTableNothingEndsTheWait()
    {
        m_tester.reset();
        m_registered.reset();
        const QUuid id = QUuid::createUuid();
        PlanEditWait wait(false);
        bool stillOpen = false;
        onRequest(QStringLiteral("PlanUpdate"), this, [&] {
            create(id);
            QTimer::singleShot(300, this, [&] {
                stillOpen = wait.isVisible();
                wait.reject();
            });
        });
        wait.setPlan(id, QStringLiteral("<Plan/>"), false);
        QVERIFY(stillOpen);
        QCOMPARE(wait.result(), int(QDialog::Rejected));
    }
};

QTEST_MAIN(TestPlanEditWait)
#include "tst_plan_edit_wait.moc"
