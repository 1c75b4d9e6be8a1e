#include "plans/plan_backup_model.h"
#include "plans/plan_restore_model.h"
#include "plans/plan_table_model.h"
#include "plans/plan_xml_list.h"
#include "platform/communication/connection_manager.h"
#include "platform/communication/notification_types.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/restore_file.h"
#include "plan_test_rows.h"
#include "support/fake_service.h"
#include "support/log_capture.h"
#include "support/test_environment.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace TWB::GUI;
using TWB::Common::Communication::ConnectionManager;
using TWB::Info::Plan::BackupFile;
using TWB::Info::Plan::RestoreFile;
using TWB::Test::FakeReply;
using TWB::Test::FakeRequest;
using TWB::Test::FakeService;
using TWB::Test::LogCapture;
using TWB::Test::NoModelCreator;
using TWB::Test::planRow;
using TWB::Test::PlanRows;
using TWB::Test::RegisteredPlanTable;
using TWB::Test::TestEnvironment;
namespace NotificationType = TWB::Common::Communication::Notification::Type;

namespace {

const QUuid Storage("{0d6f3c55-2a41-4b8e-9f0e-7c1d2b3a4e5f}");

QString planXml(const QUuid& id, const QString& name, int kind)
{
    if (kind == 2) {
        RestoreFile plan;
        plan.setId(id);
        plan.setName(name);
        plan.setStorage(Storage);
        plan.setRestoreItems({QStringLiteral("/home/alice/Photos")});
        return plan.toXml();
    }
    BackupFile plan;
    plan.setId(id);
    plan.setName(name);
    plan.setStorage(Storage);
    plan.setItems({QStringLiteral("/home/alice/Photos")});
    return plan.toXml();
}

} // namespace

