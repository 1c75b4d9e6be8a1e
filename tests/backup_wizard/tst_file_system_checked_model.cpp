#include "backup_wizard/file_system_checked_model.h"
#include "backup_wizard/file_system_checked_proxy_model.h"
#include "platform/drive_shares.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QFile>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>
#include <unistd.h>

using namespace TWB::GUI;

namespace {

const QString volumePlanPath = QStringLiteral("/TWB_VOLUMES/T");

} // namespace

class TstFileSystemCheckedModel : public QObject
{
    Q_OBJECT

    QTemporaryDir dir;
    QTemporaryDir spare;
    std::unique_ptr<FileSystemCheckedModel> model;
    std::unique_ptr<FileSystemCheckedProxyModel> proxy;
    std::unique_ptr<QAbstractItemModelTester> modelTester;
    std::unique_ptr<QAbstractItemModelTester> proxyTester;

    QString real(const QString& relative) const
    {
        return relative == QLatin1String(".") ? dir.path() : dir.path() + QLatin1Char('/') + relative;
    }

    void makeFile(const QString& relative)
    {
        QFile file(real(relative));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }

    // A model whose one test volume is the temporary tree, stored in plans under "/TWB_VOLUMES/T".
    std::unique_ptr<FileSystemCheckedModel> makeModel()
    {
        // The item model tester knows only Qt's three check states and looks at the first row alone; a spare
        // volume there, never marked, keeps the fourth state out of its sight.
        return std::make_unique<FileSystemCheckedModel>(QJsonArray {
            QJsonObject {{"name", "S"}, {"path", "/TWB_VOLUMES/S"}, {"real_path", spare.path()}, {"type", 1}},
            QJsonObject {{"name", "T"}, {"path", volumePlanPath}, {"real_path", dir.path()}, {"type", 1}}});
    }

    // The item model tester opens every folder it meets, so a folder may be listed already.
    bool expand(FileSystemCheckedModel& target, const QString& relative)
    {
        const QModelIndex index = target.indexByPath(real(relative));
        if (!index.isValid())
            return false;
        if (target.canFetchMore(index))
            target.fetchMore(index);
        return QTest::qWaitFor([&] { return !target.isListing(); });
    }

    // A model the tester does not walk, for the cases that need a folder nobody has opened yet.
    std::unique_ptr<FileSystemCheckedModel> unopenedModel()
    {
        auto made = makeModel();
        return expand(*made, ".") ? std::move(made) : nullptr;
    }

    void setState(const QString& relative, int state, FileSystemCheckedModel* target = nullptr)
    {
        target = target ? target : model.get();
        const QModelIndex index = target->indexByPath(real(relative));
        QVERIFY2(index.isValid(), qPrintable(relative));
        QVERIFY(target->setData(index, state, Qt::CheckStateRole));
    }

    int state(FileSystemCheckedModel& target, const QString& relative)
    {
        return target.indexByPath(real(relative)).data(Qt::CheckStateRole).toInt();
    }

    QStringList planPaths(const QStringList& relatives)
    {
        QStringList paths;
        for (const QString& relative : relatives)
            paths << (relative == QLatin1String(".") ? volumePlanPath : volumePlanPath + QLatin1Char('/') + relative);
        return paths;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(dir.isValid());
        // Others must pass through for the test that drops root's rights.
        QFile::setPermissions(dir.path(), QFile::permissions(dir.path()) | QFile::ReadOther | QFile::ExeOther);
        for (const char* folder : {"a", "a/sub", "b", ".dot", "locked", "empty"})
            QVERIFY(QDir(dir.path()).mkpath(QString::fromLatin1(folder)));
        for (const char* file : {"a/a1.txt", "a/a2.txt", "a/.hidden_a", "a/sub/s1.txt", "b/b1.txt", "c.txt", ".dot/d1"})
            makeFile(QString::fromLatin1(file));
        QVERIFY(QFile::link(real("b"), real("link_to_b")));
        QVERIFY(QFile::link(QStringLiteral("."), real("loop")));
        QVERIFY(QFile::link(QStringLiteral(".."), real("a/up")));
        QVERIFY(QFile::setPermissions(real("locked"), QFileDevice::Permissions()));
    }

    void init()
    {
        model = makeModel();
        proxy = std::make_unique<FileSystemCheckedProxyModel>();
        modelTester = std::make_unique<QAbstractItemModelTester>(model.get());
        proxy->setSourceModel(model.get());
        proxyTester = std::make_unique<QAbstractItemModelTester>(proxy.get());
        for (const char* folder : {".", "a", "a/sub", "b"})
            QVERIFY(expand(*model, QString::fromLatin1(folder)));
    }

    void cleanup()
    {
        proxyTester.reset();
        modelTester.reset();
        proxy.reset();
        model.reset();
    }

