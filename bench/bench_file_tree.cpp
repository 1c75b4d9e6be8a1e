// How the backup source tree copes with a huge folder, side by side with QFileSystemModel.
//
//   bench_file_tree [--entries N] [--runs N]   (100000 entries, 1 run of each by default)
//
// Listing: a folder of N files (100,000 by default) is opened in a QTreeView until every row is in the
// model: the tree through its proxy as the source page shows it, QFileSystemModel directly. Each run is a
// child process of its own, so that its peak memory (VmHWM, less the resident size before the folder is
// opened) is its own; the medians of the runs are compared. A 10 ms timer ticks throughout, and its
// longest gap is the longest the GUI thread was held.
// Restoring: a plan whose lists hold 10,000 paths nine folders deep is marked on a fresh tree, from
// initChecked() until the last listing has arrived.
// Deriving: the include and exclude lists of the listed huge folder, with every seventh file left out.

#include "bench_wait.h"
#include "backup_wizard/file_system_checked_model.h"
#include "backup_wizard/file_system_checked_proxy_model.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileSystemModel>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeView>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <unistd.h>

using namespace TWB::GUI;

// The listing is timed: the waits wake every 5 ms so that the stall measure is the tree's, not ours.
using TWB::Bench::waitFor;

namespace {

qint64 statusKb(const char* key)
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith(key))
            return line.mid(int(qstrlen(key))).trimmed().split(' ').first().toLongLong();
    }
    return 0;
}

bool makeFiles(const QString& folder, int count)
{
    if (!QDir().mkpath(folder))
        return false;
    for (int i = 0; i < count; ++i) {
        QFile file(folder + QStringLiteral("/file_%1.dat").arg(i, 6, 10, QLatin1Char('0')));
        if (!file.open(QIODevice::WriteOnly))
            return false;
    }
    return true;
}

QJsonArray volumeOf(const QString& root)
{
    return {QJsonObject {{"name", "bench"}, {"path", "/TWB_VOLUMES/bench"}, {"real_path", root},
        {"type", TWB::FileSystemListing::Drive}, {"is_hidden", false}, {"is_symlink", false}}};
}

// Longest gap between the ticks of a 10 ms timer, from start() on.
class StallMeter
{
public:
    StallMeter()
    {
        timer.setInterval(10);
        QObject::connect(&timer, &QTimer::timeout, [this] { longest = std::max(longest, clock.restart()); });
    }
    void start()
    {
        clock.start();
        timer.start();
    }
    qint64 stop()
    {
        timer.stop();
        return std::max(longest, clock.elapsed());
    }

private:
    QTimer timer;
    QElapsedTimer clock;
    qint64 longest = 0;
};

// One listing run in this process; prints "time_ms peak_kb stall_ms".
int listingRun(const QString& kind, const QString& root, int entries)
{
    const QString big = root + QStringLiteral("/big");
    QTreeView view;
    view.setUniformRowHeights(true); // as the source page's tree
    view.resize(400, 600);
    view.show();
    QFileSystemModel files;
    FileSystemCheckedModel tree(volumeOf(root));
    FileSystemCheckedProxyModel proxy;
    std::function<int()> rows;
    std::function<void()> open;
    if (kind == QLatin1String("qfs")) {
        view.setModel(&files);
        files.setRootPath(root);
        if (!waitFor([&] { return files.rowCount(files.index(root)) > 0; }, 30000, 5))
            return 1;
        rows = [&] { return files.rowCount(files.index(big)); };
        open = [&] {
            view.expand(files.index(big));
            files.fetchMore(files.index(big));
        };
    } else {
        proxy.setSourceModel(&tree);
        view.setModel(&proxy);
        view.expand(proxy.mapFromSource(tree.indexByPath(root)));
        if (!waitFor([&] { return tree.indexByPath(big).isValid(); }, 30000, 5))
            return 1;
        rows = [&] { return tree.rowCount(tree.indexByPath(big)); };
        open = [&] { view.expand(proxy.mapFromSource(tree.indexByPath(big))); };
    }
    waitFor([] { return false; }, 200, 5); // let the first listing settle before the baseline
    const qint64 before = statusKb("VmRSS:");
    StallMeter stall;
    stall.start();
    QElapsedTimer clock;
    clock.start();
    open();
    // A model that has not all rows after two minutes is stopped there; the figures then are lower bounds.
    waitFor([&] { return rows() >= entries; }, 120000, 5);
    const qint64 elapsed = clock.elapsed();
    const qint64 longest = stall.stop();
    std::printf("%lld %lld %lld %d\n", static_cast<long long>(elapsed),
        static_cast<long long>(statusKb("VmHWM:") - before), static_cast<long long>(longest), rows());
    std::fflush(stdout);
    // QFileSystemModel's tear-down waits for its gatherer thread to finish the folder; that is not measured.
    ::_exit(0);
}

struct RunResult
{
    double ms = 0;
    double kb = 0;
    double stall = 0;
    int rows = 0;
};

bool childRun(const QString& kind, const QString& root, int entries, RunResult* result)
{
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(),
        {QStringLiteral("--child"), kind, QStringLiteral("--root"), root, QStringLiteral("--entries"),
            QString::number(entries)});
    if (!child.waitForFinished(600000) || child.exitCode() != 0)
        return false;
    const QList<QByteArray> fields = child.readAllStandardOutput().trimmed().split(' ');
    if (fields.size() != 4)
        return false;
    *result = {fields[0].toDouble(), fields[1].toDouble(), fields[2].toDouble(), fields[3].toInt()};
    return true;
}

double median(QVector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0 : values.at(values.size() / 2);
}

