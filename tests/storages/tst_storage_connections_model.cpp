#include "storages/storage_connections_cloud_model.h"
#include "storages/storage_connections_filter_model.h"
#include "storages/storage_connections_local_model.h"
#include "storages/storage_connections_model.h"
#include "storages/storage_connections_sort_model.h"
#include "platform/communication/connection_manager.h"
#include "platform/communication/manager.h"
#include "platform/communication/notification_center.h"
#include "platform/communication/notification_types.h"
#include "storage_test_rows.h"
#include "support/fake_service.h"
#include "support/log_capture.h"
#include "support/test_environment.h"

#include <QAbstractItemModelTester>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

#include <functional>
#include <memory>

using namespace TWB::GUI;
using TWB::Common::Communication::ConnectionManager;
using TWB::Common::Communication::Manager;
using TWB::Common::Communication::NotificationCenter;
using TWB::Test::FakeReply;
using TWB::Test::FakeRequest;
using TWB::Test::FakeService;
using TWB::Test::LogCapture;
using TWB::Test::names;
using TWB::Test::StorageRows;
using TWB::Test::TestEnvironment;
namespace NotificationType = TWB::Common::Communication::Notification::Type;

namespace {

using Tester = QAbstractItemModelTester;
using ProxyMaker = std::function<QSortFilterProxyModel*()>;

int rowOf(const QAbstractItemModel& model, const QUuid& id)
{
    const QModelIndexList hits = model.match(model.index(0, 1), Qt::DisplayRole, id.toString(), 1, Qt::MatchExactly);
    return hits.isEmpty() ? -1 : hits.first().row();
}

/// Writes the model's row signals into a list, in the order they come.
void recordSignals(StorageConnectionsModel& model, QStringList& out)
{
    QObject::connect(&model, &QAbstractItemModel::dataChanged, &model,
        [&out](const QModelIndex& from, const QModelIndex& to, const QVector<int>& roles) {
            out << QStringLiteral("changed %1 %2-%3%4")
                       .arg(from.row())
                       .arg(from.column())
                       .arg(to.column())
                       .arg(roles.isEmpty() ? QString() : QStringLiteral(" with roles"));
        });
    QObject::connect(
        &model, &QAbstractItemModel::rowsInserted, &model, [&out](const QModelIndex&, int first, int last) {
            out << QStringLiteral("inserted %1-%2").arg(first).arg(last);
        });
    QObject::connect(&model, &QAbstractItemModel::rowsRemoved, &model, [&out](const QModelIndex&, int first, int last) {
        out << QStringLiteral("removed %1-%2").arg(first).arg(last);
    });
    QObject::connect(&model, &BaseModel::complite, &model, [&out] { out << QStringLiteral("complite"); });
}

QImage pixels(const QIcon& icon)
{
    return icon.pixmap(16, 16).toImage();
}

} // namespace

Q_DECLARE_METATYPE(ProxyMaker)