    void listsFoldersFirstWithHiddenRowsAndLinks()
    {
        const QModelIndex volume = model->indexByPath(dir.path());
        QStringList names;
        for (int row = 0; row < model->rowCount(volume); ++row)
            names << model->index(row, 0, volume).data().toString();
        QCOMPARE(names, QStringList({".dot", "a", "b", "empty", "link_to_b", "locked", "c.txt", "loop"}));
        const QModelIndex link = model->indexByPath(real("link_to_b"));
        QVERIFY(model->hasChildren(link));
        QCOMPARE(model->index(link.row(), 1, volume).data().toString(), volumePlanPath + "/link_to_b");

        const QModelIndex proxyVolume = proxy->mapFromSource(volume);
        QCOMPARE(proxy->rowCount(proxyVolume), names.size() - 1);
        proxy->setIsShowHidden(true);
        QCOMPARE(proxy->rowCount(proxyVolume), names.size());
        QCOMPARE(proxy->index(0, 0, proxyVolume).data().toString(), QStringLiteral(".dot"));
    }

    void symlinkLoopIsNotFollowed()
    {
        for (const char* loop : {"loop", "a/up"}) {
            const QModelIndex index = model->indexByPath(real(QString::fromLatin1(loop)));
            QVERIFY2(!model->hasChildren(index), loop);
            QVERIFY(!model->canFetchMore(index));
        }
        QVERIFY(expand(*model, "link_to_b"));
        QVERIFY(model->indexByPath(real("link_to_b/b1.txt")).isValid());
    }

