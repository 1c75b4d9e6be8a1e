// Backs up a tree of many small files and a few large ones through twbd and with restic alone,
// and restores it both ways, to show what the service adds to restic's own time.
//
//   build/bin/bench_engine [small files] [large files] [MByte per large file] [rounds]

#include "engine_test_support.h"
#include "raw_client.h"
#include "service_fixture.h"

#include "platform/plan/backup_file.h"
#include "platform/plan/restore_file.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QProcess>

#include <algorithm>
#include <cstdio>
#include <functional>

using namespace TWB::Info::Plan;
using TWB::Test::EngineTestSupport;
using TWB::Test::RawClient;
using TWB::Test::RunOutcome;
using TWB::Test::ServiceFixture;

namespace {

const QString password = QStringLiteral("bench password");

double seconds(QElapsedTimer& clock)
{
    return double(clock.nsecsElapsed()) / 1e9;
}

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0 : values.at(values.size() / 2);
}

bool restic(const QString& repository, const QString& cache, const QStringList& arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("RESTIC_PASSWORD"), password);
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(QStringLiteral("restic"),
        QStringList {QStringLiteral("--repo"), repository, QStringLiteral("--cache-dir"), cache} + arguments);
    return process.waitForFinished(-1) && process.exitCode() == 0;
}

