#include "plans/plan_backup_model.h"
#include "plans/plan_control_object.h"
#include "plans/plan_restore_model.h"
#include "plans/plan_table_model.h"
#include "plans/plan_xml_list.h"
#include "platform/communication/connection_manager.h"
#include "plan_samples.h"
#include "plan_test_rows.h"
#include "service_fixture.h"
#include "support/service_process.h"
#include "support/test_environment.h"

#include <QAbstractItemModelTester>
#include <QJsonArray>
#include <QSignalSpy>
#include <QWidget>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using TWB::Common::Communication::ConnectionManager;
using TWB::Test::PlanSamples;
using TWB::Test::RegisteredPlanTable;
using TWB::Test::ServiceFixture;
using TWB::Test::ServiceProcess;
using TWB::Test::ServiceReply;
using TWB::Test::TestEnvironment;

namespace {

QStringList names(const QAbstractItemModel& model)
{
    QStringList result;
    for (int row = 0; row < model.rowCount(); ++row)
        result << model.index(row, 1).data().toString();
    return result;
}

} // namespace

/// The plan models against the real service: what the service stores and reports is what they show.
class TestPlanModelsTwbd : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    std::unique_ptr<ServiceProcess> m_service;
    QUuid m_account;

    bool importPlan(const QUuid& id, const QString& xml)
    {
        const ServiceReply reply = ServiceFixture::callThroughChannel(
            QStringLiteral("PlanUpdate"), {{QStringLiteral("ID"), id.toString()}, {QStringLiteral("planXML"), xml}});
        if (!reply.success)
            qWarning("PlanUpdate failed: %s", qPrintable(reply.error));
        return reply.success;
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
        // The service makes a storage account on its first start; plans go there.
        const QJsonArray accounts = ServiceFixture::callThroughChannel(QStringLiteral("StorageGetConnection"))
                                        .data.value(QStringLiteral("storageConnection"))
                                        .toArray();
        QVERIFY(!accounts.isEmpty());
        m_account = QUuid(accounts.first().toObject().value(QStringLiteral("ID")).toString());
        QVERIFY(!m_account.isNull());
    }

    void cleanupTestCase()
    {
        if (m_service)
            QVERIFY2(m_service->terminate(), qPrintable(m_service->output()));
    }

    void importedPlansFillEveryTable()
    {
        RegisteredPlanTable registered;
        PlanTableModel* table = registered.table;
        QAbstractItemModelTester tableTester(table, QAbstractItemModelTester::FailureReportingMode::QtTest);
        PlanBackupModel backups;
        QAbstractItemModelTester backupTester(&backups, QAbstractItemModelTester::FailureReportingMode::QtTest);
        PlanRestoreModel restores;
        QAbstractItemModelTester restoreTester(&restores, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QVERIFY(backups.init());
        QVERIFY(restores.init());

        QSignalSpy complite(table, &BaseModel::complite);
        QVERIFY(table->init());
        QVERIFY(complite.wait());
        const int before = table->rowCount();

        const QUuid documents = QUuid::createUuid();
        const QUuid restore = QUuid::createUuid();
        QVERIFY(importPlan(documents, PlanSamples::backup(documents, QStringLiteral("Documents 10"), m_account)));
        QVERIFY(importPlan(restore, PlanSamples::restore(restore, QStringLiteral("Documents back"), m_account)));
        QTRY_COMPARE(table->rowCount(), before + 2);
        QVERIFY(backups.match(backups.index(0, 1), Qt::DisplayRole, QStringLiteral("Documents 10")).size() == 1);
        QCOMPARE(names(restores), QStringList {"Documents back"});

        const QModelIndex row = table->match(table->index(0, 0), Qt::DisplayRole, documents.toString()).first();
        QCOMPARE(table->index(row.row(), 2).data().toInt(), 1);
        QCOMPARE(table->index(row.row(), 4).data().toInt(), 2);
        QCOMPARE(QUuid(table->index(row.row(), 5).data().toString()), m_account);
        QCOMPARE(table->index(row.row(), 14).data().toInt(), 0);

        // The document columns fill in once the host asks for the document.
        const int backupRow = backups.match(backups.index(0, 0), Qt::DisplayRole, documents.toString()).first().row();
        QVERIFY(!backups.index(backupRow, 14).data().isValid());
        QSignalSpy changed(&backups, &QAbstractItemModel::dataChanged);
        QVERIFY(PlanXmlList::instance()->getPlan(documents));
        QVERIFY(changed.wait());
        QCOMPARE(backups.index(backupRow, 5).data().toUuid(), m_account);
        QVERIFY(backups.index(backupRow, 14).data().toByteArray().contains("Documents 10"));

        // A second plan sorts by number, not by character.
        const QUuid nine = QUuid::createUuid();
        QVERIFY(importPlan(nine, PlanSamples::backup(nine, QStringLiteral("Documents 9"), m_account)));
        QTRY_COMPARE(table->rowCount(), before + 3);
        const QStringList shown = names(backups);
        QVERIFY(shown.indexOf(QStringLiteral("Documents 9")) < shown.indexOf(QStringLiteral("Documents 10")));

        // Renamed on the service: the row and the document follow.
        QVERIFY(importPlan(documents, PlanSamples::backup(documents, QStringLiteral("Papers"), m_account)));
        QTRY_VERIFY(names(backups).contains(QStringLiteral("Papers")));
        QVERIFY(!names(backups).contains(QStringLiteral("Documents 10")));
        QTRY_VERIFY(backups.index(names(backups).indexOf(QStringLiteral("Papers")), 14)
                        .data()
                        .toByteArray()
                        .contains("Papers"));
        QCOMPARE(table->rowCount(), before + 3);
    }

    void controlObjectDrivesTheService()
    {
        RegisteredPlanTable registered;
        PlanTableModel* table = registered.table;
        QAbstractItemModelTester tableTester(table, QAbstractItemModelTester::FailureReportingMode::QtTest);
        const QUuid id = QUuid::createUuid();
        // Items that do not exist: the started run ends at once, and the plan may be removed.
        QVERIFY(importPlan(id,
            PlanSamples::backup(
                id, QStringLiteral("Short lived"), m_account, {QStringLiteral("/home/alice/Documents")})));
        QSignalSpy complite(table, &BaseModel::complite);
        QVERIFY(table->init());
        QVERIFY(complite.wait());
        QVERIFY(!table->match(table->index(0, 0), Qt::DisplayRole, id.toString()).isEmpty());

        QWidget window;
        PlanControlObject control(&window);
        QSignalSpy status(&control, &PlanControlObject::statusChanged);
        control.setCurrentPlan(id, 0);
        QCOMPARE(status.count(), 1);
        QCOMPARE(status.at(0), (QList<QVariant> {1, 2}));

        // The service's answer to a start is passed on as it stands, whatever it says.
        QSignalSpy error(&control, &PlanControlObject::updatedError);
        QSignalSpy done(&control, &PlanControlObject::updatedComplite);
        control.onChangePlanStatus(true);
        QTRY_COMPARE(error.count() + done.count(), 1);
        if (!error.isEmpty())
            QVERIFY(!error.first().first().toString().contains(QStringLiteral("registrate")));

        QSignalSpy gone(&control, &PlanControlObject::removeCurrentPlan);
        done.clear();
        control.onRemove();
        QVERIFY(gone.wait());
        QCOMPARE(gone.first().first().toUuid(), id);
        QTRY_COMPARE(done.count(), 1);
        QVERIFY(table->match(table->index(0, 0), Qt::DisplayRole, id.toString()).isEmpty());
        QVERIFY(!PlanXmlList::instance()->containts(id));
    }
};

QTEST_MAIN(TestPlanModelsTwbd)
#include "tst_plan_models_twbd.moc"
