#include "backup_wizard/page_advanced_filter.h"
#include "backup_wizard/page_backup_actions.h"
#include "backup_wizard/page_full_schedule.h"
#include "backup_wizard/page_retention_policy.h"
#include "frame/application.h"
#include "platform/plan/backup_disk_image.h"
#include "platform/plan/backup_file.h"
#include "support/log_capture.h"
#include "support/modal_answerer.h"
#include "support/test_environment.h"
#include "widgets/edit_list_widget.h"
#include "widgets/warning_frame.h"
#include "wizard/frequency_weekly.h"
#include "wizard/page_schedule.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QListView>
#include <QLocale>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
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

/// The two pages at their ids in the backup wizard.
class PagesWizard : public PlanWizardBase
{
public:
    PagesWizard()
        : PlanWizardBase(1)
        , filter(new PageAdvancedFilter)
        , actions(new PageBackupActions)
        , cloudType(new QSpinBox(filter))
    {
        // The storage page's field, which the filter page reads to choose its next page.
        cloudType->hide();
        cloudType->setRange(0, 100);
        filter->registerField(QStringLiteral("Field_CloudType"), cloudType);
        setPage(102, filter);
        setPage(107, actions);
        setStartId(102);
        resizeWizardPages();
    }
    PageAdvancedFilter* filter;
    PageBackupActions* actions;
    QSpinBox* cloudType;
};

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