    void unreadableFolderShowsAsSuch_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("reason");
        QTest::newRow("permission denied") << "locked"
                                           << "Permission denied";
        QTest::newRow("vanished") << "empty"
                                  << "No such file or directory";
    }

    void unreadableFolderShowsAsSuch()
    {
        QFETCH(QString, folder);
        QFETCH(QString, reason);
        // Root reads any folder; the listing threads read as nobody for this test.
        const bool dropRights = geteuid() == 0 && folder == QLatin1String("locked");
        auto fresh = unopenedModel();
        QVERIFY(fresh);
        if (folder == QLatin1String("empty"))
            QVERIFY(QDir(real(folder)).removeRecursively());
        if (dropRights)
            QCOMPARE(seteuid(65534), 0);
        const bool listed = expand(*fresh, folder);
        if (dropRights)
            QCOMPARE(seteuid(0), 0);
        if (folder == QLatin1String("empty"))
            QVERIFY(QDir(dir.path()).mkdir(folder));
        QVERIFY(listed);
        const QModelIndex index = fresh->indexByPath(real(folder));
        QCOMPARE(index.data(Qt::ToolTipRole).toString(), reason);
        QVERIFY(!fresh->hasChildren(index));
        QVERIFY(!fresh->canFetchMore(index));
        QCOMPARE(fresh->rowCount(index), 0);
    }

    void marksPropagate_data()
    {
        QTest::addColumn<QStringList>("marks");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<QStringList>("includes");
        QTest::addColumn<QStringList>("excludes");
        QTest::newRow("file in untouched folders")
            << QStringList {"a/sub/s1.txt=2"} << QStringList {"a/sub=1001", "a=1001", ".=1001", "b=0"}
            << QStringList {"a/sub/s1.txt"} << QStringList {};
        QTest::newRow("folder with one child out")
            << QStringList {"a=2", "a/a1.txt=0"} << QStringList {"a=1", "a/sub/s1.txt=2", ".=1001"} << QStringList {"a"}
            << QStringList {"a/a1.txt"};
        QTest::newRow("last open child completes the chain")
            << QStringList {".=2", "a/a1.txt=0", "a/a1.txt=2"} << QStringList {"a=2", ".=2"} << QStringList {"."}
            << QStringList {};
        QTest::newRow("1001 folder is never promoted")
            << QStringList {"b/b1.txt=2"} << QStringList {"b=1001"} << QStringList {"b/b1.txt"} << QStringList {};
        QTest::newRow("hidden child counts while hidden")
            << QStringList {"a=2", "a/.hidden_a=0", "a/a1.txt=0", "a/a1.txt=2"} << QStringList {"a=1"}
            << QStringList {"a"} << QStringList {"a/.hidden_a"};
        QTest::newRow("unchecking the last mark clears the ancestors")
            << QStringList {"a/sub/s1.txt=2", "a/sub/s1.txt=0"} << QStringList {"a/sub=0", "a=0", ".=0"}
            << QStringList {} << QStringList {};
        QTest::newRow("unchecking inside a whole volume marks the direct parent")
            << QStringList {".=2", "a/sub/s1.txt=0"} << QStringList {"a/sub=1", "a=1", ".=1", "b=2"}
            << QStringList {"."} << QStringList {"a/sub/s1.txt"};
        QTest::newRow("1001 child of a partial folder stands in both lists")
            << QStringList {"a=2", "a/sub=0", "a/sub/s1.txt=2"} << QStringList {"a=1", "a/sub=1001"}
            << QStringList {"a/sub/s1.txt", "a"} << QStringList {"a/sub"};
    }

    void marksPropagate()
    {
        QFETCH(QStringList, marks);
        QFETCH(QStringList, expected);
        QFETCH(QStringList, includes);
        QFETCH(QStringList, excludes);
        for (const QString& mark : qAsConst(marks))
            setState(mark.section('=', 0, 0), mark.section('=', 1).toInt());
        for (const QString& pair : qAsConst(expected))
            QCOMPARE(state(*model, pair.section('=', 0, 0)), pair.section('=', 1).toInt());
        QCOMPARE(model->includePath(false), planPaths(includes));
        QCOMPARE(model->excludePath(false), planPaths(excludes));

        // Nothing changes and nothing is announced when a mark is set to what it is.
        QSignalSpy changes(model.get(), &QAbstractItemModel::dataChanged);
        const QModelIndex first = model->indexByPath(real(marks.first().section('=', 0, 0)));
        QVERIFY(!model->setData(first, first.data(Qt::CheckStateRole), Qt::CheckStateRole));
        QVERIFY(changes.isEmpty());
    }

    void childrenArriveInTheirFolderState_data()
    {
        QTest::addColumn<int>("folderState");
        QTest::addColumn<int>("childState");
        QTest::newRow("checked") << 2 << 2;
        QTest::newRow("partially checked") << 1 << 0;
        QTest::newRow("incomplete") << 1001 << 0;
        QTest::newRow("unchecked") << 0 << 0;
    }

    void childrenArriveInTheirFolderState()
    {
        QFETCH(int, folderState);
        QFETCH(int, childState);
        auto fresh = unopenedModel();
        QVERIFY(fresh);
        const QModelIndex link = fresh->indexByPath(real("link_to_b"));
        fresh->setData(link, folderState, Qt::CheckStateRole);
        QVERIFY(fresh->canFetchMore(link));
        QVERIFY(expand(*fresh, "link_to_b"));
        QCOMPARE(state(*fresh, "link_to_b/b1.txt"), childState);
        QCOMPARE(state(*fresh, "link_to_b"), folderState);
    }

    void reloadRestoresTheSameMarks()
    {
        for (const char* mark : {"a=2", "a/.hidden_a=0", "a/sub=0", "a/sub/s1.txt=2", "b/b1.txt=2", "c.txt=2"}) {
            const QString text = QString::fromLatin1(mark);
            setState(text.section('=', 0, 0), text.section('=', 1).toInt());
        }
        const QStringList includes = model->includePath(false);
        const QStringList excludes = model->excludePath(false);
        QCOMPARE(model->unReplacePath(includes), model->includePath(true));

        auto restored = makeModel();
        QAbstractItemModelTester tester(restored.get());
        restored->initChecked(includes, excludes);
        QVERIFY(QTest::qWaitFor([&] { return !restored->isListing(); }));
        QCOMPARE(restored->includePath(false), includes);
        QCOMPARE(restored->excludePath(false), excludes);
        for (const char* node :
            {".", "a", "a/a1.txt", "a/.hidden_a", "a/sub", "a/sub/s1.txt", "b", "b/b1.txt", "c.txt"})
            QCOMPARE(state(*restored, QString::fromLatin1(node)), state(*model, QString::fromLatin1(node)));

        // Without anything included a plan restores nothing, whatever it excludes.
        auto empty = makeModel();
        empty->initChecked({}, excludes);
        QVERIFY(!empty->isListing());
        QVERIFY(!empty->indexByPath(real("a")).isValid());
    }

    void planPathsFollowTheMounts_data()
    {
        QTest::addColumn<QString>("real");
        QTest::addColumn<QString>("plan");
        QTest::addColumn<QString>("catalog");
        QTest::newRow("root") << "/"
                              << "/TWB_VOLUMES/root"
                              << "/TWB_VOLUMES/root";
        QTest::newRow("home") << "/home/u/x"
                              << "/TWB_VOLUMES/root/home/u/x"
                              << "/TWB_VOLUMES/root/home/u/x";
        QTest::newRow("usb stick") << "/media/u/USB/f"
                                   << "/TWB_VOLUMES/USB/f"
                                   << "/TWB_VOLUMES/root/media/u/USB/f";
        QTest::newRow("network share") << "/mnt/nas/p"
                                       << "/TWB_SHARES/nas/p"
                                       << "/TWB_SHARES/nas/p";
        QTest::newRow("name prefix is no mount") << "/mnt/nasty"
                                                 << "/TWB_VOLUMES/root/mnt/nasty"
                                                 << "/TWB_VOLUMES/root/mnt/nasty";
    }

    void planPathsFollowTheMounts()
    {
        QFETCH(QString, real);
        QFETCH(QString, plan);
        QFETCH(QString, catalog);
        const TWB::Info::DriveShares shares(
            {{"/", "ext4"}, {"/proc", "proc"}, {"/media/u/USB", "vfat"}, {"/mnt/nas", "nfs4"}});
        QCOMPARE(shares.planPath(real), plan);
        QCOMPARE(shares.get_local_path(plan, 0), real);
        QCOMPARE(shares.getSqlPathFromLocal(real), catalog);
        QCOMPARE(shares.volumes().size(), 3);
    }
};

QTEST_MAIN(TstFileSystemCheckedModel)
#include "tst_file_system_checked_model.moc"
