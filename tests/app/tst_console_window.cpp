#include "app/console_models.h"
#include "app/console_window.h"
#include "app/plan_view_support.h"
#include "app/run_progress_delegate.h"
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
#include <QStyle>
#include <QTabWidget>
#include <QToolBar>
#include <QTreeView>
#include <QWizard>
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

void selectRow(QTreeView* view, int row)
{
    view->selectionModel()->select(
        view->model()->index(row, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

bool retryShown(QWidget* window)
{
    for (QPushButton* button : window->findChildren<QPushButton*>()) {
        if (button->text() == QStringLiteral("Connect now") && button->isVisible())
            return true;
    }
    return false;
}

TWB::Host::RunProgressDelegate* progressDelegate(QTreeView* view)
{
    return qobject_cast<TWB::Host::RunProgressDelegate*>(view->itemDelegateForColumn(7));
}

// What the toolbar shows: the visible actions' texts, separators left out.
QStringList toolbarTexts(QToolBar* toolbar)
{
    QStringList texts;
    for (QAction* action : toolbar->actions()) {
        if (action->isVisible() && !action->isSeparator())
            texts << action->text();
    }
    return texts;
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
        // Enough data that restic spends seconds on it, so that each phase is seen.
        QVector<quint32> words(64 * 1024);
        for (int i = 0; i < 240; ++i) {
            QFile file(
                folder + (i % 2 ? QStringLiteral("/letters") : QString()) + QStringLiteral("/file-%1.bin").arg(i));
            if (!file.open(QIODevice::WriteOnly))
                break;
            random.fillRange(words.data(), words.size());
            file.write(reinterpret_cast<const char*>(words.constData()), words.size() * int(sizeof(quint32)));
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
        m_launcher->setRestartDelays(300, 2000, 60000);
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
        QVERIFY(retryShown(&window));
        // "Connect now" tries again at once, and says so in the log rather than waiting out the back-off.
        const int starts = launcher.startCount();
        for (QPushButton* button : window.findChildren<QPushButton*>()) {
            if (button->text() == QStringLiteral("Connect now"))
                button->click();
        }
        QCOMPARE(launcher.startCount(), starts + 1);
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

    void versionAndHelpAnswerWithoutADisplay_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<QString>("expected");
        QTest::newRow("help") << QStringLiteral("--help") << QStringLiteral("--socket <path>");
        QTest::newRow("version") << QStringLiteral("--version") << QStringLiteral("twbgui ");
    }

    void versionAndHelpAnswerWithoutADisplay()
    {
        QFETCH(QString, option);
        QFETCH(QString, expected);
        QProcess gui;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        // A terminal with no X server and no way to reach one.
        environment.remove(QStringLiteral("DISPLAY"));
        environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        gui.setProcessEnvironment(environment);
        gui.start(QStringLiteral(TWBGUI_PROGRAM), {option});
        QVERIFY(gui.waitForFinished(20000));
        const QString output = QString::fromUtf8(gui.readAllStandardOutput());
        QVERIFY2(
            gui.exitStatus() == QProcess::NormalExit && gui.exitCode() == 0, gui.readAllStandardError().constData());
        QVERIFY2(output.contains(expected), qPrintable(output));
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
        // What the bar says at each progress message of this first run.
        QStringList barTexts;
        const QUuid plan(view->model()->index(row, 0).data().toString());
        auto recorder = connect(TWB::GUI::PlanStatusList::instance().data(), &TWB::GUI::PlanStatusList::updated, this,
            [&barTexts, view, plan](const QUuid& id) {
                const int at = rowNamed(view, QStringLiteral("Documents"));
                if (id == plan && at >= 0)
                    barTexts << progressDelegate(view)->runningText(view->model()->index(at, 7));
            });
        const double usedBefore = m_window->storageView()->model()->index(0, 7).data().toDouble();
        m_window->startAction()->trigger();
        // The service confirms the start by notification: the row runs and the toolbar offers Stop.
        QTRY_COMPARE_WITH_TIMEOUT(view->model()->index(row, 4).data().toInt(), 1, 20000);
        QTRY_VERIFY(m_window->stopAction()->isEnabled());
        QVERIFY(!m_window->startAction()->isEnabled());
        QVERIFY(progress.wait(10000));
        QCOMPARE(progress.last().at(0).toUuid(), QUuid(view->model()->index(row, 0).data().toString()));
        savePicture(QStringLiteral("console_window_running"));
        // The label is whole inside the bar, or its tool tip says it whole.
        const QRect bar = view->visualRect(view->model()->index(row, 7));
        QVERIFY(bar.width() >= view->fontMetrics().horizontalAdvance(
                    progressDelegate(view)->runningText(view->model()->index(row, 7)))
            || !TWB::Host::FullTextToolTips::toolTip(view, view->model()->index(row, 7)).isEmpty());
        // The run ends and its row says so.
        QTRY_COMPARE_WITH_TIMEOUT(view->model()->index(row, 4).data().toInt(), 2, 60000);
        QTRY_COMPARE_WITH_TIMEOUT(view->model()->index(row, 7).data().toInt(), 6, 10000);
        QCOMPARE(TWB::GUI::PlanResultDelegate::toText(view->model()->index(row, 7).data(), QLocale()),
            QStringLiteral("Success"));
        QVERIFY(!view->model()->index(row, 6).data().toString().isEmpty());
        QTRY_VERIFY(m_window->startAction()->isEnabled());
        savePicture(QStringLiteral("console_window_success"));
        disconnect(recorder);

        // A first run creates the repository before it reads a file: the bar says so, then what follows.
        qInfo() << "bar texts of the first run:" << barTexts;
        QVERIFY(!barTexts.isEmpty());
        QVERIFY2(barTexts.first().startsWith(QStringLiteral("Preparing the storage")), qPrintable(barTexts.join('|')));
        for (const QString& text : qAsConst(barTexts))
            QVERIFY2(!text.startsWith(QStringLiteral("0%")), qPrintable(text));

        // The account's space used follows the run without a restart of the console.
        QTRY_VERIFY_WITH_TIMEOUT(m_window->storageView()->model()->index(0, 7).data().toDouble() > usedBefore, 10000);
        QVERIFY(m_window->storageView()->model()->index(0, 7).data().toDouble() > 10 * 1024 * 1024);
    }

    void toolbarFollowsTheVisibleTab()
    {
        QTreeView* view = m_window->backupView();
        const int row = rowNamed(view, QStringLiteral("Documents"));
        QVERIFY(row >= 0);
        m_window->tabs()->setCurrentWidget(view);
        selectRow(view, row);
        QTRY_VERIFY(m_window->removeAction()->isEnabled());
        QCOMPARE(toolbarTexts(m_window->toolBar()),
            QStringList({QStringLiteral("New backup plan"), QStringLiteral("Edit"), QStringLiteral("Restore"),
                QStringLiteral("Start"), QStringLiteral("Stop"), QStringLiteral("Run full backup"),
                QStringLiteral("Remove")}));
        // A double-click on the row opens the plan in its wizard, filled from the plan.
        QTRY_VERIFY(m_window->editAction()->isEnabled());
        QString opened;
        auto readWizard = [&opened] {
            QTRY_VERIFY(QApplication::activeModalWidget());
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            auto* wizard = qobject_cast<QWizard*>(dialog);
            opened = dialog->windowTitle() + QLatin1Char('|')
                + (wizard ? wizard->field(QStringLiteral("Field_PlanName")).toString() : QString());
            dialog->reject();
        };
        QTimer::singleShot(0, this, readWizard);
        const QRect rowRect = view->visualRect(view->model()->index(row, 1));
        // An item view takes a double-click only on the item the press went to.
        QTest::mousePress(view->viewport(), Qt::LeftButton, {}, rowRect.center());
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, rowRect.center());
        QTRY_COMPARE(opened, QStringLiteral("Edit backup plan: Documents|Documents"));
        // Restore opens the restore wizard on what the plan backs up.
        QTimer::singleShot(0, this, readWizard);
        m_window->restoreAction()->trigger();
        QTRY_COMPARE(opened, QStringLiteral("Create restore plan|Restore Documents"));
        // Back to the selection alone, without the current row the clicks set.
        view->setCurrentIndex(QModelIndex());
        selectRow(view, row);

        const QPoint tabsAt = m_window->tabs()->mapTo(m_window.get(), QPoint());

        // The storage tab: no plan is in view, so no plan action can act; the account actions stand instead.
        m_window->tabs()->setCurrentWidget(m_window->storageView());
        // The bar keeps its place: the tabs stay where the user clicked.
        QTRY_VERIFY(!m_window->toolBar()->widgetForAction(m_window->startAction())->isVisible());
        QCOMPARE(m_window->tabs()->mapTo(m_window.get(), QPoint()), tabsAt);
        m_window->storageView()->setCurrentIndex(m_window->storageView()->model()->index(0, 0));
        QVERIFY(m_window->currentPlan().isNull());
        QCOMPARE(toolbarTexts(m_window->toolBar()),
            QStringList({QStringLiteral("Add account"), QStringLiteral("Edit"), QStringLiteral("Details"),
                QStringLiteral("Browse"), QStringLiteral("Remove")}));
        QVERIFY(!m_window->removeAction()->isEnabled());
        QVERIFY(!m_window->startAction()->isEnabled());
        savePicture(QStringLiteral("console_window_toolbar_storages"));

        // The empty restore tab: plan actions are shown but act on nothing; no full backup there.
        m_window->tabs()->setCurrentWidget(m_window->restoreView());
        QCOMPARE(m_window->restoreView()->model()->rowCount(), 0);
        QVERIFY(m_window->currentPlan().isNull());
        QCOMPARE(toolbarTexts(m_window->toolBar()),
            QStringList({QStringLiteral("New restore plan"), QStringLiteral("Edit"), QStringLiteral("Start"),
                QStringLiteral("Stop"), QStringLiteral("Remove")}));
        for (QAction* action : {m_window->startAction(), m_window->runFullAction(), m_window->removeAction(),
                 m_window->stopAction(), m_window->editAction()})
            QVERIFY2(!action->isEnabled(), qPrintable(action->text()));
        savePicture(QStringLiteral("console_window_toolbar_restores"));

        // Back on the backups, the selection there is what the actions act on again.
        m_window->tabs()->setCurrentWidget(view);
        QCOMPARE(m_window->currentPlan(), QUuid(view->model()->index(row, 0).data().toString()));
        QTRY_VERIFY(m_window->removeAction()->isEnabled());
    }

    void tablesSortByHeaderAndShowCutTextsWhole()
    {
        const QUuid local(m_window->storageView()->model()->index(0, 1).data().toString());
        const QString longName = QStringLiteral("Plan 10 with a name far longer than any column gives it room for");
        importPlan(QStringLiteral("Plan 9"), local);
        importPlan(longName, local);
        QTreeView* view = m_window->backupView();
        QTRY_VERIFY(rowNamed(view, QStringLiteral("Plan 9")) >= 0 && rowNamed(view, longName) >= 0);
        QHeaderView* header = view->header();
        auto names = [view] {
            QStringList list;
            for (int row = 0; row < view->model()->rowCount(); ++row)
                list << view->model()->index(row, 1).data().toString();
            return list;
        };
        // A click on the name header sorts by name, a second click the other way.
        const int nameX = header->sectionViewportPosition(1) + header->sectionSize(1) / 2;
        header->setSortIndicator(0, Qt::AscendingOrder);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(nameX, header->height() / 2));
        QCOMPARE(header->sortIndicatorSection(), 1);
        const QStringList ascending = names();
        QCOMPARE(ascending, QStringList({QStringLiteral("Documents"), QStringLiteral("Plan 9"), longName}));
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(nameX, header->height() / 2));
        QCOMPARE(names(), QStringList({longName, QStringLiteral("Plan 9"), QStringLiteral("Documents")}));
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(nameX, header->height() / 2));

        // The long name is cut in its column, and its tool tip holds it whole; a short one needs none.
        const QModelIndex cut = view->model()->index(rowNamed(view, longName), 1);
        QCOMPARE(TWB::Host::FullTextToolTips::toolTip(view, cut), longName);
        QVERIFY(TWB::Host::FullTextToolTips::toolTip(
            view, view->model()->index(rowNamed(view, QStringLiteral("Plan 9")), 1))
                    .isEmpty());

        // A new window shows what users read first without scrolling: name, status, last result and
        // time, next run, duration and size.
        ConsoleWindow fresh(*m_controller, *m_launcher);
        fresh.show();
        QVERIFY(QTest::qWaitForWindowExposed(&fresh));
        QCOMPARE(fresh.size(), QSize(1100, 640));
        QTreeView* freshView = fresh.backupView();
        QTRY_VERIFY(freshView->model()->rowCount() >= 3);
        QVERIFY(fresh.grab().save(TestEnvironment::outputDir() + QStringLiteral("/console_window_new.png")));
        // A usual plan name is read whole, beside the plan's icon.
        const int icon = freshView->style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, freshView);
        QVERIFY(freshView->columnWidth(1)
            >= freshView->fontMetrics().horizontalAdvance(QStringLiteral("My documents")) + icon + 16);
        for (int column : {1, 4, 6, 7, 9, 10, 13}) {
            const QRect cell = freshView->visualRect(freshView->model()->index(0, column));
            QVERIFY2(cell.left() >= 0 && cell.right() <= freshView->viewport()->width(),
                qPrintable(QStringLiteral("column %1 at %2..%3 of %4")
                               .arg(column)
                               .arg(cell.left())
                               .arg(cell.right())
                               .arg(freshView->viewport()->width())));
        }
    }

    void serviceKilledTwiceDuringARunIsShownAndRestarted()
    {
        QTreeView* view = m_window->backupView();
        m_window->tabs()->setCurrentWidget(view);
        const QUuid plan(view->model()->index(rowNamed(view, QStringLiteral("Documents")), 0).data().toString());
        for (int round = 1; round <= 2; ++round) {
            int row = rowNamed(view, QStringLiteral("Documents"));
            QVERIFY(row >= 0);
            selectRow(view, row);
            QTRY_VERIFY(m_window->startAction()->isEnabled());
            m_window->startAction()->trigger();
            QTRY_COMPARE_WITH_TIMEOUT(
                view->model()->index(rowNamed(view, QStringLiteral("Documents")), 4).data().toInt(), 1, 20000);
            row = rowNamed(view, QStringLiteral("Documents"));
            // The last run's message gives way to the live run.
            const QString lastMessage = view->model()->index(row, 8).data().toString();
            auto* message = qobject_cast<TWB::Host::RunMessageDelegate*>(view->itemDelegateForColumn(8));
            QVERIFY(message);
            if (!lastMessage.isEmpty())
                QVERIFY(message->textFor(view->model()->index(row, 8), QLocale()) != lastMessage);
            QTRY_VERIFY(m_window->stopAction()->isEnabled());

            const int starts = m_launcher->startCount();
            const qint64 pid = m_launcher->servicePid();
            QVERIFY(pid > 0);
            QCOMPARE(::kill(pid_t(pid), SIGKILL), 0);

            // While the service is away: the status bar says so, the running row does not pretend
            // to go on, and no plan action can be used, with the reason in its tool tip.
            QTRY_VERIFY_WITH_TIMEOUT(m_window->connectionText() != QStringLiteral("Connected"), 10000);
            row = rowNamed(view, QStringLiteral("Documents"));
            QCOMPARE(progressDelegate(view)->runningText(view->model()->index(row, 7)),
                TWB::Host::RunProgressDelegate::awayText());
            for (QAction* action : {m_window->startAction(), m_window->stopAction(), m_window->runFullAction(),
                     m_window->removeAction()}) {
                QVERIFY2(!action->isEnabled(), qPrintable(action->text()));
                QVERIFY(action->toolTip().contains(QStringLiteral("service is away")));
            }
            savePicture(QStringLiteral("console_window_away_%1").arg(round));

            // The console starts its service again, each time, and the run shows as cut short.
            QTRY_COMPARE_WITH_TIMEOUT(m_window->connectionText(), QStringLiteral("Connected"), 20000);
            QCOMPARE(m_launcher->startCount(), starts + 1);
            QVERIFY(m_launcher->servicePid() != pid);
            QTRY_COMPARE_WITH_TIMEOUT(
                view->model()->index(rowNamed(view, QStringLiteral("Documents")), 4).data().toInt(), 2, 10000);
            row = rowNamed(view, QStringLiteral("Documents"));
            QTRY_COMPARE(view->model()->index(row, 7).data().toInt(), 9);
            QVERIFY(!m_window->startAction()->toolTip().contains(QStringLiteral("service is away")));
            QTRY_VERIFY(m_window->startAction()->isEnabled());
            QCOMPARE(QUuid(view->model()->index(row, 0).data().toString()), plan);
            savePicture(QStringLiteral("console_window_back_%1").arg(round));
        }
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
