#include "storages/storage_connections_cloud_model.h"
#include "storages/storage_connections_local_model.h"
#include "storages/storage_connections_model.h"
#include "peers/storage_console.h"
#include "platform/communication/notification_center.h"
#include "platform/communication/notification_types.h"
#include "platform/plan/backup_file.h"
#include "service_fixture.h"
#include "support/test_environment.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using TWB::Common::Communication::NotificationCenter;
using TWB::Test::ServiceFixture;
using TWB::Test::ServiceReply;
using TWB::Test::StorageConsole;
using TWB::Test::TestEnvironment;

namespace NotificationType = TWB::Common::Communication::Notification::Type;

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
    std::unique_ptr<StorageConsole> m_console;

    /// Saves through the console's channel; the reply says "success" in its own key too.
    bool saveStorage(const QUuid& id, const QString& name, int type, const QJsonObject& document,
        const QString& prefix = QStringLiteral("laptop"))
    {
        const ServiceReply reply = ServiceFixture::callThroughChannel(QStringLiteral("SaveStorage"),
            {{QStringLiteral("ID"), id.toString()}, {QStringLiteral("displayName"), name},
                {QStringLiteral("prefix"), prefix}, {QStringLiteral("type"), type},
                {QStringLiteral("params"), document}});
        if (!reply.success)
            qWarning("SaveStorage failed: %s", qPrintable(reply.error));
        return reply.success && reply.data.value(QStringLiteral("SaveStorage")).toString() == QLatin1String("success");
    }

    /// The shared list, as the host registers it and the pages ask for it.
    StorageConnectionsModel* sharedModel() const { return m_console->model(); }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        m_console = std::make_unique<StorageConsole>(*m_env);
        QVERIFY2(m_console->start(), qPrintable(m_console->service().output()));
    }

    void cleanupTestCase()
    {
        if (m_console)
            QVERIFY2(m_console->service().terminate(), qPrintable(m_console->service().output()));
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

        // Saved again under a new name and prefix: the "Update" notification changes the row in place.
        QSignalSpy changed(model, &QAbstractItemModel::dataChanged);
        QSignalSpy notes(NotificationCenter::instance().data(), &NotificationCenter::notification);
        QVERIFY(saveStorage(usb, QStringLiteral("USB disk, blue"), 1, {{QStringLiteral("Path"), usbFolder}},
            QStringLiteral("desktop")));
        QTRY_COMPARE(model->index(usbRow, 0).data().toString(), QStringLiteral("USB disk, blue"));
        QCOMPARE(model->index(usbRow, 3).data().toString(), QStringLiteral("desktop"));
        QVERIFY(!changed.isEmpty());
        QCOMPARE(inserted.count(), 2);
        QCOMPARE(notes.count(), 1);
        QCOMPARE(QUuid(notes.first().first().value<QJsonDocument>().object().value(QStringLiteral("id")).toString()),
            QUuid(QLatin1String(NotificationType::StorageUpdated)));
        QCOMPARE(model->rowCount(), before + 2);

        // A plan that backs up to the account holds it: the service refuses, and the row stays.
        const QUuid plan = QUuid::createUuid();
        TWB::Info::Plan::BackupFile document;
        document.setId(plan);
        document.setName(QStringLiteral("Documents"));
        document.setStorage(usb);
        document.setItems({QStringLiteral("/home/alice/Documents")});
        ServiceReply reply = ServiceFixture::callThroughChannel(QStringLiteral("PlanUpdate"),
            {{QStringLiteral("ID"), plan.toString()}, {QStringLiteral("planXML"), document.toXml()}});
        QVERIFY2(reply.success, qPrintable(reply.error));
        QSignalSpy error(model, &BaseModel::error);
        QVERIFY(model->removeRows(usbRow, 1));
        QVERIFY(error.wait());
        QVERIFY2(error.at(0).at(0).toString().contains(QLatin1String("Documents")),
            qPrintable(error.at(0).at(0).toString()));
        QCOMPARE(rowOf(*model, usb), usbRow);

        // Without the plan it goes, when the service says so; its files stay where they were.
        reply = ServiceFixture::callThroughChannel(
            QStringLiteral("PlanRemove"), {{QStringLiteral("ID"), plan.toString()}});
        QVERIFY2(reply.success, qPrintable(reply.error));
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
