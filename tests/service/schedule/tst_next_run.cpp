#include "service/schedule/next_run.h"
#include "service/schedule/schedule_description.h"
#include "service/schedule/schedule_timing.h"

#include "platform/crypt/local_password.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/schedule.h"
#include "service/engine/engine.h"
#include "service/schedule/scheduler.h"
#include "service/store/database.h"
#include "service/store/history_store.h"
#include "service/store/plan_store.h"
#include "service/store/transaction.h"

#include <QTemporaryDir>
#include <QtTest>

#include <ctime>
#include <functional>
#include <memory>
#include <vector>

using TWB::Info::Plan::Schedule;
using TWB::Service::NextRun;

namespace {

// Times of day are Berlin's, so that daylight saving time shows.
QDateTime berlin(int y, int m, int d, int h, int min)
{
    return QDateTime(QDate(y, m, d), QTime(h, min), Qt::LocalTime);
}

// Schedules are built in place: the class copies only from modifiable objects.
using Setup = std::function<void(Schedule&)>;

Setup daily(const QTime& at)
{
    return [at](Schedule& s) {
        s.setEnable(true);
        s.setType(Schedule::Recurring);
        s.setFrequencyType(Schedule::Daily);
        s.setOccursAt(at);
    };
}

Setup then(const Setup& first, const Setup& second)
{
    return [first, second](Schedule& s) {
        first(s);
        second(s);
    };
}

Setup weekdays(std::initializer_list<int> bits)
{
    QBitArray days(7, false);
    for (int bit : bits)
        days.setBit(bit);
    return [days](Schedule& s) {
        s.setFrequencyType(Schedule::Weekly);
        s.setWeeklyFrequency(days);
    };
}

Setup monthly(Schedule::WeekNumber week, int day)
{
    return [week, day](Schedule& s) {
        s.setFrequencyType(Schedule::MonthlyByWeekNumber);
        s.setMonthlyFrequency(week, day);
    };
}

Setup every(int minutes, const QTime& from, const QTime& to)
{
    return [minutes, from, to](Schedule& s) {
        s.setEnable(true);
        s.setType(Schedule::Recurring);
        s.setFrequencyType(Schedule::Daily);
        s.setDailyRecurrence(true);
        s.setOccursEvery(minutes, from, to);
    };
}

QDateTime utc(int y, int m, int d, int h, int min)
{
    return QDateTime(QDate(y, m, d), QTime(h, min), Qt::UTC);
}

Setup dayOfMonth(int day)
{
    return [day](Schedule& s) {
        s.setFrequencyType(Schedule::MonthlyByDayOfMonth);
        s.setDayOfMonthFrequency(day);
    };
}

// A real store and engine in a folder of the test's own, for a scheduler in this process.
struct LocalStore
{
    QTemporaryDir data;
    std::unique_ptr<TWB::Service::Database> database;
    std::unique_ptr<TWB::Service::Engine> engine;

    bool open()
    {
        if (!data.isValid())
            return false;
        qputenv("TWB_DATA_DIR", QFile::encodeName(data.path()));
        if (!SHARED::cryptNS::ensure_local_key())
            return false;
        database = std::make_unique<TWB::Service::Database>(data.path() + QStringLiteral("/service.db"));
        database->open();
        engine = std::make_unique<TWB::Service::Engine>(*database, data.path());
        return true;
    }
};

} // namespace

class TestNextRun : public QObject
{
    Q_OBJECT

private:
    std::vector<Setup> m_setups;

