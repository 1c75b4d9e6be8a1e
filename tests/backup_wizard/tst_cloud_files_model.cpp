#include "backup_wizard/cloud_files_model.h"
#include "peers/storage_console.h"
#include "platform/cloud/account_keys.h"
#include "platform/cloud/cloud_type.h"
#include "platform/settings/default_settings.h"
#include "raw_client.h"
#include "support/cloud_peers.h"
#include "support/test_environment.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

#include <memory>
#include <tuple>

using namespace TWB::GUI;
using TWB::Test::MotoPeer;

namespace {
const QString bucket = QStringLiteral("tree");
const QString pagesBucket = QStringLiteral("pages");
} // namespace

/// What a bucket holds, as the cloud file tree lists it from moto's S3 server, for an account that the
/// real twbd keeps and the shared storage list shows.
class TstCloudFilesModel : public QObject
{
    Q_OBJECT

    std::unique_ptr<TWB::Test::TestEnvironment> env;
    std::unique_ptr<MotoPeer> moto;
    std::unique_ptr<TWB::Test::StorageConsole> console;
    QUuid account;
    QUuid pagesAccount;
    std::unique_ptr<CloudFilesModel> model;
    std::unique_ptr<QAbstractItemModelTester> tester;

    // Opens a folder, unless the model tester did, and waits for its last page.
    static QModelIndex open(CloudFilesModel& target, const QString& path)
    {
        const QModelIndex index = path.isEmpty() ? target.index(0, 0) : target.indexByPath(path);
        if (target.canFetchMore(index))
            target.fetchMore(index);
        if (!QTest::qWaitFor([&target] { return !target.isListing(); }, 60000))
            return QModelIndex();
        return index;
    }

    QModelIndex open(const QString& path) { return open(*model, path); }

    bool showAccount(CloudFilesModel& target, const QUuid& id)
    {
        target.onSetStorage(id);
        return target.rowCount() == 1 && target.checkCloudConfig();
    }

    static QStringList column(const QModelIndex& parent, int column)
    {
        QStringList texts;
        for (int row = 0; row < parent.model()->rowCount(parent); ++row)
            texts << parent.model()->index(row, column, parent).data().toString();
        return texts;
    }

private slots:
    void initTestCase()
    {
        if (!MotoPeer::missing().isEmpty())
            QSKIP(qPrintable(MotoPeer::missing()));
        env = std::make_unique<TWB::Test::TestEnvironment>();
        moto = std::make_unique<MotoPeer>();
        QVERIFY2(moto->start(), qPrintable(moto->output()));
        QProcess seed;
        seed.start(QStringLiteral("python3"),
            {QStringLiteral(TWB_CLOUD_TREE_SEED), QStringLiteral("http://") + moto->endpoint(), moto->accessKey(),
                moto->secretKey()});
        // The event loop must run meanwhile: it drains the peer's log of each request, which would stall the
        // peer once its pipe is full.
        QTRY_VERIFY_WITH_TIMEOUT(seed.state() == QProcess::NotRunning, 120000);
        QVERIFY2(seed.exitCode() == 0, seed.readAllStandardError().constData());
        console = std::make_unique<TWB::Test::StorageConsole>(*env);
        QVERIFY2(console->start(), qPrintable(console->service().output()));
        TWB::Test::RawClient client;
        QVERIFY(client.connectTo(env->socketPath()));
        for (const auto& [id, name, container] : {std::make_tuple(&account, QStringLiteral("Tree"), bucket),
                 std::make_tuple(&pagesAccount, QStringLiteral("Pages"), pagesBucket)}) {
            *id = QUuid::createUuid();
            QVERIFY(client
                        .call(QStringLiteral("SaveStorage"),
                            {{QStringLiteral("ID"), id->toString()}, {QStringLiteral("displayName"), name},
                                {QStringLiteral("prefix"), QStringLiteral("office")},
                                {QStringLiteral("type"), int(TWL::Cloud::S3Compatible)},
                                {QStringLiteral("params"), moto->document(container)}})
                        .success);
            QTRY_VERIFY(console->rowOf(name) >= 0);
        }
        TWB::DefaultSettings::instance()->setChunkSize(QStringLiteral("10485760"));
    }