/// The backup wizard's filter, actions, retention and full schedule pages, each at its own id.
class TestPageAdvancedFilter : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    QString m_repository;

    /// Whether restic itself takes the mask as an exclude pattern.
    bool resticTakes(const QString& mask)
    {
        return QProcess::execute(QStringLiteral("restic"),
                   {QStringLiteral("--repo"), m_repository, QStringLiteral("--no-cache"), QStringLiteral("--quiet"),
                       QStringLiteral("backup"), QStringLiteral("--dry-run"), QStringLiteral("--exclude=") + mask,
                       m_env->root()})
            == 0;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        m_repository = m_env->root() + QStringLiteral("/repository");
        qputenv("RESTIC_PASSWORD", "masks");
        QCOMPARE(QProcess::execute(QStringLiteral("restic"),
                     {QStringLiteral("init"), QStringLiteral("--quiet"), QStringLiteral("--repo"), m_repository}),
            0);
    }

    void cleanup()
    {
        QFile::remove(m_env->configFile());
        QFile::remove(m_env->rebrandingFile());
        Application::rereadConfiguration();
    }

    void maskThatResticRefusesIsRefusedWithItsReason_data()
    {
        QTest::addColumn<QString>("mask");
        QTest::addColumn<QString>("reason"); // empty: the mask is taken
        const QString unclosed = QStringLiteral("a \"[\" is not closed by \"]\"");
        const QString backslash = QStringLiteral("a \"\\\" at the end of a name escapes nothing");
        QTest::newRow("unclosed class") << "*.[ch" << unclosed;
        QTest::newRow("lone backslash at the end") << "notes\\" << backslash;
        QTest::newRow("lone backslash before a slash") << "a\\/b" << backslash;
        QTest::newRow("empty class") << "x[]" << QStringLiteral("\"[]\" holds no character");
        QTest::newRow("range without end")
            << "[a-]" << QStringLiteral("a \"-\" in \"[...]\" has no character after it");
        QTest::newRow("bad folder part") << "cache/[/x" << unclosed;
        QTest::newRow("bad negated mask") << "![x" << unclosed;
        QTest::newRow("reversed range") << "[z-a]" << QString();
        QTest::newRow("escaped brackets") << "\\[draft\\]" << QString();
        QTest::newRow("escaped bracket in a class") << "[\\]]" << QString();
        QTest::newRow("any depth") << "**/node_modules/*.js" << QString();
    }

    void maskThatResticRefusesIsRefusedWithItsReason()
    {
        QFETCH(QString, mask);
        QFETCH(QString, reason);
        // The page's grammar must agree with restic's own.
        QCOMPARE(resticTakes(mask), reason.isEmpty());

        PagesWizard wizard;
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        wizard.setField(QLatin1String(PageAdvancedFilter::FieldFilterType), int(BackupFile::ExcludeMasks));
        wizard.filter->setMasks({QStringLiteral("*.tmp"), mask});
        auto* next = wizard.button(QWizard::NextButton);
        auto* shown = wizard.filter->findChild<WarningFrame*>();
        QCOMPARE(next->isEnabled(), reason.isEmpty());
        QCOMPARE(shown->isVisible(), !reason.isEmpty());
        if (!reason.isEmpty())
            QVERIFY(shown->text().contains(
                QStringLiteral("The mask \"%1\" cannot be used: %2.").arg(mask, reason).toHtmlEscaped()));
        // Unused masks are not judged; taking the bad one out lets the user on.
        wizard.setField(QLatin1String(PageAdvancedFilter::FieldFilterType), int(BackupFile::NoFilter));
        QVERIFY(next->isEnabled());
        wizard.setField(QLatin1String(PageAdvancedFilter::FieldFilterType), int(BackupFile::IncludeMasks));
        wizard.filter->setMasks({QStringLiteral("*.tmp")});
        QVERIFY(next->isEnabled());
        QVERIFY(!shown->isVisible());
    }

    void nextPageFollowsCloudTypeAndRebranding_data()
    {
        QTest::addColumn<int>("cloudType");
        QTest::addColumn<QByteArray>("rebranding");
        QTest::addColumn<QByteArray>("config");
        QTest::addColumn<int>("next");
        const QByteArray plain("AllowCompression=false\nAllowEncryption=false\n");
        const QByteArray noS3Options = plain + "showSSE=false\nshowSIA=false\nS3Accelerate=false\n";
        QTest::newRow("defaults") << 4 << QByteArray() << QByteArray() << 3;
        QTest::newRow("nothing to choose") << 4 << plain << QByteArray() << 103;
        QTest::newRow("encryption alone") << 4 << QByteArray("AllowCompression=false\n") << QByteArray() << 3;
        QTest::newRow("compression alone") << 4 << QByteArray("AllowEncryption=false\n") << QByteArray() << 3;
        QTest::newRow("Amazon S3 with SSE") << 2 << plain << QByteArray() << 3;
        QTest::newRow("S3 China with acceleration only") << 20 << plain + "showSSE=false\nshowSIA=false\n"
                                                         << QByteArray() << 3;
        QTest::newRow("Amazon S3 without options") << 2 << noS3Options << QByteArray() << 103;
        QTest::newRow("type 37 is not asked") << 37 << plain << QByteArray() << 103;
        QTest::newRow("Azure standalone") << 3 << plain << QByteArray() << 3;
        QTest::newRow("Azure managed") << 3 << plain << QByteArray("edition=managed\n") << 103;
    }

    void nextPageFollowsCloudTypeAndRebranding()
    {
        QFETCH(int, cloudType);
        QFETCH(QByteArray, rebranding);
        QFETCH(QByteArray, config);
        QFETCH(int, next);
        if (!rebranding.isEmpty())
            TestEnvironment::writeFile(m_env->rebrandingFile(), rebranding);
        if (!config.isEmpty())
            TestEnvironment::writeFile(m_env->configFile(), config);
        Application::rereadConfiguration();
        PagesWizard wizard;
        wizard.cloudType->setValue(cloudType);
        QCOMPARE(wizard.filter->nextId(), next);
    }

    void actionsLeadToNotificationsWhereTheLicenceAllows()
    {
        PagesWizard wizard;
        QCOMPARE(wizard.actions->nextId(), 5);
        TestEnvironment::writeFile(m_env->configFile(), "license=free\n");
        QCOMPARE(wizard.actions->nextId(), 6);
    }

    void pagesCarryAPlanThroughUnchanged_data()
    {
        QTest::addColumn<bool>("filled");
        QTest::newRow("a new plan") << false;
        QTest::newRow("every setting") << true;
    }

    void pagesCarryAPlanThroughUnchanged()
    {
        QFETCH(bool, filled);
        BackupFile plan;
        if (filled) {
            plan.setFilterType(BackupFile::IncludeMasks);
            plan.setFilter({QStringLiteral("*.odt"), QStringLiteral("[Rr]eport?.pdf")});
            plan.setFilterCaseInsensitive(true);
            plan.setExcludeFolderList({QStringLiteral("node_modules"), QStringLiteral(".git")});
            plan.setExcludeSystemAndHidden(true);
            plan.setExcludeLargerThan(5ULL << 20);
            plan.setExcludeModifiedBefore(QDateTime(QDate(2023, 3, 4), QTime(0, 0)));
            plan.actions().pre().setEnabled(true);
            plan.actions().pre().setProgram(QStringLiteral("/usr/bin/mysqldump"));
            plan.actions().pre().setArguments(QStringLiteral("--all-databases -r \"/var/backups/all.sql\""));
            plan.actions().pre().setTerminateOnFailure(true);
            plan.actions().post().setEnabled(true);
            plan.actions().post().setProgram(QStringLiteral("logger"));
            plan.actions().post().setArguments(QStringLiteral("backup done"));
            plan.actions().post().setRunOnBackupFailure(true);
        }
        PagesWizard wizard;
        QVERIFY(wizard.filter->fromPlan(&plan));
        QVERIFY(wizard.actions->fromPlan(&plan));
        BackupFile saved;
        QVERIFY(wizard.filter->initPlan(&saved));
        QVERIFY(wizard.actions->initPlan(&saved));
        QVERIFY(saved == plan);
        QCOMPARE(wizard.filter->maskList()->view()->model()->rowCount(), plan.filter().size());

        const QString summary = wizard.filter->summary() + wizard.actions->summary();
        QCOMPARE(summary.contains(QStringLiteral("<tr><td>Skip files larger than:</td><td>5 MB</td></tr>")), filled);
        QCOMPARE(summary.isEmpty(), !filled);
    }

    void actionNeedsAProgramThatRuns()
    {
        PagesWizard wizard;
        wizard.setStartId(107);
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        wizard.setField(QLatin1String(PageBackupActions::FieldPostActionEnable), true);
        QVERIFY(!wizard.button(QWizard::NextButton)->isEnabled());
        wizard.setField(QLatin1String(PageBackupActions::FieldPostActionProgram), m_env->root());
        QVERIFY(wizard.button(QWizard::NextButton)->isEnabled());
        QVERIFY(!wizard.actions->validatePage());
        QVERIFY(wizard.actions->findChild<WarningFrame*>()->isVisible());
        wizard.setField(QLatin1String(PageBackupActions::FieldPostActionProgram), QStringLiteral("sh"));
        QVERIFY(wizard.actions->validatePage());
    }

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

QTEST_MAIN(TestPageAdvancedFilter)
#include "tst_page_advanced_filter.moc"
