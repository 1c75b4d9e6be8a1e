// Browsing a storage account against the real twbd: a folder of a catalog that twbd itself reads,
// listed in parts, chosen for restore, and kept whole across a service that dies mid-listing.

#include "app/storage_browse_view.h"
#include "engine_test_support.h"
#include "peers/storage_console.h"
#include "raw_client.h"
#include "restore_wizard/storage_backup_full_model.h"
#include "restore_wizard/storage_backup_table_model.h"
#include "service/catalog/version_catalog.h"
#include "service/store/database.h"
#include "service/store/option_store.h"
#include "service/store/transaction.h"
#include "support/test_environment.h"

#include <QAbstractItemModelTester>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTreeView>
#include <QtTest>

#include <memory>
#include <signal.h>

using namespace TWB::GUI;
using TWB::Host::StorageBrowseView;
using TWB::Test::TestEnvironment;
using Tester = QAbstractItemModelTester;

namespace {

const int files = 1200;
const QString folderPath = QStringLiteral("/TWB_VOLUMES/root/data");

QString fileName(int i)
{
    return QStringLiteral("file_%1.dat").arg(i, 4, 10, QLatin1Char('0'));
}

QModelIndex child(const QAbstractItemModel& model, const QModelIndex& parent, const QString& name)
{
    const QModelIndexList hits = model.match(model.index(0, 0, parent), Qt::DisplayRole, name, 1, Qt::MatchExactly);
    return hits.isEmpty() ? QModelIndex() : hits.first();
}

// Expands each level as a user does and waits for the next name to be listed.
QModelIndex walk(QTreeView& tree, QModelIndex index, const QStringList& names)
{
    for (const QString& name : names) {
        tree.expand(index);
        QModelIndex next;
        if (!QTest::qWaitFor([&] { return (next = child(*tree.model(), index, name)).isValid(); }, 10000))
            return QModelIndex();
        index = next;
    }
    return index;
}

bool wholeFolder(const QAbstractItemModel& model, const QModelIndex& folder)
{
    if (model.rowCount(folder) != files)
        return false;
    for (int i = 0; i < files; ++i) {
        if (model.index(i, 0, folder).data().toString() != fileName(i))
            return false;
    }
    return true;
}

} // namespace

