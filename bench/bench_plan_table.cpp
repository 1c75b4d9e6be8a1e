// How long the plan tables take with many plans.
//
//   bench_plan_table [--plans N] [--runs N]
//
// The plans come from a scripted service in a child process, so that building the reply is not counted.
// Measured: PlanTableModel from init() to complite(), reply transfer and parsing included; sorting the
// backup table by name with the numeric collator; and PlanBackupModel::init, which filters, sorts and
// publishes the rows.

#include "bench_wait.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/shared_model_creator.h"
#include "plans/filter_plan_table_model.h"
#include "plans/plan_backup_model.h"
#include "plans/plan_table_model.h"
#include "platform/communication/connection_manager.h"
#include "support/fake_service.h"
#include "support/test_environment.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QUuid>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iterator>
#include <memory>
#include <vector>

using namespace TWB::GUI;
using TWB::Common::Communication::ConnectionManager;

using TWB::Bench::waitFor;

namespace {

// Names as people give them, numbered in shuffled order so that the sort has work to do.
QJsonArray planList(int count)
{
    static const char* const stems[] = {"Photos", "Documents", "Mail archive", "Projects", "Music", "Laptop"};
    std::vector<int> numbers(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        numbers[size_t(i)] = i + 1;
    QRandomGenerator random(20240301);
    std::shuffle(numbers.begin(), numbers.end(), random);
    QJsonArray list;
    for (int i = 0; i < count; ++i) {
        const QString name
            = QStringLiteral("%1 %2").arg(QLatin1String(stems[size_t(i) % std::size(stems)])).arg(numbers[size_t(i)]);
        list.append(QJsonObject {
            {QStringLiteral("ID"), QUuid::createUuid().toString()},
            {QStringLiteral("Name"), name},
            {QStringLiteral("SubType"), 1},
            {QStringLiteral("Schedule"), QStringLiteral("Every day at 22:00")},
            {QStringLiteral("Status"), 2},
            {QStringLiteral("StorageId"), QUuid::createUuid().toString()},
            {QStringLiteral("LastRunMessage"), QStringLiteral("Backup completed")},
            {QStringLiteral("LastRunStatus"), 6},
            {QStringLiteral("LastRunTime"), QStringLiteral("2024-03-01T10:15:00Z")},
            {QStringLiteral("NextRun"), QStringLiteral("2024-03-02T22:00:00Z")},
            {QStringLiteral("LastDuration"), 3725},
            {QStringLiteral("LastUploadedCount"), 1200},
            {QStringLiteral("LastFailedCount"), 0},
            {QStringLiteral("LastUploadedSize"), 52428800.0},
            {QStringLiteral("Type"), 0},
            {QStringLiteral("NextRunFull"), QStringLiteral("2024-03-09T22:00:00Z")},
            {QStringLiteral("NextRunReal"), QStringLiteral("2024-03-02T22:00:00Z")},
            {QStringLiteral("LastFileCount"), 1300},
            {QStringLiteral("LastFileSize"), 62428800.0},
        });
    }
    return list;
}

// The child: answers "PlanGetList" with `count` plans until its console leaves.
int runService(const QString& socket, int count)
{
    TWB::Test::FakeService service;
    if (!service.listen(socket))
        return 1;
    const QJsonObject reply {{QStringLiteral("planList"), planList(count)}};
    service.on(QStringLiteral("PlanGetList"), TWB::Test::FakeReply::ok(reply));
    std::printf("ready\n");
    std::fflush(stdout);
    if (!service.waitForClient(10000))
        return 2;
    waitFor([&] { return service.clientCount() == 0; }, 600000);
    return 0;
}

// Stands in the registry between runs, so that no one reaches a table that is gone.
class NoTable final : public ModelCreator
{
public:
    BaseModel* create() override { return nullptr; }
    const QString& name() const override { return m_name; }

private:
    const QString m_name = ModelNames::PlanTable;
};

double milliseconds(qint64 nanoseconds)
{
    return double(nanoseconds) / 1e6;
}

void report(const char* what, std::vector<qint64> times)
{
    std::sort(times.begin(), times.end());
    std::printf("%-46s median %8.1f ms, best %8.1f ms, worst %8.1f ms\n", what, milliseconds(times[times.size() / 2]),
        milliseconds(times.front()), milliseconds(times.back()));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption plansOption(
        QStringLiteral("plans"), QStringLiteral("Plans in the table."), QStringLiteral("n"), QStringLiteral("10000"));
    const QCommandLineOption runsOption(
        QStringLiteral("runs"), QStringLiteral("Runs of each measure."), QStringLiteral("n"), QStringLiteral("7"));
    const QCommandLineOption serveOption(
        QStringLiteral("serve"), QStringLiteral("Run as the scripted service."), QStringLiteral("socket"));
    parser.addOptions({plansOption, runsOption, serveOption});
    parser.addHelpOption();
    parser.process(app);
    const int plans = parser.value(plansOption).toInt();
    const int runs = std::max(1, parser.value(runsOption).toInt());

    if (parser.isSet(serveOption))
        return runService(parser.value(serveOption), plans);

    TWB::Test::TestEnvironment env;
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(),
        {QStringLiteral("--serve"), env.socketPath(), QStringLiteral("--plans"), QString::number(plans)});
    if (!child.waitForReadyRead(60000)) {
        std::fprintf(stderr, "the scripted service did not start\n");
        return 1;
    }
    auto connection = ConnectionManager::instance();
    if (!waitFor([&] { return connection->isLocalManagmentConnected(); }, 10000)) {
        std::fprintf(stderr, "no connection to the scripted service\n");
        return 1;
    }

    NoTable noTable;
    std::vector<qint64> loads;
    std::vector<qint64> sorts;
    std::vector<qint64> backupInits;
    for (int run = 0; run < runs; ++run) {
        SharedModelCreator<PlanTableModel> creator(ModelNames::PlanTable);
        ModelManager::instance()->registrateCreator(creator);
        auto* table = static_cast<PlanTableModel*>(ModelManager::instance()->create(ModelNames::PlanTable));

        bool loaded = false;
        QObject::connect(table, &BaseModel::complite, table, [&] { loaded = true; });
        QElapsedTimer clock;
        clock.start();
        table->init();
        if (!waitFor([&] { return loaded; }, 120000) || table->rowCount() != plans) {
            std::fprintf(stderr, "the table did not load %d plans\n", plans);
            return 1;
        }
        loads.push_back(clock.nsecsElapsed());

        FilterPlanTableModel filter(1, nullptr);
        filter.setSourceModel(table);
        clock.restart();
        filter.sort(1, Qt::AscendingOrder);
        sorts.push_back(clock.nsecsElapsed());

        PlanBackupModel backup;
        clock.restart();
        backup.init();
        backupInits.push_back(clock.nsecsElapsed());
        if (backup.rowCount() != plans) {
            std::fprintf(stderr, "the backup table shows %d of %d plans\n", backup.rowCount(), plans);
            return 1;
        }
        if (run == 0)
            std::printf("first rows: %s, %s, %s\n", qPrintable(backup.index(0, 1).data().toString()),
                qPrintable(backup.index(1, 1).data().toString()), qPrintable(backup.index(2, 1).data().toString()));
        // Unregistered before the creator and its table go.
        ModelManager::instance()->registrateCreator(noTable);
    }

    std::printf("%d plans, %d runs\n", plans, runs);
    report("PlanTableModel init() to complite()", loads);
    report("sort by name, numeric collator", sorts);
    report("PlanBackupModel::init (filter, sort, publish)", backupInits);
    child.kill();
    child.waitForFinished(5000);
    return 0;
}
