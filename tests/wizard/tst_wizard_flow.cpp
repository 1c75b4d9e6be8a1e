// A plan made through a wizard of the shared pages, driven as a user would, reaches the real twbd,
// appears in the plan table and runs on request.

#include "flow_wizard.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/shared_model_creator.h"
#include "plans/plan_table_model.h"
#include "plans/plan_xml_list.h"
#include "platform/communication/connection_manager.h"
#include "storages/storage_connections_model.h"
#include "storages/storages_edit_list.h"
#include "support/service_process.h"
#include "support/test_caller.h"
#include "support/test_environment.h"
#include "wizard/frequency_weekly.h"

#include <QAbstractButton>
#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QLineEdit>
#include <QListView>
#include <QRadioButton>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using namespace TWB::Test;
using TWB::Common::Communication::ConnectionManager;

namespace {

int rowOf(const PlanTableModel& table, const QUuid& id)
{
    for (int row = 0; row < table.rowCount(); ++row) {
        if (table.index(row, 0).data().toUuid() == id)
            return row;
    }
    return -1;
}

QRadioButton* radio(QWidget* parent, const QString& text)
{
    const auto buttons = parent->findChildren<QRadioButton*>();
    for (QRadioButton* b : buttons) {
        if (b->text() == text && b->isVisible())
            return b;
    }
    return nullptr;
}

QCheckBox* check(QWidget* parent, const QString& text)
{
    const auto boxes = parent->findChildren<QCheckBox*>();
    for (QCheckBox* b : boxes) {
        if (b->text() == text && b->isVisible())
            return b;
    }
    return nullptr;
}

/// Clicks a check box or radio button where a user would: on its indicator, not in the middle of a
/// stretched widget, where it does not react.
void clickButton(QAbstractButton* button)
{
    QVERIFY(button);
    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
}

} // namespace

