#include "storages/storage_connections_cloud_model.h"
#include "storages/storage_connections_filter_model.h"
#include "storages/storage_connections_local_model.h"
#include "storages/storage_connections_model.h"
#include "storages/storage_connections_sort_model.h"
#include "platform/communication/notification_types.h"
#include "storage_test_rows.h"
#include "support/fake_service.h"
#include "support/test_environment.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

#include <functional>
#include <memory>

using namespace TWB::GUI;
using TWB::Test::FakeService;
using TWB::Test::names;
using TWB::Test::StorageRows;
using TWB::Test::TestEnvironment;
namespace NotificationType = TWB::Common::Communication::Notification::Type;

namespace {

using Tester = QAbstractItemModelTester;
using ProxyMaker = std::function<QSortFilterProxyModel*()>;

} // namespace

Q_DECLARE_METATYPE(ProxyMaker)

/// The four views of the storage list: by type, clouds only, folders only, and sorted for the account pages.
class TestStorageConnectionsProxies : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    FakeService m_service;
    std::unique_ptr<StorageRows> m_rows;

    static bool load(StorageConnectionsModel& model)
    {
        QSignalSpy complite(&model, &BaseModel::complite);
        return model.init() && complite.wait();
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        QVERIFY(m_service.serveConsole(m_env->socketPath()));
    }

    void init()
    {
        m_rows = std::make_unique<StorageRows>(m_service);
        m_service.clearRequests();
        qputenv("USER", "alice");
    }

    void filtersSplitTheAccountsByType()
    {
        m_rows->add(QStringLiteral("Home folder"), 1);
        m_rows->add(QStringLiteral("Bucket"), 2);
        m_rows->add(QStringLiteral("Blob"), 3);
        m_rows->add(QStringLiteral("USB disk"), 1);
        m_rows->add(QStringLiteral("Server"), 33);
        StorageConnectionsModel model;
        StorageConnectionsFilterModel azure(3);
        StorageConnectionsLocalModel local;
        StorageConnectionsCloudModel cloud;
        for (QSortFilterProxyModel* proxy : {static_cast<QSortFilterProxyModel*>(&azure),
                 static_cast<QSortFilterProxyModel*>(&local), static_cast<QSortFilterProxyModel*>(&cloud)}) {
            proxy->setSourceModel(&model);
            QVERIFY(proxy->dynamicSortFilter());
            QCOMPARE(proxy->filterKeyColumn(), 5);
        }
        Tester azureTester(&azure, Tester::FailureReportingMode::QtTest);
        Tester localTester(&local, Tester::FailureReportingMode::QtTest);
        Tester cloudTester(&cloud, Tester::FailureReportingMode::QtTest);
        QVERIFY(load(model));

        QCOMPARE(names(azure), QStringList {"Blob"});
        QCOMPARE(names(local), (QStringList {"Home folder", "USB disk"}));
        QCOMPARE(names(cloud), (QStringList {"Bucket", "Blob", "Server"}));

        // Accounts that come and go by notification reach the right views.
        const QUuid added = m_rows->add(QStringLiteral("Second blob"), 3);
        m_rows->notify(NotificationType::StorageAdded, added);
        QTRY_COMPARE(names(azure), (QStringList {"Blob", "Second blob"}));
        QCOMPARE(names(cloud), (QStringList {"Bucket", "Blob", "Server", "Second blob"}));
        QCOMPARE(local.rowCount(), 2);

        const QUuid usb = QUuid(m_rows->rows.at(3).value(QStringLiteral("ID")).toString());
        m_rows->notify(NotificationType::StorageRemoved, usb);
        QTRY_COMPARE(names(local), QStringList {"Home folder"});
        QCOMPARE(cloud.rowCount(), 4);

        // An account whose type changes moves between the views at once.
        QJsonObject& bucket = m_rows->rows[1];
        bucket.insert(QStringLiteral("Type"), 3);
        m_rows->notify(NotificationType::StorageUpdated, QUuid(bucket.value(QStringLiteral("ID")).toString()));
        QTRY_COMPARE(names(azure), (QStringList {"Bucket", "Blob", "Second blob"}));
        QCOMPARE(cloud.rowCount(), 4);

        // Removing through a proxy asks the service for the account behind the proxy's row.
        QVERIFY(local.removeRows(0, 1));
        QTRY_COMPARE(m_service.requests(QStringLiteral("StorageDeleteFileSystem")).size(), 1);
        QCOMPARE(m_service.requests(QStringLiteral("StorageDeleteFileSystem"))
                     .first()
                     .params.value(QStringLiteral("ID"))
                     .toString(),
            m_rows->rows.at(0).value(QStringLiteral("ID")).toString());
    }

    void proxyMadeBeforeTheFirstLoadShowsOnlyItsRows_data()
    {
        QTest::addColumn<ProxyMaker>("make");
        QTest::addColumn<QStringList>("shown");
        QTest::addColumn<QStringList>("shownAfterReload");
        QTest::newRow("by type") << ProxyMaker([] { return new StorageConnectionsFilterModel(2); })
                                 << QStringList {"Bucket"} << QStringList {"Bucket", "Another bucket"};
        QTest::newRow("local") << ProxyMaker([] { return new StorageConnectionsLocalModel; }) << QStringList {"Folder"}
                               << QStringList {"Folder"};
        QTest::newRow("cloud") << ProxyMaker([] { return new StorageConnectionsCloudModel; })
                               << QStringList {"Bucket", "Server"}
                               << QStringList {"Bucket", "Server", "Another bucket"};
        QTest::newRow("sort, never sorted")
            << ProxyMaker([] { return new StorageConnectionsSortModel; }) << QStringList {"Bucket", "Folder", "Server"}
            << QStringList {"Bucket", "Folder", "Server", "Another bucket"};
    }

    void proxyMadeBeforeTheFirstLoadShowsOnlyItsRows()
    {
        QFETCH(ProxyMaker, make);
        QFETCH(QStringList, shown);
        QFETCH(QStringList, shownAfterReload);
        m_rows->add(QStringLiteral("Bucket"), 2);
        m_rows->add(QStringLiteral("Folder"), 1);
        m_rows->add(QStringLiteral("Server"), 33);
        StorageConnectionsModel model;
        const std::unique_ptr<QSortFilterProxyModel> proxy(make());
        proxy->setSourceModel(&model);
        // Nothing looks at the proxy until the list is in, as with a page built before the load and shown after
        // it. A tester would look at once, so it comes after the load.
        QVERIFY(load(model));
        Tester tester(proxy.get(), Tester::FailureReportingMode::QtTest);
        QCOMPARE(names(*proxy), shown);

        // A later full load that brings an account, with the proxy in use.
        m_rows->add(QStringLiteral("Another bucket"), 2);
        m_rows->notify(NotificationType::StorageListChanged);
        QTRY_COMPARE(model.rowCount(), 4);
        QCOMPARE(names(*proxy), shownAfterReload);
    }

    void sortPutsCloudsFirstThenFoldersEachByName_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<Qt::CaseSensitivity>("caseSensitivity");
        QTest::newRow("by name, as the account pages sort") << 0 << Qt::CaseInsensitive;
        QTest::newRow("by name, case-sensitive") << 0 << Qt::CaseSensitive;
        QTest::newRow("by type") << 5 << Qt::CaseInsensitive;
    }

    void sortPutsCloudsFirstThenFoldersEachByName()
    {
        QFETCH(int, column);
        QFETCH(Qt::CaseSensitivity, caseSensitivity);
        m_rows->add(QStringLiteral("aardvark files"), 1);
        m_rows->add(QStringLiteral("zebra bucket"), 2);
        m_rows->add(QStringLiteral("Backups"), 1);
        m_rows->add(QStringLiteral("alpha blob"), 3);
        m_rows->add(QStringLiteral("Beta sftp"), 33);
        StorageConnectionsModel model;
        StorageConnectionsSortModel sorted;
        sorted.setSourceModel(&model);
        Tester tester(&sorted, Tester::FailureReportingMode::QtTest);
        sorted.setSortCaseSensitivity(caseSensitivity);
        sorted.sort(column, Qt::AscendingOrder);
        QVERIFY(load(model));
        const QStringList expected {"alpha blob", "Beta sftp", "zebra bucket", "aardvark files", "Backups"};
        QCOMPARE(names(sorted), expected);

        // A new account finds its place, and a renamed one moves.
        const QUuid added = m_rows->add(QStringLiteral("Archive"), 7);
        m_rows->notify(NotificationType::StorageAdded, added);
        QTRY_COMPARE(sorted.rowCount(), 6);
        QCOMPARE(names(sorted),
            (QStringList {"alpha blob", "Archive", "Beta sftp", "zebra bucket", "aardvark files", "Backups"}));
        m_rows->rename(added, QStringLiteral("Zulu archive"));
        m_rows->notify(NotificationType::StorageUpdated, added);
        QTRY_COMPARE(names(sorted),
            (QStringList {"alpha blob", "Beta sftp", "zebra bucket", "Zulu archive", "aardvark files", "Backups"}));
    }

    void namesThatDifferInCaseOnlyKeepTheirOrder_data()
    {
        QTest::addColumn<QStringList>("served");
        QTest::newRow("lower first") << QStringList {"offsite", "OFFSITE", "Offsite"};
        QTest::newRow("upper first") << QStringList {"OFFSITE", "offsite", "Offsite"};
    }

    void namesThatDifferInCaseOnlyKeepTheirOrder()
    {
        QFETCH(QStringList, served);
        for (const QString& name : qAsConst(served))
            m_rows->add(name, 2);
        m_rows->add(QStringLiteral("a folder"), 1);
        StorageConnectionsModel model;
        StorageConnectionsSortModel sorted;
        sorted.setSourceModel(&model);
        Tester tester(&sorted, Tester::FailureReportingMode::QtTest);
        sorted.sort(0);
        QVERIFY(load(model));
        // Equal names are left in the service's order; a folder stays last whatever its name.
        QCOMPARE(names(sorted), served + QStringList {"a folder"});
    }
};

QTEST_MAIN(TestStorageConnectionsProxies)
#include "tst_storage_connections_proxies.moc"
