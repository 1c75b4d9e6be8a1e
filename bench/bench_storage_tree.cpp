// How the full storage tree copes with a huge folder of the catalog.
//
//   bench_storage_tree [--files N] [--versions N] [--page-size N] [--runs N]
//                                                   (100000 files, 3 versions, 500 a part, 3 runs)
//
// The catalog is filled through the service's own store classes, then a real twbd answers. The
// folder is opened in a QTreeView over StorageBackupFullModel, as the restore pages show it, and
// timed from expand() to its first rows and to its last. A 10 ms timer ticks throughout; its
// longest gap is the longest the GUI thread was held.

#include "bench_wait.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/shared_model_creator.h"
#include "platform/communication/connection_manager.h"
#include "restore_wizard/restore_content_model.h"
#include "restore_wizard/storage_backup_full_model.h"
#include "service_fixture.h"
#include "storages/storage_connections_model.h"

#include "service/catalog/version_catalog.h"
#include "service/store/database.h"
#include "service/store/option_store.h"
#include "service/store/transaction.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTimer>
#include <QTreeView>

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

const QString prefix = QStringLiteral("bench");

bool fill(const QString& storeFile, int files, int versions, int pageSize, QUuid* account)
{
    TWB::Service::Database store(storeFile);
    store.open();
    QSqlQuery query = store.prepare(QStringLiteral("SELECT id FROM accounts"));
    *account = QUuid(store.scalar(query).toString());
    if (account->isNull())
        return false;
    TWB::Service::VersionCatalog catalog(store);
    TWB::Service::Transaction transaction(store);
    TWB::Service::OptionStore(store).setValue(
        QLatin1String(TWB::Service::OptionStore::RestoreContentPageSize), QString::number(pageSize));
    const QDateTime first = QDateTime::currentDateTimeUtc().addDays(-versions);
    for (int i = 0; i < files; ++i) {
        const QString path = QStringLiteral("/TWB_VOLUMES/root/big/file_%1.dat").arg(i, 6, 10, QLatin1Char('0'));
        for (int v = 0; v < versions; ++v) {
            TWB::Service::CatalogVersion version;
            version.snapshot = QStringLiteral("snap%1").arg(v);
            version.backupTime = first.addDays(v);
            version.modified = version.backupTime.addSecs(-60);
            version.size = 4096 + v;
            version.originalSize = 8192 + v;
            catalog.addVersion(*account, prefix, path, version);
        }
    }
    transaction.commit();
    return true;
}

QModelIndex childNamed(const QAbstractItemModel& model, const QModelIndex& parent, const QString& name)
{
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        if (index.data().toString() == name)
            return index;
    }
    return QModelIndex();
}

// Resident memory of this process in kilobytes.
long residentKb()
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toLong();
    }
    return 0;
}

