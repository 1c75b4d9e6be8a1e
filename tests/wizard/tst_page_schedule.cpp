#include "platform/plan/backup_file.h"
#include "platform/plan/restore_file.h"
#include "support/modal_answerer.h"
#include "support/test_environment.h"
#include "wizard/frequency_daily.h"
#include "wizard/frequency_monthly.h"
#include "wizard/frequency_weekly.h"
#include "wizard/page_name.h"
#include "wizard/page_schedule.h"
#include "wizard/page_source.h"
#include "wizard/page_summary.h"
#include "wizard/plan_wizard_base.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QFile>
#include <QHeaderView>
#include <QLineEdit>
#include <QLocale>
#include <QStandardItemModel>
#include <QTextEdit>
#include <QTreeView>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using namespace TWB::Info::Plan;
using TWB::Test::ModalAnswerer;
using TWB::Test::TestEnvironment;

namespace {

/// A page that contributes a row of its own to the summary.
class RowPage : public PlanWizardBase::PageBase
{
public:
    RowPage(const QString& text, int next)
        : PageBase(text)
        , m_text(text)
        , m_next(next)
    { }
    QString summary() override { return QStringLiteral("<tr><td>%1</td><td></td></tr>").arg(m_text); }
    bool initPlan(TWB::Info::Plan::Base*) override { return true; }
    bool fromPlan(TWB::Info::Plan::Base*) override { return true; }
    int nextId() const override { return m_next; }

private:
    QString m_text;
    int m_next;
};

/// The tree page as a deriving wizard makes it.
class SourcePage : public PlanWizardBase::PageSource
{
public:
    SourcePage()
        : PageSource(QStringLiteral("Source"))
    { }
    QString summary() override { return QString(); }
    bool initPlan(TWB::Info::Plan::Base*) override { return true; }
    bool fromPlan(TWB::Info::Plan::Base*) override { return true; }
};

/// Name (1) -> 2 -> summary (6), with a page 3 that is never visited.
class SmallWizard : public PlanWizardBase
{
public:
    explicit SmallWizard(int planType)
        : PlanWizardBase(planType)
        , name(new PageName)
        , second(new RowPage(QStringLiteral("Second page"), 6))
        , unvisited(new RowPage(QStringLiteral("Never shown"), 6))
        , summary(new PageSummary)
    {
        setPage(1, name);
        setPage(2, second);
        setPage(3, unvisited);
        setPage(6, summary);
        setStartId(1);
        resizeWizardPages();
    }
    PageName* name;
    RowPage* second;
    RowPage* unvisited;
    PageSummary* summary;
};

/// A page that holds a second set of frequency widgets for the forced full schedule, as the full
/// schedule page of the backup wizard does.
class FullSchedulePage : public PlanWizardBase::PageBase
{
public:
    FullSchedulePage()
        : PageBase(QStringLiteral("Full"))
        , daily(new FrequencyDaily(FrequencyBase::Full, this, this))
        , weekly(new FrequencyWeekly(FrequencyBase::Full, this, this))
        , monthly(new FrequencyMonthly(FrequencyBase::Full, this, this))
    { }
    QString summary() override { return QString(); }
    bool initPlan(Base*) override { return true; }
    bool fromPlan(Base*) override { return true; }

    FrequencyDaily* daily;
    FrequencyWeekly* weekly;
    FrequencyMonthly* monthly;
};

/// A page that only holds fields of other wizards' pages.
class HolderPage : public PlanWizardBase::PageBase
{
public:
    HolderPage()
        : PageBase(QStringLiteral("Holder"))
    { }
    QString summary() override { return QString(); }
    bool initPlan(Base*) override { return true; }
    bool fromPlan(Base*) override { return true; }
};

/// The schedule page in a wizard of its own, with pages at the ids the page may lead to.
class ScheduleWizard : public PlanWizardBase
{
public:
    explicit ScheduleWizard(int planType)
        : PlanWizardBase(planType)
        , schedule(new PageSchedule)
        , full(new FullSchedulePage)
    {
        setPage(2, schedule);
        setPage(3, full);
        setStartId(2);
        // The backup wizard's own field that sends file plans to the block-level page.
        auto* holder = new HolderPage;
        blockLevel = new QCheckBox(holder);
        holder->registerField(QStringLiteral("Field_UseFileDiffirentialBackup"), blockLevel);
        setPage(9, holder);
        setProperty("Property_BackupPlanType", quint8(0));
        resizeWizardPages();
    }
    PageSchedule* schedule;
    FullSchedulePage* full;
    QCheckBox* blockLevel;
};

QString longDay(int day)
{
    return QLocale::system().dayName(day, QLocale::LongFormat);
}

QString shortTime(const QTime& time)
{
    return QLocale::system().toString(time, QLocale::ShortFormat);
}

QDateTime today(const QTime& time)
{
    return QDateTime(QDate::currentDate(), time);
}

} // namespace