/// The storage list against a scripted service: loading, refreshing, removing and following notifications,
/// and its four views: by type, clouds only, folders only, and sorted for the account pages.
class TestStorageConnectionsModel : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    FakeService m_service;
    std::unique_ptr<StorageRows> m_rows;

    /// A model holding the service's present accounts. The tester is attached once the first load is in: a
    /// full load announces new rows only after their data, which the tester rightly reads as a breach.
    static bool load(StorageConnectionsModel& model)
    {
        QSignalSpy complite(&model, &BaseModel::complite);
        return model.init() && complite.wait();
    }

    std::unique_ptr<StorageConnectionsModel> loadedModel()
    {
        auto model = std::make_unique<StorageConnectionsModel>();
        QSignalSpy complite(model.get(), &BaseModel::complite);
        if (!model->init() || !complite.wait())
            return nullptr;
        return model;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        QVERIFY(m_service.serveConsole(m_env->socketPath()));
    }

    void init()
    {
        QTRY_VERIFY(ConnectionManager::instance()->isLocalManagmentConnected());
        m_rows = std::make_unique<StorageRows>(m_service);
        m_service.on(QStringLiteral("StorageDeleteFileSystem"),
            FakeReply::ok({{QStringLiteral("storageDeleteFileSystem"), QStringLiteral("success")}}));
        m_service.clearRequests();
        qputenv("USER", "alice");
        QFile::remove(m_env->configFile());
    }

    void fullLoadShowsEveryAccountAsTheServiceSentIt()
    {
        const QUuid home = m_rows->add(QStringLiteral("Home NAS"), 1);
        const QUuid s3 = m_rows->add(QStringLiteral("Offsite"), 2);
        StorageConnectionsModel model;
        QSignalSpy updated(&model, &BaseModel::updated);
        QSignalSpy complite(&model, &BaseModel::complite);
        QVERIFY(model.init());
        QCOMPARE(updated.count(), 1);
        QVERIFY(complite.wait());
        Tester tester(&model, Tester::FailureReportingMode::QtTest);

        // The list request names nothing: the service answers with every account of the session.
        const FakeRequest request = m_service.requests(QStringLiteral("StorageGetConnection")).first();
        QVERIFY(request.params.isEmpty());

        QCOMPARE(model.rowCount(), 2);
        QCOMPARE(model.columnCount(), 10);
        QCOMPARE(names(model), (QStringList {"Home NAS", "Offsite"}));
        QCOMPARE(QUuid(model.index(0, 1).data().toString()), home);
        QCOMPARE(model.index(0, 2).data().toString(), QStringLiteral("/srv/backup/Home NAS"));
        QCOMPARE(model.index(0, 3).data().toString(), QStringLiteral("laptop"));
        QCOMPARE(model.index(0, 4).data().toStringList(), (QStringList {"laptop", "desktop"}));
        QCOMPARE(model.index(1, 5).data().toInt(), 2);
        QCOMPARE(model.index(1, 6).data().toLongLong(), 500107862016LL);
        QCOMPARE(model.index(1, 7).data().toLongLong(), 1073741824LL);
        QCOMPARE(model.index(1, 9).data().toBool(), false);
        QCOMPARE(QUuid(model.index(1, 1).data().toString()), s3);

        // The back-end's settings come out as the JSON object they were saved as, nested values included.
        const QVariant detail = model.index(1, 8).data();
        QCOMPARE(detail.userType(), qMetaTypeId<QJsonObject>());
        QCOMPARE(
            detail.toJsonObject().value(QStringLiteral("ContainerName")).toString(), QStringLiteral("offsite-bucket"));
        QCOMPARE(detail.toJsonObject().value(QStringLiteral("UseSsl")).toBool(), true);
        QCOMPARE(model.index(0, 8).data().toJsonObject().value(QStringLiteral("Path")).toString(),
            QStringLiteral("/srv/backup/Home NAS"));

        QVERIFY(!model.index(0, 0).data(Qt::DecorationRole).value<QIcon>().isNull());
    }

    void newAccountsOfAFullLoadAreAnnouncedOnceAfterTheirData()
    {
        const QUuid kept = m_rows->add(QStringLiteral("Kept"), 2);
        const QUuid gone = m_rows->add(QStringLiteral("Gone"), 3);
        auto model = loadedModel();
        QVERIFY(model);
        // A sorted proxy under a tester: whatever the order of the list's own signals, a view must stay consistent.
        StorageConnectionsSortModel sorted;
        sorted.setSourceModel(model.get());
        sorted.sort(0);
        Tester sortedTester(&sorted, Tester::FailureReportingMode::QtTest);

        m_rows->remove(gone);
        m_rows->rename(kept, QStringLiteral("Kept, renamed"));
        const QUuid first = m_rows->add(QStringLiteral("First new"), 1);
        m_rows->add(QStringLiteral("Second new"), 7);
        QStringList seen;
        recordSignals(*model, seen);
        QSignalSpy complite(model.get(), &BaseModel::complite);
        m_rows->notify(NotificationType::StorageListChanged);
        QVERIFY(complite.wait());

        QCOMPARE(seen,
            (QStringList {
                "changed 0 0-9", "changed 2 0-9", "changed 3 0-9", "inserted 2-3", "removed 1-1", "complite"}));
        QCOMPARE(names(*model), (QStringList {"Kept, renamed", "First new", "Second new"}));
        QCOMPARE(rowOf(*model, first), 1);
    }

    void failedLoadKeepsTheRows_data()
    {
        QTest::addColumn<FakeReply>("reply");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("refresh"); // one account's refresh instead of a full load
        QTest::newRow("service refuses") << FakeReply::fail(QStringLiteral("The account store is locked"))
                                         << "The account store is locked" << false;
        QTest::newRow("connection lost") << FakeReply::closeConnection() << "Local command reply format error" << false;
        QTest::newRow("refresh refused") << FakeReply::fail(QStringLiteral("Store is busy")) << "Store is busy" << true;
    }

    void failedLoadKeepsTheRows()
    {
        QFETCH(FakeReply, reply);
        QFETCH(QString, text);
        QFETCH(bool, refresh);
        m_rows->add(QStringLiteral("Stays"), 1);
        const QUuid second = m_rows->add(QStringLiteral("Stays too"), 2);
        auto model = loadedModel();
        QVERIFY(model);
        Tester tester(model.get(), Tester::FailureReportingMode::QtTest);
        m_service.on(QStringLiteral("StorageGetConnection"), reply);
        LogCapture log;
        QSignalSpy error(model.get(), &BaseModel::error);
        QSignalSpy complite(model.get(), &BaseModel::complite);
        if (refresh)
            m_rows->notify(NotificationType::StorageUpdated, second);
        else
            QVERIFY(model->init());
        QVERIFY(error.wait());
        QCOMPARE(error.at(0).at(0).toString(), text);
        QVERIFY(log.contains(QtWarningMsg, QStringLiteral("TWB"), text));
        QCOMPARE(complite.count(), 0);
        QCOMPARE(names(*model), (QStringList {"Stays", "Stays too"}));
    }

    void needRetryKeepsTheRowsAndAsksAgainAMinuteLater()
    {
        m_rows->add(QStringLiteral("Before"), 2);
        auto model = loadedModel();
        QVERIFY(model);
        Tester tester(model.get(), Tester::FailureReportingMode::QtTest);
        m_rows->needRetry = true;
        m_service.clearRequests();
        LogCapture log;
        QSignalSpy complite(model.get(), &BaseModel::complite);
        QSignalSpy error(model.get(), &BaseModel::error);
        QSignalSpy asked(&m_service, &FakeService::requestReceived);
        QVERIFY(model->init());
        QVERIFY(asked.wait());
        QTRY_VERIFY(log.contains(QtWarningMsg, QStringLiteral("TWB"),
            QStringLiteral("GetConnection command return need retry... timeout 1 min")));
        QCOMPARE(names(*model), QStringList {"Before"});
        QCOMPARE(complite.count(), 0);
        QCOMPARE(error.count(), 0);

        auto* retry = model->findChild<QTimer*>();
        QVERIFY(retry && retry->isActive());
        QCOMPARE(retry->interval(), 60000);

        // The minute is cut short here; the retry itself is the model's.
        m_rows->needRetry = false;
        m_rows->rename(QUuid(m_rows->rows.first().value(QStringLiteral("ID")).toString()), QStringLiteral("After"));
        retry->setInterval(0);
        QVERIFY(complite.wait());
        QCOMPARE(names(*model), QStringList {"After"});
        QCOMPARE(m_service.requests(QStringLiteral("StorageGetConnection")).size(), 2);
    }

    void addOrUpdateInsertsOrChangesOneRow_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<bool>("known");
        QTest::addColumn<QString>("signal");
        QTest::newRow("add, new account") << NotificationType::StorageAdded << false << "inserted 1-1";
        QTest::newRow("add, known account") << NotificationType::StorageAdded << true << "changed 1 0-9";
        QTest::newRow("update one") << NotificationType::StorageUpdated << true << "changed 1 0-9";
    }

    void addOrUpdateInsertsOrChangesOneRow()
    {
        QFETCH(QString, type);
        QFETCH(bool, known);
        QFETCH(QString, signal);
        m_rows->add(QStringLiteral("Other"), 1);
        QUuid id = known ? m_rows->add(QStringLiteral("Before"), 2) : QUuid();
        auto model = loadedModel();
        QVERIFY(model);
        Tester tester(model.get(), Tester::FailureReportingMode::QtTest);
        if (known)
            m_rows->rename(id, QStringLiteral("After"));
        else
            id = m_rows->add(QStringLiteral("After"), 29);
        QStringList seen;
        recordSignals(*model, seen);
        QSignalSpy updated(model.get(), &BaseModel::updated);
        QSignalSpy complite(model.get(), &BaseModel::complite);
        m_service.notify(type, {{QStringLiteral("id"), id.toString()}});
        QVERIFY(complite.wait());
        QCOMPARE(updated.count(), 1);
        QCOMPARE(seen, (QStringList {signal, "complite"}));
        QCOMPARE(names(*model), (QStringList {"Other", "After"}));
        QCOMPARE(model->index(1, 5).data().toInt(), known ? 2 : 29);
    }

    void eachRefreshReplySettlesOnePendingAccount()
    {
        auto model = loadedModel();
        QVERIFY(model);
        Tester tester(model.get(), Tester::FailureReportingMode::QtTest);
        // Both accounts are in every reply, the later one first.
        const QUuid first = QUuid::createUuid();
        const QUuid second = QUuid::createUuid();
        m_rows->rows = {TWB::Test::storageRow(second, QStringLiteral("Second"), 3),
            TWB::Test::storageRow(first, QStringLiteral("First"), 2)};
        QSignalSpy inserted(model.get(), &QAbstractItemModel::rowsInserted);
        QSignalSpy complite(model.get(), &BaseModel::complite);
        model->editStorage(first);
        model->editStorage(second);
        QTRY_COMPARE(complite.count(), 2);
        QCOMPARE(inserted.count(), 2);
        // The first reply met "Second" first in its list.
        QCOMPARE(names(*model), (QStringList {"Second", "First"}));

        // A third reply with nothing pending changes nothing.
        model->editStorage(QUuid::createUuid());
        QTRY_COMPARE(complite.count(), 3);
        QCOMPARE(inserted.count(), 2);
        QCOMPARE(model->rowCount(), 2);
    }

    void refreshAnsweredWithNeedRetryStaysPending()
    {
        auto model = loadedModel();
        QVERIFY(model);
        Tester tester(model.get(), Tester::FailureReportingMode::QtTest);
        const QUuid id = m_rows->add(QStringLiteral("Late"), 2);
        m_rows->needRetry = true;
        QSignalSpy complite(model.get(), &BaseModel::complite);
        model->editStorage(id);
        QVERIFY(complite.wait());
        QCOMPARE(model->rowCount(), 0);
        // Only the full load waits a minute; a refresh just stays open.
        QVERIFY(!model->findChild<QTimer*>()->isActive());

        // Any later list reply that holds the account settles it, even one asked for another account.
        m_rows->needRetry = false;
        model->editStorage(QUuid::createUuid());
        QVERIFY(complite.wait());
        QCOMPARE(names(*model), QStringList {"Late"});
    }

    void removingAnUnknownAccountIsAnError()
    {
        m_rows->add(QStringLiteral("Only"), 1);
        auto model = loadedModel();
        QVERIFY(model);
        Tester tester(model.get(), Tester::FailureReportingMode::QtTest);
        LogCapture log;
        QSignalSpy updated(model.get(), &BaseModel::updated);
        QSignalSpy complite(model.get(), &BaseModel::complite);
        QSignalSpy error(model.get(), &BaseModel::error);
        QSignalSpy removed(model.get(), &QAbstractItemModel::rowsRemoved);
        model->removeStorage(QUuid::createUuid());
        QCOMPARE(updated.count(), 1);
        QCOMPARE(error.count(), 1);
        QCOMPARE(error.at(0).at(0).toString(), QStringLiteral("There isn't such storage account in model"));
        QCOMPARE(complite.count(), 0);
        QCOMPARE(removed.count(), 0);
        QCOMPARE(log.warnings(), 0);
        QCOMPARE(model->rowCount(), 1);
    }

    void syncNotificationsSetTheSyncStatus()
    {
        m_rows->add(QStringLiteral("Other"), 1);
        const QUuid id = m_rows->add(QStringLiteral("Synced"), 2);
        auto model = loadedModel();
        QVERIFY(model);
        Tester tester(model.get(), Tester::FailureReportingMode::QtTest);
        QStringList seen;
        recordSignals(*model, seen);
        QSignalSpy changed(model.get(), &QAbstractItemModel::dataChanged);
        m_rows->notify(NotificationType::StorageSyncStarted, id);
        QVERIFY(changed.wait());
        QCOMPARE(model->index(1, 9).data().toBool(), true);
        QCOMPARE(model->index(0, 9).data().toBool(), false);
        m_rows->notify(NotificationType::StorageSyncFinished, id);
        QVERIFY(changed.wait());
        QCOMPARE(model->index(1, 9).data().toBool(), false);
        QCOMPARE(seen, (QStringList {"changed 1 0-9", "changed 1 0-9"}));

        // A full load replaces the whole map, the status with it.
        m_rows->notify(NotificationType::StorageSyncStarted, id);
        QVERIFY(changed.wait());
        QSignalSpy complite(model.get(), &BaseModel::complite);
        QVERIFY(model->init());
        QVERIFY(complite.wait());
        QCOMPARE(model->index(1, 9).data().toBool(), false);
    }

    void notificationsThatConcernNoRowChangeNothing_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QJsonObject>("data");
        QTest::addColumn<QString>("logged");
        const QJsonObject unknownAccount {{QStringLiteral("id"), QUuid::createUuid().toString()}};
        QTest::newRow("sync started, unknown account")
            << NotificationType::StorageSyncStarted << unknownAccount << "Syncstorges notification started!";
        QTest::newRow("sync finished, unknown account")
            << NotificationType::StorageSyncFinished << unknownAccount << "Syncstorges notification finished!";
        QTest::newRow("repository sync message")
            << QString::fromLatin1(NotificationType::RepositorySyncMessage1) << unknownAccount << QString();
        QTest::newRow("plan created") << QString::fromLatin1(NotificationType::PlanCreated) << unknownAccount
                                      << QString();
    }

    void notificationsThatConcernNoRowChangeNothing()
    {
        QFETCH(QString, type);
        QFETCH(QJsonObject, data);
        QFETCH(QString, logged);
        const QUuid known = m_rows->add(QStringLiteral("Untouched"), 2);
        auto model = loadedModel();
        QVERIFY(model);
        Tester tester(model.get(), Tester::FailureReportingMode::QtTest);
        m_service.clearRequests();
        QStringList seen;
        recordSignals(*model, seen);
        QSignalSpy updated(model.get(), &BaseModel::updated);
        QSignalSpy error(model.get(), &BaseModel::error);
        LogCapture log;
        m_service.notify(type, data);
        // A sync notice for the known account behind it shows when the first has been handled.
        m_rows->notify(NotificationType::StorageSyncStarted, known);
        QTRY_COMPARE(seen.size(), 1);
        QCOMPARE(seen, QStringList {"changed 0 0-9"});
        QCOMPARE(updated.count(), 0);
        QCOMPARE(error.count(), 0);
        QCOMPARE(m_service.requests().size(), 0);
        if (!logged.isEmpty()) {
            const bool sameAsFollower = logged == QLatin1String("Syncstorges notification started!");
            QCOMPARE(log.count(QtDebugMsg, QStringLiteral("TWB"), logged), sameAsFollower ? 2 : 1);
        }
        QCOMPARE(log.warnings(), 0);
    }

    void removeRowsAsksTheServiceAndWaitsForItsNotice()
    {
        const QUuid first = m_rows->add(QStringLiteral("First"), 1);
        const QUuid second = m_rows->add(QStringLiteral("Second"), 2);
        m_rows->add(QStringLiteral("Third"), 3);
        auto model = loadedModel();
        QVERIFY(model);
        Tester tester(model.get(), Tester::FailureReportingMode::QtTest);
        QSignalSpy complite(model.get(), &BaseModel::complite);
        QSignalSpy removed(model.get(), &QAbstractItemModel::rowsRemoved);
        QVERIFY(model->removeRows(0, 2));
        QTRY_COMPARE(complite.count(), 2);

        const QList<FakeRequest> requests = m_service.requests(QStringLiteral("StorageDeleteFileSystem"));
        QCOMPARE(requests.size(), 2);
        QCOMPARE(requests.at(0).params.value(QStringLiteral("ID")).toString(), first.toString());
        QCOMPARE(requests.at(1).params.value(QStringLiteral("ID")).toString(), second.toString());
        QCOMPARE(requests.at(0).params.value(QStringLiteral("profile")).toString(), QStringLiteral("alice"));
        QCOMPARE(removed.count(), 0);
        QCOMPARE(model->rowCount(), 3);

        m_rows->notify(NotificationType::StorageRemoved, second);
        m_rows->notify(NotificationType::StorageRemoved, first);
        QTRY_COMPARE(removed.count(), 2);
        QCOMPARE(names(*model), QStringList {"Third"});
    }

    void removeRowsOutsideTheTableSendsNothing_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("count");
        QTest::newRow("past the end") << 2 << 1;
        QTest::newRow("no rows") << 0 << 0;
    }

    void removeRowsOutsideTheTableSendsNothing()
    {
        QFETCH(int, row);
        QFETCH(int, count);
        m_rows->add(QStringLiteral("One"), 1);
        m_rows->add(QStringLiteral("Two"), 2);
        auto model = loadedModel();
        QVERIFY(model);
        Tester tester(model.get(), Tester::FailureReportingMode::QtTest);
        m_service.clearRequests();
        QSignalSpy error(model.get(), &BaseModel::error);
        QVERIFY(model->removeRows(row, count));
        // A full load behind it shows that no deletion went out before it.
        QSignalSpy complite(model.get(), &BaseModel::complite);
        QVERIFY(model->init());
        QVERIFY(complite.wait());
        QCOMPARE(m_service.requests().size(), 1);
        QCOMPARE(error.count(), 0);
    }

    void managedEditionShowsTheProductIconForClouds()
    {
        const QString share = m_env->root() + QStringLiteral("/share");
        QVERIFY(QDir().mkpath(share + QStringLiteral("/images")));
        QImage mark(32, 32, QImage::Format_ARGB32);
        mark.fill(QColor(200, 30, 40));
        QVERIFY(mark.save(share + QStringLiteral("/images/MainIcon.ico"), "ICO"));
        qputenv("TWB_SHARE_DIR", QFile::encodeName(share));
        TestEnvironment::writeFile(m_env->configFile(), "edition = managed\n");

        const QImage product = pixels(StorageConnectionsModel::storageIcon(TWL::Cloud::AmazonS3, IconManager::Small));
        QVERIFY(!product.isNull());
        QCOMPARE(product.pixelColor(8, 8), QColor(200, 30, 40));
        QCOMPARE(pixels(StorageConnectionsModel::storageIcon(TWL::Cloud::Aruba, IconManager::Small)), product);
        QCOMPARE(pixels(StorageConnectionsModel::storageIcon(TWL::Cloud::FileSystem, IconManager::Small)),
            pixels(IconManager::storage(IconManager::FileSystem, IconManager::Small)));

        // The table shows the same icons, at the small size.
        m_rows->add(QStringLiteral("Folder"), 1);
        m_rows->add(QStringLiteral("Bucket"), 2);
        auto model = loadedModel();
        QVERIFY(model);
        QCOMPARE(pixels(model->index(1, 0).data(Qt::DecorationRole).value<QIcon>()), product);
        QCOMPARE(pixels(model->index(0, 0).data(Qt::DecorationRole).value<QIcon>()),
            pixels(IconManager::storage(IconManager::FileSystem, IconManager::Small)));
        QFile::remove(m_env->configFile());
        qunsetenv("TWB_SHARE_DIR");
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

    // Runs last: the channel's singletons do not come back once the application has quit.
    void afterShutdownEverySendSaysTheManagerIsGone()
    {
        m_rows->add(QStringLiteral("Last"), 1);
        auto model = loadedModel();
        QVERIFY(model);
        Tester tester(model.get(), Tester::FailureReportingMode::QtTest);
        QVERIFY(QMetaObject::invokeMethod(QCoreApplication::instance(), "aboutToQuit"));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(Manager::instance().isNull());
        QVERIFY(NotificationCenter::instance().isNull());

        LogCapture log;
        QSignalSpy error(model.get(), &BaseModel::error);
        QVERIFY(!model->init());
        model->editStorage(QUuid::createUuid());
        QVERIFY(!model->removeRows(0, 1));
        QCOMPARE(error.count(), 3);
        for (const QList<QVariant>& args : qAsConst(error))
            QCOMPARE(args.at(0).toString(), QStringLiteral("Commnunication manager is 0x00"));
        QCOMPARE(log.count(QtWarningMsg, QStringLiteral("TWB"), QStringLiteral("Commnunication manager is 0x00")), 3);
        QCOMPARE(names(*model), QStringList {"Last"});

        // A model made now has no notification centre to listen to, and says nothing about it.
        StorageConnectionsModel late;
        QCOMPARE(log.warnings(), 3);
    }
};

QTEST_MAIN(TestStorageConnectionsModel)
#include "tst_storage_connections_model.moc"