// 1,000 folders nine levels down with eleven files each; the plan takes all but one file of half the
// folders, and the other half whole except for nine files each.
void makePlan(const QString& root, QStringList* includes, QStringList* excludes, bool create)
{
    const QString volume = QStringLiteral("/TWB_VOLUMES/bench");
    const QString chain = QStringLiteral("/deep/x1/x2/x3/x4/x5");
    for (int a = 0; a < 10; ++a) {
        for (int b = 0; b < 10; ++b) {
            for (int c = 0; c < 10; ++c) {
                const QString folder = chain + QStringLiteral("/a%1/b%2/c%3").arg(a).arg(b).arg(c);
                if (create)
                    makeFiles(root + folder, 0);
                for (int d = 0; d < 11; ++d) {
                    const QString file = folder + QStringLiteral("/f%1").arg(d);
                    if (create)
                        QFile(root + file).open(QIODevice::WriteOnly);
                    if (a < 5 && d < 10)
                        includes->append(volume + file);
                    else if (a >= 5 && d < 9)
                        excludes->append(volume + file);
                }
                if (a >= 5)
                    includes->append(volume + folder);
            }
        }
    }
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addOptions(
        {{"entries", "Files in the huge folder.", "N", "100000"}, {"runs", "Runs of each model.", "N", "1"},
            {"child", "Internal: one listing run.", "kind"}, {"root", "Internal: the bench folder.", "path"}});
    parser.process(app);
    const int entries = parser.value("entries").toInt();
    if (parser.isSet("child"))
        return listingRun(parser.value("child"), parser.value("root"), entries);

    QTemporaryDir dir;
    const QString root = dir.path();
    std::printf("making %d files...\n", entries);
    QStringList includes;
    QStringList excludes;
    if (!makeFiles(root + QStringLiteral("/big"), entries))
        return 1;
    makePlan(root, &includes, &excludes, true);

    QVector<double> ms[2], kb[2], stalls[2];
    const QString kinds[2] = {QStringLiteral("qfs"), QStringLiteral("tree")};
    for (int run = 0; run < parser.value("runs").toInt(); ++run) {
        for (int k = 0; k < 2; ++k) {
            RunResult result;
            if (!childRun(kinds[k], root, entries, &result)) {
                std::printf("run of %s failed\n", qPrintable(kinds[k]));
                return 1;
            }
            std::printf("%-4s run %d: %6.0f ms, %7.0f KiB above the start, longest stall %4.0f ms, %d rows%s\n",
                qPrintable(kinds[k]), run + 1, result.ms, result.kb, result.stall, result.rows,
                result.rows < entries ? " (stopped before the last row)" : "");
            ms[k] << result.ms;
            kb[k] << result.kb;
            stalls[k] << result.stall;
        }
    }

    // Restoring a plan: every folder on the way to its 10,000 paths is listed, and the marks follow.
    FileSystemCheckedModel restored(volumeOf(root));
    QElapsedTimer clock;
    clock.start();
    restored.initChecked(includes, excludes);
    waitFor([&] { return !restored.isListing(); }, 60000, 5);
    const qint64 restoreMs = clock.elapsed();
    QStringList gotIncludes = restored.includePath(false);
    QStringList gotExcludes = restored.excludePath(false);
    std::sort(includes.begin(), includes.end());
    std::sort(excludes.begin(), excludes.end());
    std::sort(gotIncludes.begin(), gotIncludes.end());
    std::sort(gotExcludes.begin(), gotExcludes.end());
    if (gotIncludes != includes || gotExcludes != excludes) {
        std::printf("restored lists differ: %d/%d includes, %d/%d excludes\n", int(gotIncludes.size()),
            int(includes.size()), int(gotExcludes.size()), int(excludes.size()));
        return 1;
    }

    // Deriving the lists from the huge folder, checked whole but for every seventh file.
    FileSystemCheckedModel tree(volumeOf(root));
    tree.fetchMore(tree.indexByPath(root));
    waitFor([&] { return !tree.isListing(); }, 60000, 5);
    const QModelIndex big = tree.indexByPath(root + QStringLiteral("/big"));
    tree.fetchMore(big);
    waitFor([&] { return !tree.isListing(); }, 60000, 5);
    tree.setData(big, Qt::Checked, Qt::CheckStateRole);
    for (int row = 0; row < tree.rowCount(big); row += 7)
        tree.setData(tree.index(row, 0, big), Qt::Unchecked, Qt::CheckStateRole);
    clock.restart();
    const QStringList derivedIncludes = tree.includePath(false);
    const QStringList derivedExcludes = tree.excludePath(false);
    const qint64 deriveMs = clock.elapsed();
    std::printf("derived %d includes and %d excludes from %d nodes\n", int(derivedIncludes.size()),
        int(derivedExcludes.size()), tree.rowCount(big));

    std::printf("QFileSystemModel: %.0f ms, %.0f KiB, longest stall %.0f ms\n", median(ms[0]), median(kb[0]),
        median(stalls[0]));
    std::printf("tree:             %.0f ms, %.0f KiB, longest stall %.0f ms\n", median(ms[1]), median(kb[1]),
        median(stalls[1]));
    std::printf("time ratio to QFileSystemModel: %.2f\n", median(ms[1]) / median(ms[0]));
    std::printf("memory ratio to QFileSystemModel: %.2f\n", median(kb[1]) / median(kb[0]));
    std::printf("longest stall: %.0f ms\n", median(stalls[1]));
    std::printf("restore 10000 paths: %lld ms\n", static_cast<long long>(restoreMs));
    std::printf("derive lists: %lld ms\n", static_cast<long long>(deriveMs));
    return 0;
}