    void init()
    {
        model = std::make_unique<CloudFilesModel>();
        tester = std::make_unique<QAbstractItemModelTester>(model.get());
        QVERIFY(showAccount(*model, account));
    }

    void cleanup()
    {
        tester.reset();
        model.reset();
    }

    void cleanupTestCase()
    {
        if (console)
            QVERIFY2(console->service().terminate(), qPrintable(console->service().output()));
    }

    void containerListsItsComputersThenAFoldersRows()
    {
        QCOMPARE(model->cloudConfig().value(TWL::Cloud::Key::ChunkSize).toULongLong(), 10485760ULL);
        const QModelIndex container = open(QString());
        QVERIFY(container.isValid());
        QCOMPARE(container.data().toString(), bucket);
        // Only the computers' folders stand at the top; "stray.txt" is nobody's backup.
        QCOMPARE(column(container, 0), QStringList({"laptop", "office"}));
        QCOMPARE(column(container, 1), QStringList({"TWB_laptop/", "TWB_office/"}));
        QCOMPARE(model->index(1, 5, container).data().toInt(), 2);

        const QModelIndex office = open(QStringLiteral("TWB_office/"));
        QCOMPARE(column(office, 0), QStringList({"docs", "readme.txt"}));
        QCOMPARE(column(office, 1), QStringList({"TWB_office/docs/", "TWB_office/readme.txt"}));
        QCOMPARE(column(office, 5), QStringList({"1", "0"}));
        QVERIFY(model->hasChildren(model->indexByPath(QStringLiteral("TWB_office/docs/"))));
        QVERIFY(!model->hasChildren(model->indexByPath(QStringLiteral("TWB_office/readme.txt"))));

        const QModelIndex docs = open(QStringLiteral("TWB_office/docs/"));
        QCOMPARE(column(docs, 0), QStringList({"2026", "letter.txt"}));
        QCOMPARE(column(docs, 1), QStringList({"TWB_office/docs/2026/", "TWB_office/docs/letter.txt"}));
    }

    void largeFolderArrivesInPagesOfAThousand_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("pages");
        QTest::newRow("exactly a thousand: one page, no marker") << QStringLiteral("TWB_big/exact/") << 1000 << 1;
        QTest::newRow("one more: a second page from the marker") << QStringLiteral("TWB_big/many/") << 1001 << 2;
    }

    void largeFolderArrivesInPagesOfAThousand()
    {
        QFETCH(QString, folder);
        QFETCH(int, rows);
        QFETCH(int, pages);
        // The model tester opens every folder it meets; the pages are counted on a model nobody walks, which
        // also spares the tester's walk over thousands of rows after each signal.
        CloudFilesModel unwalked;
        QVERIFY(showAccount(unwalked, pagesAccount));
        open(unwalked, QString());
        open(unwalked, QStringLiteral("TWB_big/"));
        const QModelIndex index = unwalked.indexByPath(folder);
        QVERIFY(unwalked.canFetchMore(index));
        QSignalSpy inserted(&unwalked, &QAbstractItemModel::rowsInserted);
        QSignalSpy finished(&unwalked, &CloudFilesModel::listingFinished);
        open(unwalked, folder);
        QCOMPARE(unwalked.rowCount(index), rows);
        QCOMPARE(inserted.count(), pages);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(unwalked.index(0, 0, index).data().toString(), QStringLiteral("0000"));
        const QString last = QStringLiteral("%1").arg(rows - 1, 4, 10, QLatin1Char('0'));
        QCOMPARE(unwalked.index(rows - 1, 1, index).data().toString(), folder + last);
    }

    void choosingAStorageDropsListingsUnderWay()
    {
        if (model->canFetchMore(model->index(0, 0)))
            model->fetchMore(model->index(0, 0));
        QVERIFY(model->isListing());
        QSignalSpy finished(model.get(), &CloudFilesModel::listingFinished);
        QSignalSpy reset(model.get(), &QAbstractItemModel::modelReset);
        model->onSetStorage(QUuid::createUuid());
        QCOMPARE(reset.count(), 1);
        QCOMPARE(finished.count(), 1);
        QVERIFY(!model->isListing());
        QCOMPARE(model->rowCount(), 0);
    }
};

QTEST_MAIN(TstCloudFilesModel)
#include "tst_cloud_files_model.moc"
