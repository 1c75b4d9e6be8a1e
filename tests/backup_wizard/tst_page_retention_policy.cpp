#include "backup_wizard/page_full_schedule.h"
#include "backup_wizard/page_retention_policy.h"
#include "platform/plan/backup_disk_image.h"
#include "platform/plan/backup_file.h"
#include "support/log_capture.h"
#include "support/modal_answerer.h"
#include "support/test_environment.h"
#include "wizard/frequency_weekly.h"
#include "wizard/page_schedule.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using namespace TWB::Info::Plan;
using TWB::Test::LogCapture;
using TWB::Test::ModalAnswerer;
using TWB::Test::TestEnvironment;
using Policy = Backup::RetentionPolicy;
using Retention = BackupPlanEditWizard::PageRetentionPolicy;
using FullSchedule = BackupPlanEditWizard::PageFullSchedule;

namespace {

/// The pages of the backup wizard that this test covers, at their own ids, beside the plan's own schedule.
class Wizard : public PlanWizardBase
{
public:
    Wizard()
        : PlanWizardBase(1)
        , schedule(new PageSchedule)
        , retention(new Retention)
        , full(new FullSchedule)
    {
        setPage(103, retention);
        setPage(4, schedule);
        setPage(104, full);
        setProperty("Property_BackupPlanType", quint8(0));
        resizeWizardPages();
    }
    void load(Base* plan)
    {
        for (PageBase* page :
            {static_cast<PageBase*>(schedule), static_cast<PageBase*>(retention), static_cast<PageBase*>(full)})
            page->fromPlan(plan);
    }
    void write(Base* plan)
    {
        for (PageBase* page :
            {static_cast<PageBase*>(schedule), static_cast<PageBase*>(retention), static_cast<PageBase*>(full)})
            QVERIFY(page->initPlan(plan));
    }
    template <typename T> T* child(const QString& text) const
    {
        const QList<T*> all = findChildren<T*>();
        for (T* widget : all) {
            if (widget->text() == text)
                return widget;
        }
        return nullptr;
    }
    PageSchedule* schedule;
    Retention* retention;
    FullSchedule* full;
};

Policy customPolicy()
{
    Policy policy;
    policy.setType(Policy::Custom);
    policy.setUseDeleteOlder(true);
    policy.setDeleteFileAge({2, Policy::FileAge::Weeks});
    policy.setUseKeepLastVersion(false);
    policy.setUseKeepVersion(true);
    policy.setKeepVersion(7);
    policy.setUseDeleteLocaly(true);
    policy.setDeleteLocalyAfter(0);
    return policy;
}

} // namespace

class TestPageRetentionPolicy : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;

