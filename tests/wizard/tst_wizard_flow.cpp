// A plan made through a wizard of the shared pages, driven as a user would, reaches the service,
// appears in the plan table and runs on request. Built twice: against the scripted fake service
// and against the real twbd (TWB_FLOW_REAL_SERVICE).

#include "flow_wizard.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/shared_model_creator.h"
#include "plans/plan_table_model.h"
#include "plans/plan_xml_list.h"
#include "platform/communication/connection_manager.h"
#include "platform/communication/notification_types.h"
#include "platform/plan/factory.h"
#include "storages/storage_connections_model.h"
#include "storages/storage_test_rows.h"
#include "storages/storages_edit_list.h"
#include "support/fake_service.h"
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
namespace NotificationType = TWB::Common::Communication::Notification::Type;

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
#ifdef TWB_FLOW_REAL_SERVICE
    std::unique_ptr<ServiceProcess> m_service;
#else
    FakeService m_service;
    std::unique_ptr<StorageRows> m_rows;
    QMap<QString, QString> m_xml; // plan id to its document, as the fake service stores it
    QMap<QString, int> m_status;

    QJsonObject infoOf(const QString& id) const
    {
        std::unique_ptr<TWB::Info::Plan::Base> plan(TWB::Info::Plan::Factory::create(m_xml.value(id)));
        if (!plan)
            return QJsonObject();
        return {{QStringLiteral("ID"), id}, {QStringLiteral("Name"), plan->name()},
            {QStringLiteral("SubType"), plan->subtype()}, {QStringLiteral("Type"), plan->type()},
            {QStringLiteral("Status"), m_status.value(id, 2)}, {QStringLiteral("Schedule"), QString()}};
    }

    void serve()
    {
        m_rows = std::make_unique<StorageRows>(m_service);
        m_rows->add(QStringLiteral("Other storage"), 1);
        m_rows->add(QStringLiteral("Local storage"), 1);
        m_service.on(QStringLiteral("PlanGetList"), [this](const FakeRequest&) {
            QJsonArray list;
            for (const QString& id : m_xml.keys())
                list << infoOf(id);
            return FakeReply::ok({{QStringLiteral("planList"), list}});
        });
        m_service.on(QStringLiteral("PlanGetInfo"), [this](const FakeRequest& request) {
            return FakeReply::ok({{QStringLiteral("planInfo"), infoOf(request.params.value("id").toString())}});
        });
        m_service.on(QStringLiteral("PlanGetXML"), [this](const FakeRequest& request) {
            return FakeReply::ok({{QStringLiteral("planXML"), m_xml.value(request.params.value("ID").toString())}});
        });
        m_service.on(QStringLiteral("PlanUpdate"), [this](const FakeRequest& request) {
            const QString id = request.params.value(QStringLiteral("ID")).toString();
            const bool known = m_xml.contains(id);
            m_xml.insert(id, request.params.value(QStringLiteral("planXML")).toString());
            // The service tells every console after the change, as twbd does.
            QTimer::singleShot(10, this, [this, id, known] {
                m_service.notify(QLatin1String(known ? NotificationType::PlanUpdated : NotificationType::PlanCreated),
                    {{QStringLiteral("id"), id}});
                if (known) // an edited row changes more than once: state, then summary
                    m_service.notify(QLatin1String(NotificationType::PlanUpdated), {{QStringLiteral("id"), id}});
            });
            return FakeReply::ok();
        });
        m_service.on(QStringLiteral("PlanExecuteStart"), [this](const FakeRequest& request) {
            const QString id = request.params.value(QStringLiteral("ID")).toString();
            m_status.insert(id, 1);
            m_service.notify(QLatin1String(NotificationType::PlanStateChanged),
                {{QStringLiteral("id"), id}, {QStringLiteral("state"), 1}});
            return FakeReply::ok();
        });
    }
#endif

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
#ifdef TWB_FLOW_REAL_SERVICE
        m_service = std::make_unique<ServiceProcess>(m_env->socketPath(), m_env->dataDir());
        QVERIFY2(m_service->start(), qPrintable(m_service->output()));
#else
        serve();
        QVERIFY(m_service.listen(m_env->socketPath()));
#endif
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
#ifndef TWB_FLOW_REAL_SERVICE
        const auto starts = m_service.requests(QStringLiteral("PlanExecuteStart"));
        QCOMPARE(starts.size(), 1);
        QCOMPARE(starts.first().params.value(QStringLiteral("ID")).toString(), id.toString());
        QTRY_COMPARE(table()->index(row, 4).data().toInt(), 1);
#endif
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
#ifndef TWB_FLOW_REAL_SERVICE
        m_service.clearRequests();
#endif
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
#ifndef TWB_FLOW_REAL_SERVICE
        QTest::qWait(200); // later row changes must not start the plan again; nothing else signals their end
        QCOMPARE(m_service.requests(QStringLiteral("PlanExecuteStart")).size(), 1);
        QCOMPARE(m_service.requests(QStringLiteral("PlanUpdate")).size(), 1);
#endif
    }
};

QTEST_MAIN(TestWizardFlow)
#include "tst_wizard_flow.moc"