// Opening a restore plan of `files` paths spread over `folders` folders: from initChecked() until every
// tick is set. Seeding asks for one folder at a time, so the service's cost of one listing in a large
// catalog is most of it; the catalog is filled while the service is down.
bool benchSeed(ServiceFixture& service, const QUuid& account, int folders, int files)
{
    using TWB::Common::Communication::ConnectionManager;
    if (!service.process().terminate()
        || !waitFor([] { return !ConnectionManager::instance()->isLocalManagmentConnected(); }, 10000))
        return false;
    QStringList paths;
    {
        TWB::Service::Database store(service.storeFile());
        store.open();
        TWB::Service::VersionCatalog catalog(store);
        TWB::Service::Transaction transaction(store);
        TWB::Service::CatalogVersion version;
        version.snapshot = QStringLiteral("seed");
        version.backupTime = QDateTime::currentDateTimeUtc();
        version.modified = version.backupTime;
        for (int i = 0; i < files; ++i) {
            const QString path = QStringLiteral("/TWB_VOLUMES/root/seed/dir_%1/file_%2.dat")
                                     .arg(i % folders, 4, 10, QLatin1Char('0'))
                                     .arg(i / folders, 4, 10, QLatin1Char('0'));
            catalog.addVersion(account, prefix, path, version);
            paths << QLatin1Char('/') + prefix + path;
        }
        transaction.commit();
    }
    if (!service.start() || !waitFor([] { return ConnectionManager::instance()->isLocalManagmentConnected(); }, 10000))
        return false;

    RestoreContentModel model(account);
    int requests = 0;
    QObject::connect(&model, &BaseModel::updated, &model, [&] { ++requests; });
    QElapsedTimer clock;
    const double consoleBefore = cpuMs(QCoreApplication::applicationPid());
    const double serviceBefore = cpuMs(service.process().pid());
    clock.start();
    model.initChecked(paths);
    QEventLoop loop;
    QObject::connect(&model, &BaseModel::complite, &loop, [&] {
        if (!model.isSeeding())
            loop.quit();
    });
    QTimer::singleShot(600000, &loop, &QEventLoop::quit);
    if (model.isSeeding())
        loop.exec();
    const double whole = clock.nsecsElapsed() / 1e6;
    const int ticked = int(
        model.match(model.index(0, 0), Qt::CheckStateRole, int(Qt::Checked), -1, Qt::MatchRecursive | Qt::MatchExactly)
            .size());
    if (model.isSeeding() || ticked != files) {
        std::fprintf(stderr, "bench_storage_tree: %d of %d paths ticked\n", ticked, files);
        return false;
    }
    const double serviceCpu = cpuMs(service.process().pid()) - serviceBefore;
    std::printf("seed %d paths: %.0f ms\n", files, whole);
    std::printf("seed: %d requests, %.2f ms each; CPU: console %.0f ms, service %.0f ms (%.2f ms a request)\n",
        requests, whole / requests, cpuMs(QCoreApplication::applicationPid()) - consoleBefore, serviceCpu,
        serviceCpu / requests);
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption filesOption(
        QStringLiteral("files"), QStringLiteral("Files in the folder."), QStringLiteral("n"), QStringLiteral("100000"));
    const QCommandLineOption versionsOption(
        QStringLiteral("versions"), QStringLiteral("Versions of each file."), QStringLiteral("n"), QStringLiteral("3"));
    const QCommandLineOption pageOption(QStringLiteral("page-size"), QStringLiteral("Entries of one listing part."),
        QStringLiteral("n"), QStringLiteral("500"));
    const QCommandLineOption runsOption(
        QStringLiteral("runs"), QStringLiteral("Openings of the folder."), QStringLiteral("n"), QStringLiteral("3"));
    parser.addOptions({filesOption, versionsOption, pageOption, runsOption});
    parser.addHelpOption();
    parser.process(app);
    const int files = parser.value(filesOption).toInt();
    const int runs = std::max(1, parser.value(runsOption).toInt());

    ServiceFixture service;
    // The first start makes the store and the first account; the catalog is filled while it is down.
    if (!service.start() || !service.process().terminate()) {
        std::fprintf(stderr, "bench_storage_tree: twbd does not start\n%s", qPrintable(service.process().output()));
        return 1;
    }
    QElapsedTimer clock;
    clock.start();
    QUuid account;
    if (!fill(service.storeFile(), files, parser.value(versionsOption).toInt(), parser.value(pageOption).toInt(),
            &account)) {
        std::fprintf(stderr, "bench_storage_tree: the store has no account\n");
        return 1;
    }
    std::printf("fill %d files: %lld ms\n", files, clock.elapsed());
    if (!service.start()
        || !waitFor(
            [] { return TWB::Common::Communication::ConnectionManager::instance()->isLocalManagmentConnected(); },
            10000)) {
        std::fprintf(stderr, "bench_storage_tree: no connection to twbd\n");
        return 1;
    }
    qputenv("USER", "bench");

    // The service's own share: one part at the top of the folder and one at its end.
    for (const int offset : {0, std::max(0, files - parser.value(pageOption).toInt())}) {
        clock.restart();
        const TWB::Test::ServiceReply part
            = ServiceFixture::callThroughChannel(QStringLiteral("GetRestoreContentManualMode"),
                {{QStringLiteral("destination"), account.toString()}, {QStringLiteral("prefix"), prefix},
                    {QStringLiteral("path"), QStringLiteral("/TWB_VOLUMES/root/big")},
                    {QStringLiteral("currentPart"), offset}});
        std::printf("service, part at %d: %lld ms%s\n", offset, clock.elapsed(), part.success ? "" : " (failed)");
    }

    SharedModelCreator<StorageConnectionsModel> storages(ModelNames::StorageConnection);
    ModelManager::instance()->registrateCreator(storages);
    bool listed = false;
    BaseModel* list = storages.create();
    QObject::connect(list, &BaseModel::complite, list, [&] { listed = true; });
    list->init();
    StorageBackupFullModel model;
    QTreeView view;
    view.setUniformRowHeights(true);
    view.setModel(&model);
    view.resize(900, 600);
    view.show();
    if (!waitFor([&] { return listed; }, 10000) || !model.init()) {
        std::fprintf(stderr, "bench_storage_tree: no storage list\n");
        return 1;
    }

    // Down to the folder's parent, each level expanded as a user does.
    QModelIndex index;
    for (int row = 0; row < model.rowCount(); ++row) {
        if (QUuid(model.index(row, 1).data().toString()) == account)
            index = model.index(row, 0);
    }
    for (const QString& name : {prefix, QStringLiteral("TWB_VOLUMES"), QStringLiteral("root"), QStringLiteral("big")}) {
        view.expand(index);
        QModelIndex next;
        if (!waitFor([&] { return (next = childNamed(model, index, name)).isValid(); }, 10000)) {
            std::fprintf(stderr, "bench_storage_tree: no \"%s\" in the tree\n", qPrintable(name));
            return 1;
        }
        index = next;
    }
    const QPersistentModelIndex folder(index);

    std::vector<double> firsts, wholes, stalls;
    long perRow = -1;
    for (int run = 0; run < runs; ++run) {
        view.collapse(folder);
        model.onCollapse(folder);
        const long residentBefore = residentKb();
        QElapsedTimer tick;
        qint64 longest = 0;
        QTimer ticker;
        ticker.setInterval(10);
        QObject::connect(&ticker, &QTimer::timeout, &ticker, [&] { longest = std::max(longest, tick.restart()); });
        double firstRows = -1;
        QMetaObject::Connection seen = QObject::connect(
            &model, &QAbstractItemModel::rowsInserted, &model, [&](const QModelIndex& parent, int, int) {
                if (parent == folder && firstRows < 0)
                    firstRows = clock.nsecsElapsed() / 1e6;
            });
        const double consoleBefore = cpuMs(QCoreApplication::applicationPid());
        const double serviceBefore = cpuMs(service.process().pid());
        tick.start();
        ticker.start();
        clock.restart();
        // An event loop that sleeps between events: a polling wait would take the CPU the service needs.
        QEventLoop loop;
        QObject::connect(&model, &QAbstractItemModel::rowsInserted, &loop, [&] {
            if (model.rowCount(folder) >= files)
                loop.quit();
        });
        QTimer::singleShot(600000, &loop, &QEventLoop::quit);
        view.expand(folder);
        if (model.rowCount(folder) < files)
            loop.exec();
        if (model.rowCount(folder) < files) {
            std::fprintf(stderr, "bench_storage_tree: the folder holds %d of %d rows\n", model.rowCount(folder), files);
            return 1;
        }
        const double whole = clock.nsecsElapsed() / 1e6;
        ticker.stop();
        // The first run grows the heap; later ones reuse what the collapse freed.
        if (perRow < 0)
            perRow = (residentKb() - residentBefore) * 1024 / files;
        QObject::disconnect(seen);
        firsts.push_back(firstRows);
        wholes.push_back(whole);
        stalls.push_back(double(longest));
        std::printf("run %d: first rows %.0f ms, whole folder %.0f ms, longest stall %lld ms; CPU: console %.0f ms, "
                    "service %.0f ms\n",
            run + 1, firstRows, whole, longest, cpuMs(QCoreApplication::applicationPid()) - consoleBefore,
            cpuMs(service.process().pid()) - serviceBefore);
    }
    std::printf("memory per row: %ld bytes\n", perRow);
    std::printf("first rows: %.0f ms\n", median(firsts));
    std::printf("whole folder: %.0f ms\n", median(wholes));
    std::printf("longest stall: %.0f ms\n", *std::max_element(stalls.begin(), stalls.end()));
    if (!benchSeed(service, account, 1000, 10000))
        return 1;
    service.process().terminate();
    return 0;
}