class TestStorageBrowseView : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    std::unique_ptr<TWB::Test::StorageConsole> m_console;
    QUuid m_account;

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        m_console = std::make_unique<TWB::Test::StorageConsole>(*m_env);
        QVERIFY2(m_console->start(), qPrintable(m_console->service().output()));
        TWB::Test::RawClient client;
        QVERIFY(client.connectTo(m_env->socketPath()));
        m_account = TWB::Test::EngineTestSupport::addLocalAccount(
            client, m_env->root() + QStringLiteral("/repo"), QStringLiteral("laptop"));
        QVERIFY(!m_account.isNull());
        QTRY_COMPARE(m_console->model()->rowCount(), 2);

        // The catalog as backups leave it, written while twbd is down, since it reads the store only.
        QVERIFY(m_console->service().terminate());
        {
            TWB::Service::Database store(m_env->dataDir() + QStringLiteral("/service.db"));
            store.open();
            TWB::Service::VersionCatalog catalog(store);
            TWB::Service::Transaction transaction(store);
            // Parts of 100, 100, 200, 400 and 400: a kill after the first leaves four unasked.
            TWB::Service::OptionStore(store).setValue(
                QLatin1String(TWB::Service::OptionStore::RestoreContentPageSize), QStringLiteral("100"));
            for (int i = 0; i < files; ++i) {
                for (int v = 0; v < 2; ++v) {
                    TWB::Service::CatalogVersion version;
                    version.snapshot = QStringLiteral("snap%1").arg(v);
                    version.backupTime = QDateTime(QDate(2026, 3, 1 + v), QTime(12, 0), Qt::UTC);
                    version.modified = version.backupTime.addSecs(-3600);
                    version.size = 1000 + i;
                    version.originalSize = 2000 + i;
                    version.compressed = true;
                    catalog.addVersion(m_account, QStringLiteral("laptop"), folderPath + '/' + fileName(i), version);
                }
            }
            transaction.commit();
        }
        QVERIFY2(m_console->service().start(), qPrintable(m_console->service().output()));
        QVERIFY(QTest::qWaitFor(
            [] { return TWB::Common::Communication::ConnectionManager::instance()->isLocalManagmentConnected(); },
            10000));
    }

    void cleanupTestCase()
    {
        if (m_console && m_console->service().isRunning())
            QVERIFY(m_console->service().terminate());
    }

    void chosenVersionsAndFilesAreOfferedForRestore()
    {
        // The tree's own tester runs in its model's test: here it would fetch the versions of every file.
        StorageBrowseView view(m_account, QStringLiteral("Test storage"));
        StorageBackupTableModel table;
        table.setSourceModel(view.model());
        Tester tableTester(&table, Tester::FailureReportingMode::QtTest);
        view.show();
        const QModelIndex folder
            = walk(*view.tree(), view.tree()->rootIndex(), {"laptop", "TWB_VOLUMES", "root", "data"});
        QVERIFY(folder.isValid());
        table.setFolder(folder);
        view.tree()->expand(folder);
        QTRY_VERIFY(wholeFolder(*view.model(), folder));
        // The table follows the tree's parts and shows the same rows with the tree's columns.
        QCOMPARE(table.rowCount(), files);
        QCOMPARE(table.index(7, 0).data().toString(), fileName(7));
        QCOMPARE(table.index(7, 4).data().toDouble(), 1007.0);
        QCOMPARE(table.headerData(6, Qt::Horizontal).toString(), QStringLiteral("Date Modified"));

        const QModelIndex second = view.model()->index(1, 0, folder);
        view.tree()->expand(second);
        QTRY_COMPARE(view.model()->rowCount(second), 2);
        QTRY_COMPARE(view.status()->text(), QStringLiteral("Select files, folders or versions to restore."));
        QVERIFY(!view.restoreButton()->isEnabled());
        auto* selection = view.tree()->selectionModel();
        selection->select(view.model()->index(0, 0, folder), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        selection->select(view.model()->index(1, 0, second), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        QVERIFY(view.restoreButton()->isEnabled());
        QSignalSpy requested(&view, &StorageBrowseView::restoreRequested);
        view.restoreButton()->click();
        QCOMPARE(requested.count(), 1);
        QCOMPARE(requested.first().at(0).toUuid(), m_account);
        QCOMPARE(requested.first().at(1).toStringList(),
            (QStringList {
                "/laptop" + folderPath + "/" + fileName(0), "/laptop" + folderPath + "/" + fileName(1) + "@snap0"}));

        view.tree()->scrollToTop();
        const QPixmap picture = view.grab();
        QVERIFY(picture.save(TestEnvironment::outputDir() + QStringLiteral("/storage_browse_view.png")));

        // Closing the folder's parent takes the table's folder away: the table empties, it shows no stranger's rows.
        view.tree()->collapse(folder.parent());
        QCOMPARE(table.rowCount(), 0);
        QVERIFY(!table.folder().isValid());
    }

    void folderListedWholeAfterServiceDiesMidListing()
    {
        StorageBrowseView view(m_account, QStringLiteral("Test storage"));
        view.show();
        const QModelIndex folder
            = walk(*view.tree(), view.tree()->rootIndex(), {"laptop", "TWB_VOLUMES", "root", "data"});
        QVERIFY(folder.isValid());

        // The service dies as the folder's first part is shown; the rest of the listing is never answered.
        const qint64 pid = m_console->service().pid();
        QMetaObject::Connection kill
            = connect(view.model(), &QAbstractItemModel::rowsInserted, this, [&](const QModelIndex& parent) {
                  if (parent == folder)
                      ::kill(pid_t(pid), SIGKILL);
              });
        view.tree()->expand(folder);
        QTRY_COMPARE(view.status()->text(),
            QStringLiteral("The backup service is not running. The list fills in again when it is back."));
        disconnect(kill);
        QVERIFY(view.model()->rowCount(folder) < files);
        m_console->service().kill();

        QVERIFY2(m_console->service().start(), qPrintable(m_console->service().output()));
        QTRY_VERIFY_WITH_TIMEOUT(wholeFolder(*view.model(), folder), 20000);
        QTRY_COMPARE(view.status()->text(), QStringLiteral("Select files, folders or versions to restore."));
    }
};

QTEST_MAIN(TestStorageBrowseView)
#include "tst_storage_browse_view.moc"
