#include "app/console_window.h"
#include "app/service_launcher.h"
#include "frame/application.h"
#include "frame/application_event_controller.h"
#include "platform/communication/connection_manager.h"
#include "support/service_process.h"
#include "support/test_environment.h"

#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

#include <csignal>

using TWB::Common::Communication::ConnectionManager;
using TWB::GUI::ApplicationEventController;
using TWB::Host::ConsoleWindow;
using TWB::Host::ServiceLauncher;
using TWB::Test::ServiceProcess;
using TWB::Test::TestEnvironment;

class TestConsoleWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;

    QStringList serviceArguments() const
    {
        return {QStringLiteral("--socket"), m_env->socketPath(), QStringLiteral("--data-dir"), m_env->dataDir()};
    }

    static void savePicture(QWidget& widget, const QString& name)
    {
        const QString path = TestEnvironment::outputDir() + QLatin1Char('/') + name + QStringLiteral(".png");
        QVERIFY(widget.grab().save(path));
    }

    static QString shownTitle(ConsoleWindow& window)
    {
        // The large state line of the window, beside the coloured dot.
        const auto labels = window.centralWidget()->findChildren<QLabel*>();
        return labels.size() > 2 ? labels.at(2)->text() : QString();
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        QVERIFY(!ServiceProcess::answers(m_env->socketPath()));
        QVERIFY(ConnectionManager::instance());
        TestEnvironment::speedUpChannel();
    }

    void cleanupTestCase()
    {
        // Stop the service the launcher started; its pid stands in its log.
        QFile log(m_env->dataDir() + QStringLiteral("/log/twbd.log"));
        if (log.open(QIODevice::ReadOnly)) {
            const auto match
                = QRegularExpression(QStringLiteral("\\(pid (\\d+)\\)")).match(QString::fromUtf8(log.readAll()));
            if (match.hasMatch())
                ::kill(pid_t(match.captured(1).toInt()), SIGTERM);
        }
    }

    void missingServiceProgramIsShownAsAFailure()
    {
        ApplicationEventController controller;
        ServiceLauncher launcher;
        launcher.setServiceProgram(m_env->root() + QStringLiteral("/no-such-twbd"));
        ConsoleWindow window(controller, launcher);
        controller.init();
        launcher.start();
        QCOMPARE(launcher.state(), ServiceLauncher::State::Failed);
        QCOMPARE(window.connectionText(), QStringLiteral("Disconnected"));
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        auto* retry = window.findChild<QPushButton*>();
        QVERIFY(retry && retry->isVisible());
        QVERIFY(window.findChildren<QLabel*>().size() > 3);
        bool namesTheProgram = false;
        for (QLabel* label : window.findChildren<QLabel*>())
            namesTheProgram = namesTheProgram || label->text().contains(QStringLiteral("no-such-twbd"));
        QVERIFY(namesTheProgram);
        savePicture(window, QStringLiteral("console_window_failed"));
    }

    void consoleStartsTheServiceAndShowsConnected()
    {
        ApplicationEventController controller;
        ServiceLauncher launcher;
        launcher.setServiceProgram(ServiceProcess::program());
        launcher.setServiceArguments(serviceArguments());
        ConsoleWindow window(controller, launcher);
        QSignalSpy states(&launcher, &ServiceLauncher::stateChanged);
        controller.init();
        launcher.start();
        QCOMPARE(launcher.state(), ServiceLauncher::State::Starting);
        QCOMPARE(window.connectionText(), QStringLiteral("Starting the service"));
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        savePicture(window, QStringLiteral("console_window_starting"));

        QTRY_COMPARE_WITH_TIMEOUT(launcher.state(), ServiceLauncher::State::Connected, 10000);
        QCOMPARE(window.connectionText(), QStringLiteral("Connected"));
        QCOMPARE(shownTitle(window), QStringLiteral("Connected"));
        QVERIFY(ServiceProcess::answers(m_env->socketPath()));
        QVERIFY(!window.findChild<QPushButton*>()->isVisible());
        QCOMPARE(window.windowTitle(), QStringLiteral("Tidewrack Backup"));
        savePicture(window, QStringLiteral("console_window_connected"));
    }
};

int main(int argc, char** argv)
{
    TWB::GUI::Application app(argc, argv);
    TestConsoleWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_console_window.moc"
