#include "app/console_models.h"
#include "app/console_window.h"
#include "app/service_launcher.h"
#include "frame/application.h"
#include "frame/application_event_controller.h"
#include "platform/communication/connection_manager.h"
#include "plans/plan_result_delegate.h"
#include "plans/plan_status_list.h"
#include "plans/storage_name_delegate.h"
#include "platform/plan/backup_file.h"
#include "support/modal_answerer.h"
#include "support/service_process.h"
#include "support/test_environment.h"

#include <QAction>
#include <QDir>
#include <QRandomGenerator>
#include <QFile>
#include <QHeaderView>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTabWidget>
#include <QTreeView>
#include <QtTest>

#include <csignal>

#include <memory>

using TWB::Common::Communication::ConnectionManager;
using TWB::GUI::ApplicationEventController;
using TWB::Host::ConsoleModels;
using TWB::Host::ConsoleWindow;
using TWB::Host::ServiceLauncher;
using TWB::Test::ModalAnswerer;
using TWB::Test::ServiceProcess;
using TWB::Test::TestEnvironment;

namespace {

int rowNamed(QTreeView* view, const QString& name)
{
    QAbstractItemModel* model = view->model();
    for (int row = 0; model && row < model->rowCount(); ++row) {
        if (model->index(row, 1).data().toString() == name)
            return row;
    }
    return -1;
}

} // namespace

