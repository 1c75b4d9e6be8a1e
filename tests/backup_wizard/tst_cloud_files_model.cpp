#include "backup_wizard/cloud_files_model.h"
#include "peers/storage_console.h"
#include "platform/cloud/account_keys.h"
#include "platform/settings/default_settings.h"
#include "raw_client.h"
#include "support/cloud_peers.h"
#include "support/log_capture.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

using namespace TWB::GUI;

/// What a bucket of moto's S3 server holds, as the cloud file tree lists it for an account of the real twbd.
class TstCloudFilesModel : public QObject
{
    Q_OBJECT

    TWB::Test::TestEnvironment env;
    TWB::Test::MotoPeer moto;
    std::unique_ptr<TWB::Test::StorageConsole> console;
    QMap<QString, QUuid> accounts; // by bucket

    static bool show(CloudFilesModel& model, const QUuid& account)
    {
        model.onSetStorage(account);
        return model.rowCount() == 1 && model.checkCloudConfig();
    }

    // Opens each folder unless the model tester did, and waits for its last page.
    static bool open(CloudFilesModel& model, const QStringList& folders)
    {
        for (const QString& folder : folders) {
            const QModelIndex index = folder.isEmpty() ? model.index(0, 0) : model.indexByPath(folder);
            if (model.canFetchMore(index))
                model.fetchMore(index);
            if (!index.isValid() || !QTest::qWaitFor([&model] { return !model.isListing(); }, 60000))
                return false;
        }
        return true;
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
        if (!TWB::Test::MotoPeer::missing().isEmpty())
            QSKIP(qPrintable(TWB::Test::MotoPeer::missing()));
        QVERIFY2(moto.start(), qPrintable(moto.output()));
        QProcess seed;
        seed.start(QStringLiteral("python3"),
            {QStringLiteral(TWB_CLOUD_TREE_SEED), "http://" + moto.endpoint(), moto.accessKey(), moto.secretKey()});
        // The event loop drains the peer's log of each request meanwhile, which would stall it once full.
        QTRY_VERIFY_WITH_TIMEOUT(seed.state() == QProcess::NotRunning, 120000);
        QVERIFY2(seed.exitCode() == 0, seed.readAllStandardError().constData());
        console = std::make_unique<TWB::Test::StorageConsole>(env);
        QVERIFY2(console->start(), qPrintable(console->service().output()));
        TWB::Test::RawClient client;
        QVERIFY(client.connectTo(env.socketPath()));
        for (const QString& bucket : {QStringLiteral("tree"), QStringLiteral("pages")}) {
            accounts.insert(bucket, QUuid::createUuid());
            QVERIFY(client
                        .call(QStringLiteral("SaveStorage"),
                            {{"ID", accounts.value(bucket).toString()}, {"displayName", bucket}, {"prefix", "office"},
                                {"type", int(TWL::Cloud::S3Compatible)}, {"params", moto.document(bucket)}})
                        .success);
            QTRY_VERIFY(console->rowOf(bucket) >= 0);
        }
        TWB::DefaultSettings::instance()->setChunkSize(QStringLiteral("10485760"));
    }

    void cleanupTestCase()
    {
        if (console)
            QVERIFY2(console->service().terminate(), qPrintable(console->service().output()));
    }

    void containerListsItsComputersThenAFoldersRows()
    {
        CloudFilesModel model;
        QAbstractItemModelTester tester(&model);
        QVERIFY(show(model, accounts.value("tree")));
        QVERIFY(open(model, {"", "TWB_office/", "TWB_office/docs/"}));
        QCOMPARE(model.cloudConfig().value(TWL::Cloud::Key::ChunkSize).toULongLong(), 10485760ULL);
        const QModelIndex container = model.index(0, 0);
        QCOMPARE(container.data().toString(), QStringLiteral("tree"));
        // Only the computers' folders stand at the top: "stray.txt" is nobody's backup.
        QCOMPARE(column(container, 0), QStringList({"laptop", "office"}));
        QCOMPARE(column(container, 1), QStringList({"TWB_laptop/", "TWB_office/"}));
        QCOMPARE(column(container, 5), QStringList({"2", "2"}));
        const QModelIndex office = model.indexByPath("TWB_office/");
        QCOMPARE(column(office, 0), QStringList({"docs", "readme.txt"}));
        QCOMPARE(column(office, 1), QStringList({"TWB_office/docs/", "TWB_office/readme.txt"}));
        QCOMPARE(column(office, 5), QStringList({"1", "0"}));
        QVERIFY(!model.hasChildren(model.indexByPath("TWB_office/readme.txt")));
        const QModelIndex docs = model.indexByPath("TWB_office/docs/");
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
        // No model tester here: it would open the folder itself, and walk thousands of rows at each signal.
        CloudFilesModel model;
        QVERIFY(show(model, accounts.value("pages")));
        QVERIFY(open(model, {"", "TWB_big/"}));
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QSignalSpy finished(&model, &CloudFilesModel::listingFinished);
        TWB::Test::LogCapture log;
        QVERIFY(open(model, {folder}));
        // A last page that is full asks for no further, empty one.
        QCOMPARE(log.count(QtDebugMsg, "TWB", "Finished listing operation"), pages);
        const QModelIndex index = model.indexByPath(folder);
        QCOMPARE(model.rowCount(index), rows);
        QCOMPARE(inserted.count(), pages);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(model.index(0, 0, index).data().toString(), QStringLiteral("0000"));
        const QString last = QStringLiteral("%1").arg(rows - 1, 4, 10, QLatin1Char('0'));
        QCOMPARE(model.index(rows - 1, 1, index).data().toString(), folder + last);
    }
};

QTEST_MAIN(TstCloudFilesModel)
#include "tst_cloud_files_model.moc"
