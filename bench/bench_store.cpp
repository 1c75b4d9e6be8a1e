// Speed of the service's store through the real socket: listing 10,000 plans, paging a large
// folder of the catalog and the history, and durable writes.
//
//   bench_store [--plans N] [--files N] [--runs N] [--repeat N]
//
// The store is filled through the service's own store classes, then a real twbd answers.
// Times are wall-clock round trips from the request's write to the parsed reply.

#include "raw_client.h"
#include "service_fixture.h"

#include "platform/plan/backup_file.h"
#include "service/catalog/version_catalog.h"
#include "service/schedule/next_run.h"
#include "service/schedule/schedule_timing.h"
#include "service/store/database.h"
#include "service/store/history_store.h"
#include "service/store/plan_store.h"
#include "service/store/transaction.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

using namespace TWB::Service;
using TWB::Test::RawClient;
using TWB::Test::ServiceFixture;
using TWB::Test::ServiceReply;

namespace {

struct Figures
{
    double min = 0;
    double median = 0;
    double max = 0;
};

Figures measure(int repeat, const std::function<bool()>& once)
{
    std::vector<double> times;
    for (int i = 0; i < repeat; ++i) {
        QElapsedTimer clock;
        clock.start();
        if (!once()) {
            std::fprintf(stderr, "bench_store: a request failed\n");
            std::exit(1);
        }
        times.push_back(double(clock.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    return {times.front(), times[times.size() / 2], times.back()};
}

void report(const char* what, const Figures& f, const QString& extra = QString())
{
    std::printf(
        "%-48s min %8.2f ms  median %8.2f ms  max %8.2f ms  %s\n", what, f.min, f.median, f.max, qPrintable(extra));
    std::fflush(stdout);
}

void describe(TWB::Info::Plan::BackupFile& plan, const QUuid& id, int n, const QUuid& storage)
{
    plan.setId(id);
    plan.setName(QStringLiteral("Plan %1").arg(n, 5, 10, QLatin1Char('0')));
    plan.setStorage(storage);
    plan.setItems({QStringLiteral("/home/user%1").arg(n), QStringLiteral("/etc")});
    plan.schedule().setEnable(true);
    plan.schedule().setType(TWB::Info::Plan::Schedule::Recurring);
    // Spread over ten hours that start two hours from now: no plan comes due while the benchmark runs.
    const QTime now = QTime::currentTime();
    plan.schedule().setOccursAt(QTime(now.hour(), now.minute()).addSecs(2 * 3600 + (n % 600) * 60));
}

QString planXml(const QUuid& id, int n, const QUuid& storage)
{
    TWB::Info::Plan::BackupFile plan;
    describe(plan, id, n, storage);
    return plan.toXml();
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption plansOption(
        QStringLiteral("plans"), QStringLiteral("Plans in the store."), QStringLiteral("N"), QStringLiteral("10000"));
    const QCommandLineOption filesOption(QStringLiteral("files"), QStringLiteral("Files in one folder of the catalog."),
        QStringLiteral("N"), QStringLiteral("100000"));
    const QCommandLineOption runsOption(
        QStringLiteral("runs"), QStringLiteral("Runs in the history."), QStringLiteral("N"), QStringLiteral("100000"));
    const QCommandLineOption repeatOption(
        QStringLiteral("repeat"), QStringLiteral("Samples of each figure."), QStringLiteral("N"), QStringLiteral("15"));
    parser.addOptions({plansOption, filesOption, runsOption, repeatOption});
    parser.process(app);
    const int plans = parser.value(plansOption).toInt();
    const int files = parser.value(filesOption).toInt();
    const int runs = parser.value(runsOption).toInt();
    const int repeat = std::max(1, parser.value(repeatOption).toInt());

    ServiceFixture service;
    QElapsedTimer clock;

    // The first start makes the store and the first account; the rest is filled while it is down.
    if (!service.start() || !service.process().terminate()) {
        std::fprintf(stderr, "bench_store: twbd does not start\n%s", qPrintable(service.process().output()));
        return 1;
    }
    QUuid account;
    std::vector<QUuid> planIds;
    {
        Database store(service.storeFile());
        store.open();
        {
            QSqlQuery query = store.prepare(QStringLiteral("SELECT id FROM accounts"));
            account = QUuid(store.scalar(query).toString());
        }
        clock.start();
        {
            PlanStore planStore(store);
            Transaction transaction(store);
            const QDateTime now = QDateTime::currentDateTimeUtc();
            for (int i = 0; i < plans; ++i) {
                PlanRecord record;
                record.id = QUuid::createUuid();
                TWB::Info::Plan::BackupFile plan;
                describe(plan, record.id, i, account);
                record.xml = plan.toXml();
                // As PlanUpdate stores it.
                record.timing = ScheduleTiming::of(plan);
                record.name = QStringLiteral("Plan %1").arg(i, 5, 10, QLatin1Char('0'));
                record.storage = account;
                record.nextRun = NextRun::after(plan.schedule(), now);
                record.scheduleText
                    = QStringLiteral("Daily at %1").arg(plan.schedule().occursAt().toString(QStringLiteral("hh:mm")));
                planStore.save(record);
                planIds.push_back(record.id);
            }
            transaction.commit();
        }
        std::printf("%-48s %8.0f ms\n", qPrintable(QStringLiteral("fill %1 plans (one transaction)").arg(plans)),
            double(clock.elapsed()));
        clock.restart();
        {
            VersionCatalog catalog(store);
            Transaction transaction(store);
            CatalogVersion version;
            version.snapshot = QStringLiteral("3f2a");
            version.backupTime = QDateTime::currentDateTimeUtc();
            version.size = 4096;
            version.originalSize = 8192;
            for (int i = 0; i < files; ++i)
                catalog.addVersion(account, QStringLiteral("bench"),
                    QStringLiteral("/TWB_VOLUMES/root/big/f%1").arg(i, 7, 10, QLatin1Char('0')), version);
            transaction.commit();
        }
        std::printf("%-48s %8.0f ms\n", qPrintable(QStringLiteral("fill %1 catalog files").arg(files)),
            double(clock.elapsed()));
        clock.restart();
        {
            HistoryStore history(store);
            Transaction transaction(store);
            const QDateTime now = QDateTime::currentDateTimeUtc();
            for (int i = 0; i < runs; ++i) {
                RunRecord run;
                run.plan = planIds.empty() ? QUuid() : planIds[size_t(i) % planIds.size()];
                run.planName = QStringLiteral("Plan");
                run.result = 6;
                run.start = now.addSecs(-qint64(runs - i) * 60);
                history.addRun(run);
            }
            transaction.commit();
        }
        std::printf("%-48s %8.0f ms\n", qPrintable(QStringLiteral("fill %1 runs").arg(runs)), double(clock.elapsed()));
    }

    clock.restart();
    if (!service.start()) {
        std::fprintf(stderr, "bench_store: twbd does not start\n");
        return 1;
    }
    std::printf("%-48s %8.0f ms\n", "start twbd on the filled store", double(clock.elapsed()));

    RawClient client;
    client.connectTo(service.socketPath());
    ServiceReply lastList;
    // The first list of a start reads the plans from the file, and the console its first reply this large.
    report("PlanGetList, first after a start",
        measure(1, [&] { return client.call(QStringLiteral("PlanGetList"), {}, 60000).success; }));
    const Figures list = measure(repeat, [&] {
        lastList = client.call(QStringLiteral("PlanGetList"), {}, 60000);
        return lastList.success;
    });
    // Counted after the clock stopped: serialising the reply again is the benchmark's work, not the service's.
    const int listed = lastList.data.value(QStringLiteral("planList")).toArray().size();
    const qint64 bytes = QJsonDocument(lastList.data).toJson(QJsonDocument::Compact).size();
    report("PlanGetList", list, QStringLiteral("%1 plans, %2 KiB").arg(listed).arg(bytes / 1024));
    // What of that the client spends reading the reply alone.
    const QByteArray listText = QJsonDocument(lastList.data).toJson(QJsonDocument::Compact);
    report("  of which the client parses the reply", measure(repeat, [&] {
        return QJsonDocument::fromJson(listText).object().value(QStringLiteral("planList")).isArray();
    }));

    const Figures info = measure(repeat, [&] {
        return client
            .call(QStringLiteral("PlanGetInfo"), {{QStringLiteral("id"), planIds[planIds.size() / 2].toString()}})
            .success;
    });
    report("PlanGetInfo", info);
    const Figures xml = measure(repeat, [&] {
        return client
            .call(QStringLiteral("PlanGetXML"), {{QStringLiteral("ID"), planIds[planIds.size() / 3].toString()}})
            .success;
    });
    report("PlanGetXML (deciphered)", xml);

    const Figures accounts
        = measure(repeat, [&] { return client.call(QStringLiteral("StorageGetConnection")).success; });
    report("StorageGetConnection", accounts, QStringLiteral("account with %1 catalog versions").arg(files));

    auto content = [&](int offset) {
        return client
            .call(QStringLiteral("GetRestoreContentManualMode"),
                {{QStringLiteral("destination"), account.toString()},
                    {QStringLiteral("prefix"), QStringLiteral("bench")},
                    {QStringLiteral("path"), QStringLiteral("/TWB_VOLUMES/root/big")},
                    {QStringLiteral("currentPart"), offset}})
            .success;
    };
    report("GetRestoreContentManualMode, first part", measure(repeat, [&] { return content(0); }),
        QStringLiteral("500 of %1").arg(files));
    report(
        "GetRestoreContentManualMode, last part", measure(repeat, [&] { return content(std::max(0, files - 500)); }));

    auto history = [&](qint64 lastId) {
        return client.call(QStringLiteral("HistoryListByPlan"), {{QStringLiteral("lastID"), double(lastId)}}).success;
    };
    report("HistoryListByPlan, newest page", measure(repeat, [&] { return history(0); }),
        QStringLiteral("200 of %1").arg(runs));
    report("HistoryListByPlan, oldest page", measure(repeat, [&] { return history(201); }));

    int n = 0;
    const Figures update = measure(repeat, [&] {
        const QUuid id = planIds[size_t(n++) % planIds.size()];
        return client
            .call(QStringLiteral("PlanUpdate"),
                {{QStringLiteral("ID"), id.toString()}, {QStringLiteral("planXML"), planXml(id, n, account)}})
            .success;
    });
    report("PlanUpdate (validated, sealed, synced)", update);

    // The worst case of a list: every next run has passed, so every schedule is read again.
    service.process().terminate();
    {
        Database store(service.storeFile());
        store.open();
        store.exec(QStringLiteral("UPDATE plan_timings SET next_run_utc = '20000101000000'"));
    }
    service.start();
    RawClient cold;
    cold.connectTo(service.socketPath());
    // A second console, in a thread of its own, asks for one plan at the same moment: how long the
    // first pass keeps every other console waiting.
    QElapsedTimer together;
    std::atomic<int> stage {0};
    Figures infoMeanwhile;
    const QString middle = planIds[planIds.size() / 2].toString();
    std::unique_ptr<QThread> second(QThread::create([&] {
        RawClient other;
        other.connectTo(service.socketPath());
        stage = 1;
        while (stage < 2)
            std::this_thread::yield();
        const bool answered
            = other.call(QStringLiteral("PlanGetInfo"), {{QStringLiteral("id"), middle}}, 120000).success;
        const double ms = answered ? double(together.nsecsElapsed()) / 1e6 : -1;
        infoMeanwhile = {ms, ms, ms};
    }));
    second->start();
    while (stage < 1)
        std::this_thread::yield();
    together.start();
    stage = 2;
    // Timed when the reply is read, before the notifications that came after it in the same read.
    const QString listId = cold.send(QStringLiteral("PlanGetList"));
    double listMs = -1;
    QObject::connect(&cold, &RawClient::replied, &cold, [&](const QString& id) {
        if (id == listId)
            listMs = double(together.nsecsElapsed()) / 1e6;
    });
    const bool coldListed = cold.waitForReply(listId, 120000) && cold.reply(listId).success;
    second->wait();
    if (!coldListed || infoMeanwhile.min < 0) {
        std::fprintf(stderr, "bench_store: a request failed\n");
        return 1;
    }
    const Figures listFirst {listMs, listMs, listMs};
    report("PlanGetList, every next run passed (once)", listFirst);
    report("  PlanGetInfo of another console meanwhile", infoMeanwhile);
    report("PlanGetList, after that",
        measure(repeat, [&] { return cold.call(QStringLiteral("PlanGetList"), {}, 60000).success; }));
    service.process().terminate();
    return 0;
}