/// The console against a twbd it starts itself, as a user meets it.
class TestConsoleWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    std::unique_ptr<ConsoleModels> m_models;
    std::unique_ptr<ApplicationEventController> m_controller;
    std::unique_ptr<ServiceLauncher> m_launcher;
    std::unique_ptr<ConsoleWindow> m_window;

    QStringList serviceArguments() const
    {
        return {QStringLiteral("--socket"), m_env->socketPath(), QStringLiteral("--data-dir"), m_env->dataDir()};
    }

    void savePicture(const QString& name)
    {
        QVERIFY(m_window->grab().save(TestEnvironment::outputDir() + QLatin1Char('/') + name + QStringLiteral(".png")));
    }

    /// A folder of files to back up: enough of them that a run lasts past its first progress message.
    QString sourceFolder() const
    {
        const QString folder = m_env->root() + QStringLiteral("/documents");
        if (QDir(folder).exists())
            return folder;
        QDir().mkpath(folder + QStringLiteral("/letters"));
        QRandomGenerator random(7);
        for (int i = 0; i < 120; ++i) {
            QFile file(
                folder + (i % 2 ? QStringLiteral("/letters") : QString()) + QStringLiteral("/file-%1.bin").arg(i));
            if (!file.open(QIODevice::WriteOnly))
                break;
            QByteArray bytes(64 * 1024, Qt::Uninitialized);
            for (char& b : bytes)
                b = char(random.generate());
            file.write(bytes);
        }
        return folder;
    }

    /// Imports a plan with twbctl, as a user or a script would.
    void importPlan(const QString& name, const QUuid& storage)
    {
        TWB::Info::Plan::BackupFile plan;
        plan.setId(QUuid::createUuid());
        plan.setName(name);
        plan.setStorage(storage);
        plan.setItems({sourceFolder()});
        const QString file = m_env->root() + QStringLiteral("/") + name + QStringLiteral(".xml");
        QFile out(file);
        QVERIFY(out.open(QIODevice::WriteOnly));
        out.write(plan.toXml().toUtf8());
        out.close();
        QProcess ctl;
        ctl.start(QStringLiteral(TWBCTL_PROGRAM),
            {QStringLiteral("--socket"), m_env->socketPath(), QStringLiteral("--file"),
                QStringLiteral("planXML=") + file, QStringLiteral("PlanUpdate")});
        QVERIFY(ctl.waitForFinished(20000));
        QVERIFY2(ctl.exitCode() == 0, ctl.readAllStandardError().constData());
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_env->root() + QStringLiteral("/config")));
        QVERIFY(!ServiceProcess::answers(m_env->socketPath()));
        QVERIFY(ConnectionManager::instance());
        TestEnvironment::speedUpChannel();
        m_models = std::make_unique<ConsoleModels>();
        m_models->start();
        m_controller = std::make_unique<ApplicationEventController>();
        m_launcher = std::make_unique<ServiceLauncher>();
        m_launcher->setServiceArguments(serviceArguments());
        m_launcher->setAttached(true);
    }

    void cleanupTestCase()
    {
        m_window.reset();
        m_launcher.reset(); // stops the service it started
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
        QVERIFY(window.statusBar()->currentMessage().contains(QStringLiteral("no-such-twbd")));
        bool retryShown = false;
        for (QPushButton* button : window.findChildren<QPushButton*>())
            retryShown = retryShown || (button->text() == QStringLiteral("Connect now") && button->isVisible());
        QVERIFY(retryShown);
        QVERIFY(window.grab().save(TestEnvironment::outputDir() + QStringLiteral("/console_window_failed.png")));
    }

    void consoleStartsTheServiceAndShowsTheLocalStorage()
    {
        m_window = std::make_unique<ConsoleWindow>(*m_controller, *m_launcher);
        m_controller->init();
        m_launcher->start();
        QCOMPARE(m_launcher->state(), ServiceLauncher::State::Starting);
        QCOMPARE(m_window->connectionText(), QStringLiteral("Starting the service"));
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QTRY_COMPARE_WITH_TIMEOUT(m_window->connectionText(), QStringLiteral("Connected"), 10000);
        QCOMPARE(m_window->windowTitle(), QStringLiteral("Tidewrack Backup"));
        QVERIFY(m_window->storageView());
        QTRY_COMPARE(m_window->storageView()->model()->rowCount(), 1);
        QCOMPARE(m_window->storageView()->model()->index(0, 0).data().toString(), QStringLiteral("Local storage"));
        // Nothing is selected, so nothing can be started or removed.
        QVERIFY(!m_window->startAction()->isEnabled());
        QVERIFY(!m_window->removeAction()->isEnabled());
        m_window->tabs()->setCurrentWidget(m_window->storageView());
        savePicture(QStringLiteral("console_window_storages"));
        m_window->tabs()->setCurrentIndex(0);
    }

    void importedPlanRunsFromTheToolbarToSuccess()
    {
        const QUuid local(m_window->storageView()->model()->index(0, 1).data().toString());
        QVERIFY(!local.isNull());
        importPlan(QStringLiteral("Documents"), local);
        QTreeView* view = m_window->backupView();
        QTRY_VERIFY(rowNamed(view, QStringLiteral("Documents")) >= 0);
        const int row = rowNamed(view, QStringLiteral("Documents"));
        view->selectionModel()->select(
            view->model()->index(row, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        QTRY_VERIFY(m_window->startAction()->isEnabled());
        QVERIFY(!m_window->stopAction()->isEnabled());
        QVERIFY(m_window->runFullAction()->isEnabled());
        // The storage column names the account once the plan's document is in.
        QTRY_COMPARE(view->model()->index(row, 5).data().toUuid(), local);
        QCOMPARE(TWB::GUI::StorageNameDelegate::toText(view->model()->index(row, 5).data(), QLocale()),
            QStringLiteral("Local storage"));
        savePicture(QStringLiteral("console_window_plans"));

        QSignalSpy progress(TWB::GUI::PlanStatusList::instance().data(), &TWB::GUI::PlanStatusList::updated);
        m_window->startAction()->trigger();
        // The service confirms the start by notification: the row runs and the toolbar offers Stop.
        QTRY_COMPARE_WITH_TIMEOUT(view->model()->index(row, 4).data().toInt(), 1, 20000);
        QTRY_VERIFY(m_window->stopAction()->isEnabled());
        QVERIFY(!m_window->startAction()->isEnabled());
        QVERIFY(progress.wait(10000));
        QCOMPARE(progress.last().at(0).toUuid(), QUuid(view->model()->index(row, 0).data().toString()));
        savePicture(QStringLiteral("console_window_running"));
        // The run ends and its row says so.
        QTRY_COMPARE_WITH_TIMEOUT(view->model()->index(row, 4).data().toInt(), 2, 60000);
        QTRY_COMPARE_WITH_TIMEOUT(view->model()->index(row, 7).data().toInt(), 6, 10000);
        QCOMPARE(TWB::GUI::PlanResultDelegate::toText(view->model()->index(row, 7).data(), QLocale()),
            QStringLiteral("Success"));
        QVERIFY(!view->model()->index(row, 6).data().toString().isEmpty());
        QTRY_VERIFY(m_window->startAction()->isEnabled());
        savePicture(QStringLiteral("console_window_success"));
    }

    void removingAPlanAsksFirst()
    {
        QTreeView* view = m_window->backupView();
        const int row = rowNamed(view, QStringLiteral("Documents"));
        QVERIFY(row >= 0);
        view->selectionModel()->select(
            view->model()->index(row, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        QTRY_VERIFY(m_window->removeAction()->isEnabled());
        {
            ModalAnswerer no(QMessageBox::No);
            m_window->removeAction()->trigger();
            QVERIFY(no.answered());
            QVERIFY(no.text().contains(QStringLiteral("\"Documents\"")));
        }
        QTest::qWait(200); // a refusal sends nothing; there is no reply to wait for
        QVERIFY(rowNamed(view, QStringLiteral("Documents")) >= 0);
        {
            ModalAnswerer yes(QMessageBox::Yes);
            m_window->removeAction()->trigger();
            QVERIFY(yes.answered());
        }
        QTRY_COMPARE(rowNamed(view, QStringLiteral("Documents")), -1);
        QTRY_VERIFY(!m_window->removeAction()->isEnabled());
    }

    void statusBarFollowsTheServiceGoingAndComingBack()
    {
        // Stop the service the console started; its pid stands in its log.
        QFile log(m_env->dataDir() + QStringLiteral("/log/twbd.log"));
        QVERIFY(log.open(QIODevice::ReadOnly));
        const auto match
            = QRegularExpression(QStringLiteral("\\(pid (\\d+)\\)")).match(QString::fromUtf8(log.readAll()));
        QVERIFY(match.hasMatch());
        QCOMPARE(::kill(pid_t(match.captured(1).toInt()), SIGTERM), 0);
        QTRY_COMPARE_WITH_TIMEOUT(m_window->connectionText(), QStringLiteral("Disconnected"), 10000);
        bool retryShown = false;
        for (QPushButton* button : m_window->findChildren<QPushButton*>())
            retryShown = retryShown || (button->text() == QStringLiteral("Connect now") && button->isVisible());
        QVERIFY(retryShown);
        savePicture(QStringLiteral("console_window_disconnected"));

        ServiceProcess again(m_env->socketPath(), m_env->dataDir());
        QVERIFY2(again.start(), qPrintable(again.output()));
        QTRY_COMPARE_WITH_TIMEOUT(m_window->connectionText(), QStringLiteral("Connected"), 10000);
        // The accounts kept by the service are there again.
        QTRY_COMPARE(m_window->storageView()->model()->index(0, 0).data().toString(), QStringLiteral("Local storage"));
        QVERIFY(again.terminate());
    }

    void layoutIsRememberedBetweenRuns()
    {
        m_window->backupView()->header()->resizeSection(1, 333);
        m_window->tabs()->setCurrentIndex(1);
        m_window->saveLayout();
        m_window->backupView()->header()->resizeSection(1, 100);
        m_window->tabs()->setCurrentIndex(0);
        m_window->restoreLayout();
        QCOMPARE(m_window->backupView()->header()->sectionSize(1), 333);
        QCOMPARE(m_window->tabs()->currentIndex(), 1);
        m_window->tabs()->setCurrentIndex(0);
    }
};

int main(int argc, char** argv)
{
    TWB::GUI::Application app(argc, argv);
    TestConsoleWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_console_window.moc"