private Q_SLOTS:
    void initTestCase() { m_env = std::make_unique<TestEnvironment>(); }

    void backupDateForcesKeepingTheLastVersion()
    {
        Wizard wizard;
        BackupFile plan;
        plan.retentionPolicy() = customPolicy();
        wizard.load(&plan);
        auto* keepLast = wizard.child<QCheckBox>(QStringLiteral("Always keep the last version"));
        QVERIFY(keepLast);
        QVERIFY(!keepLast->isChecked());
        QVERIFY(keepLast->isEnabled());

        wizard.setField(QLatin1String(Retention::FieldUseDeleteDateType), 1);
        QVERIFY(keepLast->isChecked());
        QVERIFY(!keepLast->isEnabled());
        wizard.setField(QLatin1String(Retention::FieldUseDeleteDateType), 0);
        QVERIFY(keepLast->isChecked());
        QVERIFY(keepLast->isEnabled());
    }

    void leavingCustomKeepsTheValuesAndStillWritesThem()
    {
        Wizard wizard;
        BackupFile stored;
        stored.retentionPolicy() = customPolicy();
        wizard.load(&stored);
        auto* deleteOlder = wizard.child<QCheckBox>(QStringLiteral("Delete versions older than"));
        QVERIFY(deleteOlder->isEnabled());

        wizard.child<QRadioButton>(QStringLiteral("Use default"))->click();
        QVERIFY(!deleteOlder->isEnabled());
        QVERIFY(!wizard.child<QCheckBox>(QStringLiteral("Keep number of versions (for each file)"))->isEnabled());
        QCOMPARE(wizard.retention->summary(),
            QStringLiteral("<tr><td>Retention policy:</td><td></td></tr><tr><td></td><td>Default retention "
                           "policy</td></tr>"));

        BackupFile written;
        QVERIFY(wizard.retention->initPlan(&written));
        Policy expected = customPolicy();
        expected.setType(Policy::Default);
        QCOMPARE(written.retentionPolicy(), expected);
    }

    void optionsLinkOpensTheDefaultRetention()
    {
        Wizard wizard;
        QLabel* link = nullptr;
        for (QLabel* label : wizard.retention->findChildren<QLabel*>()) {
            if (label->text().contains(QLatin1String("href=\"options\"")))
                link = label;
        }
        QVERIFY(link);
        ModalAnswerer close(QStringLiteral("Close"));
        Q_EMIT link->linkActivated(QStringLiteral("options"));
        QVERIFY(close.answered());
        QCOMPARE(close.title(), QStringLiteral("Default retention policy"));
    }

    void diskImagePlansTakeNoDeletedFileRules_data()
    {
        QTest::addColumn<bool>("diskImage");
        QTest::newRow("file plan") << false;
        QTest::newRow("disk image plan") << true;
    }

    void diskImagePlansTakeNoDeletedFileRules()
    {
        QFETCH(bool, diskImage);
        Wizard wizard;
        BackupFile stored;
        stored.retentionPolicy() = customPolicy();
        stored.retentionPolicy().setUseBackupDate(true);
        wizard.load(&stored);

        std::unique_ptr<Backup> written;
        if (diskImage)
            written = std::make_unique<BackupDiskImage>();
        else
            written = std::make_unique<BackupFile>();
        QVERIFY(wizard.retention->initPlan(written.get()));
        const Policy& policy = written->retentionPolicy();
        QCOMPARE(policy.type(), Policy::Custom);
        QCOMPARE(policy.keepVersion(), 7);
        QCOMPARE(policy.deleteFileAge(), (Policy::FileAge {2, Policy::FileAge::Weeks}));
        // By backup date the last version stays, whatever the stored plan said.
        QCOMPARE(policy.useKeepLastVersion(), true);
        QCOMPARE(policy.useDeleteLocaly(), !diskImage);
        QCOMPARE(policy.deleteLocalyAfter(), diskImage ? Policy().deleteLocalyAfter() : 0);
        QCOMPARE(policy.useBackupDate(), !diskImage);
    }

    void plansSurviveTheirPagesWithBothSchedulesApart()
    {
        LogCapture log;
        Wizard wizard;
        QCOMPARE(log.warnings(), 0); // QWizard warns of a field name registered twice

        BackupFile stored;
        stored.retentionPolicy() = customPolicy();
        stored.retentionPolicy().setUseKeepLastVersion(true);
        Schedule& own = stored.schedule();
        own.setEnable(true);
        own.setType(Schedule::Recurring);
        own.setFrequencyType(Schedule::Daily);
        own.setOccursAt(QTime(21, 45));
        own.setStopAfter(3600);
        Schedule& full = stored.forceFullSchedule();
        full.setEnable(true);
        full.setType(Schedule::Recurring);
        full.setFrequencyType(Schedule::Weekly);
        full.setDailyRecurrence(true);
        full.setOccursEvery(90, QTime(1, 0), QTime(5, 30));
        QBitArray sunday(7);
        sunday.setBit(6);
        full.setWeeklyFrequency(sunday);
        full.setStopAfter(2 * 3600 + 15 * 60);
        stored.setForceFullDiffSizeConditionEnable(true);
        stored.setForceFullDiffSizeCondition(75);

        wizard.load(&stored);
        QVERIFY(wizard.full->isComplete());
        BackupFile written;
        wizard.write(&written);
        QCOMPARE(written.retentionPolicy(), stored.retentionPolicy());
        QCOMPARE(written.schedule(), stored.schedule());
        QCOMPARE(written.forceFullSchedule(), stored.forceFullSchedule());
        QCOMPARE(written.forceFullDiffSizeConditionEnable(), true);
        QCOMPARE(written.forceFullDiffSizeCondition(), quint16(75));

        QVERIFY(wizard.full->summary().contains(QStringLiteral("<td>Occurs every week on:</td>")));
        QVERIFY(wizard.full->summary().endsWith(
            QStringLiteral("<tr><td></td><td>Stop plan if it runs for: 2 hour(s) 15 minutes(s)</td></tr>"
                           "<tr><td></td><td>Run full if previous backup has changed more than: 75 % last "
                           "full</td></tr>")));
        QVERIFY(wizard.retention->summary().contains(
            QStringLiteral("<td>Delete version older than 2 week(s) from modification date</td>")));
    }

    void fullScheduleCompleteness_data()
    {
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<int>("frequency");
        QTest::addColumn<bool>("sunday");
        QTest::addColumn<bool>("stop");
        QTest::addColumn<int>("minutes");
        QTest::addColumn<bool>("complete");
        QTest::newRow("off, stop after nothing") << false << 0 << false << true << 0 << false;
        QTest::newRow("off, stop after 5 minutes") << false << 0 << false << true << 5 << true;
        QTest::newRow("off, weekly without a day") << false << 1 << false << false << 0 << true;
        QTest::newRow("weekly without a day") << true << 1 << false << false << 0 << false;
        QTest::newRow("weekly on Sunday") << true << 1 << true << false << 0 << true;
        QTest::newRow("daily, the days do not count") << true << 0 << false << false << 0 << true;
    }

    void fullScheduleCompleteness()
    {
        QFETCH(bool, enabled);
        QFETCH(int, frequency);
        QFETCH(bool, sunday);
        QFETCH(bool, stop);
        QFETCH(int, minutes);
        QFETCH(bool, complete);
        Wizard wizard;
        wizard.setStartId(104);
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        wizard.setField(QLatin1String(FullSchedule::FieldFullScheduleEnable), enabled);
        wizard.setField(QLatin1String(FullSchedule::FieldFullScheduleFrequencyType), frequency);
        wizard.setField(QLatin1String(FullSchedule::FieldFullShceduleStopAutoEnable), stop);
        wizard.setField(QLatin1String(FullSchedule::FieldFullShceduleStopAutoMinutesValue), minutes);
        // The day is clicked, as a user does, so that the page hears of it through the weekly widget.
        QCheckBox* day = nullptr;
        const QList<QCheckBox*> boxes = wizard.full->frequency(1)->findChildren<QCheckBox*>();
        for (QCheckBox* box : boxes) {
            if (box->text() == QLocale::system().dayName(7, QLocale::LongFormat))
                day = box;
        }
        QVERIFY(day);
        if (sunday)
            day->click();
        QCOMPARE(wizard.field(QStringLiteral("Full_Field_WeeklyDay_7")).toBool(), sunday);
        QCOMPARE(wizard.full->isComplete(), complete);
        QCOMPARE(wizard.button(QWizard::NextButton)->isEnabled(), complete);
    }
};

QTEST_MAIN(TestPageRetentionPolicy)
#include "tst_page_retention_policy.moc"
