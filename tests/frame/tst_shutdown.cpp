#include "frame/application.h"
#include "frame/application_event_controller.h"
#include "frame/base_model.h"
#include "frame/model_manager.h"
#include "plans/plan_table_model.h"
#include "plans/plan_xml_list.h"
#include "platform/communication/connection_manager.h"
#include "platform/communication/icommand.h"
#include "platform/communication/manager.h"
#include "platform/communication/notification_center.h"
#include "support/fake_service.h"
#include "support/log_capture.h"
#include "support/test_caller.h"
#include "support/test_environment.h"

#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace TWB::Common::Communication;
using TWB::GUI::ApplicationEventController;
using TWB::GUI::ModelManager;
using TWB::Test::FakeReply;
using TWB::Test::FakeService;
using TWB::Test::LogCapture;
using TWB::Test::TestCaller;
using TWB::Test::TestEnvironment;

/// What is left of the channel and the registry once the application has quit.
/// The singletons never come back in a process, so this program has one test of its own.
class TestShutdown : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void singletonsAreGoneAfterAboutToQuit()
    {
        TestEnvironment env;
        FakeService service;
        QVERIFY(service.listen(env.socketPath()));
        service.on(QStringLiteral("PlanGetList"), FakeReply::none());

        QVERIFY(ModelManager::instance());
        QVERIFY(TWB::GUI::PlanXmlList::instance());
        QVERIFY(NotificationCenter::instance());
        QTRY_VERIFY(ConnectionManager::instance()->isLocalManagmentConnected());

        TestCaller inFlight;
        QSignalSpy inFlightFailed(&inFlight, &TestCaller::failed);
        QVERIFY(inFlight.send(QStringLiteral("PlanGetList")));
        // A plan table still loading when the console quits.
        TWB::GUI::PlanTableModel loading;
        QSignalSpy loadingFailed(&loading, &TWB::GUI::BaseModel::error);
        QVERIFY(loading.init());
        QTRY_COMPARE(service.requests().size(), 2);
        LogCapture quitLog;

        ApplicationEventController controller;
        QSignalSpy connected(&controller, &ApplicationEventController::localManagmentConnected);
        QSignalSpy disconnected(&controller, &ApplicationEventController::localManagmentDisconnected);

        QVERIFY(QMetaObject::invokeMethod(QCoreApplication::instance(), "aboutToQuit"));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

        QVERIFY(Manager::instance().isNull());
        QVERIFY(ConnectionManager::instance().isNull());
        QVERIFY(NotificationCenter::instance().isNull());
        QVERIFY(ModelManager::instance().isNull());
        QVERIFY(TWB::GUI::PlanXmlList::instance().isNull());

        // The command in flight was failed, not left hanging.
        QTRY_COMPARE(inFlightFailed.count(), 1);
        QCOMPARE(inFlightFailed.at(0).at(0).toString(), QStringLiteral("Local command reply format error"));
        // Commands abandoned by the console's own shutdown are no error: a debug line each, no warning.
        QTRY_COMPARE(loadingFailed.count(), 1);
        QCOMPARE(quitLog.count(QtWarningMsg, QStringLiteral("TWB"), QStringLiteral("reply format error")), 0);
        QCOMPARE(quitLog.count(QtDebugMsg, QStringLiteral("TWB"), QStringLiteral("abandoned at shutdown")), 2);

        // A sender finds no manager and says so instead of crashing.
        TestCaller late;
        QSignalSpy lateFailed(&late, &TestCaller::failed);
        QVERIFY(!late.send(QStringLiteral("PlanGetList")));
        QCOMPARE(lateFailed.count(), 1);
        QCOMPARE(lateFailed.at(0).at(0).toString(), QStringLiteral("Commnunication manager is 0x00"));
        QVERIFY(
            quitLog.contains(QtWarningMsg, QStringLiteral("TWB"), QStringLiteral("Commnunication manager is 0x00")));

        // The controller has nothing left to connect to and stays silent.
        controller.init();
        controller.onLocalManagmentStatusChanged();
        QCOMPARE(connected.count(), 0);
        QCOMPARE(disconnected.count(), 0);
    }
};

int main(int argc, char** argv)
{
    TWB::GUI::Application app(argc, argv);
    TestShutdown test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_shutdown.moc"
