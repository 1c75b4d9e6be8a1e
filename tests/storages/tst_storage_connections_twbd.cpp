#include "storages/storage_connections_cloud_model.h"
#include "storages/storage_connections_local_model.h"
#include "storages/storage_connections_model.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/shared_model_creator.h"
#include "platform/communication/connection_manager.h"
#include "platform/plan/backup_file.h"
#include "support/service_process.h"
#include "support/test_caller.h"
#include "support/test_environment.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using TWB::Common::Communication::ConnectionManager;
using TWB::Test::ServiceProcess;
using TWB::Test::TestCaller;
using TWB::Test::TestEnvironment;

namespace {

using Tester = QAbstractItemModelTester;

int rowOf(const QAbstractItemModel& model, const QUuid& id)
{
    const QModelIndexList hits = model.match(model.index(0, 1), Qt::DisplayRole, id.toString(), 1, Qt::MatchExactly);
    return hits.isEmpty() ? -1 : hits.first().row();
}

} // namespace

/// The storage list against the real service: what twbd stores and announces is what the list shows.
class TestStorageConnectionsTwbd : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    std::unique_ptr<ServiceProcess> m_service;
    std::unique_ptr<SharedModelCreator<StorageConnectionsModel>> m_creator;

    /// Sends a command to the service and waits for its answer. Empty when it failed; the text goes to failure.
    QJsonObject call(const QString& name, const QJsonObject& params, QString* failure = nullptr)
    {
        TestCaller caller;
        QSignalSpy succeeded(&caller, &TestCaller::succeeded);
        QSignalSpy failed(&caller, &TestCaller::failed);
        if (!caller.send(name, params))
            return QJsonObject();
        if (!QTest::qWaitFor([&] { return succeeded.count() + failed.count() > 0; }, 10000))
            return QJsonObject();
        if (!failed.isEmpty()) {
            if (failure)
                *failure = failed.first().first().toString();
            return QJsonObject();
        }
        return succeeded.first().first().toJsonObject();
    }

    bool saveStorage(const QUuid& id, const QString& name, int type, const QJsonObject& document)
    {
        QString failure;
        call(QStringLiteral("SaveStorage"),
            {{QStringLiteral("ID"), id.toString()}, {QStringLiteral("displayName"), name},
                {QStringLiteral("prefix"), QStringLiteral("laptop")}, {QStringLiteral("type"), type},
                {QStringLiteral("params"), document}},
            &failure);
        if (!failure.isEmpty())
            qWarning("SaveStorage failed: %s", qPrintable(failure));
        return failure.isEmpty();
    }

    /// The shared list, as the host registers it and the pages ask for it.
    StorageConnectionsModel* sharedModel() const
    {
        return qobject_cast<StorageConnectionsModel*>(ModelManager::instance()->create(ModelNames::StorageConnection));
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        m_service = std::make_unique<ServiceProcess>(m_env->socketPath(), m_env->dataDir());
        QVERIFY2(m_service->start(), qPrintable(m_service->output()));
        QVERIFY(ConnectionManager::instance());
        TestEnvironment::speedUpChannel();
        QTRY_VERIFY(ConnectionManager::instance()->isLocalManagmentConnected());
        qputenv("USER", "alice");
        m_creator = std::make_unique<SharedModelCreator<StorageConnectionsModel>>(ModelNames::StorageConnection);
        ModelManager::instance()->registrateCreator(*m_creator);
    }

    void cleanupTestCase()
    {
        if (m_service)
            QVERIFY2(m_service->terminate(), qPrintable(m_service->output()));
    }

    void firstStartListsTheLocalStorage()
    {
        StorageConnectionsModel* model = sharedModel();
        QVERIFY(model);
        QCOMPARE(sharedModel(), model);
        QSignalSpy complite(model, &BaseModel::complite);
        QVERIFY(model->init());
        QVERIFY(complite.wait());
        Tester tester(model, Tester::FailureReportingMode::QtTest);

        QCOMPARE(model->rowCount(), 1);
        QCOMPARE(model->index(0, 0).data().toString(), QStringLiteral("Local storage"));
        QVERIFY(!QUuid(model->index(0, 1).data().toString()).isNull());
        const QString folder = m_env->dataDir() + QStringLiteral("/storage");
        QCOMPARE(model->index(0, 2).data().toString(), folder);
        QVERIFY(QFileInfo(folder).isDir());
        QVERIFY(!model->index(0, 3).data().toString().isEmpty());
        QCOMPARE(model->index(0, 5).data().toInt(), int(TWL::Cloud::FileSystem));
        QVERIFY(model->index(0, 6).data().toDouble() > 0);
        QCOMPARE(model->index(0, 7).data().toDouble(), 0.0);
        QCOMPARE(model->index(0, 8).data().toJsonObject().value(QStringLiteral("Path")).toString(), folder);
        QCOMPARE(model->index(0, 9).data().toBool(), false);
        QVERIFY(!model->index(0, 0).data(Qt::DecorationRole).value<QIcon>().isNull());
    }

    void savedAccountsArriveAndLeaveByNotification()
    {
        StorageConnectionsModel* model = sharedModel();
        QVERIFY(model);
        Tester tester(model, Tester::FailureReportingMode::QtTest);
        StorageConnectionsLocalModel local;
        local.setSourceModel(model);
        Tester localTester(&local, Tester::FailureReportingMode::QtTest);
        StorageConnectionsCloudModel cloud;
        cloud.setSourceModel(model);
        Tester cloudTester(&cloud, Tester::FailureReportingMode::QtTest);
        const int before = model->rowCount();

        // A folder account: the "Add" notification brings it in as one new row.
        const QUuid usb = QUuid::createUuid();
        const QString usbFolder = m_env->root() + QStringLiteral("/usb disk");
        QSignalSpy inserted(model, &QAbstractItemModel::rowsInserted);
        QVERIFY(saveStorage(usb, QStringLiteral("USB disk"), 1, {{QStringLiteral("Path"), usbFolder}}));
        QTRY_COMPARE(inserted.count(), 1);
        QCOMPARE(model->rowCount(), before + 1);
        const int usbRow = rowOf(*model, usb);
        QCOMPARE(usbRow, before);
        QCOMPARE(model->index(usbRow, 0).data().toString(), QStringLiteral("USB disk"));
        QCOMPARE(model->index(usbRow, 2).data().toString(), usbFolder);
        QCOMPARE(model->index(usbRow, 3).data().toString(), QStringLiteral("laptop"));
        QVERIFY(QDir(usbFolder).exists());
        QCOMPARE(local.rowCount(), before + 1);

        // A cloud account: its secret comes back sealed in the saved document.
        const QUuid s3 = QUuid::createUuid();
        QVERIFY(saveStorage(s3, QStringLiteral("Offsite"), 2,
            {{QStringLiteral("AccessKey"), QStringLiteral("AKIAEXAMPLE")},
                {QStringLiteral("SecretKey"), QStringLiteral("plain secret")},
                {QStringLiteral("ContainerName"), QStringLiteral("offsite-bucket")},
                {QStringLiteral("UseSsl"), true}}));
        QTRY_COMPARE(inserted.count(), 2);
        const int s3Row = rowOf(*model, s3);
        QVERIFY(s3Row >= 0);
        const QJsonObject detail = model->index(s3Row, 8).data().toJsonObject();
        QCOMPARE(detail.value(QStringLiteral("ContainerName")).toString(), QStringLiteral("offsite-bucket"));
        QVERIFY(!detail.value(QStringLiteral("SecretKey")).toString().isEmpty());
        QVERIFY(detail.value(QStringLiteral("SecretKey")).toString() != QLatin1String("plain secret"));
        QCOMPARE(model->index(s3Row, 2).data().toString(), QString());
        QCOMPARE(cloud.rowCount(), 1);
        QCOMPARE(cloud.index(0, 0).data().toString(), QStringLiteral("Offsite"));

        // Saved again under a new name: the "Update" notification changes the row in place.
        QSignalSpy changed(model, &QAbstractItemModel::dataChanged);
        QVERIFY(saveStorage(usb, QStringLiteral("USB disk, blue"), 1, {{QStringLiteral("Path"), usbFolder}}));
        QTRY_COMPARE(model->index(usbRow, 0).data().toString(), QStringLiteral("USB disk, blue"));
        QVERIFY(!changed.isEmpty());
        QCOMPARE(inserted.count(), 2);

        // A plan that backs up to the account holds it: the service refuses, and the row stays.
        const QUuid plan = QUuid::createUuid();
        TWB::Info::Plan::BackupFile document;
        document.setId(plan);
        document.setName(QStringLiteral("Documents"));
        document.setStorage(usb);
        document.setItems({QStringLiteral("/home/alice/Documents")});
        QString failure;
        call(QStringLiteral("PlanUpdate"),
            {{QStringLiteral("ID"), plan.toString()}, {QStringLiteral("planXML"), document.toXml()}}, &failure);
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
        QSignalSpy error(model, &BaseModel::error);
        QVERIFY(model->removeRows(usbRow, 1));
        QVERIFY(error.wait());
        QVERIFY2(error.at(0).at(0).toString().contains(QLatin1String("Documents")),
            qPrintable(error.at(0).at(0).toString()));
        QCOMPARE(rowOf(*model, usb), usbRow);

        // Without the plan it goes, when the service says so; its files stay where they were.
        call(QStringLiteral("PlanRemove"), {{QStringLiteral("ID"), plan.toString()}}, &failure);
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
        QSignalSpy removed(model, &QAbstractItemModel::rowsRemoved);
        QVERIFY(model->removeRows(usbRow, 1));
        QCOMPARE(rowOf(*model, usb), usbRow);
        QVERIFY(removed.wait());
        QCOMPARE(rowOf(*model, usb), -1);
        QCOMPARE(model->rowCount(), before + 1);
        QCOMPARE(local.rowCount(), before);
        QVERIFY(QDir(usbFolder).exists());

        // A fresh full load agrees with what the notifications built.
        QStringList shown;
        for (int row = 0; row < model->rowCount(); ++row)
            shown << model->index(row, 1).data().toString();
        QSignalSpy complite(model, &BaseModel::complite);
        QVERIFY(model->init());
        QVERIFY(complite.wait());
        QStringList reloaded;
        for (int row = 0; row < model->rowCount(); ++row)
            reloaded << model->index(row, 1).data().toString();
        QCOMPARE(reloaded, shown);
    }
};

QTEST_MAIN(TestStorageConnectionsTwbd)
#include "tst_storage_connections_twbd.moc"
