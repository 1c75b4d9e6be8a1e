// How the history of file operations pages and exports with a long history in the store.
//
//   bench_history [--operations N] [--runs N] [--pages N]      (1000000 operations in 10 runs, 20 pages)
//
// The store is filled with one SQL statement while twbd is down, then a real twbd answers. The by-file
// model is shown in a QTableView as the History tab shows it. A first page is timed from load() to its
// rows, a next page from fetchMore() to its rows; the export is of one run, all its lines. A 10 ms timer
// ticks throughout the export; its longest gap is the longest the GUI thread was held.

#include "bench_wait.h"
#include "frame/model_manager.h"
#include "history/history_get_by_file_model.h"
#include "platform/communication/connection_manager.h"
#include "raw_client.h"
#include "service_fixture.h"

#include "service/store/database.h"
#include "service/store/transaction.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>
#include <QHeaderView>
#include <QTableView>

#include <algorithm>
#include <cstdio>
#include <unistd.h>
#include <vector>

using namespace TWB::GUI;
using TWB::Bench::cpuMs;
using TWB::Bench::median;
using TWB::Bench::waitFor;
using TWB::Test::ServiceFixture;

namespace {

const QUuid plan(QStringLiteral("{5b0c7f7e-0c51-4c55-9d0e-b3a1f1d0c0de}"));

// Runs of equal size, oldest first, and their operations: one in a thousand failed.
QList<qint64> fill(const QString& storeFile, int operations, int runs)
{
    TWB::Service::Database store(storeFile);
    store.open();
    TWB::Service::Transaction transaction(store);
    const int perRun = operations / runs;
    QList<qint64> ids;
    for (int run = 0; run < runs; ++run) {
        QSqlQuery query = store.prepare(
            QStringLiteral("INSERT INTO runs (plan_id, plan_name, operation, result, start_utc, duration, file_count, "
                           "size, error_message) VALUES (?, 'Bench', 0, 6, ?, 3600, ?, ?, '')"));
        query.addBindValue(plan.toString());
        query.addBindValue(
            QDateTime::currentDateTimeUtc().addDays(run - runs).toString(QStringLiteral("yyyyMMddhhmmss")));
        query.addBindValue(perRun);
        query.addBindValue(qint64(perRun) * 4096);
        store.exec(query);
        ids << query.lastInsertId().toLongLong();
        store.exec(QStringLiteral(
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
            "INSERT INTO file_operations (run_id, plan_id, operation, path, size, modified_utc, finish_utc, "
            "duration, message) SELECT %2, '%3', CASE WHEN i % 1000 = 0 THEN 4 ELSE 1 END, "
            "printf('/home/bench/data/folder_%03d/file_%07d.dat', i % 500, i), 4096 + i % 1000, "
            "'20260101000000', strftime('%Y%m%d%H%M%S', 'now', '-%4 days', '+' || (i / 100) || ' seconds'), 0, "
            "CASE WHEN i % 1000 = 0 THEN 'Permission denied' ELSE '' END FROM n")
                       .arg(perRun)
                       .arg(ids.last())
                       .arg(plan.toString())
                       .arg(runs - run));
    }
    transaction.commit();
    return ids;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption operationsOption(QStringLiteral("operations"),
        QStringLiteral("File operations in the store."), QStringLiteral("n"), QStringLiteral("1000000"));
    const QCommandLineOption runsOption(
        QStringLiteral("runs"), QStringLiteral("Runs they belong to."), QStringLiteral("n"), QStringLiteral("10"));
    const QCommandLineOption pagesOption(
        QStringLiteral("pages"), QStringLiteral("Next pages to time."), QStringLiteral("n"), QStringLiteral("20"));
    parser.addOptions({operationsOption, runsOption, pagesOption});
    parser.addHelpOption();
    parser.process(app);
    const int operations = parser.value(operationsOption).toInt();
    const int runs = std::max(1, parser.value(runsOption).toInt());

    ServiceFixture service;
    // The first start makes the store; the history is filled while it is down.
    if (!service.start() || !service.process().terminate()) {
        std::fprintf(stderr, "bench_history: twbd does not start\n%s", qPrintable(service.process().output()));
        return 1;
    }
    QElapsedTimer clock;
    clock.start();
    const QList<qint64> runIds = fill(service.storeFile(), operations, runs);
    std::printf("fill %d operations in %d runs: %lld ms\n", operations, runs, clock.elapsed());
    if (!service.start()
        || !waitFor(
            [] { return TWB::Common::Communication::ConnectionManager::instance()->isLocalManagmentConnected(); },
            10000)) {
        std::fprintf(stderr, "bench_history: no connection to twbd\n");
        return 1;
    }
    qputenv("USER", "bench");

    // The service's own share, without the console: a page in the middle of the newest run.
    for (const bool csv : {false, true}) {
        TWB::Test::RawClient client;
        client.connectTo(service.socketPath());
        std::vector<double> times;
        for (int pass = 0; pass < 5; ++pass) {
            clock.restart();
            client.call(QStringLiteral("HistoryListByFiles"),
                {{QStringLiteral("planId"), plan.toString()}, {QStringLiteral("runId"), double(runIds.last())},
                    {QStringLiteral("lastId"), double(runIds.size() * (operations / runs) - 50000)},
                    {QStringLiteral("generateCSV"), csv}});
            times.push_back(clock.nsecsElapsed() / 1e6);
        }
        std::printf("service page%s: %.1f ms\n", csv ? " with CSV" : "", median(times));
    }

    HistoryGetByFileModel model;
    QTableView view;
    view.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    view.setModel(&model);
    view.resize(900, 600);
    view.show();
    int pagesIn = 0;
    QObject::connect(&model, &BaseModel::complite, &model, [&] { ++pagesIn; });

    // A first page, five times, of everything and of the rare failures only.
    std::vector<double> firsts, failedFirsts;
    for (int pass = 0; pass < 5; ++pass) {
        for (const int filter : {0, 4}) {
            const int before = pagesIn;
            clock.restart();
            model.load(0, QUuid(), filter);
            if (!waitFor([&] { return pagesIn > before; }, 60000)) {
                std::fprintf(stderr, "bench_history: no first page\n");
                return 1;
            }
            (filter == 0 ? firsts : failedFirsts).push_back(clock.nsecsElapsed() / 1e6);
        }
    }
    model.load(0, QUuid(), 0);
    waitFor([&] { return model.rowCount() > 0; }, 60000);
    std::vector<double> nexts;
    for (int page = 0; page < parser.value(pagesOption).toInt(); ++page) {
        const int before = pagesIn;
        clock.restart();
        model.fetchMore(QModelIndex());
        if (!waitFor([&] { return pagesIn > before; }, 60000)) {
            std::fprintf(stderr, "bench_history: no next page\n");
            return 1;
        }
        nexts.push_back(clock.nsecsElapsed() / 1e6);
    }
    std::printf("rows held: %d\n", model.rowCount());
    std::printf("first page, failures only: %.1f ms\n", median(failedFirsts));
    std::printf("next page, slowest: %.1f ms\n", *std::max_element(nexts.begin(), nexts.end()));

    // The export of the newest run, every line of it.
    QElapsedTimer tick;
    qint64 longest = 0;
    QTimer ticker;
    ticker.setInterval(10);
    QObject::connect(&ticker, &QTimer::timeout, &ticker, [&] { longest = std::max(longest, tick.restart()); });
    QSharedPointer<QTemporaryFile> file;
    QObject::connect(&model, &HistoryGetByFileModel::saveFileReady, &model,
        [&](const QSharedPointer<QTemporaryFile>& ready) { file = ready; });
    model.setRun(runIds.last());
    const double consoleBefore = cpuMs(QCoreApplication::applicationPid());
    const double serviceBefore = cpuMs(service.process().pid());
    tick.start();
    ticker.start();
    clock.restart();
    model.issueFileExport(0, plan, 0, 0);
    if (!waitFor([&] { return !file.isNull(); }, 120000)) {
        std::fprintf(stderr, "bench_history: the export did not end\n");
        return 1;
    }
    const qint64 exportMs = clock.elapsed();
    ticker.stop();
    std::printf("export CPU: console %.0f ms, service %.0f ms\n",
        cpuMs(QCoreApplication::applicationPid()) - consoleBefore, cpuMs(service.process().pid()) - serviceBefore);
    qint64 lines = -1;
    if (file->open()) {
        lines = file->readAll().count('\n') - 1;
        file->close();
    }
    std::printf("first page: %.0f ms\n", median(firsts));
    std::printf("next page: %.0f ms\n", median(nexts));
    std::printf("export %lld lines: %lld ms\n", lines, exportMs);
    std::printf("longest stall: %lld ms\n", longest);
    return 0;
}