class TestPlanFullTableModel : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    FakeService m_service;
    PlanRows m_rows {m_service};
    /// Plan documents the fake service holds, by plan id.
    QMap<QString, QString> m_documents;
    std::unique_ptr<RegisteredPlanTable> m_registered;
    PlanTableModel* m_table = nullptr;

    static QStringList names(const QAbstractItemModel& model)
    {
        QStringList result;
        for (int row = 0; row < model.rowCount(); ++row)
            result << model.index(row, 1).data().toString();
        return result;
    }

    void notify(const char* type, const QUuid& id)
    {
        m_service.notify(QLatin1String(type), {{QStringLiteral("id"), id.toString()}});
    }

    bool loadTable()
    {
        QSignalSpy complite(m_table, &BaseModel::complite);
        return m_table->init() && complite.wait();
    }

    /// Puts a plan in the service, row and document alike.
    QUuid addPlan(const QString& name, int kind)
    {
        const QUuid id = QUuid::createUuid();
        m_rows.put(planRow(id, name, kind));
        m_documents.insert(id.toString(), planXml(id, name, kind));
        return id;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        QVERIFY(m_service.serveConsole(m_env->socketPath()));
    }

    void init()
    {
        qputenv("USER", "alice");
        m_rows.rows.clear();
        m_rows.serve();
        m_documents.clear();
        m_service.on(QStringLiteral("PlanGetXML"), [this](const FakeRequest& request) {
            const QString id = request.params.value(QStringLiteral("ID")).toString();
            if (!m_documents.contains(id))
                return FakeReply::fail(QStringLiteral("Plan %1 is not known").arg(id));
            return FakeReply::ok({{QStringLiteral("planXML"), m_documents.value(id)}});
        });
        m_service.clearRequests();
        m_registered = std::make_unique<RegisteredPlanTable>();
        m_table = m_registered->table;
        QVERIFY(m_table);
    }

    void cleanup()
    {
        m_registered.reset();
        m_table = nullptr;
    }

    void initPublishesRowsAlreadyLoaded()
    {
        addPlan(QStringLiteral("Photos"), 1);
        addPlan(QStringLiteral("Music"), 1);
        addPlan(QStringLiteral("Back home"), 2);
        QVERIFY(loadTable());
        PlanBackupModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QVERIFY(model.init());
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(inserted.at(0).at(1).toInt(), 0);
        QCOMPARE(inserted.at(0).at(2).toInt(), 1);
        QCOMPARE(names(model), (QStringList {"Music", "Photos"}));
        // Time stands before status and message: 6 and 8 are the table's 8 and 6.
        const int music = m_table->match(m_table->index(0, 1), Qt::DisplayRole, QStringLiteral("Music")).first().row();
        QCOMPARE(model.index(0, 6).data(), m_table->index(music, 8).data());
        QCOMPARE(model.index(0, 7).data(), m_table->index(music, 7).data());
        QCOMPARE(model.index(0, 8).data().toString(), QStringLiteral("5 files sent"));

        // A second init changes nothing.
        QVERIFY(model.init());
        QCOMPARE(inserted.count(), 1);

        // The table's failures are the model's.
        m_service.on(QStringLiteral("PlanGetInfo"), FakeReply::fail(QStringLiteral("Plan store is locked")));
        QSignalSpy error(&model, &BaseModel::error);
        QVERIFY(m_table->loadInfo(QUuid::createUuid()));
        QVERIFY(error.wait());
        QCOMPARE(error.at(0).at(0).toString(), QStringLiteral("Plan store is locked"));
    }

    void initWithoutTableFails()
    {
        NoModelCreator none;
        ModelManager::instance()->registrateCreator(none);
        PlanRestoreModel model;
        QVERIFY(!model.init());
        QCOMPARE(model.rowCount(), 0);
    }

    void notificationsReachTheTable()
    {
        const QUuid photos = addPlan(QStringLiteral("Photos"), 1);
        const QUuid music = addPlan(QStringLiteral("Music"), 1);
        QVERIFY(loadTable());
        PlanBackupModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QVERIFY(model.init());
        QCOMPARE(names(model), (QStringList {"Music", "Photos"}));
        const QPersistentModelIndex photosCell = model.index(1, 8);
        QSignalSpy complite(&model, &BaseModel::complite);

        // A new plan takes its place by name; a restore plan never shows.
        const QUuid archive = addPlan(QStringLiteral("Archive"), 1);
        const QUuid restore = addPlan(QStringLiteral("Another restore"), 2);
        notify(NotificationType::PlanCreated, archive);
        notify(NotificationType::PlanCreated, restore);
        QTRY_COMPARE(complite.count(), 2);
        QCOMPARE(names(model), (QStringList {"Archive", "Music", "Photos"}));
        QCOMPARE(photosCell.row(), 2);

        // A new name moves the row, and what the view holds on to moves with it.
        m_rows.put(planRow(photos, QStringLiteral("Album"), 1));
        notify(NotificationType::PlanUpdated, photos);
        QVERIFY(complite.wait());
        QCOMPARE(names(model), (QStringList {"Album", "Archive", "Music"}));
        QCOMPARE(photosCell.row(), 0);
        QCOMPARE(photosCell.column(), 8);
        QCOMPARE(model.index(photosCell.row(), 0).data().toUuid(), photos);

        // A state change repaints the whole row.
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        m_service.notify(QLatin1String(NotificationType::PlanStateChanged),
            {{QStringLiteral("id"), music.toString()}, {QStringLiteral("state"), 1}});
        QVERIFY(changed.wait());
        QCOMPARE(changed.at(0).at(0).toModelIndex(), model.index(2, 0));
        QCOMPARE(changed.at(0).at(1).toModelIndex(), model.index(2, 13));
        QCOMPARE(model.index(2, 4).data().toInt(), 1);

        QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
        notify(NotificationType::PlanRemoved, archive);
        QVERIFY(removed.wait());
        QCOMPARE(removed.at(0).at(1).toInt(), 1);
        QCOMPARE(names(model), (QStringList {"Album", "Music"}));
    }

    void documentOfAnotherKindStaysHidden()
    {
        // The table calls the plan a backup, but its document is a restore plan.
        const QUuid id = QUuid::createUuid();
        m_rows.put(planRow(id, QStringLiteral("Mislabelled"), 1));
        m_documents.insert(id.toString(), planXml(id, QStringLiteral("Mislabelled"), 2));
        QVERIFY(loadTable());
        PlanBackupModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QVERIFY(model.init());
        QSignalSpy complite(PlanXmlList::instance().data(), &PlanXmlList::complite);
        QVERIFY(PlanXmlList::instance()->getPlan(id));
        QVERIFY(complite.wait());
        QVERIFY(PlanXmlList::instance()->plan(id));
        QVERIFY(!model.index(0, 5).data().isValid());
        QVERIFY(!model.index(0, 14).data().isValid());
        QCOMPARE(model.index(0, 1).data().toString(), QStringLiteral("Mislabelled"));
    }

    void documentFailureIsTheModelsError()
    {
        PlanRestoreModel model;
        LogCapture log;
        QSignalSpy error(&model, &BaseModel::error);
        QVERIFY(PlanXmlList::instance()->getPlan(QUuid::createUuid()));
        QVERIFY(error.wait());
        QVERIFY(error.at(0).at(0).toString().contains(QStringLiteral("is not known")));
    }
};

QTEST_MAIN(TestPlanFullTableModel)
#include "tst_plan_full_table_model.moc"