class TestWizardFlow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    std::unique_ptr<SharedModelCreator<PlanTableModel>> m_creator;
    std::unique_ptr<SharedModelCreator<StorageConnectionsModel>> m_storages;
    QUuid m_account; // the account the walks choose on page 0
    QString m_source; // what the walks' plans back up
    std::unique_ptr<QAbstractItemModelTester> m_tester;
    std::unique_ptr<ServiceProcess> m_service;

    /// The runs the service recorded for a plan.
    int runsOf(const QUuid& id)
    {
        TestCaller caller;
        QSignalSpy succeeded(&caller, &TestCaller::succeeded);
        if (!caller.send(QStringLiteral("HistoryListByPlan"), {{QStringLiteral("planID"), id.toString()}})
            || !succeeded.wait())
            return -1;
        return succeeded.first().first().toJsonObject().value(QStringLiteral("HistoryListByPlan")).toArray().size();
    }

    PlanTableModel* table() const
    {
        return static_cast<PlanTableModel*>(ModelManager::instance()->create(ModelNames::PlanTable));
    }

    /// Walks the wizard as a user: name, a weekly schedule on Monday at 21:30, past the stand-in page,
    /// "Run plan now" as asked, Finish.
    void walk(FlowWizard& wizard, const QString& name, bool runNow, bool typeName = true)
    {
        wizard.summary->items = QStringList {m_source};
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        // Page 0: the user clicks the account the plan writes to.
        QCOMPARE(wizard.currentId(), 0);
        QVERIFY(!wizard.button(QWizard::NextButton)->isEnabled());
        QListView* accounts = static_cast<Settings::Storages::EditList*>(wizard.cloud->list())->view();
        const QModelIndex local = accounts->model()
                                      ->match(accounts->model()->index(0, 0), Qt::DisplayRole,
                                          QStringLiteral("Local storage"), 1, Qt::MatchExactly)
                                      .value(0);
        QVERIFY(local.isValid());
        QTest::mouseClick(accounts->viewport(), Qt::LeftButton, {}, accounts->visualRect(local).center());
        QCOMPARE(wizard.field(QStringLiteral("Field_CloudId")).toString(), m_account.toString());
        QTest::mouseClick(wizard.button(QWizard::NextButton), Qt::LeftButton);
        QCOMPARE(wizard.currentId(), 1);
        if (typeName) {
            QTest::keyClicks(wizard.name->findChild<QLineEdit*>(), name);
        }
        QTest::mouseClick(wizard.button(QWizard::NextButton), Qt::LeftButton);
        QCOMPARE(wizard.currentId(), 2);
        PlanWizardBase::PageSchedule* schedule = wizard.schedule;
        if (!wizard.field(QStringLiteral("Field_ScheduleDisabled")).toBool())
            clickButton(check(schedule, QStringLiteral("Enable schedule")));
        clickButton(radio(schedule, QStringLiteral("Recurring. Frequency Type:")));
        auto* frequency = schedule->findChild<QComboBox*>();
        frequency->setCurrentIndex(1);
        clickButton(check(schedule->frequency(1), QLocale::system().dayName(1, QLocale::LongFormat)));
        clickButton(radio(schedule->frequency(1), QStringLiteral("At")));
        wizard.setField(
            QStringLiteral("Weekly_Field_UsedOccursAtValue"), QDateTime(QDate::currentDate(), QTime(21, 30)));
        QVERIFY(wizard.button(QWizard::NextButton)->isEnabled());
        QTest::mouseClick(wizard.button(QWizard::NextButton), Qt::LeftButton);
        QCOMPARE(wizard.currentId(), 5);
        QTest::mouseClick(wizard.button(QWizard::NextButton), Qt::LeftButton);
        QCOMPARE(wizard.currentId(), 6);
        auto* run = check(wizard.summary, QStringLiteral("Run plan now"));
        if (run->isChecked() != runNow)
            clickButton(run);
        QVERIFY(wizard.grab().save(TestEnvironment::outputDir() + QStringLiteral("/flow_summary.png")));
        // Finish runs the save dialog's own event loop; it returns once the dialog closes.
        QTest::mouseClick(wizard.button(QWizard::FinishButton), Qt::LeftButton);
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        // Leave pre- and post-actions out of this product, so that the schedule page leads to page 5.
        QFile rebranding(m_env->rebrandingFile());
        QVERIFY(rebranding.open(QIODevice::WriteOnly));
        rebranding.write("AllowPrePostActions=false\n");
        rebranding.close();
        m_service = std::make_unique<ServiceProcess>(m_env->socketPath(), m_env->dataDir());
        QVERIFY2(m_service->start(), qPrintable(m_service->output()));
        QVERIFY(ConnectionManager::instance());
        TestEnvironment::speedUpChannel();
        QTRY_VERIFY(ConnectionManager::instance()->isLocalManagmentConnected());
        m_creator = std::make_unique<SharedModelCreator<PlanTableModel>>(ModelNames::PlanTable);
        ModelManager::instance()->registrateCreator(*m_creator);
        m_tester = std::make_unique<QAbstractItemModelTester>(
            table(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy loaded(table(), &BaseModel::complite);
        QVERIFY(table()->init());
        QVERIFY(loaded.wait());

        m_source = m_env->root() + QStringLiteral("/documents");
        QVERIFY(QDir().mkpath(m_source));
        QFile letter(m_source + QStringLiteral("/letter.txt"));
        QVERIFY(letter.open(QIODevice::WriteOnly));
        letter.write("Dear reader,\n");
        letter.close();

        m_storages = std::make_unique<SharedModelCreator<StorageConnectionsModel>>(ModelNames::StorageConnection);
        ModelManager::instance()->registrateCreator(*m_storages);
        auto* storages = ModelManager::instance()->create(ModelNames::StorageConnection);
        QSignalSpy listed(storages, &BaseModel::complite);
        QVERIFY(storages->init());
        QVERIFY(listed.wait());
        const QModelIndexList local = storages->match(
            storages->index(0, 0), Qt::DisplayRole, QStringLiteral("Local storage"), 1, Qt::MatchExactly);
        QVERIFY(!local.isEmpty());
        m_account = QUuid(local.first().siblingAtColumn(1).data().toString());
    }

    void cleanupTestCase()
    {
        if (m_service)
            QVERIFY2(m_service->terminate(), qPrintable(m_service->output()));
    }

    void finishedWizardSavesShowsAndRunsThePlan()
    {
        FlowWizard wizard;
        walk(wizard, QStringLiteral("Documents"), true);
        QTRY_VERIFY_WITH_TIMEOUT(!wizard.isVisible(), 20000);
        QCOMPARE(wizard.result(), int(QDialog::Accepted));
        const QUuid id = wizard.summary->savedId;
        const int row = rowOf(*table(), id);
        QVERIFY(row >= 0);
        QCOMPARE(table()->index(row, 1).data().toString(), QStringLiteral("Documents"));
        QCOMPARE(PlanXmlList::instance()->lastCreatedPlan(), id);

        // The service holds the plan as the pages wrote it.
        QSignalSpy fetched(PlanXmlList::instance().data(), &PlanXmlList::complite);
        QVERIFY(PlanXmlList::instance()->getPlan(id));
        QVERIFY(fetched.wait());
        auto* plan = dynamic_cast<TWB::Info::Plan::BackupFile*>(PlanXmlList::instance()->plan(id));
        QVERIFY(plan);
        QCOMPARE(plan->name(), QStringLiteral("Documents"));
        QVERIFY(plan->schedule().isEnable());
        QCOMPARE(plan->schedule().frequencyType(), TWB::Info::Plan::Schedule::Weekly);
        QVERIFY(plan->schedule().weeklyFrequency().testBit(0));
        QCOMPARE(plan->schedule().occursAt(), QTime(21, 30));
        QCOMPARE(plan->storage(), m_account);
        // "Run plan now" ran it: the row ends with a successful run, and the service holds one run.
        QTRY_COMPARE_WITH_TIMEOUT(table()->index(rowOf(*table(), id), 7).data().toInt(), 6, 60000);
        QTRY_COMPARE(runsOf(id), 1);
    }

    void editedPlanIsSavedAndStartedOnce()
    {
        // A plan to edit, made by the previous walk or by this one.
        FlowWizard first;
        walk(first, QStringLiteral("To be renamed"), false);
        QTRY_VERIFY_WITH_TIMEOUT(!first.isVisible(), 20000);
        const QUuid id = first.summary->savedId;
        QSignalSpy fetched(PlanXmlList::instance().data(), &PlanXmlList::complite);
        QTRY_VERIFY(rowOf(*table(), id) >= 0);
        QVERIFY(PlanXmlList::instance()->getPlan(id));
        QVERIFY(fetched.wait());

        FlowWizard wizard;
        wizard.summary->items = QStringList {m_source};
        wizard.edit(PlanXmlList::instance()->plan(id));
        QCOMPARE(wizard.field(QStringLiteral("Field_PlanName")).toString(), QStringLiteral("To be renamed"));
        QCOMPARE(wizard.field(QStringLiteral("Field_ScheduleFrequencyType")).toInt(), 1);
        QVERIFY(wizard.field(QStringLiteral("Field_WeeklyDay_1")).toBool());
        // The storage page chose the plan's account again.
        QCOMPARE(wizard.field(QStringLiteral("Field_CloudId")).toString(), m_account.toString());
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        QVERIFY(wizard.button(QWizard::NextButton)->isEnabled());
        QTest::mouseClick(wizard.button(QWizard::NextButton), Qt::LeftButton);
        auto* nameEdit = wizard.name->findChild<QLineEdit*>();
        nameEdit->selectAll();
        QTest::keyClicks(nameEdit, QStringLiteral("Renamed"));
        // The schedule is already on and weekly; walk on and ask to run it.
        QTest::mouseClick(wizard.button(QWizard::NextButton), Qt::LeftButton);
        QTest::mouseClick(wizard.button(QWizard::NextButton), Qt::LeftButton);
        QTest::mouseClick(wizard.button(QWizard::NextButton), Qt::LeftButton);
        QCOMPARE(wizard.currentId(), 6);
        clickButton(check(wizard.summary, QStringLiteral("Run plan now")));
        QTest::mouseClick(wizard.button(QWizard::FinishButton), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(!wizard.isVisible(), 20000);
        QCOMPARE(wizard.summary->savedId, id);
        QTRY_COMPARE(table()->index(rowOf(*table(), id), 1).data().toString(), QStringLiteral("Renamed"));
        QCOMPARE(wizard.result(), int(QDialog::Accepted));
        // Started once, however often the edited row changes while the wait lasts.
        QTRY_COMPARE_WITH_TIMEOUT(table()->index(rowOf(*table(), id), 7).data().toInt(), 6, 60000);
        QTRY_COMPARE(table()->index(rowOf(*table(), id), 4).data().toInt(), 2);
        QTest::qWait(500); // a second start would show as a second run; nothing signals its absence
        QCOMPARE(runsOf(id), 1);
    }
};

QTEST_MAIN(TestWizardFlow)
#include "tst_wizard_flow.moc"