    int add(const Setup& setup)
    {
        m_setups.push_back(setup);
        return int(m_setups.size()) - 1;
    }

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("TZ", "Europe/Berlin");
        ::tzset();
        QCOMPARE(berlin(2026, 7, 1, 12, 0).toUTC().time(), QTime(10, 0));
    }

    void disabledOrPassedScheduleNeverFires()
    {
        Schedule off;
        daily(QTime(10, 0))(off);
        off.setEnable(false);
        QVERIFY(!NextRun::after(off, berlin(2026, 3, 10, 9, 0)).isValid());

        Schedule once;
        once.setEnable(true);
        once.setType(Schedule::SpecificDate);
        once.setSpecificDate(berlin(2026, 4, 1, 18, 30));
        QCOMPARE(NextRun::after(once, berlin(2026, 3, 10, 9, 0)), berlin(2026, 4, 1, 18, 30).toUTC());
        QVERIFY(!NextRun::after(once, berlin(2026, 4, 1, 18, 30)).isValid());
        // Its short form keeps the date local, so that it moves with the time zone as the plan's does.
        Schedule keptOnce;
        QVERIFY(
            TWB::Service::ScheduleTiming::readSchedule(TWB::Service::ScheduleTiming::scheduleText(once), &keptOnce));
        QCOMPARE(keptOnce.specificDate(), once.specificDate());
        QCOMPARE(keptOnce.specificDate().timeSpec(), Qt::LocalTime);

        Schedule noDay;
        then(daily(QTime(10, 0)), weekdays({}))(noDay);
        QVERIFY(!NextRun::after(noDay, berlin(2026, 3, 10, 9, 0)).isValid());
    }

    void nextRun_data()
    {
        QTest::addColumn<int>("setup");
        QTest::addColumn<QDateTime>("after");
        QTest::addColumn<QDateTime>("expected");

        const int at2230 = add(daily(QTime(22, 30)));
        QTest::newRow("daily, later today") << at2230 << berlin(2026, 3, 10, 11, 0) << berlin(2026, 3, 10, 22, 30);
        QTest::newRow("daily, at that very time")
            << at2230 << berlin(2026, 3, 10, 22, 30) << berlin(2026, 3, 11, 22, 30);
        QTest::newRow("daily, across the spring change")
            << add(daily(QTime(12, 0))) << berlin(2026, 3, 28, 13, 0) << berlin(2026, 3, 29, 12, 0);

        const int every = add(then(daily(QTime()), [](Schedule& s) {
            s.setDailyRecurrence(true);
            s.setOccursEvery(90, QTime(8, 0), QTime(12, 0));
        }));
        QTest::newRow("every 90 minutes, before the first")
            << every << berlin(2026, 5, 4, 6, 0) << berlin(2026, 5, 4, 8, 0);
        QTest::newRow("every 90 minutes, between two")
            << every << berlin(2026, 5, 4, 9, 40) << berlin(2026, 5, 4, 11, 0);
        QTest::newRow("every 90 minutes, after the last")
            << every << berlin(2026, 5, 4, 11, 0) << berlin(2026, 5, 5, 8, 0);

        // A window from 22:00 to 02:00 runs over midnight; on week days it belongs to the day it began.
        const int overnight = add(::every(60, QTime(22, 0), QTime(2, 0)));
        QTest::newRow("overnight, before midnight")
            << overnight << berlin(2026, 5, 4, 23, 10) << berlin(2026, 5, 5, 0, 0);
        QTest::newRow("overnight, after midnight") << overnight << berlin(2026, 5, 5, 1, 0) << berlin(2026, 5, 5, 2, 0);
        QTest::newRow("overnight, after its end") << overnight << berlin(2026, 5, 5, 2, 0) << berlin(2026, 5, 5, 22, 0);
        // Friday's window reaches into Saturday, which has none of its own.
        const int fridayNights = add(then(::every(90, QTime(22, 0), QTime(2, 0)), weekdays({4})));
        QTest::newRow("overnight on Fridays, into Saturday")
            << fridayNights << berlin(2026, 3, 13, 23, 40) << berlin(2026, 3, 14, 1, 0);
        QTest::newRow("overnight on Fridays, not on Saturday night")
            << fridayNights << berlin(2026, 3, 14, 1, 0) << berlin(2026, 3, 20, 22, 0);

        // Monday, Wednesday, Friday; 2026-03-13 is a Friday.
        const int weekly = add(then(daily(QTime(22, 30)), weekdays({0, 2, 4})));
        QTest::newRow("weekly, Friday night to Monday")
            << weekly << berlin(2026, 3, 13, 23, 0) << berlin(2026, 3, 16, 22, 30);

        // March 2026 begins on a Sunday; its Sundays are the 1st, 8th, 15th, 22nd and 29th.
        const Setup nine = daily(QTime(9, 0));
        QTest::newRow("first Monday") << add(then(nine, monthly(Schedule::First, 1))) << berlin(2026, 3, 1, 0, 0)
                                      << berlin(2026, 3, 2, 9, 0);
        QTest::newRow("penultimate Sunday") << add(then(nine, monthly(Schedule::Penultimate, 7)))
                                            << berlin(2026, 3, 1, 0, 0) << berlin(2026, 3, 22, 9, 0);
        QTest::newRow("last Sunday") << add(then(nine, monthly(Schedule::Last, 7))) << berlin(2026, 3, 1, 0, 0)
                                     << berlin(2026, 3, 29, 9, 0);
        QTest::newRow("last Friday, next month")
            << add(then(nine, monthly(Schedule::Last, 5))) << berlin(2026, 3, 27, 10, 0) << berlin(2026, 4, 24, 9, 0);

        QTest::newRow("the 31st in April is the 30th")
            << add(then(nine, dayOfMonth(31))) << berlin(2026, 4, 2, 0, 0) << berlin(2026, 4, 30, 9, 0);

        const int quarterly
            = add(then(then(nine, dayOfMonth(15)), [](Schedule& s) { s.setMonthRepeat(3, QDate(2026, 1, 1)); }));
        QTest::newRow("every third month from January")
            << quarterly << berlin(2026, 2, 1, 0, 0) << berlin(2026, 4, 15, 9, 0);
        QTest::newRow("not before its start") << quarterly << berlin(2025, 11, 20, 0, 0) << berlin(2026, 1, 15, 9, 0);

        // Month ends and leap days.
        const int lastDay = add(then(nine, dayOfMonth(31)));
        QTest::newRow("the 31st after January is February's last")
            << lastDay << berlin(2026, 1, 31, 10, 0) << berlin(2026, 2, 28, 9, 0);
        QTest::newRow("the 31st in a leap February is the 29th")
            << lastDay << berlin(2028, 2, 1, 0, 0) << berlin(2028, 2, 29, 9, 0);
        const int leapDay = add(then(nine, dayOfMonth(29)));
        QTest::newRow("the 29th in a common February is the 28th")
            << leapDay << berlin(2027, 2, 1, 0, 0) << berlin(2027, 2, 28, 9, 0);
        QTest::newRow("the 29th after a leap day is March's")
            << leapDay << berlin(2028, 2, 29, 9, 0) << berlin(2028, 3, 29, 9, 0);
        const int yearlyFromLeapDay
            = add(then(then(nine, dayOfMonth(29)), [](Schedule& s) { s.setMonthRepeat(12, QDate(2028, 2, 29)); }));
        QTest::newRow("yearly from a leap day, next year on the 28th")
            << yearlyFromLeapDay << berlin(2028, 3, 1, 0, 0) << berlin(2029, 2, 28, 9, 0);
        const int everyOther
            = add(then(then(nine, dayOfMonth(30)), [](Schedule& s) { s.setMonthRepeat(2, QDate(2026, 11, 1)); }));
        QTest::newRow("every second month across the year end")
            << everyOther << berlin(2026, 11, 30, 10, 0) << berlin(2027, 1, 30, 9, 0);
        QTest::newRow("weekly across the year end")
            << add(then(nine, weekdays({4}))) << berlin(2026, 12, 31, 10, 0) << berlin(2027, 1, 1, 9, 0);

        // In Berlin the clock jumps from 02:00 to 03:00 on 2026-03-29 and from 03:00 back to 02:00 on
        // 2026-10-25.
        const int at0230 = add(daily(QTime(2, 30)));
        QTest::newRow("a time the spring change skips fires when the clock jumps")
            << at0230 << utc(2026, 3, 28, 12, 0) << utc(2026, 3, 29, 1, 0);
        QTest::newRow("the day after the spring change, at the time again")
            << at0230 << utc(2026, 3, 29, 1, 0) << utc(2026, 3, 30, 0, 30);
        QTest::newRow("a time the autumn change repeats fires at its first")
            << at0230 << utc(2026, 10, 24, 12, 0) << utc(2026, 10, 25, 0, 30);
        QTest::newRow("and not again an hour later") << at0230 << utc(2026, 10, 25, 0, 30) << utc(2026, 10, 26, 1, 30);

        const int ninetyMinutes = add(::every(90, QTime(0, 0), QTime(23, 59)));
        QTest::newRow("every 90 minutes keeps to the wall clock in spring")
            << ninetyMinutes << utc(2026, 3, 29, 0, 40) << utc(2026, 3, 29, 1, 0);
        QTest::newRow("every 90 minutes after the spring change")
            << ninetyMinutes << utc(2026, 3, 29, 1, 0) << utc(2026, 3, 29, 2, 30);
        QTest::newRow("every 90 minutes keeps to the wall clock in autumn")
            << ninetyMinutes << utc(2026, 10, 25, 1, 0) << utc(2026, 10, 25, 2, 0);
        const int hourly = add(::every(60, QTime(0, 0), QTime(23, 59)));
        QTest::newRow("every hour fires at the first of the repeated hour")
            << hourly << utc(2026, 10, 24, 23, 30) << utc(2026, 10, 25, 0, 0);
        QTest::newRow("every hour skips the repeat of that hour")
            << hourly << utc(2026, 10, 25, 0, 0) << utc(2026, 10, 25, 2, 0);
        QTest::newRow("weekly on the day of the spring change")
            << add(then(daily(QTime(12, 0)), weekdays({6}))) << utc(2026, 3, 25, 12, 0) << utc(2026, 3, 29, 10, 0);
    }

    void nextRun()
    {
        QFETCH(int, setup);
        QFETCH(QDateTime, after);
        QFETCH(QDateTime, expected);
        Schedule schedule;
        m_setups.at(size_t(setup))(schedule);
        const QDateTime next = NextRun::after(schedule, after.toUTC());
        QCOMPARE(next.timeSpec(), Qt::UTC);
        QCOMPARE(next, expected.toUTC());
        // The scheduler works from the short form the store keeps: it must give the same times.
        const QString text = TWB::Service::ScheduleTiming::scheduleText(schedule);
        Schedule kept;
        QVERIFY(TWB::Service::ScheduleTiming::readSchedule(text, &kept));
        QCOMPARE(TWB::Service::ScheduleTiming::scheduleText(kept), text);
        QCOMPARE(NextRun::after(kept, after.toUTC()), next);
    }

    void descriptionsReadAsTheUserSetThem()
    {
        Schedule weekly;
        then(daily(QTime(22, 30)), weekdays({0, 6}))(weekly);
        QCOMPARE(TWB::Service::ScheduleDescription::text(weekly), QStringLiteral("Weekly on Mon, Sun at 22:30"));
        Schedule last;
        then(then(daily(QTime(9, 0)), monthly(Schedule::Last, 5)),
            [](Schedule& s) { s.setMonthRepeat(2, QDate(2026, 1, 1)); })(last);
        QCOMPARE(TWB::Service::ScheduleDescription::text(last),
            QStringLiteral("Monthly on the last Friday at 09:00, every 2 months"));
        Schedule off;
        QCOMPARE(TWB::Service::ScheduleDescription::text(off), QStringLiteral("Not scheduled"));
    }

    // A scheduler in this process, on a clock of the test's own, over a real store.
    void clockGoneBackBringsStoredRunsNearAndRefusedRunsAreRecorded()
    {
        using namespace TWB::Service;
        LocalStore place;
        QVERIFY(place.open());
        Database& database = *place.database;
        Engine& engine = *place.engine;
        Scheduler scheduler(database, engine);
        // The clock stood a month ahead when the service started.
        const QDateTime real = QDateTime::currentDateTimeUtc();
        QDateTime now = real.addDays(30);
        scheduler.setClock([&now] { return now; });

        const auto save
            = [&](const QString& name, const QStringList& items, const QDateTime& next, bool withTiming = false) {
                  TWB::Info::Plan::BackupFile plan;
                  plan.setId(QUuid::createUuid());
                  plan.setName(name);
                  plan.setItems(items);
                  daily(QTime(3, 0))(plan.schedule());
                  PlanRecord record;
                  record.id = plan.id();
                  record.name = name;
                  record.xml = plan.toXml();
                  if (withTiming)
                      record.timing = ScheduleTiming::of(plan);
                  record.nextRun = next.isValid() ? next : NextRun::after(plan.schedule(), now);
                  PlanStore store(database);
                  Transaction transaction(database);
                  store.save(record);
                  store.setNextRun(record.id, record.nextRun, QDateTime());
                  transaction.commit();
                  return record.id;
              };
        const QUuid ahead = save(QStringLiteral("Ahead"), {QStringLiteral("/tmp")}, QDateTime());
        const QDateTime stored = PlanStore(database).find(ahead)->nextRun;
        QVERIFY(stored > real.addDays(29));
        scheduler.start();
        QTRY_VERIFY(!scheduler.isStarting());
        QCOMPARE(PlanStore(database).find(ahead)->nextRun, stored);

        // The clock is set right; a plan that is due makes the scheduler look at once. It cannot
        // run, with no account: that is a failed run of its own, and its last result.
        now = real;
        const QUuid due = save(QStringLiteral("Due"), {QStringLiteral("/tmp")}, real.addSecs(-60));
        // A plan saved as PlanUpdate saves it is moved from its kept timing, to the same time.
        const QUuid timed = save(QStringLiteral("Timed"), {QStringLiteral("/tmp")}, real.addSecs(-60), true);
        scheduler.plansChanged();
        QTRY_VERIFY_WITH_TIMEOUT(PlanStore(database).find(ahead)->nextRun <= real.addDays(1), 5000);
        QVERIFY(PlanStore(database).find(ahead)->nextRun > real);
        const QList<RunRecord> refused = HistoryStore(database).runs(due, QDateTime(), 0, 10);
        QCOMPARE(refused.size(), 1);
        QCOMPARE(refused.first().result, 8);
        const QString reason
            = QStringLiteral("The scheduled run did not start: The plan \"Due\" has no storage account");
        QCOMPARE(refused.first().errorMessage, reason);
        const std::optional<PlanRecord> row = PlanStore(database).find(due);
        QVERIFY(row->lastRun.has_value());
        QCOMPARE(row->lastRun->status, 8);
        QCOMPARE(row->lastRun->message, reason);
        QVERIFY(row->nextRun > real);
        QCOMPARE(PlanStore(database).find(timed)->nextRun, row->nextRun);
        // What had no timing has one now, and it reads.
        ScheduleTiming kept;
        QVERIFY(ScheduleTiming::read(row->timing, &kept));
        QCOMPARE(row->timing, PlanStore(database).find(timed)->timing);
    }

    // After the machine was off, the first pass moves thousands of next runs: in slices, between
    // which the event loop serves commands, and without undoing what a command saved meanwhile.
    void firstPassGoesInSlicesAndKeepsWhatCommandsSave()
    {
        using namespace TWB::Service;
        LocalStore place;
        QVERIFY(place.open());
        Database& database = *place.database;
        Engine& engine = *place.engine;
        const QDateTime now = QDateTime::fromSecsSinceEpoch(QDateTime::currentSecsSinceEpoch(), Qt::UTC);
        const QDateTime hourAgo = now.addSecs(-3600);
        QVector<QUuid> plans;
        {
            PlanStore store(database);
            Transaction transaction(database);
            for (int i = 0; i < 6000; ++i) {
                TWB::Info::Plan::BackupFile plan;
                plan.setId(QUuid::createUuid());
                plan.setName(QStringLiteral("Plan %1").arg(i));
                daily(QTime(i % 24, i % 60))(plan.schedule());
                PlanRecord record;
                record.id = plan.id();
                record.name = plan.name();
                record.xml = plan.toXml();
                record.timing = ScheduleTiming::of(plan);
                record.nextRun = hourAgo;
                store.save(record);
                plans << record.id;
            }
            transaction.commit();
        }
        Scheduler scheduler(database, engine);
        scheduler.setClock([now] { return now; });
        scheduler.start();
        // Nothing is done before the event loop runs.
        QCOMPARE(PlanStore(database).find(plans.last())->nextRun, hourAgo);
        const auto movedCount = [&] {
            int moved = 0;
            for (const PlanRecord& plan : PlanStore(database).all())
                moved += plan.nextRun > now;
            return moved;
        };
        int moved = 0;
        while (scheduler.isStarting() && (moved = movedCount()) == 0)
            QTest::qWait(1);
        QVERIFY2(scheduler.isStarting() && moved < plans.size(),
            qPrintable(QStringLiteral("one slice moved %1 of %2 plans").arg(moved).arg(plans.size())));
        // A command saves the last plan between two slices.
        const QDateTime saved = now.addDays(3);
        {
            Transaction transaction(database);
            PlanStore(database).setNextRun(plans.last(), saved, QDateTime());
            transaction.commit();
        }
        QTRY_VERIFY(!scheduler.isStarting());
        QCOMPARE(movedCount(), plans.size());
        QCOMPARE(PlanStore(database).find(plans.last())->nextRun, saved);
        Schedule midnight;
        daily(QTime(0, 0))(midnight);
        QCOMPARE(PlanStore(database).find(plans.first())->nextRun, NextRun::after(midnight, now));
        // Missed times do not run plans that do not ask for it.
        QVERIFY(HistoryStore(database).runs(plans.first(), QDateTime(), 0, 10).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestNextRun)
#include "tst_next_run.moc"