qint64 treeBytes(const QString& root)
{
    qint64 bytes = 0;
    QDirIterator it(root, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        bytes += it.fileInfo().size();
    }
    return bytes;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const int smallFiles = args.size() > 1 ? args.at(1).toInt() : 5000;
    const int largeFiles = args.size() > 2 ? args.at(2).toInt() : 3;
    const int largeMBytes = args.size() > 3 ? args.at(3).toInt() : 16;
    const int rounds = args.size() > 4 ? args.at(4).toInt() : 6;

    ServiceFixture service;
    if (!service.start()) {
        std::fprintf(stderr, "twbd did not start: %s\n", qPrintable(service.process().output()));
        return 1;
    }
    RawClient client;
    if (!client.connectTo(service.socketPath()))
        return 1;
    const QString root = service.environment().root();
    const QString source = root + QStringLiteral("/tree");
    for (int i = 0; i < smallFiles; ++i) {
        EngineTestSupport::writeFile(QStringLiteral("%1/folder%2/file%3.txt").arg(source).arg(i % 50).arg(i),
            EngineTestSupport::noise(512 + (i * 37) % 8192, quint32(i)));
    }
    for (int i = 0; i < largeFiles; ++i) {
        EngineTestSupport::writeFile(QStringLiteral("%1/large/file%2.bin").arg(source).arg(i),
            EngineTestSupport::noise(largeMBytes * 1024 * 1024, quint32(100000 + i)));
    }
    const double mbytes = double(treeBytes(source)) / (1024.0 * 1024.0);
    std::printf("tree: %d small files, %d large files, %.1f MByte; %d rounds, median shown\n", smallFiles, largeFiles,
        mbytes, rounds);

    QList<double> serviceBackup;
    QList<double> plainBackup;
    QList<double> serviceIncremental;
    QList<double> plainIncremental;
    QList<double> serviceRestore;
    QList<double> plainRestore;
    for (int round = 0; round < rounds; ++round) {
        // twbd: a new plan into a new repository, from the start command to the end notification.
        // restic alone: the same repository format, made and filled by hand. Which of the two goes
        // first alternates, so that neither always finds the other's writes in the page cache.
        const QString storage = root + QStringLiteral("/storage-%1").arg(round);
        const QUuid account = EngineTestSupport::addLocalAccount(client, storage, QStringLiteral("bench"));
        BackupFile plan;
        plan.setId(QUuid::createUuid());
        plan.setName(QStringLiteral("Bench %1").arg(round));
        plan.setStorage(account);
        plan.setItems({source});
        plan.encryption().setEnabled(true);
        plan.encryption().setPassword(password);
        EngineTestSupport::save(client, plan);
        const QString repository = root + QStringLiteral("/plain-%1").arg(round);
        const QString cache = root + QStringLiteral("/plain-cache");
        const bool serviceFirst = round % 2 == 0;
        QString failure;

        auto throughService = [&](const QUuid& id, QList<double>& times) {
            QElapsedTimer clock;
            clock.start();
            const RunOutcome outcome = EngineTestSupport::run(client, id, false, 3600000);
            times << seconds(clock);
            if (outcome.status != 6)
                failure = QStringLiteral("a run through twbd failed: ") + outcome.message;
        };
        auto alone = [&](const QStringList& first, const QStringList& second, QList<double>& times) {
            QElapsedTimer clock;
            clock.start();
            const bool ok = restic(repository, cache, first) && (second.isEmpty() || restic(repository, cache, second));
            times << seconds(clock);
            if (!ok)
                failure = QStringLiteral("restic alone failed");
        };
        auto both = [&](const std::function<void()>& service, const std::function<void()>& plain) {
            if (serviceFirst) {
                service();
                plain();
            } else {
                plain();
                service();
            }
        };

        both([&] { throughService(plan.id(), serviceBackup); },
            [&] {
                alone({QStringLiteral("init"), QStringLiteral("--repository-version"), QStringLiteral("2")},
                    {QStringLiteral("backup"), QStringLiteral("--quiet"), source}, plainBackup);
            });
        // A day's work: a tenth of the small files changed, backed up again both ways.
        for (int i = round % 10; i < smallFiles; i += 10) {
            EngineTestSupport::writeFile(QStringLiteral("%1/folder%2/file%3.txt").arg(source).arg(i % 50).arg(i),
                EngineTestSupport::noise(512 + (i * 37) % 8192, quint32(i + 1000000 * (round + 1))));
        }
        both([&] { throughService(plan.id(), serviceIncremental); },
            [&] {
                alone({QStringLiteral("backup"), QStringLiteral("--quiet"), source}, {}, plainIncremental);
            });

        RestoreFile back;
        back.setId(QUuid::createUuid());
        back.setName(QStringLiteral("Back %1").arg(round));
        back.setStorage(account);
        back.setRestoreItems({QStringLiteral("/TWB_VOLUMES/root") + source});
        back.setRestoreToOriginalLocation(false);
        back.setDestination(root + QStringLiteral("/restored-%1").arg(round));
        EngineTestSupport::save(client, back);
        both([&] { throughService(back.id(), serviceRestore); },
            [&] {
                alone({QStringLiteral("restore"), QStringLiteral("latest"), QStringLiteral("--target"),
                          root + QStringLiteral("/plain-restored-%1").arg(round)},
                    {}, plainRestore);
            });
        if (!failure.isEmpty()) {
            std::fprintf(stderr, "%s\n", qPrintable(failure));
            return 1;
        }
        QDir(root + QStringLiteral("/restored-%1").arg(round)).removeRecursively();
        QDir(root + QStringLiteral("/plain-restored-%1").arg(round)).removeRecursively();
        std::printf("round %d: first %.2f / %.2f s, again %.2f / %.2f s, restore %.2f / %.2f s (twbd / restic)\n",
            round + 1, serviceBackup.last(), plainBackup.last(), serviceIncremental.last(), plainIncremental.last(),
            serviceRestore.last(), plainRestore.last());
        std::fflush(stdout);
    }

    const double backupThroughService = median(serviceBackup);
    const double backupAlone = median(plainBackup);
    const double restoreThroughService = median(serviceRestore);
    const double restoreAlone = median(plainRestore);
    std::printf("first backup (init included) through twbd %7.2f s   restic alone %7.2f s   ratio %.3f (%+.1f %%)\n",
        backupThroughService, backupAlone, backupThroughService / backupAlone,
        (backupThroughService / backupAlone - 1) * 100);
    const double againThroughService = median(serviceIncremental);
    const double againAlone = median(plainIncremental);
    std::printf("second backup (10 %% changed)  through twbd %7.2f s   restic alone %7.2f s   ratio %.3f (%+.1f %%)\n",
        againThroughService, againAlone, againThroughService / againAlone,
        (againThroughService / againAlone - 1) * 100);
    std::printf("restore                       through twbd %7.2f s   restic alone %7.2f s   ratio %.3f (%+.1f %%)\n",
        restoreThroughService, restoreAlone, restoreThroughService / restoreAlone,
        (restoreThroughService / restoreAlone - 1) * 100);
    std::printf("restore throughput: through twbd %.1f MByte/s, restic alone %.1f MByte/s\n",
        mbytes / restoreThroughService, mbytes / restoreAlone);
    if (qEnvironmentVariableIsSet("TWB_BENCH_LOG"))
        std::printf("%s\n", qPrintable(service.process().output()));
    return 0;
}