/// The schedule page, and the plan wizard base it lives in: the window, the name page and the summary.
class TestPageSchedule : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;

private Q_SLOTS:
    void initTestCase() { m_env = std::make_unique<TestEnvironment>(); }

    void cleanup()
    {
        QFile::remove(m_env->configFile());
        QFile::remove(m_env->rebrandingFile());
    }

    void scheduleSurvivesFromPlanAndInitPlan_data()
    {
        QTest::addColumn<int>("frequency");
        QTest::addColumn<bool>("every");
        QTest::newRow("daily at a time") << int(Schedule::Daily) << false;
        QTest::newRow("daily every n minutes") << int(Schedule::Daily) << true;
        QTest::newRow("weekly") << int(Schedule::Weekly) << false;
        QTest::newRow("monthly by week number") << int(Schedule::MonthlyByWeekNumber) << true;
        QTest::newRow("monthly by day of month") << int(Schedule::MonthlyByDayOfMonth) << false;
    }

    void scheduleSurvivesFromPlanAndInitPlan()
    {
        QFETCH(int, frequency);
        QFETCH(bool, every);
        BackupFile stored;
        Schedule& s = stored.schedule();
        s.setEnable(true);
        s.setType(Schedule::Recurring);
        s.setFrequencyType(Schedule::FrequencyType(frequency));
        s.setDailyRecurrence(every);
        s.setOccursAt(QTime(21, 45));
        s.setOccursEvery(90, QTime(8, 0), QTime(18, 30));
        QBitArray days(7);
        days.setBit(0); // Monday
        days.setBit(6); // Sunday
        s.setWeeklyFrequency(days);
        s.setMonthlyFrequency(Schedule::Penultimate, 5);
        s.setDayOfMonthFrequency(31);
        s.setMonthRepeat(3, QDate::currentDate().addDays(10));
        s.setStopAfter(2 * 3600 + 5 * 60);
        stored.setRunMissedPlan(true);

        ScheduleWizard wizard(1);
        QVERIFY(wizard.schedule->fromPlan(&stored));
        // Frequency type 3 shows as the one "Monthly" item.
        QCOMPARE(wizard.field(QStringLiteral("Field_ScheduleFrequencyType")).toInt(),
            frequency == Schedule::MonthlyByDayOfMonth ? 2 : frequency);
        BackupFile written;
        QVERIFY(wizard.schedule->initPlan(&written));
        const Schedule& w = written.schedule();
        QVERIFY(w.isEnable());
        QCOMPARE(w.type(), Schedule::Recurring);
        QCOMPARE(int(w.frequencyType()), frequency);
        QCOMPARE(w.dailyRecurrence(), every);
        if (every) {
            QCOMPARE(w.occursEvery().period, 90);
            QCOMPARE(w.occursEvery().start, QTime(8, 0));
            QCOMPARE(w.occursEvery().end, QTime(18, 30));
        } else {
            QCOMPARE(w.occursAt(), QTime(21, 45));
        }
        if (frequency == Schedule::Weekly)
            QCOMPARE(w.weeklyFrequency(), days);
        if (frequency == Schedule::MonthlyByWeekNumber) {
            QCOMPARE(w.monthlyFrequency().week, Schedule::Penultimate);
            QCOMPARE(w.monthlyFrequency().day, 5);
        }
        if (frequency == Schedule::MonthlyByDayOfMonth)
            QCOMPARE(w.dayOfMonthFrequency(), 31);
        if (frequency >= Schedule::MonthlyByWeekNumber) {
            QCOMPARE(w.monthRepeat().months, 3);
            QCOMPARE(w.monthRepeat().from, QDate::currentDate().addDays(10));
        }
        QCOMPARE(w.stopAfter(), 7500ull);
        QVERIFY(written.runMuissedPlan());
    }

    void weekdayBitsGoMondayFirst()
    {
        ScheduleWizard wizard(1);
        wizard.setField(QStringLiteral("Field_ScheduleDisabled"), true);
        wizard.setField(QStringLiteral("Field_ScheduleUseRecurring"), true);
        wizard.setField(QStringLiteral("Field_ScheduleFrequencyType"), 1);
        wizard.setField(QStringLiteral("Field_WeeklyDay_2"), true); // Tuesday
        wizard.setField(QStringLiteral("Field_WeeklyDay_6"), true); // Saturday
        wizard.setField(QStringLiteral("Weekly_Field_UsedOccursAt"), true);
        wizard.setField(QStringLiteral("Weekly_Field_UsedOccursAtValue"), today(QTime(6, 15)));
        BackupFile plan;
        QVERIFY(wizard.schedule->initPlan(&plan));
        QCOMPARE(plan.schedule().frequencyType(), Schedule::Weekly);
        QBitArray expected(7);
        expected.setBit(1);
        expected.setBit(5);
        QCOMPARE(plan.schedule().weeklyFrequency(), expected);
        // The weekly widget's own daily part wrote the time, not the daily widget's.
        QCOMPARE(plan.schedule().occursAt(), QTime(6, 15));
    }

    void fullScheduleWidgetsWriteTheForcedFullSchedule()
    {
        ScheduleWizard wizard(1);
        wizard.setField(QStringLiteral("Full_Field_MonthlyOccurrenceType"), 0);
        wizard.setField(QStringLiteral("Full_Field_MonthlyDay"), 14);
        wizard.setField(QStringLiteral("Full_Monthly_Field_UsedOccursEvery"), true);
        wizard.setField(QStringLiteral("Full_Monthly_Field_UsedOccursEveryValue"), 30);
        BackupFile plan;
        QVERIFY(wizard.full->monthly->initPlan(&plan));
        QCOMPARE(plan.forceFullSchedule().frequencyType(), Schedule::MonthlyByDayOfMonth);
        QCOMPARE(plan.forceFullSchedule().dayOfMonthFrequency(), 15);
        QCOMPARE(plan.forceFullSchedule().occursEvery().period, 30);
        QCOMPARE(plan.schedule(), BackupFile().schedule());
        // A restore plan has no forced full schedule: the full widgets work on its schedule.
        RestoreFile restore;
        QVERIFY(wizard.full->monthly->initPlan(&restore));
        QCOMPARE(restore.schedule().dayOfMonthFrequency(), 15);
    }

    void specificDateLosesItsSeconds()
    {
        ScheduleWizard wizard(1);
        wizard.setField(QStringLiteral("Field_ScheduleDisabled"), true);
        wizard.setField(QStringLiteral("Field_ScheduleUseSpecificDate"), true);
        const QDateTime when(QDate(2031, 4, 5), QTime(10, 20, 33, 250));
        wizard.setField(QStringLiteral("Field_ScheduleSpecificDateValue"), when);
        BackupFile plan;
        plan.schedule().setFrequencyType(Schedule::Weekly);
        QVERIFY(wizard.schedule->initPlan(&plan));
        QCOMPARE(plan.schedule().type(), Schedule::SpecificDate);
        QCOMPARE(plan.schedule().specificDate(), QDateTime(QDate(2031, 4, 5), QTime(10, 20)));
        // Only the chosen part writes: the frequency stays as it was.
        QCOMPARE(plan.schedule().frequencyType(), Schedule::Weekly);
    }

    void disabledScheduleKeepsItsValuesButWritesTheStopTime()
    {
        ScheduleWizard wizard(1);
        wizard.setField(QStringLiteral("Field_StopAutoEnable"), true);
        wizard.setField(QStringLiteral("Field_StopAutoHoursValue"), 1);
        BackupFile plan;
        plan.schedule().setEnable(true);
        plan.schedule().setFrequencyType(Schedule::MonthlyByWeekNumber);
        QVERIFY(wizard.schedule->initPlan(&plan));
        QVERIFY(!plan.schedule().isEnable());
        QCOMPARE(plan.schedule().stopAfter(), 3600ull);
        QCOMPARE(plan.schedule().frequencyType(), Schedule::MonthlyByWeekNumber);
        const QString summary = wizard.schedule->summary();
        QCOMPARE(summary,
            QStringLiteral("<tr><td>Schedule:</td><td></td></tr><tr><td></td><td>Not scheduled</td></tr>"
                           "<tr><td></td><td>Stop plan if it runs for: 1 hour(s) 0 minutes(s)</td></tr>"));
    }

    void enabledWithNeitherChoiceLeavesTypeAndFrequency()
    {
        ScheduleWizard wizard(1);
        wizard.setField(QStringLiteral("Field_ScheduleDisabled"), true);
        BackupFile plan;
        plan.schedule().setType(Schedule::SpecificDate);
        plan.schedule().setFrequencyType(Schedule::Weekly);
        QVERIFY(wizard.schedule->isComplete());
        QVERIFY(wizard.schedule->initPlan(&plan));
        QCOMPARE(plan.schedule().type(), Schedule::SpecificDate);
        QCOMPARE(plan.schedule().frequencyType(), Schedule::Weekly);
        QVERIFY(!wizard.schedule->initPlan(nullptr));
        QVERIFY(!wizard.schedule->fromPlan(nullptr));
    }

    void completeness()
    {
        ScheduleWizard wizard(1);
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        QAbstractButton* next = wizard.button(QWizard::NextButton);
        QVERIFY(next->isEnabled());
        wizard.setField(QStringLiteral("Field_ScheduleDisabled"), true);
        wizard.setField(QStringLiteral("Field_ScheduleUseRecurring"), true);
        wizard.setField(QStringLiteral("Field_ScheduleFrequencyType"), 1);
        // Weekly with no day chosen.
        QTRY_VERIFY(!next->isEnabled());
        auto days = wizard.schedule->frequency(1)->findChildren<QCheckBox*>();
        QCOMPARE(days.size(), 7);
        QTest::mouseClick(days.at(3), Qt::LeftButton, {}, QPoint(8, days.at(3)->height() / 2));
        QTRY_VERIFY(next->isEnabled());
        QTest::mouseClick(days.at(3), Qt::LeftButton, {}, QPoint(8, days.at(3)->height() / 2));
        QTRY_VERIFY(!next->isEnabled());
        // Daily does not care about weekdays.
        wizard.setField(QStringLiteral("Field_ScheduleFrequencyType"), 0);
        QTRY_VERIFY(next->isEnabled());
        // A stop time of nothing is incomplete, with the schedule off too.
        wizard.setField(QStringLiteral("Field_ScheduleDisabled"), false);
        wizard.setField(QStringLiteral("Field_StopAutoEnable"), true);
        QTRY_VERIFY(!next->isEnabled());
        wizard.setField(QStringLiteral("Field_StopAutoMinutesValue"), 5);
        QTRY_VERIFY(next->isEnabled());
    }

    void onlyAPastDateIsQuestioned_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<int>("seconds");
        QTest::addColumn<bool>("leaves");
        QTest::newRow("past, yes, continue") << int(QMessageBox::Yes) << -60 << true;
        QTest::newRow("past, no, stay") << int(QMessageBox::No) << -60 << false;
        QTest::newRow("future, nothing asked") << int(QMessageBox::No) << 86400 << true;
    }

    void onlyAPastDateIsQuestioned()
    {
        QFETCH(int, answer);
        QFETCH(int, seconds);
        QFETCH(bool, leaves);
        ScheduleWizard wizard(1);
        wizard.setWindowTitle(QStringLiteral("New backup plan"));
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        wizard.setField(QStringLiteral("Field_ScheduleDisabled"), true);
        wizard.setField(QStringLiteral("Field_ScheduleUseSpecificDate"), true);
        wizard.setField(
            QStringLiteral("Field_ScheduleSpecificDateValue"), QDateTime::currentDateTime().addSecs(seconds));
        ModalAnswerer answerer {QMessageBox::StandardButton(answer)};
        // The question is modal: had one been asked, it was answered before validatePage() returned.
        QCOMPARE(wizard.schedule->validatePage(), leaves);
        QCOMPARE(answerer.answered(), seconds < 0);
        if (seconds > 0)
            return;
        QCOMPARE(answerer.text(), QStringLiteral("The scheduled date is in the past. Do you want to continue?"));
        QCOMPARE(answerer.title(), QStringLiteral("New backup plan"));
        QCOMPARE(answerer.icon(), QMessageBox::Information);
        QVERIFY(answerer.flags().testFlag(Qt::Sheet));
    }

    void summariesWordForWord()
    {
        ScheduleWizard wizard(1);
        wizard.setField(QStringLiteral("Field_ScheduleDisabled"), true);
        wizard.setField(QStringLiteral("Field_RunMissedPlan"), true);
        wizard.setField(QStringLiteral("Field_ScheduleUseRecurring"), true);

        wizard.setField(QStringLiteral("Field_ScheduleFrequencyType"), 0);
        wizard.setField(QStringLiteral("Field_UsedOccursAt"), true);
        wizard.setField(QStringLiteral("Field_UsedOccursAtValue"), today(QTime(22, 30)));
        QCOMPARE(wizard.schedule->summary(),
            QStringLiteral("<tr><td>Schedule:</td><td></td></tr><tr><td></td><td>Run missed plan</td></tr>"
                           "<tr><td></td><td>Occurs every day at %1</td></tr>")
                .arg(shortTime(QTime(22, 30))));

        wizard.setField(QStringLiteral("Field_ScheduleFrequencyType"), 1);
        wizard.setField(QStringLiteral("Field_WeeklyDay_1"), true);
        wizard.setField(QStringLiteral("Field_WeeklyDay_5"), true);
        wizard.setField(QStringLiteral("Weekly_Field_UsedOccursEvery"), true);
        wizard.setField(QStringLiteral("Weekly_Field_UsedOccursEveryValue"), 15);
        wizard.setField(QStringLiteral("Weekly_Field_UsedOccursEveryForm"), today(QTime(9, 0)));
        wizard.setField(QStringLiteral("Weekly_Field_UsedOccursEveryTo"), today(QTime(17, 0)));
        QCOMPARE(wizard.schedule->frequency(1)->summary(),
            QStringLiteral(
                "<tr><td></td><td>Occurs every week on:</td></tr><tr><td></td><td>%1</td></tr>"
                "<tr><td></td><td>%2</td></tr><tr><td></td><td>every 15 minute(s) between %3 and %4</td></tr>")
                .arg(longDay(1), longDay(5), shortTime(QTime(9, 0)), shortTime(QTime(17, 0))));

        wizard.setField(QStringLiteral("Field_ScheduleFrequencyType"), 2);
        wizard.setField(QStringLiteral("Field_MonthlyOccurrenceType"), 5);
        wizard.setField(QStringLiteral("Field_MonthlyDay"), 6);
        wizard.setField(QStringLiteral("Field_MonthlyRepeatEvery"), 2);
        const QDate from = QDate::currentDate().addDays(3);
        wizard.setField(QStringLiteral("Field_MonthlyFrom"), from);
        wizard.setField(QStringLiteral("Monthly_Field_UsedOccursAt"), true);
        wizard.setField(QStringLiteral("Monthly_Field_UsedOccursAtValue"), today(QTime(1, 5)));
        QCOMPARE(wizard.schedule->frequency(2)->summary(),
            QStringLiteral("<tr><td></td><td>Occurs every month on penultimate %1</td></tr>"
                           "<tr><td></td><td>Repeat every 2 month. Start from: %2</td></tr>"
                           "<tr><td></td><td>at %3</td></tr>")
                .arg(longDay(7), QLocale::system().toString(from, QLocale::LongFormat), shortTime(QTime(1, 5))));
        wizard.setField(QStringLiteral("Field_MonthlyOccurrenceType"), 0);
        wizard.setField(QStringLiteral("Field_MonthlyDay"), 30);
        QVERIFY(wizard.schedule->frequency(2)->summary().startsWith(
            QStringLiteral("<tr><td></td><td>Occurs every month on 31 day</td></tr>")));

        wizard.setField(QStringLiteral("Field_ScheduleUseSpecificDate"), true);
        const QDateTime when(QDate(2030, 2, 3), QTime(4, 5));
        wizard.setField(QStringLiteral("Field_ScheduleSpecificDateValue"), when);
        QCOMPARE(wizard.schedule->summary(),
            QStringLiteral("<tr><td>Schedule:</td><td></td></tr><tr><td></td><td>Run missed plan</td></tr>"
                           "<tr><td></td><td>Occurs on %1</td></tr>")
                .arg(QLocale::system().toString(when, QLocale::LongFormat)));
    }

    void nextPageFollowsKindFieldsAndLicence_data()
    {
        QTest::addColumn<int>("planType");
        QTest::addColumn<int>("backupKind");
        QTest::addColumn<bool>("blockLevel");
        QTest::addColumn<QByteArray>("config");
        QTest::addColumn<QByteArray>("rebranding");
        QTest::addColumn<int>("next");
        QTest::newRow("restore plan") << 2 << 0 << false << QByteArray() << QByteArray() << 5;
        QTest::newRow("restore plan, free licence")
            << 2 << 0 << false << QByteArray("license=free\n") << QByteArray() << 6;
        QTest::newRow("file backup, block level") << 1 << 0 << true << QByteArray() << QByteArray() << 104;
        QTest::newRow("file backup, actions allowed") << 1 << 0 << false << QByteArray() << QByteArray() << 107;
        QTest::newRow("file backup, actions not in the product")
            << 1 << 0 << false << QByteArray() << QByteArray("AllowPrePostActions=false\n") << 5;
        QTest::newRow("full file backup") << 1 << 2 << true << QByteArray() << QByteArray() << 5;
    }

    void nextPageFollowsKindFieldsAndLicence()
    {
        QFETCH(int, planType);
        QFETCH(int, backupKind);
        QFETCH(bool, blockLevel);
        QFETCH(QByteArray, config);
        QFETCH(QByteArray, rebranding);
        QFETCH(int, next);
        if (!config.isEmpty())
            TestEnvironment::writeFile(m_env->configFile(), config);
        if (!rebranding.isEmpty())
            TestEnvironment::writeFile(m_env->rebrandingFile(), rebranding);
        ScheduleWizard wizard(planType);
        wizard.setProperty("Property_BackupPlanType", quint8(backupKind));
        wizard.blockLevel->setChecked(blockLevel);
        QCOMPARE(wizard.schedule->nextId(), next);
    }

    void wizardIsFittedToItsArtwork()
    {
        SmallWizard wizard(1);
        QCOMPARE(wizard.wizardStyle(), QWizard::MacStyle);
        QVERIFY(!wizard.pixmap(QWizard::BackgroundPixmap).isNull());
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        // Cancel, Back, Next, Finish from left to right.
        QVERIFY(wizard.button(QWizard::CancelButton)->x() < wizard.button(QWizard::BackButton)->x());
        QVERIFY(wizard.button(QWizard::BackButton)->x() < wizard.button(QWizard::NextButton)->x());
        wizard.resizeWizardPages();
        const auto ids = wizard.pageIds();
        for (int id : ids) {
            QVERIFY(wizard.minimumWidth() >= wizard.page(id)->sizeHint().width());
            QVERIFY(wizard.minimumHeight() >= wizard.page(id)->sizeHint().height());
        }
    }

    void secondExecIsRefused()
    {
        SmallWizard first(1);
        SmallWizard second(2);
        int inner = -1;
        QTimer::singleShot(100, &first, [&] {
            inner = second.exec();
            first.reject();
        });
        QCOMPARE(first.exec(), int(QDialog::Rejected));
        QCOMPARE(inner, 0);
        // Once the first is closed, a wizard may run again.
        QTimer::singleShot(50, &second, [&] { second.reject(); });
        QCOMPARE(second.exec(), int(QDialog::Rejected));
    }

    void nameMustHoldMoreThanBlanksAndIsKeptAsTyped()
    {
        SmallWizard wizard(1);
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        QAbstractButton* next = wizard.button(QWizard::NextButton);
        auto* edit = wizard.name->findChild<QLineEdit*>();
        QVERIFY(!next->isEnabled());
        QTest::keyClicks(edit, QStringLiteral("   "));
        QVERIFY(!next->isEnabled());
        QVERIFY(!wizard.name->validatePage());
        QTest::keyClicks(edit, QStringLiteral("Photos  "));
        QVERIFY(next->isEnabled());
        TWB::Info::Plan::BackupFile plan;
        QVERIFY(wizard.name->initPlan(&plan));
        QCOMPARE(plan.name(), QStringLiteral("   Photos  "));
        QCOMPARE(wizard.name->summary(), QStringLiteral("<tr><td>Plan name:</td><td>   Photos  </td></tr>"));

        TWB::Info::Plan::BackupFile stored;
        stored.setName(QStringLiteral("Stored name"));
        QVERIFY(wizard.name->fromPlan(&stored));
        QCOMPARE(edit->text(), QStringLiteral("Stored name"));
        QVERIFY(!wizard.name->initPlan(nullptr));
    }

    void summaryShowsVisitedPagesInOrder()
    {
        SmallWizard wizard(2);
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        QTest::keyClicks(wizard.name->findChild<QLineEdit*>(), QStringLiteral("Restore & <mail>"));
        wizard.next();
        wizard.next();
        QCOMPARE(wizard.currentId(), 6);
        const QString text = wizard.summary->findChild<QTextEdit*>()->toPlainText();
        QVERIFY(text.contains(QStringLiteral("Restore & <mail>")));
        QVERIFY(text.indexOf(QStringLiteral("Plan name:")) < text.indexOf(QStringLiteral("Second page")));
        QVERIFY(!text.contains(QStringLiteral("Never shown")));
        auto* runNow = wizard.summary->findChild<QCheckBox*>();
        QVERIFY(!runNow->isChecked() && runNow->isVisible());
        QVERIFY(wizard.grab().save(TestEnvironment::outputDir() + QStringLiteral("/page_summary.png")));
        Q_EMIT wizard.summary->setVisibleRunNow(false);
        QVERIFY(!runNow->isVisible());
        QVERIFY(wizard.summary->isFinalPage());
        // The base summary never finishes a wizard by itself.
        QVERIFY(!wizard.summary->validatePage());
    }

    void sourcePageShowsOneColumnAndRetestsOnChecks()
    {
        SourcePage page;
        QStandardItemModel model(2, 3);
        page.setModel(&model, 1);
        auto* tree = page.findChild<QTreeView*>();
        QVERIFY(tree->isHeaderHidden());
        QVERIFY(tree->isColumnHidden(0));
        QVERIFY(!tree->isColumnHidden(1));
        QVERIFY(tree->isColumnHidden(2));
        QVERIFY(!tree->header()->stretchLastSection());
        QSignalSpy complete(&page, &QWizardPage::completeChanged);
        model.setData(model.index(0, 0), Qt::Checked, Qt::CheckStateRole);
        QCOMPARE(complete.count(), 1);
    }

    void trimmeredPathShowsDrivesAndSharesAsUsersKnowThem_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("shown");
        QTest::newRow("share") << "/TWB_SHARES/nas/photos"
                               << "nas/photos";
        QTest::newRow("volume") << "/TWB_VOLUMES/sdb1/data"
                                << "sdb1/data";
        QTest::newRow("neither") << "/home/alice"
                                 << "/home/alice";
        QTest::newRow("prefix not at the start") << "/x/TWB_SHARES/y"
                                                 << "/x/TWB_SHARES/y";
    }

    void trimmeredPathShowsDrivesAndSharesAsUsersKnowThem()
    {
        QFETCH(QString, path);
        QFETCH(QString, shown);
        SourcePage page;
        QCOMPARE(page.trimmeredPath(path), shown);
    }
};

QTEST_MAIN(TestPageSchedule)
#include "tst_page_schedule.moc"
